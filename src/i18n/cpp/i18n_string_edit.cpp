// SPDX-License-Identifier: Apache-2.0
// I18NString: comparison, queries by code point and modification in either
// mode (ASCII edits work on the byte buffer).
#include <XYLCore/ExceptionHierarchy/XYLErrors.h>
#include <XYLCore/Threads/XYLThreadCriticalSection.h>
#include <XYLCore/Threads/XYLThreadGuard.h>
#include <XYLCore/Utility/XYLUtMemory.h>
#include <XYLCore/i18n/cpp/i18n_converter.h>
#include <XYLCore/i18n/cpp/i18n_string.h>

#include "i18n_string_internal.h"

#include <atomic>
#include <climits>
#include <exception>
#include <new>
#include <optional>
#include <string>
#include <unicode/ustring.h>
#include <unicode/utf16.h>

using namespace i18n_string_detail;

// ---- Comparison -----------------------------------------------------------------------

namespace {
// A read-only view of a string's code units: bytes in ASCII mode, UTF-16
// otherwise.
struct UnitView {
  const char *bytes;
  const char16_t *units;
  int length;
  char16_t at(int i) const { return bytes != nullptr ? static_cast<char16_t>(bytes[i]) : units[i]; }
};

UnitView viewOf(const I18NString &s) {
  icu::UnicodeString *form = I18NStringAccess::unicodeForm(s);
  int asciiLength = I18NStringAccess::asciiLength(s);
  if (form == nullptr || asciiLength >= 0)
    return {I18NStringAccess::asciiBuffer(s), nullptr, asciiLength < 0 ? 0 : asciiLength};
  return {nullptr, form->getBuffer(), form->length()};
}
} // namespace

int I18NString::compare(const I18NString &other) const {
  if (this == &other)
    return 0;
  UnitView a = viewOf(*this), b = viewOf(other);
  int common = a.length < b.length ? a.length : b.length;
  if (a.bytes != nullptr && b.bytes != nullptr) {
    int r = std::memcmp(a.bytes, b.bytes, static_cast<std::size_t>(common));
    if (r != 0)
      return r < 0 ? -1 : 1;
  } else if (a.units != nullptr && b.units != nullptr) {
    for (int i = 0; i < common; ++i)
      if (a.units[i] != b.units[i])
        return a.units[i] < b.units[i] ? -1 : 1;
  } else {
    for (int i = 0; i < common; ++i) {
      char16_t x = a.at(i), y = b.at(i);
      if (x != y)
        return x < y ? -1 : 1;
    }
  }
  return a.length == b.length ? 0 : (a.length < b.length ? -1 : 1);
}

bool I18NString::operator==(const char *bytes) const {
  if (bytes == nullptr)
    return empty();
  UnitView mine = viewOf(*this);
  const char *encoding = I18NGetPlatformDefaultEncoding();
  if (mine.bytes != nullptr && asciiCompatibleName(encoding)) {
    std::size_t n = std::strlen(bytes);
    if (asciiPrefix(bytes, n) == n)
      return n == static_cast<std::size_t>(mine.length) && std::memcmp(mine.bytes, bytes, n) == 0;
  }
  return compare(I18NString(bytes, encoding)) == 0;
}

// ---- Queries ----------------------------------------------------------------------------

bool I18NString::unicodeEmpty() const { return unicodeForm()->isEmpty(); }

int I18NString::unicodeLength() const { return unicodeForm()->countChar32(); }

int I18NString::unicodeUnits() const { return unicodeForm()->length(); }

int I18NString::size() const {
  int units = unitLength();
  return units == 0 ? 0 : units * 2 + 2;
}

int I18NString::length(const unsigned int *codePoints) {
  if (codePoints == nullptr)
    return 0;
  int count = 0;
  for (const unsigned int *p = codePoints; *p != 0; ++p) {
    if (*p > 0x10FFFF)
      continue;
    // A lead surrogate value followed by a trail surrogate value pairs up
    // in UTF-16 and counts once.
    if (U16_IS_LEAD(*p) && U16_IS_TRAIL(p[1]))
      ++p;
    ++count;
  }
  return count;
}

