// SPDX-License-Identifier: Apache-2.0
// Fuzz target: date-time patterns. The input is a pattern, optionally
// followed by a newline and a time zone name. Validation, setPattern, zone
// changes and formatting must end in a result or a documented
// I18NRuntimeError, never a crash or another escaping exception.
#include <XYLCore/ExceptionHierarchy/XYLErrors.h>
#include <XYLCore/i18n/cpp/i18n_datetimeformat.h>
#include <XYLCore/i18n/cpp/i18n_init.h>

#include <unicode/unistr.h>

#include <cstddef>
#include <cstdint>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  static const bool started = I18NInitialize() != 0;
  if (!started || size > 2048)
    return 0;
  std::string pattern(reinterpret_cast<const char *>(data), size);
  std::string zone;
  const std::size_t newline = pattern.find('\n');
  if (newline != std::string::npos) {
    zone = pattern.substr(newline + 1);
    pattern.resize(newline);
  }
  const I18NString text(icu::UnicodeString::fromUTF8(pattern));
  const bool valid = I18NDateTimeFormat::validate(text);
  I18NDateTimeFormat format{I18NLocale("fr-fr")};
  try {
    format.setPattern(text);
  } catch (I18NRuntimeError &) {
    if (valid)
      __builtin_trap(); // validate and setPattern disagree
  }
  if (!zone.empty()) {
    try {
      format.setTimeZone(I18NString(icu::UnicodeString::fromUTF8(zone)));
    } catch (I18NRuntimeError &) {
      // unknown zone: documented
    }
  }
  I18NString out;
  format.format(0.0, out);
  format.format(-62135596800000.0, out);
  format.format(253402300799999.0, out);
  format.calendarFormat(2024, 2, 29, 23, 59, 59, 999, out);
  format.getPattern(out);
  return 0;
}
