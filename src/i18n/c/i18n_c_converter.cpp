// SPDX-License-Identifier: Apache-2.0
// C interface: converters.
#include "i18n_c_frame.h"

#include <XYLCore/i18n/cpp/i18n_converter.h>
#include <XYLCore/i18n/cpp/i18n_string.h>

using namespace i18n_c;

namespace {
// Raises the code a conversion left in its own error argument.
void check(I18NErrorCodes code) {
  if (code != I18N_SUCCESS)
    raiseCode(code);
}

// The buffer forms of the conversions: clears *target, then hands over what
// `convert(converter, &bytes, &code)` made; the length in bytes.
template <class Unit, class Convert>
int convertToBuffer(I18NConverterHandle converter, Unit **target, I18NErrorCodes *error, Convert convert) {
  if (target != nullptr)
    *target = nullptr;
  return guardLength(error, [&]() {
    I18NConverter &c = obj(converter);
    need(target);
    I18NErrorCodes code = I18N_SUCCESS;
    int bytes = 0;
    Unit *out = convert(c, &bytes, &code);
    check(code);
    *target = out;
    return bytes;
  });
}
} // namespace

// ---- Converter ------------------------------------------------------------------

void i18nConverterCreate(I18NConverterHandle *converter, const char *encoding, I18NErrorCodes *error) {
  create(converter, error, [&]() { return new I18NConverter(encoding); });
}

void i18nConverterFree(I18NConverterHandle *converter, I18NErrorCodes *error) {
  destroy<I18NConverter>(converter, error);
}

const char *i18nConverterGetEncoding(I18NConverterHandle converter, I18NErrorCodes *error) {
  return guard(error, static_cast<const char *>(nullptr), [&]() { return obj(converter).getEncoding(); });
}

int i18nConverterToUnicode(I18NConverterHandle converter, const char *source, int sourceLength, unsigned short **target,
                           I18NErrorCodes *error) {
  return i18nConverterToUnicodeWithAllocator(converter, source, sourceLength, target, nullptr, nullptr, error);
}

int i18nConverterToUnicodeWithAllocator(I18NConverterHandle converter, const char *source, int sourceLength,
                                        unsigned short **target, I18N_STRINGBUFFER_ALLOCATOR_CALLBACK allocator,
                                        void *context, I18NErrorCodes *error) {
  return convertToBuffer(converter, target, error, [&](I18NConverter &c, int *bytes, I18NErrorCodes *code) {
    return c.toUnicode(source, sourceLength, bytes, allocator, context, code);
  });
}

int i18nConverterToUnicodeString(I18NConverterHandle converter, const char *source, int sourceLength,
                                 I18NStringHandle target, I18NErrorCodes *error) {
  return guardLength(error, [&]() {
    I18NConverter &c = obj(converter);
    I18NString &out = obj(target);
    I18NErrorCodes code = I18N_SUCCESS;
    c.toUnicode(source, sourceLength, out, &code);
    check(code);
    return out.length();
  });
}

int i18nConverterFromUnicode(I18NConverterHandle converter, const unsigned short *source, int sourceBytes,
                             char **target, I18NErrorCodes *error) {
  return i18nConverterFromUnicodeWithAllocator(converter, source, sourceBytes, target, nullptr, nullptr, error);
}

int i18nConverterFromUnicodeWithAllocator(I18NConverterHandle converter, const unsigned short *source, int sourceBytes,
                                          char **target, I18N_STRINGBUFFER_ALLOCATOR_CALLBACK allocator, void *context,
                                          I18NErrorCodes *error) {
  return convertToBuffer(converter, target, error, [&](I18NConverter &c, int *bytes, I18NErrorCodes *code) {
    return c.fromUnicode(source, sourceBytes, bytes, allocator, context, code);
  });
}

int i18nConverterFromUnicodeString(I18NConverterHandle converter, I18NStringHandle source, char **target,
                                   I18NErrorCodes *error) {
  if (target != nullptr)
    *target = nullptr;
  return guardLength(error, [&]() {
    I18NConverter &c = obj(converter);
    const I18NString &text = obj(source);
    need(target);
    I18NErrorCodes code = I18N_SUCCESS;
    int bytes = 0;
    char *out = c.fromUnicode(text, &bytes, nullptr, nullptr, &code);
    check(code);
    *target = out;
    return bytes;
  });
}

