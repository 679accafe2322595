// SPDX-License-Identifier: Apache-2.0
#include <XYLCore/ExceptionHierarchy/XYLErrors.h>
#include <XYLCore/Types/XYLByteBuffer.h>
#include <XYLCore/Utility/XYLUtMemory.h>

#include <cctype>
#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>

namespace {

const char kDigitPairs[] = "00010203040506070809"
                           "10111213141516171819"
                           "20212223242526272829"
                           "30313233343536373839"
                           "40414243444546474849"
                           "50515253545556575859"
                           "60616263646566676869"
                           "70717273747576777879"
                           "80818283848586878889"
                           "90919293949596979899";

const char kHexDigits[] = "0123456789abcdef";

// Big enough for any 64-bit value in decimal with its sign.
const unsigned kScratchSize = 24;

// Writes value in decimal so that it ends just before `end`; returns where it
// starts. Two digits per division keeps it well ahead of snprintf.
template <class Unsigned> char *writeDecimal(char *end, Unsigned value) {
  while (value >= 100) {
    unsigned pair = static_cast<unsigned>(value % 100) * 2;
    value /= 100;
    end -= 2;
    std::memcpy(end, kDigitPairs + pair, 2);
  }
  if (value >= 10) {
    end -= 2;
    std::memcpy(end, kDigitPairs + static_cast<unsigned>(value) * 2, 2);
  } else {
    *--end = static_cast<char>('0' + static_cast<unsigned>(value));
  }
  return end;
}

template <class Unsigned> char *writeHex(char *end, Unsigned value) {
  do {
    *--end = kHexDigits[static_cast<unsigned>(value & 15)];
    value >>= 4;
  } while (value != 0);
  return end;
}

template <class Signed, class Unsigned> char *writeSignedDecimal(char *end, Signed value) {
  if (value >= 0)
    return writeDecimal(end, static_cast<Unsigned>(value));
  // 0 - u is the magnitude even for the most negative value.
  char *start = writeDecimal(end, static_cast<Unsigned>(0U - static_cast<Unsigned>(value)));
  *--start = '-';
  return start;
}

// The room left before a count of `count` bytes would pass the 32-bit limit.
inline bool fitsCount(unsigned count, unsigned n) { return n <= 0xFFFFFFFFu - count; }

} // namespace

// clang-format off
XYLByteBuffer::XYLByteBuffer(unsigned initialSize, unsigned blockSize)
    : m_pBuffer(nullptr), m_iCount(0), m_iAllocLimit(0), m_iBlockSize(blockSize == 0 ? 8 : blockSize),
      m_iPrintfBufferSize(4096), m_radix(Decimal) {
  m_iAllocLimit = roundUpToBlockSizeMultiple(initialSize);
  m_pBuffer = static_cast<char *>(XYLUtMemory::malloc(static_cast<std::size_t>(m_iAllocLimit) + 1));
  if (m_pBuffer == nullptr)
    XYL_THROW(XYLOutOfMemoryError(0L, nullptr));
  m_pBuffer[0] = 0;
}

XYLByteBuffer::XYLByteBuffer(const XYLByteBuffer &other)
    : m_pBuffer(nullptr), m_iCount(0), m_iAllocLimit(0), m_iBlockSize(8), m_iPrintfBufferSize(4096),
      m_radix(Decimal) {
  copyValuesFrom(other);
  XYL_ASSERT_NAMED(( m_iCount <= m_iAllocLimit ), "[XYLByteBuffer copy constructor] Invalid buffer allocation limit.");
  m_pBuffer = static_cast<char *>(XYLUtMemory::malloc(static_cast<std::size_t>(m_iAllocLimit) + 1));
  if (m_pBuffer == nullptr)
    XYL_THROW(XYLOutOfMemoryError(0L, nullptr));
  if (m_iCount != 0)
    std::memcpy(m_pBuffer, other.m_pBuffer, m_iCount);
  m_pBuffer[m_iCount] = 0;
}

