// SPDX-License-Identifier: Apache-2.0
// C interface, string family: creation, byte output, size and editing.
#include "i18n_c_frame.h"

#include <XYLCore/i18n/cpp/i18n_converter.h>
#include <XYLCore/i18n/cpp/i18n_string.h>

#include <cstdio>
#include <cstring>
#include <string>

using namespace i18n_c;

// ---- Creation ---------------------------------------------------------------

void i18nStringCreate(I18NStringHandle *string, I18NErrorCodes *error) {
  i18nStringCreateWithAllocator(string, nullptr, nullptr, error);
}

void i18nStringCreateWithAllocator(I18NStringHandle *string, I18N_STRINGBUFFER_ALLOCATOR_CALLBACK allocator,
                                   void *context, I18NErrorCodes *error) {
  create(string, error, [&]() { return new I18NString(allocator, context); });
}

void i18nStringCreateInitialSize(I18NStringHandle *string, int initialSize, I18NErrorCodes *error) {
  i18nStringCreateInitialSizeWithAllocator(string, initialSize, nullptr, nullptr, error);
}

void i18nStringCreateInitialSizeWithAllocator(I18NStringHandle *string, int initialSize,
                                              I18N_STRINGBUFFER_ALLOCATOR_CALLBACK allocator, void *context,
                                              I18NErrorCodes *error) {
  create(string, error, [&]() { return new I18NString(initialSize, allocator, context); });
}

void i18nStringBytesToString(I18NStringHandle *string, const char *bytes, int length, const char *encoding,
                             I18NErrorCodes *error) {
  i18nStringBytesToStringWithAllocator(string, bytes, length, encoding, nullptr, nullptr, error);
}

void i18nStringBytesToStringWithAllocator(I18NStringHandle *string, const char *bytes, int length, const char *encoding,
                                          I18N_STRINGBUFFER_ALLOCATOR_CALLBACK allocator, void *context,
                                          I18NErrorCodes *error) {
  create(string, error, [&]() { return new I18NString(bytes, encoding, length, allocator, context); });
}

void i18nStringNtBytesToString(I18NStringHandle *string, const char *bytes, const char *encoding,
                               I18NErrorCodes *error) {
  i18nStringBytesToStringWithAllocator(string, bytes, -1, encoding, nullptr, nullptr, error);
}

void i18nStringNtBytesToStringWithAllocator(I18NStringHandle *string, const char *bytes, const char *encoding,
                                            I18N_STRINGBUFFER_ALLOCATOR_CALLBACK allocator, void *context,
                                            I18NErrorCodes *error) {
  i18nStringBytesToStringWithAllocator(string, bytes, -1, encoding, allocator, context, error);
}

void i18nStringCodePointToString(I18NStringHandle *string, unsigned int codePoint, I18NErrorCodes *error) {
  i18nStringRepeatingCodePointToStringWithAllocator(string, codePoint, 1, nullptr, nullptr, error);
}

void i18nStringCodePointToStringWithAllocator(I18NStringHandle *string, unsigned int codePoint,
                                              I18N_STRINGBUFFER_ALLOCATOR_CALLBACK allocator, void *context,
                                              I18NErrorCodes *error) {
  i18nStringRepeatingCodePointToStringWithAllocator(string, codePoint, 1, allocator, context, error);
}

void i18nStringCodePointToStringInitialSize(I18NStringHandle *string, int initialSize, unsigned int codePoint,
                                            I18NErrorCodes *error) {
  i18nStringRepeatingCodePointToStringInitialSizeWithAllocator(string, initialSize, codePoint, 1, nullptr, nullptr,
                                                               error);
}

void i18nStringCodePointToStringInitialSizeWithAllocator(I18NStringHandle *string, int initialSize,
                                                         unsigned int codePoint,
                                                         I18N_STRINGBUFFER_ALLOCATOR_CALLBACK allocator, void *context,
                                                         I18NErrorCodes *error) {
  i18nStringRepeatingCodePointToStringInitialSizeWithAllocator(string, initialSize, codePoint, 1, allocator, context,
                                                               error);
}

void i18nStringCodePointsToString(I18NStringHandle *string, const unsigned int *codePoints, I18NErrorCodes *error) {
  i18nStringCodePointsToStringWithAllocator(string, codePoints, nullptr, nullptr, error);
}

void i18nStringCodePointsToStringWithAllocator(I18NStringHandle *string, const unsigned int *codePoints,
                                               I18N_STRINGBUFFER_ALLOCATOR_CALLBACK allocator, void *context,
                                               I18NErrorCodes *error) {
  create(string, error, [&]() { return new I18NString(codePoints, allocator, context); });
}

void i18nStringRepeatingCodePointToString(I18NStringHandle *string, unsigned int codePoint, int count,
                                          I18NErrorCodes *error) {
  i18nStringRepeatingCodePointToStringWithAllocator(string, codePoint, count, nullptr, nullptr, error);
}

