// SPDX-License-Identifier: Apache-2.0
#include <XYLCore/Utility/XYLSquisher.h>
#include <XYLCore/Utility/XYLUtMemory.h>
#include <XYLCore/Utility/xylbase64.h>
#include <XYLCore/Utility/xylsquish.h>

#include "XYLCodecTestSupport.h"
#include "XYLFaultInjection.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <zlib.h>

using xyltest::Bytes;

extern "C" int xylCodecCApiRoundTrip(const char *text);

namespace {

struct DeleteArray {
  void operator()(char *p) const { delete[] p; }
};
using Owned = std::unique_ptr<char, DeleteArray>;

std::uint32_t getBE(const Bytes &b, std::size_t at) {
  return std::uint32_t(b[at]) << 24 | std::uint32_t(b[at + 1]) << 16 | std::uint32_t(b[at + 2]) << 8 | b[at + 3];
}
void putBE(Bytes &b, std::size_t at, std::uint32_t value) {
  for (int i = 0; i < 4; ++i)
    b[at + i] = static_cast<unsigned char>(value >> (24 - 8 * i));
}
std::uint32_t zlibChecksum(const Bytes &raw) {
  return static_cast<std::uint32_t>(crc32(0xFFFFFFFFUL, raw.data() + 8, static_cast<uInt>(raw.size() - 8)));
}
Bytes rawOf(const std::string &token) { return xyltest::referenceDecode(token, xyltest::kUrlAlphabet); }
std::string tokenOf(Bytes raw, bool fixChecksum = true) {
  if (fixChecksum)
    putBE(raw, 4, zlibChecksum(raw));
  return xyltest::referenceEncode(raw, xyltest::kUrlAlphabet);
}

// A token made from zlib and the reference Base64 alone.
std::string tokenByHand(const std::string &text, int level, std::uint32_t lengthField) {
  uLongf size = compressBound(text.size());
  Bytes raw(8 + size);
  EXPECT_EQ(compress2(raw.data() + 8, &size, reinterpret_cast<const Bytef *>(text.data()), text.size(), level), Z_OK);
  raw.resize(8 + size);
  putBE(raw, 0, lengthField);
  return tokenOf(raw);
}

// Squishes into exactly XYLsqu_squished_size bytes followed by guard bytes.
std::string squish(const std::string &text) {
  unsigned int size = XYLsqu_squished_size(static_cast<unsigned int>(text.size()));
  std::string out(size + 32, '#');
  XYLsqu_squish(text.c_str(), &out[0]);
  EXPECT_LT(std::strlen(out.c_str()), size) << "token overruns its size, text length " << text.size();
  EXPECT_EQ(out.substr(size), std::string(32, '#')) << "write past the sized output";
  return out.c_str();
}

// The two C steps as a C caller writes them, releasing the block on every
// path; returns the first step's code and stores the second's.
int unsquishC(const std::string &token, std::string *text, int *zlibCode = nullptr) {
  XYLsquState state;
  unsigned int size = 0;
  int code = XYLsqu_unsquish1(token.c_str(), &state, &size);
  if (code == 0) {
    std::unique_ptr<char[]> out(new char[size]);
    int rc = XYLsqu_unsquish2(&state, out.get());
    if (zlibCode != nullptr)
      *zlibCode = rc;
    EXPECT_EQ(state.m_pData == nullptr, rc == Z_OK) << "released on success only";
    if (rc == Z_OK)
      text->assign(out.get());
  }
  std::free(state.m_pData);
  return code;
}

// Deflate grows incompressible text: the size must also hold the header and
// zlib's worst case, where L + L / 1000 + 16 overran for short texts.
TEST(XYLSquisherTest, IncompressibleTextNeverOverrunsItsOutput) {
  for (unsigned int L : {0u, 1u, 16u, 999u, 65535u, 10000000u, 123456789u}) {
    EXPECT_GE(XYLsqu_squished_size(L), XYLBase64URLEncodedSize(L + L / 1000 + 16)) << L;
    EXPECT_GE(XYLsqu_squished_size(L), 4 * ((8 + compressBound(L) + 2) / 3) + 1) << L;
  }
  EXPECT_EQ(XYLsqu_squished_size(0xF0000000u), 0xFFFFFFFFu) << "saturates instead of wrapping";
  bool beyondOldSize = false;
  for (unsigned int n = 0; n < 600; n += (n < 40 ? 1 : 37)) {
    Bytes noise = xyltest::randomBytes(n, n + 11, 1, 255);
    std::string text(noise.begin(), noise.end()), back, token = squish(text);
    beyondOldSize |= token.size() + 1 > XYLBase64URLEncodedSize(n + n / 1000 + 16);
    ASSERT_EQ(unsquishC(token, &back), 0) << n;
    EXPECT_EQ(back, text) << n;
  }
  EXPECT_TRUE(beyondOldSize) << "no case needed the room for the header";
}

TEST(XYLSquisherTest, RoundTripsThroughBothInterfaces) {
  std::string words;
  for (int i = 0; words.size() < 30000; ++i)
    words += "word" + std::to_string(i * 7919 % 1013) + (i % 13 == 0 ? ".\n" : " ");
  for (const std::string &text : {std::string(), std::string("a"), std::string(10000, 'x'), words,
                                  std::string("\xC3\xA9t\xC3\xA9 \xE2\x82\xAC\x01\x7F\xFF")}) {
    std::string token = squish(text), back = "unchanged";
    EXPECT_EQ(token.find_first_not_of(std::string(xyltest::kUrlAlphabet) + "="), std::string::npos);
    ASSERT_EQ(unsquishC(token, &back), 0);
    EXPECT_EQ(back, text);
    Owned classToken(XYLSquisher::squish(text.c_str()));
    ASSERT_NE(classToken, nullptr);
    EXPECT_EQ(classToken.get(), token);
    Owned classText(XYLSquisher::unSquish(token.c_str()));
    ASSERT_NE(classText, nullptr);
    EXPECT_EQ(classText.get(), text);
  }
  EXPECT_STREQ(Owned(XYLSquisher::squish(nullptr)).get(), squish("").c_str()) << "null squishes as empty";
  EXPECT_EQ(getBE(rawOf(squish("")), 0), 0u) << "the empty text has length 0 in its header";
}

// Tokens must interoperate with any zlib and any Base64 implementation.
TEST(XYLSquisherTest, InteroperatesWithPlainZlib) {
  const std::string text = "The quick brown fox jumps over the lazy dog, again and again and again.";
  Bytes raw = rawOf(squish(text));
  EXPECT_EQ(getBE(raw, 0), text.size());
  EXPECT_EQ(getBE(raw, 4), zlibChecksum(raw));
  EXPECT_EQ(raw[9], 0xDA) << "zlib header of level 9";
  std::string out(text.size(), '\0');
  uLongf outLength = out.size();
  ASSERT_EQ(uncompress(reinterpret_cast<Bytef *>(&out[0]), &outLength, raw.data() + 8, raw.size() - 8), Z_OK);
  EXPECT_EQ(out, text);

  for (int level : {0, 1, 6, 9}) {
    std::string token = tokenByHand(text, level, static_cast<std::uint32_t>(text.size())), back;
    ASSERT_EQ(unsquishC(token, &back), 0) << level;
    EXPECT_EQ(back, text);
    std::string spaced = token.substr(0, 5) + "\n " + token.substr(5); // blanks are skipped
    EXPECT_STREQ(Owned(XYLSquisher::unSquish(spaced.c_str())).get(), text.c_str());
  }
}

TEST(XYLSquisherTest, FirstStepRejectsDamagedTokens) {
  const std::string good = squish("a text that is long enough to give a token of some length");
  const Bytes raw = rawOf(good);
  auto damaged = [&](std::size_t at, unsigned char mask, std::uint32_t length) {
    Bytes copy = raw;
    putBE(copy, 0, length);
    copy[at] ^= mask;
    return tokenOf(copy, false);
  };
  const std::uint32_t L = getBE(raw, 0);
  const struct {
    const char *what;
    std::string token;
    int code;
  } cases[] = {
      {"checksum field altered", damaged(5, 0x10, L), 3},
      {"stream byte altered", damaged(12, 0x01, L), 3},
      {"truncated by one character", good.substr(0, good.size() - 1), 1},
      {"truncated by one group", good.substr(0, good.size() - 4), 3},
      {"six bytes", good.substr(0, 8), 3},
      {"empty token", "", 3},
      {"seven bytes", "AAAAAAAAAA==", 3},
      {"eight zero bytes", "AAAAAAAAAAA=", 3},
      {"0x40 inside", good.substr(0, 4) + "@" + good.substr(5), 1},
      {"byte above 0x7A inside", good.substr(0, 4) + "{" + good.substr(5), 1},
      {"length 10000001", damaged(0, 0, 10000001u), 2}, // the checksum covers the stream only
      {"length 0xFFFFFFFF", damaged(0, 0, 0xFFFFFFFFu), 2},
      {"large length and bad checksum", damaged(7, 0x80, 20000000u), 3},
  };
  for (const auto &c : cases) {
    std::string back = "unchanged";
    EXPECT_EQ(unsquishC(c.token, &back), c.code) << c.what;
    EXPECT_EQ(back, "unchanged") << c.what;
    EXPECT_EQ(XYLSquisher::unSquish(c.token.c_str()), nullptr) << c.what;
  }
  XYLsquState state;
  EXPECT_EQ(XYLsqu_unsquish1(nullptr, &state, nullptr), 1);
  EXPECT_EQ(state.m_pData, nullptr);

  unsigned int size = 0; // 10000000 itself is accepted
  ASSERT_EQ(XYLsqu_unsquish1(tokenByHand("short", 9, 10000000u).c_str(), &state, &size), 0);
  EXPECT_EQ(size, 10000001u);
  std::free(state.m_pData);
}

TEST(XYLSquisherTest, SecondStepReportsZlibResults) {
  const std::string text = "hello squisher hello squisher hello";
  Bytes raw = rawOf(tokenByHand(text, 9, static_cast<std::uint32_t>(text.size())));
  Bytes badHeader = raw;
  badHeader[8] ^= 0xFF;
  const struct {
    const char *what;
    std::string token;
    int zlibCode;
    std::string text;
  } cases[] = {
      {"corrupt stream", tokenOf(badHeader), Z_DATA_ERROR, "unchanged"},
      {"length field too small", tokenByHand(text, 9, 3), Z_BUF_ERROR, "unchanged"},
      // Zlib inflates a destination of length 0 into a scratch byte: a length
      // field of 0 must still refuse a stream holding any text.
      {"length field 0, one byte", tokenByHand("x", 9, 0), Z_BUF_ERROR, "unchanged"},
      {"length field 0, a text", tokenByHand(text, 9, 0), Z_BUF_ERROR, "unchanged"},
      {"length field 0, empty text", tokenByHand("", 9, 0), Z_OK, ""},
      {"length field too large", tokenByHand(text, 9, 100), Z_OK, text}, // ends where the stream ends
  };
  for (const auto &c : cases) {
    std::string back = "unchanged";
    int rc = 12345;
    ASSERT_EQ(unsquishC(c.token, &back, &rc), 0) << c.what;
    EXPECT_EQ(rc, c.zlibCode) << c.what;
    EXPECT_EQ(back, c.text) << c.what;
    Owned viaClass(XYLSquisher::unSquish(c.token.c_str()));
    EXPECT_EQ(viaClass ? viaClass.get() : "unchanged", c.text) << c.what;
  }
  // A state without a token: released by a success, or shorter than the header.
  XYLsquState state;
  char out[8];
  ASSERT_EQ(XYLsqu_unsquish1(squish("once").c_str(), &state, nullptr), 0);
  ASSERT_EQ(XYLsqu_unsquish2(&state, out), Z_OK);
  EXPECT_STREQ(out, "once");
  EXPECT_EQ(XYLsqu_unsquish2(&state, out), Z_STREAM_ERROR);
  ASSERT_EQ(XYLsqu_unsquish1("AAAA", &state, nullptr), 3);
  EXPECT_EQ(XYLsqu_unsquish2(&state, out), Z_STREAM_ERROR);
  std::free(state.m_pData);
}

// Fail the Nth C-heap allocation (once, then from then on) for every N until
// none is left to fail: each run gives the documented failure or the right
// result, and the sanitizer build checks that nothing leaks.
TEST(XYLSquisherTest, AllocationFailuresGiveDocumentedResults) {
  const std::string text(2000, 'z'), token = squish(text);
  {
    xyltest::AllocationFailure failNext(1, true);
    std::string out(XYLsqu_squished_size(2000), '#');
    XYLsqu_squish(text.c_str(), &out[0]);
    EXPECT_STREQ(out.c_str(), "");
    XYLsquState state;
    EXPECT_EQ(XYLsqu_unsquish1(token.c_str(), &state, nullptr), 1);
    EXPECT_EQ(state.m_pData, nullptr);
  }
  for (int sticky : {0, 1}) {
    for (long n = 1;; ++n) {
      XYLUtMemory::setFailureCountdown(n, sticky);
      std::string out(XYLsqu_squished_size(2000), '#');
      XYLsqu_squish(text.c_str(), &out[0]);
      Owned squished(XYLSquisher::squish(text.c_str()));
      XYLsquState state;
      int first = XYLsqu_unsquish1(token.c_str(), &state, nullptr);
      bool blockAfterFailure = first != 0 && state.m_pData != nullptr;
      std::free(state.m_pData);
      Owned unsquished(XYLSquisher::unSquish(token.c_str()));
      long failed = XYLUtMemory::setFailureCountdown(0, 0);

      EXPECT_TRUE(out.c_str() == token || out.c_str() == std::string()) << n;
      EXPECT_TRUE(!squished || squished.get() == token) << n;
      EXPECT_TRUE(first == 0 || (first == 1 && !blockAfterFailure)) << n;
      EXPECT_TRUE(!unsquished || unsquished.get() == text) << n;
      if (failed == 0) {
        EXPECT_TRUE(out.c_str() == token && squished && first == 0 && unsquished);
        break;
      }
      ASSERT_LT(n, 10) << "a round trip makes a handful of allocations";
    }
  }
}

TEST(XYLSquisherTest, CHeadersCompileAsCAndWork) {
  EXPECT_EQ(xylCodecCApiRoundTrip("from C"), 0);
  EXPECT_EQ(xylCodecCApiRoundTrip(""), 0);
}

} // namespace
