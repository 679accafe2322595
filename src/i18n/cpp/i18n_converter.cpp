// SPDX-License-Identifier: Apache-2.0
// Code page converters: I18NConverter over one ICU converter (opening,
// cloning, modes, conversions and the name tests). The library's ICU
// callbacks live in i18n_converter_callbacks.cpp, the pools in
// i18n_converter_pools.cpp and the default encodings in
// i18n_converter_platform.cpp.
#include "i18n/cpp/i18n_internal.h"
#include "i18n/cpp/i18n_os.h"
#include "i18n/cpp/i18n_testpeer.h"

#include <XYLCore/ExceptionHierarchy/XYLErrors.h>
#include <XYLCore/Threads/XYLThreadGuard.h>
#include <XYLCore/Utility/XYLUtMemory.h>
#include <XYLCore/i18n/cpp/i18n_internalresources.h>

#include <unicode/putil.h>
#include <unicode/ucnv.h>
#include <unicode/ucnv_cb.h>
#include <unicode/ucnv_err.h>
#include <unicode/udata.h>
#include <unicode/unistr.h>
#include <unicode/ustring.h>
#include <unicode/utf16.h>

#include <atomic>
#include <cstdio>
#include <cstring>
#include <new>
#include <string>

namespace {

using i18n_detail::kToolkitDefault;
using i18n_detail::kUTF16Platform;
using i18n_detail::kUTF32Platform;
using i18n_detail::UCNV_FROM_U_CALLBACK_RESOURCES;
using i18n_detail::UCNV_FROM_U_CALLBACK_USER;
using i18n_detail::UCNV_TO_U_CALLBACK_RESOURCES;
using i18n_detail::UCNV_TO_U_CALLBACK_USER;

std::atomic<long> gOpenCount{0};
std::atomic<long> gCloneCount{0};
std::atomic<bool> gDataDirectoryChecked{false};

bool lowerEquals(const char *a, const char *b) {
  for (;; ++a, ++b) {
    char ca = *a, cb = *b;
    if (ca >= 'A' && ca <= 'Z')
      ca = static_cast<char>(ca - 'A' + 'a');
    if (ca != cb)
      return false;
    if (ca == 0)
      return true;
  }
}

// `prefix` is lower case.
bool lowerStartsWith(const char *text, const char *prefix) {
  for (; *prefix; ++text, ++prefix) {
    char c = *text;
    if (c >= 'A' && c <= 'Z')
      c = static_cast<char>(c - 'A' + 'a');
    if (c != *prefix)
      return false;
  }
  return true;
}

bool icuFailed(UErrorCode status) { return U_FAILURE(status) != 0; }

// Once per process: with no data directory configured, ICU looks in ".".
void ensureDataDirectory() {
  if (gDataDirectoryChecked.load(std::memory_order_acquire))
    return;
  const char *dir = u_getDataDirectory();
  if (dir == nullptr || *dir == '\0')
    u_setDataDirectory(".");
  gDataDirectoryChecked.store(true, std::memory_order_release);
}

// Maps the outcome of a whole-buffer conversion to the library's codes.
I18NErrorCodes conversionStatus(UErrorCode status) {
  if (status == U_BUFFER_OVERFLOW_ERROR || status == U_STRING_NOT_TERMINATED_WARNING)
    return I18N_BUFFER_TOO_SMALL;
  if (icuFailed(status))
    return I18N_GENERAL_FAILURE;
  return I18N_SUCCESS;
}

// The same for a caller's buffer: a result that fits exactly, without room
// for the terminator, is complete.
I18NErrorCodes callerBufferStatus(UErrorCode status) {
  return conversionStatus(status == U_STRING_NOT_TERMINATED_WARNING ? U_ZERO_ERROR : status);
}

void setError(I18NErrorCodes *error, I18NErrorCodes value) {
  if (error != nullptr)
    *error = value;
}

// The C-heap allocator used when an allocating form gets no callback.
char *heapAllocator(void *, char *buffer, int newSize, int *error) {
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

char *allocateResult(I18N_STRINGBUFFER_ALLOCATOR_CALLBACK allocator, void *context, int bytes) {
  if (allocator == nullptr)
    allocator = heapAllocator;
  int status = 0;
  char *block = allocator(context, nullptr, bytes, &status);
  if (block == nullptr || status != 0) {
    if (block != nullptr)
      allocator(context, block, 0, nullptr);
    long code = status == I18N_NEGATIVE_ALLOCATION_SIZE ? I18N_NEGATIVE_ALLOCATION_SIZE : I18N_ALLOCATION_FAILURE;
    XYL_THROW(I18NRuntimeError(code, "Memory allocation failed."));
  }
  return block;
}

void freeResult(I18N_STRINGBUFFER_ALLOCATOR_CALLBACK allocator, void *context, char *block) {
  if (allocator == nullptr)
    allocator = heapAllocator;
  allocator(context, block, 0, nullptr);
}

} // namespace

void i18n_detail::countClone() { gCloneCount.fetch_add(1, std::memory_order_relaxed); }

void i18n_detail::raiseConverterOutOfMemory() { XYL_THROW(XYLOutOfMemoryError(0L, nullptr)); }

// ---- I18NConverter ---------------------------------------------------------

I18NConverter::I18NConverter()
    : m_inputMode(I18N_UNCONVERTIBLE_REPLACE), m_outputMode(I18N_UNCONVERTIBLE_REPLACE), m_userInputCallback(nullptr),
      m_userOutputCallback(nullptr), m_ownsClone(false), m_pNextInPool(nullptr), m_reserved(nullptr),
      m_stateless(false), m_maxCharSize(0), m_minCharSize(0), m_pConverter(nullptr), m_cloneSize(0),
      m_pEncoding(nullptr), m_pContext(nullptr) {}

I18NConverter::I18NConverter(const char *encoding) : I18NConverter() {
  if (encoding == nullptr || *encoding == '\0')
    encoding = kToolkitDefault;
  // Every encoding is pooled once the layer is initialised.
  if (I18NConverterPools::takeNamed(*this, encoding))
    return;
  try {
    create(encoding);
  } catch (...) {
    release();
    throw;
  }
}

I18NConverter::I18NConverter(const I18NConverter &other) : I18NConverter() {
  try {
    create(other);
  } catch (...) {
    release();
    throw;
  }
}

I18NConverter &I18NConverter::operator=(const I18NConverter &other) {
  if (this != &other)
    create(other);
  return *this;
}

I18NConverter::~I18NConverter() { release(); }

void I18NConverter::release() {
  if (m_reserved != nullptr)
    I18NConverterPools::giveNamed(*this); // leaves nothing to free
  if (m_pConverter != nullptr)
    ucnv_close(m_pConverter);
  m_pConverter = nullptr;
  m_ownsClone = false;
  if (m_pEncoding != nullptr && m_pEncoding != kToolkitDefault)
    XYLUtMemory::free(const_cast<char *>(m_pEncoding));
  m_pEncoding = nullptr;
  delete m_pContext;
  m_pContext = nullptr;
}

void I18NConverter::setName(const char *encoding) {
  const char *copy = kToolkitDefault;
  if (std::strcmp(encoding, kToolkitDefault) != 0) {
    copy = XYLUtMemory::strdup(encoding);
    if (copy == nullptr)
      XYL_THROW(XYLOutOfMemoryError(0L, nullptr));
  }
  if (m_pEncoding != nullptr && m_pEncoding != kToolkitDefault)
    XYLUtMemory::free(const_cast<char *>(m_pEncoding));
  m_pEncoding = copy;
  if (m_pContext != nullptr)
    m_pContext->encoding = m_pEncoding;
}

void I18NConverter::create(const char *encoding) {
  ensureDataDirectory();
  UErrorCode status = U_ZERO_ERROR;
  const char *name = encoding;
  const char *alias = ucnv_getAlias(encoding, 0, &status);
  if (!icuFailed(status) && alias != nullptr) {
    if (std::strcmp(alias, "UTF-16") == 0)
      name = kUTF16Platform;
    else if (std::strcmp(alias, "UTF-32") == 0)
      name = kUTF32Platform;
  }
  status = U_ZERO_ERROR;
  UConverter *converter = ucnv_open(name, &status);
  if (converter == nullptr || icuFailed(status)) {
    if (converter != nullptr)
      ucnv_close(converter);
    char message[128];
    std::snprintf(message, sizeof message, "The specified encoding is not valid: \"%.60s\".", encoding);
    XYL_THROW(I18NRuntimeError(I18N_INVALID_ENCODING, message));
  }
  gOpenCount.fetch_add(1, std::memory_order_relaxed);
  m_pConverter = converter;
  m_ownsClone = false;
  // Clones are made with ucnv_clone, which sizes its own memory; the size
  // is kept only as the converter's footprint for diagnostics.
  m_cloneSize = 0;
  ucnv_setFallback(m_pConverter, true);
  m_maxCharSize = ucnv_getMaxCharSize(m_pConverter);
  m_minCharSize = ucnv_getMinCharSize(m_pConverter);
  m_stateless = i18n_detail::isStatelessType(m_pConverter);
  m_pContext = new (std::nothrow) i18n_detail::ConverterCallbackContext{nullptr, nullptr, nullptr};
  if (m_pContext == nullptr)
    XYL_THROW(XYLOutOfMemoryError(0L, nullptr));
  setName(encoding);
  installInputCallback();
  installOutputCallback();
}

void I18NConverter::create(const I18NConverter &other) {
  // A pooled converter's context belongs to its pool: a copy needs its own.
  i18n_detail::ConverterCallbackContext *context = m_reserved != nullptr ? nullptr : m_pContext;
  if (context == nullptr) {
    context = new (std::nothrow) i18n_detail::ConverterCallbackContext{nullptr, nullptr, nullptr};
    if (context == nullptr)
      XYL_THROW(XYLOutOfMemoryError(0L, nullptr));
  }
  UErrorCode status = U_ZERO_ERROR;
  UConverter *clone = ucnv_clone(other.m_pConverter, &status);
  if (clone == nullptr || icuFailed(status)) {
    if (clone != nullptr)
      ucnv_close(clone);
    if (context != m_pContext)
      delete context;
    if (status == U_MEMORY_ALLOCATION_ERROR)
      XYL_THROW(XYLOutOfMemoryError(0L, nullptr));
    char message[128];
    std::snprintf(message, sizeof message, "An error occured while allocating the converter object. ICU error code %d",
                  static_cast<int>(status));
    XYL_THROW(I18NRuntimeError(I18N_GENERAL_FAILURE, message));
  }
  gCloneCount.fetch_add(1, std::memory_order_relaxed);
  const char *name = kToolkitDefault;
  if (other.m_pEncoding != nullptr && other.m_pEncoding != kToolkitDefault) {
    name = XYLUtMemory::strdup(other.m_pEncoding);
    if (name == nullptr) {
      ucnv_close(clone);
      if (context != m_pContext)
        delete context;
      XYL_THROW(XYLOutOfMemoryError(0L, nullptr));
    }
  }
  // Nothing can fail from here on: drop what was held and take the copy.
  if (m_reserved != nullptr)
    I18NConverterPools::giveNamed(*this);
  if (m_pConverter != nullptr)
    ucnv_close(m_pConverter);
  if (m_pEncoding != nullptr && m_pEncoding != kToolkitDefault)
    XYLUtMemory::free(const_cast<char *>(m_pEncoding));
  m_pConverter = clone;
  m_ownsClone = true;
  m_pEncoding = name;
  m_pContext = context;
  m_inputMode = other.m_inputMode;
  m_outputMode = other.m_outputMode;
  m_userInputCallback = other.m_userInputCallback;
  m_userOutputCallback = other.m_userOutputCallback;
  m_maxCharSize = other.m_maxCharSize;
  m_minCharSize = other.m_minCharSize;
  m_cloneSize = other.m_cloneSize;
  m_stateless = other.m_stateless;
  m_pContext->encoding = m_pEncoding;
  // The clone still points at the other's callback context; give it ours.
  installInputCallback();
  installOutputCallback();
}

void I18NConverter::installInputCallback() {
  UConverterToUCallback callback = UCNV_TO_U_CALLBACK_STOP;
  const void *context = nullptr;
  m_pContext->inputCallback = nullptr;
  switch (m_inputMode) {
  case I18N_UNCONVERTIBLE_ESCAPE:
    callback = UCNV_TO_U_CALLBACK_ESCAPE;
    break;
  case I18N_UNCONVERTIBLE_REPLACE:
    callback = UCNV_TO_U_CALLBACK_RESOURCES;
    context = m_pContext;
    break;
  case I18N_UNCONVERTIBLE_SUBSTITUTE:
    callback = UCNV_TO_U_CALLBACK_SUBSTITUTE;
    break;
  case I18N_UNCONVERTIBLE_USER_DEFINED:
    callback = UCNV_TO_U_CALLBACK_USER;
    m_pContext->inputCallback = m_userInputCallback;
    context = m_pContext;
    break;
  default:
    break;
  }
  UErrorCode status = U_ZERO_ERROR;
  UConverterToUCallback oldCallback;
  const void *oldContext;
  ucnv_setToUCallBack(m_pConverter, callback, context, &oldCallback, &oldContext, &status);
  if (icuFailed(status))
    XYL_THROW(I18NRuntimeError(I18N_GENERAL_FAILURE, nullptr));
}

void I18NConverter::installOutputCallback() {
  UConverterFromUCallback callback = UCNV_FROM_U_CALLBACK_STOP;
  const void *context = nullptr;
  m_pContext->outputCallback = nullptr;
  switch (m_outputMode) {
  case I18N_UNCONVERTIBLE_ESCAPE:
    callback = UCNV_FROM_U_CALLBACK_ESCAPE;
    break;
  case I18N_UNCONVERTIBLE_REPLACE:
    callback = UCNV_FROM_U_CALLBACK_RESOURCES;
    context = m_pContext;
    break;
  case I18N_UNCONVERTIBLE_SUBSTITUTE:
    callback = UCNV_FROM_U_CALLBACK_SUBSTITUTE;
    break;
  case I18N_UNCONVERTIBLE_USER_DEFINED:
    callback = UCNV_FROM_U_CALLBACK_USER;
    m_pContext->outputCallback = m_userOutputCallback;
    context = m_pContext;
    break;
  default:
    break;
  }
  UErrorCode status = U_ZERO_ERROR;
  UConverterFromUCallback oldCallback;
  const void *oldContext;
  ucnv_setFromUCallBack(m_pConverter, callback, context, &oldCallback, &oldContext, &status);
  if (icuFailed(status))
    XYL_THROW(I18NRuntimeError(I18N_GENERAL_FAILURE, nullptr));
}

void I18NConverter::setBuiltInUnconvertibleInputSequenceCallback(int mode) {
  if (mode < I18N_UNCONVERTIBLE_ESCAPE || mode > I18N_UNCONVERTIBLE_STOP)
    return;
  m_inputMode = mode;
  installInputCallback();
}

void I18NConverter::setBuiltInUnconvertibleOutputSequenceCallback(int mode) {
  if (mode < I18N_UNCONVERTIBLE_ESCAPE || mode > I18N_UNCONVERTIBLE_STOP)
    return;
  m_outputMode = mode;
  installOutputCallback();
}

void I18NConverter::setUserDefinedUnconvertibleInputSequenceCallback(
    I18N_UNCONVERTIBLE_INPUT_SEQUENCE_CALLBACK callback) {
  m_userInputCallback = callback;
  if (m_inputMode == I18N_UNCONVERTIBLE_USER_DEFINED)
    m_pContext->inputCallback = callback;
}

void I18NConverter::setUserDefinedUnconvertibleOutputSequenceCallback(
    I18N_UNCONVERTIBLE_OUTPUT_SEQUENCE_CALLBACK callback) {
  m_userOutputCallback = callback;
  if (m_outputMode == I18N_UNCONVERTIBLE_USER_DEFINED)
    m_pContext->outputCallback = callback;
}

const char *I18NConverter::getEncoding() const { return m_pEncoding; }

void I18NConverter::reset() { ucnv_reset(m_pConverter); }

long I18NConverter::getOpenCount() { return gOpenCount.load(std::memory_order_relaxed); }
long I18NConverter::getCloneCount() { return gCloneCount.load(std::memory_order_relaxed); }

int I18NConverter::getEffectiveBufferSize(const char *buffer, int length) const {
  if (buffer == nullptr)
    return 0;
  const int width = m_minCharSize > 0 ? m_minCharSize : 1;
  if (length < 0) {
    if (width == 1)
      return static_cast<int>(std::strlen(buffer));
    if (width == 2)
      return u_strlen(reinterpret_cast<const UChar *>(buffer)) * 2;
    int bytes = 0;
    for (;; bytes += width) {
      bool zero = true;
      for (int i = 0; i < width; ++i)
        if (buffer[bytes + i] != 0) {
          zero = false;
          break;
        }
      if (zero)
        return bytes;
    }
  }
  if (length < width)
    return length;
  const int last = (length / width - 1) * width;
  for (int i = 0; i < width; ++i)
    if (buffer[last + i] != 0)
      return length;
  return length - width;
}

// ---- Whole-buffer conversions ---------------------------------------------

namespace {

// UTF-8 converters decode and encode through ICU's direct UTF-8 functions,
// which skip the converter framework (callbacks, offsets, chunking). Valid
// text converts the same either way. On ill-formed text the direct functions
// reproduce only the substitute mode (one U+FFFD, or its three bytes, per
// maximal ill-formed subpart, as the UTF-8 converter's substitute callback
// writes); every other mode goes back to the converter, whose callbacks
// decide, and so does a target that is too small. A converter whose substitution character was changed through
// getUConverter() is not looked at: the modes are the contract.
bool utf8Direct(UConverter *converter, int mode) {
  return ucnv_getType(converter) == UCNV_UTF8 && mode >= I18N_UNCONVERTIBLE_ESCAPE && mode <= I18N_UNCONVERTIBLE_STOP;
}

// A target too small for the whole text is filled differently (the
// converter writes the leading bytes or unit of a character that does not
// fit whole, the direct functions stop before it), so overflow goes back to
// the converter as ill-formed text does.
bool settled(UErrorCode *status) {
  if (*status != U_INVALID_CHAR_FOUND && *status != U_BUFFER_OVERFLOW_ERROR)
    return true;
  *status = U_ZERO_ERROR;
  return false;
}

// True when the direct path settled the conversion (*units and *status hold
// its outcome); false when the converter must run.
bool decodeUTF8(const char *source, int length, UChar *target, int capacity, int mode, int32_t *units,
                UErrorCode *status) {
  *status = U_ZERO_ERROR;
  if (mode == I18N_UNCONVERTIBLE_SUBSTITUTE)
    u_strFromUTF8WithSub(target, capacity, units, length == 0 ? "" : source, length, 0xFFFD, nullptr, status);
  else
    u_strFromUTF8(target, capacity, units, length == 0 ? "" : source, length, status);
  return settled(status);
}

bool encodeUTF8(const UChar *source, int units, char *target, int capacity, int mode, int32_t *bytes,
                UErrorCode *status) {
  *status = U_ZERO_ERROR;
  if (mode == I18N_UNCONVERTIBLE_SUBSTITUTE)
    u_strToUTF8WithSub(target, capacity, bytes, source, units, 0xFFFD, nullptr, status);
  else
    u_strToUTF8(target, capacity, bytes, source, units, status);
  return settled(status);
}

// A whole buffer of `length` bytes (already effective) to UTF-16.
int32_t toUChars(UConverter *converter, int mode, const char *source, int length, UChar *target, int capacity,
                 UErrorCode *status) {
  int32_t units = 0;
  if (utf8Direct(converter, mode) && decodeUTF8(source, length, target, capacity, mode, &units, status))
    return units;
  return ucnv_toUChars(converter, target, capacity, length == 0 ? "" : source, length, status);
}

int unicodeUnits(const unsigned short *source, int sourceBytes) {
  if (source == nullptr)
    return 0;
  if (sourceBytes < 0)
    return u_strlen(reinterpret_cast<const UChar *>(source));
  return sourceBytes / 2;
}

} // namespace

int I18NConverter::toUnicode(const char *source, int sourceLength, unsigned short *target, int targetBytes,
                             I18NErrorCodes *error) {
  setError(error, I18N_SUCCESS);
  const int length = getEffectiveBufferSize(source, sourceLength);
  if (targetBytes < 0 || (target == nullptr && targetBytes > 0)) {
    setError(error, I18N_GENERAL_FAILURE);
    return 0;
  }
  UErrorCode status = U_ZERO_ERROR;
  int32_t units =
      toUChars(m_pConverter, m_inputMode, source, length, reinterpret_cast<UChar *>(target), targetBytes / 2, &status);
  setError(error, callerBufferStatus(status));
  return units * 2;
}

int I18NConverter::fromUnicode(const unsigned short *source, int sourceBytes, char *target, int targetBytes,
                               I18NErrorCodes *error) {
  setError(error, I18N_SUCCESS);
  const int units = unicodeUnits(source, sourceBytes);
  if (targetBytes < 0 || (target == nullptr && targetBytes > 0)) {
    setError(error, I18N_GENERAL_FAILURE);
    return 0;
  }
  static const UChar kEmpty[1] = {0};
  const UChar *text = units == 0 ? kEmpty : reinterpret_cast<const UChar *>(source);
  UErrorCode status = U_ZERO_ERROR;
  int32_t bytes;
  if (!utf8Direct(m_pConverter, m_outputMode) ||
      !encodeUTF8(text, units, target, targetBytes, m_outputMode, &bytes, &status))
    bytes = ucnv_fromUChars(m_pConverter, target, targetBytes, text, units, &status);
  I18NErrorCodes code = callerBufferStatus(status);
  // ucnv_fromUChars terminates with one NUL byte; a wider NUL is written
  // here, when there is room for it.
  if (code == I18N_SUCCESS && m_minCharSize > 1 && bytes + m_minCharSize <= targetBytes)
    std::memset(target + bytes, 0, static_cast<std::size_t>(m_minCharSize));
  setError(error, code);
  return bytes;
}

unsigned short *I18NConverter::toUnicode(const char *source, int sourceLength, int *targetBytes,
                                         I18N_STRINGBUFFER_ALLOCATOR_CALLBACK allocator, void *context,
                                         I18NErrorCodes *error) {
  setError(error, I18N_SUCCESS);
  if (targetBytes != nullptr)
    *targetBytes = 0;
  const int length = getEffectiveBufferSize(source, sourceLength);
  // Every byte gives at most one UTF-16 unit in the encodings ICU offers,
  // except that an escape callback writes up to 4 ("%XNN") per byte.
  long long guess = static_cast<long long>(length) * (m_inputMode == I18N_UNCONVERTIBLE_ESCAPE ? 4 : 1) + 1;
  if (guess > (1LL << 29)) {
    // Too large to guess safely: measure first.
    UErrorCode status = U_ZERO_ERROR;
    int32_t units = ucnv_toUChars(m_pConverter, nullptr, 0, length == 0 ? "" : source, length, &status);
    if (status != U_BUFFER_OVERFLOW_ERROR && icuFailed(status)) {
      setError(error, I18N_GENERAL_FAILURE);
      return nullptr;
    }
    guess = static_cast<long long>(units) + 1;
  }
  for (int attempt = 0; attempt < 2; ++attempt) {
    char *block = allocateResult(allocator, context, static_cast<int>(guess * 2));
    UErrorCode status = U_ZERO_ERROR;
    int32_t units = toUChars(m_pConverter, m_inputMode, source, length, reinterpret_cast<UChar *>(block),
                             static_cast<int32_t>(guess), &status);
    I18NErrorCodes code = conversionStatus(status);
    if (code == I18N_SUCCESS) {
      if (targetBytes != nullptr)
        *targetBytes = units * 2;
      return reinterpret_cast<unsigned short *>(block);
    }
    freeResult(allocator, context, block);
    if (code != I18N_BUFFER_TOO_SMALL) {
      setError(error, code);
      return nullptr;
    }
    guess = static_cast<long long>(units) + 1;
  }
  setError(error, I18N_GENERAL_FAILURE);
  return nullptr;
}

char *I18NConverter::fromUnicode(const unsigned short *source, int sourceBytes, int *targetBytes,
                                 I18N_STRINGBUFFER_ALLOCATOR_CALLBACK allocator, void *context, I18NErrorCodes *error) {
  setError(error, I18N_SUCCESS);
  if (targetBytes != nullptr)
    *targetBytes = 0;
  const int units = unicodeUnits(source, sourceBytes);
  long long perUnit = m_maxCharSize;
  if (ucnv_getType(m_pConverter) == UCNV_UTF8)
    perUnit = I18NInternalResources::getUTF8BytesPerCodePoint();
  if (m_outputMode == I18N_UNCONVERTIBLE_ESCAPE && perUnit < 7LL * m_minCharSize)
    perUnit = 7LL * m_minCharSize; // "%UXXXX" per unit
  // A first guess; when it is short, the failed attempt measured the exact size.
  long long guess = static_cast<long long>(units) * perUnit + m_minCharSize;
  for (int attempt = 0; attempt < 3; ++attempt) {
    if (guess > 0x7FFFFFF0LL) {
      setError(error, I18N_GENERAL_FAILURE);
      return nullptr;
    }
    char *block = allocateResult(allocator, context, static_cast<int>(guess));
    I18NErrorCodes code = I18N_SUCCESS;
    int bytes = fromUnicode(source, units * 2, block, static_cast<int>(guess), &code);
    if (code == I18N_SUCCESS && bytes + m_minCharSize > guess)
      code = I18N_BUFFER_TOO_SMALL; // this buffer must hold the terminator too
    if (code == I18N_SUCCESS) {
      if (targetBytes != nullptr)
        *targetBytes = bytes;
      return block;
    }
    freeResult(allocator, context, block);
    if (code != I18N_BUFFER_TOO_SMALL) {
      setError(error, code);
      return nullptr;
    }
    guess = static_cast<long long>(bytes) + m_minCharSize;
  }
  setError(error, I18N_GENERAL_FAILURE);
  return nullptr;
}

void I18NConverter::freeBuffer(void *buffer) { XYLUtMemory::free(buffer); }

// ---- Stream conversions -----------------------------------------------------

int I18NConverter::toUnicodeStream(const char *source, int sourceLength, int *consumed, unsigned short *target,
                                   int targetBytes, bool flush, I18NErrorCodes *error) {
  setError(error, I18N_SUCCESS);
  if (consumed != nullptr)
    *consumed = 0;
  // A chunk of a stream is data to its last byte: a zero byte that ends one
  // chunk is a character of the stream, not a terminator.
  const int length =
      sourceLength < 0 || source == nullptr ? getEffectiveBufferSize(source, sourceLength) : sourceLength;
  if (targetBytes < 0 || (target == nullptr && targetBytes > 0)) {
    setError(error, I18N_GENERAL_FAILURE);
    return 0;
  }
  static const char kEmpty[1] = {0};
  const char *src = length == 0 ? kEmpty : source;
  const char *srcLimit = src + length;
  UChar *dst = reinterpret_cast<UChar *>(target);
  UChar *dstStart = dst;
  UChar *dstLimit = dst == nullptr ? nullptr : dst + targetBytes / 2;
  UErrorCode status = U_ZERO_ERROR;
  ucnv_toUnicode(m_pConverter, &dst, dstLimit, &src, srcLimit, nullptr, flush, &status);
  if (consumed != nullptr)
    *consumed = static_cast<int>(src - (length == 0 ? kEmpty : source));
  if (status != U_BUFFER_OVERFLOW_ERROR && icuFailed(status))
    setError(error, I18N_GENERAL_FAILURE);
  return static_cast<int>(dst - dstStart) * 2;
}

int I18NConverter::fromUnicodeStream(const unsigned short *source, int sourceBytes, int *consumed, char *target,
                                     int targetBytes, bool flush, I18NErrorCodes *error) {
  setError(error, I18N_SUCCESS);
  if (consumed != nullptr)
    *consumed = 0;
  const int units = unicodeUnits(source, sourceBytes);
  if (targetBytes < 0 || (target == nullptr && targetBytes > 0)) {
    setError(error, I18N_GENERAL_FAILURE);
    return 0;
  }
  static const UChar kEmpty[1] = {0};
  const UChar *start = units == 0 ? kEmpty : reinterpret_cast<const UChar *>(source);
  const UChar *src = start;
  char *dst = target;
  UErrorCode status = U_ZERO_ERROR;
  ucnv_fromUnicode(m_pConverter, &dst, target == nullptr ? nullptr : target + targetBytes, &src, start + units, nullptr,
                   flush, &status);
  if (consumed != nullptr)
    *consumed = static_cast<int>(src - start) * 2;
  if (status != U_BUFFER_OVERFLOW_ERROR && icuFailed(status))
    setError(error, I18N_GENERAL_FAILURE);
  return static_cast<int>(dst - target);
}

// ---- Name tests ---------------------------------------------------------------

bool I18NConverter::isUTF8(const char *encoding) {
  if (encoding == nullptr || *encoding == '\0')
    return true;
  return lowerEquals(encoding, "ascii") || lowerEquals(encoding, "utf8") || lowerEquals(encoding, "utf-8");
}

bool I18NConverter::isUTF16(const char *encoding) {
  if (encoding == nullptr)
    return false;
  return lowerEquals(encoding, "ucs2") || lowerEquals(encoding, "ucs-2") || lowerEquals(encoding, "utf16") ||
         lowerEquals(encoding, "utf-16") || lowerStartsWith(encoding, "utf16_p");
}

bool I18NConverter::isUTF32(const char *encoding) {
  if (encoding == nullptr)
    return false;
  return lowerEquals(encoding, "ucs4") || lowerEquals(encoding, "ucs-4") || lowerEquals(encoding, "utf32") ||
         lowerEquals(encoding, "utf-32") || lowerStartsWith(encoding, "utf32_p");
}

bool I18NConverter::isISO8859(const char *encoding) {
  return encoding != nullptr && lowerStartsWith(encoding, "iso-8859");
}

bool I18NConverter::isWindows1252(const char *encoding) {
  return encoding != nullptr && lowerEquals(encoding, "windows-1252");
}

bool I18NConverter::isPlatformDefault(const char *encoding) {
  return encoding != nullptr && std::strcmp(encoding, I18NGetPlatformDefaultEncoding()) == 0;
}

bool I18NConverter::shouldUseBOM(const char *encoding) {
  if (encoding == nullptr || *encoding == '\0')
    return false;
  UErrorCode status = U_ZERO_ERROR;
  const char *alias = ucnv_getAlias(encoding, 0, &status);
  if (icuFailed(status) || alias == nullptr)
    return false;
  return std::strncmp(alias, "UTF-1", 5) == 0 || std::strncmp(alias, "UTF-3", 5) == 0;
}

int I18NConverterTestPeer::getEffectiveBufferSize(const I18NConverter &converter, const char *buffer, int length) {
  return converter.getEffectiveBufferSize(buffer, length);
}
