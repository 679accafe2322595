// SPDX-License-Identifier: Apache-2.0
#include <XYLCore/Utility/XYLUtStrTok.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

// Opens the protected restart operations.
class RestartableTokenizer : public XYLUtStrTok {
public:
  using XYLUtStrTok::clear;
  using XYLUtStrTok::reset;
  using XYLUtStrTok::set;
  using XYLUtStrTok::XYLUtStrTok;
};

using Tokens = std::vector<std::string>;

TEST(XYLUtStrTokTest, RunsOfDelimitersNeverMakeEmptyTokens) {
  struct Case {
    const char *text, *delimiters;
    Tokens tokens;
  } cases[] = {{",,a,,b,", ",", {"a", "b"}},
               {",,,", ",", {}},
               {"", ",", {}},
               {"a,,,,b", ",", {"a", "b"}},
               {"a,b;c,;d", ",;", {"a", "b", "c", "d"}},
               {"  a\tb\n c  ", nullptr, {"a", "b", "c"}},
               {"x\vy\fz\rw", nullptr, {"x", "y", "z", "w"}},
               {"\v\f\r \t\n", nullptr, {}},
               {"a b", "", {"a b"}},
               {"\xC3\xA9,\xC3\xA8", ",", {"\xC3\xA9", "\xC3\xA8"}}};
  for (const Case &c : cases) {
    SCOPED_TRACE(c.text);
    Tokens bySteps, byObject;
    const char *position = nullptr;
    long length = -1;
    while (const char *token = XYLUtStrTok::nextToken(c.text, position, length, c.delimiters)) {
      EXPECT_EQ(token, position);
      bySteps.emplace_back(token, static_cast<size_t>(length));
    }
    EXPECT_EQ(length, 0);
    XYLUtStrTok tokenizer(c.text, c.delimiters);
    while (const char *token = tokenizer.next())
      byObject.emplace_back(token);
    EXPECT_EQ(bySteps, c.tokens);
    EXPECT_EQ(byObject, c.tokens);
    EXPECT_EQ(XYLUtStrTok::countTokens(c.text, c.delimiters), static_cast<long>(c.tokens.size()));
  }
  const char *position = "stale";
  long length = 9;
  EXPECT_EQ(XYLUtStrTok::nextToken(nullptr, position, length, ","), nullptr);
  EXPECT_TRUE(position == nullptr && length == 0);
  EXPECT_EQ(XYLUtStrTok::countTokens(nullptr, ","), 0);
  EXPECT_EQ(XYLUtStrTok(nullptr).next(), nullptr);
}

// The delimiter that ended a token is skipped whatever the next set is;
// after the end the scan starts over.
TEST(XYLUtStrTokTest, DelimitersMayChangeBetweenTokens) {
  XYLUtStrTok tokenizer("a,b;c d", ";"), other("a,b;c d", ",");
  EXPECT_STREQ(tokenizer.next(","), "a");
  EXPECT_STREQ(other.next(), "a");
  EXPECT_STREQ(tokenizer.next(";"), "b");
  EXPECT_STREQ(tokenizer.next(" "), "c");
  EXPECT_STREQ(tokenizer.next(), "d");
  EXPECT_EQ(tokenizer.next(), nullptr);
  EXPECT_STREQ(tokenizer.next(","), "a");
  EXPECT_STREQ(other.next(), "b;c d");
}

TEST(XYLUtStrTokTest, RestartingOnNewTextsGrowsTheBuffer) {
  RestartableTokenizer tokenizer("ab cd");
  EXPECT_STREQ(tokenizer.next(), "ab");
  tokenizer.reset();
  EXPECT_STREQ(tokenizer.next(), "ab");
  std::string longText = std::string(5000, 'z') + ":tail";
  tokenizer.set(longText.c_str(), ":");
  EXPECT_EQ(std::string(tokenizer.next()), std::string(5000, 'z'));
  EXPECT_STREQ(tokenizer.next(), "tail");
  tokenizer.set(nullptr, ",");
  EXPECT_EQ(tokenizer.next(), nullptr);
  tokenizer.set("p,q", ",");
  EXPECT_STREQ(tokenizer.next(), "p");
  tokenizer.clear();
  EXPECT_EQ(tokenizer.next(), nullptr);
}

} // namespace
