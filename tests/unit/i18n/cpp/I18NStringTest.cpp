// SPDX-License-Identifier: Apache-2.0
// Tests of src/i18n/cpp/i18n_string.cpp: construction and the ASCII fast
// path, the allocator contract, queries, offsets and modification.
#include "I18NStringTestSupport.h"

#include <XYLCore/ExceptionHierarchy/XYLErrors.h>
#include <XYLCore/Utility/XYLUtMemory.h>
#include <XYLCore/i18n/cpp/i18n_converter.h>
#include <XYLCore/i18n/cpp/i18n_string.h>

#include <XYLFaultInjection.h>
#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <sstream>
#include <string>
#include <unicode/ustring.h>
#include <vector>

using namespace i18nstringtest;

namespace {

// Resets the force-Unicode flag whatever a test does.
struct ForceUnicode {
  explicit ForceUnicode(bool on) { I18NString::setForceUnicodeString(on); }
  ~ForceUnicode() { I18NString::setForceUnicodeString(false); }
};

std::string traceOf(const XYLThrowable &e) {
  XYLList<char *> lines(e.getBackTrace());
  std::string all;
  for (auto it = lines.begin(); it != lines.end(); ++it)
    all += *it;
  return all;
}

} // namespace

// ---- The ASCII fast path -------------------------------------------------------------

TEST(I18NStringTest, DefaultConstructionAllocatesNothing) {
  long icuBefore = icuAllocations();
  XYLUtMemory::setFailureCountdown(1, 1); // any allocation through the seam would fail
  {
    I18NString s;
    EXPECT_TRUE(s.empty());
    EXPECT_EQ(0, s.length());
    EXPECT_EQ(0, s.size());
    EXPECT_STREQ("", s.c_str());
  }
  EXPECT_EQ(0, XYLUtMemory::setFailureCountdown(0, 0)) << "an allocation went through XYLUtMemory";
  EXPECT_EQ(icuBefore, icuAllocations());
}

TEST(I18NStringTest, AsciiTextNeverTouchesIcu) {
  const std::string text = "GET /index.html HTTP/1.1 key=value; english text";
  long opens = I18NConverter::getOpenCount(), clones = I18NConverter::getCloneCount();
  long icuBefore = icuAllocations();
  I18NString s(text.c_str(), "UTF-8", static_cast<int>(text.size()));
  I18NString t(text.c_str(), "windows-1252");
  I18NString u(text.c_str(), "ISO-8859-1", -1);
  EXPECT_EQ(static_cast<int>(text.size()), s.length());
  EXPECT_EQ(7, s.find(I18NString("dex", "ascii")));
  EXPECT_EQ(5, s.find(static_cast<unsigned int>('i')));
  EXPECT_EQ(s, t);
  s.erase(0, 4);
  s.append(static_cast<unsigned int>('!'), 2);
  s.trimTrailing('!');
  EXPECT_STREQ(text.c_str() + 4, s.c_str("ISO-8859-15"));
  char *bytes = u.toBytes("UTF-8");
  I18NString::freeBuffer(bytes);
  EXPECT_FALSE(s.isUnicodeMode());
  EXPECT_FALSE(t.isUnicodeMode());
  EXPECT_EQ(opens, I18NConverter::getOpenCount());
  EXPECT_EQ(clones, I18NConverter::getCloneCount());
  EXPECT_EQ(icuBefore, icuAllocations());
}

