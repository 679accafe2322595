// SPDX-License-Identifier: Apache-2.0
// C interface: locales.
#include "i18n_c_frame.h"

#include <XYLCore/i18n/cpp/i18n_locale.h>
#include <XYLCore/i18n/cpp/i18n_string.h>

#include <cstring>

using namespace i18n_c;

// ---- Locale -----------------------------------------------------------------------

namespace {
// Copies one of the locale's ASCII names into the caller's buffer.
template <typename Get>
int copyName(I18NLocaleHandle locale, char *buffer, int bufferSize, I18NErrorCodes *error, Get get) {
  return guardLength(error, [&]() {
    const I18NString &name = get(obj(locale));
    int length = 0;
    const char *bytes = name.c_str("UTF8", &length);
    if (bufferSize <= length) {
      if (bufferSize > 0) {
        std::memcpy(need(buffer), bytes, static_cast<std::size_t>(bufferSize - 1));
        buffer[bufferSize - 1] = '\0';
      }
      raiseCode(I18N_BUFFER_TOO_SMALL);
    }
    std::memcpy(need(buffer), bytes, static_cast<std::size_t>(length) + 1);
    return length;
  });
}
} // namespace

void i18nLocaleCreate(I18NLocaleHandle *locale, const char *name, I18NErrorCodes *error) {
  create(locale, error, [&]() { return new I18NLocale(name); });
}

void i18nLocaleFree(I18NLocaleHandle *locale, I18NErrorCodes *error) { destroy<I18NLocale>(locale, error); }

int i18nLocaleGetName(I18NLocaleHandle locale, char *buffer, int bufferSize, I18NErrorCodes *error) {
  return copyName(locale, buffer, bufferSize, error,
                  [](const I18NLocale &l) -> const I18NString & { return l.getName(); });
}

int i18nLocaleGetLanguage(I18NLocaleHandle locale, char *buffer, int bufferSize, I18NErrorCodes *error) {
  return copyName(locale, buffer, bufferSize, error,
                  [](const I18NLocale &l) -> const I18NString & { return l.getLanguage(); });
}

int i18nLocaleGetCountry(I18NLocaleHandle locale, char *buffer, int bufferSize, I18NErrorCodes *error) {
  return copyName(locale, buffer, bufferSize, error,
                  [](const I18NLocale &l) -> const I18NString & { return l.getCountry(); });
}

int i18nLocaleGetVariant(I18NLocaleHandle locale, char *buffer, int bufferSize, I18NErrorCodes *error) {
  return copyName(locale, buffer, bufferSize, error,
                  [](const I18NLocale &l) -> const I18NString & { return l.getVariant(); });
}

int i18nLocaleCompare(I18NLocaleHandle locale, I18NStringHandle string, I18NStringHandle other, I18NErrorCodes *error) {
  return guard(error, 0, [&]() { return obj(locale).compare(obj(string), obj(other)); });
}

int i18nLocaleCompareIgnoreCase(I18NLocaleHandle locale, I18NStringHandle string, I18NStringHandle other,
                                I18NErrorCodes *error) {
  return guard(error, 0, [&]() { return obj(locale).compareIgnoreCase(obj(string), obj(other)); });
}

void i18nLocaleToLower(I18NLocaleHandle locale, I18NStringHandle string, I18NErrorCodes *error) {
  guard(error, [&]() { obj(locale).toLower(obj(string)); });
}

void i18nLocaleToUpper(I18NLocaleHandle locale, I18NStringHandle string, I18NErrorCodes *error) {
  guard(error, [&]() { obj(locale).toUpper(obj(string)); });
}