int i18nConverterNumLegacyBytes(I18NConverterHandle converter, int codePoints, I18NErrorCodes *error) {
  return guard(error, 0, [&]() { return obj(converter).numLegacyBytes(codePoints); });
}

int i18nConverterNumLegacyCodePoints(I18NConverterHandle converter, int bytes, I18NErrorCodes *error) {
  return guard(error, 0, [&]() { return obj(converter).numLegacyCodePoints(bytes); });
}

int i18nConverterNumUnicodeBytes(I18NConverterHandle converter, int codePoints, I18NErrorCodes *error) {
  return guard(error, 0, [&]() { return obj(converter).numUnicodeBytes(codePoints); });
}

int i18nConverterNumUnicodeCodePoints(I18NConverterHandle converter, int bytes, I18NErrorCodes *error) {
  return guard(error, 0, [&]() { return obj(converter).numUnicodeCodePoints(bytes); });
}

int i18nConverterSizeofLegacyNull(I18NConverterHandle converter, I18NErrorCodes *error) {
  return guard(error, 0, [&]() { return obj(converter).sizeofLegacyNull(); });
}

int i18nConverterSizeofUnicodeNull(I18NConverterHandle converter, I18NErrorCodes *error) {
  return guard(error, 0, [&]() { return obj(converter).sizeofUnicodeNull(); });
}

int i18nConverterGetBuiltInUnconvertibleInputSequenceCallback(I18NConverterHandle converter, I18NErrorCodes *error) {
  return guard(error, -1, [&]() { return obj(converter).getBuiltInUnconvertibleInputSequenceCallback(); });
}

int i18nConverterGetBuiltInUnconvertibleOutputSequenceCallback(I18NConverterHandle converter, I18NErrorCodes *error) {
  return guard(error, -1, [&]() { return obj(converter).getBuiltInUnconvertibleOutputSequenceCallback(); });
}

void i18nConverterSetBuiltInUnconvertibleInputSequenceCallback(I18NConverterHandle converter, int mode,
                                                               I18NErrorCodes *error) {
  guard(error, [&]() { obj(converter).setBuiltInUnconvertibleInputSequenceCallback(mode); });
}

void i18nConverterSetBuiltInUnconvertibleOutputSequenceCallback(I18NConverterHandle converter, int mode,
                                                                I18NErrorCodes *error) {
  guard(error, [&]() { obj(converter).setBuiltInUnconvertibleOutputSequenceCallback(mode); });
}

I18N_UNCONVERTIBLE_INPUT_SEQUENCE_CALLBACK
i18nConverterGetUserDefinedUnconvertibleInputSequenceCallback(I18NConverterHandle converter, I18NErrorCodes *error) {
  return guard(error, static_cast<I18N_UNCONVERTIBLE_INPUT_SEQUENCE_CALLBACK>(nullptr),
               [&]() { return obj(converter).getUserDefinedUnconvertibleInputSequenceCallback(); });
}

I18N_UNCONVERTIBLE_OUTPUT_SEQUENCE_CALLBACK
i18nConverterGetUserDefinedInUnconvertibleOutputSequenceCallback(I18NConverterHandle converter, I18NErrorCodes *error) {
  return guard(error, static_cast<I18N_UNCONVERTIBLE_OUTPUT_SEQUENCE_CALLBACK>(nullptr),
               [&]() { return obj(converter).getUserDefinedUnconvertibleOutputSequenceCallback(); });
}

void i18nConverterSetUserDefinedUnconvertibleInputSequenceCallback(I18NConverterHandle converter,
                                                                   I18N_UNCONVERTIBLE_INPUT_SEQUENCE_CALLBACK callback,
                                                                   I18NErrorCodes *error) {
  guard(error, [&]() { obj(converter).setUserDefinedUnconvertibleInputSequenceCallback(callback); });
}

void i18nConverterSetUserDefinedUnconvertibleOutputSequenceCallback(
    I18NConverterHandle converter, I18N_UNCONVERTIBLE_OUTPUT_SEQUENCE_CALLBACK callback, I18NErrorCodes *error) {
  guard(error, [&]() { obj(converter).setUserDefinedUnconvertibleOutputSequenceCallback(callback); });
}
