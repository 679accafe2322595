// SPDX-License-Identifier: Apache-2.0
// I18NString: external buffers (UTF-16 living in a caller's buffer), the
// external-buffer free functions and the code point classes.
//
// An attached buffer is the storage of the Unicode form (an ICU writable
// alias). After every change the form is terminated; when ICU had to move
// the text to a buffer of its own (the caller's was too small),
// resizeExternalBuffer regrows the caller's buffer through the allocator
// callback and moves the text back, or, for a static buffer, detaches it
// and throws.
#include <XYLCore/Utility/XYLUtMemory.h>
#include <XYLCore/i18n/cpp/i18n_string.h>

#include "i18n_string_internal.h"

#include <climits>
#include <unicode/uchar.h>
#include <unicode/ustring.h>

using namespace i18n_string_detail;

void I18NString::attachExternal(unsigned short *buffer, int capacityUnits, int lengthUnits, int byteSize) {
  releaseByteForms();
  releaseUnicode();
  releaseAscii();
  m_asciiBufLength = -1;
  create();
  m_pUnicodeString->setTo(reinterpret_cast<char16_t *>(buffer), lengthUnits, capacityUnits);
  m_pExternalBuffer = buffer;
  m_externalBufferSize = byteSize;
  if (m_pAllocator == nullptr)
    m_flags |= FLAG_STATIC_EXTERNAL_BUFFER;
  else
    m_flags &= static_cast<unsigned char>(~FLAG_STATIC_EXTERNAL_BUFFER);
  afterUnicodeChange();
}

void I18NString::attach(void *buffer, int byteSize) {
  if (buffer == nullptr || byteSize < 2) {
    // Nothing to attach: keep the content in the string's own storage.
    if (m_pExternalBuffer != nullptr) {
      icu::UnicodeString copy(*m_pUnicodeString);
      m_pExternalBuffer = nullptr;
      m_flags &= static_cast<unsigned char>(~FLAG_STATIC_EXTERNAL_BUFFER);
      *m_pUnicodeString = copy;
      afterUnicodeChange();
    }
    return;
  }
  unsigned short *units = static_cast<unsigned short *>(buffer);
  int capacity = byteSize / 2;
  int length = 0;
  while (length < capacity && units[length] != 0)
    ++length;
  if (length == capacity) {
    // No terminator within the buffer: the last unit becomes one.
    --length;
    units[length] = 0;
  }
  attachExternal(units, capacity, length, byteSize);
}

void I18NString::_attach(unsigned short *buffer, int capacity, int length) {
  if (buffer == nullptr || capacity < 1) {
    attach(nullptr, 0);
    return;
  }
  if (length < 0) {
    length = 0;
    while (length < capacity && buffer[length] != 0)
      ++length;
  }
  if (length >= capacity) {
    length = capacity - 1;
    buffer[length] = 0;
  }
  attachExternal(buffer, capacity, length, capacity > INT_MAX / 2 ? INT_MAX : capacity * 2);
}

void *I18NString::getExternalBuffer() const { return m_pExternalBuffer; }

void I18NString::resizeExternalBuffer() {
  if (m_pExternalBuffer == nullptr || m_pUnicodeString == nullptr)
    return;
  if ((m_flags & FLAG_STATIC_EXTERNAL_BUFFER) != 0) {
    m_pExternalBuffer = nullptr;
    m_externalBufferSize = 0;
    m_flags &= static_cast<unsigned char>(~FLAG_STATIC_EXTERNAL_BUFFER);
    raiseRuntime(I18N_GENERAL_FAILURE, "Cannot resize a static external buffer.");
  }
  icu::UnicodeString &form = *m_pUnicodeString;
  int units = form.length();
  if (units >= INT_MAX / 4)
    raiseHeapFailure();
  // Room for the text and its terminator, with some slack for growth.
  int capacity = units + 1 + units / 2;
  void *grown = allocateBlock(m_pExternalBuffer, capacity * 2);
  char16_t *target = static_cast<char16_t *>(grown);
  u_memcpy(target, form.getBuffer(), units);
  target[units] = 0;
  form.setTo(target, units, capacity);
  m_pExternalBuffer = grown;
  m_externalBufferSize = capacity * 2;
}

int I18NString::copyToExternalBuffer(void *buffer, int byteSize) const {
  const icu::UnicodeString &form = forceUnicode();
  if (buffer == nullptr || byteSize <= 0)
    return I18N_BUFFER_TOO_SMALL;
  if (byteSize < 4) {
    std::memset(buffer, 0, static_cast<std::size_t>(byteSize));
    return I18N_BUFFER_TOO_SMALL;
  }
  int room = byteSize / 2 - 1;
  int units = form.length();
  int n = units < room ? units : room;
  char16_t *target = static_cast<char16_t *>(buffer);
  u_memcpy(target, form.getBuffer(), n);
  target[n] = 0;
  return n == units ? I18N_SUCCESS : I18N_BUFFER_TOO_SMALL;
}

// ---- Free functions -----------------------------------------------------------------------

