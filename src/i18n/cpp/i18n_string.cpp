// SPDX-License-Identifier: Apache-2.0
// I18NString: construction, memory, the two modes and conversion from bytes.
// Assignment is in i18n_string_assign.cpp, comparison, queries and edits in
// i18n_string_edit.cpp, the rest in the other i18n_string_*.cpp files. Every
// raise of the class goes through the helpers at the top of this file, so
// that traces name "i18n/cpp/i18n_string".
//
// Mode bookkeeping. The Unicode form, when it exists, is authoritative. It
// is created either by a writer that needs it (the ASCII buffer is then
// released and m_asciiBufLength set to -1) or lazily by a const operation
// under the string's stripe lock (the ASCII buffer is then left alone, since
// other readers may be using it, and stays an exact copy of the content).
// So while the Unicode form exists, m_asciiBufLength >= 0 means the ASCII
// buffer still holds the whole content. m_pUnicodeString and m_pUTF16Buffer
// are published with release stores and read with acquire loads, because
// const operations may create them while other threads read.
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

namespace {
std::atomic<bool> g_forceUnicode{false};
std::atomic<long> g_unicodeFormsCreated{0};

} // namespace

// ---- Raising -------------------------------------------------------------------

namespace i18n_string_detail {
void raiseRuntime(long code, const char *message) { XYL_THROW(I18NRuntimeError(code, message)); }

void raiseAllocatorFailure(int reported) {
  // The code carries the callback's report (-10 for a negative size, else
  // -1), which the C interface hands on to its caller.
  long code = reported == I18N_NEGATIVE_ALLOCATION_SIZE ? I18N_NEGATIVE_ALLOCATION_SIZE : I18N_ALLOCATION_FAILURE;
  XYL_THROW(XYLOutOfMemoryError(code, "The specified allocator callback failed to allocate memory."));
}

void raiseHeapFailure() { XYL_THROW(XYLOutOfMemoryError(-1L, "malloc failed to allocate memory.")); }

void raiseConversionFailure(int code) {
  XYL_THROW(I18NRuntimeError(static_cast<long>(code), "The text could not be converted."));
}

long unicodeFormsCreated() { return g_unicodeFormsCreated.load(std::memory_order_relaxed); }
void countUnicodeForm() { g_unicodeFormsCreated.fetch_add(1, std::memory_order_relaxed); }
} // namespace i18n_string_detail

// ---- The allocator contract ----------------------------------------------------

char *I18NDefaultStringBufferAllocator(void *, char *buffer, int newSize, int *error) {
  if (error != nullptr)
    *error = 0;
  if (newSize < 0) {
    if (error != nullptr)
      *error = I18N_NEGATIVE_ALLOCATION_SIZE;
    return nullptr;
  }
  if (newSize == 0) {
    XYLUtMemory::free(buffer);
    return nullptr;
  }
  char *block = static_cast<char *>(XYLUtMemory::realloc(buffer, static_cast<std::size_t>(newSize)));
  if (block == nullptr && error != nullptr)
    *error = I18N_ALLOCATION_FAILURE;
  return block;
}

void *I18NString::allocateBlock(void *block, int size) const {
  if (m_pAllocator != nullptr) {
    int error = 0;
    char *result = m_pAllocator(m_pAllocatorContext, static_cast<char *>(block), size, &error);
    if (result == nullptr || error != 0)
      raiseAllocatorFailure(error);
    return result;
  }
  void *result = block == nullptr ? XYLUtMemory::malloc(static_cast<std::size_t>(size))
                                  : XYLUtMemory::realloc(block, static_cast<std::size_t>(size));
  if (result == nullptr)
    raiseHeapFailure();
  return result;
}

void I18NString::freeBlock(void *block) const {
  if (block == nullptr)
    return;
  if (m_pAllocator != nullptr) {
    int error = 0;
    m_pAllocator(m_pAllocatorContext, static_cast<char *>(block), 0, &error);
  } else {
    XYLUtMemory::free(block);
  }
}

// ---- The lock table and the force flag ------------------------------------------

XYLThreadCriticalSection &I18NString::getLockFromPtr(const void *p) {
  // Made on first use and never destroyed, so strings used by static
  // destructors still find their locks.
  static XYLThreadCriticalSection *const s_locks = new XYLThreadCriticalSection[64];
  return s_locks[getIndexFromPtr(p)];
}

