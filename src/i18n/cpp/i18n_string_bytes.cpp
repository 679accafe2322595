// SPDX-License-Identifier: Apache-2.0
// I18NString: byte output (c_str with its cache, toBytes), the stream
// operators and I18NUriDecode.
//
// Output paths, cheapest first: ASCII content in an encoding where
// 0x00..0x7F mean ASCII is copied as it is; Unicode content to UTF-8 goes
// through ICU's UTF-8 encoder (an unpaired surrogate makes it fail, and the
// text then goes through a converter so that its unconvertible-sequence mode
// applies); everything else goes through an I18NConverter (pooled for
// UTF-8, UTF-16 and the platform default encoding).
#include <XYLCore/Threads/XYLThreadCriticalSection.h>
#include <XYLCore/Threads/XYLThreadGuard.h>
#include <XYLCore/Utility/XYLUtMemory.h>
#include <XYLCore/i18n/cpp/i18n_converter.h>
#include <XYLCore/i18n/cpp/i18n_string.h>

#include "Utility/XYLUtHex_internal.h"
#include "i18n_string_internal.h"

#include <climits>
#include <istream>
#include <memory>
#include <mutex>
#include <optional>
#include <ostream>
#include <string>
#include <unicode/translit.h>
#include <unicode/ustring.h>

using namespace i18n_string_detail;

// One cached byte form of c_str.
struct I18NString::ByteForm {
  ByteForm *next;
  char *encoding;        // the name asked for (C heap)
  const void *converter; // the converter asked for, or null
  int inputMode, outputMode;
  char *bytes;
  int length;
  I18N_STRINGBUFFER_ALLOCATOR_CALLBACK allocator;
  void *context;
};

namespace {

// Memory for a caller's buffer: through the allocator, else the C heap.
char *obtain(I18N_STRINGBUFFER_ALLOCATOR_CALLBACK allocator, void *context, char *block, int size) {
  if (allocator != nullptr) {
    int error = 0;
    char *result = allocator(context, block, size, &error);
    if (result == nullptr || error != 0)
      raiseAllocatorFailure(error);
    return result;
  }
  char *result = static_cast<char *>(XYLUtMemory::realloc(block, static_cast<std::size_t>(size)));
  if (result == nullptr)
    raiseHeapFailure();
  return result;
}

void release(I18N_STRINGBUFFER_ALLOCATOR_CALLBACK allocator, void *context, char *block) {
  if (block == nullptr)
    return;
  if (allocator != nullptr) {
    int error = 0;
    allocator(context, block, 0, &error);
  } else {
    XYLUtMemory::free(block);
  }
}

// A converter for an encoding name: borrowed from a pool for the three
// common encodings, opened otherwise. Lives for one conversion.
class ConverterFor {
public:
  explicit ConverterFor(const char *encoding) {
    if (I18NConverter::isUTF8(encoding)) {
      m_utf8.emplace();
      m_converter = &m_utf8->getConverter();
    } else if (I18NConverter::isUTF16(encoding)) {
      m_utf16.emplace();
      m_converter = &m_utf16->getConverter();
    } else if (I18NConverter::isPlatformDefault(encoding)) {
      m_platform.emplace();
      m_converter = &m_platform->getConverter();
    } else {
      m_named.emplace(encoding);
      m_converter = &*m_named;
    }
  }
  I18NConverter &get() { return *m_converter; }

private:
  std::optional<I18NConverterUTF8> m_utf8;
  std::optional<I18NConverterUTF16> m_utf16;
  std::optional<I18NConverterPlatformDefault> m_platform;
  std::optional<I18NConverter> m_named;
  I18NConverter *m_converter = nullptr;
};

} // namespace