int I18NString::length(unsigned int codePoint) { return codePoint <= 0x10FFFF ? 1 : 0; }

int I18NString::size(const unsigned int *codePoints) {
  if (codePoints == nullptr)
    return 0;
  int units = 0;
  for (const unsigned int *p = codePoints; *p != 0; ++p)
    if (*p <= 0x10FFFF)
      units += *p > 0xFFFF ? 2 : 1;
  return units == 0 ? 0 : units * 2 + 2;
}

int I18NString::size(unsigned int codePoint) {
  if (codePoint > 0x10FFFF)
    return 0;
  return codePoint > 0xFFFF ? 6 : 4;
}

bool I18NString::isUnicodeMode() const { return unicodeForm() != nullptr; }

bool I18NString::isNormalized() const { return (m_flags & FLAG_NORMALIZED) != 0; }

I18NStringOffset I18NString::incrementOffset(I18NStringOffset offset) const {
  UnitView v = viewOf(*this);
  if (offset < 0 || offset >= v.length)
    return -1;
  if (v.units != nullptr && U16_IS_LEAD(v.units[offset]) && offset + 1 < v.length && U16_IS_TRAIL(v.units[offset + 1]))
    return offset + 2;
  return offset + 1;
}

I18NStringOffset I18NString::decrementOffset(I18NStringOffset offset) const {
  UnitView v = viewOf(*this);
  if (offset < 1 || offset > v.length)
    return -1;
  if (v.units != nullptr && U16_IS_TRAIL(v.units[offset - 1]) && offset - 1 > 0 && U16_IS_LEAD(v.units[offset - 2]))
    return offset - 2;
  return offset - 1;
}

unsigned int I18NString::codePointAt(I18NStringOffset offset) const {
  UnitView v = viewOf(*this);
  if (offset < 0 || offset >= v.length)
    return 0xFFFF;
  if (v.bytes != nullptr)
    return static_cast<unsigned char>(v.bytes[offset]);
  UChar32 c;
  U16_GET(v.units, 0, offset, v.length, c);
  return static_cast<unsigned int>(c);
}

I18NStringIterator I18NString::begin() const { return I18NStringIterator(*this, 0); }

I18NStringIterator I18NString::end() const { return I18NStringIterator(*this, unitLength()); }

// A writer may keep working in ASCII mode: no attached buffer and either no
// Unicode form or one made lazily from a still valid ASCII buffer (dropped).
static inline bool asciiWritable(bool external, icu::UnicodeString *form, int asciiLength) {
  return !external && (form == nullptr || asciiLength >= 0);
}

// ---- Modification -----------------------------------------------------------------------

namespace {
// Code points of a NUL-terminated UTF-32 array: count and whether all are
// ASCII.
std::size_t scanCodePoints(const unsigned int *codePoints, bool &ascii) {
  std::size_t n = 0;
  ascii = true;
  if (codePoints == nullptr)
    return 0;
  for (; codePoints[n] != 0; ++n)
    ascii = ascii && codePoints[n] < 0x80;
  return n;
}

icu::UnicodeString unicodeOfCodePoints(const unsigned int *codePoints, std::size_t n) {
  icu::UnicodeString text;
  for (std::size_t i = 0; i < n; ++i)
    if (codePoints[i] <= 0x10FFFF)
      text.append(static_cast<UChar32>(codePoints[i]));
  return text;
}

// The content of a string as UTF-16 (a copy when it is in ASCII mode).
icu::UnicodeString unicodeOf(const I18NString &s) {
  UnitView v = viewOf(s);
  if (v.units != nullptr)
    return icu::UnicodeString(v.units, v.length);
  icu::UnicodeString text;
  char16_t *units = text.getBuffer(v.length + 1);
  if (units == nullptr)
    raiseHeapFailure();
  widenAscii(units, v.bytes, static_cast<std::size_t>(v.length));
  text.releaseBuffer(v.length);
  return text;
}
} // namespace

