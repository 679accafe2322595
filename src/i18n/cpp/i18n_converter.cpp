// SPDX-License-Identifier: Apache-2.0
// Code page converters: I18NConverter over one ICU converter, the library's
// unconvertible-sequence callbacks, the three converter pools and the
// platform default encoding.
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

const char kToolkitDefault[] = "UTF8";
const char kUTF16Platform[] = "UTF16_PlatformEndian";
const char kUTF32Platform[] = "UTF32_PlatformEndian";

std::atomic<long> gOpenCount{0};
std::atomic<long> gCloneCount{0};
std::atomic<bool> gDataDirectoryChecked{false};

// The platform default name, computed once (see I18NGetPlatformDefaultEncoding).
std::atomic<char *> gPlatformDefault{nullptr};

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

// ---- The library's ICU callbacks (modes 1 and 3) -------------------------

void writeCodePoints(UConverterToUnicodeArgs *args, const unsigned int *codePoints, int count, UErrorCode *err) {
  UChar units[2 * I18N_CONVERTER_CALLBACK_CAPACITY];
  int32_t n = 0;
  for (int i = 0; i < count; ++i) {
    UChar32 c = static_cast<UChar32>(codePoints[i]);
    if (c < 0 || c > 0x10FFFF)
      return; // not a code point: the ICU error stands
    if (c <= 0xFFFF) {
      units[n++] = static_cast<UChar>(c);
    } else {
      units[n++] = U16_LEAD(c);
      units[n++] = U16_TRAIL(c);
    }
  }
  *err = U_ZERO_ERROR;
  ucnv_cbToUWriteUChars(args, units, n, 0, err);
}

void UCNV_TO_U_CALLBACK_RESOURCES(const void *context, UConverterToUnicodeArgs *args, const char *codeUnits,
                                  int32_t length, UConverterCallbackReason reason, UErrorCode *err) {
  if (reason > UCNV_IRREGULAR)
    return; // reset, close, clone: nothing to do
  const auto *ctx = static_cast<const i18n_detail::ConverterCallbackContext *>(context);
  unsigned int codePoints[I18N_CONVERTER_CALLBACK_CAPACITY];
  int count = I18NInternalResources::getReplacementSequence(ctx->encoding, codeUnits, length, codePoints,
                                                            I18N_CONVERTER_CALLBACK_CAPACITY);
  if (count > 0)
    writeCodePoints(args, codePoints, count, err);
}

void UCNV_TO_U_CALLBACK_USER(const void *context, UConverterToUnicodeArgs *args, const char *codeUnits, int32_t length,
                             UConverterCallbackReason reason, UErrorCode *err) {
  if (reason > UCNV_IRREGULAR)
    return;
  const auto *ctx = static_cast<const i18n_detail::ConverterCallbackContext *>(context);
  if (ctx->inputCallback == nullptr)
    return;
  unsigned int codePoints[I18N_CONVERTER_CALLBACK_CAPACITY];
  int count = I18N_CONVERTER_CALLBACK_CAPACITY;
  I18NErrorCodes status = I18N_SUCCESS;
  ctx->inputCallback(ctx->encoding, codeUnits, length, codePoints, &count, &status);
  if (status == I18N_SUCCESS && count > 0 && count <= I18N_CONVERTER_CALLBACK_CAPACITY)
    writeCodePoints(args, codePoints, count, err);
}

void UCNV_FROM_U_CALLBACK_RESOURCES(const void *context, UConverterFromUnicodeArgs *args, const UChar *, int32_t,
                                    UChar32 codePoint, UConverterCallbackReason reason, UErrorCode *err) {
  if (reason > UCNV_IRREGULAR)
    return;
  const auto *ctx = static_cast<const i18n_detail::ConverterCallbackContext *>(context);
  char bytes[I18N_CONVERTER_CALLBACK_CAPACITY];
  int count = I18NInternalResources::getReplacementSequence(ctx->encoding, static_cast<unsigned int>(codePoint), bytes,
                                                            I18N_CONVERTER_CALLBACK_CAPACITY);
  if (count > 0) {
    *err = U_ZERO_ERROR;
    ucnv_cbFromUWriteBytes(args, bytes, count, 0, err);
  }
}