// A new NUL-terminated buffer (the encoding's NUL) with the content.
char *I18NString::convertToBytes(const char *encoding, I18NConverter *converter, int *length,
                                 I18N_STRINGBUFFER_ALLOCATOR_CALLBACK allocator, void *context) const {
  if (converter != nullptr)
    encoding = converter->getEncoding();
  // ASCII content, ASCII-compatible encoding: a copy.
  icu::UnicodeString *form = unicodeForm();
  if ((form == nullptr || m_asciiBufLength >= 0) && asciiCompatibleName(encoding)) {
    int n = m_asciiBufLength < 0 ? 0 : m_asciiBufLength;
    char *bytes = obtain(allocator, context, nullptr, n + 1);
    std::memcpy(bytes, m_pAsciiBuffer, static_cast<std::size_t>(n));
    bytes[n] = '\0';
    if (length != nullptr)
      *length = n;
    return bytes;
  }
  const icu::UnicodeString &text = forceUnicode();
  const char16_t *units = text.getBuffer();
  int count = text.length();
  if (utf8Name(encoding) && count < INT_MAX / 3 - 1) {
    int capacity = count * 3 + 1;
    char *bytes = obtain(allocator, context, nullptr, capacity);
    UErrorCode status = U_ZERO_ERROR;
    int32_t written = 0;
    u_strToUTF8(bytes, capacity, &written, units, count, &status);
    if (U_SUCCESS(status)) {
      bytes[written] = '\0';
      // Give back what a mostly-ASCII text did not need.
      if (capacity - written > 64 && capacity - written > written / 4)
        bytes = obtain(allocator, context, bytes, written + 1);
      if (length != nullptr)
        *length = written;
      return bytes;
    }
    release(allocator, context, bytes);
  }
  std::optional<ConverterFor> lease;
  if (converter == nullptr) {
    lease.emplace(encoding);
    converter = &lease->get();
  }
  int terminator = converter->sizeofLegacyNull();
  long capacity = static_cast<long>(converter->getMaxCharSize()) * count + terminator;
  for (int attempt = 0; attempt < 2; ++attempt) {
    if (capacity >= INT_MAX)
      raiseHeapFailure();
    char *bytes = obtain(allocator, context, nullptr, static_cast<int>(capacity));
    converter->reset();
    I18NErrorCodes error = I18N_SUCCESS;
    int produced = converter->fromUnicode(reinterpret_cast<const unsigned short *>(units), count * 2, bytes,
                                          static_cast<int>(capacity), &error);
    if (error == I18N_SUCCESS && produced + terminator > capacity)
      error = I18N_BUFFER_TOO_SMALL; // no room left for the terminator
    if (error == I18N_BUFFER_TOO_SMALL && attempt == 0 && produced > 0) {
      release(allocator, context, bytes);
      capacity = static_cast<long>(produced) + terminator;
      continue;
    }
    if (error != I18N_SUCCESS) {
      release(allocator, context, bytes);
      raiseConversionFailure(error);
    }
    for (int k = 0; k < terminator && produced + k < capacity; ++k)
      bytes[produced + k] = '\0';
    if (length != nullptr)
      *length = produced;
    return bytes;
  }
  raiseConversionFailure(I18N_BUFFER_TOO_SMALL);
}

void I18NString::releaseByteForms() const {
  ByteForm *form = m_pByteForms;
  m_pByteForms = nullptr;
  while (form != nullptr) {
    ByteForm *next = form->next;
    release(form->allocator, form->context, form->bytes);
    XYLUtMemory::free(form->encoding);
    XYLUtMemory::free(form);
    form = next;
  }
}

// The cached byte form for an encoding (or converter), made on first request.
// Runs under the string's stripe lock: several readers may ask at once.
const char *I18NString::cachedBytes(const char *encoding, I18NConverter *converter, int *length,
                                    I18N_STRINGBUFFER_ALLOCATOR_CALLBACK allocator, void *context) const {
  const char *name = converter != nullptr ? converter->getEncoding() : (encoding == nullptr ? "" : encoding);
  int inputMode = converter != nullptr ? converter->getBuiltInUnconvertibleInputSequenceCallback() : -1;
  int outputMode = converter != nullptr ? converter->getBuiltInUnconvertibleOutputSequenceCallback() : -1;
  XYLThreadGuard guard(getLockFromPtr(this));
  for (ByteForm *form = m_pByteForms; form != nullptr; form = form->next) {
    if (form->converter == converter && form->inputMode == inputMode && form->outputMode == outputMode &&
        std::strcmp(form->encoding, name) == 0) {
      if (length != nullptr)
        *length = form->length;
      return form->bytes;
    }
  }
  ByteForm *form = static_cast<ByteForm *>(XYLUtMemory::malloc(sizeof(ByteForm)));
  if (form == nullptr)
    raiseHeapFailure();
  form->encoding = XYLUtMemory::strdup(name);
  if (form->encoding == nullptr) {
    XYLUtMemory::free(form);
    raiseHeapFailure();
  }
  if (allocator == nullptr) {
    allocator = m_pAllocator;
    context = m_pAllocatorContext;
  }
  int produced = 0;
  char *bytes;
  try {
    bytes = convertToBytes(encoding, converter, &produced, allocator, context);
  } catch (...) {
    XYLUtMemory::free(form->encoding);
    XYLUtMemory::free(form);
    throw;
  }
  form->converter = converter;
  form->inputMode = inputMode;
  form->outputMode = outputMode;
  form->bytes = bytes;
  form->length = produced;
  form->allocator = allocator;
  form->context = context;
  form->next = m_pByteForms;
  m_pByteForms = form;
  if (length != nullptr)
    *length = produced;
  return bytes;
}

