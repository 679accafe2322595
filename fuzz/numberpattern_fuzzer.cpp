// SPDX-License-Identifier: Apache-2.0
// Fuzz target: numeric format patterns and digit buffers. The input is a
// pattern, optionally followed by a newline and a digit buffer. Validation,
// setPattern and formatting must end in a result or a documented
// I18NRuntimeError, never a crash or another escaping exception.
#include <XYLCore/ExceptionHierarchy/XYLErrors.h>
#include <XYLCore/i18n/cpp/i18n_init.h>
#include <XYLCore/i18n/cpp/i18n_numericformat.h>

#include <unicode/unistr.h>

#include <cstddef>
#include <cstdint>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  static const bool started = I18NInitialize() != 0;
  if (!started || size > 2048)
    return 0;
  std::string pattern(reinterpret_cast<const char *>(data), size);
  std::string digits = "-12345.678";
  const std::size_t newline = pattern.find('\n');
  if (newline != std::string::npos) {
    digits = pattern.substr(newline + 1);
    pattern.resize(newline);
  }
  const I18NString text(icu::UnicodeString::fromUTF8(pattern));
  const bool valid = I18NNumericFormat::validate(text);
  I18NNumericFormat format{I18NLocale("en-us")};
  try {
    format.setPattern(text);
  } catch (I18NRuntimeError &) {
    if (valid)
      __builtin_trap(); // validate and setPattern disagree
  }
  I18NString out;
  format.format(-0.0, out);
  format.format(1.0 / 3.0, out);
  format.format(-9223372036854775807LL - 1, out);
  format.format(1e308, out);
  try {
    format.formatDigitBuffer(digits.c_str(), out);
  } catch (I18NRuntimeError &) {
    // not a decimal number: documented
  }
  format.getPattern(out);
  return 0;
}
