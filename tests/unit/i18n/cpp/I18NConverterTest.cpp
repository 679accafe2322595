// SPDX-License-Identifier: Apache-2.0
// Tests of src/i18n/cpp/i18n_converter.cpp: opening by name, the name tests,
// size arithmetic, conversions in every form, the unconvertible-sequence
// modes in both directions, cloning and the pools.
#include "I18NTestSupport.h"
#include "i18n/cpp/i18n_internal.h"
#include "i18n/cpp/i18n_testpeer.h"

#include <XYLCore/ExceptionHierarchy/XYLErrors.h>
#include <XYLCore/i18n/cpp/i18n_converter.h>
#include <XYLCore/i18n/cpp/i18n_init.h>
#include <XYLCore/i18n/cpp/i18n_internalresources.h>

#include <XYLFaultInjection.h>
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

using i18ntest::utf16;
using i18ntest::utf8;

namespace {

std::string toBytes(I18NConverter &converter, const std::u16string &text, I18NErrorCodes *error) {
  std::vector<char> buffer(text.size() * 8 + 16);
  int n =
      converter.fromUnicode(reinterpret_cast<const unsigned short *>(text.data()), static_cast<int>(text.size() * 2),
                            buffer.data(), static_cast<int>(buffer.size()), error);
  return std::string(buffer.data(), static_cast<size_t>(n > 0 ? n : 0));
}

std::u16string toUnicode(I18NConverter &converter, const std::string &bytes, I18NErrorCodes *error) {
  std::vector<unsigned short> buffer(bytes.size() * 4 + 8);
  int n = converter.toUnicode(bytes.data(), static_cast<int>(bytes.size()), buffer.data(),
                              static_cast<int>(buffer.size() * 2), error);
  return std::u16string(reinterpret_cast<const char16_t *>(buffer.data()), static_cast<size_t>(n > 0 ? n / 2 : 0));
}

} // namespace

// ---- Opening -----------------------------------------------------------------------

TEST(I18NConverterTest, NullAndEmptyNamesMeanTheToolkitDefault) {
  EXPECT_STREQ("UTF8", I18NGetToolkitDefaultEncoding());
  for (const char *name : {static_cast<const char *>(nullptr), ""}) {
    I18NConverter converter(name);
    EXPECT_STREQ("UTF8", converter.getEncoding());
    I18NErrorCodes error = I18N_GENERAL_FAILURE;
    EXPECT_EQ(u"h\u00e9\U0001F600", toUnicode(converter, "h\xC3\xA9\xF0\x9F\x98\x80", &error));
    EXPECT_EQ(I18N_SUCCESS, error);
  }
}

TEST(I18NConverterTest, InvalidNameThrowsCodeMinus3WithAtMost60BytesOfTheName) {
  struct Case {
    std::string name;
    std::string expected;
  } cases[] = {
      {"no-such-encoding", "The specified encoding is not valid: \"no-such-encoding\"."},
      {std::string(100, 'x'), "The specified encoding is not valid: \"" + std::string(60, 'x') + "\"."},
      {std::string(60, 'y'), "The specified encoding is not valid: \"" + std::string(60, 'y') + "\"."},
      {" \t", "The specified encoding is not valid: \" \t\"."},
  };
  for (const Case &c : cases) {
    try {
      I18NConverter converter(c.name.c_str());
      ADD_FAILURE() << "no exception for " << c.name;
    } catch (I18NRuntimeError &e) {
      EXPECT_EQ(-3, e.getErrorCode());
      ASSERT_NE(nullptr, e.getMessage());
      EXPECT_EQ(c.expected, e.getMessage());
      XYLList<char *> &trace = const_cast<XYLList<char *> &>(e.getBackTrace());
      ASSERT_FALSE(trace.empty());
      EXPECT_NE(nullptr, std::strstr(trace.front(), "i18n/cpp/i18n_converter("));
    }
  }
}

TEST(I18NConverterTest, UTF16AndUTF32WithoutByteOrderArePlatformEndianWithoutBOM) {
  struct Case {
    const char *name;
    std::string expected; // "A" then U+20AC
  } cases[] = {
      {"utf-16", std::string("A\0\xAC\x20", 4)},
      {"UTF-16", std::string("A\0\xAC\x20", 4)},
      {"UTF-32", std::string("A\0\0\0\xAC\x20\0\0", 8)},
      {"UTF-16BE", std::string("\0A\x20\xAC", 4)},
  };
  for (const Case &c : cases) {
    I18NConverter converter(c.name);
    EXPECT_STREQ(c.name, converter.getEncoding());
    I18NErrorCodes error = I18N_GENERAL_FAILURE;
    EXPECT_EQ(c.expected, toBytes(converter, u"A\u20ac", &error)) << c.name;
    EXPECT_EQ(I18N_SUCCESS, error);
  }
}

// ---- Name tests ----------------------------------------------------------------------

TEST(I18NConverterTest, NameTests) {
  struct Case {
    const char *name;
    bool utf8, utf16, utf32, iso8859, windows1252;
  } cases[] = {
      {"ASCII", true, false, false, false, false},
      {"utf8", true, false, false, false, false},
      {"UTF-8", true, false, false, false, false},
      {"", true, false, false, false, false},
      {"utf-8x", false, false, false, false, false},
      {"UCS2", false, true, false, false, false},
      {"ucs-2", false, true, false, false, false},
      {"Utf16", false, true, false, false, false},
      {"UTF16_PlatformEndian", false, true, false, false, false},
      {"utf16_p", false, true, false, false, false},
      {"UTF-16BE", false, false, false, false, false},
      {"ucs4", false, false, true, false, false},
      {"UTF-32", false, false, true, false, false},
      {"UTF32_PlatformEndian", false, false, true, false, false},
      {"ISO-8859-15", false, false, false, true, false},
      {"iso-8859", false, false, false, true, false},
      {"ISO8859-1", false, false, false, false, false},
      {"windows-1252", false, false, false, false, true},
      {"Windows-1252", false, false, false, false, true},
      {"windows-1252x", false, false, false, false, false},
      {"cp1252", false, false, false, false, false},
  };
  for (const Case &c : cases) {
    EXPECT_EQ(c.utf8, I18NConverter::isUTF8(c.name)) << c.name;
    EXPECT_EQ(c.utf16, I18NConverter::isUTF16(c.name)) << c.name;
    EXPECT_EQ(c.utf32, I18NConverter::isUTF32(c.name)) << c.name;
    EXPECT_EQ(c.iso8859, I18NConverter::isISO8859(c.name)) << c.name;
    EXPECT_EQ(c.windows1252, I18NConverter::isWindows1252(c.name)) << c.name;
  }
  EXPECT_TRUE(I18NConverter::isUTF8(nullptr));
  EXPECT_FALSE(I18NConverter::isUTF16(nullptr));
  EXPECT_FALSE(I18NConverter::isISO8859(nullptr));
  EXPECT_TRUE(I18NConverter::isPlatformDefault(I18NGetPlatformDefaultEncoding()));
  EXPECT_FALSE(I18NConverter::isPlatformDefault("no-such-encoding"));
  EXPECT_FALSE(I18NConverter::isPlatformDefault(nullptr));
}