// Up to INLINE_ASCII_SIZE - 1 ASCII characters live inside the object.
TEST(I18NStringTest, ShortAsciiTextNeedsNoAllocation) {
  const std::string fits(I18NString::INLINE_ASCII_SIZE - 1, 'k');
  const std::string over(I18NString::INLINE_ASCII_SIZE, 'k');
  struct Case {
    const std::string *text;
    long allocations;
  } cases[] = {{&fits, 0}, {&over, 1}};
  for (const Case &c : cases) {
    // Every allocation through the library's seam fails from here on.
    xyltest::AllocationFailure failure(1, true);
    if (c.allocations == 0) {
      I18NString s(c.text->c_str(), "UTF-8", static_cast<int>(c.text->size()));
      I18NString copy(s);
      I18NString moved(std::move(copy));
      EXPECT_EQ(*c.text, std::string(moved.c_str()));
      EXPECT_EQ(*c.text, std::string(s.c_str()));
      EXPECT_TRUE(copy.empty());
    } else {
      EXPECT_THROW(I18NString(c.text->c_str(), "UTF-8"), XYLOutOfMemoryError);
    }
  }
  // Growing out of the inline buffer keeps the text.
  I18NString grow("0123456789", "UTF-8");
  for (int i = 0; i < 5; ++i)
    grow.append(I18NString("0123456789", "UTF-8"));
  EXPECT_EQ(60, grow.length());
  EXPECT_EQ(std::string("0123456789012345678901234567890123456789012345678901234567890123456789").substr(0, 60),
            std::string(grow.c_str()));
}

TEST(I18NStringTest, AsciiTestOfBytes) {
  struct Case {
    const char *bytes;
    const char *encoding;
    int length;
    bool ascii;
  } cases[] = {
      {"abc", "UTF-8", -1, true},
      {"abc", nullptr, 3, true},
      {"abc", "", 3, true},
      {"abc", "ascii", 3, true},
      {"abc", "ISO-8859-7", 3, true},
      {"abc", "windows-1252", 3, true},
      {"abc", "windows-1251", 3, false}, // not one of the encodings that qualify
      {"abc", "UTF-16", 3, false},
      {"a\xE9", "UTF-8", -1, false},
      {"a\xE9", "UTF-8", 1, true}, // only the given length is scanned
      {"\xE9", "UTF-8", 0, true},
      {"\xE9", "UTF-8", -7, true},
      {nullptr, "UTF-8", 5, true},
      {"0123456789abcdef0123456789abcdef0123456789abcdef0123456789abcdef\x80", "UTF-8", 65, false},
      {"0123456789abcdef0123456789abcdef0123456789abcdef0123456789abcdef\x80", "UTF-8", 64, true},
  };
  for (const Case &c : cases)
    EXPECT_EQ(c.ascii, I18NString::isASCII(c.bytes, c.encoding, c.length))
        << (c.bytes ? c.bytes : "(null)") << " / " << (c.encoding ? c.encoding : "(null)") << " / " << c.length;
  // Exactly the encodings that pass the converter's name tests qualify.
  for (const char *name :
       {"UTF8", "utf-8", "Utf-8", "UTF_8", "utf-8x", "ASCII", "asciix", "US-ASCII", "ISO-8859-15", "iso-8859",
        "ISO8859-1", "ISO_8859-1", "WINDOWS-1252", "windows-1252x", "windows-125", "utf-16", "u", "", "x"})
    EXPECT_EQ(I18NConverter::isUTF8(name) || I18NConverter::isWindows1252(name) || I18NConverter::isISO8859(name),
              I18NString::isASCII("abc", name, 3))
        << name;
  ForceUnicode force(true);
  EXPECT_FALSE(I18NString::isASCII("abc", "UTF-8", -1));
}

// Well-formed UTF-8 is decoded directly; anything else goes through the
// converter, whose mode then decides.
TEST(I18NStringTest, Utf8FastPathAndConverterFallback) {
  struct Case {
    std::string bytes;
    bool wellFormed;
    std::u16string substituted; // through a converter in substitute mode
  } cases[] = {
      {"caf\xC3\xA9", true, u"caf\u00e9"},
      {"\xF4\x8F\xBF\xBF", true, u"\U0010FFFF"},
      {"\xEF\xBF\xBF", true, u"\uffff"},
      {"\xC0\xAF", false, u"\ufffd\ufffd"},                     // overlong
      {"\xED\xA0\x80", false, u"\ufffd\ufffd\ufffd"},           // an encoded surrogate
      {"\xF4\x90\x80\x80", false, u"\ufffd\ufffd\ufffd\ufffd"}, // above U+10FFFF
      {"ab\xE4\xBD", false, u"ab\ufffd"},                       // cut short
      {"\x80x", false, u"\ufffdx"},                             // a lone continuation byte
  };
  for (const Case &c : cases) {
    int n = static_cast<int>(c.bytes.size());
    if (c.wellFormed) {
      std::vector<char16_t> expected(c.bytes.size() + 1);
      UErrorCode status = U_ZERO_ERROR;
      int32_t units = 0;
      u_strFromUTF8(expected.data(), static_cast<int32_t>(expected.size()), &units, c.bytes.data(), n, &status);
      ASSERT_TRUE(U_SUCCESS(status));
      EXPECT_EQ(std::u16string(expected.data(), static_cast<size_t>(units)),
                unitsOf(I18NString(c.bytes.data(), "UTF-8", n)));
    } else {
      EXPECT_THROW(I18NString(c.bytes.data(), "UTF-8", n), I18NRuntimeError) << c.bytes;
    }
    I18NConverter substitute("UTF-8");
    substitute.setBuiltInUnconvertibleInputSequenceCallback(2);
    EXPECT_EQ(c.substituted, unitsOf(I18NString(c.bytes.data(), substitute, n))) << c.bytes;
  }
}

