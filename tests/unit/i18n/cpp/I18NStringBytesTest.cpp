// SPDX-License-Identifier: Apache-2.0
// Tests of src/i18n/cpp/i18n_string_bytes.cpp and i18n_string_external.cpp:
// c_str and its cache, toBytes in every form, invalid input and unpaired
// surrogates under the converter modes, URI decoding, external buffers and
// their free functions.
#include "I18NStringTestSupport.h"

#include <XYLCore/ExceptionHierarchy/XYLErrors.h>
#include <XYLCore/i18n/cpp/i18n_converter.h>
#include <XYLCore/i18n/cpp/i18n_string.h>

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

using namespace i18nstringtest;

namespace {

std::string bytesOf(const I18NString &s, const char *encoding) {
  int length = -1;
  char *bytes = s.toBytes(encoding, &length);
  std::string result(bytes, static_cast<size_t>(length));
  I18NString::freeBuffer(bytes);
  return result;
}

struct Collector : I18NByteWriter {
  std::string bytes;
  int stopAfter = -1;
  int write(const char *b, int n) override {
    if (stopAfter == 0)
      return 1;
    --stopAfter;
    bytes.append(b, static_cast<size_t>(n));
    return 0;
  }
};

} // namespace

TEST(I18NStringBytesTest, RoundTripsThroughEncodings) {
  struct Case {
    std::u16string text;
    const char *encoding;
    std::string bytes;
  } cases[] = {
      {u"plain", "UTF-8", "plain"},
      {u"plain", "UTF-16LE", std::string("p\0l\0a\0i\0n\0", 10)},
      {u"caf\u00e9", "UTF-8", "caf\xC3\xA9"},
      {u"caf\u00e9", "windows-1252", "caf\xE9"},
      {u"caf\u00e9", "ISO-8859-1", "caf\xE9"},
      {u"\u20ac", "windows-1252", "\x80"},
      {u"\U0001F600", "UTF-8", "\xF0\x9F\x98\x80"},
      {u"\U0001F600", "UTF-16BE", std::string("\xD8\x3D\xDE\x00", 4)},
      {u"\u3042\u3044", "Shift_JIS", "\x82\xa0\x82\xa2"},
      {u"\u3042", "EUC-JP", "\xa4\xa2"},
      {u"", "UTF-8", ""},
  };
  for (const Case &c : cases) {
    I18NString s = u16s(c.text);
    EXPECT_EQ(c.bytes, bytesOf(s, c.encoding)) << c.encoding;
    I18NString back(c.bytes.data(), c.encoding, static_cast<int>(c.bytes.size()));
    EXPECT_EQ(c.text, unitsOf(back)) << c.encoding;
  }
}

TEST(I18NStringBytesTest, CStrIsCachedUntilTheNextChange) {
  I18NString s = u8s("gr\xC3\xBC\xC3\x9F");
  int length = 0;
  const char *utf16 = s.c_str("UTF-16", &length);
  EXPECT_EQ(8, length);
  EXPECT_EQ(0, utf16[8]); // a two-byte terminator
  EXPECT_EQ(0, utf16[9]);
  const char *latin = s.c_str("ISO-8859-1", &length);
  EXPECT_STREQ("gr\xFC\xDF", latin);
  EXPECT_EQ(utf16, s.c_str("UTF-16"));
  EXPECT_EQ(latin, s.c_str("ISO-8859-1"));
  s.append(static_cast<unsigned int>('!'), 1);
  EXPECT_STREQ("gr\xFC\xDF!", s.c_str("ISO-8859-1"));
  I18NConverter converter("windows-1252");
  EXPECT_STREQ("gr\xFC\xDF!", s.c_str(converter, &length));
  EXPECT_EQ(5, length);
  I18NString ascii("abc", "UTF-8");
  EXPECT_STREQ("abc", ascii.c_str());
  EXPECT_STREQ("abc", ascii.c_str(converter));
}

