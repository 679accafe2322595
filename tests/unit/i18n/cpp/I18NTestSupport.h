/* SPDX-License-Identifier: Apache-2.0 */
// Helpers shared by the i18n unit tests: UTF-8 <-> UTF-16 through ICU
// (independent of the code under test), I18NString in and out of UTF-8, the
// code of a raised I18NRuntimeError, a fixture that keeps the layer
// initialised, an environment-variable guard and a scratch directory.
#ifndef XYLCORE_TESTS_UNIT_I18N_CPP_I18NTESTSUPPORT_H
#define XYLCORE_TESTS_UNIT_I18N_CPP_I18NTESTSUPPORT_H

#include <XYLCore/ExceptionHierarchy/XYLErrors.h>
#include <XYLCore/i18n/cpp/i18n_init.h>
#include <XYLCore/i18n/cpp/i18n_string.h>

#include <gtest/gtest.h>
#include <unicode/unistr.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace i18ntest {

// Runs a shell command and returns the lines it printed, without their line
// feeds (empty when it cannot be started).
inline std::vector<std::string> commandOutputLines(const std::string &command) {
  std::vector<std::string> lines;
  std::FILE *pipe = popen(command.c_str(), "r");
  if (pipe == nullptr)
    return lines;
  char line[512];
  while (std::fgets(line, sizeof line, pipe) != nullptr) {
    std::string text = line;
    if (!text.empty() && text.back() == '\n')
      text.pop_back();
    lines.push_back(text);
  }
  pclose(pipe);
  return lines;
}

inline std::u16string utf16(const std::string &utf8) {
  icu::UnicodeString text = icu::UnicodeString::fromUTF8(utf8);
  return std::u16string(reinterpret_cast<const char16_t *>(text.getBuffer()), static_cast<size_t>(text.length()));
}

inline std::string utf8(const std::u16string &units) {
  std::string out;
  icu::UnicodeString(reinterpret_cast<const UChar *>(units.data()), static_cast<int32_t>(units.size()))
      .toUTF8String(out);
  return out;
}

inline std::string utf8(const unsigned short *units, int bytes) {
  return utf8(std::u16string(reinterpret_cast<const char16_t *>(units), static_cast<size_t>(bytes / 2)));
}

// The string as UTF-8, read through its Unicode form.
inline std::string text(const I18NString &s) {
  std::string out;
  s.getUnicodeString().toUTF8String(out);
  return out;
}

inline I18NString make(const char *utf8) { return I18NString(utf8, "UTF-8"); }

// The error code of the I18NRuntimeError `action` raises (0 when nothing is
// raised).
template <typename F> long raisedCode(F action) {
  try {
    action();
  } catch (I18NRuntimeError &e) {
    return e.getErrorCode();
  }
  return 0;
}

// Keeps the layer initialised for each test.
class InitializedTest : public ::testing::Test {
protected:
  void SetUp() override { ASSERT_NE(0, I18NInitialize()); }
  void TearDown() override { I18NTerminate(); }
};

// Sets (or, with null, unsets) a variable for the guard's lifetime.
class EnvGuard {
public:
  EnvGuard(const char *name, const char *value) : m_name(name) {
    const char *old = std::getenv(name);
    m_had = old != nullptr;
    if (m_had)
      m_old = old;
    if (value != nullptr)
      setenv(name, value, 1);
    else
      unsetenv(name);
  }
  ~EnvGuard() {
    if (m_had)
      setenv(m_name.c_str(), m_old.c_str(), 1);
    else
      unsetenv(m_name.c_str());
  }

private:
  std::string m_name;
  std::string m_old;
  bool m_had;
};

// A fresh directory under /tmp, removed (with what the test put in it) at
// the end.
class ScratchDir {
public:
  ScratchDir() {
    char pattern[] = "/tmp/xyli18nXXXXXX";
    const char *made = mkdtemp(pattern);
    m_path = made != nullptr ? made : "";
  }
  ~ScratchDir() {
    if (!m_path.empty())
      std::system(("rm -rf '" + m_path + "'").c_str());
  }
  const std::string &path() const { return m_path; }
  std::string file(const std::string &name) const { return m_path + "/" + name; }
  void write(const std::string &name, const std::string &content) const {
    std::FILE *f = std::fopen(file(name).c_str(), "wb");
    if (f != nullptr) {
      std::fwrite(content.data(), 1, content.size(), f);
      std::fclose(f);
    }
  }
  void mkdir(const std::string &name) const { ::mkdir(file(name).c_str(), 0755); }

private:
  std::string m_path;
};

// Changes the working directory for the guard's lifetime.
class CwdGuard {
public:
  explicit CwdGuard(const std::string &dir) {
    char buffer[4096];
    m_old = getcwd(buffer, sizeof buffer) != nullptr ? buffer : "/";
    m_ok = chdir(dir.c_str()) == 0;
  }
  ~CwdGuard() {
    if (chdir(m_old.c_str()) != 0)
      std::perror("chdir");
  }
  bool ok() const { return m_ok; }

private:
  std::string m_old;
  bool m_ok;
};

} // namespace i18ntest

#endif