TEST(I18NStringTest, AsciiTestOfUtf16) {
  struct Case {
    std::u16string units;
    int byteLength;
    bool ascii;
    int count;
  } cases[] = {
      {u"abc", -1, true, 3},        {u"abc", 4, true, 2},      {u"", -1, true, 0},
      {u"ab\u00e9", -1, false, -1}, {u"ab\u00e9", 4, true, 2}, {u"abc", 0, true, 0},
  };
  for (const Case &c : cases) {
    int count = 99;
    EXPECT_EQ(c.ascii, I18NString::isASCII(c.units.c_str(), c.byteLength, count));
    EXPECT_EQ(c.count, count);
  }
  int count = 7;
  EXPECT_TRUE(I18NString::isASCII(static_cast<const void *>(nullptr), -1, count));
}

TEST(I18NStringTest, ConstructionChoosesTheMode) {
  struct Case {
    std::string bytes;
    const char *encoding;
    int length; // -2: the byte count
    bool unicode;
    std::u16string units;
  } cases[] = {
      {"abc", "UTF-8", -1, false, u"abc"},
      {std::string("abc\0", 4), "UTF-8", 4, false, u"abc"}, // the caller counted the terminator
      {"abcdef", "UTF-8", 3, false, u"abc"},
      {"abc", "UTF-8", 0, false, u""},
      {"A\xC3\xA9", "UTF-8", -1, true, u"A\u00e9"},
      {"A\xC3\xA9", "UTF-8", 3, true, u"A\u00e9"},
      {"\xE9t\xE9", "windows-1252", -1, true, u"\u00e9t\u00e9"},
      {"\xE9t\xE9", "ISO-8859-1", 3, true, u"\u00e9t\u00e9"},
      {"\xF0\x9F\x98\x80x", "UTF-8", -1, true, u"\U0001F600x"},
      {std::string("a\0b\0", 4), "UTF-16LE", 4, true, u"ab"},
      {"\x82\xa0", "Shift_JIS", -1, true, u"\u3042"},
  };
  for (const Case &c : cases) {
    I18NString s(c.bytes.data(), c.encoding, c.length);
    EXPECT_EQ(c.unicode, s.isUnicodeMode()) << c.bytes;
    EXPECT_EQ(c.units, unitsOf(s)) << c.bytes;
  }
  EXPECT_EQ(2, I18NString("A\xC3\xA9", "UTF-8").length());
}

// Found by the bytes fuzz target: the counted terminator was dropped twice
// on the way to the Unicode form, taking a real U+0000 with it; pieces cut
// from a string stopped at an embedded NUL.
TEST(I18NStringTest, EmbeddedNulsSurviveTerminatorHandlingAndSubstrings) {
  const char bytes[] = "\0\xC3\xA9\0A\0\0"; // NUL, e-acute, NUL, A, NUL, then the counted terminator
  I18NString s(bytes, "UTF-8", 7);
  EXPECT_EQ(std::u16string(u"\0\u00e9\0A\0", 5), unitsOf(s));
  I18NString ascii("a\0b\0", "UTF-8", 4);
  EXPECT_EQ(std::u16string(u"a\0b", 3), unitsOf(ascii));
  EXPECT_EQ(std::u16string(u"\0\u00e9\0", 3), unitsOf(s.substring(0, 3)));
  EXPECT_EQ(std::u16string(u"\0A", 2), unitsOf(s.substring(2, 2)));
  EXPECT_EQ(std::u16string(u"\0\u00e9\0A\0", 5), unitsOf(s.substringLike(I18NString("_%", "UTF-8"))));
}

