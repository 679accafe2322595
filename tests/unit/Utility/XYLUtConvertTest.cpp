// SPDX-License-Identifier: Apache-2.0
#include <XYLCore/Utility/XYLUtConvert.h>

#include <gtest/gtest.h>

#include <climits>
#include <cstdio>
#include <cstring>
#include <string>

namespace {

// Runs a writer at position 3 of a buffer filled with '#', checks that it
// wrote no terminator and advanced the position by what it wrote, and that
// the string form appends the same text.
template <class Writer, class StringWriter> std::string written(Writer writer, StringWriter stringWriter) {
  char buffer[64];
  std::memset(buffer, '#', sizeof buffer);
  unsigned long position = 3;
  writer(buffer, position);
  EXPECT_EQ(buffer[position], '#') << "no terminator, nothing past the position";
  std::string text(buffer + 3, position - 3), appended = "pre";
  stringWriter(appended);
  EXPECT_EQ(appended, "pre" + text);
  return text;
}

std::string longText(long value, unsigned width, char fill, int showSign, char plus = '+', char minus = '-') {
  return written(
      [&](char *b, unsigned long &p) { XYLUtConvert::longCvt(b, p, value, width, fill, showSign, plus, minus); },
      [&](std::string &s) { XYLUtConvert::longCvt(s, value, width, fill, showSign, plus, minus); });
}

std::string ulongText(unsigned long value, unsigned width, char fill, int showSign) {
  return written([&](char *b, unsigned long &p) { XYLUtConvert::ulongCvt(b, p, value, width, fill, showSign, '+'); },
                 [&](std::string &s) { XYLUtConvert::ulongCvt(s, value, width, fill, showSign, '+'); });
}

std::string hexText(unsigned long value, unsigned width, char fill, const char *prefix) {
  return written([&](char *b, unsigned long &p) { XYLUtConvert::hexCvt(b, p, value, width, fill, prefix); },
                 [&](std::string &s) { XYLUtConvert::hexCvt(s, value, width, fill, prefix); });
}

TEST(XYLUtConvertTest, SignGoesBeforeThePaddingUnlessTheFillIsWhiteSpace) {
  struct Case {
    long value;
    unsigned width;
    char fill;
    int showSign;
    std::string text;
  } cases[] = {
      {42, 4, '0', 0, "0042"},
      {-42, 4, '0', 0, "-0042"},
      {-42, 5, ' ', 0, "   -42"},
      {42, 4, ' ', 1, "  +42"},
      {42, 4, '0', 1, "+0042"},
      {-7, 3, '\t', 0, "\t\t-7"},
      {-7, 3, '\r', 0, "\r\r-7"},
      {-7, 3, '\x0E', 0,
       "-\x0E\x0E"
       "7"}, // 0x0E is not white space
      {7, 0, '0', 0, "7"},
      {7, 2, '0', 0, "07"},
      {7, 15, '0', 0, "0000000007"}, // width capped at 10
      {12345, 3, '0', 0, "12345"},
      {999999999, 10, '0', 0, "0999999999"},
      {1000000000, 10, '0', 0, "1000000000"},
      {-2147483647L - 1, 1, ' ', 0, "-2147483648"},
      {12345678901L, 12, '0', 0, "12345678901"},
      {LONG_MIN, 10, ' ', 1, "-9223372036854775808"},
      {0, 1, '0', 0, "0"},
      {0, 3, '0', 1, " 000"},
      {0, 3, ' ', 1, "   0"}, // zero: a blank, not '+'
  };
  for (const Case &c : cases)
    EXPECT_EQ(longText(c.value, c.width, c.fill, c.showSign), c.text) << c.value << " width " << c.width;
  EXPECT_EQ(longText(-7, 3, '_', 1, 'p', 'm'), "m__7");
  EXPECT_EQ(longText(7, 3, '_', 1, 'p', 'm'), "p__7");
  EXPECT_EQ(longText(5, 2, '0', 1, '\0', '-'), std::string("\0"
                                                           "05",
                                                           3));
  EXPECT_EQ(ulongText(5, 3, '0', 1), "+005");
  EXPECT_EQ(ulongText(5, 3, ' ', 1), "  +5");
  EXPECT_EQ(ulongText(0, 2, '0', 1), " 00");
  EXPECT_EQ(ulongText(ULONG_MAX, 20, '0', 0), "18446744073709551615");
}

TEST(XYLUtConvertTest, HexPrefixStandsWhereTheSignWould) {
  struct Case {
    unsigned long value;
    unsigned width;
    char fill;
    const char *prefix;
    std::string text;
  } cases[] = {
      {255, 4, '0', "0x", "0x00FF"},
      {255, 4, ' ', "0x", "  0xFF"},
      {255, 1, ' ', nullptr, "FF"},
      {0xABCDEF, 2, '0', "#", "#ABCDEF"},
      {0, 3, '0', "0x", "0x000"},
      {0, 3, ' ', "0x", "  0x0"},
      {1, 12, '0', nullptr, "00000001"},
      {0xFFFFFFF, 8, '0', nullptr, "0FFFFFFF"},
      {0x123456789UL, 1, '0', "0x", "0x123456789"},
  };
  for (const Case &c : cases)
    EXPECT_EQ(hexText(c.value, c.width, c.fill, c.prefix), c.text) << c.value;
  EXPECT_STREQ(XYLUtConvert::getHexPrefix(), "0x");
}

// Digit counting at every power of the base, against the C library.
TEST(XYLUtConvertTest, AgreesWithTheCLibraryAtEveryDigitBoundary) {
  for (int shift = 0; shift < 64; ++shift) {
    for (long delta : {-1L, 0L, 1L}) {
      unsigned long value = (1UL << shift) + static_cast<unsigned long>(delta);
      char expected[32];
      std::snprintf(expected, sizeof expected, "%lX", value);
      EXPECT_EQ(hexText(value, 1, ' ', nullptr), expected);
    }
  }
  unsigned long power = 1;
  for (int digits = 1; digits <= 20; ++digits, power *= digits <= 20 ? 10 : 1) {
    for (long delta : {-1L, 0L, 1L}) {
      unsigned long value = power + static_cast<unsigned long>(delta);
      EXPECT_EQ(ulongText(value, 1, ' ', 0), std::to_string(value));
      if (value <= static_cast<unsigned long>(LONG_MAX)) {
        EXPECT_EQ(longText(-static_cast<long>(value), 1, ' ', 0), std::to_string(-static_cast<long>(value)));
      }
    }
  }
}

} // namespace
