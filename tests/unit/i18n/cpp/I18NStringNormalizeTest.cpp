// SPDX-License-Identifier: Apache-2.0
// Tests of src/i18n/cpp/i18n_string_normalize.cpp: the whole of Unicode's
// NormalizationTest.txt, the flags, and code points the resources declare
// non-normalisable.
#include "I18NStringTestSupport.h"

#include <XYLCore/i18n/cpp/i18n_internalresources.h>
#include <XYLCore/i18n/cpp/i18n_string.h>

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <set>
#include <sstream>
#include <string>
#include <unistd.h>
#include <vector>

using namespace i18nstringtest;

namespace {

// The conformance file of the unicode-data package, plain or compressed.
bool readNormalizationTest(std::string &text, std::string &source) {
  const char *plain = "/usr/share/unicode/NormalizationTest.txt";
  const char *packed = "/usr/share/unicode/NormalizationTest.txt.bz2";
  std::ifstream in(plain);
  if (in) {
    std::stringstream all;
    all << in.rdbuf();
    text = all.str();
    source = plain;
    return true;
  }
  if (access(packed, R_OK) != 0)
    return false;
  std::unique_ptr<FILE, int (*)(FILE *)> pipe(popen((std::string("bzip2 -dc ") + packed).c_str(), "r"), pclose);
  if (!pipe)
    return false;
  char buffer[65536];
  size_t n;
  while ((n = fread(buffer, 1, sizeof buffer, pipe.get())) > 0)
    text.append(buffer, n);
  source = packed;
  return !text.empty();
}

std::vector<unsigned int> parseField(const std::string &field) {
  std::vector<unsigned int> points;
  std::istringstream in(field);
  std::string hex;
  while (in >> hex)
    points.push_back(static_cast<unsigned int>(std::strtoul(hex.c_str(), nullptr, 16)));
  points.push_back(0);
  return points;
}

std::u16string normalized(const std::vector<unsigned int> &points, I18NNormalizationForms form) {
  I18NString s(points.data());
  s.normalize(form);
  return unitsOf(s);
}

std::u16string unitsOfPoints(const std::vector<unsigned int> &points) { return unitsOf(I18NString(points.data())); }

} // namespace

TEST(I18NStringNormalizeTest, ConformanceFileInFull) {
  std::string text, source;
  if (!readNormalizationTest(text, source))
    GTEST_SKIP() << "/usr/share/unicode/NormalizationTest.txt(.bz2) is absent: install the unicode-data package";
  ASSERT_FALSE(I18NInternalResources::hasNonNormalizableCharacters()) << "the conformance run needs no exclusions";
  std::istringstream lines(text);
  std::string line;
  std::set<unsigned int> part1;
  bool inPart1 = false;
  int checked = 0, failures = 0;
  while (std::getline(lines, line)) {
    if (line.empty() || line[0] == '#')
      continue;
    if (line[0] == '@') {
      inPart1 = line.rfind("@Part1", 0) == 0;
      continue;
    }
    std::vector<std::vector<unsigned int>> c;
    std::istringstream fields(line);
    std::string field;
    for (int k = 0; k < 5 && std::getline(fields, field, ';'); ++k)
      c.push_back(parseField(field));
    ASSERT_EQ(5u, c.size()) << line;
    if (inPart1)
      part1.insert(c[0][0]);
    std::u16string u[5];
    for (int k = 0; k < 5; ++k)
      u[k] = unitsOfPoints(c[k]);
    // c2 == NFC(c1) == NFC(c2) == NFC(c3); c4 == NFC(c4) == NFC(c5)
    // c3 == NFD(c1) == NFD(c2) == NFD(c3); c5 == NFD(c4) == NFD(c5)
    // c4 == NFKC(c1..c5); c5 == NFKD(c1..c5)
    const struct {
      I18NNormalizationForms form;
      int expected[5];
    } checks[] = {
        {I18N_NORMALIZATION_NFC, {1, 1, 1, 3, 3}},  {I18N_NORMALIZATION_DEFAULT, {1, 1, 1, 3, 3}},
        {I18N_NORMALIZATION_NFD, {2, 2, 2, 4, 4}},  {I18N_NORMALIZATION_NFKC, {3, 3, 3, 3, 3}},
        {I18N_NORMALIZATION_NFKD, {4, 4, 4, 4, 4}},
    };
    for (const auto &check : checks) {
      for (int k = 0; k < 5; ++k) {
        ++checked;
        if (normalized(c[k], check.form) != u[check.expected[k]] && ++failures <= 20)
          ADD_FAILURE() << "form " << check.form << " of column " << k + 1 << " in: " << line;
      }
    }
  }
  // Every code point not listed in part 1 is unchanged by every form.
  for (unsigned int cp = 1; cp <= 0x10FFFF; ++cp) {
    if (part1.count(cp) != 0 || (cp >= 0xD800 && cp <= 0xDFFF))
      continue;
    std::vector<unsigned int> one = {cp, 0};
    for (I18NNormalizationForms form :
         {I18N_NORMALIZATION_NFC, I18N_NORMALIZATION_NFD, I18N_NORMALIZATION_NFKC, I18N_NORMALIZATION_NFKD}) {
      ++checked;
      if (normalized(one, form) != unitsOfPoints(one) && ++failures <= 20)
        ADD_FAILURE() << "U+" << std::hex << cp << " changed under form " << form;
    }
  }
  EXPECT_EQ(0, failures) << "of " << checked << " checks from " << source;
  EXPECT_GT(part1.size(), 10000u) << "the file looks truncated";
}

