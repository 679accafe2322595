// SPDX-License-Identifier: Apache-2.0
// I18NString: setting the content (from ASCII, bytes, UTF-16, code points,
// another string) and the assignment operators.
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

// ---- Content setters -------------------------------------------------------------------

// ASCII bytes (already tested) into ASCII mode, or into the Unicode form when
// an external buffer is attached.
void I18NString::assignAscii(const char *bytes, int length) {
  if (m_pExternalBuffer != nullptr) {
    icu::UnicodeString &form = unicodeForWrite();
    form.remove();
    char16_t *units = form.getBuffer(length + 1);
    if (units == nullptr)
      raiseHeapFailure();
    widenAscii(units, bytes, static_cast<std::size_t>(length));
    form.releaseBuffer(length);
    afterUnicodeChange();
    m_flags |= FLAG_NORMALIZED;
    return;
  }
  if (m_pUnicodeString != nullptr)
    releaseUnicode();
  if (length + 1 > m_asciiBufCapacity) {
    m_asciiBufLength = 0; // nothing of the old content is kept
    reserveAscii(length);
  }
  std::memmove(m_pAsciiBuffer, bytes, static_cast<std::size_t>(length));
  m_pAsciiBuffer[length] = '\0';
  m_asciiBufLength = length;
  setChangedFlag(true);
  m_flags |= FLAG_NORMALIZED;
}

void I18NString::assignBytes(const char *bytes, int length, const char *encoding, I18NConverter *converter) {
  if (bytes == nullptr) {
    remove();
    return;
  }
  if (length < -1)
    createAsciiBuffer(length + 1); // fails its assertion
  if (bytes >= m_pAsciiBuffer && bytes < m_pAsciiBuffer + m_asciiBufCapacity) {
    // The bytes live in this string's own buffer: work from a copy.
    std::string copy(bytes, length == -1 ? std::strlen(bytes) : static_cast<std::size_t>(length));
    assignBytes(copy.data(), static_cast<int>(copy.size()), encoding, converter);
    return;
  }
  bool asciiPossible = !isForceUnicodeString() && asciiCompatibleName(encoding);
  if (asciiPossible && m_pExternalBuffer == nullptr) {
    std::size_t n;
    int bufferSize;
    if (length == -1) {
      n = std::strlen(bytes);
      if (n >= static_cast<std::size_t>(INT_MAX))
        raiseHeapFailure();
      bufferSize = static_cast<int>(n) + 1;
    } else if (length < 1) {
      n = 0;
      bufferSize = 1;
    } else if (bytes[length - 1] == '\0') {
      // The caller counted the terminator.
      n = static_cast<std::size_t>(length) - 1;
      bufferSize = length;
    } else {
      n = static_cast<std::size_t>(length);
      bufferSize = length == INT_MAX ? INT_MAX : length + 1;
      if (length == INT_MAX)
        n = INT_MAX - 1;
    }
    if (!asciiHead(bytes, n)) {
      if (m_pUnicodeString == nullptr) {
        m_pAsciiBuffer[0] = '\0'; // nothing of the old content is needed
        m_asciiBufLength = 0;
      }
      createFromAscii(bytes, length, encoding, converter);
      return;
    }
    // One pass copies and checks: the common ASCII case costs one
    // allocation and one sweep over the bytes.
    if (m_pUnicodeString != nullptr)
      releaseUnicode();
    char *target;
    if (bufferSize <= m_asciiBufCapacity) {
      target = m_pAsciiBuffer;
    } else {
      releaseAscii(); // nothing of the old content is kept
      createAsciiBuffer(bufferSize);
      target = m_pAsciiBuffer;
    }
    std::size_t ascii = copyAscii(target, bytes, n);
    if (ascii == n) {
      target[n] = '\0';
      m_asciiBufLength = static_cast<int>(n);
      setChangedFlag(true);
      m_flags |= FLAG_NORMALIZED;
      return;
    }
    target[0] = '\0';
    m_asciiBufLength = 0;
    createFromAscii(bytes, length, encoding, converter);
    return;
  }
  if (asciiPossible) {
    // Attached buffer: the content goes to the Unicode form whatever it is.
    std::size_t n = length == -1 ? std::strlen(bytes) : static_cast<std::size_t>(length < 0 ? 0 : length);
    if (n > 0 && length != -1 && bytes[n - 1] == '\0')
      --n;
    if (asciiPrefix(bytes, n) == n) {
      assignAscii(bytes, static_cast<int>(n));
      return;
    }
    createFromAscii(bytes, length, encoding, converter);
    return;
  }
  createFromAscii(bytes, length, encoding, converter);
}

void I18NString::assignUTF16(const unsigned short *units, int count) {
  icu::UnicodeString &form = unicodeForWrite();
  form.setTo(reinterpret_cast<const char16_t *>(units), count);
  if (form.isBogus())
    raiseHeapFailure();
  afterUnicodeChange();
}

