// SPDX-License-Identifier: Apache-2.0
#include <XYLCore/Utility/XYLUtConvert.h>

#include "ExceptionHierarchy/XYLStdMemory_internal.h"

#include <cstring>

const unsigned long XYLUtConvert::m_offsetTabLongs[10] = {1UL,      10UL,      100UL,      1000UL,      10000UL,
                                                          100000UL, 1000000UL, 10000000UL, 100000000UL, 1000000000UL};
const unsigned long XYLUtConvert::m_offsetHexTabLongs[8] = {0x1UL,     0x10UL,     0x100UL,     0x1000UL,
                                                            0x10000UL, 0x100000UL, 0x1000000UL, 0x10000000UL};
const char XYLUtConvert::m_hexPrefix[3] = "0x";

namespace {

const unsigned kMaxDecimalWidth = 10;
const unsigned kMaxHexWidth = 8;

// Where the writers put their characters: a caller's buffer with a position,
// or a string.
class BufferSink {
public:
  BufferSink(char *buffer, unsigned long &position) : m_buffer(buffer), m_position(position) {}
  void put(char c) { m_buffer[m_position++] = c; }
  void put(const char *text, std::size_t length) {
    if (length == 0)
      return;
    std::memcpy(m_buffer + m_position, text, length);
    m_position += length;
  }

private:
  char *m_buffer;
  unsigned long &m_position;
};

class StringSink {
public:
  explicit StringSink(std::string &text) : m_text(text) {}
  void put(char c) { m_text.push_back(c); }
  void put(const char *text, std::size_t length) {
    if (length != 0)
      m_text.append(text, length);
  }

private:
  std::string &m_text;
};

// What stands before the digits: a sign character or a prefix, possibly
// nothing (length 0). A sign character of 0 is still one character.
struct Lead {
  const char *text;
  std::size_t length;
};

bool isWhiteFill(char fill) { return fill == ' ' || (fill >= 0x09 && fill <= 0x0D); }

unsigned clampWidth(unsigned width, unsigned limit) { return width < 2 ? 1 : (width > limit ? limit : width); }

// The number of entries of `table` not greater than `magnitude`, counting on
// past the table's end (one more digit per factor of `base`) for magnitudes
// wider than 32 bits.
unsigned countDigits(unsigned long magnitude, const unsigned long *table, unsigned entries, unsigned base) {
  unsigned digits = 0;
  while (digits < entries && table[digits] <= magnitude)
    ++digits;
  if (digits == entries) {
    unsigned long step = table[entries - 1];
    while (step <= magnitude / base) {
      step *= base;
      ++digits;
    }
  }
  return digits;
}

// The scheme shared by all writers: the lead before the padding for a
// non-white fill, after it for a white one; then the digits.
template <class Sink>
void writeNumber(Sink &sink, unsigned long magnitude, unsigned digits, unsigned width, char fill, const Lead &lead,
                 unsigned base) {
  bool white = isWhiteFill(fill);
  if (!white)
    sink.put(lead.text, lead.length);
  for (unsigned i = digits; i < width; ++i)
    sink.put(fill);
  if (white)
    sink.put(lead.text, lead.length);
  char scratch[24];
  unsigned n = 0;
  do {
    scratch[n++] = "0123456789ABCDEF"[magnitude % base];
    magnitude /= base;
  } while (magnitude != 0);
  while (n > 0)
    sink.put(scratch[--n]);
}

const char kBlank[] = " ";

template <class Sink>
void decimal(Sink &sink, unsigned long magnitude, bool negative, unsigned width, char fill, int showSign, char plusChar,
             char minusChar) {
  width = clampWidth(width, kMaxDecimalWidth);
  if (magnitude == 0) {
    // Zero: a blank, not plusChar, stands for the sign.
    writeNumber(sink, 0, 1, width, fill, Lead{kBlank, showSign != 0 ? 1U : 0U}, 10);
    return;
  }
  char sign = negative ? minusChar : plusChar;
  Lead lead{&sign, negative || showSign != 0 ? 1U : 0U};
  writeNumber(sink, magnitude, countDigits(magnitude, XYLUtConvert::m_offsetTabLongs, 10, 10), width, fill, lead, 10);
}

template <class Sink> void hexadecimal(Sink &sink, unsigned long value, unsigned width, char fill, const char *prefix) {
  width = clampWidth(width, kMaxHexWidth);
  Lead lead{prefix, prefix != nullptr ? std::strlen(prefix) : 0};
  unsigned digits = value == 0 ? 1 : countDigits(value, XYLUtConvert::m_offsetHexTabLongs, 8, 16);
  writeNumber(sink, value, digits, width, fill, lead, 16);
}

// 0 - u is the magnitude even for the most negative value.
unsigned long magnitudeOf(long value) {
  return value < 0 ? 0UL - static_cast<unsigned long>(value) : static_cast<unsigned long>(value);
}

} // namespace

void XYLUtConvert::longCvt(char *buffer, unsigned long &position, long value, unsigned width, char fill, int showSign,
                           char plusChar, char minusChar) {
  BufferSink sink(buffer, position);
  decimal(sink, magnitudeOf(value), value < 0, width, fill, showSign, plusChar, minusChar);
}

void XYLUtConvert::ulongCvt(char *buffer, unsigned long &position, unsigned long value, unsigned width, char fill,
                            int showSign, char plusChar) {
  BufferSink sink(buffer, position);
  decimal(sink, value, false, width, fill, showSign, plusChar, '-');
}

void XYLUtConvert::hexCvt(char *buffer, unsigned long &position, unsigned long value, unsigned width, char fill,
                          const char *prefix) {
  BufferSink sink(buffer, position);
  hexadecimal(sink, value, width, fill, prefix);
}

void XYLUtConvert::longCvt(std::string &text, long value, unsigned width, char fill, int showSign, char plusChar,
                           char minusChar) {
  xyl_std_memory::appending(text, [&] {
    StringSink sink(text);
    decimal(sink, magnitudeOf(value), value < 0, width, fill, showSign, plusChar, minusChar);
  });
}

void XYLUtConvert::ulongCvt(std::string &text, unsigned long value, unsigned width, char fill, int showSign,
                            char plusChar) {
  xyl_std_memory::appending(text, [&] {
    StringSink sink(text);
    decimal(sink, value, false, width, fill, showSign, plusChar, '-');
  });
}

void XYLUtConvert::hexCvt(std::string &text, unsigned long value, unsigned width, char fill, const char *prefix) {
  xyl_std_memory::appending(text, [&] {
    StringSink sink(text);
    hexadecimal(sink, value, width, fill, prefix);
  });
}