// Replaces units [offset, offset+count) by `bytes` in ASCII mode. Offsets are
// already pinned to the content.
static void asciiSplice(char *&buffer, int &length, int offset, int count, const char *bytes, int n) {
  int tail = length - offset - count;
  std::memmove(buffer + offset + n, buffer + offset + count, static_cast<std::size_t>(tail));
  std::memcpy(buffer + offset, bytes, static_cast<std::size_t>(n));
  length = length - count + n;
  buffer[length] = '\0';
}

I18NString &I18NString::replace(I18NStringOffset offset, int count, const I18NString &text) {
  UnitView source = viewOf(text);
  if (source.bytes != nullptr && !isForceUnicodeString() &&
      asciiWritable(m_pExternalBuffer != nullptr, m_pUnicodeString, m_asciiBufLength)) {
    if (&text == this) {
      // Self-reference: splice from a copy.
      I18NString copy(text);
      return replace(offset, count, copy);
    }
    if (m_pUnicodeString != nullptr)
      releaseUnicode();
    int length = m_asciiBufLength;
    int start = offset < 0 ? 0 : (offset > length ? length : offset);
    int removed = (count < 0 || count > length - start) ? length - start : count;
    int n = source.length;
    if (static_cast<long>(length) - removed + n >= INT_MAX)
      raiseHeapFailure();
    reserveAscii(length - removed + n);
    asciiSplice(m_pAsciiBuffer, m_asciiBufLength, start, removed, source.bytes, n);
    setChangedFlag(true);
    return *this;
  }
  icu::UnicodeString piece = unicodeOf(text);
  icu::UnicodeString &form = unicodeForWrite();
  form.replace(offset, count < 0 ? INT_MAX : count, piece);
  if (form.isBogus())
    raiseHeapFailure();
  afterUnicodeChange();
  return *this;
}

I18NString &I18NString::replace(I18NStringOffset offset, int count, const unsigned int *codePoints) {
  bool ascii;
  std::size_t n = scanCodePoints(codePoints, ascii);
  if (ascii && !isForceUnicodeString() &&
      asciiWritable(m_pExternalBuffer != nullptr, m_pUnicodeString, m_asciiBufLength)) {
    if (n >= static_cast<std::size_t>(INT_MAX))
      raiseHeapFailure();
    if (m_pUnicodeString != nullptr)
      releaseUnicode();
    int length = m_asciiBufLength;
    int start = offset < 0 ? 0 : (offset > length ? length : offset);
    int removed = (count < 0 || count > length - start) ? length - start : count;
    reserveAscii(length - removed + static_cast<int>(n));
    int tail = length - start - removed;
    std::memmove(m_pAsciiBuffer + start + n, m_pAsciiBuffer + start + removed, static_cast<std::size_t>(tail));
    for (std::size_t i = 0; i < n; ++i)
      m_pAsciiBuffer[start + i] = static_cast<char>(codePoints[i]);
    m_asciiBufLength = length - removed + static_cast<int>(n);
    m_pAsciiBuffer[m_asciiBufLength] = '\0';
    setChangedFlag(true);
    return *this;
  }
  icu::UnicodeString piece = unicodeOfCodePoints(codePoints, n);
  icu::UnicodeString &form = unicodeForWrite();
  form.replace(offset, count < 0 ? INT_MAX : count, piece);
  if (form.isBogus())
    raiseHeapFailure();
  afterUnicodeChange();
  return *this;
}