TEST(I18NConverterTest, ShouldUseBOM) {
  struct Case {
    const char *name;
    bool expected;
  } cases[] = {
      {"UTF16_PlatformEndian", false},
      {"UTF32_PlatformEndian", false},
      {"UTF-16BE", true},
      {"UTF-16LE", true},
      {"UTF-16", true},
      {"UTF-32BE", true},
      {"utf-32", true},
      {"UTF-8", false},
      {"windows-1252", false},
      {"no-such-encoding", false},
      {"", false},
      {nullptr, false},
  };
  for (const Case &c : cases)
    EXPECT_EQ(c.expected, I18NConverter::shouldUseBOM(c.name)) << (c.name ? c.name : "(null)");
}

// ---- Sizes ---------------------------------------------------------------------------------

TEST(I18NConverterTest, SizeArithmetic) {
  struct Case {
    const char *name;
    int max, min;
  } cases[] = {{"UTF-8", 3, 1}, {"windows-1252", 1, 1}, {"utf-16", 2, 2}, {"UTF-32", 4, 4}, {"Shift_JIS", 2, 1}};
  for (const Case &c : cases) {
    I18NConverter converter(c.name);
    EXPECT_EQ(c.max, converter.getMaxCharSize()) << c.name;
    EXPECT_EQ(c.min, converter.getMinCharSize()) << c.name;
    EXPECT_EQ(c.max * 10 + c.min, converter.numLegacyBytes(10)) << c.name;
    EXPECT_EQ((100 - c.min) / c.max, converter.numLegacyCodePoints(100)) << c.name;
    EXPECT_EQ(c.min, converter.sizeofLegacyNull()) << c.name;
    EXPECT_EQ(22, converter.numUnicodeBytes(10));
    EXPECT_EQ(10, converter.numUnicodeCodePoints(22));
    EXPECT_EQ(2, converter.sizeofUnicodeNull());
  }
  I18NConverter utf8("UTF-8");
  EXPECT_EQ(31, utf8.numLegacyBytes(10));
}

TEST(I18NConverterTest, EffectiveBufferSize) {
  I18NConverter utf8("UTF-8"), utf16("utf-16"), utf32("UTF-32");
  const char abc16[] = "a\0b\0c\0\0\0";
  const char abc32[] = "a\0\0\0b\0\0\0\0\0\0\0";
  struct Case {
    I18NConverter *converter;
    const char *buffer;
    int length, expected;
  } cases[] = {
      {&utf8, "abc", 4, 3},   {&utf8, "abc", 3, 3},  {&utf8, "abc", -1, 3},  {&utf8, nullptr, 5, 0},
      {&utf8, "abc", 0, 0},   {&utf8, "a\0c", 3, 3}, {&utf16, abc16, 8, 6},  {&utf16, abc16, 6, 6},
      {&utf16, abc16, -1, 6}, {&utf16, abc16, 7, 7}, {&utf32, abc32, -1, 8}, {&utf32, abc32, 12, 8},
      {&utf32, abc32, 8, 8},  {&utf16, abc16, 1, 1},
  };
  for (const Case &c : cases)
    EXPECT_EQ(c.expected, I18NConverterTestPeer::getEffectiveBufferSize(*c.converter, c.buffer, c.length))
        << c.converter->getEncoding() << " length " << c.length;
}

// ---- Round trips ------------------------------------------------------------------------------

TEST(I18NConverterTest, RoundTripsWithKnownBytes) {
  struct Case {
    const char *encoding;
    std::string textUtf8;
    std::string bytes; // the encoded form (empty: only the round trip is checked)
  } cases[] = {
      {"UTF-8", "gr\xC3\xBC\xC3\x9F \xE2\x82\xAC \xF0\x9F\x98\x80", "gr\xC3\xBC\xC3\x9F \xE2\x82\xAC \xF0\x9F\x98\x80"},
      {"UTF-16BE", "A\xE2\x82\xAC", std::string("\0A\x20\xAC", 4)},
      {"UTF-16LE", "\xF0\x9F\x98\x80", std::string("\x3D\xD8\x00\xDE", 4)},
      {"UTF-32BE", "\xF0\x9F\x98\x80", std::string("\0\x01\xF6\x00", 4)},
      {"windows-1252", "\xE2\x82\xAC\xE2\x80\x9C\xC3\xA9\xE2\x80\x9D", "\x80\x93\xE9\x94"},
      {"ISO-8859-1", "caf\xC3\xA9 \xC3\xBF", "caf\xE9 \xFF"},
      {"ISO-8859-2", "\xC5\x81\xC3\xB3\xC5\xBA", "\xA3\xF3\xBC"},
      {"ISO-8859-5", "\xD0\x96", "\xB6"},
      {"ISO-8859-7", "\xCE\xA9", "\xD9"},
      {"ISO-8859-15", "\xE2\x82\xAC", "\xA4"},
      {"Shift_JIS", "\xE3\x81\x82\xE6\xBC\xA2\xEF\xBD\xB1", "\x82\xA0\x8A\xBF\xB1"},
      {"EUC-JP", "\xE3\x81\x82\xE6\xBC\xA2\xEF\xBD\xB1", "\xA4\xA2\xB4\xC1\x8E\xB1"},
      {"utf-16", "x\xF0\x9F\x98\x80", ""},
      {"UTF-32", "x\xF0\x9F\x98\x80", ""},
  };
  for (const Case &c : cases) {
    I18NConverter converter(c.encoding);
    const std::u16string text = utf16(c.textUtf8);
    I18NErrorCodes error = I18N_GENERAL_FAILURE;
    const std::string bytes = toBytes(converter, text, &error);
    EXPECT_EQ(I18N_SUCCESS, error) << c.encoding;
    if (!c.bytes.empty()) {
      EXPECT_EQ(c.bytes, bytes) << c.encoding;
    }
    error = I18N_GENERAL_FAILURE;
    EXPECT_EQ(text, toUnicode(converter, bytes, &error)) << c.encoding;
    EXPECT_EQ(I18N_SUCCESS, error) << c.encoding;
  }
}