TEST(I18NStringTest, ForceUnicodeSendsEveryStringToItsUnicodeForm) {
  ForceUnicode force(true);
  I18NString s("abc", "UTF-8");
  EXPECT_TRUE(s.isUnicodeMode());
  EXPECT_EQ(u"abc", unitsOf(s));
  I18NString t(static_cast<unsigned int>('x'), 3);
  EXPECT_TRUE(t.isUnicodeMode());
  EXPECT_EQ(3, t.length());
}

TEST(I18NStringTest, LengthBelowMinusOneFailsTheBufferAssertion) {
  try {
    I18NString s("abc", "UTF-8", -5);
    FAIL() << "no assertion";
  } catch (XYLAssertError &e) {
    EXPECT_STREQ("XYL_ASSERT(newSize >= 0);", e.getMessage());
    EXPECT_NE(std::string::npos, traceOf(e).find("i18n/cpp/i18n_string("));
  }
}

TEST(I18NStringTest, OtherConstructors) {
  const unsigned int points[] = {'h', 0xE9, 0x1F600, 0};
  const unsigned int asciiPoints[] = {'o', 'k', 0};
  struct Case {
    I18NString value;
    std::u16string units;
    bool unicode;
  } cases[] = {
      {I18NString(static_cast<unsigned int>('z'), 3), u"zzz", false},
      {I18NString(0xE9u, 2), u"\u00e9\u00e9", true},
      {I18NString(0x1F600u, 1), u"\U0001F600", true},
      {I18NString(0x110000u, 4), u"", false},
      {I18NString(static_cast<unsigned int>('z'), 0), u"", false},
      {I18NString(40, static_cast<unsigned int>('-'), 2), u"--", false},
      {I18NString(points), u"h\u00e9\U0001F600", true},
      {I18NString(asciiPoints), u"ok", false},
      {I18NString(static_cast<const unsigned int *>(nullptr)), u"", false},
      {I18NString(u"w\u00e9", -1), u"w\u00e9", true},
      {I18NString(u"wxyz", 4), u"wx", false},
      {I18NString(64), u"", false},
  };
  for (const Case &c : cases) {
    EXPECT_EQ(c.units, unitsOf(c.value));
    EXPECT_EQ(c.unicode, c.value.isUnicodeMode()) << utf8Of(c.value);
  }
}

TEST(I18NStringTest, CopyMoveAndAssignmentKeepContentAndMode) {
  I18NString ascii("plain", "UTF-8");
  I18NString wide = u8s("gr\xC3\xBC\xC3\x9F");
  I18NString a(ascii), w(wide);
  EXPECT_EQ(ascii, a);
  EXPECT_FALSE(a.isUnicodeMode());
  EXPECT_EQ(wide, w);
  EXPECT_TRUE(w.isUnicodeMode());
  I18NString moved(std::move(w));
  EXPECT_EQ(wide, moved);
  EXPECT_TRUE(w.empty());
  a = moved;
  EXPECT_EQ(wide, a);
  a = ascii; // back to ASCII mode
  EXPECT_FALSE(a.isUnicodeMode());
  a = "next";
  EXPECT_EQ(I18NString("next", "UTF-8"), a);
  a = 0x41u;
  EXPECT_EQ(u"A", unitsOf(a));
  a = static_cast<const void *>(u"\u00e9!");
  EXPECT_EQ(u"\u00e9!", unitsOf(a));
  a = a; // self-assignment
  EXPECT_EQ(u"\u00e9!", unitsOf(a));
  const unsigned int points[] = {'x', 0x2603, 0};
  a = points;
  EXPECT_EQ(u"x\u2603", unitsOf(a));
  a.setTo(u"abcdef", 6);
  EXPECT_EQ(u"abc", unitsOf(a));
  a += I18NString("d", "UTF-8");
  a += 0x10000u;
  a += points;
  EXPECT_EQ(u"abcd\U00010000x\u2603", unitsOf(a));
  EXPECT_EQ(u"abcd\U00010000x\u2603!", unitsOf(a + 0x21u));
  EXPECT_EQ(u"abcd\U00010000x\u2603abcd\U00010000x\u2603", unitsOf(a + a));
}