void I18NString::setForceUnicodeString(bool force) { g_forceUnicode.store(force, std::memory_order_relaxed); }

bool I18NString::isForceUnicodeString() { return g_forceUnicode.load(std::memory_order_relaxed); }

// ---- ASCII tests -------------------------------------------------------------------

bool I18NString::isASCII(const char *bytes, const char *encoding, int length) {
  if (isForceUnicodeString())
    return false;
  if (!asciiCompatibleName(encoding))
    return false;
  if (bytes == nullptr)
    return true;
  if (length == -1) {
    for (const unsigned char *p = reinterpret_cast<const unsigned char *>(bytes); *p != 0; ++p)
      if (*p & 0x80)
        return false;
    return true;
  }
  if (length < 1)
    return true;
  return asciiPrefix(bytes, static_cast<std::size_t>(length)) == static_cast<std::size_t>(length);
}

bool I18NString::isASCII(const void *utf16, int byteLength, int &count) {
  if (isForceUnicodeString())
    return false;
  if (utf16 == nullptr)
    return true;
  const unsigned short *units = static_cast<const unsigned short *>(utf16);
  count = 0;
  int limit = byteLength == -1 ? INT_MAX : (byteLength < 1 ? 0 : byteLength / 2);
  if (limit == 0 || units[0] == 0)
    return true;
  int n = 0;
  for (; n < limit && units[n] != 0; ++n) {
    if (units[n] > 127) {
      count = -1;
      return false;
    }
  }
  count = n;
  return true;
}

// ---- Construction ------------------------------------------------------------------

void I18NString::initMembers(I18N_STRINGBUFFER_ALLOCATOR_CALLBACK allocator, void *context) {
  m_pExternalBuffer = nullptr;
  m_pUnicodeString = nullptr;
  m_pAllocator = allocator;
  m_pAllocatorContext = context;
  m_pByteForms = nullptr;
  m_externalBufferSize = 0;
  m_pUTF16Buffer = nullptr;
  m_normalizationForm = 0;
  m_flags = FLAG_NORMALIZED;
  m_inlineAscii[0] = '\0';
  m_pAsciiBuffer = m_inlineAscii;
  m_asciiBufCapacity = INLINE_ASCII_SIZE;
  m_asciiBufLength = 0;
}

I18NString::I18NString() { initMembers(nullptr, nullptr); }

I18NString::I18NString(I18N_STRINGBUFFER_ALLOCATOR_CALLBACK allocator, void *context) {
  initMembers(allocator, context);
}

I18NString::I18NString(const I18NString &other, I18N_STRINGBUFFER_ALLOCATOR_CALLBACK allocator, void *context) {
  if (allocator != nullptr)
    initMembers(allocator, context);
  else
    initMembers(other.m_pAllocator, other.m_pAllocatorContext);
  // ASCII content: one block of the right size (none for short text) and
  // one copy.
  icu::UnicodeString *form = other.unicodeForm();
  if (form == nullptr || (other.m_asciiBufLength >= 0 && other.m_pExternalBuffer == nullptr)) {
    int n = other.m_asciiBufLength;
    if (n >= INLINE_ASCII_SIZE) {
      m_pAsciiBuffer = static_cast<char *>(allocateBlock(nullptr, n + 1));
      m_asciiBufCapacity = n + 1;
    }
    std::memcpy(m_pAsciiBuffer, other.m_pAsciiBuffer, static_cast<std::size_t>(n) + 1);
    m_asciiBufLength = n;
    m_flags = static_cast<unsigned char>(other.m_flags & ~FLAG_STATIC_EXTERNAL_BUFFER);
    m_normalizationForm = other.m_normalizationForm;
    return;
  }
  try {
    copyFrom(other);
    m_flags = static_cast<unsigned char>(other.m_flags & ~FLAG_STATIC_EXTERNAL_BUFFER);
    m_normalizationForm = other.m_normalizationForm;
  } catch (...) {
    destroy();
    throw;
  }
}

I18NString::I18NString(I18NString &&other) noexcept {
  initMembers(other.m_pAllocator, other.m_pAllocatorContext);
  moveFrom(other);
}

I18NString::I18NString(int capacity, I18N_STRINGBUFFER_ALLOCATOR_CALLBACK allocator, void *context) {
  initMembers(allocator, context);
  if (capacity > 0)
    reserveAscii(capacity);
}