TEST(I18NConverterTest, EveryByteOfSingleByteCodePagesRoundTrips) {
  for (const char *encoding : {"windows-1252", "ISO-8859-1", "ISO-8859-15"}) {
    I18NConverter converter(encoding);
    converter.setBuiltInUnconvertibleInputSequenceCallback(I18N_UNCONVERTIBLE_STOP);
    std::string all;
    for (int b = 1; b < 256; ++b)
      all.push_back(static_cast<char>(b));
    I18NErrorCodes error = I18N_GENERAL_FAILURE;
    const std::u16string text = toUnicode(converter, all, &error);
    ASSERT_EQ(I18N_SUCCESS, error) << encoding;
    EXPECT_EQ(all, toBytes(converter, text, &error)) << encoding;
  }
}

// ---- Caller buffers ------------------------------------------------------------------------

// A result that fits exactly is a success even with no room left for the
// terminator (which follows only when room remains); -9 only when the
// result itself does not fit, with the length of the whole result.
TEST(I18NConverterTest, CallerBufferFitsExactlyOrReportsMinus9AndTheFullLength) {
  struct Case {
    const char *encoding;
    const char *bytes;       // toUnicode source, or null for fromUnicode
    const char16_t *unicode; // fromUnicode source
    int capacity;            // target bytes
    int length;
    I18NErrorCodes error;
    int terminator; // NUL bytes expected after the result
  };
  const Case cases[] = {
      {"UTF-8", "abc", nullptr, 8, 6, I18N_SUCCESS, 2},
      {"UTF-8", "abcd", nullptr, 8, 8, I18N_SUCCESS, 0},
      {"UTF-8", "abcde", nullptr, 8, 10, I18N_BUFFER_TOO_SMALL, 0},
      {"UTF-8", nullptr, u"\u00e9\u00e9", 5, 4, I18N_SUCCESS, 1},
      {"UTF-8", nullptr, u"\u00e9\u00e9", 4, 4, I18N_SUCCESS, 0},
      {"UTF-8", nullptr, u"\u00e9\u00e9", 3, 4, I18N_BUFFER_TOO_SMALL, 0},
      {"utf-16", nullptr, u"ab", 6, 4, I18N_SUCCESS, 2},
      {"utf-16", nullptr, u"ab", 4, 4, I18N_SUCCESS, 0},
      {"utf-16", nullptr, u"ab", 3, 4, I18N_BUFFER_TOO_SMALL, 0},
  };
  for (const Case &c : cases) {
    I18NConverter converter(c.encoding);
    char target[16];
    std::memset(target, '#', sizeof target);
    I18NErrorCodes error = I18N_GENERAL_FAILURE;
    int length = c.bytes != nullptr
                     ? converter.toUnicode(c.bytes, -1, reinterpret_cast<unsigned short *>(target), c.capacity, &error)
                     : converter.fromUnicode(reinterpret_cast<const unsigned short *>(c.unicode), -1, target,
                                             c.capacity, &error);
    const std::string what = std::string(c.encoding) + " capacity " + std::to_string(c.capacity);
    EXPECT_EQ(c.length, length) << what;
    EXPECT_EQ(c.error, error) << what;
    for (int k = 0; k < c.terminator; ++k)
      EXPECT_EQ(0, target[c.length + k]) << what;
    EXPECT_EQ('#', target[c.capacity]) << what << ": wrote past the target";
  }
}

TEST(I18NConverterTest, NegativeCapacityIsAGeneralFailure) {
  I18NConverter converter("UTF-8");
  unsigned short target[2];
  I18NErrorCodes error = I18N_SUCCESS;
  converter.toUnicode("a", 1, target, -2, &error);
  EXPECT_EQ(I18N_GENERAL_FAILURE, error);
  converter.toUnicode("a", 1, nullptr, 4, &error);
  EXPECT_EQ(I18N_GENERAL_FAILURE, error);
}

// ---- Allocating forms -----------------------------------------------------------------------

namespace {

struct CountingAllocator {
  int allocations = 0;
  int frees = 0;
  bool fail = false;
  static char *callback(void *context, char *buffer, int newSize, int *error) {
    auto *self = static_cast<CountingAllocator *>(context);
    if (error != nullptr)
      *error = 0;
    if (newSize < 0) {
      if (error != nullptr)
        *error = -10;
      return nullptr;
    }
    if (newSize == 0) {
      ++self->frees;
      std::free(buffer);
      return nullptr;
    }
    if (self->fail) {
      if (error != nullptr)
        *error = -1;
      return nullptr;
    }
    ++self->allocations;
    return static_cast<char *>(std::realloc(buffer, static_cast<size_t>(newSize)));
  }
};

} // namespace

