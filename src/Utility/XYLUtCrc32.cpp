// SPDX-License-Identifier: Apache-2.0
// CRC-32 of the reflected polynomial 0xEDB88320. Short buffers run through the
// byte table; longer ones through libdeflate, which folds with carry-less
// multiplication where the processor has it.
#include <XYLCore/Utility/XYLUtCrc32.h>

#include <cstdint>
#include <libdeflate.h>

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

// Below this length the call into libdeflate costs more than the table loop.
constexpr unsigned int kTableLimit = 16;

} // namespace

const unsigned long *XYLUtCrc32::getCrcTable() { return kCrcTable.entry; }

unsigned long XYLUtCrc32::crc32(unsigned long crc, const unsigned char *buf, unsigned int len) {
  if (buf == nullptr)
    return 0;
  // Only the low 32 bits take part, as with zlib on LP64.
  std::uint32_t c = static_cast<std::uint32_t>(crc);
  if (len >= kTableLimit)
    return libdeflate_crc32(c, buf, len);
  const unsigned long *table = getCrcTable();
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