const char *I18NString::c_str(const char *encoding, int *length, I18N_STRINGBUFFER_ALLOCATOR_CALLBACK allocator,
                              void *context) const {
  // ASCII content needs no cached form in an ASCII-compatible encoding: the
  // ASCII buffer is the answer.
  icu::UnicodeString *form = unicodeForm();
  if ((form == nullptr || m_asciiBufLength >= 0) && asciiCompatibleName(encoding)) {
    if (length != nullptr)
      *length = m_asciiBufLength;
    return m_pAsciiBuffer;
  }
  return cachedBytes(encoding, nullptr, length, allocator, context);
}

const char *I18NString::c_str(const I18NConverter &converter, int *length,
                              I18N_STRINGBUFFER_ALLOCATOR_CALLBACK allocator, void *context) const {
  icu::UnicodeString *form = unicodeForm();
  if ((form == nullptr || m_asciiBufLength >= 0) && asciiCompatibleName(converter.getEncoding())) {
    if (length != nullptr)
      *length = m_asciiBufLength;
    return m_pAsciiBuffer;
  }
  return cachedBytes(nullptr, const_cast<I18NConverter *>(&converter), length, allocator, context);
}

char *I18NString::toBytes(const char *encoding, int *length, I18N_STRINGBUFFER_ALLOCATOR_CALLBACK allocator,
                          void *context) const {
  return convertToBytes(encoding, nullptr, length, allocator, context);
}

char *I18NString::toBytes(const I18NConverter &converter, int *length, I18N_STRINGBUFFER_ALLOCATOR_CALLBACK allocator,
                          void *context) const {
  return convertToBytes(nullptr, const_cast<I18NConverter *>(&converter), length, allocator, context);
}

int I18NString::toBytes(char *&buffer, const char *encoding, I18N_STRINGBUFFER_ALLOCATOR_CALLBACK allocator,
                        void *context) const {
  int length = 0;
  buffer = convertToBytes(encoding, nullptr, &length, allocator, context);
  return length;
}

int I18NString::toBytes(char *&buffer, const I18NConverter &converter, I18N_STRINGBUFFER_ALLOCATOR_CALLBACK allocator,
                        void *context) const {
  int length = 0;
  buffer = convertToBytes(nullptr, const_cast<I18NConverter *>(&converter), &length, allocator, context);
  return length;
}

namespace {
int writeAll(I18NByteWriter &writer, char *bytes, int length) {
  // Pieces of at most 64 KiB, so that a writer may forward them as they come.
  const int kPiece = 1 << 16;
  int result = length;
  for (int done = 0; done < length; done += kPiece) {
    int piece = length - done < kPiece ? length - done : kPiece;
    if (writer.write(bytes + done, piece) != 0) {
      result = I18N_GENERAL_FAILURE;
      break;
    }
  }
  XYLUtMemory::free(bytes);
  return result;
}
} // namespace

int I18NString::toBytes(I18NByteWriter &writer, const char *encoding) const {
  int length = 0;
  char *bytes = convertToBytes(encoding, nullptr, &length, nullptr, nullptr);
  return writeAll(writer, bytes, length);
}

