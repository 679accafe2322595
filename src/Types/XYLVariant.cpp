// SPDX-License-Identifier: Apache-2.0
#include <XYLCore/Types/XYLVariant.h>

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <new>

// Integers and pointers keep the sizes of the library's 32-bit heritage; the
// value sizes are part of what callers see, so they do not follow the host's
// `long` or pointer width.
const unsigned long XYLVariant::valueSizes[6] = {0, 4, 4, 8, 0, 4};

namespace {
// Long enough for every text form: "%e" of the largest double is 13
// characters, a 64-bit pointer in hex 16.
const std::size_t kTextFormCapacity = 32;

// Allocates a string copy the way every string of a variant is allocated, so
// that clear() can release it with delete[]; null when memory ran out.
char *allocateString(unsigned long length) { return new (std::nothrow) char[length + 1]; }

// Copies `source` (of `length` bytes, `length` > 0) with strncpy semantics and
// reports truncation as getValue(char*, unsigned long) documents.
int copyOut(const char *source, std::size_t length, char *buffer, unsigned long capacity) {
  std::strncpy(buffer, source, capacity);
  if (capacity <= length) {
    buffer[capacity - 1] = '\0';
    return 0;
  }
  return 1;
}

// Writes the digits of `value` in `Base` (10 or 16, lower case) ending just
// before `end` and returns the first one; what "%u" and "%x" print.
template <unsigned Base> char *formatDigits(char *end, std::uintptr_t value) {
  static const char kDigits[] = "0123456789abcdef";
  char *p = end;
  do {
    *--p = kDigits[value % Base];
    value /= Base;
  } while (value != 0);
  return p;
}
} // namespace

XYLVariant::XYLVariant() : m_ulValueSize(0), m_type(varTypeUnknown) { std::memset(&m_value, 0, sizeof m_value); }

XYLVariant::XYLVariant(const XYLVariant &other) : m_ulValueSize(0), m_type(varTypeUnknown) {
  std::memset(&m_value, 0, sizeof m_value);
  *this = other;
}

XYLVariant::~XYLVariant() { clear(); }

void XYLVariant::clear() {
  if (m_type == varTypeString)
    delete[] m_value.m_pszValue;
  // Every view of the union reads 0 afterwards (a null pointer, 0, 0.0).
  std::memset(&m_value, 0, sizeof m_value);
}

XYLVariant &XYLVariant::operator=(const XYLVariant &other) {
  if (this == &other)
    return *this;
  clear();
  m_type = other.m_type;
  m_ulValueSize = other.m_ulValueSize;
  m_value = other.m_value;
  if (m_type == varTypeString && other.m_value.m_pszValue != nullptr) {
    char *copy = allocateString(m_ulValueSize);
    if (copy == nullptr) {
      m_value.m_pszValue = nullptr;
      m_type = varTypeUnknown;
      m_ulValueSize = 0;
    } else {
      // The source buffer holds size + 1 initialised bytes (strncpy filled it),
      // so the whole block, terminator included, is copied.
      std::memcpy(copy, other.m_value.m_pszValue, m_ulValueSize + 1);
      m_value.m_pszValue = copy;
    }
  }
  return *this;
}

bool XYLVariant::operator==(const XYLVariant &other) const {
  if (this == &other)
    return true;
  if (m_type != other.m_type || m_ulValueSize != other.m_ulValueSize)
    return false;
  switch (m_type) {
  case varTypeUnknown:
    return true;
  case varTypeLong:
  case varTypeULong:
    return m_value.m_ulValue == other.m_value.m_ulValue;
  case varTypePointer:
    return m_value.m_pValue == other.m_value.m_pValue;
  case varTypeDouble:
    return m_value.m_dValue == other.m_value.m_dValue;
  case varTypeString:
    if (m_value.m_pszValue == other.m_value.m_pszValue)
      return true;
    if (m_value.m_pszValue == nullptr || other.m_value.m_pszValue == nullptr)
      return false;
    return std::strcmp(m_value.m_pszValue, other.m_value.m_pszValue) == 0;
  default:
    return false;
  }
}

bool XYLVariant::operator!=(const XYLVariant &other) const { return !(*this == other); }

int XYLVariant::setValue(long value) {
  clear();
  m_type = varTypeLong;
  setValueSize(valueSizes[varTypeLong]);
  // Integers are 32 bits wide: keep the low 32 bits.
  m_value.m_ulValue = static_cast<std::uint32_t>(static_cast<unsigned long>(value));
  return 1;
}