TEST(I18NConverterTest, AllocatingFormsUseTheAllocatorAndTerminate) {
  CountingAllocator allocator;
  I18NConverter converter("windows-1252");
  I18NErrorCodes error = I18N_GENERAL_FAILURE;
  int bytes = -1;
  unsigned short *units =
      converter.toUnicode("caf\xE9 \x80", -1, &bytes, CountingAllocator::callback, &allocator, &error);
  ASSERT_NE(nullptr, units);
  EXPECT_EQ(I18N_SUCCESS, error);
  EXPECT_EQ(12, bytes);
  EXPECT_EQ(0, units[6]);
  EXPECT_EQ("caf\xC3\xA9 \xE2\x82\xAC", utf8(units, bytes));

  int length = -1;
  char *text = converter.fromUnicode(units, -1, &length, CountingAllocator::callback, &allocator, &error);
  ASSERT_NE(nullptr, text);
  EXPECT_EQ(6, length);
  EXPECT_STREQ("caf\xE9 \x80", text);
  CountingAllocator::callback(&allocator, reinterpret_cast<char *>(units), 0, nullptr);
  CountingAllocator::callback(&allocator, text, 0, nullptr);
  EXPECT_EQ(allocator.allocations, allocator.frees);

  // The C heap when no allocator is given; a long text needs a retry.
  const std::u16string escaped(300, u'\u4e00');
  converter.setBuiltInUnconvertibleOutputSequenceCallback(I18N_UNCONVERTIBLE_ESCAPE);
  char *heap = converter.fromUnicode(reinterpret_cast<const unsigned short *>(escaped.c_str()), -1, &length, nullptr,
                                     nullptr, &error);
  ASSERT_NE(nullptr, heap);
  EXPECT_EQ(300 * 6, length);
  EXPECT_EQ(0, std::strncmp(heap, "%U4E00%U4E00", 12));
  I18NConverter::freeBuffer(heap);
}

TEST(I18NConverterTest, AllocatingFormsReportConversionFailureWithoutLeaking) {
  CountingAllocator allocator;
  I18NConverter converter("UTF-8");
  converter.setBuiltInUnconvertibleInputSequenceCallback(I18N_UNCONVERTIBLE_STOP);
  I18NErrorCodes error = I18N_SUCCESS;
  int bytes = -1;
  EXPECT_EQ(nullptr, converter.toUnicode("a\xFF", 2, &bytes, CountingAllocator::callback, &allocator, &error));
  EXPECT_EQ(I18N_GENERAL_FAILURE, error);
  EXPECT_EQ(0, bytes);
  EXPECT_EQ(allocator.allocations, allocator.frees);
}

TEST(I18NConverterTest, AllocatorFailureThrowsMemoryAllocationFailed) {
  CountingAllocator allocator;
  allocator.fail = true;
  I18NConverter converter("UTF-8");
  I18NErrorCodes error = I18N_SUCCESS;
  int bytes = 0;
  try {
    converter.toUnicode("abc", 3, &bytes, CountingAllocator::callback, &allocator, &error);
    ADD_FAILURE() << "no exception";
  } catch (I18NRuntimeError &e) {
    EXPECT_EQ(-1, e.getErrorCode());
    EXPECT_STREQ("Memory allocation failed.", e.getMessage());
  }
  EXPECT_THROW(converter.fromUnicode(reinterpret_cast<const unsigned short *>(u"abc"), -1, &bytes,
                                     CountingAllocator::callback, &allocator, &error),
               I18NRuntimeError);
}

// ---- Stream forms ------------------------------------------------------------------------------

TEST(I18NConverterTest, StreamConversionCarriesSequencesAcrossChunks) {
  // Every split of a text whose characters take 1 to 4 bytes gives the same
  // result as one conversion; zero bytes are characters of the stream, also
  // where a chunk ends with one.
  const std::string input("a\0\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80z\0", 13);
  const std::u16string expected = utf16(input);
  I18NConverter converter("UTF-8");
  for (size_t split = 0; split <= input.size(); ++split) {
    converter.reset();
    std::u16string out;
    unsigned short buffer[16];
    int consumed = -1;
    I18NErrorCodes error = I18N_GENERAL_FAILURE;
    int n = converter.toUnicodeStream(input.data(), static_cast<int>(split), &consumed, buffer, sizeof buffer, false,
                                      &error);
    ASSERT_EQ(I18N_SUCCESS, error);
    EXPECT_EQ(static_cast<int>(split), consumed);
    out.append(reinterpret_cast<const char16_t *>(buffer), static_cast<size_t>(n / 2));
    n = converter.toUnicodeStream(input.data() + split, static_cast<int>(input.size() - split), &consumed, buffer,
                                  sizeof buffer, true, &error);
    ASSERT_EQ(I18N_SUCCESS, error);
    out.append(reinterpret_cast<const char16_t *>(buffer), static_cast<size_t>(n / 2));
    EXPECT_EQ(expected, out) << "split at " << split;
  }
}

TEST(I18NConverterTest, StreamConversionStopsWhenTheTargetIsFull) {
  I18NConverter converter("ISO-8859-1");
  const std::u16string text = u"abcdefgh";
  char out[3];
  std::string all;
  int offset = 0;
  for (int guard = 0; guard < 10 && offset < static_cast<int>(text.size() * 2); ++guard) {
    int consumed = 0;
    I18NErrorCodes error = I18N_GENERAL_FAILURE;
    int n = converter.fromUnicodeStream(reinterpret_cast<const unsigned short *>(text.data()) + offset / 2,
                                        static_cast<int>(text.size() * 2) - offset, &consumed, out, sizeof out, true,
                                        &error);
    EXPECT_EQ(I18N_SUCCESS, error);
    EXPECT_LE(n, 3);
    EXPECT_EQ(n * 2, consumed);
    all.append(out, static_cast<size_t>(n));
    offset += consumed;
  }
  EXPECT_EQ("abcdefgh", all);
}

TEST(I18NConverterTest, StreamConversionReportsInvalidInput) {
  I18NConverter converter("UTF-8");
  converter.setBuiltInUnconvertibleInputSequenceCallback(I18N_UNCONVERTIBLE_STOP);
  unsigned short buffer[8];
  int consumed = -1;
  I18NErrorCodes error = I18N_SUCCESS;
  converter.toUnicodeStream("ab\xFF"
                            "cd",
                            5, &consumed, buffer, sizeof buffer, true, &error);
  EXPECT_EQ(I18N_GENERAL_FAILURE, error);
  EXPECT_EQ(3, consumed); // stops just after the offending byte
}