void UCNV_FROM_U_CALLBACK_USER(const void *context, UConverterFromUnicodeArgs *args, const UChar *, int32_t,
                               UChar32 codePoint, UConverterCallbackReason reason, UErrorCode *err) {
  if (reason > UCNV_IRREGULAR)
    return;
  const auto *ctx = static_cast<const i18n_detail::ConverterCallbackContext *>(context);
  if (ctx->outputCallback == nullptr)
    return;
  char bytes[I18N_CONVERTER_CALLBACK_CAPACITY];
  int count = I18N_CONVERTER_CALLBACK_CAPACITY;
  I18NErrorCodes status = I18N_SUCCESS;
  ctx->outputCallback(static_cast<unsigned int>(codePoint), ctx->encoding, bytes, &count, &status);
  if (status == I18N_SUCCESS && count > 0 && count <= I18N_CONVERTER_CALLBACK_CAPACITY) {
    *err = U_ZERO_ERROR;
    ucnv_cbFromUWriteBytes(args, bytes, count, 0, err);
  }
}

// Maps the outcome of a whole-buffer conversion to the library's codes.
I18NErrorCodes conversionStatus(UErrorCode status) {
  if (status == U_BUFFER_OVERFLOW_ERROR || status == U_STRING_NOT_TERMINATED_WARNING)
    return I18N_BUFFER_TOO_SMALL;
  if (icuFailed(status))
    return I18N_GENERAL_FAILURE;
  return I18N_SUCCESS;
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
    XYL_THROW(I18NRuntimeError(I18N_ALLOCATION_FAILURE, "Memory allocation failed."));
  }
  return block;
}

void freeResult(I18N_STRINGBUFFER_ALLOCATOR_CALLBACK allocator, void *context, char *block) {
  if (allocator == nullptr)
    allocator = heapAllocator;
  allocator(context, block, 0, nullptr);
}

} // namespace

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
  if (I18NConverterPools::initCount.load(std::memory_order_acquire) > 0) {
    const I18NConverter *prototype = nullptr;
    if (isUTF8(encoding))
      prototype = I18NConverterPools::prototypes[i18n_detail::PoolUTF8];
    else if (isUTF16(encoding))
      prototype = I18NConverterPools::prototypes[i18n_detail::PoolUTF16];
    else if (isPlatformDefault(encoding))
      prototype = I18NConverterPools::prototypes[i18n_detail::PoolPlatformDefault];
    if (prototype != nullptr) {
      try {
        create(*prototype);
        setName(encoding);
      } catch (...) {
        release();
        throw;
      }
      return;
    }
  }
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
  i18n_detail::ConverterCallbackContext *context = m_pContext;
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
  int32_t units = ucnv_toUChars(m_pConverter, reinterpret_cast<UChar *>(target), targetBytes / 2,
                                length == 0 ? "" : source, length, &status);
  setError(error, conversionStatus(status));
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
  UErrorCode status = U_ZERO_ERROR;
  int32_t bytes = ucnv_fromUChars(m_pConverter, target, targetBytes,
                                  units == 0 ? kEmpty : reinterpret_cast<const UChar *>(source), units, &status);
  I18NErrorCodes code = conversionStatus(status);
  // ucnv_fromUChars terminates with one NUL byte; a wider NUL needs room of
  // its own and is written here.
  if (code == I18N_SUCCESS && m_minCharSize > 1) {
    if (bytes + m_minCharSize > targetBytes)
      code = I18N_BUFFER_TOO_SMALL;
    else
      std::memset(target + bytes, 0, static_cast<std::size_t>(m_minCharSize));
  }
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
    int32_t units = ucnv_toUChars(m_pConverter, reinterpret_cast<UChar *>(block), static_cast<int32_t>(guess),
                                  length == 0 ? "" : source, length, &status);
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

// ---- Pools ----------------------------------------------------------------------