TEST(I18NStringTest, ComparisonIsByCodeUnitsAcrossModes) {
  I18NString ascii("abc", "UTF-8");
  I18NString forced(u"abc", -1);
  {
    ForceUnicode force(true);
    forced = I18NString(u"abc", -1);
  }
  ASSERT_TRUE(forced.isUnicodeMode());
  EXPECT_TRUE(ascii == forced);
  EXPECT_FALSE(ascii != forced);
  EXPECT_TRUE(ascii == "abc");
  EXPECT_TRUE(ascii != "abd");
  EXPECT_TRUE(ascii != "ab");
  struct Case {
    I18NString a, b;
    int sign;
  } cases[] = {
      {I18NString("abc", "UTF-8"), I18NString("abd", "UTF-8"), -1},
      {I18NString("ab", "UTF-8"), I18NString("abc", "UTF-8"), -1},
      {u8s("ab\xC3\xA9"), I18NString("abz", "UTF-8"), 1},
      {u8s("\xEF\xBC\xA1"), u8s("\xF0\x9F\x98\x80"), 1}, // code units: U+FF21 > U+D83D
      {I18NString(), I18NString("", "UTF-8"), 0},
  };
  for (const Case &c : cases) {
    int r = c.a.compare(c.b);
    EXPECT_EQ(c.sign, (r > 0) - (r < 0)) << utf8Of(c.a) << " vs " << utf8Of(c.b);
    EXPECT_EQ(c.sign < 0, c.a < c.b);
    EXPECT_EQ(c.sign <= 0, c.a <= c.b);
    EXPECT_EQ(c.sign > 0, c.a > c.b);
    EXPECT_EQ(c.sign >= 0, c.a >= c.b);
  }
}

// ---- Queries and offsets ------------------------------------------------------------------

TEST(I18NStringTest, LengthAndSizeCountCodePointsAndBytes) {
  struct Case {
    std::u16string units;
    int length;
    int size;
  } cases[] = {
      {u"", 0, 0},
      {u"a", 1, 4},
      {u"\U0001F600", 1, 6},
      {std::u16string(1, 0xD800) + u"A", 2, 6}, // an unpaired lead counts one
      {std::u16string(1, 0xDC00) + std::u16string(1, 0xD800), 2, 6},
      {u"\u00e9t\u00e9", 3, 8},
  };
  for (const Case &c : cases) {
    I18NString s = u16s(c.units);
    EXPECT_EQ(c.length, s.length());
    EXPECT_EQ(c.length, s.nCodePoints());
    EXPECT_EQ(c.length, I18NString::length(s));
    EXPECT_EQ(c.size, s.size());
    EXPECT_EQ(c.size, I18NString::size(s));
    EXPECT_EQ(0, s.displaySize());
  }
  const unsigned int pair[] = {0xD83D, 0xDE00, 'a', 0};
  EXPECT_EQ(2, I18NString::length(pair));
  EXPECT_EQ(8, I18NString::size(pair));
  EXPECT_EQ(1, I18NString::length(0x1F600u));
  EXPECT_EQ(6, I18NString::size(0x1F600u));
  EXPECT_EQ(4, I18NString::size(0x41u));
}