bool I18NCodePointIsDigit(unsigned int codePoint) { return u_isdigit(static_cast<UChar32>(codePoint)) != 0; }
bool I18NCodePointIsLetter(unsigned int codePoint) { return u_isalpha(static_cast<UChar32>(codePoint)) != 0; }
bool I18NCodePointIsSpace(unsigned int codePoint) { return u_isspace(static_cast<UChar32>(codePoint)) != 0; }
bool I18NCodePointIsWhitespace(unsigned int codePoint) { return u_isWhitespace(static_cast<UChar32>(codePoint)) != 0; }
bool I18NCodePointIsPunctuation(unsigned int codePoint) { return u_ispunct(static_cast<UChar32>(codePoint)) != 0; }
bool I18NCodePointIsAlphanumeric(unsigned int codePoint) { return u_isalnum(static_cast<UChar32>(codePoint)) != 0; }

int I18NExternalBufferNumBytes(const void *buffer) {
  if (buffer == nullptr)
    return 0;
  return (u_strlen(static_cast<const char16_t *>(buffer)) + 1) * 2;
}

int I18NExternalBufferNumCodePoints(const void *buffer) {
  if (buffer == nullptr)
    return 0;
  return u_countChar32(static_cast<const char16_t *>(buffer), -1);
}

namespace {
// realloc through the callback (null: the library's default), reporting the
// callback's error code.
I18NErrorCodes regrow(I18N_STRINGBUFFER_ALLOCATOR_CALLBACK allocator, void *context, void *&block, int size) {
  if (allocator == nullptr)
    allocator = I18NDefaultStringBufferAllocator;
  int error = 0;
  char *result = allocator(context, static_cast<char *>(block), size, &error);
  if (error != 0)
    return static_cast<I18NErrorCodes>(error);
  if (result == nullptr)
    return I18N_ALLOCATION_FAILURE;
  block = result;
  return I18N_SUCCESS;
}
} // namespace

I18NErrorCodes I18NExternalBufferCopy(void *&target, const void *source, I18N_STRINGBUFFER_ALLOCATOR_CALLBACK allocator,
                                      void *context) {
  static const char16_t kEmpty[1] = {0};
  if (source == nullptr)
    source = kEmpty;
  if (source == target)
    return I18N_SUCCESS;
  int bytes = I18NExternalBufferNumBytes(source);
  void *block = target;
  I18NErrorCodes error = regrow(allocator, context, block, bytes);
  if (error != I18N_SUCCESS)
    return error;
  std::memcpy(block, source, static_cast<std::size_t>(bytes));
  target = block;
  return I18N_SUCCESS;
}

I18NErrorCodes I18NExternalBufferConcat(void *&target, const void *source,
                                        I18N_STRINGBUFFER_ALLOCATOR_CALLBACK allocator, void *context) {
  if (target == nullptr)
    return I18NExternalBufferCopy(target, source, allocator, context);
  if (source == nullptr)
    return I18N_SUCCESS;
  int head = I18NExternalBufferNumBytes(target) - 2;
  int tail = I18NExternalBufferNumBytes(source);
  if (static_cast<long>(head) + tail >= INT_MAX)
    return I18N_ALLOCATION_FAILURE;
  // Appending a buffer to itself: the source moves with a regrown target.
  bool self = source == target;
  void *block = target;
  I18NErrorCodes error = regrow(allocator, context, block, head + tail);
  if (error != I18N_SUCCESS)
    return error;
  const void *from = self ? block : source;
  std::memmove(static_cast<char *>(block) + head, from, static_cast<std::size_t>(tail - 2));
  static_cast<char16_t *>(block)[(head + tail) / 2 - 1] = 0;
  target = block;
  return I18N_SUCCESS;
}

namespace {
template <typename Out, typename In> I18NTransformationResult transform(Out *&out, const In *in, bool copy) {
  if (in == nullptr || !copy) {
    out = const_cast<Out *>(reinterpret_cast<const Out *>(in));
    return I18N_TRANSFORMATION_ALIASED;
  }
  int bytes = I18NExternalBufferNumBytes(in);
  void *block = XYLUtMemory::malloc(static_cast<std::size_t>(bytes));
  if (block == nullptr) {
    out = nullptr;
    return I18N_TRANSFORMATION_FAILED;
  }
  std::memcpy(block, in, static_cast<std::size_t>(bytes));
  out = static_cast<Out *>(block);
  return I18N_TRANSFORMATION_COPIED;
}
} // namespace

I18NTransformationResult I18NUTF16ToExternalBuffer(void *&out, const unsigned short *in, bool copy) {
  return transform<void, unsigned short>(out, in, copy);
}

I18NTransformationResult I18NExternalBufferToUTF16(unsigned short *&out, const void *in, bool copy) {
  return transform<unsigned short, void>(out, in, copy);
}

I18NErrorCodes I18NFreeBuffer(char *&buffer) {
  XYLUtMemory::free(buffer);
  buffer = nullptr;
  return I18N_SUCCESS;
}

I18NErrorCodes I18NFreeBuffer(void *&buffer) {
  XYLUtMemory::free(buffer);
  buffer = nullptr;
  return I18N_SUCCESS;
}

I18NErrorCodes I18NFreeBuffer(unsigned short *&buffer) {
  XYLUtMemory::free(buffer);
  buffer = nullptr;
  return I18N_SUCCESS;
}