std::atomic<int> I18NConverterPools::initCount{0};
I18NConverter *I18NConverterPools::prototypes[i18n_detail::PoolCount] = {nullptr, nullptr, nullptr};
I18NConverter *I18NConverterPools::pools[i18n_detail::PoolCount] = {nullptr, nullptr, nullptr};

XYLThreadCriticalSection &I18NConverterPools::startLock() {
  // Never destroyed: threads that outlive static destruction may still
  // return converters.
  static XYLThreadCriticalSection *lock = new XYLThreadCriticalSection(0);
  return *lock;
}

const char *i18n_detail::poolEncodingName(PoolKind kind) {
  switch (kind) {
  case PoolUTF8:
    return kToolkitDefault;
  case PoolUTF16:
    return kUTF16Platform;
  default:
    return I18NGetPlatformDefaultEncoding();
  }
}

I18NConverter *I18NConverterPools::cloneOf(const I18NConverter &prototype) {
  I18NConverter *converter = new (std::nothrow) I18NConverter();
  if (converter == nullptr)
    XYL_THROW(XYLOutOfMemoryError(0L, nullptr));
  try {
    converter->create(prototype);
  } catch (...) {
    delete converter;
    throw;
  }
  return converter;
}

namespace {

bool needsReset(UConverter *converter) {
  UErrorCode status = U_ZERO_ERROR;
  const int32_t toU = ucnv_toUCountPending(converter, &status);
  const int32_t fromU = ucnv_fromUCountPending(converter, &status);
  return U_FAILURE(status) || toU != 0 || fromU != 0;
}

} // namespace

// Whether a converter of this type keeps no state beyond pending units
// (then a reset is needed only when units are pending).
bool i18n_detail::isStatelessType(UConverter *converter) {
  switch (ucnv_getType(converter)) {
  case UCNV_UTF8:
  case UCNV_UTF16_BigEndian:
  case UCNV_UTF16_LittleEndian:
  case UCNV_UTF32_BigEndian:
  case UCNV_UTF32_LittleEndian:
  case UCNV_SBCS:
  case UCNV_DBCS:
  case UCNV_MBCS:
  case UCNV_LATIN_1:
  case UCNV_US_ASCII:
  case UCNV_CESU8:
    return true;
  default:
    return false; // may keep a shift state or a byte-order decision
  }
}

// ---- Per-thread front slots ----------------------------------------------------------
//
// Each pool is a shared last-in-first-out stack under the start-up lock,
// fronted by one slot per thread: a thread's most recently returned
// converter waits in its slot and is the next one that thread takes, so the
// common take-use-return cycle touches no lock (two atomic exchanges instead
// of two lock round trips, which cost more than ucnv_open + ucnv_close).
// Order stays last-in-first-out per thread: a return into a full slot moves
// the older converter to the shared stack. The slots of every thread are
// linked in a registry (under the start-up lock) so that the last
// I18NTerminate can empty them; a thread that exits empties its own.

namespace {

// Zero-initialised and trivially destructible, so that reaching it costs no
// call; a thread that registers its slots also creates a SlotsCleanup,
// whose destructor empties and unregisters them when the thread exits.
struct ThreadSlots {
  std::atomic<I18NConverter *> slot[i18n_detail::PoolCount];
  ThreadSlots *prev;
  ThreadSlots *next;
  bool registered;
};

ThreadSlots *gRegistry = nullptr; // guarded by the start-up lock

__attribute__((tls_model("initial-exec"))) thread_local ThreadSlots tThreadSlots;

void releaseSlots(ThreadSlots &slots) {
  for (auto &s : slots.slot)
    delete s.exchange(nullptr, std::memory_order_acq_rel);
}

struct SlotsCleanup {
  ~SlotsCleanup() {
    ThreadSlots &slots = tThreadSlots;
    XYLThreadGuard guard(I18NConverterPools::startLock());
    if (!slots.registered)
      return;
    if (slots.prev != nullptr)
      slots.prev->next = slots.next;
    else
      gRegistry = slots.next;
    if (slots.next != nullptr)
      slots.next->prev = slots.prev;
    slots.registered = false;
    releaseSlots(slots);
  }
};

thread_local SlotsCleanup tSlotsCleanup;

// Caller holds the start-up lock.
void registerSlots(ThreadSlots &slots) {
  static_cast<void>(&tSlotsCleanup); // creates this thread's cleanup
  slots.registered = true;
  slots.prev = nullptr;
  slots.next = gRegistry;
  if (gRegistry != nullptr)
    gRegistry->prev = &slots;
  gRegistry = &slots;
}

} // namespace

