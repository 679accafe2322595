/* SPDX-License-Identifier: Apache-2.0 */
// xylsehandler_internal.h - private to the fault handler: the hook that the
// thread layer's process initialisation calls, and a bounded text builder
// that the signal handler uses instead of the stdio formatters.
#ifndef XYLCORE_SRC_QORTHREAD_XYLSEHANDLER_INTERNAL_H
#define XYLCORE_SRC_QORTHREAD_XYLSEHANDLER_INTERNAL_H

#include <cstddef>
#include <cstdint>

// Reads XYL_HWE_ABORT and enables the handler it asks for; does its work on
// the first call of the process only. Called by xylThreadProcessInitialize.
void xylSEHandlerProcessInitialize();

namespace xyl_seh {

// Signal-safe. Appends to a caller's buffer, always NUL-terminated; what
// does not fit is dropped and remembered.
class SafeText {
public:
  SafeText(char *buffer, std::size_t capacity) : m_buffer(buffer), m_capacity(capacity), m_length(0), m_full(false) {
    if (m_capacity > 0)
      m_buffer[0] = '\0';
  }

  SafeText &text(const char *s) {
    if (s == nullptr)
      return *this;
    while (*s != '\0')
      put(*s++);
    terminate();
    return *this;
  }

  // Lower- or upper-case hex, at least minDigits digits, no prefix.
  SafeText &hex(std::uint64_t value, int minDigits = 1, bool upper = false) {
    const char *digits = upper ? "0123456789ABCDEF" : "0123456789abcdef";
    char scratch[16];
    int n = 0;
    do {
      scratch[n++] = digits[value & 0xF];
      value >>= 4;
    } while (value != 0 && n < 16);
    for (int i = n; i < minDigits; ++i)
      put('0');
    while (n > 0)
      put(scratch[--n]);
    terminate();
    return *this;
  }

  // Decimal, right-aligned in at least `width` characters.
  SafeText &dec(std::int64_t value, int width = 0) {
    char scratch[24];
    int n = 0;
    std::uint64_t magnitude = value < 0 ? 0 - static_cast<std::uint64_t>(value) : static_cast<std::uint64_t>(value);
    do {
      scratch[n++] = static_cast<char>('0' + magnitude % 10);
      magnitude /= 10;
    } while (magnitude != 0);
    if (value < 0)
      scratch[n++] = '-';
    for (int i = n; i < width; ++i)
      put(' ');
    while (n > 0)
      put(scratch[--n]);
    terminate();
    return *this;
  }

  const char *c_str() const { return m_buffer; }
  std::size_t length() const { return m_length; }
  bool truncated() const { return m_full; }

private:
  void put(char c) {
    if (m_length + 1 < m_capacity)
      m_buffer[m_length++] = c;
    else
      m_full = true;
  }
  void terminate() {
    if (m_capacity > 0)
      m_buffer[m_length] = '\0';
  }

  char *m_buffer;
  std::size_t m_capacity;
  std::size_t m_length;
  bool m_full;
};

} // namespace xyl_seh

#endif // XYLCORE_SRC_QORTHREAD_XYLSEHANDLER_INTERNAL_H