void i18nStringRepeatingCodePointToStringWithAllocator(I18NStringHandle *string, unsigned int codePoint, int count,
                                                       I18N_STRINGBUFFER_ALLOCATOR_CALLBACK allocator, void *context,
                                                       I18NErrorCodes *error) {
  create(string, error, [&]() { return new I18NString(codePoint, count, allocator, context); });
}

void i18nStringRepeatingCodePointToStringInitialSize(I18NStringHandle *string, int initialSize, unsigned int codePoint,
                                                     int count, I18NErrorCodes *error) {
  i18nStringRepeatingCodePointToStringInitialSizeWithAllocator(string, initialSize, codePoint, count, nullptr, nullptr,
                                                               error);
}

void i18nStringRepeatingCodePointToStringInitialSizeWithAllocator(I18NStringHandle *string, int initialSize,
                                                                  unsigned int codePoint, int count,
                                                                  I18N_STRINGBUFFER_ALLOCATOR_CALLBACK allocator,
                                                                  void *context, I18NErrorCodes *error) {
  create(string, error, [&]() { return new I18NString(initialSize, codePoint, count, allocator, context); });
}

void i18nStringStringToString(I18NStringHandle *string, I18NStringHandle source, I18NErrorCodes *error) {
  create(string, error, [&]() { return new I18NString(obj(source)); });
}

void i18nStringAttach(I18NStringHandle string, void *buffer, int byteSize, I18NErrorCodes *error) {
  guard(error, [&]() { obj(string).attach(buffer, byteSize); });
}

void i18nStringFree(I18NStringHandle *string, I18NErrorCodes *error) { destroy<I18NString>(string, error); }

// ---- Output -----------------------------------------------------------------

int i18nStringStringToBytes(I18NStringHandle string, const char *encoding, char **bytes, I18NErrorCodes *error) {
  return i18nStringStringToBytesWithAllocator(string, encoding, bytes, nullptr, nullptr, error);
}

int i18nStringStringToBytesWithAllocator(I18NStringHandle string, const char *encoding, char **bytes,
                                         I18N_STRINGBUFFER_ALLOCATOR_CALLBACK allocator, void *context,
                                         I18NErrorCodes *error) {
  if (bytes != nullptr)
    *bytes = nullptr;
  return guardLength(error, [&]() {
    int length = 0;
    *need(bytes) = obj(string).toBytes(encoding, &length, allocator, context);
    return length;
  });
}

void i18nStringFreeBuffer(char *, I18NErrorCodes *error) {
  // Deliberately releases nothing (see the header).
  if (error != nullptr)
    *error = I18N_SUCCESS;
}

int i18nStringFgets(I18NStringHandle string, FILE *stream, I18NErrorCodes *error) {
  return guardLength(error, [&]() {
    I18NString &text = obj(string);
    need(stream);
    // One line as fgets reads it, in pieces of any length.
    std::string line;
    char chunk[256];
    while (std::fgets(chunk, sizeof chunk, stream) != nullptr) {
      line.append(chunk, std::strlen(chunk));
      if (!line.empty() && line.back() == '\n')
        break;
    }
    if (std::ferror(stream))
      raiseCode(I18N_GENERAL_FAILURE, "The stream could not be read.");
    I18NString read(line.data(), I18NGetPlatformDefaultEncoding(), static_cast<int>(line.size()));
    text = read;
    return text.length();
  });
}

int i18nStringFputs(I18NStringHandle string, FILE *stream, I18NErrorCodes *error) {
  return guardLength(error, [&]() {
    const I18NString &text = obj(string);
    need(stream);
    int length = 0;
    const char *bytes = text.c_str(I18NGetPlatformDefaultEncoding(), &length);
    if (std::fwrite(bytes, 1, static_cast<std::size_t>(length), stream) != static_cast<std::size_t>(length))
      raiseCode(I18N_GENERAL_FAILURE, "The stream could not be written.");
    return length;
  });
}

int i18nStringGets(I18NStringHandle string, I18NErrorCodes *error) { return i18nStringFgets(string, stdin, error); }

int i18nStringPuts(I18NStringHandle string, I18NErrorCodes *error) {
  int length = i18nStringFputs(string, stdout, error);
  if (length < 0)
    return -1;
  if (std::fputc('\n', stdout) == EOF) {
    if (error != nullptr)
      *error = I18N_GENERAL_FAILURE;
    return -1;
  }
  return length + 1;
}

// ---- Size -------------------------------------------------------------------

int i18nStringStringLength(I18NStringHandle string, I18NErrorCodes *error) {
  return guard(error, 0, [&]() { return obj(string).length(); });
}

int i18nStringStringSize(I18NStringHandle string, I18NErrorCodes *error) {
  return guard(error, 0, [&]() { return obj(string).size(); });
}

int i18nStringCodePointLength(unsigned int codePoint, I18NErrorCodes *error) {
  return guard(error, 0, [&]() { return I18NString::length(codePoint); });
}

