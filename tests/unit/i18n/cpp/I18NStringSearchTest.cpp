// SPDX-License-Identifier: Apache-2.0
// Tests of src/i18n/cpp/i18n_string_search.cpp: the four search families and
// their shared rules. Every case runs on the string as built (ASCII mode for
// ASCII text) and again on a copy forced into Unicode mode, so that the byte
// path and the UTF-16 path must agree.
#include "I18NStringTestSupport.h"

#include <XYLCore/i18n/cpp/i18n_string.h>

#include <gtest/gtest.h>

#include <climits>

#include <string>
#include <vector>

using namespace i18nstringtest;

namespace {

enum Family { Find, RFind, FirstOf, FirstNotOf, LastOf, LastNotOf };
enum NeedleForm { AsString, AsArray, AsCodePoint };

const int kNoStart = INT_MIN; // the backward overloads without a start

struct Case {
  Family family;
  std::u16string haystack;
  std::u16string needle;
  int start;
  int expected;
};

const char *familyName(Family f) {
  static const char *names[] = {"find", "rfind", "findFirstOf", "findFirstNotOf", "findLastOf", "findLastNotOf"};
  return names[f];
}

std::vector<unsigned int> codePointsOf(const std::u16string &units) {
  std::vector<unsigned int> points;
  for (size_t i = 0; i < units.size(); ++i) {
    unsigned int c = units[i];
    if (c >= 0xD800 && c < 0xDC00 && i + 1 < units.size() && units[i + 1] >= 0xDC00 && units[i + 1] < 0xE000)
      c = 0x10000 + ((c - 0xD800) << 10) + (units[++i] - 0xDC00);
    points.push_back(c);
  }
  points.push_back(0);
  return points;
}

int run(const I18NString &s, const Case &c, NeedleForm form) {
  I18NString needle = u16s(c.needle);
  std::vector<unsigned int> points = codePointsOf(c.needle);
  unsigned int single = points.size() > 1 ? points[0] : 0;
  bool noStart = c.start == kNoStart;
#define XYL_SEARCH(call)                                                                                               \
  (form == AsString  ? s.call(needle XYL_START)                                                                        \
   : form == AsArray ? s.call(points.data() XYL_START)                                                                 \
                     : s.call(single XYL_START))
#define XYL_START , c.start
  switch (c.family) {
  case Find:
    return XYL_SEARCH(find);
  case FirstOf:
    return XYL_SEARCH(findFirstOf);
  case FirstNotOf:
    return XYL_SEARCH(findFirstNotOf);
  default:
    break;
  }
  if (!noStart) {
    switch (c.family) {
    case RFind:
      return XYL_SEARCH(rfind);
    case LastOf:
      return XYL_SEARCH(findLastOf);
    default:
      return XYL_SEARCH(findLastNotOf);
    }
  }
#undef XYL_START
#define XYL_START
  switch (c.family) {
  case RFind:
    return XYL_SEARCH(rfind);
  case LastOf:
    return XYL_SEARCH(findLastOf);
  default:
    return XYL_SEARCH(findLastNotOf);
  }
#undef XYL_START
#undef XYL_SEARCH
}

void check(const std::vector<Case> &cases, NeedleForm form) {
  for (const Case &c : cases) {
    I18NString s = u16s(c.haystack);
    EXPECT_EQ(c.expected, run(s, c, form))
        << familyName(c.family) << " form " << form << " start " << c.start << " in \"" << utf8Of(s) << "\"";
    I18NString::setForceUnicodeString(true);
    I18NString forced = u16s(c.haystack);
    I18NString::setForceUnicodeString(false);
    ASSERT_TRUE(forced.isUnicodeMode() || c.haystack.empty());
    EXPECT_EQ(c.expected, run(forced, c, form))
        << familyName(c.family) << " (Unicode mode) form " << form << " start " << c.start;
  }
}

} // namespace

TEST(I18NStringSearchTest, SharedRules) {
  std::vector<Case> cases;
  for (Family f : {Find, RFind, FirstOf, FirstNotOf, LastOf, LastNotOf}) {
    cases.push_back({f, u"", u"a", 0, -1});         // empty string
    cases.push_back({f, u"abc", u"", 0, -1});       // empty needle
    cases.push_back({f, u"abc", u"a", 3, -1});      // start at the length
    cases.push_back({f, u"abc", u"a", 99, -1});     // beyond it
    cases.push_back({f, u"\u00e9bc", u"x", 3, -1}); // Unicode mode too
  }
  cases.push_back({Find, u"abca", u"a", -5, 0}); // negative start counts as 0
  cases.push_back({RFind, u"abca", u"a", -5, 0});
  cases.push_back({FirstOf, u"abca", u"c", -1, 2});
  cases.push_back({LastNotOf, u"abca", u"b", -1, 0});
  check(cases, AsString);
  check(cases, AsArray);
  I18NString abc("abc", "UTF-8");
  EXPECT_EQ(-1, abc.find(0u));
  EXPECT_EQ(-1, abc.rfind(0u, 2));
  EXPECT_EQ(-1, abc.findFirstOf(0u));
  EXPECT_EQ(-1, abc.findFirstNotOf(0u));
}