XYLByteBuffer &XYLByteBuffer::operator=(const XYLByteBuffer &other) {
  if (this == &other)
    return *this;
  copyValuesFrom(other);
  XYL_ASSERT_NAMED(( m_iCount <= m_iAllocLimit ), "[XYLByteBuffer assignment operator] Invalid buffer allocation limit.");
  char *block = static_cast<char *>(XYLUtMemory::realloc(m_pBuffer, static_cast<std::size_t>(m_iAllocLimit) + 1));
  if (block == nullptr) {
    // The old block is released, not kept: the object now reports a null
    // buffer on every use until it is assigned again.
    XYLUtMemory::free(m_pBuffer);
    m_pBuffer = nullptr;
    XYL_THROW(XYLOutOfMemoryError(0L, nullptr));
  }
  m_pBuffer = block;
  if (m_iCount != 0)
    std::memcpy(m_pBuffer, other.m_pBuffer, m_iCount);
  m_pBuffer[m_iCount] = 0;
  return *this;
}
// clang-format on

XYLByteBuffer::~XYLByteBuffer() { XYLUtMemory::free(m_pBuffer); }

void XYLByteBuffer::copyValuesFrom(const XYLByteBuffer &other) {
  // A source that lost its block has nothing to copy.
  m_iCount = other.m_pBuffer != nullptr ? other.m_iCount : 0;
  m_iAllocLimit = other.m_iAllocLimit;
  m_iBlockSize = other.m_iBlockSize;
  m_iPrintfBufferSize = other.m_iPrintfBufferSize;
  m_radix = other.m_radix;
}

// clang-format off
unsigned XYLByteBuffer::roundUpToBlockSizeMultiple(unsigned n) {
  XYL_ASSERT_NAMED(( 0 != m_iBlockSize ), "[XYLByteBuffer::roundUpToBlockSizeMultiple] The allocation block size cannot be zero.");
  return ((m_iBlockSize + n) / m_iBlockSize) * m_iBlockSize - 1;
}
// clang-format on

void XYLByteBuffer::reserve(unsigned n) {
  if (m_iAllocLimit >= n || m_pBuffer == nullptr)
    return;
  m_iAllocLimit = roundUpToBlockSizeMultiple(n);
  char *block = static_cast<char *>(XYLUtMemory::realloc(m_pBuffer, static_cast<std::size_t>(m_iAllocLimit) + 1));
  if (block == nullptr) {
    XYLUtMemory::free(m_pBuffer);
    m_pBuffer = nullptr;
    XYL_THROW(XYLOutOfMemoryError(0L, nullptr));
  }
  m_pBuffer = block;
}

// clang-format off
void XYLByteBuffer::setLength(unsigned n) {
  if (n <= m_iAllocLimit)
    m_iCount = n;
  XYL_ASSERT_NAMED(( NULL != m_pBuffer ), "[XYLByteBuffer::setLength] The internal buffer is NULL.");
  m_pBuffer[m_iCount] = 0;
}

void XYLByteBuffer::reset() {
  m_iCount = 0;
  XYL_ASSERT_NAMED(( NULL != m_pBuffer ), "[XYLByteBuffer::reset] The internal buffer is NULL.");
  m_pBuffer[0] = 0;
}

unsigned XYLByteBuffer::chop(unsigned n) {
  if (n == 0)
    return m_iCount;
  XYL_ASSERT_NAMED(( NULL != m_pBuffer ), "[XYLByteBuffer::chop] The internal buffer is NULL.");
  if (n > m_iCount) {
    reset();
    return 0;
  }
  std::memmove(m_pBuffer, m_pBuffer + n, m_iCount - n);
  m_iCount -= n;
  m_pBuffer[m_iCount] = 0;
  return m_iCount;
}

