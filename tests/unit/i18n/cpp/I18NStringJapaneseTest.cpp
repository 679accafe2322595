// SPDX-License-Identifier: Apache-2.0
// The Japanese compatibility step of I18NString::normalize, end to end: the
// platform encoding comes from the locale settings and is worked out once per
// process, so each case runs a probe process with its own environment. The
// Shift_JIS and EUC-JP locales are built into a scratch directory with
// localedef (skipped when the machine cannot build them).
#include "I18NTestSupport.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

// The seven characters of the default substitution table, a character that
// normal composition changes (e + combining acute) and one the table leaves
// alone (hiragana a).
const char kInput[] = "301C 2016 2212 00A2 00A3 00AC 2014 0041 0065 0301 3042";
const char kTransliterated[] = "FF5E 2225 FF0D FFE0 FFE1 FFE2 2015 0041 00E9 3042";
const char kComposedOnly[] = "301C 2016 2212 00A2 00A3 00AC 2014 0041 00E9 3042";

class ScratchLocales {
public:
  ScratchLocales() {
    char pattern[] = "/tmp/xyl-jalocale-XXXXXX";
    if (mkdtemp(pattern) != nullptr)
      m_path = pattern;
  }
  ~ScratchLocales() {
    if (!m_path.empty())
      std::system(("rm -rf '" + m_path + "'").c_str());
  }
  // Builds ja_JP in `charmap` as `name`; false when localedef cannot. -c keeps
  // the Shift_JIS build going past its "not ASCII compatible" warning.
  bool build(const char *charmap, const char *name) const {
    if (m_path.empty())
      return false;
    const std::string target = m_path + "/" + name;
    const std::string command =
        std::string("localedef -c -i ja_JP -f ") + charmap + " '" + target + "' >/dev/null 2>&1";
    std::system(command.c_str());
    return access((target + "/LC_CTYPE").c_str(), R_OK) == 0;
  }
  const std::string &path() const { return m_path; }

private:
  std::string m_path;
};

// The probe's three lines: platform encoding, normalised, normalised with the
// step skipped.
std::vector<std::string> runProbe(const std::string &environment) {
  return i18ntest::commandOutputLines("env -i " + environment + " '" XYL_I18N_JAPANESE_PROBE "' " + kInput);
}

} // namespace

TEST(I18NStringJapaneseTest, StepRunsOnlyUnderAnIbmJapaneseCodePage) {
  ScratchLocales locales;
  const bool haveSjis = locales.build("SHIFT_JIS", "ja_JP.SJIS");
  const bool haveEuc = locales.build("EUC-JP", "ja_JP.EUC-JP");
  const std::string locpath = "LOCPATH='" + locales.path() + "' ";
  struct Case {
    bool available;
    std::string environment;
    const char *encodingPrefix; // of the platform default encoding
    const char *normalized;     // without the skip flag
  } cases[] = {
      // Shift_JIS resolves to IBM code page 943, whose table maps the JIS
      // wave dash and its six companions differently from Unicode.
      {haveSjis, locpath + "LC_ALL=ja_JP.SJIS", "ibm-943", kTransliterated},
      // EUC-JP resolves to a JIS table that maps these characters as
      // Unicode does: nothing to substitute.
      {haveEuc, locpath + "LC_ALL=ja_JP.EUC-JP", "euc-jp", kComposedOnly},
      // A Shift_JIS code set counts even when no such locale is installed.
      {true, "LANG=ja_JP.SJIS", "ibm-943", kTransliterated},
      {true, "LC_ALL=C", "UTF-8", kComposedOnly},
      {true, "LC_ALL=C.UTF-8", "UTF-8", kComposedOnly},
  };
  int ran = 0;
  for (const Case &c : cases) {
    if (!c.available)
      continue;
    ++ran;
    const std::vector<std::string> lines = runProbe(c.environment);
    ASSERT_EQ(3u, lines.size()) << c.environment;
    EXPECT_EQ(0u, lines[0].rfind(c.encodingPrefix, 0)) << c.environment << ": " << lines[0];
    EXPECT_EQ(c.normalized, lines[1]) << c.environment;
    EXPECT_EQ(kComposedOnly, lines[2]) << c.environment << " (step skipped)";
  }
  if (!haveSjis)
    GTEST_SKIP() << "localedef could not build a Shift_JIS locale; only " << ran << " non-Japanese cases ran";
}