// ---- Unconvertible sequences ---------------------------------------------------------------------

namespace {

std::string gSeenEncoding;
std::string gSeenBytes;
unsigned int gSeenCodePoint;

void snowmanForBytes(const char *encoding, const char *bytes, int length, unsigned int *codePoints, int *count,
                     I18NErrorCodes *error) {
  gSeenEncoding = encoding;
  gSeenBytes.assign(bytes, static_cast<size_t>(length));
  EXPECT_EQ(I18N_CONVERTER_CALLBACK_CAPACITY, *count);
  EXPECT_EQ(I18N_SUCCESS, *error);
  codePoints[0] = 0x2603;
  codePoints[1] = 0x1F600;
  *count = 2;
}

void refuseBytes(const char *, const char *, int, unsigned int *codePoints, int *count, I18NErrorCodes *error) {
  codePoints[0] = 'X';
  *count = 1;
  *error = I18N_GENERAL_FAILURE;
}

void emptyForBytes(const char *, const char *, int, unsigned int *, int *count, I18NErrorCodes *) { *count = 0; }

void questionForCodePoint(unsigned int codePoint, const char *encoding, char *bytes, int *length, I18NErrorCodes *) {
  gSeenEncoding = encoding;
  gSeenCodePoint = codePoint;
  bytes[0] = '<';
  bytes[1] = '?';
  bytes[2] = '>';
  *length = 3;
}

void refuseCodePoint(unsigned int, const char *, char *, int *length, I18NErrorCodes *error) {
  *length = 1;
  *error = I18N_GENERAL_FAILURE;
}

} // namespace

TEST(I18NConverterTest, UnconvertibleInputModes) {
  struct Case {
    int mode;
    I18N_UNCONVERTIBLE_INPUT_SEQUENCE_CALLBACK callback;
    I18NErrorCodes error;
    std::u16string expected;
  } cases[] = {
      {I18N_UNCONVERTIBLE_ESCAPE, nullptr, I18N_SUCCESS, u"a%XFFb"},
      {I18N_UNCONVERTIBLE_REPLACE, nullptr, I18N_GENERAL_FAILURE, u""}, // no replacement configured
      {I18N_UNCONVERTIBLE_SUBSTITUTE, nullptr, I18N_SUCCESS, u"a\ufffdb"},
      {I18N_UNCONVERTIBLE_USER_DEFINED, snowmanForBytes, I18N_SUCCESS, u"a\u2603\U0001F600b"},
      {I18N_UNCONVERTIBLE_USER_DEFINED, refuseBytes, I18N_GENERAL_FAILURE, u""},
      {I18N_UNCONVERTIBLE_USER_DEFINED, emptyForBytes, I18N_GENERAL_FAILURE, u""},
      {I18N_UNCONVERTIBLE_USER_DEFINED, nullptr, I18N_GENERAL_FAILURE, u""},
      {I18N_UNCONVERTIBLE_STOP, nullptr, I18N_GENERAL_FAILURE, u""},
  };
  for (const Case &c : cases) {
    I18NConverter converter("UTF-8");
    converter.setUserDefinedUnconvertibleInputSequenceCallback(c.callback);
    converter.setBuiltInUnconvertibleInputSequenceCallback(c.mode);
    EXPECT_EQ(c.mode, converter.getBuiltInUnconvertibleInputSequenceCallback());
    EXPECT_EQ(c.callback, converter.getUserDefinedUnconvertibleInputSequenceCallback());
    gSeenBytes.clear();
    I18NErrorCodes error = I18N_SUCCESS;
    const std::u16string out = toUnicode(converter,
                                         "a\xFF"
                                         "b",
                                         &error);
    EXPECT_EQ(c.error, error) << "mode " << c.mode;
    if (c.error == I18N_SUCCESS) {
      EXPECT_EQ(c.expected, out) << "mode " << c.mode;
    }
    if (c.callback == snowmanForBytes) {
      EXPECT_EQ("UTF-8", gSeenEncoding);
      EXPECT_EQ("\xFF", gSeenBytes);
    }
  }
}

TEST(I18NConverterTest, UnconvertibleOutputModes) {
  struct Case {
    int mode;
    I18N_UNCONVERTIBLE_OUTPUT_SEQUENCE_CALLBACK callback;
    I18NErrorCodes error;
    std::string expected;
  } cases[] = {
      {I18N_UNCONVERTIBLE_ESCAPE, nullptr, I18N_SUCCESS, "a%U4E00b"},
      {I18N_UNCONVERTIBLE_REPLACE, nullptr, I18N_GENERAL_FAILURE, ""},
      {I18N_UNCONVERTIBLE_SUBSTITUTE, nullptr, I18N_SUCCESS,
       "a\x1A"
       "b"},
      {I18N_UNCONVERTIBLE_USER_DEFINED, questionForCodePoint, I18N_SUCCESS, "a<?>b"},
      {I18N_UNCONVERTIBLE_USER_DEFINED, refuseCodePoint, I18N_GENERAL_FAILURE, ""},
      {I18N_UNCONVERTIBLE_USER_DEFINED, nullptr, I18N_GENERAL_FAILURE, ""},
      {I18N_UNCONVERTIBLE_STOP, nullptr, I18N_GENERAL_FAILURE, ""},
  };
  for (const Case &c : cases) {
    I18NConverter converter("ISO-8859-1");
    converter.setUserDefinedUnconvertibleOutputSequenceCallback(c.callback);
    converter.setBuiltInUnconvertibleOutputSequenceCallback(c.mode);
    EXPECT_EQ(c.mode, converter.getBuiltInUnconvertibleOutputSequenceCallback());
    I18NErrorCodes error = I18N_SUCCESS;
    const std::string out = toBytes(converter, u"a\u4e00b", &error);
    EXPECT_EQ(c.error, error) << "mode " << c.mode;
    if (c.error == I18N_SUCCESS) {
      EXPECT_EQ(c.expected, out) << "mode " << c.mode;
    }
    if (c.callback == questionForCodePoint) {
      EXPECT_EQ("ISO-8859-1", gSeenEncoding);
      EXPECT_EQ(0x4E00u, gSeenCodePoint);
    }
  }
}