TEST(I18NStringBytesTest, ToBytesForms) {
  I18NString s = u8s("\xC3\xA9t\xC3\xA9");
  CountingAllocator counter;
  int length = 0;
  char *a = s.toBytes("ISO-8859-1", &length, CountingAllocator::callback, &counter);
  EXPECT_EQ(std::string("\xE9t\xE9"), std::string(a, static_cast<size_t>(length)));
  EXPECT_GE(counter.calls, 1);
  I18NString::freeBuffer(a, CountingAllocator::callback, &counter);
  EXPECT_EQ(nullptr, a);
  EXPECT_EQ(1, counter.frees);
  char *b = nullptr;
  I18NConverter utf8("UTF-8");
  EXPECT_EQ(5, s.toBytes(b, utf8));
  EXPECT_STREQ("\xC3\xA9t\xC3\xA9", b);
  EXPECT_EQ(I18N_SUCCESS, I18NFreeBuffer(b));
  EXPECT_EQ(nullptr, b);
  EXPECT_EQ(3, s.toBytes(b, "windows-1252"));
  I18NString::freeBuffer(b);
  char *c = s.toBytes(utf8);
  EXPECT_STREQ("\xC3\xA9t\xC3\xA9", c);
  I18NString::freeBuffer(c);
  Collector writer;
  EXPECT_EQ(5, s.toBytes(writer, "UTF-8"));
  EXPECT_EQ("\xC3\xA9t\xC3\xA9", writer.bytes);
  Collector refusing;
  refusing.stopAfter = 0;
  EXPECT_EQ(I18N_GENERAL_FAILURE, s.toBytes(refusing, utf8));
  EXPECT_THROW(s.toBytes("no-such-encoding"), I18NRuntimeError);
}

TEST(I18NStringBytesTest, MalformedInputFollowsTheConverterMode) {
  const std::string bad = "a\xFF"
                          "b\xC3"; // an invalid byte and a cut sequence
  struct Case {
    int mode;
    bool throws;
    std::u16string expected;
  } cases[] = {
      {2, false, u"a\ufffdb\ufffd"}, // substitute
      {4, true, u""},                // stop
      {0, false, u"a%XFFb%XC3"},     // escape
  };
  for (const Case &c : cases) {
    I18NConverter converter("UTF-8");
    converter.setBuiltInUnconvertibleInputSequenceCallback(c.mode);
    if (c.throws) {
      try {
        I18NString s(bad.data(), converter, static_cast<int>(bad.size()));
        FAIL() << "mode " << c.mode;
      } catch (I18NRuntimeError &e) {
        EXPECT_EQ(I18N_GENERAL_FAILURE, e.getErrorCode());
      }
    } else {
      I18NString s(bad.data(), converter, static_cast<int>(bad.size()));
      EXPECT_EQ(c.expected, unitsOf(s)) << "mode " << c.mode;
    }
  }
  // The same bytes through a name use the converter's default mode: without
  // a configured replacement that fails (code -7) rather than guessing.
  EXPECT_THROW(I18NString(bad.data(), "UTF-8", static_cast<int>(bad.size())), I18NRuntimeError);
  try {
    I18NString s("abc", "no-such-encoding");
    FAIL();
  } catch (I18NRuntimeError &e) {
    EXPECT_EQ(I18N_INVALID_ENCODING, e.getErrorCode());
  }
}

TEST(I18NStringBytesTest, UnpairedSurrogatesOnOutput) {
  std::u16string text = u"x" + std::u16string(1, 0xD800) + u"y";
  I18NString s = u16s(text);
  EXPECT_EQ(3, s.length());
  struct Case {
    int mode;
    bool throws;
    std::string expected;
  } cases[] = {
      {2, false, "x\xEF\xBF\xBDy"},
      {4, true, ""},
  };
  for (const Case &c : cases) {
    I18NConverter converter("UTF-8");
    converter.setBuiltInUnconvertibleOutputSequenceCallback(c.mode);
    if (c.throws) {
      EXPECT_THROW(s.toBytes(converter), I18NRuntimeError) << "mode " << c.mode;
      continue;
    }
    int length = 0;
    char *bytes = s.toBytes(converter, &length);
    EXPECT_EQ(c.expected, std::string(bytes, static_cast<size_t>(length))) << "mode " << c.mode;
    I18NString::freeBuffer(bytes);
  }
  // UTF-16 out treats it as unconvertible too: the default mode (no
  // configured replacement) fails, the substitute mode writes U+FFFD.
  EXPECT_THROW(s.c_str("UTF-16LE"), I18NRuntimeError);
  I18NConverter utf16("UTF-16LE");
  utf16.setBuiltInUnconvertibleOutputSequenceCallback(2);
  int length = 0;
  const char *units = s.c_str(utf16, &length);
  ASSERT_EQ(6, length);
  EXPECT_EQ(std::string("x\0\xFD\xFFy\0", 6), std::string(units, 6));
  // Searching and trimming treat it as one code point.
  EXPECT_EQ(1, s.find(0xD800u));
  EXPECT_EQ(2, s.findFirstNotOf(0xD800u, 1));
  I18NString t = u16s(std::u16string(2, 0xDC00) + u"z");
  t.trimLeading(0xDC00);
  EXPECT_EQ(u"z", unitsOf(t));
}