I18NString &I18NString::replace(I18NStringOffset offset, int count, unsigned int codePoint, int repeat) {
  if (repeat < 0 || codePoint > 0x10FFFF)
    repeat = 0;
  if (codePoint < 0x80 && !isForceUnicodeString() &&
      asciiWritable(m_pExternalBuffer != nullptr, m_pUnicodeString, m_asciiBufLength)) {
    if (m_pUnicodeString != nullptr)
      releaseUnicode();
    int length = m_asciiBufLength;
    int start = offset < 0 ? 0 : (offset > length ? length : offset);
    int removed = (count < 0 || count > length - start) ? length - start : count;
    if (static_cast<long>(length) - removed + repeat >= INT_MAX)
      raiseHeapFailure();
    reserveAscii(length - removed + repeat);
    int tail = length - start - removed;
    std::memmove(m_pAsciiBuffer + start + repeat, m_pAsciiBuffer + start + removed, static_cast<std::size_t>(tail));
    std::memset(m_pAsciiBuffer + start, static_cast<int>(codePoint), static_cast<std::size_t>(repeat));
    m_asciiBufLength = length - removed + repeat;
    m_pAsciiBuffer[m_asciiBufLength] = '\0';
    setChangedFlag(true);
    return *this;
  }
  icu::UnicodeString piece;
  if (repeat > 0)
    piece = icu::UnicodeString(repeat, static_cast<UChar32>(codePoint), repeat);
  icu::UnicodeString &form = unicodeForWrite();
  form.replace(offset, count < 0 ? INT_MAX : count, piece);
  if (form.isBogus())
    raiseHeapFailure();
  afterUnicodeChange();
  return *this;
}

I18NString &I18NString::append(const I18NString &text) { return replace(INT_MAX, 0, text); }
I18NString &I18NString::append(const unsigned int *codePoints) { return replace(INT_MAX, 0, codePoints); }
I18NString &I18NString::append(unsigned int codePoint, int count) { return replace(INT_MAX, 0, codePoint, count); }

I18NString &I18NString::append(const char *bytes) {
  if (bytes == nullptr)
    return *this;
  const char *encoding = I18NGetPlatformDefaultEncoding();
  if (!isForceUnicodeString() && asciiCompatibleName(encoding) &&
      asciiWritable(m_pExternalBuffer != nullptr, m_pUnicodeString, m_asciiBufLength)) {
    std::size_t n = std::strlen(bytes);
    if (asciiPrefix(bytes, n) == n) {
      if (n >= static_cast<std::size_t>(INT_MAX - m_asciiBufLength))
        raiseHeapFailure();
      if (m_pUnicodeString != nullptr)
        releaseUnicode();
      int length = m_asciiBufLength;
      reserveAscii(length + static_cast<int>(n));
      std::memcpy(m_pAsciiBuffer + length, bytes, n);
      m_asciiBufLength = length + static_cast<int>(n);
      m_pAsciiBuffer[m_asciiBufLength] = '\0';
      setChangedFlag(true);
      return *this;
    }
  }
  return append(I18NString(bytes, encoding));
}

I18NString &I18NString::insert(I18NStringOffset offset, const I18NString &text) {
  return replace(offset < 0 ? 0 : offset, 0, text);
}

I18NString &I18NString::insert(I18NStringOffset offset, const unsigned int *codePoints) {
  return replace(offset < 0 ? 0 : offset, 0, codePoints);
}

I18NString &I18NString::insert(I18NStringOffset offset, unsigned int codePoint, int count) {
  return replace(offset < 0 ? 0 : offset, 0, codePoint, count);
}

I18NString &I18NString::erase(I18NStringOffset offset, int count) {
  if (empty())
    return *this;
  if (asciiWritable(m_pExternalBuffer != nullptr, m_pUnicodeString, m_asciiBufLength)) {
    if (m_pUnicodeString != nullptr)
      releaseUnicode();
    int length = m_asciiBufLength;
    if (offset > length)
      return *this;
    if (offset < 0)
      offset = 0;
    if (count < 0 || count > length - offset)
      count = length - offset;
    std::memmove(m_pAsciiBuffer + offset, m_pAsciiBuffer + offset + count,
                 static_cast<std::size_t>(length - offset - count));
    m_asciiBufLength = length - count;
    m_pAsciiBuffer[m_asciiBufLength] = '\0';
    setChangedFlag(true);
    return *this;
  }
  icu::UnicodeString &form = unicodeForWrite();
  form.remove(offset, count == -1 ? INT_MAX : count);
  afterUnicodeChange();
  return *this;
}