I18NString::I18NString(unsigned int codePoint, int count, I18N_STRINGBUFFER_ALLOCATOR_CALLBACK allocator,
                       void *context) {
  initMembers(allocator, context);
  try {
    assignRepeat(codePoint, count);
  } catch (...) {
    destroy();
    throw;
  }
}

I18NString::I18NString(int initialSize, unsigned int codePoint, int count,
                       I18N_STRINGBUFFER_ALLOCATOR_CALLBACK allocator, void *context) {
  initMembers(allocator, context);
  try {
    if (initialSize > 0 && codePoint < 0x80 && !isForceUnicodeString())
      reserveAscii(initialSize > count ? initialSize : count);
    assignRepeat(codePoint, count);
  } catch (...) {
    destroy();
    throw;
  }
}

I18NString::I18NString(const unsigned int *codePoints, I18N_STRINGBUFFER_ALLOCATOR_CALLBACK allocator, void *context) {
  initMembers(allocator, context);
  try {
    assignCodePoints(codePoints);
  } catch (...) {
    destroy();
    throw;
  }
}

I18NString::I18NString(const char *bytes, const char *encoding, int length,
                       I18N_STRINGBUFFER_ALLOCATOR_CALLBACK allocator, void *context) {
  initMembers(allocator, context);
  // The common case first: ASCII bytes in an ASCII-compatible encoding go
  // straight into a buffer of their size, checked while they are copied.
  if (bytes != nullptr && length >= -1 && !isForceUnicodeString() && asciiCompatibleName(encoding)) {
    std::size_t n = length == -1 ? std::strlen(bytes) : static_cast<std::size_t>(length < 1 ? 0 : length);
    if (n > 0 && length != -1 && bytes[n - 1] == '\0')
      --n; // the caller counted the terminator
    if (n < INLINE_ASCII_SIZE) {
      // Short text: the inline buffer, no allocation.
      if (copyAscii(m_inlineAscii, bytes, n) == n) {
        m_inlineAscii[n] = '\0';
        m_asciiBufLength = static_cast<int>(n);
        m_flags |= FLAG_CHANGED;
        return;
      }
      m_inlineAscii[0] = '\0';
    } else if (n < static_cast<std::size_t>(INT_MAX)) {
      if (!asciiHead(bytes, n)) {
        // Clearly not ASCII: straight to the Unicode form (a new string has
        // nothing to release and cannot alias the bytes).
        try {
          createFromAscii(bytes, length, encoding, nullptr);
        } catch (...) {
          destroy();
          throw;
        }
        return;
      }
      // The C heap directly when no allocator is set (the usual case).
      char *buffer;
      if (allocator == nullptr) {
        buffer = static_cast<char *>(XYLUtMemory::malloc(n + 1));
        if (buffer == nullptr)
          raiseHeapFailure();
      } else {
        buffer = static_cast<char *>(allocateBlock(nullptr, static_cast<int>(n) + 1));
      }
      if (copyAscii(buffer, bytes, n) == n) {
        buffer[n] = '\0';
        m_pAsciiBuffer = buffer;
        m_asciiBufCapacity = static_cast<int>(n) + 1;
        m_asciiBufLength = static_cast<int>(n);
        m_flags |= FLAG_CHANGED;
        return;
      }
      freeBlock(buffer);
    }
  }
  try {
    assignBytes(bytes, length, encoding, nullptr);
  } catch (...) {
    destroy();
    throw;
  }
}

I18NString::I18NString(const char *bytes, const I18NConverter &converter, int length,
                       I18N_STRINGBUFFER_ALLOCATOR_CALLBACK allocator, void *context) {
  initMembers(allocator, context);
  try {
    // A converter holds conversion state; converting through one changes
    // that state even though the caller lends it as const.
    I18NConverter &conv = const_cast<I18NConverter &>(converter);
    assignBytes(bytes, length, conv.getEncoding(), &conv);
  } catch (...) {
    destroy();
    throw;
  }
}

I18NString::I18NString(const void *utf16, int byteLength, I18N_STRINGBUFFER_ALLOCATOR_CALLBACK allocator,
                       void *context) {
  initMembers(allocator, context);
  try {
    setTo(utf16, byteLength);
  } catch (...) {
    destroy();
    throw;
  }
}

I18NString::I18NString(const icu::UnicodeString &text, I18N_STRINGBUFFER_ALLOCATOR_CALLBACK allocator, void *context) {
  initMembers(allocator, context);
  try {
    setTo(text);
  } catch (...) {
    destroy();
    throw;
  }
}