TEST(I18NStringBytesTest, UriDecoding) {
  struct Case {
    const char *text;
    const char *encoding;
    std::u16string expected;
  } cases[] = {
      {"%41%42c", "UTF-8", u"ABc"},
      {"caf%C3%A9", "UTF-8", u"caf\u00e9"},
      {"caf%e9", "windows-1252", u"caf\u00e9"},
      {"a+b%20c", "UTF-8", u"a+b c"},
      {"%", "UTF-8", u"%"},
      {"abc%", "UTF-8", u"abc%"},
      {"%4", "UTF-8", u"%4"},
      {"%G1%1G", "UTF-8", u"%G1%1G"},
      {"%%41", "UTF-8", u"%A"},
      {"\\u00E9t\\u00e9", "UTF-8", u"\u00e9t\u00e9"},
      {"U+263A", "UTF-8", u"\u263a"},
      {"&#x1F600;", "UTF-8", u"\U0001F600"},
      {"%5Cu0041", "UTF-8", u"A"}, // an escaped backslash still forms a Unicode escape
      {"\\uZZZZ", "UTF-8", u"\\uZZZZ"},
      {"", "UTF-8", u""},
  };
  for (const Case &c : cases)
    EXPECT_EQ(c.expected, unitsOf(I18NUriDecode(c.text, c.encoding))) << c.text;
  I18NConverter substitute("UTF-8");
  substitute.setBuiltInUnconvertibleInputSequenceCallback(2);
  EXPECT_EQ(u"a\ufffd", unitsOf(I18NUriDecode("a%FF", substitute)));
  EXPECT_EQ(u"", unitsOf(I18NUriDecode(nullptr, "UTF-8")));
}

TEST(I18NStringBytesTest, CopyToExternalBuffer) {
  I18NString s("abc", "UTF-8");
  struct Case {
    int byteSize;
    int result;
    std::u16string content;
  } cases[] = {
      {8, 0, u"abc"},
      {10, 0, u"abc"},
      {6, -9, u"ab"},
      {4, -9, u"a"},
  };
  for (const Case &c : cases) {
    std::vector<char16_t> buffer(8, u'#');
    EXPECT_EQ(c.result, s.copyToExternalBuffer(buffer.data(), c.byteSize)) << c.byteSize;
    EXPECT_EQ(c.content, std::u16string(buffer.data())) << c.byteSize;
  }
  unsigned char small[4] = {0xAA, 0xAA, 0xAA, 0xAA};
  EXPECT_EQ(-9, s.copyToExternalBuffer(small, 2));
  EXPECT_EQ(0, small[0]);
  EXPECT_EQ(0, small[1]);
  EXPECT_EQ(0xAA, small[2]);
  EXPECT_EQ(-9, s.copyToExternalBuffer(small, 0));
  EXPECT_EQ(-9, s.copyToExternalBuffer(small, 3));
}

TEST(I18NStringBytesTest, StaticExternalBufferTakesChangesThatFit) {
  char16_t buffer[8] = u"ab";
  I18NString s;
  s.attach(buffer, sizeof buffer);
  EXPECT_EQ(buffer, s.getExternalBuffer());
  EXPECT_EQ(u"ab", unitsOf(s));
  EXPECT_NE(0, s.getFlags() & I18NString::FLAG_STATIC_EXTERNAL_BUFFER);
  s.append(0xE9u, 1);
  s.insert(0, static_cast<unsigned int>('>'), 1);
  EXPECT_EQ(std::u16string(u">ab\u00e9"), std::u16string(buffer)); // written in place, terminated
  s.erase(0, 1);
  EXPECT_EQ(std::u16string(u"ab\u00e9"), std::u16string(buffer));
  try {
    s.append(static_cast<unsigned int>('x'), 10);
    FAIL() << "a static buffer grew";
  } catch (I18NRuntimeError &e) {
    EXPECT_EQ(-7, e.getErrorCode());
    EXPECT_STREQ("Cannot resize a static external buffer.", e.getMessage());
  }
  EXPECT_EQ(nullptr, s.getExternalBuffer()); // detached; the text lives on in the string
  EXPECT_EQ(u"ab\u00e9xxxxxxxxxx", unitsOf(s));
}

