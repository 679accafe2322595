// SPDX-License-Identifier: Apache-2.0
// Fuzz target: OLAP number format strings. Any UTF-8 text goes through the
// converter; a converted text must then compile as a numeric format and
// format a few values. A documented I18NRuntimeError is fine; a crash, a
// sanitizer report or any other escaping exception is a finding.
#include "i18n/cpp/i18n_olapformat.h"

#include <XYLCore/ExceptionHierarchy/XYLErrors.h>
#include <XYLCore/i18n/cpp/i18n_init.h>
#include <XYLCore/i18n/cpp/i18n_numericformat.h>

#include <cstddef>
#include <cstdint>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  static const bool started = I18NInitialize() != 0;
  if (!started || size > 2048)
    return 0;
  const std::string bytes(reinterpret_cast<const char *>(data), size);
  const icu::UnicodeString text = icu::UnicodeString::fromUTF8(bytes);
  (void)i18n_olap::looksLikeOlap(text);
  i18n_olap::OlapFormat named;
  (void)i18n_olap::findNamedFormat(text, named);
  i18n_olap::OlapFormat olap;
  const char *error = nullptr;
  if (!i18n_olap::convertOlap(text, olap, error))
    return 0;
  try {
    I18NNumericFormat format{I18NLocale("de-de")};
    format.setPattern(I18NString(text));
    I18NString out;
    format.format(-1234.5678, out);
    format.format(0.0, out);
    format.format(9007199254740993LL, out);
    format.formatDigitBuffer("-1e-300", out);
    format.getPattern(out);
  } catch (I18NRuntimeError &) {
    // rejected by ICU: documented
  }
  return 0;
}