I18NString::~I18NString() {
  // Most strings own nothing, or at most an ASCII buffer from the C heap:
  // those are done here, and the rest goes out of line, which keeps this
  // path free of register saves.
  if ((m_pByteForms == nullptr) & (m_pUnicodeString == nullptr)) {
    if (m_pAsciiBuffer == m_inlineAscii)
      return;
    if (m_pAllocator == nullptr) {
      XYLUtMemory::free(m_pAsciiBuffer);
      return;
    }
  }
  I18NStringAccess::releaseOwned(*this);
}

void I18NStringAccess::releaseOwned(I18NString &s) {
  if (s.m_pByteForms != nullptr)
    s.releaseByteForms();
  if (s.m_pUnicodeString != nullptr)
    s.releaseUnicode();
  if (s.m_pAsciiBuffer != s.m_inlineAscii)
    s.freeBlock(s.m_pAsciiBuffer);
}

I18NByteWriter::~I18NByteWriter() = default;

// ---- Buffers and forms ---------------------------------------------------------------

// Makes the ASCII buffer at least `newSize` bytes, keeping its content.
void I18NString::createAsciiBuffer(int newSize) {
  // clang-format off
  XYL_ASSERT(newSize >= 0);
  // clang-format on
  if (newSize <= m_asciiBufCapacity)
    return;
  if (m_pAsciiBuffer == m_inlineAscii) {
    char *block = static_cast<char *>(allocateBlock(nullptr, newSize));
    int keep = m_asciiBufLength > 0 ? m_asciiBufLength : 0;
    std::memcpy(block, m_inlineAscii, static_cast<std::size_t>(keep));
    block[keep] = '\0';
    m_pAsciiBuffer = block;
  } else {
    m_pAsciiBuffer = static_cast<char *>(allocateBlock(m_pAsciiBuffer, newSize));
  }
  m_asciiBufCapacity = newSize;
}

// Room for `characters` bytes plus the terminator, keeping the content.
void I18NString::reserveAscii(int characters) {
  if (characters < m_asciiBufCapacity)
    return;
  long wanted = static_cast<long>(characters) + 1;
  long grown = static_cast<long>(m_asciiBufCapacity) + m_asciiBufCapacity / 2;
  if (grown > wanted)
    wanted = grown;
  if (wanted > INT_MAX)
    wanted = INT_MAX;
  createAsciiBuffer(static_cast<int>(wanted));
}

// Back to the (empty) inline buffer.
void I18NString::releaseAscii() {
  if (m_pAsciiBuffer != m_inlineAscii)
    freeBlock(m_pAsciiBuffer);
  m_pAsciiBuffer = m_inlineAscii;
  m_inlineAscii[0] = '\0';
  m_asciiBufCapacity = INLINE_ASCII_SIZE;
  m_asciiBufLength = 0;
}

// Allocates and publishes an empty Unicode form (writers only).
void I18NString::create() {
  if (m_pUnicodeString != nullptr)
    return;
  void *memory = allocateBlock(nullptr, static_cast<int>(sizeof(icu::UnicodeString)));
  icu::UnicodeString *form = new (memory) icu::UnicodeString();
  countUnicodeForm();
  __atomic_store_n(&m_pUnicodeString, form, __ATOMIC_RELEASE);
}

// Fills the Unicode form from the ASCII buffer.
void I18NString::setFromAscii() {
  icu::UnicodeString *form = m_pUnicodeString;
  int length = m_asciiBufLength < 0 ? 0 : m_asciiBufLength;
  char16_t *units = form->getBuffer(length + 1);
  if (units == nullptr)
    raiseHeapFailure();
  widenAscii(units, m_pAsciiBuffer, static_cast<std::size_t>(length));
  form->releaseBuffer(length);
}

