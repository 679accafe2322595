// SPDX-License-Identifier: Apache-2.0
#include <XYLCore/Utility/xylbase64.h>

#include "XYLCodecTestSupport.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>

using xyltest::Bytes;
using xyltest::bytesOf;

namespace {

struct Family {
  const char *name, *alphabet;
  unsigned int (*size)(unsigned int);
  void (*encode)(const unsigned char *, unsigned int, char *);
  int (*decode)(const char *, unsigned char *, unsigned int *);
};
const Family kStd{"standard", xyltest::kStandardAlphabet, XYLBase64EncodedSize, XYLBase64Encode, XYLBase64Decode};
const Family kUrl{"url", xyltest::kUrlAlphabet, XYLBase64URLEncodedSize, XYLBase64URLEncode, XYLBase64URLDecode};

std::string encode(const Family &f, const Bytes &in) {
  std::string out(f.size(static_cast<unsigned int>(in.size())), '\x7f');
  f.encode(in.data(), static_cast<unsigned int>(in.size()), &out[0]);
  EXPECT_EQ(std::strlen(out.c_str()), out.size() - 1) << "the encoding fills its whole size";
  return out.substr(0, out.size() - 1);
}

constexpr unsigned int kUntouched = 0xC0FFEEu;
struct Decoded {
  int code;
  Bytes bytes; // on success the bytes, on failure what was written before it
  unsigned int length;
};

// Decodes into strlen + 1 bytes followed by guard bytes: nothing may be
// written past the guard line, nor past the terminator on success.
Decoded decode(const Family &f, const std::string &text) {
  const unsigned char kGuard = 0xA5;
  Bytes out(text.size() + 1 + 16, kGuard);
  Decoded d{0, {}, kUntouched};
  d.code = f.decode(text.c_str(), out.data(), &d.length);
  if (d.code == 0) {
    EXPECT_LE(d.length, text.size());
    d.length = std::min<unsigned int>(d.length, static_cast<unsigned int>(text.size()));
    EXPECT_EQ(out[d.length], 0) << "terminating zero byte";
  }
  std::size_t end = d.code == 0 ? d.length + 1 : text.size() + 1;
  for (std::size_t i = end; i < out.size(); ++i)
    EXPECT_EQ(out[i], kGuard) << f.name << " \"" << text << "\": byte " << i << " written past the output";
  std::size_t written = d.code == 0 ? d.length : 0;
  while (d.code != 0 && written < end && out[written] != kGuard)
    ++written;
  d.bytes.assign(out.begin(), out.begin() + static_cast<std::ptrdiff_t>(written));
  return d;
}

TEST(XYLBase64Test, EncodedSizeUses32BitArithmetic) {
  const unsigned int cases[][2] = {
      {0, 1},           {1, 5},       {2, 5},
      {3, 5},           {4, 9},       {6, 9},
      {7, 13},          {1000, 1337}, {0x1FFFFFFFu, 715827885u}, // the largest n whose n * 8 does not wrap
      {0x20000000u, 1},                                          // n * 8 wraps to 0
      {0x20000001u, 5}};
  for (const auto &c : cases) {
    EXPECT_EQ(XYLBase64EncodedSize(c[0]), c[1]) << c[0];
    EXPECT_EQ(XYLBase64URLEncodedSize(c[0]), c[1]) << c[0];
  }
}

TEST(XYLBase64Test, MatchesReferenceAndRoundTripsForEveryLength) {
  EXPECT_EQ(encode(kStd, {0xFB, 0xFF}), "+/8=");
  EXPECT_EQ(encode(kUrl, {0xFB, 0xFF}), "_~8=");
  for (const Family *f : {&kStd, &kUrl}) {
    for (std::size_t n = 0; n < 300; n += (n < 40 ? 1 : 7)) {
      Bytes in = xyltest::randomBytes(n, static_cast<std::uint32_t>(n));
      std::string text = encode(*f, in);
      ASSERT_EQ(text, xyltest::referenceEncode(in, f->alphabet)) << f->name << " n=" << n;
      Decoded back = decode(*f, text);
      ASSERT_EQ(back.code, 0);
      ASSERT_EQ(back.bytes, in) << f->name << " n=" << n;
    }
    // Large input, plain and in 76-character lines with stray blanks.
    Bytes in = xyltest::randomBytes(100003, 7);
    std::string text = encode(*f, in), lines;
    for (std::size_t i = 0; i < text.size(); ++i)
      lines += (i % 76 == 0 ? "\r\n" : "") + std::string(i % 997 == 3 ? " \t" : "") + text[i];
    EXPECT_EQ(decode(*f, text).bytes, in) << f->name;
    EXPECT_EQ(decode(*f, lines).bytes, in) << f->name;
  }
}

TEST(XYLBase64Test, DecodingEdgeCases) {
  const struct {
    const Family &f;
    const char *text;
    int code;
    Bytes bytes;
  } cases[] = {
      {kStd, "", 0, {}},
      {kStd, " \t\r\n\v\f", 0, {}},
      {kStd, "QUJD\nRA==", 0, bytesOf("ABCD")},
      {kStd, " Q U\tJ\rD\v\f", 0, bytesOf("ABC")},
      {kStd, "+/8=", 0, {0xFB, 0xFF}},
      {kUrl, "_~8=", 0, {0xFB, 0xFF}},
      // partial groups; a partial group is never mapped
      {kStd, "QUJ", 1, {}},
      {kStd, "QUJDRA", 1, bytesOf("ABC")},
      {kStd, "QUJD RA =", 1, bytesOf("ABC")},
      {kStd, "QUJD{", 1, bytesOf("ABC")},
      // bytes outside the table stop at their group
      {kStd, "QU{D", 2, {}},
      {kStd, "Q@JD", 2, {}},
      {kStd, "QUJ~", 2, {}},
      {kStd, "QUJ\x80", 2, {}},
      {kStd, "QUJDQ@==", 2, bytesOf("ABC")},
      {kStd, "QUJDRA==Q{==", 2, bytesOf("ABCD")},
      {kUrl, "QUJ\xfe", 2, {}},
      // "=" is 0 anywhere; only the third and fourth position suppress a byte
      {kStd, "QQ==QUJD", 0, bytesOf("AABC")},
      {kStd, "QQ=B", 0, {0x41, 0x01}},
      {kStd, "Q=QB", 0, {0x40, 0x04, 0x01}},
      {kStd, "=QQB", 0, {0x01, 0x04, 0x01}},
      {kStd, "====", 0, {0x00}},
      // lax values: punctuation, the gap between "Z" and "a", the other alphabet
      {kStd, "Q!==", 0, {0x42}},
      {kStd, "AAA:", 0, {0x00, 0x00, 0xF9}},
      {kStd, ":AAA", 0, {0xE4, 0x00, 0x00}},
      {kStd, "A:AA", 0, {0x03, 0x90, 0x00}},
      {kStd, "AA:A", 0, {0x00, 0x0E, 0x40}},
      {kStd, "AA_A", 0, {0x00, 0x06, 0x00}},
      {kUrl, "AA_A", 0, {0x00, 0x0F, 0x80}},
      {kUrl, "QUJ~", 0, {0x41, 0x42, 0x7F}},
      {kUrl, "+/8=", 0, {0xBF, 0x3F}},
  };
  for (const auto &c : cases) {
    Decoded got = decode(c.f, c.text);
    EXPECT_EQ(got.code, c.code) << c.f.name << " \"" << c.text << "\"";
    EXPECT_EQ(got.bytes, c.bytes) << c.f.name << " \"" << c.text << "\"";
    EXPECT_EQ(got.length, c.code == 0 ? c.bytes.size() : kUntouched) << "length stored only on success";
  }
}

// Every byte after three valid characters: a blank leaves a partial group
// (1); exactly "@" and the bytes from 0x7B up, except "~" for URL, are
// rejected (2); everything else decodes.
TEST(XYLBase64Test, RejectsExactlyTheDocumentedBytes) {
  for (const Family *f : {&kStd, &kUrl}) {
    for (int c = 1; c < 256; ++c) {
      bool blank = c == ' ' || (c >= '\t' && c <= '\r');
      bool rejected = c == 0x40 || (c >= 0x7B && !(f == &kUrl && c == '~'));
      EXPECT_EQ(decode(*f, std::string("AAA") + static_cast<char>(c)).code, blank      ? 1
                                                                            : rejected ? 2
                                                                                       : 0)
          << f->name << " byte " << c;
    }
  }
}

} // namespace