TEST(I18NStringTest, IncrementAndDecrementOffsets) {
  I18NString abc("abc", "UTF-8");
  I18NString pair = u16s(u"\U0001F600");
  I18NString lone = u16s(std::u16string(1, 0xD800) + u"A");
  struct Case {
    const I18NString *s;
    int offset, next, previous;
  } cases[] = {
      {&abc, 0, 1, -1},  {&abc, 2, 3, 1},   {&abc, 3, -1, 2}, {&abc, -1, -1, -1}, {&abc, 4, -1, -1},
      {&pair, 0, 2, -1}, {&pair, 2, -1, 0}, {&pair, 1, 2, 0}, {&lone, 0, 1, -1},  {&lone, 1, 2, 0},
  };
  for (const Case &c : cases) {
    EXPECT_EQ(c.next, c.s->incrementOffset(c.offset)) << utf8Of(*c.s) << " at " << c.offset;
    EXPECT_EQ(c.previous, c.s->decrementOffset(c.offset)) << utf8Of(*c.s) << " at " << c.offset;
  }
}

// ---- Modification ---------------------------------------------------------------------------

TEST(I18NStringTest, EraseRules) {
  struct Case {
    std::u16string text;
    int offset, count;
    std::u16string expected;
  } cases[] = {
      {u"abc", 5, 1, u"abc"},          {u"abc", -2, 1, u"bc"},
      {u"abc", 1, -1, u"a"},           {u"abc", 1, 99, u"a"},
      {u"abc", 0, 0, u"abc"},          {u"abc", 1, -5, u"a"},
      {u"abc", 3, 1, u"abc"},          {u"", 0, 1, u""},
      {u"\u00e9bc", 1, 1, u"\u00e9c"}, {u"\u00e9bc", 1, -1, u"\u00e9"},
      {u"\u00e9bc", -2, 1, u"bc"},
  };
  for (const Case &c : cases) {
    I18NString s = u16s(c.text);
    s.erase(c.offset, c.count);
    EXPECT_EQ(c.expected, unitsOf(s)) << c.offset << "," << c.count;
  }
}

TEST(I18NStringTest, TrimStripsRunsOfOneCodePoint) {
  struct Case {
    std::u16string text;
    unsigned int codePoint;
    std::u16string leading, trailing, both;
  } cases[] = {
      {u"  ab  ", ' ', u"ab  ", u"  ab", u"ab"},
      {u"xxxx", 'x', u"", u"", u""},
      {u"abc", 0xE9, u"abc", u"abc", u"abc"}, // cannot occur in an ASCII string
      {u"\u00e9\u00e9a\u00e9", 0xE9, u"a\u00e9", u"\u00e9\u00e9a", u"a"},
      {u"\U0001F600x\U0001F600\U0001F600", 0x1F600, u"x\U0001F600\U0001F600", u"\U0001F600x", u"x"},
  };
  for (const Case &c : cases) {
    I18NString a = u16s(c.text), b = u16s(c.text), d = u16s(c.text);
    EXPECT_EQ(c.leading, unitsOf(a.trimLeading(c.codePoint)));
    EXPECT_EQ(c.trailing, unitsOf(b.trimTrailing(c.codePoint)));
    EXPECT_EQ(c.both, unitsOf(d.trim(c.codePoint)));
  }
  I18NString ascii("abc", "UTF-8");
  ascii.trimLeading(0xE9);
  EXPECT_FALSE(ascii.isUnicodeMode());
}