// The Unicode form, made on demand. A const operation may call this while
// other threads read the string: the new form is built aside and published
// under the stripe lock; the ASCII buffer is not touched.
icu::UnicodeString &I18NString::forceUnicode() const {
  icu::UnicodeString *form = unicodeForm();
  if (form != nullptr)
    return *form;
  XYLThreadGuard guard(getLockFromPtr(this));
  form = unicodeForm();
  if (form != nullptr)
    return *form;
  void *memory = allocateBlock(nullptr, static_cast<int>(sizeof(icu::UnicodeString)));
  form = new (memory) icu::UnicodeString();
  countUnicodeForm();
  int length = m_asciiBufLength < 0 ? 0 : m_asciiBufLength;
  char16_t *units = form->getBuffer(length + 1);
  if (units == nullptr) {
    form->~UnicodeString();
    freeBlock(memory);
    raiseHeapFailure();
  }
  widenAscii(units, m_pAsciiBuffer, static_cast<std::size_t>(length));
  units[length] = 0;
  form->releaseBuffer(length);
  const unsigned short *terminated = reinterpret_cast<const unsigned short *>(form->getTerminatedBuffer());
  I18NString *self = const_cast<I18NString *>(this);
  __atomic_store_n(&self->m_pUTF16Buffer, terminated, __ATOMIC_RELEASE);
  __atomic_store_n(&self->m_pUnicodeString, form, __ATOMIC_RELEASE);
  return *form;
}

// The Unicode form for a writer that is about to change it: from then on the
// ASCII buffer no longer mirrors the content.
icu::UnicodeString &I18NString::unicodeForWrite() {
  if (m_pUnicodeString == nullptr) {
    create();
    setFromAscii();
  }
  if (m_asciiBufLength >= 0) {
    releaseAscii();
    m_asciiBufLength = -1;
  }
  return *m_pUnicodeString;
}

void I18NString::releaseUnicode() {
  icu::UnicodeString *form = m_pUnicodeString;
  if (form == nullptr)
    return;
  __atomic_store_n(&m_pUnicodeString, static_cast<icu::UnicodeString *>(nullptr), __ATOMIC_RELEASE);
  __atomic_store_n(&m_pUTF16Buffer, static_cast<const unsigned short *>(nullptr), __ATOMIC_RELEASE);
  form->~UnicodeString();
  freeBlock(form);
}

void I18NString::setChangedFlag(bool changed) {
  if (changed) {
    m_flags |= FLAG_CHANGED;
    if (m_pByteForms != nullptr)
      releaseByteForms();
  } else {
    m_flags &= static_cast<unsigned char>(~FLAG_CHANGED);
  }
}

void I18NString::refreshUTF16Buffer() {
  const unsigned short *units = nullptr;
  if (m_pUnicodeString != nullptr)
    units = reinterpret_cast<const unsigned short *>(m_pUnicodeString->getTerminatedBuffer());
  __atomic_store_n(&m_pUTF16Buffer, units, __ATOMIC_RELEASE);
}

// After every change of the Unicode form: mark it, keep an attached buffer in
// step and refresh the cached UTF-16 pointer.
void I18NString::afterUnicodeChange() {
  setChangedFlag(true);
  m_flags &= static_cast<unsigned char>(~FLAG_NORMALIZED);
  m_normalizationForm = 0;
  refreshUTF16Buffer();
  if (m_pExternalBuffer != nullptr && m_pUnicodeString->getBuffer() != m_pExternalBuffer) {
    resizeExternalBuffer();
    refreshUTF16Buffer();
  }
}

void I18NString::destroy() {
  releaseByteForms();
  if (m_pUnicodeString != nullptr)
    releaseUnicode();
  releaseAscii();
  m_pExternalBuffer = nullptr;
  m_externalBufferSize = 0;
  m_flags =
      static_cast<unsigned char>((m_flags & (FLAG_SKIP_COMPATIBILITY | FLAG_NORMALIZATION_OFF)) | FLAG_NORMALIZED);
  m_normalizationForm = 0;
}

void I18NString::remove() {
  if (m_pExternalBuffer != nullptr) {
    unicodeForWrite().remove();
    afterUnicodeChange();
    m_flags |= FLAG_NORMALIZED;
    return;
  }
  if (m_pUnicodeString != nullptr)
    releaseUnicode();
  m_pAsciiBuffer[0] = '\0';
  m_asciiBufLength = 0;
  setChangedFlag(true);
  m_flags |= FLAG_NORMALIZED;
}

// ---- UTF-16 access ------------------------------------------------------------------------

const unsigned short *I18NString::getUTF16Buffer() const {
  forceUnicode();
  return __atomic_load_n(&m_pUTF16Buffer, __ATOMIC_ACQUIRE);
}

const icu::UnicodeString &I18NString::getUnicodeString() const { return forceUnicode(); }

// ---- Conversion from bytes ------------------------------------------------------------------

