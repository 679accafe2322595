// SPDX-License-Identifier: Apache-2.0
#include "Resources/XYLCatalogCompiler.h"
#include "Resources/XYLCatalogReader.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

std::vector<XYLCatalogEntry> parseOk(const std::string &source) {
  std::vector<XYLCatalogEntry> entries;
  std::string error;
  EXPECT_TRUE(XYLCatalogCompiler::parse(source.data(), source.size(), entries, error)) << error;
  return entries;
}

TEST(XYLCatalogCompilerTest, ParsesEntries) {
  struct {
    const char *source;
    unsigned int number;
    std::string text;
  } cases[] = {
      {"1 hello", 1, "hello"},
      {"  0x7fffffff\tplain text  \t\r\n", 0x7FFFFFFFu, "plain text"},
      {"4294967295 \"  padded # not a comment \"  # comment", 0xFFFFFFFFu, "  padded # not a comment "},
      {"2 \"\"", 2, ""},
      {"3 a\\tb\\nc\\\\d\\\"e\\rf", 3, "a\tb\nc\\d\"e\rf"},
      {"4 caf\\u00e9 \\U0001F600 \\xC3\\xA9", 4, "caf\xC3\xA9 \xF0\x9F\x98\x80 \xC3\xA9"},
      {"5 unquoted \"quotes\" and # stay", 5, "unquoted \"quotes\" and # stay"},
      {"# comment\n\n   \n6 x", 6, "x"},
  };
  for (const auto &c : cases) {
    SCOPED_TRACE(c.source);
    const std::vector<XYLCatalogEntry> entries = parseOk(c.source);
    ASSERT_EQ(entries.size(), 1u);
    EXPECT_EQ(entries[0].number, c.number);
    EXPECT_EQ(entries[0].text, c.text);
  }
}

TEST(XYLCatalogCompilerTest, RejectsFaultsWithTheirLine) {
  struct {
    std::string source;
    const char *error;
  } cases[] = {
      {"x text", "line 1: expected a message number"},
      {"# c\n4294967296 big", "line 2: message number out of range"},
      {"0x1FFFFFFFF big", "line 1: message number out of range"},
      {"12abc", "line 1: expected a space or tab"},
      {"1", "line 1: missing text"},
      {"1 \"open", "line 1: missing closing quote"},
      {"1 \"a\" b", "line 1: unexpected characters after the closing quote"},
      {"1 a\\q", "line 1: unknown escape \\q"},
      {"1 a\\", "line 1: backslash at the end"},
      {"1 \\u12", "line 1: \\u needs four"},
      {"1 \\u0000", "line 1: escape does not name"},
      {"1 \\uD800", "line 1: escape does not name"},
      {"1 \\U00110000", "line 1: escape does not name"},
      {"1 \\x00", "line 1: a text cannot hold a zero byte"},
      {"1 \xC3(", "line 1: text is not valid UTF-8"},
      {"1 \xE0\x80\x80", "line 1: text is not valid UTF-8"},
      {"1 \\xFF", "line 1: text is not valid UTF-8"},
      {"1 a\x01", "line 1: control character"},
      {std::string("1 a\0b", 5), "line 1: zero byte"},
      {"1 a\n2 b\n0x1 c", "line 3: message number 1 already defined on line 1"},
  };
  for (const auto &c : cases) {
    SCOPED_TRACE(c.source);
    std::vector<XYLCatalogEntry> entries;
    std::string error;
    EXPECT_FALSE(XYLCatalogCompiler::parse(c.source.data(), c.source.size(), entries, error));
    EXPECT_EQ(error.compare(0, std::strlen(c.error), c.error), 0) << error;
  }
}

TEST(XYLCatalogCompilerTest, WrittenCatalogsReadBackAndFormatRoundTrips) {
  const std::vector<XYLCatalogEntry> entries = {{0x80000000u, "high", 0},
                                                {7, "quote\" back\\slash\ttab\nline\r\x01\x7F caf\xC3\xA9", 0},
                                                {0x7FFFFFFFu, "", 0},
                                                {0, "zero", 0}};
  std::string image, error;
  ASSERT_TRUE(XYLCatalogCompiler::write(entries, image, error)) << error;
  char path[] = "/tmp/xyl_catalog_rt_XXXXXX";
  const int fd = ::mkstemp(path);
  ASSERT_GE(fd, 0);
  ASSERT_EQ(::write(fd, image.data(), image.size()), static_cast<ssize_t>(image.size()));
  ::close(fd);
  XYLCatalogReader reader(true);
  ASSERT_TRUE(reader.open(path));
  ::unlink(path);
  // The index is sorted by unsigned number whatever the input order.
  const unsigned int order[] = {0, 7, 0x7FFFFFFFu, 0x80000000u};
  ASSERT_EQ(reader.getCount(), 4u);
  std::string source;
  for (unsigned int i = 0; i < 4; ++i) {
    unsigned int number = 0;
    std::size_t length = 0;
    const char *text = reader.getEntry(i, &number, &length);
    ASSERT_NE(text, nullptr);
    EXPECT_EQ(number, order[i]);
    source += XYLCatalogCompiler::formatEntry(number, text, length) + "\n";
  }
  const std::vector<XYLCatalogEntry> again = parseOk(source);
  ASSERT_EQ(again.size(), 4u);
  for (const XYLCatalogEntry &e : entries) {
    bool found = false;
    for (const XYLCatalogEntry &a : again)
      found = found || (a.number == e.number && a.text == e.text);
    EXPECT_TRUE(found) << e.number;
  }
  EXPECT_FALSE(XYLCatalogCompiler::write({{1, "a", 0}, {1, "b", 0}}, image, error));
  EXPECT_EQ(XYLCatalogCompiler::formatEntry(9, "\xFF", 1), "9 \"\\xFF\"");
}

} // namespace