TEST(I18NStringTest, InsertReplaceAppendAcrossModes) {
  const unsigned int snow[] = {0x2603, 0};
  const unsigned int xy[] = {'x', 'y', 0};
  struct Case {
    std::u16string start;
    int op; // 0 insert string, 1 insert points, 2 insert repeat, 3 replace string, 4 replace points, 5 replace repeat
    int offset, count;
    std::u16string expected;
  } cases[] = {
      {u"abc", 0, 1, 0, u"a--bc"},
      {u"abc", 0, -4, 0, u"--abc"},
      {u"abc", 0, 99, 0, u"abc--"},
      {u"abc", 1, 1, 0, u"a\u2603bc"},
      {u"abc", 2, 3, 0, u"abc!!!"},
      {u"abc", 3, 1, 1, u"a--c"},
      {u"abc", 4, 0, 2, u"\u2603c"},
      {u"abc", 5, 1, -1, u"a!!!"},
      {u"\u00e9bc", 0, 1, 0, u"\u00e9--bc"},
      {u"\u00e9bc", 3, 0, 99, u"--"},
      {u"\u00e9bc", 5, 3, 0, u"\u00e9bc!!!"},
  };
  I18NString dashes("--", "UTF-8");
  for (const Case &c : cases) {
    I18NString s = u16s(c.start);
    switch (c.op) {
    case 0:
      s.insert(c.offset, dashes);
      break;
    case 1:
      s.insert(c.offset, snow);
      break;
    case 2:
      s.insert(c.offset, static_cast<unsigned int>('!'), 3);
      break;
    case 3:
      s.replace(c.offset, c.count, dashes);
      break;
    case 4:
      s.replace(c.offset, c.count, snow);
      break;
    case 5:
      s.replace(c.offset, c.count, static_cast<unsigned int>('!'), 3);
      break;
    }
    EXPECT_EQ(c.expected, unitsOf(s)) << "op " << c.op << " at " << c.offset;
  }
  I18NString self("ab", "UTF-8");
  self.append(self);
  self.insert(1, self);
  EXPECT_EQ(u"aabab"
            u"bab",
            unitsOf(self));
  I18NString mixed("ab", "UTF-8");
  mixed.append(xy).append("cd").append(0xE9u, 2);
  EXPECT_EQ(u"abxycd\u00e9\u00e9", unitsOf(mixed));
}

TEST(I18NStringTest, ResizeSubstringRemove) {
  struct Case {
    std::u16string text;
    int length;
    unsigned int pad;
    std::u16string expected;
  } cases[] = {
      {u"abc", 5, '.', u"abc.."},
      {u"abc", 1, '.', u"a"},
      {u"abc", -1, '.', u""},
      {u"abc", 4, 0xE9, u"abc\u00e9"},
      {u"\U0001F600\U0001F600x", 1, '.', u"\U0001F600"},
      {u"\u00e9", 3, 0x1F600, u"\u00e9\U0001F600\U0001F600"},
  };
  for (const Case &c : cases) {
    I18NString s = u16s(c.text);
    EXPECT_EQ(c.expected, unitsOf(s.resize(c.length, c.pad)));
  }
  I18NString s = u8s("h\xC3\xA9llo world");
  EXPECT_EQ(u"\u00e9llo", unitsOf(s.substring(1, 4)));
  EXPECT_EQ(u"world", unitsOf(s.substr(6)));
  EXPECT_EQ(u"", unitsOf(s.substr(99, 2)));
  EXPECT_EQ(u"h\u00e9", unitsOf(s.substr(-3, 2)));
  EXPECT_FALSE(s.substring(6).isUnicodeMode()); // ASCII pieces go back to ASCII mode
  s.remove();
  EXPECT_TRUE(s.empty());
  EXPECT_FALSE(s.isUnicodeMode());
  s.append(0x41u, 1);
  s.destroy();
  EXPECT_TRUE(s.empty());
}

// ---- The allocator contract ---------------------------------------------------------------

TEST(I18NStringTest, DefaultAllocatorContract) {
  int error = 99;
  EXPECT_EQ(nullptr, I18NDefaultStringBufferAllocator(nullptr, nullptr, -5, &error));
  EXPECT_EQ(-10, error);
  char *block = I18NDefaultStringBufferAllocator(nullptr, nullptr, 16, &error);
  ASSERT_NE(nullptr, block);
  EXPECT_EQ(0, error);
  std::memcpy(block, "0123456789abcde", 16);
  block = I18NDefaultStringBufferAllocator(nullptr, block, 4096, &error);
  ASSERT_NE(nullptr, block);
  EXPECT_STREQ("0123456789abcde", block); // reallocation keeps the content
  EXPECT_EQ(nullptr, I18NDefaultStringBufferAllocator(nullptr, block, 0, &error));
  EXPECT_EQ(0, error);
  EXPECT_EQ(nullptr, I18NDefaultStringBufferAllocator(nullptr, nullptr, 0, nullptr));
  {
    xyltest::AllocationFailure failure(1);
    EXPECT_EQ(nullptr, I18NDefaultStringBufferAllocator(nullptr, nullptr, 32, &error));
    EXPECT_EQ(-1, error);
  }
}