void I18NString::setInternalAsciiBuffer(const unsigned short *units, int count, int bufferSize) {
  if (bufferSize < count + 1 && bufferSize >= 0)
    bufferSize = count + 1;
  if (m_pExternalBuffer != nullptr) {
    assignUTF16(units, count);
    m_flags |= FLAG_NORMALIZED;
    return;
  }
  if (bufferSize > m_asciiBufCapacity || bufferSize < 0) {
    releaseAscii(); // nothing of the old content is kept
    if (m_pUnicodeString != nullptr)
      m_asciiBufLength = -1;
    createAsciiBuffer(bufferSize);
  }
  for (int i = 0; i < count; ++i)
    m_pAsciiBuffer[i] = static_cast<char>(units[i] & 0xFF);
  m_pAsciiBuffer[count] = '\0';
  m_asciiBufLength = count;
  // Only now: the units may have come from the Unicode form itself.
  if (m_pUnicodeString != nullptr)
    releaseUnicode();
  setChangedFlag(true);
  m_flags |= FLAG_NORMALIZED;
}

I18NString &I18NString::setTo(const void *utf16, int byteLength) {
  const unsigned short *units = static_cast<const unsigned short *>(utf16);
  int count = 0;
  if (isASCII(utf16, byteLength, count)) {
    if (units == nullptr || count == 0) {
      int bufferSize = (byteLength == -1 || byteLength == 0) ? 1 : byteLength / 2;
      if (bufferSize < 0)
        createAsciiBuffer(bufferSize); // fails its assertion
      remove();
      return *this;
    }
    int bufferSize = (byteLength == -1 || byteLength == count * 2) ? count + 1 : byteLength / 2;
    setInternalAsciiBuffer(units, count, bufferSize);
    return *this;
  }
  if (units == nullptr) {
    remove();
    return *this;
  }
  int limit = byteLength == -1 ? INT_MAX : (byteLength < 1 ? 0 : byteLength / 2);
  int n = 0;
  while (n < limit && units[n] != 0)
    ++n;
  assignUTF16(units, n);
  return *this;
}

I18NString &I18NString::setTo(const icu::UnicodeString &text) {
  if (&text == m_pUnicodeString)
    return *this;
  const char16_t *units = text.getBuffer();
  int length = text.length();
  bool ascii = !isForceUnicodeString();
  for (int i = 0; ascii && i < length; ++i)
    ascii = units[i] < 0x80;
  if (ascii) {
    setInternalAsciiBuffer(reinterpret_cast<const unsigned short *>(units), length, length + 1);
    return *this;
  }
  icu::UnicodeString &form = unicodeForWrite();
  form = text;
  if (form.isBogus())
    raiseHeapFailure();
  afterUnicodeChange();
  return *this;
}

// Exactly `count` units (embedded NULs included): ASCII mode when they allow.
void I18NString::assignUnits(const char16_t *units, int count) {
  bool ascii = !isForceUnicodeString();
  for (int i = 0; ascii && i < count; ++i)
    ascii = units[i] < 0x80;
  if (ascii)
    setInternalAsciiBuffer(reinterpret_cast<const unsigned short *>(units), count, count + 1);
  else
    assignUTF16(reinterpret_cast<const unsigned short *>(units), count);
}

void I18NString::assignCodePoints(const unsigned int *codePoints) {
  if (codePoints == nullptr) {
    remove();
    return;
  }
  std::size_t n = 0;
  bool ascii = !isForceUnicodeString();
  for (; codePoints[n] != 0; ++n)
    ascii = ascii && codePoints[n] < 0x80;
  if (ascii && m_pExternalBuffer == nullptr) {
    if (n >= static_cast<std::size_t>(INT_MAX))
      raiseHeapFailure();
    if (m_pUnicodeString != nullptr)
      releaseUnicode();
    m_asciiBufLength = 0;
    reserveAscii(static_cast<int>(n));
    for (std::size_t i = 0; i < n; ++i)
      m_pAsciiBuffer[i] = static_cast<char>(codePoints[i]);
    m_pAsciiBuffer[n] = '\0';
    m_asciiBufLength = static_cast<int>(n);
    setChangedFlag(true);
    m_flags |= FLAG_NORMALIZED;
    return;
  }
  icu::UnicodeString &form = unicodeForWrite();
  form.remove();
  for (std::size_t i = 0; i < n; ++i)
    if (codePoints[i] <= 0x10FFFF)
      form.append(static_cast<UChar32>(codePoints[i]));
  if (form.isBogus())
    raiseHeapFailure();
  afterUnicodeChange();
}

