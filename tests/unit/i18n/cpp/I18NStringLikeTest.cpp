// SPDX-License-Identifier: Apache-2.0
// Tests of src/i18n/cpp/i18n_string_like.cpp: SQL LIKE patterns. Fixed cases
// pin the translation (metacharacters, escapes, empty patterns); a
// reference matcher written here checks random patterns against random
// texts.
#include "I18NStringTestSupport.h"

#include <XYLCore/ExceptionHierarchy/XYLErrors.h>
#include <XYLCore/i18n/cpp/i18n_string.h>

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

using namespace i18nstringtest;

namespace {

// Code points of a UTF-16 text (pairs joined).
std::vector<char32_t> points(const std::u16string &s) {
  std::vector<char32_t> out;
  for (size_t i = 0; i < s.size(); ++i) {
    char32_t c = s[i];
    if (c >= 0xD800 && c < 0xDC00 && i + 1 < s.size() && s[i + 1] >= 0xDC00 && s[i + 1] < 0xE000)
      c = 0x10000 + ((c - 0xD800) << 10) + (s[++i] - 0xDC00);
    out.push_back(c);
  }
  return out;
}

// Token of a LIKE pattern: a literal, ANY (one code point) or RUN ('%').
struct Token {
  int kind; // 0 literal, 1 any, 2 run
  char32_t c;
};

std::vector<Token> tokens(const std::u16string &pattern, char32_t escape) {
  std::vector<Token> out;
  std::vector<char32_t> p = points(pattern);
  for (size_t i = 0; i < p.size(); ++i) {
    if (escape != 0 && p[i] == escape)
      out.push_back({0, i + 1 < p.size() ? p[++i] : escape});
    else if (p[i] == '%')
      out.push_back({2, 0});
    else if (p[i] == '_')
      out.push_back({1, 0});
    else
      out.push_back({0, p[i]});
  }
  return out;
}

// Does the whole of text[from..to) match? Plain dynamic programming.
bool referenceMatch(const std::vector<Token> &t, const std::vector<char32_t> &text, size_t from, size_t to) {
  size_t n = to - from;
  std::vector<std::vector<char>> ok(t.size() + 1, std::vector<char>(n + 1, 0));
  ok[0][0] = 1;
  for (size_t i = 1; i <= t.size(); ++i) {
    const Token &k = t[i - 1];
    for (size_t j = 0; j <= n; ++j) {
      if (k.kind == 2)
        ok[i][j] = ok[i - 1][j] || (j > 0 && ok[i][j - 1]);
      else if (j > 0)
        ok[i][j] = ok[i - 1][j - 1] && (k.kind == 1 || k.c == text[from + j - 1]);
    }
  }
  return ok[t.size()][n] != 0;
}

struct LikeCase {
  std::u16string pattern;
  unsigned int escape;
  std::u16string text;
  bool matches;
  std::u16string substring;
};

} // namespace

TEST(I18NStringLikeTest, FixedCases) {
  const LikeCase cases[] = {
      {u"abc", 0, u"abc", true, u"abc"},
      {u"abc", 0, u"xabcx", false, u"abc"},
      {u"a%", 0, u"abc", true, u"abc"},
      {u"%c", 0, u"abc", true, u"abc"},
      {u"%b%", 0, u"abc", true, u"abc"},
      {u"a_c", 0, u"abc", true, u"abc"},
      {u"a_c", 0, u"ac", false, u""},
      {u"a_c", 0, u"a\U0001F600c", true, u"a\U0001F600c"}, // '_' is one code point
      {u"a_c", 0, u"a\nc", true, u"a\nc"},
      {u"%", 0, u"", true, u""},
      {u"", 0, u"", true, u""},
      {u"", 0, u"x", false, u""},
      {u"%%%%", 0, u"anything", true, u"anything"},
      {u"a%b", 0, u"xaybzb", false, u"aybzb"}, // leftmost start, longest end
      // Regular-expression metacharacters are literals.
      {u"a.c", 0, u"abc", false, u""},
      {u"a.c", 0, u"a.c", true, u"a.c"},
      {u"(a)", 0, u"(a)", true, u"(a)"},
      {u"[ab]", 0, u"a", false, u""},
      {u"[ab]", 0, u"[ab]", true, u"[ab]"},
      {u"a{2}", 0, u"aa", false, u""},
      {u"a{2}", 0, u"a{2}", true, u"a{2}"},
      {u"^a$", 0, u"^a$", true, u"^a$"},
      {u"a+b*c?", 0, u"a+b*c?", true, u"a+b*c?"},
      {u"x|y", 0, u"x|y", true, u"x|y"},
      {u"\\d", 0, u"\\d", true, u"\\d"},
      {u"\\", 0, u"\\", true, u"\\"},
      {u"}]){", 0, u"}]){", true, u"}]){"},
      {u"#  x", 0, u"#  x", true, u"#  x"},
      {u"%.*%", 0, u"a.*b", true, u"a.*b"},
      {u"%.*%", 0, u"ab", false, u""},
      // Escapes.
      {u"10!%", '!', u"10%", true, u"10%"},
      {u"10!%", '!', u"100", false, u""},
      {u"a!_b", '!', u"a_b", true, u"a_b"},
      {u"a!_b", '!', u"axb", false, u""},
      {u"a!!b", '!', u"a!b", true, u"a!b"},
      {u"ab!", '!', u"ab!", true, u"ab!"}, // an escape at the end stands for itself
      {u"\\%", '\\', u"%", true, u"%"},
      {u"\\\\%", '\\', u"\\x", true, u"\\x"},
      {u"a\u00e9%", 0xE9, u"a%", true, u"a%"},
      {u"a\u00e9%", 0xE9, u"a%x", false, u"a%"},
      // Non-ASCII and control characters.
      {u"\u00e9t\u00e9", 0, u"\u00e9t\u00e9", true, u"\u00e9t\u00e9"},
      {u"%\U0001F600%", 0, u"x\U0001F600y", true, u"x\U0001F600y"},
      {u"a\tb", 0, u"a\tb", true, u"a\tb"},
      // A CR LF pair is two characters (found by the LIKE fuzz target).
      {u"a_b%", 0, u"a\r\nb\r\n", false, u""},
      {u"a__b%", 0, u"a\r\nb\r\n", true, u"a\r\nb\r\n"},
      {u"%\n", 0, u"a\r\n", true, u"a\r\n"},
      {u"%\r", 0, u"a\r\n", false, u"a\r"},
  };
  for (const LikeCase &c : cases) {
    I18NString text = u16s(c.text), pattern = u16s(c.pattern);
    EXPECT_EQ(c.matches, text.matchLike(pattern, c.escape)) << utf8Of(pattern) << " on " << utf8Of(text);
    EXPECT_EQ(c.substring, unitsOf(text.substringLike(pattern, c.escape))) << utf8Of(pattern) << " on " << utf8Of(text);
    I18NPatternCode code = I18NString::getPatternCode(pattern, c.escape);
    EXPECT_EQ(c.matches, text.matchLike(code));
    I18NString::deletePatternCode(code);
    EXPECT_EQ(nullptr, code);
  }
  I18NPatternCode none = nullptr;
  I18NString::deletePatternCode(none); // harmless
  EXPECT_THROW(I18NString("x", "UTF-8").matchLike(none), I18NRuntimeError);
}