TEST(I18NConverterTest, UnpairedSurrogatesFollowTheOutputMode) {
  I18NConverter converter("UTF-8");
  const std::u16string lone = u"a\xD800"
                              u"b";
  I18NErrorCodes error = I18N_SUCCESS;
  toBytes(converter, lone, &error);
  EXPECT_EQ(I18N_GENERAL_FAILURE, error);
  converter.setBuiltInUnconvertibleOutputSequenceCallback(I18N_UNCONVERTIBLE_SUBSTITUTE);
  EXPECT_EQ("a\xEF\xBF\xBD"
            "b",
            toBytes(converter, lone, &error));
  EXPECT_EQ(I18N_SUCCESS, error);
}

TEST(I18NConverterTest, ModesOutsideTheRangeChangeNothing) {
  I18NConverter converter("UTF-8");
  converter.setBuiltInUnconvertibleInputSequenceCallback(I18N_UNCONVERTIBLE_SUBSTITUTE);
  for (int mode : {7, -1, 5}) {
    converter.setBuiltInUnconvertibleInputSequenceCallback(mode);
    converter.setBuiltInUnconvertibleOutputSequenceCallback(mode);
    EXPECT_EQ(I18N_UNCONVERTIBLE_SUBSTITUTE, converter.getBuiltInUnconvertibleInputSequenceCallback());
    EXPECT_EQ(I18N_UNCONVERTIBLE_REPLACE, converter.getBuiltInUnconvertibleOutputSequenceCallback());
  }
  I18NErrorCodes error = I18N_GENERAL_FAILURE;
  EXPECT_EQ(u"\ufffd", toUnicode(converter, "\xFF", &error));
  EXPECT_EQ(I18N_SUCCESS, error);
}

// ---- Copies -------------------------------------------------------------------------------------------

TEST(I18NConverterTest, CopiesKeepModesAndCallbacksAndAreIndependent) {
  I18NConverter original("Shift_JIS");
  original.setUserDefinedUnconvertibleInputSequenceCallback(snowmanForBytes);
  original.setBuiltInUnconvertibleInputSequenceCallback(I18N_UNCONVERTIBLE_USER_DEFINED);
  original.setBuiltInUnconvertibleOutputSequenceCallback(I18N_UNCONVERTIBLE_ESCAPE);
  const long clones = I18NConverter::getCloneCount();
  I18NConverter copy(original);
  I18NConverter assigned("UTF-8");
  assigned = original;
  EXPECT_EQ(clones + 2, I18NConverter::getCloneCount());
  for (I18NConverter *c : {&copy, &assigned}) {
    EXPECT_STREQ("Shift_JIS", c->getEncoding());
    EXPECT_NE(original.getEncoding(), c->getEncoding()); // its own copy of the name
    EXPECT_EQ(I18N_UNCONVERTIBLE_USER_DEFINED, c->getBuiltInUnconvertibleInputSequenceCallback());
    EXPECT_EQ(I18N_UNCONVERTIBLE_ESCAPE, c->getBuiltInUnconvertibleOutputSequenceCallback());
    EXPECT_EQ(snowmanForBytes, c->getUserDefinedUnconvertibleInputSequenceCallback());
    EXPECT_EQ(original.getMaxCharSize(), c->getMaxCharSize());
    I18NErrorCodes error = I18N_GENERAL_FAILURE;
    gSeenEncoding.clear();
    EXPECT_EQ(u"\u3042\u2603\U0001F600", toUnicode(*c, "\x82\xA0\xFF", &error));
    EXPECT_EQ("Shift_JIS", gSeenEncoding);
  }
  // Changing the copy leaves the original alone.
  copy.setBuiltInUnconvertibleInputSequenceCallback(I18N_UNCONVERTIBLE_STOP);
  I18NErrorCodes error = I18N_GENERAL_FAILURE;
  toUnicode(original, "\xFF", &error);
  EXPECT_EQ(I18N_SUCCESS, error);
  I18NConverter &self = assigned;
  assigned = self; // self-assignment keeps the converter usable
  EXPECT_EQ(u"\u3042", toUnicode(assigned, "\x82\xA0", &error));
}

// ---- Memory exhaustion ------------------------------------------------------------------------------

TEST(I18NConverterTest, NameCopyFailureThrowsOutOfMemory) {
  // The name copy is the converter's only C-heap allocation of its own.
  for (const char *name : {"windows-1252", "ISO-8859-1"}) {
    xyltest::AllocationFailure failure(1);
    EXPECT_THROW(I18NConverter converter(name), XYLOutOfMemoryError) << name;
  }
  xyltest::AllocationFailure failure(1);
  I18NConverter shared("UTF8"); // the toolkit default's name is shared, not copied
  EXPECT_STREQ("UTF8", shared.getEncoding());
}

// ---- Pools ------------------------------------------------------------------------------------------

class I18NConverterPoolTest : public ::testing::Test {
protected:
  void SetUp() override { ASSERT_NE(0, I18NInitialize()); }
  void TearDown() override { I18NTerminate(); }
};

TEST_F(I18NConverterPoolTest, PoolsAreLastInFirstOutAndRecycleWithoutCloning) {
  I18NConverter *first;
  I18NConverter *second;
  {
    I18NConverterUTF8 a;
    I18NConverterUTF8 b;
    first = &a.getConverter();
    second = &b.getConverter();
    EXPECT_NE(first, second);
  } // b returns first, then a: a is on top
  const long clones = I18NConverter::getCloneCount();
  const long opens = I18NConverter::getOpenCount();
  for (int i = 0; i < 100; ++i) {
    I18NConverterUTF8 again;
    EXPECT_EQ(first, &again.getConverter());
    I18NConverterUTF8 nested;
    EXPECT_EQ(second, &nested.getConverter());
  }
  EXPECT_EQ(clones, I18NConverter::getCloneCount());
  EXPECT_EQ(opens, I18NConverter::getOpenCount());
}

