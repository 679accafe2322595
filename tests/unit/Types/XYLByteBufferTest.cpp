// SPDX-License-Identifier: Apache-2.0
#include <XYLCore/ExceptionHierarchy/XYLErrors.h>
#include <XYLCore/Types/XYLByteBuffer.h>

#include "XYLFaultInjection.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <string>

namespace {

// Opens the protected state for inspection.
class InspectableBuffer : public XYLByteBuffer {
public:
  explicit InspectableBuffer(unsigned initialSize = 0, unsigned blockSize = 8)
      : XYLByteBuffer(initialSize, blockSize) {}
  unsigned capacity() const { return m_iAllocLimit; }
  unsigned blockSize() const { return m_iBlockSize; }
  unsigned roundUp(unsigned n) { return roundUpToBlockSizeMultiple(n); }
  void setBlockSize(unsigned size) { m_iBlockSize = size; }
};

std::string contentOf(const XYLByteBuffer &buffer) { return std::string(buffer.str(), buffer.pcount()); }

// The content, checking the zero byte that must follow it.
std::string terminatedContent(const XYLByteBuffer &buffer) {
  EXPECT_EQ(buffer.str()[buffer.pcount()], '\0');
  return contentOf(buffer);
}

std::string assertionText(const std::function<void()> &operation) {
  try {
    operation();
  } catch (XYLAssertError &e) {
    return e.getMessage() != nullptr ? e.getMessage() : "";
  } catch (...) {
    return "<other exception>";
  }
  return "<no exception>";
}

TEST(XYLByteBufferTest, CapacityIsRoundedToWholeBlocks) {
  struct Case {
    unsigned initial, block, capacity, blockAfter;
  } cases[] = {{0, 0, 7, 8}, {7, 0, 7, 8},          {8, 0, 15, 8},  {16, 8, 23, 8},
               {0, 1, 0, 1}, {0, 1024, 1023, 1024}, {9, 10, 9, 10}, {10, 10, 19, 10}};
  for (const Case &c : cases) {
    SCOPED_TRACE(testing::Message() << c.initial << "/" << c.block);
    InspectableBuffer buffer(c.initial, c.block);
    EXPECT_EQ(buffer.capacity(), c.capacity);
    EXPECT_EQ(buffer.blockSize(), c.blockAfter);
    EXPECT_EQ(terminatedContent(buffer), "");
    // The whole capacity and the terminator fit (the sanitizer build catches
    // an allocation one byte short).
    buffer.setLength(buffer.capacity());
    EXPECT_EQ(buffer.pcount(), c.capacity);
    terminatedContent(buffer);
  }
  for (unsigned block : {1u, 3u, 8u, 100u}) {
    InspectableBuffer buffer(0, block);
    for (unsigned n = 0; n < 3 * block + 2; ++n) {
      unsigned capacity = buffer.roundUp(n);
      ASSERT_TRUE(capacity >= n && capacity - n < block && (capacity + 1) % block == 0) << block << " " << n;
    }
  }
  InspectableBuffer zero;
  zero.setBlockSize(0);
  EXPECT_EQ(assertionText([&] { zero.roundUp(5); }),
            "XYL_ASSERT_NAMED(( 0 != m_iBlockSize ), \"[XYLByteBuffer::roundUpToBlockSizeMultiple] The allocation "
            "block size cannot be zero.\");");
}

// setLength, chop and the trims on contents with zero bytes and high bytes.
TEST(XYLByteBufferTest, LengthChopAndTrimEditTheContent) {
  using S = std::string;
  struct Case {
    S content;
    char op; // L setLength, C chop, F trimFront, B trimBack, T trim
    unsigned n;
    S after;
  } cases[] = {{"abcdef", 'L', 3, "abc"},
               {"abcdef", 'L', 8, "abcdef"},
               {"abcdef", 'L', 7, S("abcdef\0", 7)},
               {"abcdef", 'C', 0, "abcdef"},
               {"abcdef", 'C', 2, "cdef"},
               {"abcdef", 'C', 6, ""},
               {"abcdef", 'C', 7, ""},
               {S("a\0b\0c", 5), 'C', 2, S("b\0c", 3)},
               {"  a", 'F', 0, "a"},
               {"   ", 'F', 0, ""},
               {S(" \0 a", 4), 'F', 0, S("\0 a", 3)},
               {"", 'F', 0, ""},
               {"\t\n\v\f\r x", 'F', 0, "x"},
               {"\xA0x", 'F', 0, "\xA0x"},
               {"   ", 'B', 0, ""},
               {" ", 'B', 0, ""},
               {" a", 'B', 0, " a"},
               {S("a \0 ", 4), 'B', 0, S("a \0", 3)},
               {S("\0 ", 2), 'B', 0, S("\0", 1)},
               {"x\xA0", 'B', 0, "x\xA0"},
               {"  a b  ", 'T', 0, "a b"},
               {S(" \0 ", 3), 'T', 0, S("\0", 1)}};
  for (const Case &c : cases) {
    SCOPED_TRACE(testing::Message() << c.op << c.n << " on '" << c.content << "'");
    XYLByteBuffer buffer(0, 8);
    buffer.appendChars(c.content.data(), static_cast<unsigned>(c.content.size()));
    unsigned result = c.op == 'L'   ? (buffer.setLength(c.n), buffer.pcount())
                      : c.op == 'C' ? buffer.chop(c.n)
                      : c.op == 'F' ? buffer.trimFront()
                      : c.op == 'B' ? buffer.trimBack()
                                    : buffer.trim();
    EXPECT_EQ(terminatedContent(buffer), c.after);
    EXPECT_EQ(result, c.after.size());
  }
}

TEST(XYLByteBufferTest, AppendsGrowBlockByBlockAndKeepEveryByte) {
  InspectableBuffer buffer(0, 8);
  buffer.appendChars(nullptr, 0); // n = 0 does not read p
  buffer << "ab" << static_cast<const char *>(nullptr) << "" << 'c' << '\0';
  std::string expected("ab(null)c\0", 10);
  EXPECT_EQ(buffer.capacity(), 15u);
  for (int i = 0; i < 1000; ++i) {
    std::string piece(static_cast<size_t>(i % 17), static_cast<char>(i));
    buffer.appendChars(piece.data(), static_cast<unsigned>(piece.size()));
    expected += piece;
  }
  EXPECT_EQ(terminatedContent(buffer), expected);
  EXPECT_EQ(buffer.capacity(), buffer.roundUp(static_cast<unsigned>(expected.size())));
}

std::string cText(const char *format, long long value) {
  char text[40];
  std::snprintf(text, sizeof text, format, value);
  return text;
}

// Every digit boundary and a spread of values, against the C library's
// 32-bit texts; wider longs are written in full.
TEST(XYLByteBufferTest, IntegersMatchTheCLibraryInBothRadixes) {
  std::uint32_t seed = 12345;
  for (int i = 0; i < 3000; ++i) {
    seed = seed * 1103515245u + 12345u;
    long long p = 1;
    for (int k = i % 10; k > 0; --k)
      p *= 10;
    int value = i < 60 ? static_cast<int>(p + (i / 10) % 3 - 1) * (i < 30 ? 1 : -1) : static_cast<int>(seed);
    if (i == 60 || i == 61)
      value = i == 60 ? INT_MIN : INT_MAX;
    XYLByteBuffer buffer(0, 8);
    buffer << value << ' ' << static_cast<long>(value) << ' ' << static_cast<unsigned>(value) << ' '
           << static_cast<unsigned long>(static_cast<unsigned>(value));
    std::string d = cText("%lld", value), u = cText("%llu", static_cast<unsigned>(value));
    ASSERT_EQ(contentOf(buffer), d + ' ' + d + ' ' + u + ' ' + u) << value;
    buffer.reset();
    EXPECT_EQ(buffer.setHexRadix(1), XYLByteBuffer::Decimal);
    buffer << value << ' ' << static_cast<long>(value) << ' ' << static_cast<unsigned>(value) << ' '
           << static_cast<unsigned long>(static_cast<unsigned>(value));
    std::string x = cText("%llx", static_cast<unsigned>(value));
    ASSERT_EQ(contentOf(buffer), x + ' ' + x + ' ' + x + ' ' + x) << value;
    EXPECT_EQ(buffer.setHexRadix(0), XYLByteBuffer::Hexadecimal);
  }
  struct Case {
    long value;
    const char *decimal, *hex;
  } wide[] = {{-1L, "-1", "ffffffff"},
              {INT32_MAX + 1L, "2147483648", "80000000"},
              {-5000000000L, "-5000000000", "fffffffed5fa0e00"},
              {LONG_MIN, "-9223372036854775808", "8000000000000000"}};
  for (const Case &c : wide) {
    XYLByteBuffer buffer(0, 8);
    buffer << c.value << ' ' << static_cast<unsigned long>(c.value);
    EXPECT_EQ(contentOf(buffer), std::string(c.decimal) + ' ' + std::to_string(static_cast<unsigned long>(c.value)));
    buffer.reset();
    buffer.setHexRadix(1);
    buffer << c.value;
    EXPECT_EQ(contentOf(buffer), c.hex);
  }
}

TEST(XYLByteBufferTest, AppendingItsOwnContentIsSafe) {
  InspectableBuffer buffer(0, 8);
  buffer << "abcdefg"; // exactly full: the next append moves the block
  buffer << buffer << buffer;
  EXPECT_EQ(contentOf(buffer), "abcdefgabcdefgabcdefgabcdefg");
  buffer.reset();
  buffer << "0123456789abcd"; // one byte left
  buffer.appendChars(buffer.str() + 2, 5);
  buffer << (buffer.str() + 10);
  EXPECT_EQ(terminatedContent(buffer), "0123456789abcd23456abcd23456");
}

// The trial grows by one block per round, and output of exactly the trial
// size fits without another round: both show in the capacity reached.
TEST(XYLByteBufferTest, PrintfGrowsOneBlockPerRoundUntilTheOutputFits) {
  struct Case {
    unsigned printfSize, block, outputLength, capacity;
  } cases[] = {{16, 8, 5, 23}, {16, 8, 16, 23}, {16, 8, 17, 31},    {16, 8, 25, 39},       {16, 8, 40, 47},
               {0, 8, 0, 7},   {0, 8, 9, 23},   {100, 1, 130, 130}, {4096, 1, 6000, 6000}, {4096, 8, 20000, 20007}};
  for (const Case &c : cases) {
    SCOPED_TRACE(testing::Message() << c.printfSize << "/" << c.block << "/" << c.outputLength);
    InspectableBuffer buffer(0, c.block);
    EXPECT_EQ(buffer.setPrintfBufferSize(c.printfSize), 4096u);
    EXPECT_EQ(buffer.getPrintfBufferSize(), c.printfSize);
    std::string text(c.outputLength, 'p');
    if (!text.empty())
      text[c.outputLength / 2] = 'M';
    EXPECT_EQ(buffer.printf("%s", text.c_str()), static_cast<int>(c.outputLength));
    EXPECT_EQ(terminatedContent(buffer), text);
    EXPECT_EQ(buffer.capacity(), c.capacity);
  }
  XYLByteBuffer buffer(0, 8);
  buffer.appendChars("x\0y", 3);
  EXPECT_EQ(buffer.printf("%d-%s", 42, "abc"), 6);
  // An unconvertible wide character in the "C" locale adds nothing.
  EXPECT_EQ(buffer.printf("%ls", L"\u00e9\u4e2d"), -1);
  EXPECT_EQ(terminatedContent(buffer), std::string("x\0y42-abc", 9));
}

TEST(XYLByteBufferTest, CopiesCarryContentAndSettings) {
  InspectableBuffer source(100, 16);
  source.appendChars("a\0b", 3);
  source.setHexRadix(1);
  source.setPrintfBufferSize(77);
  InspectableBuffer copy(source);
  copy << 255;
  EXPECT_EQ(contentOf(copy), std::string("a\0bff", 5));
  EXPECT_EQ(copy.capacity(), source.capacity());
  EXPECT_EQ(copy.getPrintfBufferSize(), 77u);
  EXPECT_EQ(source.pcount(), 3u);
  // Assignment takes the source's capacity, smaller or larger.
  InspectableBuffer small(0, 8), target(5000, 1024);
  small << "xyz";
  target << "old content";
  target = small;
  EXPECT_EQ(target.capacity(), 7u);
  EXPECT_EQ(target.blockSize(), 8u);
  EXPECT_EQ(terminatedContent(target), "xyz");
  target = source;
  target << 10;
  EXPECT_EQ(contentOf(target), std::string("a\0ba", 4));
  InspectableBuffer &self = target;
  target = self;
  EXPECT_EQ(contentOf(target), std::string("a\0ba", 4));
}

TEST(XYLByteBufferTest, RaisesCarryTheSourceFileName) {
  try {
    xyltest::AllocationFailure failure(1);
    XYLByteBuffer buffer(0, 8);
    FAIL() << "no exception";
  } catch (XYLOutOfMemoryError &e) {
    XYLList<char *> &trace = const_cast<XYLList<char *> &>(e.getBackTrace()); // no const access
    ASSERT_EQ(trace.size(), 1u);
    EXPECT_EQ(std::string(trace.front()).rfind("Types/XYLByteBuffer(", 0), 0u) << trace.front();
  }
  InspectableBuffer source;
  xyltest::AllocationFailure failure(1);
  EXPECT_THROW(InspectableBuffer copy(source), XYLOutOfMemoryError);
}

// After a failed growth the block is gone for good: every operation that
// touches it reports the null buffer with its own message.
TEST(XYLByteBufferTest, LostBlockFailsEveryLaterOperation) {
  InspectableBuffer buffer(0, 8);
  buffer << "abcdef";
  {
    xyltest::AllocationFailure failure(1);
    EXPECT_THROW(buffer << "0123456789", XYLOutOfMemoryError);
  }
  EXPECT_EQ(buffer.str(), nullptr);
  EXPECT_EQ(buffer.capacity(), 23u); // updated before the failure
  EXPECT_EQ(buffer.pcount(), 6u);
  buffer.reserve(500); // does not bring a block back
  EXPECT_EQ(buffer.str(), nullptr);
  struct Case {
    const char *op;
    std::function<void()> run;
  } cases[] = {
      {"trimBack", [&] { buffer.trimBack(); }},       {"chop", [&] { buffer.chop(1); }},
      {"trimFront", [&] { buffer.trim(); }},          {"appendChars", [&] { buffer << 12L; }},
      {"operator<<(char c)", [&] { buffer << 'c'; }}, {"printf", [&] { buffer.printf("%d", 1); }},
      {"setLength", [&] { buffer.setLength(4); }},    {"reset", [&] { buffer.reset(); }},
  };
  for (const Case &c : cases)
    EXPECT_EQ(assertionText(c.run), std::string("XYL_ASSERT_NAMED(( NULL != m_pBuffer ), \"[XYLByteBuffer::") + c.op +
                                        "] The internal buffer is NULL.\");");
  // setLength and reset change the count before they check.
  EXPECT_EQ(buffer.pcount(), 0u);
  InspectableBuffer copy(buffer); // empty but usable
  copy << "ok";
  buffer = copy; // assignment from a healthy buffer gives a block again
  EXPECT_EQ(terminatedContent(buffer), "ok");
  InspectableBuffer bigger(100, 8);
  {
    xyltest::AllocationFailure failure(1);
    EXPECT_THROW(buffer = bigger, XYLOutOfMemoryError);
  }
  EXPECT_EQ(buffer.str(), nullptr);
  EXPECT_EQ(buffer.capacity(), 103u);
}

// Fail the Nth allocation for N = 1, 2, ... until a mixed workload runs
// through: each run either completes or reports XYLOutOfMemoryError (the
// sanitizer build also checks that nothing leaks).
TEST(XYLByteBufferTest, EveryAllocationFailureIsReported) {
  std::string big(6000, 'b');
  bool completed = false;
  for (long n = 1; n < 1000 && !completed; ++n) {
    xyltest::AllocationFailure failure(n);
    try {
      XYLByteBuffer buffer(0, 512);
      buffer << big.c_str();
      buffer.printf("%s%s", big.c_str(), big.c_str());
      XYLByteBuffer copy(buffer), other(0, 8);
      other = copy;
      other << other;
      ASSERT_EQ(other.pcount(), 36000u);
      completed = true;
    } catch (XYLOutOfMemoryError &) {
    }
  }
  EXPECT_TRUE(completed);
}

} // namespace