int I18NString::toBytes(I18NByteWriter &writer, const I18NConverter &converter) const {
  int length = 0;
  char *bytes = convertToBytes(nullptr, const_cast<I18NConverter *>(&converter), &length, nullptr, nullptr);
  return writeAll(writer, bytes, length);
}

void I18NString::freeBuffer(char *&buffer, I18N_STRINGBUFFER_ALLOCATOR_CALLBACK allocator, void *context) {
  release(allocator, context, buffer);
  buffer = nullptr;
}

// ---- Streams -------------------------------------------------------------------------------

std::ostream &operator<<(std::ostream &out, const I18NString &text) {
  int length = 0;
  char *bytes = text.toBytes(I18NGetPlatformDefaultEncoding(), &length);
  out.write(bytes, length);
  XYLUtMemory::free(bytes);
  return out;
}

std::istream &operator>>(std::istream &in, I18NString &text) {
  std::string word;
  if (in >> word)
    text = I18NString(word.data(), I18NGetPlatformDefaultEncoding(), static_cast<int>(word.size()));
  return in;
}

// ---- URI decoding -----------------------------------------------------------------------------

namespace {

using xyl_ut::hexValue;

// %XX escapes to bytes; a '%' without two hexadecimal digits stays.
std::string percentDecode(const char *text) {
  std::string bytes;
  if (text == nullptr)
    return bytes;
  for (const char *p = text; *p != '\0'; ++p) {
    if (*p == '%') {
      int high = hexValue(p[1]);
      int low = high < 0 ? -1 : hexValue(p[2]);
      if (high >= 0 && low >= 0) {
        bytes.push_back(static_cast<char>(high * 16 + low));
        p += 2;
        continue;
      }
    }
    bytes.push_back(*p);
  }
  return bytes;
}

// ICU's "Hex-Any" transliterator, made once; each decode works on a clone.
std::unique_ptr<icu::Transliterator> hexAnyClone() {
  static std::once_flag once;
  static icu::Transliterator *prototype = nullptr;
  static UErrorCode creation = U_ZERO_ERROR;
  std::call_once(once, [] {
    UErrorCode status = U_ZERO_ERROR;
    prototype = icu::Transliterator::createInstance("Hex-Any", UTRANS_FORWARD, status);
    if (U_FAILURE(status)) {
      delete prototype;
      prototype = nullptr;
      creation = status;
    } else if (prototype == nullptr) {
      creation = U_MEMORY_ALLOCATION_ERROR;
    }
  });
  if (prototype == nullptr)
    raiseRuntime(creation, "Transliterator creation failed.");
  std::unique_ptr<icu::Transliterator> copy(prototype->clone());
  if (copy == nullptr)
    raiseRuntime(U_MEMORY_ALLOCATION_ERROR, "Transliterator creation failed.");
  return copy;
}

I18NString finishUriDecode(I18NString &decoded) {
  // Only text that can hold a hexadecimal escape needs the transliterator.
  int length = 0;
  const char *ascii =
      I18NStringAccess::unicodeForm(decoded) == nullptr ? I18NStringAccess::asciiBuffer(decoded) : nullptr;
  if (ascii != nullptr) {
    length = I18NStringAccess::asciiLength(decoded);
    bool escape = false;
    for (int i = 0; i < length && !escape; ++i)
      escape = ascii[i] == '\\' || ascii[i] == '&' || ascii[i] == '+';
    if (!escape)
      return decoded;
  }
  std::unique_ptr<icu::Transliterator> transliterator = hexAnyClone();
  icu::UnicodeString text(decoded.getUnicodeString());
  transliterator->transliterate(text);
  if (text.isBogus())
    raiseHeapFailure();
  decoded.setTo(text);
  return decoded;
}

} // namespace

I18NString I18NUriDecode(const char *text, const char *encoding) {
  std::string bytes = percentDecode(text);
  I18NString decoded(bytes.data(), encoding, static_cast<int>(bytes.size()));
  return finishUriDecode(decoded);
}

I18NString I18NUriDecode(const char *text, const I18NConverter &converter) {
  std::string bytes = percentDecode(text);
  I18NString decoded(bytes.data(), converter, static_cast<int>(bytes.size()));
  return finishUriDecode(decoded);
}