TEST(I18NStringNormalizeTest, FlagsAndTheQuickCheck) {
  // A new string is normalised; building non-ASCII content clears that.
  EXPECT_TRUE(I18NString().isNormalized());
  EXPECT_TRUE(I18NString("ascii", "UTF-8").isNormalized());
  I18NString s = u8s("e\xCC\x81");
  EXPECT_FALSE(s.isNormalized());
  s.normalize();
  EXPECT_TRUE(s.isNormalized());
  EXPECT_EQ(u"\u00e9", unitsOf(s));
  s.normalize(I18N_NORMALIZATION_NFD);
  EXPECT_FALSE(s.isNormalized()); // not the default form
  EXPECT_EQ(u"e\u0301", unitsOf(s));
  s.normalize(I18N_NORMALIZATION_NFC);
  EXPECT_TRUE(s.isNormalized());
  // Already normalised: the quick check says so and nothing changes, so the
  // cached byte form survives.
  const char *bytes = s.c_str("UTF-16");
  s.normalize();
  EXPECT_EQ(bytes, s.c_str("UTF-16"));
  // Off: the flag is set and the text stays.
  I18NString off = u8s("e\xCC\x81");
  off.useNormalization(false);
  off.normalize(I18N_NORMALIZATION_NFC);
  EXPECT_TRUE(off.isNormalized());
  EXPECT_EQ(u"e\u0301", unitsOf(off));
  off.useNormalization(true);
  off.normalize(I18N_NORMALIZATION_NFKC);
  EXPECT_EQ(u"\u00e9", unitsOf(off));
  // An empty string and an out-of-range form.
  I18NString empty;
  empty.normalize(I18N_NORMALIZATION_NFKD);
  EXPECT_TRUE(empty.isNormalized());
  I18NString odd = u8s("\xEF\xAC\x81"); // U+FB01 LATIN SMALL LIGATURE FI
  odd.normalize(static_cast<I18NNormalizationForms>(42));
  EXPECT_EQ(u"\ufb01", unitsOf(odd)); // treated as the default (canonical) form
  // Unpaired surrogates pass through every form.
  std::u16string lone = u"a" + std::u16string(1, 0xDC00) + u"e\u0301";
  I18NString withLone = u16s(lone);
  withLone.normalize();
  EXPECT_EQ(u"a" + std::u16string(1, 0xDC00) + u"\u00e9", unitsOf(withLone));
}

TEST(I18NStringNormalizeTest, NonNormalizableCodePointsSurviveEveryForm) {
  char path[] = "/tmp/xyl_i18n_string_resXXXXXX";
  int fd = mkstemp(path);
  ASSERT_GE(fd, 0);
  const std::string xml = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<i18nResources>\n"
                          "<nonNormalizableCharacters><codePoint value=\"212B\"/><range first=\"FB00\" "
                          "last=\"FB06\"/></nonNormalizableCharacters>\n</i18nResources>\n";
  ASSERT_EQ(static_cast<ssize_t>(xml.size()), write(fd, xml.data(), xml.size()));
  close(fd);
  ASSERT_EQ(1, I18NInternalResources::load(path));
  struct Case {
    std::u16string text;
    I18NNormalizationForms form;
    std::u16string expected;
  } cases[] = {
      // U+212B ANGSTROM SIGN normally becomes U+00C5.
      {u"\u212b", I18N_NORMALIZATION_NFC, u"\u212b"},
      {u"A\u030a\u212bA\u030a", I18N_NORMALIZATION_NFC, u"\u00c5\u212b\u00c5"},
      {u"\u212b\u0301", I18N_NORMALIZATION_NFD, u"\u212b\u0301"},
      {u"\ufb01x\u00c5", I18N_NORMALIZATION_NFKD, u"\ufb01xA\u030a"},
      {u"e\u212b\u0301", I18N_NORMALIZATION_NFC, u"e\u212b\u0301"}, // nothing composes across it
  };
  for (const Case &c : cases) {
    I18NString s = u16s(c.text);
    s.normalize(c.form);
    EXPECT_EQ(c.expected, unitsOf(s));
  }
  I18NInternalResources::load("/nonexistent/i18n_res.xml"); // back to the built-in defaults
  EXPECT_FALSE(I18NInternalResources::hasNonNormalizableCharacters());
  unlink(path);
}
