// SPDX-License-Identifier: Apache-2.0
// Construction from UTF-8 bytes across the lengths at which the ASCII
// check-and-copy changes its stride (8, 16, 64 and 256 bytes), with the first
// non-ASCII character at the edges of those strides, plainly and through a
// caller allocator whose blocks must all come back.
#include <XYLCore/i18n/cpp/i18n_string.h>

#include <gtest/gtest.h>

#include <string>

namespace {

struct Counts {
  int allocations = 0;
  int frees = 0;
};

char *countingAllocator(void *context, char *buffer, int newSize, int *error) {
  Counts *counts = static_cast<Counts *>(context);
  if (newSize == 0 && buffer != nullptr)
    ++counts->frees;
  else if (newSize > 0 && buffer == nullptr)
    ++counts->allocations;
  return I18NDefaultStringBufferAllocator(nullptr, buffer, newSize, error);
}

std::u16string unitsOf(const I18NString &text) {
  I18NString copy(text);
  const unsigned short *units = copy.getUTF16Buffer();
  return std::u16string(reinterpret_cast<const char16_t *>(units), static_cast<size_t>(copy.unitLength()));
}

} // namespace

TEST(I18NStringAsciiPathTest, EveryStrideEdgeKeepsTheTextAndChoosesTheMode) {
  const int lengths[] = {1, 7, 8, 9, 15, 16, 17, 22, 23, 24, 63, 64, 65, 127, 128, 129, 255, 256, 257, 383, 384, 1000};
  for (int length : lengths) {
    // -1: pure ASCII; otherwise "é" (two UTF-8 bytes) replaces the ASCII
    // characters at that offset.
    const int positions[] = {-1, 0, 1, length / 2, length - 2, length - 17, length - 65, length - 129};
    for (int at : positions) {
      if (at >= 0 && at + 2 > length)
        continue;
      if (at < -1)
        continue;
      std::string bytes;
      std::u16string expected;
      for (int i = 0; i < length; ++i) {
        if (i == at) {
          bytes += "\xC3\xA9";
          expected += u'\u00e9';
          ++i;
          continue;
        }
        char c = static_cast<char>('!' + (i * 7) % 90);
        bytes += c;
        expected += static_cast<char16_t>(c);
      }
      for (int asLength : {static_cast<int>(bytes.size()), -1}) {
        SCOPED_TRACE("length " + std::to_string(length) + ", non-ASCII at " + std::to_string(at) +
                     (asLength == -1 ? ", NUL-terminated" : ""));
        I18NString plain(bytes.c_str(), "UTF-8", asLength);
        EXPECT_EQ(at >= 0, plain.isUnicodeMode());
        EXPECT_EQ(expected, unitsOf(plain));
        EXPECT_EQ(static_cast<int>(expected.size()), plain.length());
        Counts counts;
        {
          I18NString owned(bytes.c_str(), "UTF-8", asLength, countingAllocator, &counts);
          EXPECT_EQ(at >= 0, owned.isUnicodeMode());
          EXPECT_EQ(expected, unitsOf(owned));
        }
        EXPECT_EQ(counts.allocations, counts.frees);
      }
    }
  }
}