int XYLVariant::setValue(unsigned long value) {
  clear();
  m_type = varTypeULong;
  setValueSize(valueSizes[varTypeULong]);
  m_value.m_ulValue = static_cast<std::uint32_t>(value);
  return 1;
}

int XYLVariant::setValue(double value) {
  clear();
  m_type = varTypeDouble;
  setValueSize(valueSizes[varTypeDouble]);
  m_value.m_dValue = value;
  return 1;
}

int XYLVariant::setValue(void *value) {
  clear();
  m_type = varTypePointer;
  setValueSize(valueSizes[varTypePointer]);
  m_value.m_pValue = value;
  return 1;
}

int XYLVariant::setValue(const char *text, unsigned long length) {
  clear();
  m_type = varTypeString;
  setValueSize(valueSizes[varTypeString]);
  if (text == nullptr)
    return 1;
  if (length == 0) {
    length = static_cast<unsigned long>(std::strlen(text));
    // An empty string is deliberately not stored.
    if (length == 0)
      return 0;
  }
  char *copy = allocateString(length);
  if (copy == nullptr) {
    m_type = varTypeUnknown;
    return 0;
  }
  // strncpy stops at a zero byte inside the first `length` bytes and pads the
  // rest, so the whole block is initialised.
  std::strncpy(copy, text, length);
  copy[length] = '\0';
  m_value.m_pszValue = copy;
  setValueSize(length);
  return 1;
}

int XYLVariant::getValue(long &value) const {
  if (m_type != varTypeLong)
    return 0;
  value = static_cast<long>(m_value.m_lValue);
  return 1;
}

int XYLVariant::getValue(unsigned long &value) const {
  if (m_type != varTypeULong)
    return 0;
  value = static_cast<unsigned long>(m_value.m_ulValue);
  return 1;
}

int XYLVariant::getValue(double &value) const {
  if (m_type != varTypeDouble)
    return 0;
  value = m_value.m_dValue;
  return 1;
}

int XYLVariant::getValue(void *&value) const {
  if (m_type != varTypePointer)
    return 0;
  value = m_value.m_pValue;
  return 1;
}

int XYLVariant::getValue(char *&value) const {
  if (m_type != varTypeString) {
    value = nullptr;
    return 0;
  }
  value = m_value.m_pszValue;
  return 1;
}

int XYLVariant::getValue(char *buffer, unsigned long capacity) const {
  // Not even a terminator fits: nothing is written.
  if (buffer == nullptr || capacity == 0)
    return 0;
  if (m_type == varTypeString) {
    if (m_value.m_pszValue == nullptr || getValueSize() == 0) {
      buffer[0] = '\0';
      return 1;
    }
    return copyOut(m_value.m_pszValue, getValueSize(), buffer, capacity);
  }
  // Integers and pointers are formatted by hand, backwards from a terminator
  // at the end of `text` (snprintf would dominate the cost); the digits are
  // those "%d", "%u" and "%x" print.
  char text[kTextFormCapacity];
  char *const end = text + sizeof text - 1;
  *end = '\0';
  const char *source = text;
  std::size_t length = 0;
  switch (m_type) {
  case varTypeUnknown:
    source = "<unknown>";
    length = sizeof "<unknown>" - 1;
    break;
  case varTypeLong: {
    const std::int32_t value = m_value.m_lValue;
    const std::uint32_t magnitude =
        value < 0 ? 0u - static_cast<std::uint32_t>(value) : static_cast<std::uint32_t>(value);
    char *first = formatDigits<10>(end, magnitude);
    if (value < 0)
      *--first = '-';
    source = first;
    length = static_cast<std::size_t>(end - first);
    break;
  }
  case varTypeULong:
    source = formatDigits<10>(end, m_value.m_ulValue);
    length = static_cast<std::size_t>(end - source);
    break;
  case varTypeDouble:
    length = static_cast<std::size_t>(std::snprintf(text, sizeof text, "%e", m_value.m_dValue));
    break;
  case varTypePointer:
    source = formatDigits<16>(end, reinterpret_cast<std::uintptr_t>(m_value.m_pValue));
    length = static_cast<std::size_t>(end - source);
    break;
  default:
    source = "<invalid>";
    length = sizeof "<invalid>" - 1;
    break;
  }
  return copyOut(source, length, buffer, capacity);
}