TEST(I18NStringSearchTest, FindAndRFind) {
  const std::vector<Case> strings = {
      {Find, u"hello world, hello", u"hello", 0, 0},
      {Find, u"hello world, hello", u"hello", 1, 13},
      {Find, u"hello world, hello", u"hello", 14, -1},
      {Find, u"aaa", u"aa", 1, 1},
      {Find, u"abc", u"abcd", 0, -1},
      {Find, u"caf\u00e9 caf\u00e9", u"\u00e9", 4, 8},
      {Find, u"x\U0001F600y\U0001F600", u"\U0001F600y", 0, 1},
      {Find, u"plain ascii", u"\u00e9", 0, -1},
      {RFind, u"hello world, hello", u"hello", 17, 13},
      {RFind, u"hello world, hello", u"hello", 12, 0},
      {RFind, u"hello world, hello", u"hello", kNoStart, 13},
      {RFind, u"aaa", u"aa", kNoStart, 1},
      {RFind, u"aaa", u"aa", 0, 0},
      {RFind, u"abcabc", u"bc", 3, 1},
      {RFind, u"caf\u00e9 caf\u00e9", u"caf\u00e9", 4, 0},
      {RFind, u"\U0001F600\U0001F600", u"\U0001F600", kNoStart, 2},
  };
  check(strings, AsString);
  check(strings, AsArray);
  const std::vector<Case> points = {
      {Find, u"banana", u"n", 0, 2},
      {Find, u"banana", u"n", 3, 4},
      {Find, u"b\u00e4n\u00e4n\u00e4", u"\u00e4", 2, 3},
      {RFind, u"banana", u"a", kNoStart, 5},
      {RFind, u"banana", u"a", 4, 3},
      {RFind, u"x\U0001F600x", u"\U0001F600", 3, 1},
  };
  check(points, AsCodePoint);
}

TEST(I18NStringSearchTest, SetFamilies) {
  const std::vector<Case> cases = {
      {FirstOf, u"hello, world", u" ,", 0, 5},
      {FirstOf, u"hello, world", u" ,", 6, 6},
      {FirstOf, u"hello", u"xyz", 0, -1},
      {FirstOf, u"d\u00e9j\u00e0 vu", u"\u00e0\u00e9", 0, 1},
      {FirstOf, u"ab\U0001F600c", u"c\U0001F600", 0, 2},
      {FirstNotOf, u"   indent", u" ", 0, 3},
      {FirstNotOf, u"aaaa", u"a", 0, -1},
      {FirstNotOf, u"\u00e9\u00e9x", u"\u00e9", 0, 2},
      {FirstNotOf, u"abc", u"\u00e9", 0, 0}, // a non-ASCII set member cannot occur
      {LastOf, u"a/b/c", u"/", kNoStart, 3},
      {LastOf, u"a/b/c", u"/", 2, 1},
      {LastOf, u"a/b/c", u"/", 0, -1},
      {LastOf, u"x\U0001F600y", u"\U0001F600", kNoStart, 1},
      {LastOf, u"x\U0001F600y", u"\U0001F600", 2, 1}, // start inside the pair
      {LastNotOf, u"trailing   ", u" ", kNoStart, 7},
      {LastNotOf, u"   ", u" ", kNoStart, -1},
      {LastNotOf, u"a\U0001F600\U0001F600", u"\U0001F600", kNoStart, 0},
  };
  check(cases, AsString);
  check(cases, AsArray);
  const std::vector<Case> points = {
      {FirstOf, u"key=value", u"=", 0, 3},
      {FirstNotOf, u"xxy", u"x", 0, 2},
      {LastOf, u"key=value=", u"=", kNoStart, 9},
      {LastNotOf, u"value==", u"=", kNoStart, 4},
  };
  check(points, AsCodePoint);
}

TEST(I18NStringSearchTest, NonAsciiNeedleMovesAsciiStringToUnicodeMode) {
  I18NString s("plain ascii", "UTF-8");
  EXPECT_EQ(-1, s.find(0x2603u));
  EXPECT_TRUE(s.isUnicodeMode());
  I18NString t("plain ascii", "UTF-8");
  EXPECT_EQ(6, t.find(static_cast<unsigned int>('a'), 3));
  EXPECT_FALSE(t.isUnicodeMode());
}

TEST(I18NStringSearchTest, NeedleIsBroughtIntoTheStringsNormalisationForm) {
  // A composed e-acute in a normalised string is found from a decomposed
  // needle; the Kelvin sign normalises to the letter K, and the Greek
  // question mark to a semicolon, so they are found in plain text too.
  I18NString s = u8s("caf\xC3\xA9 Kelvin; x");
  s.normalize();
  ASSERT_TRUE(s.isNormalized());
  EXPECT_EQ(3, s.find(u16s(u"e\u0301")));
  EXPECT_EQ(5, s.find(0x212Au));
  EXPECT_EQ(11, s.find(0x037Eu));
  EXPECT_EQ(11, s.rfind(0x037Eu));
  s.useNormalization(false);
  s.append(0x20u); // a change: the string is no longer known to be normalised
  EXPECT_EQ(-1, s.find(0x212Au));
  I18NString nfd = u8s("caf\xC3\xA9");
  nfd.normalize(I18N_NORMALIZATION_NFD);
  EXPECT_EQ(3, nfd.find(0xE9u)); // the needle follows the string's form (NFD)
}
