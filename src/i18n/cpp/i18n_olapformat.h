/* SPDX-License-Identifier: Apache-2.0 */
// Private to the internationalisation layer: OLAP-style number format
// strings (sections positive;negative;zero, '0' '#' '?' placeholders,
// grouping and scaling commas, percent, scientific, quoted literals,
// backslash escapes, named formats) turned into ICU decimal patterns.
// docs/numeric_formats.md documents the mapping. Exported (not installed)
// so that the unit tests and the fuzz targets reach the converter itself.
#ifndef XYLCORE_SRC_I18N_CPP_I18N_OLAPFORMAT_H
#define XYLCORE_SRC_I18N_CPP_I18N_OLAPFORMAT_H

#include <XYLCore/XYLExport.h>

#include <unicode/unistr.h>

namespace i18n_olap {

// What a format string becomes.
struct OlapFormat {
  icu::UnicodeString pattern;     // ICU pattern: positive[;negative]
  int scale = 0;                  // power of ten applied before formatting (-3 per scaling comma)
  bool lowerCaseExponent = false; // "e+" / "e-": the exponent symbol is "e"
  bool localeCurrency = false;    // "Currency": the locale's currency pattern replaces `pattern`
  bool hasZero = false;           // a third section formats zero
  bool zeroIsLiteral = false;     // it has no digit placeholder: zeroText is the whole output
  icu::UnicodeString zeroText;    // the zero section's ICU pattern, or its literal text
};

// A named format ("Currency", "Fixed", ..., matched ignoring case): true and
// `out` filled; false otherwise.
XYL_API bool findNamedFormat(const icu::UnicodeString &text, OlapFormat &out);

// Whether the text uses something only the OLAP syntax explains: a
// backslash, a double quote, three sections, a lower-case exponent, "E-", a
// '?' placeholder or a scaling comma (outside ICU's apostrophe quotes).
XYL_API bool looksLikeOlap(const icu::UnicodeString &text);

// Converts a format string (not a named format); false with `error` set
// when the text cannot be expressed.
XYL_API bool convertOlap(const icu::UnicodeString &text, OlapFormat &out, const char *&error);

} // namespace i18n_olap

#endif