unsigned XYLByteBuffer::trimFront() {
  XYL_ASSERT_NAMED(( NULL != m_pBuffer ), "[XYLByteBuffer::trimFront] The internal buffer is NULL.");
  if (m_iCount == 0)
    return 0;
  unsigned found = 0;
  while (found < m_iCount && m_pBuffer[found] != 0 && std::isspace(static_cast<unsigned char>(m_pBuffer[found])))
    ++found;
  if (found == m_iCount) {
    reset();
    return 0;
  }
  if (found != 0)
    chop(found);
  return m_iCount;
}

unsigned XYLByteBuffer::trimBack() {
  XYL_ASSERT_NAMED(( NULL != m_pBuffer ), "[XYLByteBuffer::trimBack] The internal buffer is NULL.");
  if (m_iCount == 0)
    return 0;
  unsigned found = 0;
  unsigned i = m_iCount - 1;
  while (i > 0 && std::isspace(static_cast<unsigned char>(m_pBuffer[i]))) {
    ++found;
    --i;
  }
  if (i == 0 && std::isspace(static_cast<unsigned char>(m_pBuffer[0])))
    ++found;
  if (found != 0)
    setLength(m_iCount - found);
  return m_iCount;
}
// clang-format on

unsigned XYLByteBuffer::trim() {
  trimFront();
  return trimBack();
}

// clang-format off
void XYLByteBuffer::appendChars(const char *p, unsigned n) {
  if (n == 0)
    return;
  XYL_ASSERT_NAMED(( NULL != m_pBuffer ), "[XYLByteBuffer::appendChars] The internal buffer is NULL.");
  if (n > m_iAllocLimit - m_iCount) {
    if (!fitsCount(m_iCount, n))
      XYL_THROW(XYLOutOfMemoryError(0L, nullptr));
    // A source inside this block moves with it.
    std::uintptr_t source = reinterpret_cast<std::uintptr_t>(p);
    std::uintptr_t base = reinterpret_cast<std::uintptr_t>(m_pBuffer);
    bool inside = source >= base && source <= base + m_iAllocLimit;
    reserve(m_iCount + n);
    if (inside)
      p = m_pBuffer + (source - base);
  }
  std::memcpy(m_pBuffer + m_iCount, p, n);
  m_iCount += n;
  m_pBuffer[m_iCount] = 0;
}

XYLByteBuffer &XYLByteBuffer::operator<<(char c) {
  XYL_ASSERT_NAMED(( NULL != m_pBuffer ), "[XYLByteBuffer::operator<<(char c)] The internal buffer is NULL.");
  if (m_iCount == m_iAllocLimit) {
    if (!fitsCount(m_iCount, 1))
      XYL_THROW(XYLOutOfMemoryError(0L, nullptr));
    reserve(m_iCount + 1);
  }
  m_pBuffer[m_iCount++] = c;
  m_pBuffer[m_iCount] = 0;
  return *this;
}
// clang-format on

// Digits come from scratch space on the stack, never from this block, so the
// append needs no alias check; the null check is appendChars'.
void XYLByteBuffer::appendDigits(const char *digits, unsigned n) {
  if (m_pBuffer == nullptr || n > m_iAllocLimit - m_iCount) {
    appendChars(digits, n);
    return;
  }
  std::memcpy(m_pBuffer + m_iCount, digits, n);
  m_iCount += n;
  m_pBuffer[m_iCount] = 0;
}

XYLByteBuffer &XYLByteBuffer::operator<<(const char *s) {
  if (s == nullptr)
    s = "(null)";
  appendChars(s, static_cast<unsigned>(std::strlen(s)));
  return *this;
}

XYLByteBuffer &XYLByteBuffer::operator<<(int value) {
  char scratch[kScratchSize];
  char *end = scratch + kScratchSize;
  char *start = m_radix == Hexadecimal ? writeHex(end, static_cast<std::uint32_t>(value))
                                       : writeSignedDecimal<int, std::uint32_t>(end, value);
  appendDigits(start, static_cast<unsigned>(end - start));
  return *this;
}