void I18NString::assignRepeat(unsigned int codePoint, int count) {
  if (count < 1 || codePoint > 0x10FFFF) {
    remove();
    return;
  }
  if (codePoint < 0x80 && !isForceUnicodeString() && m_pExternalBuffer == nullptr) {
    if (m_pUnicodeString != nullptr)
      releaseUnicode();
    m_asciiBufLength = 0;
    reserveAscii(count);
    std::memset(m_pAsciiBuffer, static_cast<int>(codePoint), static_cast<std::size_t>(count));
    m_pAsciiBuffer[count] = '\0';
    m_asciiBufLength = count;
    setChangedFlag(true);
    m_flags |= FLAG_NORMALIZED;
    return;
  }
  icu::UnicodeString &form = unicodeForWrite();
  form.remove();
  form.append(icu::UnicodeString(count, static_cast<UChar32>(codePoint), count));
  if (form.isBogus())
    raiseHeapFailure();
  afterUnicodeChange();
}

void I18NString::copyFrom(const I18NString &other) {
  icu::UnicodeString *form = other.unicodeForm();
  if (form == nullptr || (other.m_asciiBufLength >= 0 && other.m_pExternalBuffer == nullptr)) {
    assignAscii(other.m_pAsciiBuffer, other.m_asciiBufLength);
    return;
  }
  icu::UnicodeString &mine = unicodeForWrite();
  mine = *form;
  if (mine.isBogus())
    raiseHeapFailure();
  afterUnicodeChange();
}

void I18NString::moveFrom(I18NString &other) noexcept {
  m_pUnicodeString = other.m_pUnicodeString;
  m_pUTF16Buffer = other.m_pUTF16Buffer;
  m_pExternalBuffer = other.m_pExternalBuffer;
  m_externalBufferSize = other.m_externalBufferSize;
  m_pByteForms = other.m_pByteForms;
  m_flags = other.m_flags;
  m_normalizationForm = other.m_normalizationForm;
  if (other.m_pAsciiBuffer == other.m_inlineAscii) {
    std::memcpy(m_inlineAscii, other.m_inlineAscii, INLINE_ASCII_SIZE);
    m_pAsciiBuffer = m_inlineAscii;
    m_asciiBufCapacity = INLINE_ASCII_SIZE;
  } else {
    m_pAsciiBuffer = other.m_pAsciiBuffer;
    m_asciiBufCapacity = other.m_asciiBufCapacity;
  }
  m_asciiBufLength = other.m_asciiBufLength;
  other.m_pUnicodeString = nullptr;
  other.m_pUTF16Buffer = nullptr;
  other.m_pExternalBuffer = nullptr;
  other.m_externalBufferSize = 0;
  other.m_pByteForms = nullptr;
  other.m_pAsciiBuffer = other.m_inlineAscii;
  other.m_inlineAscii[0] = '\0';
  other.m_asciiBufCapacity = INLINE_ASCII_SIZE;
  other.m_asciiBufLength = 0;
  other.m_flags = FLAG_NORMALIZED;
  other.m_normalizationForm = 0;
}

// ---- Assignment -------------------------------------------------------------------------

I18NString &I18NString::operator=(const I18NString &other) {
  if (this == &other)
    return *this;
  copyFrom(other);
  m_flags = static_cast<unsigned char>((m_flags & FLAG_STATIC_EXTERNAL_BUFFER) |
                                       (other.m_flags & ~(FLAG_STATIC_EXTERNAL_BUFFER | FLAG_CHANGED)) | FLAG_CHANGED);
  m_normalizationForm = other.m_normalizationForm;
  return *this;
}

I18NString &I18NString::operator=(I18NString &&other) {
  if (this == &other)
    return *this;
  if (m_pExternalBuffer != nullptr || other.m_pAllocator != m_pAllocator ||
      other.m_pAllocatorContext != m_pAllocatorContext) {
    // Buffers from another allocator (or an attached buffer to keep filling)
    // cannot be taken over: copy instead.
    return *this = static_cast<const I18NString &>(other);
  }
  destroy();
  moveFrom(other);
  return *this;
}

I18NString &I18NString::operator=(const char *bytes) {
  assignBytes(bytes, -1, I18NGetPlatformDefaultEncoding(), nullptr);
  return *this;
}

I18NString &I18NString::operator=(const unsigned int *codePoints) {
  assignCodePoints(codePoints);
  return *this;
}

I18NString &I18NString::operator=(unsigned int codePoint) {
  assignRepeat(codePoint, 1);
  return *this;
}

I18NString &I18NString::operator=(const void *utf16) { return setTo(utf16, -1); }

I18NString &I18NString::operator+=(const I18NString &other) { return append(other); }
I18NString &I18NString::operator+=(const char *bytes) { return append(bytes); }
I18NString &I18NString::operator+=(const unsigned int *codePoints) { return append(codePoints); }
I18NString &I18NString::operator+=(unsigned int codePoint) { return append(codePoint, 1); }

I18NString operator+(const I18NString &left, const I18NString &right) {
  I18NString result(left);
  result.append(right);
  return result;
}

I18NString operator+(const I18NString &left, const unsigned int *codePoints) {
  I18NString result(left);
  result.append(codePoints);
  return result;
}

I18NString operator+(const I18NString &left, unsigned int codePoint) {
  I18NString result(left);
  result.append(codePoint, 1);
  return result;
}
