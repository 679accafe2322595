/* SPDX-License-Identifier: Apache-2.0 */
// XYLUtHex_internal.h - the value of one hexadecimal digit, for the library's
// own decoders (catalog escapes, URI percent escapes).
#ifndef XYLCORE_SRC_UTILITY_XYLUTHEX_INTERNAL_H
#define XYLCORE_SRC_UTILITY_XYLUTHEX_INTERNAL_H

namespace xyl_ut {

// 0..15 for 0-9, a-f, A-F; -1 for any other character.
inline int hexValue(char c) {
  if (c >= '0' && c <= '9')
    return c - '0';
  if (c >= 'a' && c <= 'f')
    return c - 'a' + 10;
  if (c >= 'A' && c <= 'F')
    return c - 'A' + 10;
  return -1;
}

} // namespace xyl_ut

#endif // XYLCORE_SRC_UTILITY_XYLUTHEX_INTERNAL_H
