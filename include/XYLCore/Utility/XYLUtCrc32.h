/* SPDX-License-Identifier: Apache-2.0
 * XYLUtCrc32.h - CRC-32 (reflected polynomial 0xEDB88320), compatible with
 * zlib's crc32.
 *
 * crc32(crc, buf, len) continues the checksum crc over len bytes:
 * crc32(0, "123456789", 9) is 0xcbf43926, and splitting a buffer anywhere and
 * chaining the calls gives the same result as one call. A null buffer returns
 * 0 whatever crc is; a zero length returns crc.
 *
 * Width: unsigned long is 64 bits on Linux. Only the low 32 bits of crc are
 * used and the result is always below 2^32, as zlib does.
 * Thread safety: reentrant; the table is a constant.
 * Failure: none; nothing is thrown.
 */
#ifndef XYLCORE_UTILITY_XYLUTCRC32_H
#define XYLCORE_UTILITY_XYLUTCRC32_H

#include <XYLCore/XYLExport.h>

class XYL_API XYLUtCrc32 {
public:
  static unsigned long crc32(unsigned long crc, const unsigned char *buf, unsigned int len);

private:
  XYLUtCrc32() = delete;
  // The 256-entry table of the reflected polynomial (entry 1 is 0x77073096).
  static const unsigned long *getCrcTable();
};

#endif // XYLCORE_UTILITY_XYLUTCRC32_H
