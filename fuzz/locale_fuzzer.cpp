// SPDX-License-Identifier: Apache-2.0
// Fuzz target: locale names. Any byte string is a name; building the locale
// and every query on it must end in a result, never a crash or an escaping
// exception other than the library's documented errors.
#include <XYLCore/ExceptionHierarchy/XYLErrors.h>
#include <XYLCore/i18n/cpp/i18n_init.h>
#include <XYLCore/i18n/cpp/i18n_internalresources.h>
#include <XYLCore/i18n/cpp/i18n_locale.h>
#include <XYLCore/i18n/cpp/i18n_string.h>

#include <cstddef>
#include <cstdint>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  static int inputs = 0;
  // The cache keeps every name until termination: start afresh now and then.
  if (inputs++ % 500 == 0) {
    I18NTerminate();
    if (I18NInitialize() == 0)
      return 0;
  }
  const std::string name(reinterpret_cast<const char *>(data), size); // cut at the first NUL by c_str()
  try {
    I18NLocale locale(name.c_str());
    I18NString normalized;
    locale.getNormalizedName(normalized);
    I18NLocale::normalizeLocaleName(locale.getName(), normalized);
    (void)locale.getLCID();
    (void)I18NLocale::isCJK(name.c_str());
    (void)I18NLocale::isCJK(locale);
    I18NString sample("Istanbul i\xC3\x9F", "UTF-8");
    locale.toUpper(sample);
    locale.toLower(sample);
    (void)locale.compare(sample, normalized);
    std::string mapped;
    I18NInternalResources::getDefaultLocaleForLanguage(name.c_str(), mapped);
    I18NInternalResources::getEncodingForLocale(name.c_str(), mapped);
    (void)(locale == I18NLocale("en-us"));
  } catch (XYLThrowable &) {
    // a documented failure (for example ICU refusing a collator) is fine
  }
  return 0;
}