TEST_F(I18NConverterPoolTest, EachPoolLendsItsEncoding) {
  I18NConverterUTF8 utf8;
  I18NConverterUTF16 utf16;
  I18NConverterPlatformDefault platform;
  EXPECT_STREQ("UTF8", utf8->getEncoding());
  EXPECT_STREQ("UTF16_PlatformEndian", utf16->getEncoding());
  EXPECT_STREQ(I18NGetPlatformDefaultEncoding(), platform->getEncoding());
  I18NErrorCodes error = I18N_GENERAL_FAILURE;
  EXPECT_EQ(std::string("\xAC\x20", 2), toBytes(utf16.getConverter(), u"\u20ac", &error));
  EXPECT_EQ("\xE2\x82\xAC", toBytes(utf8, u"\u20ac", &error));
}

TEST_F(I18NConverterPoolTest, AReturnedConverterIsResetToTheDefaultModes) {
  I18NConverter *lent;
  {
    I18NConverterUTF8 borrowed;
    lent = &borrowed.getConverter();
    borrowed->setUserDefinedUnconvertibleInputSequenceCallback(snowmanForBytes);
    borrowed->setBuiltInUnconvertibleInputSequenceCallback(I18N_UNCONVERTIBLE_USER_DEFINED);
    borrowed->setBuiltInUnconvertibleOutputSequenceCallback(I18N_UNCONVERTIBLE_SUBSTITUTE);
    // Leave half a sequence in the converter.
    unsigned short buffer[4];
    int consumed = 0;
    I18NErrorCodes error;
    borrowed->toUnicodeStream("\xE2\x82", 2, &consumed, buffer, sizeof buffer, false, &error);
  }
  I18NConverterUTF8 next;
  ASSERT_EQ(lent, &next.getConverter());
  EXPECT_EQ(I18N_UNCONVERTIBLE_REPLACE, next->getBuiltInUnconvertibleInputSequenceCallback());
  EXPECT_EQ(I18N_UNCONVERTIBLE_REPLACE, next->getBuiltInUnconvertibleOutputSequenceCallback());
  EXPECT_EQ(nullptr, next->getUserDefinedUnconvertibleInputSequenceCallback());
  I18NErrorCodes error = I18N_GENERAL_FAILURE;
  EXPECT_EQ(u"a", toUnicode(next, "a", &error));
  EXPECT_EQ(I18N_SUCCESS, error);
}

// Converters made by name come from a pool per encoding: after the first,
// an encoding (under any of its names) costs neither an open nor a clone, and
// each converter keeps the name it was asked by.
TEST_F(I18NConverterPoolTest, NamedConvertersOfAnyEncodingAreRecycled) {
  const char *const names[] = {"utf-8", "ASCII", "ucs-2", "UTF16_PlatformEndian", "windows-1252", "cp1252",
                               "Shift_JIS", "UTF8"};
  for (const char *name : names) {
    { I18NConverter first(name); } // may open the encoding and clone
    const long opens = I18NConverter::getOpenCount();
    const long clones = I18NConverter::getCloneCount();
    for (int i = 0; i < 3; ++i) {
      I18NConverter converter(name);
      EXPECT_STREQ(name, converter.getEncoding());
    }
    EXPECT_EQ(opens, I18NConverter::getOpenCount()) << name;
    EXPECT_EQ(clones, I18NConverter::getCloneCount()) << name;
  }
  const long opens = I18NConverter::getOpenCount();
  I18NConverter alias("cp1252"), other("windows-1252"), sjis("Shift_JIS");
  EXPECT_EQ(opens, I18NConverter::getOpenCount()); // aliases share one prototype
  EXPECT_NE(alias.getUConverter(), other.getUConverter());
  EXPECT_THROW(I18NConverter("no-such-encoding"), I18NRuntimeError);
  // A name or prototype that cannot be kept leaves the pool as it was.
  for (long step : {1L, 2L}) {
    xyltest::AllocationFailure failure(step);
    EXPECT_THROW(I18NConverter("latin1"), XYLOutOfMemoryError) << step;
  }
  I18NConverter latin1("latin1");
  EXPECT_STREQ("latin1", latin1.getEncoding());
}

// A pooled converter comes back with the default modes whatever its borrower
// did, converts correctly after any number of round trips, and copies of it
// and assignments to it are independent converters.
TEST_F(I18NConverterPoolTest, NamedConvertersComeBackFreshAndCopyIndependently) {
  UConverter *lent;
  {
    I18NConverter borrowed("windows-1252");
    lent = borrowed.getUConverter();
    borrowed.setUserDefinedUnconvertibleOutputSequenceCallback(questionForCodePoint);
    borrowed.setBuiltInUnconvertibleOutputSequenceCallback(I18N_UNCONVERTIBLE_USER_DEFINED);
    borrowed.setBuiltInUnconvertibleInputSequenceCallback(I18N_UNCONVERTIBLE_ESCAPE);
    I18NErrorCodes error;
    EXPECT_EQ("<?>", toBytes(borrowed, u"\u4e00", &error));
  }
  I18NConverter next("windows-1252");
  ASSERT_EQ(lent, next.getUConverter());
  EXPECT_EQ(I18N_UNCONVERTIBLE_REPLACE, next.getBuiltInUnconvertibleInputSequenceCallback());
  EXPECT_EQ(I18N_UNCONVERTIBLE_REPLACE, next.getBuiltInUnconvertibleOutputSequenceCallback());
  EXPECT_EQ(nullptr, next.getUserDefinedUnconvertibleOutputSequenceCallback());
  I18NErrorCodes error = I18N_SUCCESS;
  EXPECT_EQ(u"\u20ac", toUnicode(next, "\x80", &error));
  toBytes(next, u"\u4e00", &error);
  EXPECT_EQ(I18N_GENERAL_FAILURE, error); // mode 1 with nothing configured stops

  I18NConverter copy(next);
  I18NConverter assigned("Shift_JIS");
  assigned = next;
  for (I18NConverter *c : {&copy, &assigned}) {
    EXPECT_NE(lent, c->getUConverter());
    EXPECT_STREQ("windows-1252", c->getEncoding());
    EXPECT_EQ(u"\u20ac", toUnicode(*c, "\x80", &error));
  }
  next = assigned; // a pooled converter replaced by a copy gives its own back
  EXPECT_NE(lent, next.getUConverter());
  I18NConverter again("windows-1252");
  EXPECT_EQ(lent, again.getUConverter());
}