I18NString &I18NString::trimLeading(unsigned int codePoint) {
  if (asciiWritable(m_pExternalBuffer != nullptr, m_pUnicodeString, m_asciiBufLength)) {
    // A code point above 127 cannot occur in the ASCII buffer.
    if (codePoint > 127)
      return *this;
    int run = 0;
    while (run < m_asciiBufLength && static_cast<unsigned char>(m_pAsciiBuffer[run]) == codePoint)
      ++run;
    if (run > 0)
      erase(0, run);
    return *this;
  }
  icu::UnicodeString &form = *m_pUnicodeString;
  int length = form.length(), end = 0;
  const char16_t *units = form.getBuffer();
  while (end < length) {
    UChar32 c;
    int next = end;
    U16_NEXT(units, next, length, c);
    if (static_cast<unsigned int>(c) != codePoint)
      break;
    end = next;
  }
  if (end > 0) {
    unicodeForWrite().remove(0, end);
    afterUnicodeChange();
  }
  return *this;
}

I18NString &I18NString::trimTrailing(unsigned int codePoint) {
  if (asciiWritable(m_pExternalBuffer != nullptr, m_pUnicodeString, m_asciiBufLength)) {
    if (codePoint > 127)
      return *this;
    int start = m_asciiBufLength;
    while (start > 0 && static_cast<unsigned char>(m_pAsciiBuffer[start - 1]) == codePoint)
      --start;
    if (start < m_asciiBufLength)
      erase(start, m_asciiBufLength - start);
    return *this;
  }
  icu::UnicodeString &form = *m_pUnicodeString;
  int length = form.length(), start = length;
  const char16_t *units = form.getBuffer();
  while (start > 0) {
    UChar32 c;
    int previous = start;
    U16_PREV(units, 0, previous, c);
    if (static_cast<unsigned int>(c) != codePoint)
      break;
    start = previous;
  }
  if (start < length) {
    unicodeForWrite().truncate(start);
    afterUnicodeChange();
  }
  return *this;
}

I18NString &I18NString::trim(unsigned int codePoint) {
  trimLeading(codePoint);
  return trimTrailing(codePoint);
}

I18NString &I18NString::resize(int newLength, unsigned int codePoint) {
  if (newLength < 0)
    newLength = 0;
  if (asciiWritable(m_pExternalBuffer != nullptr, m_pUnicodeString, m_asciiBufLength) &&
      (newLength <= m_asciiBufLength || (codePoint < 0x80 && !isForceUnicodeString()))) {
    if (newLength <= m_asciiBufLength)
      return erase(newLength, -1);
    return append(codePoint, newLength - m_asciiBufLength);
  }
  int current = length();
  if (newLength < current) {
    icu::UnicodeString &form = unicodeForWrite();
    form.truncate(form.moveIndex32(0, newLength));
    afterUnicodeChange();
    return *this;
  }
  if (newLength > current)
    append(codePoint, newLength - current);
  return *this;
}

void I18NString::useNormalization(bool on) {
  if (on)
    m_flags &= static_cast<unsigned char>(~FLAG_NORMALIZATION_OFF);
  else
    m_flags |= FLAG_NORMALIZATION_OFF;
}

void I18NString::skipCompatibilityTransliteration(bool skip) {
  if (skip)
    m_flags |= FLAG_SKIP_COMPATIBILITY;
  else
    m_flags &= static_cast<unsigned char>(~FLAG_SKIP_COMPATIBILITY);
}

I18NString I18NString::substring(I18NStringOffset offset, int count) const {
  UnitView v = viewOf(*this);
  int start = offset < 0 ? 0 : (offset > v.length ? v.length : offset);
  int n = (count < 0 || count > v.length - start) ? v.length - start : count;
  I18NString result(m_pAllocator, m_pAllocatorContext);
  if (n == 0)
    return result;
  if (v.bytes != nullptr)
    result.assignAscii(v.bytes + start, n);
  else
    result.assignUnits(v.units + start, n);
  return result;
}
