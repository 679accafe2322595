// SPDX-License-Identifier: Apache-2.0
// CRC-32 of the reflected polynomial 0xEDB88320. Short buffers run through the
// byte table; longer ones through ISA-L, which folds with carry-less
// multiplication (the widest the processor has, chosen once at run time).
#include <XYLCore/Utility/XYLUtCrc32.h>

#include <cstdint>
#include <isa-l/crc.h>

namespace {

struct CrcTable {
  unsigned long entry[256];
};

constexpr CrcTable makeCrcTable() {
  CrcTable table{};
  for (unsigned long n = 0; n < 256; ++n) {
    unsigned long c = n;
    for (int k = 0; k < 8; ++k)
      c = (c & 1) ? 0xEDB88320UL ^ (c >> 1) : c >> 1;
    table.entry[n] = c;
  }
  return table;
}

constexpr CrcTable kCrcTable = makeCrcTable();
static_assert(kCrcTable.entry[1] == 0x77073096UL, "CRC-32 table entry 1");

// Below this length the call into ISA-L costs more than the table loop.
constexpr unsigned int kTableLimit = 16;

} // namespace

const unsigned long *XYLUtCrc32::getCrcTable() { return kCrcTable.entry; }

namespace {

// The byte-table loop for short buffers; out of line so that the long path
// of crc32 saves no registers and ends in a jump into ISA-L.
[[gnu::noinline]] unsigned long tableCrc32(std::uint32_t c, const unsigned char *buf, unsigned int len) {
  const unsigned long *table = kCrcTable.entry;
  c = ~c;
  while (len >= 8) {
    for (int k = 0; k < 8; ++k)
      c = (c >> 8) ^ static_cast<std::uint32_t>(table[(c ^ buf[k]) & 0xFF]);
    buf += 8;
    len -= 8;
  }
  while (len-- != 0)
    c = (c >> 8) ^ static_cast<std::uint32_t>(table[(c ^ *buf++) & 0xFF]);
  return ~c;
}

} // namespace

unsigned long XYLUtCrc32::crc32(unsigned long crc, const unsigned char *buf, unsigned int len) {
  if (buf == nullptr)
    return 0;
  // Only the low 32 bits take part, as with zlib on LP64. ISA-L's reflected
  // CRC takes and returns the same complemented register as zlib's crc32.
  const std::uint32_t c = static_cast<std::uint32_t>(crc);
  if (len >= kTableLimit)
    return crc32_gzip_refl(c, buf, len);
  return tableCrc32(c, buf, len);
}