TEST(I18NStringLikeTest, UnpairedSurrogatesInPatternAndText) {
  std::u16string lone(1, 0xD800);
  I18NString text = u16s(u"a" + lone + u"b");
  EXPECT_TRUE(text.matchLike(u16s(u"a_b")));
  EXPECT_TRUE(text.matchLike(u16s(u"a" + lone + u"b")));
  EXPECT_TRUE(text.matchLike(u16s(u"%" + lone + u"%")));
  EXPECT_FALSE(text.matchLike(u16s(u"a" + std::u16string(1, 0xDC00) + u"b")));
}

// Patterns built to make a backtracking matcher explode must still finish;
// CTest's time-out catches a regression.
TEST(I18NStringLikeTest, PathologicalPatternsStayLinear) {
  I18NString text(static_cast<unsigned int>('a'), 200000);
  EXPECT_FALSE(text.matchLike(I18NString("%a%a%a%a%a%a%a%b", "UTF-8")));
  EXPECT_TRUE(text.matchLike(I18NString("%a%a%a%a%a%a%a%", "UTF-8")));
  EXPECT_FALSE(text.matchLike(I18NString("a%a%a%a%c%", "UTF-8")));
  EXPECT_TRUE(text.substringLike(I18NString("a%b", "UTF-8")).empty());
  EXPECT_TRUE(text.substringLike(I18NString("%c", "UTF-8")).empty());
  EXPECT_EQ(200000, text.substringLike(I18NString("a%a%a", "UTF-8")).length());
}

TEST(I18NStringLikeTest, RandomPatternsAgreeWithReference) {
  std::mt19937 random(20240601);
  const char16_t patternAlphabet[] = {u'a', u'b', u'%', u'_', u'!', u'.', u'\u00e9', u'\n'};
  const char16_t textAlphabet[] = {u'a', u'b', u'%', u'_', u'!', u'.', u'\u00e9', u'\r', u'\n'};
  const size_t np = sizeof patternAlphabet / sizeof patternAlphabet[0];
  const size_t nt = sizeof textAlphabet / sizeof textAlphabet[0];
  for (int round = 0; round < 3000; ++round) {
    std::u16string pattern, text;
    int pl = static_cast<int>(random() % 7), tl = static_cast<int>(random() % 9);
    for (int i = 0; i < pl; ++i)
      pattern += patternAlphabet[random() % np];
    for (int i = 0; i < tl; ++i)
      text += textAlphabet[random() % nt];
    unsigned int escape = (round % 2) ? '!' : 0;
    std::vector<Token> t = tokens(pattern, escape);
    std::vector<char32_t> p = points(text);
    I18NString s = u16s(text);
    I18NString pat = u16s(pattern);
    ASSERT_EQ(referenceMatch(t, p, 0, p.size()), s.matchLike(pat, escape))
        << utf8Of(pat) << " on " << utf8Of(s) << " escape " << escape;
    // substringLike: the leftmost start that has any match, and there the
    // longest match.
    std::u16string expected;
    bool found = false;
    for (size_t from = 0; from <= p.size() && !found; ++from)
      for (size_t to = p.size() + 1; to-- > from && !found;)
        if (referenceMatch(t, p, from, to)) {
          found = true;
          for (size_t k = from; k < to; ++k)
            expected += static_cast<char16_t>(p[k]);
        }
    ASSERT_EQ(expected, unitsOf(s.substringLike(pat, escape))) << utf8Of(pat) << " on " << utf8Of(s);
  }
}
