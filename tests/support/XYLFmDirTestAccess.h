/* SPDX-License-Identifier: Apache-2.0 */
// Test-only access to XYLFmDir's process-wide effective working and
// temporary directories, and a scratch directory that removes itself.
#ifndef XYLCORE_TESTS_SUPPORT_XYLFMDIRTESTACCESS_H
#define XYLCORE_TESTS_SUPPORT_XYLFMDIRTESTACCESS_H

#include <XYLCore/FileManagement/XYLFmDir.h>

#include <cstdio>
#include <cstdlib>
#include <ftw.h>
#include <stdexcept>
#include <string>
#include <unistd.h>

// Befriended by XYLFmDir.
class XYLFmDirTestAccess {
public:
  static int setEffectiveWorkingDir(const char *directory) { return XYLFmDir::setEffectiveWorkingDir(directory); }
  static int setTempPath(const char *directory) { return XYLFmDir::setTempPath(directory); }
};

namespace xyltest {

// Sets the effective working directory for one scope and clears it after.
class ScopedEffectiveWorkingDir {
public:
  explicit ScopedEffectiveWorkingDir(const std::string &directory) {
    XYLFmDirTestAccess::setEffectiveWorkingDir(directory.c_str());
  }
  ~ScopedEffectiveWorkingDir() { XYLFmDirTestAccess::setEffectiveWorkingDir(nullptr); }

private:
  ScopedEffectiveWorkingDir(const ScopedEffectiveWorkingDir &) = delete;
  ScopedEffectiveWorkingDir &operator=(const ScopedEffectiveWorkingDir &) = delete;
};

// Sets the explicit temporary directory for one scope and clears it after.
class ScopedTempPath {
public:
  explicit ScopedTempPath(const std::string &directory) { XYLFmDirTestAccess::setTempPath(directory.c_str()); }
  ~ScopedTempPath() { XYLFmDirTestAccess::setTempPath(nullptr); }

private:
  ScopedTempPath(const ScopedTempPath &) = delete;
  ScopedTempPath &operator=(const ScopedTempPath &) = delete;
};

// A fresh directory under $TMPDIR (or /tmp), removed with its contents.
class ScratchDirectory {
public:
  ScratchDirectory() {
    const char *base = std::getenv("TMPDIR");
    std::string pattern = std::string(base != nullptr && *base != '\0' ? base : "/tmp") + "/xyltest.XXXXXX";
    if (::mkdtemp(&pattern[0]) == nullptr)
      throw std::runtime_error("mkdtemp failed");
    m_path = pattern;
  }
  ~ScratchDirectory() {
    ::nftw(
        m_path.c_str(), [](const char *path, const struct stat *, int, struct FTW *) { return ::remove(path); }, 16,
        FTW_DEPTH | FTW_PHYS);
  }
  const std::string &path() const { return m_path; }
  std::string operator/(const std::string &name) const { return m_path + "/" + name; }

private:
  ScratchDirectory(const ScratchDirectory &) = delete;
  ScratchDirectory &operator=(const ScratchDirectory &) = delete;

  std::string m_path;
};

} // namespace xyltest

#endif