XYLByteBuffer &XYLByteBuffer::operator<<(long value) {
  char scratch[kScratchSize];
  char *end = scratch + kScratchSize;
  char *start;
  if (m_radix == Hexadecimal) {
    // Every value a 32-bit long can hold keeps its 32-bit text (-1 is
    // "ffffffff"); wider values are written in full.
    if (value >= INT32_MIN && value <= INT32_MAX)
      start = writeHex(end, static_cast<std::uint32_t>(value));
    else
      start = writeHex(end, static_cast<unsigned long>(value));
  } else if (value >= INT32_MIN && value <= INT32_MAX) {
    start = writeSignedDecimal<std::int32_t, std::uint32_t>(end, static_cast<std::int32_t>(value));
  } else {
    start = writeSignedDecimal<long, unsigned long>(end, value);
  }
  appendDigits(start, static_cast<unsigned>(end - start));
  return *this;
}

XYLByteBuffer &XYLByteBuffer::operator<<(unsigned int value) {
  char scratch[kScratchSize];
  char *end = scratch + kScratchSize;
  char *start = m_radix == Hexadecimal ? writeHex(end, value) : writeDecimal(end, value);
  appendDigits(start, static_cast<unsigned>(end - start));
  return *this;
}

XYLByteBuffer &XYLByteBuffer::operator<<(unsigned long value) {
  char scratch[kScratchSize];
  char *end = scratch + kScratchSize;
  char *start;
  if (value <= UINT32_MAX)
    start = m_radix == Hexadecimal ? writeHex(end, static_cast<std::uint32_t>(value))
                                   : writeDecimal(end, static_cast<std::uint32_t>(value));
  else
    start = m_radix == Hexadecimal ? writeHex(end, value) : writeDecimal(end, value);
  appendDigits(start, static_cast<unsigned>(end - start));
  return *this;
}

XYLByteBuffer &XYLByteBuffer::operator<<(const XYLByteBuffer &other) {
  // appendChars re-finds a source inside this block after growing, so
  // appending a buffer to itself is safe.
  appendChars(other.m_pBuffer, other.m_iCount);
  return *this;
}

// clang-format off
int XYLByteBuffer::printf(const char *format, ...) {
  XYL_ASSERT_NAMED(( NULL != m_pBuffer ), "[XYLByteBuffer::printf] The internal buffer is NULL.");
  va_list args;
  va_start(args, format);
  unsigned trial = m_iPrintfBufferSize;
  int written = -1;
  try {
    for (;;) {
      if (!fitsCount(m_iCount, trial))
        XYL_THROW(XYLOutOfMemoryError(0L, nullptr));
      reserve(m_iCount + trial);
      // The limit is trial characters plus the terminator, so the output
      // fits exactly when the formatter reports at most trial characters.
      va_list round;
      va_copy(round, args);
      written = std::vsnprintf(m_pBuffer + m_iCount, static_cast<std::size_t>(trial) + 1, format, round);
      va_end(round);
      if (written < 0 || static_cast<unsigned>(written) <= trial)
        break;
      trial += m_iBlockSize;
    }
  } catch (...) {
    va_end(args);
    throw;
  }
  va_end(args);
  if (written < 0) {
    // A formatting error (an unconvertible wide character): nothing is kept.
    m_pBuffer[m_iCount] = 0;
    return -1;
  }
  setLength(m_iCount + static_cast<unsigned>(written));
  return written;
}
// clang-format on

XYLByteBuffer::Radix XYLByteBuffer::setHexRadix(int flag) {
  Radix previous = m_radix;
  m_radix = flag != 0 ? Hexadecimal : Decimal;
  return previous;
}

unsigned XYLByteBuffer::setPrintfBufferSize(unsigned size) {
  unsigned previous = m_iPrintfBufferSize;
  m_iPrintfBufferSize = size;
  return previous;
}