TEST(I18NStringBytesTest, ExternalBufferWithAllocatorIsRegrown) {
  CountingAllocator counter;
  char *block = CountingAllocator::callback(&counter, nullptr, 6, nullptr);
  std::memcpy(block, u"hi", 6);
  {
    I18NString s(CountingAllocator::callback, &counter);
    s.attach(block, 6);
    EXPECT_EQ(0, s.getFlags() & I18NString::FLAG_STATIC_EXTERNAL_BUFFER);
    s.append(I18NString(" there, a longer text", "UTF-8"));
    void *grown = s.getExternalBuffer();
    ASSERT_NE(nullptr, grown);
    EXPECT_EQ(std::u16string(u"hi there, a longer text"), std::u16string(static_cast<const char16_t *>(grown)));
    EXPECT_EQ(I18NExternalBufferNumBytes(grown), s.size());
    block = static_cast<char *>(grown);
  }
  CountingAllocator::callback(&counter, block, 0, nullptr); // the buffer stays the caller's
  I18NString u;
  unsigned short units[4] = {'x', 'y', 'z', 'w'};
  u._attach(units, 4, 2);
  EXPECT_EQ(u"xy", unitsOf(u));
  EXPECT_EQ(0, units[2]);
}

TEST(I18NStringBytesTest, ExternalBufferFreeFunctions) {
  const char16_t text[] = u"a\U0001F600b";
  EXPECT_EQ(10, I18NExternalBufferNumBytes(text));
  EXPECT_EQ(3, I18NExternalBufferNumCodePoints(text));
  EXPECT_EQ(0, I18NExternalBufferNumBytes(nullptr));
  void *target = nullptr;
  EXPECT_EQ(I18N_SUCCESS, I18NExternalBufferCopy(target, text));
  EXPECT_EQ(std::u16string(text), std::u16string(static_cast<char16_t *>(target)));
  EXPECT_EQ(I18N_SUCCESS, I18NExternalBufferConcat(target, u"!"));
  EXPECT_EQ(std::u16string(u"a\U0001F600b!"), std::u16string(static_cast<char16_t *>(target)));
  EXPECT_EQ(I18N_SUCCESS, I18NExternalBufferConcat(target, target)); // with itself
  EXPECT_EQ(std::u16string(u"a\U0001F600b!a\U0001F600b!"), std::u16string(static_cast<char16_t *>(target)));
  CountingAllocator failing;
  failing.failAfter = 0;
  void *kept = target;
  EXPECT_EQ(I18N_ALLOCATION_FAILURE, I18NExternalBufferConcat(target, u"more", CountingAllocator::callback, &failing));
  EXPECT_EQ(kept, target);
  EXPECT_EQ(I18N_SUCCESS, I18NFreeBuffer(target));
  EXPECT_EQ(nullptr, target);

  void *out = nullptr;
  const unsigned short in[] = {'o', 'k', 0};
  EXPECT_EQ(I18N_TRANSFORMATION_ALIASED, I18NUTF16ToExternalBuffer(out, in, false));
  EXPECT_EQ(in, out);
  EXPECT_EQ(I18N_TRANSFORMATION_COPIED, I18NUTF16ToExternalBuffer(out, in, true));
  EXPECT_NE(static_cast<const void *>(in), out);
  unsigned short *back = nullptr;
  EXPECT_EQ(I18N_TRANSFORMATION_COPIED, I18NExternalBufferToUTF16(back, out, true));
  EXPECT_EQ(std::u16string(u"ok"), std::u16string(reinterpret_cast<char16_t *>(back)));
  I18NFreeBuffer(out);
  I18NFreeBuffer(back);
}
