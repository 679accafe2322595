// SPDX-License-Identifier: Apache-2.0
#include <XYLCore/Utility/XYLUtCrc32.h>

#include "XYLCodecTestSupport.h"

#include <gtest/gtest.h>

#include <cstring>
#include <zlib.h>

namespace {

TEST(XYLUtCrc32Test, KnownValuesAndNullBuffer) {
  const struct {
    unsigned long start;
    const char *text;
    unsigned long expected;
  } cases[] = {
      {0, "123456789", 0xcbf43926UL},
      {0xFFFFFFFFUL, "123456789", 0xd202d277UL}, // the squisher's checksum
      {0, "The quick brown fox jumps over the lazy dog", 0x414fa339UL},
      {0x12345678UL, "", 0x12345678UL},
  };
  for (const auto &c : cases) {
    auto text = reinterpret_cast<const unsigned char *>(c.text);
    EXPECT_EQ(XYLUtCrc32::crc32(c.start, text, static_cast<unsigned int>(std::strlen(c.text))), c.expected) << c.text;
  }
  for (unsigned long start : {0UL, 0xcbf43926UL, 0xFFFFFFFFUL})
    for (unsigned int len : {0u, 100u})
      EXPECT_EQ(XYLUtCrc32::crc32(start, nullptr, len), 0UL) << start << " " << len;
}

// Lengths on both sides of the switch from the byte table to the folding code
// and large buffers, at every alignment, from arbitrary starting values; the
// high half of a 64-bit crc is ignored and results stay 32-bit, as with zlib.
TEST(XYLUtCrc32Test, MatchesZlib) {
  xyltest::Bytes data = xyltest::randomBytes((1 << 20) + 16, 42);
  std::mt19937_64 generator(9);
  std::vector<unsigned int> lengths;
  for (unsigned int len = 0; len <= 300; ++len)
    lengths.push_back(len);
  for (unsigned int len : {4097u, 65539u, 1u << 20})
    lengths.push_back(len);
  for (std::size_t offset = 0; offset < 16; ++offset) {
    for (unsigned int len : lengths) {
      unsigned long start = offset == 0 ? 0 : offset == 1 ? 0xFFFFFFFFUL : generator();
      unsigned long ours = XYLUtCrc32::crc32(start, data.data() + offset, len);
      ASSERT_EQ(ours, ::crc32(start, data.data() + offset, len)) << "offset " << offset << " len " << len;
      ASSERT_LE(ours, 0xFFFFFFFFUL);
    }
  }
}

} // namespace