TEST(I18NStringTest, BuffersComeFromTheCallerAllocator) {
  CountingAllocator counter;
  {
    I18NString s("ascii text longer than the inline buffer", "UTF-8", -1, CountingAllocator::callback, &counter);
    EXPECT_EQ(1, counter.calls); // the ASCII buffer
    int before = counter.calls;
    I18NString u("t\xC3\xA9xt", "UTF-8", -1, CountingAllocator::callback, &counter);
    EXPECT_GT(counter.calls, before); // the Unicode form object
    before = counter.calls;
    I18NString copy(s);
    EXPECT_EQ(before + 1, counter.calls); // a copy keeps the allocator
    before = counter.calls;
    const char *bytes = u.c_str("UTF-16");
    EXPECT_NE(nullptr, bytes);
    EXPECT_EQ(before + 1, counter.calls); // the cached byte form
    EXPECT_EQ(bytes, u.c_str("UTF-16"));
    EXPECT_EQ(before + 1, counter.calls);
  }
  EXPECT_EQ(counter.calls, counter.frees); // everything went back through the callback
}

TEST(I18NStringTest, FailingAllocatorRaisesOutOfMemory) {
  struct Case {
    const char *bytes;
    const char *message;
  } cases[] = {
      {"ascii text longer than the inline buffer", "The specified allocator callback failed to allocate memory."},
      {"t\xC3\xA9xt", "The specified allocator callback failed to allocate memory."},
  };
  for (const Case &c : cases) {
    CountingAllocator counter;
    counter.failAfter = 0;
    try {
      I18NString s(c.bytes, "UTF-8", -1, CountingAllocator::callback, &counter);
      FAIL() << "no exception for " << c.bytes;
    } catch (XYLOutOfMemoryError &e) {
      EXPECT_STREQ(c.message, e.getMessage());
      EXPECT_NE(std::string::npos, traceOf(e).find("i18n/cpp/i18n_string("));
    }
  }
  xyltest::AllocationFailure failure(1);
  try {
    I18NString s("ascii text longer than the inline buffer", "UTF-8");
    FAIL() << "no exception";
  } catch (XYLOutOfMemoryError &e) {
    EXPECT_STREQ("malloc failed to allocate memory.", e.getMessage());
  }
}

// Every allocation of a sequence of operations fails once in turn; each run
// must either finish or raise XYLOutOfMemoryError, and leave the string
// usable (the sanitizer build checks that nothing leaks).
TEST(I18NStringTest, CountdownInjectionLeavesStringsUsable) {
  for (long n = 1;; ++n) {
    bool failed = false;
    I18NString s;
    {
      xyltest::AllocationFailure failure(n);
      try {
        s = I18NString("abc", "UTF-8");
        s.append(0xE9u, 3);
        s.append(I18NString("def", "UTF-8"));
        s.insert(0, I18NString("x\xC3\xA9", "UTF-8"));
        (void)s.c_str("UTF-16");
        s.normalize(I18N_NORMALIZATION_NFD);
        I18NString copy(s);
        s += copy;
      } catch (XYLOutOfMemoryError &) {
        failed = true;
      }
    }
    // Usable afterwards whatever happened.
    s.append(static_cast<unsigned int>('!'), 1);
    EXPECT_EQ(u'!', unitsOf(s).back());
    if (!failed) {
      const std::u16string d = u"xe\u0301abce\u0301e\u0301e\u0301def";
      EXPECT_EQ(d + d + u"!", unitsOf(s)) << "after " << n;
      break;
    }
    ASSERT_LT(n, 200) << "the countdown never let the sequence finish";
  }
}

// ---- Streams ----------------------------------------------------------------------------------

TEST(I18NStringTest, StreamOperatorsRoundTripWords) {
  std::istringstream in("first second");
  I18NString a, b;
  in >> a >> b;
  EXPECT_EQ(I18NString("first", "UTF-8"), a);
  EXPECT_EQ(I18NString("second", "UTF-8"), b);
  std::ostringstream out;
  out << a << '|' << b;
  EXPECT_EQ("first|second", out.str());
}