// The least recently used encoding leaves the pool when one more is needed;
// a converter lent out by an encoding that left, or outliving the layer,
// is simply closed when destroyed.
TEST_F(I18NConverterPoolTest, LeastRecentlyUsedEncodingLeavesAndLentConvertersSurviveIt) {
  const char *const names[] = {"ISO-8859-2", "ISO-8859-3", "ISO-8859-4", "ISO-8859-5", "ISO-8859-6",
                               "ISO-8859-7", "ISO-8859-8", "ISO-8859-9", "ISO-8859-10"};
  static_assert(sizeof names / sizeof names[0] > I18NConverterPools::kNamedEncodings, "one more than the pool keeps");
  I18NConverter *lentByFirst = new I18NConverter(names[0]);
  for (const char *name : names)
    I18NConverter converter(name);
  long opens = I18NConverter::getOpenCount();
  { I18NConverter recent(names[8]); }
  EXPECT_EQ(opens, I18NConverter::getOpenCount());
  { I18NConverter evicted(names[0]); }
  EXPECT_EQ(opens + 1, I18NConverter::getOpenCount());
  delete lentByFirst;

  I18NConverter outliving("KOI8-R");
  I18NTerminate();
  I18NErrorCodes error;
  EXPECT_EQ(u"\u0410", toUnicode(outliving, "\xE1", &error));
  ASSERT_NE(0, I18NInitialize()); // for TearDown
}

TEST(I18NConverterPoolUninitialisedTest, HelpersOpenTheirOwnConverterBeforeInitialisation) {
  const long opens = I18NConverter::getOpenCount();
  {
    I18NConverterUTF8 utf8;
    I18NConverterPlatformDefault platform;
    EXPECT_STREQ("UTF8", utf8->getEncoding());
    EXPECT_STREQ(I18NGetPlatformDefaultEncoding(), platform->getEncoding());
  }
  EXPECT_EQ(opens + 2, I18NConverter::getOpenCount());
}

// ---- Platform default encoding -------------------------------------------------------------------------

TEST(I18NConverterTest, PlatformDefaultIsStableAndOpens) {
  const char *name = I18NGetPlatformDefaultEncoding();
  ASSERT_NE(nullptr, name);
  EXPECT_EQ(name, I18NGetPlatformDefaultEncoding()); // computed once
  I18NConverter converter(name);
  EXPECT_NE(nullptr, I18NGetNormalizedPlatformDefaultEncoding());
}

namespace {

// Runs the probe under `environment` ("NAME=value ..." prefixed to the
// command) and returns its two lines.
std::vector<std::string> probePlatformDefault(const std::string &environment) {
  return i18ntest::commandOutputLines("env -i " + environment + " '" XYL_I18N_PLATFORM_PROBE "'");
}

} // namespace

// The effective setting (LC_ALL, then LC_CTYPE, then LANG; empty ones do not
// count) decides. A code set it names counts whether or not that locale is
// installed (none of these is); anything without one is UTF-8.
TEST(I18NConverterPlatformDefaultTest, FollowsTheLocaleSettings) {
  struct Case {
    const char *environment;
    const char *normalized;
  } cases[] = {
      {"", "UTF-8"},
      {"LC_ALL=C", "UTF-8"},
      {"LANG=POSIX", "UTF-8"},
      {"LC_ALL=C.UTF-8", "UTF-8"},
      {"LANG=en_US.UTF-8", "UTF-8"},
      {"LC_CTYPE=xx_YY.utf8", "UTF-8"},
      {"LANG=fr_FR", "UTF-8"},
      {"LANG=de_DE.ISO-8859-15", "ISO-8859-15"},
      {"LANG=de_DE@euro", "ISO-8859-15"},
      {"LANG=de_DE.UTF-8@euro", "UTF-8"},
      {"LANG=ja_JP.SJIS", "Shift_JIS"},
      {"LANG=de_DE.ISO-8859-15 LC_CTYPE=C", "UTF-8"},
      {"LANG=C LC_CTYPE=de_DE.ISO-8859-15", "ISO-8859-15"},
      {"LC_CTYPE=de_DE.ISO-8859-15 LC_ALL=pl_PL.ISO-8859-2", "ISO_8859-2:1987"},
      {"LC_ALL= LC_CTYPE=de_DE.ISO-8859-15", "ISO-8859-15"},
  };
  for (const Case &c : cases) {
    const std::vector<std::string> lines = probePlatformDefault(c.environment);
    ASSERT_EQ(2u, lines.size()) << c.environment;
    EXPECT_EQ(c.normalized, lines[1]) << c.environment << " (" << lines[0] << ")";
  }
}

TEST(I18NConverterPlatformDefaultTest, InstalledLocaleGivesItsCodeSet) {
  // The machine may have no Latin-1 locale installed: build one into a
  // scratch directory when localedef can, else skip. A name without a code
  // set ("en_XX") is answered by the installed locale.
  i18ntest::ScratchDir dir;
  for (const char *name : {"en_US.ISO-8859-1", "en_XX"}) {
    const std::string build = "localedef -i en_US -f ISO-8859-1 '" + dir.file(name) + "' >/dev/null 2>&1";
    if (std::system(build.c_str()) != 0)
      GTEST_SKIP() << "no Latin-1 locale available (localedef failed); skipped";
    const std::vector<std::string> lines =
        probePlatformDefault("LOCPATH='" + dir.path() + "' LC_ALL=" + std::string(name));
    ASSERT_EQ(2u, lines.size());
    EXPECT_EQ("ISO-8859-1", lines[0]) << name;
    EXPECT_EQ("ISO_8859-1:1987", lines[1]) << name;
  }
}
