// SPDX-License-Identifier: Apache-2.0
// The library's own ICU callbacks for unconvertible sequences: mode 1 asks
// the internal resources for a replacement, mode 3 asks the user callback.
#include "i18n/cpp/i18n_internal.h"

#include <XYLCore/i18n/cpp/i18n_internalresources.h>

#include <unicode/ucnv.h>
#include <unicode/ucnv_cb.h>
#include <unicode/ucnv_err.h>
#include <unicode/utf16.h>

namespace {

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

} // namespace

namespace i18n_detail {

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

} // namespace i18n_detail