I18NConverter *I18NConverterPools::take(i18n_detail::PoolKind kind) {
  if (initCount.load(std::memory_order_acquire) > 0) {
    // Only this thread and the last I18NTerminate touch the slot, and the
    // latter only while the layer is in use nowhere (the documented rule).
    std::atomic<I18NConverter *> &slot = tThreadSlots.slot[kind];
    I18NConverter *converter = slot.load(std::memory_order_relaxed);
    if (converter != nullptr) {
      slot.store(nullptr, std::memory_order_relaxed);
      return converter;
    }
    XYLThreadGuard guard(startLock());
    if (initCount.load(std::memory_order_relaxed) > 0 && prototypes[kind] != nullptr) {
      converter = pools[kind];
      if (converter != nullptr) {
        pools[kind] = converter->m_pNextInPool;
        converter->m_pNextInPool = nullptr;
        return converter;
      }
      return cloneOf(*prototypes[kind]);
    }
  }
  I18NConverter *converter = new (std::nothrow) I18NConverter();
  if (converter == nullptr)
    XYL_THROW(XYLOutOfMemoryError(0L, nullptr));
  try {
    converter->create(i18n_detail::poolEncodingName(kind));
  } catch (...) {
    delete converter;
    throw;
  }
  return converter;
}

void I18NConverterPools::give(i18n_detail::PoolKind kind, I18NConverter *converter) {
  if (converter == nullptr)
    return;
  // A borrower may have changed the modes or left a half-read sequence; the
  // next borrower gets a converter as fresh as a clone of the prototype.
  // ucnv_reset is a noticeable part of a take and return, so it is skipped
  // when nothing is pending in a converter that keeps no shift state.
  if (!converter->m_stateless || needsReset(converter->m_pConverter))
    ucnv_reset(converter->m_pConverter);
  if (converter->m_inputMode != I18N_UNCONVERTIBLE_REPLACE || converter->m_userInputCallback != nullptr) {
    converter->m_userInputCallback = nullptr;
    converter->setBuiltInUnconvertibleInputSequenceCallback(I18N_UNCONVERTIBLE_REPLACE);
  }
  if (converter->m_outputMode != I18N_UNCONVERTIBLE_REPLACE || converter->m_userOutputCallback != nullptr) {
    converter->m_userOutputCallback = nullptr;
    converter->setBuiltInUnconvertibleOutputSequenceCallback(I18N_UNCONVERTIBLE_REPLACE);
  }
  if (initCount.load(std::memory_order_acquire) > 0) {
    ThreadSlots &slots = tThreadSlots;
    if (slots.registered) {
      std::atomic<I18NConverter *> &slot = slots.slot[kind];
      I18NConverter *older = slot.load(std::memory_order_relaxed);
      slot.store(converter, std::memory_order_relaxed);
      if (older == nullptr)
        return; // the slot was free
      // The slot now holds the newer converter; the older one goes below it.
      converter = older;
    }
    XYLThreadGuard guard(startLock());
    if (initCount.load(std::memory_order_relaxed) > 0) {
      if (!slots.registered) {
        registerSlots(slots);
        converter = slots.slot[kind].exchange(converter, std::memory_order_acq_rel);
        if (converter == nullptr)
          return;
      }
      converter->m_pNextInPool = pools[kind];
      pools[kind] = converter;
      return;
    }
  }
  delete converter;
}

