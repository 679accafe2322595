// SPDX-License-Identifier: Apache-2.0
// I18NStringIterator and I18NStringIteratorValue: walking a string by code
// points, and a reference to the code point at one offset.
#include <XYLCore/ExceptionHierarchy/XYLErrors.h>
#include <XYLCore/i18n/cpp/i18n_string.h>

#include "i18n_string_internal.h"

#include <unicode/utf16.h>

#ifndef FALSE
#define FALSE 0
#endif

// ---- I18NStringIteratorValue -----------------------------------------------------------

I18NStringIteratorValue::I18NStringIteratorValue(I18N_ICU_NAMESPACE::UnicodeString *pString, I18NStringOffset offset)
    : m_pI18NString(nullptr), m_offset(offset) {
  (void)pString;
  // clang-format off
  XYL_ASSERT_NAMED(FALSE, "The I18NStringIteratorValue (I18N_ICU_NAMESPACE::UnicodeString *pString, I18NStringOffset offset) constructor is deprecated.  Please use the alternate constructor.");
  // clang-format on
}

I18NStringIteratorValue::I18NStringIteratorValue(const I18NString *pString, I18NStringOffset offset)
    : m_pI18NString(pString), m_offset(offset) {}

I18NStringIteratorValue::operator unsigned int() const {
  if (I18NStringAccess::unicodeForm(*m_pI18NString) == nullptr) {
    // clang-format off
    XYL_ASSERT(m_offset < m_pI18NString->m_asciiBufLength);
    // clang-format on
    if (m_offset < 0)
      return 0xFFFF;
    return static_cast<unsigned char>(m_pI18NString->m_pAsciiBuffer[m_offset]);
  }
  return m_pI18NString->codePointAt(m_offset);
}

I18NStringIteratorValue &I18NStringIteratorValue::operator=(unsigned int codePoint) {
  I18NString *target = const_cast<I18NString *>(m_pI18NString);
  // The character at the offset: two units for a surrogate pair, none at the
  // end (the code point is then appended).
  int units = target->incrementOffset(m_offset);
  int count = units < 0 ? 0 : units - m_offset;
  target->replace(m_offset, count, codePoint, 1);
  return *this;
}

I18NStringIteratorValue &I18NStringIteratorValue::operator=(const I18NStringIteratorValue &other) {
  return *this = static_cast<unsigned int>(other);
}

// ---- I18NStringIterator --------------------------------------------------------------------

I18NStringIterator::I18NStringIterator() : m_pI18NString(nullptr), m_offset(0) {}

I18NStringIterator::I18NStringIterator(const I18NString &text, I18NStringOffset offset)
    : m_pI18NString(&text), m_offset(offset) {
  checkPosition();
}

void I18NStringIterator::checkPosition() const {
  if (m_pI18NString != nullptr && I18NStringAccess::unicodeForm(*m_pI18NString) == nullptr) {
    // clang-format off
    XYL_ASSERT(m_offset <= m_pI18NString->m_asciiBufLength);
    // clang-format on
  }
}

I18NStringIterator &I18NStringIterator::operator++() {
  if (m_pI18NString == nullptr)
    return *this;
  int next = m_pI18NString->incrementOffset(m_offset);
  m_offset = next < 0 ? m_pI18NString->unitLength() : next;
  return *this;
}

I18NStringIterator I18NStringIterator::operator++(int) {
  I18NStringIterator before(*this);
  ++*this;
  return before;
}

I18NStringIterator &I18NStringIterator::operator--() {
  if (m_pI18NString == nullptr)
    return *this;
  int previous = m_pI18NString->decrementOffset(m_offset);
  m_offset = previous < 0 ? 0 : previous;
  return *this;
}

I18NStringIterator I18NStringIterator::operator--(int) {
  I18NStringIterator before(*this);
  --*this;
  return before;
}

I18NStringIterator &I18NStringIterator::operator+=(int n) {
  for (; n > 0; --n)
    ++*this;
  for (; n < 0; ++n)
    --*this;
  checkPosition();
  return *this;
}

I18NStringIterator I18NStringIterator::operator+(int n) const {
  I18NStringIterator moved(*this);
  moved += n;
  return moved;
}

int I18NStringIterator::operator-(const I18NStringIterator &other) const {
  if (m_pI18NString == nullptr)
    return 0;
  int from = other.m_offset < m_offset ? other.m_offset : m_offset;
  int to = other.m_offset < m_offset ? m_offset : other.m_offset;
  int count = 0;
  icu::UnicodeString *form = I18NStringAccess::unicodeForm(*m_pI18NString);
  if (form == nullptr) {
    count = to - from;
  } else {
    int length = form->length();
    if (from < 0)
      from = 0;
    if (to > length)
      to = length;
    count = to > from ? form->countChar32(from, to - from) : 0;
  }
  return other.m_offset <= m_offset ? count : -count;
}

I18NStringIteratorValue I18NStringIterator::operator*() const {
  return I18NStringIteratorValue(m_pI18NString, m_offset);
}
