// SPDX-License-Identifier: Apache-2.0
// The I18NString forms of the converter and the locale-dependent name
// lookup (kept apart from i18n_converter.cpp so the converter core does not
// depend on the string class).
#include "i18n/cpp/i18n_internal.h"

#include <XYLCore/i18n/cpp/i18n_internalresources.h>
#include <XYLCore/i18n/cpp/i18n_locale.h>
#include <XYLCore/i18n/cpp/i18n_string.h>

#include <unicode/ucnv.h>
#include <unicode/unistr.h>

#include <string>

// ---- I18NString forms ----------------------------------------------------------------

void I18NConverter::toUnicode(const char *source, int sourceLength, I18NString &target, I18NErrorCodes *error) {
  if (error != nullptr)
    *error = I18N_SUCCESS;
  const int length = getEffectiveBufferSize(source, sourceLength);
  static const char kEmpty[1] = {0};
  icu::UnicodeString text;
  int32_t capacity = length + 1;
  for (int attempt = 0; attempt < 2; ++attempt) {
    UChar *buffer = text.getBuffer(capacity);
    if (buffer == nullptr)
      i18n_detail::raiseConverterOutOfMemory();
    UErrorCode status = U_ZERO_ERROR;
    int32_t units = ucnv_toUChars(m_pConverter, buffer, capacity, length == 0 ? kEmpty : source, length, &status);
    const I18NErrorCodes code = status == U_BUFFER_OVERFLOW_ERROR || status == U_STRING_NOT_TERMINATED_WARNING
                                    ? I18N_BUFFER_TOO_SMALL
                                    : (U_FAILURE(status) ? I18N_GENERAL_FAILURE : I18N_SUCCESS);
    text.releaseBuffer(code == I18N_SUCCESS ? units : 0);
    if (code == I18N_SUCCESS) {
      target.setTo(text);
      return;
    }
    if (code != I18N_BUFFER_TOO_SMALL) {
      if (error != nullptr)
        *error = code;
      return;
    }
    capacity = units + 1;
  }
  if (error != nullptr)
    *error = I18N_GENERAL_FAILURE;
}

int I18NConverter::fromUnicode(const I18NString &source, char *target, int targetBytes, I18NErrorCodes *error) {
  return fromUnicode(source.getUTF16Buffer(), source.unitLength() * 2, target, targetBytes, error);
}

char *I18NConverter::fromUnicode(const I18NString &source, int *targetBytes,
                                 I18N_STRINGBUFFER_ALLOCATOR_CALLBACK allocator, void *context, I18NErrorCodes *error) {
  return fromUnicode(source.getUTF16Buffer(), source.unitLength() * 2, targetBytes, allocator, context, error);
}

bool I18NConverter::shouldUseBOM(const I18NString &encoding) {
  std::string name;
  encoding.getUnicodeString().toUTF8String(name);
  return shouldUseBOM(name.c_str());
}

void I18NConverter::getEncodingForLocale(I18NString &encoding, const I18NLocale &locale) {
  std::string localeName;
  locale.getName().getUnicodeString().toUTF8String(localeName);
  std::string name;
  if (!I18NInternalResources::getEncodingForLocale(localeName.c_str(), name))
    name = I18NGetPlatformDefaultEncoding();
  encoding = I18NString(name.c_str(), I18NGetToolkitDefaultEncoding(), static_cast<int>(name.size()));
}