int I18NConverterPools::createPrototypes() {
  for (int kind = 0; kind < i18n_detail::PoolCount; ++kind) {
    if (prototypes[kind] != nullptr)
      continue;
    I18NConverter *prototype = new (std::nothrow) I18NConverter();
    if (prototype == nullptr)
      XYL_THROW(XYLOutOfMemoryError(0L, nullptr));
    try {
      prototype->create(i18n_detail::poolEncodingName(static_cast<i18n_detail::PoolKind>(kind)));
    } catch (XYLOutOfMemoryError &) {
      delete prototype;
      throw;
    } catch (XYLThrowable &) {
      delete prototype;
      return 0;
    }
    prototypes[kind] = prototype;
  }
  return 1;
}

void I18NConverterPools::releaseAll() {
  for (int kind = 0; kind < i18n_detail::PoolCount; ++kind) {
    delete prototypes[kind];
    prototypes[kind] = nullptr;
  }
  for (ThreadSlots *slots = gRegistry; slots != nullptr; slots = slots->next)
    releaseSlots(*slots);
  for (int kind = 0; kind < i18n_detail::PoolCount; ++kind) {
    I18NConverter *converter = pools[kind];
    while (converter != nullptr) {
      I18NConverter *next = converter->m_pNextInPool;
      delete converter;
      converter = next;
    }
    pools[kind] = nullptr;
  }
}

I18NConverterUTF8::I18NConverterUTF8() : m_pConverter(I18NConverterPools::take(i18n_detail::PoolUTF8)) {}
I18NConverterUTF8::~I18NConverterUTF8() { I18NConverterPools::give(i18n_detail::PoolUTF8, m_pConverter); }
I18NConverterUTF16::I18NConverterUTF16() : m_pConverter(I18NConverterPools::take(i18n_detail::PoolUTF16)) {}
I18NConverterUTF16::~I18NConverterUTF16() { I18NConverterPools::give(i18n_detail::PoolUTF16, m_pConverter); }
I18NConverterPlatformDefault::I18NConverterPlatformDefault()
    : m_pConverter(I18NConverterPools::take(i18n_detail::PoolPlatformDefault)) {}
I18NConverterPlatformDefault::~I18NConverterPlatformDefault() {
  I18NConverterPools::give(i18n_detail::PoolPlatformDefault, m_pConverter);
}

// ---- Default encodings ------------------------------------------------------------

const char *I18NGetToolkitDefaultEncoding() { return kToolkitDefault; }

const char *I18NGetPlatformDefaultEncoding() {
  char *name = gPlatformDefault.load(std::memory_order_acquire);
  if (name != nullptr)
    return name;
  // The locale's code set as the OS spells it ("ISO-8859-1",
  // "ANSI_X3.4-1968"), turned into ICU's own name for that converter.
  char codeSet[128];
  i18n_os::getLocaleCodeSet(codeSet, sizeof codeSet);
  const char *chosen = kToolkitDefault;
  if (codeSet[0] != '\0') {
    UErrorCode status = U_ZERO_ERROR;
    const char *alias = ucnv_getAlias(codeSet, 0, &status);
    if (!icuFailed(status) && alias != nullptr && *alias != '\0')
      chosen = alias;
  }
  char *copy = XYLUtMemory::strdup(chosen);
  if (copy == nullptr)
    XYL_THROW(XYLOutOfMemoryError(0L, nullptr));
  char *expected = nullptr;
  if (!gPlatformDefault.compare_exchange_strong(expected, copy, std::memory_order_acq_rel)) {
    XYLUtMemory::free(copy); // another thread was first
    return expected;
  }
  return copy;
}

void I18NConverterPools::releasePlatformDefaultName() {
  char *name = gPlatformDefault.exchange(nullptr, std::memory_order_acq_rel);
  XYLUtMemory::free(name);
}

const char *I18NGetNormalizedPlatformDefaultEncoding() {
  const char *name = I18NGetPlatformDefaultEncoding();
  UErrorCode status = U_ZERO_ERROR;
  const char *standard = ucnv_getStandardName(name, "IANA", &status);
  if (icuFailed(status) || standard == nullptr)
    return name;
  return standard;
}

int I18NConverterTestPeer::getEffectiveBufferSize(const I18NConverter &converter, const char *buffer, int length) {
  return converter.getEffectiveBufferSize(buffer, length);
}
