// SPDX-License-Identifier: Apache-2.0
// I18NString: construction, memory, the two modes, queries and modification.
// Searching, LIKE patterns, normalisation, byte output and external buffers
// live in the companion i18n_string_*.cpp files; every raise of the class
// goes through the helpers at the top of this file, so that traces name
// "i18n/cpp/i18n_string".
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

void raiseAllocatorFailure() {
  XYL_THROW(XYLOutOfMemoryError(-1L, "The specified allocator callback failed to allocate memory."));
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
      raiseAllocatorFailure();
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

// A writer may keep working in ASCII mode: no attached buffer and either no
// Unicode form or one made lazily from a still valid ASCII buffer (dropped).
static inline bool asciiWritable(bool external, icu::UnicodeString *form, int asciiLength) {
  return !external && (form == nullptr || asciiLength >= 0);
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