int i18nStringCodePointSize(unsigned int codePoint, I18NErrorCodes *error) {
  return guard(error, 0, [&]() { return I18NString::size(codePoint); });
}

int i18nStringCodePointsLength(const unsigned int *codePoints, I18NErrorCodes *error) {
  return guard(error, 0, [&]() { return I18NString::length(codePoints); });
}

int i18nStringCodePointsSize(const unsigned int *codePoints, I18NErrorCodes *error) {
  return guard(error, 0, [&]() { return I18NString::size(codePoints); });
}

int i18nStringDisplaySize(I18NStringHandle string, I18NErrorCodes *error) {
  return guard(error, 0, [&]() { return obj(string).displaySize(); });
}

int i18nStringEmpty(I18NStringHandle string, I18NErrorCodes *error) {
  return guard(error, 0, [&]() { return obj(string).empty() ? 1 : 0; });
}

// ---- Edit -------------------------------------------------------------------

void i18nStringAppendString(I18NStringHandle string, I18NStringHandle source, I18NErrorCodes *error) {
  guard(error, [&]() { obj(string).append(obj(source)); });
}

void i18nStringAppendCodePoint(I18NStringHandle string, unsigned int codePoint, I18NErrorCodes *error) {
  guard(error, [&]() { obj(string).append(codePoint, 1); });
}

void i18nStringAppendCodePoints(I18NStringHandle string, const unsigned int *codePoints, I18NErrorCodes *error) {
  guard(error, [&]() { obj(string).append(need(codePoints)); });
}

void i18nStringAppendRepeatingCodePoint(I18NStringHandle string, unsigned int codePoint, int count,
                                        I18NErrorCodes *error) {
  guard(error, [&]() { obj(string).append(codePoint, count); });
}

void i18nStringInsertString(I18NStringHandle string, I18NStringOffset offset, I18NStringHandle source,
                            I18NErrorCodes *error) {
  guard(error, [&]() { obj(string).insert(offset, obj(source)); });
}

void i18nStringInsertCodePoint(I18NStringHandle string, I18NStringOffset offset, unsigned int codePoint,
                               I18NErrorCodes *error) {
  guard(error, [&]() { obj(string).insert(offset, codePoint, 1); });
}

void i18nStringInsertCodePoints(I18NStringHandle string, I18NStringOffset offset, const unsigned int *codePoints,
                                I18NErrorCodes *error) {
  guard(error, [&]() { obj(string).insert(offset, need(codePoints)); });
}

void i18nStringInsertRepeatingCodePoint(I18NStringHandle string, I18NStringOffset offset, unsigned int codePoint,
                                        int count, I18NErrorCodes *error) {
  guard(error, [&]() { obj(string).insert(offset, codePoint, count); });
}

void i18nStringReplaceString(I18NStringHandle string, I18NStringOffset offset, int count, I18NStringHandle source,
                             I18NErrorCodes *error) {
  guard(error, [&]() { obj(string).replace(offset, count, obj(source)); });
}

void i18nStringReplaceCodePoint(I18NStringHandle string, I18NStringOffset offset, int count, unsigned int codePoint,
                                I18NErrorCodes *error) {
  guard(error, [&]() { obj(string).replace(offset, count, codePoint, 1); });
}

void i18nStringReplaceCodePoints(I18NStringHandle string, I18NStringOffset offset, int count,
                                 const unsigned int *codePoints, I18NErrorCodes *error) {
  guard(error, [&]() { obj(string).replace(offset, count, need(codePoints)); });
}

void i18nStringReplaceRepeatingCodePoint(I18NStringHandle string, I18NStringOffset offset, int count,
                                         unsigned int codePoint, int repeat, I18NErrorCodes *error) {
  guard(error, [&]() { obj(string).replace(offset, count, codePoint, repeat); });
}

void i18nStringErase(I18NStringHandle string, I18NStringOffset offset, int count, I18NErrorCodes *error) {
  guard(error, [&]() { obj(string).erase(offset, count); });
}

void i18nStringNormalize(I18NStringHandle string, int form, I18NErrorCodes *error) {
  guard(error, [&]() {
    I18NString &text = obj(string);
    if (form < I18N_NORMALIZATION_DEFAULT || form > I18N_NORMALIZATION_NFKD)
      raiseCode(I18N_GENERAL_FAILURE, "The normalization form is not valid.");
    text.normalize(static_cast<I18NNormalizationForms>(form));
  });
}

void i18nStringSubstr(I18NStringHandle string, I18NStringOffset offset, int count, I18NStringHandle target,
                      I18NErrorCodes *error) {
  guard(error, [&]() {
    const I18NString &text = obj(string);
    I18NString &out = obj(target);
    out = text.substr(offset, count);
  });
}

void i18nStringSubstring(I18NStringHandle string, I18NStringOffset offset, int count, I18NStringHandle target,
                         I18NErrorCodes *error) {
  guard(error, [&]() {
    const I18NString &text = obj(string);
    I18NString &out = obj(target);
    out = text.substring(offset, count);
  });
}