void I18NString::createFromAscii(const char *bytes, int length, const char *encoding, I18NConverter *converter) {
  if (length == 0) {
    remove();
    return;
  }
  // Valid UTF-8 takes the direct path through ICU's decoder: it is exact and
  // faster than a converter. Invalid input falls through to the converter,
  // whose unconvertible-sequence modes decide what happens.
  if (utf8Name(encoding)) {
    std::size_t n = length == -1 ? std::strlen(bytes) : static_cast<std::size_t>(length);
    if (length > 0 && bytes[length - 1] == '\0')
      --n; // the caller counted the terminator
    if (n >= static_cast<std::size_t>(INT_MAX / 2))
      raiseHeapFailure();
    // UTF-8 never needs more UTF-16 units than it has bytes. The leading
    // ASCII run is widened here; ICU's decoder takes the rest.
    std::size_t prefix = asciiPrefix(bytes, n);
    if (m_pUnicodeString == nullptr) {
      // The content is replaced as a whole: a new, empty form will do, with
      // nothing widened from the ASCII buffer first.
      create();
      if (m_asciiBufLength >= 0) {
        releaseAscii();
        m_asciiBufLength = -1;
      }
    }
    icu::UnicodeString &form = unicodeForWrite();
    char16_t *target = form.getBuffer(static_cast<int32_t>(n) + 1);
    if (target == nullptr)
      raiseHeapFailure();
    widenAscii(target, bytes, prefix);
    UErrorCode status = U_ZERO_ERROR;
    int32_t written = 0;
    u_strFromUTF8(target + prefix, static_cast<int32_t>(n - prefix) + 1, &written, bytes + prefix,
                  static_cast<int32_t>(n - prefix), &status);
    if (U_SUCCESS(status)) {
      form.releaseBuffer(static_cast<int32_t>(prefix) + written);
      afterUnicodeChange();
      return;
    }
    form.releaseBuffer(0);
    length = static_cast<int>(n);
  }
  std::optional<I18NConverterUTF8> utf8;
  std::optional<I18NConverterUTF16> utf16;
  std::optional<I18NConverterPlatformDefault> platform;
  std::optional<I18NConverter> named;
  if (converter == nullptr) {
    if (I18NConverter::isUTF8(encoding)) {
      utf8.emplace();
      converter = &utf8->getConverter();
    } else if (I18NConverter::isUTF16(encoding)) {
      utf16.emplace();
      converter = &utf16->getConverter();
    } else if (I18NConverter::isPlatformDefault(encoding)) {
      platform.emplace();
      converter = &platform->getConverter();
    } else {
      named.emplace(encoding);
      converter = &*named;
    }
  }
  int sourceLength = length;
  long capacity; // in UTF-16 units, terminator included
  if (length == -1) {
    int width = converter->getMinCharSize();
    std::size_t bytesCounted = 0;
    if (width <= 1) {
      bytesCounted = std::strlen(bytes);
    } else {
      for (;;) {
        bool zero = true;
        for (int k = 0; k < width; ++k)
          zero = zero && bytes[bytesCounted + k] == '\0';
        if (zero)
          break;
        bytesCounted += static_cast<std::size_t>(width);
      }
    }
    if (bytesCounted >= static_cast<std::size_t>(INT_MAX / 2))
      raiseHeapFailure();
    sourceLength = static_cast<int>(bytesCounted);
  }
  if (sourceLength >= INT_MAX / 2 - 1)
    raiseHeapFailure();
  capacity = static_cast<long>(sourceLength) + 1;
  icu::UnicodeString &form = unicodeForWrite();
  for (int attempt = 0; attempt < 2; ++attempt) {
    converter->reset();
    char16_t *target = form.getBuffer(static_cast<int32_t>(capacity));
    if (target == nullptr)
      raiseHeapFailure();
    I18NErrorCodes error = I18N_SUCCESS;
    int produced = converter->toUnicode(bytes, sourceLength, reinterpret_cast<unsigned short *>(target),
                                        static_cast<int>(capacity * 2), &error);
    if (error == I18N_BUFFER_TOO_SMALL && attempt == 0 && produced > 0) {
      form.releaseBuffer(0);
      capacity = produced / 2 + 1;
      continue;
    }
    if (error != I18N_SUCCESS) {
      form.releaseBuffer(0);
      afterUnicodeChange();
      raiseConversionFailure(error);
    }
    form.releaseBuffer(produced / 2);
    afterUnicodeChange();
    return;
  }
}
