/* SPDX-License-Identifier: Apache-2.0
 * XYLUtConvert.h - allocation-free integer-to-text writers.
 *
 * Each writer appends at buffer[position] and advances position; it writes
 * no terminator and does not check the room, which the caller provides (at
 * most 21 characters for longCvt/ulongCvt, 16 plus the prefix for hexCvt).
 * The std::string forms append to the string instead.
 *
 * Width counts digits only (never the sign or prefix); below 2 it is 1, and
 * it is capped at 10 for decimal and 8 for hexadecimal. Shorter numbers are
 * padded with the fill character. With a white-space fill (blank or 0x09 to
 * 0x0D) the sign goes next to the digits ("  -42"); with any other fill it
 * goes before the padding ("-0042"). Zero with showSign set gets a blank, not
 * the plus character. Values wider than 32 bits are written in full.
 *
 * Thread safety: all functions are re-entrant. Nothing throws except the
 * string forms, which may throw std::bad_alloc from the string.
 */
#ifndef XYLCORE_UTILITY_XYLUTCONVERT_H
#define XYLCORE_UTILITY_XYLUTCONVERT_H

#include <XYLCore/XYLExport.h>
#include <string>

class XYL_API XYLUtConvert {
public:
  // Signed decimal: minusChar before a negative value, plusChar before a
  // positive one when showSign is non-zero.
  static void longCvt(char *buffer, unsigned long &position, long value, unsigned width, char fill, int showSign,
                      char plusChar, char minusChar);
  // Unsigned decimal; plusChar when showSign is non-zero.
  static void ulongCvt(char *buffer, unsigned long &position, unsigned long value, unsigned width, char fill,
                       int showSign, char plusChar);
  // Upper-case hexadecimal; `prefix` (may be null) stands where a sign would.
  static void hexCvt(char *buffer, unsigned long &position, unsigned long value, unsigned width, char fill,
                     const char *prefix);

  static void longCvt(std::string &text, long value, unsigned width, char fill, int showSign, char plusChar,
                      char minusChar);
  static void ulongCvt(std::string &text, unsigned long value, unsigned width, char fill, int showSign, char plusChar);
  static void hexCvt(std::string &text, unsigned long value, unsigned width, char fill, const char *prefix);

  // "0x".
  static const char *getHexPrefix() { return m_hexPrefix; }

  // 1, 10, ... 1000000000: a magnitude has as many decimal digits as there
  // are entries not greater than it (counting goes on past the table for
  // wider values).
  static const unsigned long m_offsetTabLongs[10];
  // 1, 0x10, ... 0x10000000: the same for hexadecimal digits.
  static const unsigned long m_offsetHexTabLongs[8];
  static const char m_hexPrefix[3];
};

#endif // XYLCORE_UTILITY_XYLUTCONVERT_H
