/* SPDX-License-Identifier: Apache-2.0
 * i18n_numericformat.h - I18NNumericFormat, a locale's number format over
 * ICU's decimal formatter.
 *
 * A numeric format is created for a locale (the default locale, "en-us"
 * unless I18NInitialize set another) with that locale's plain number
 * pattern ("#,##0.###" in English). Its pattern can be replaced by an ICU
 * decimal pattern, by an OLAP-style format string or by a named format;
 * setPattern tells them apart as follows:
 *   1. a named format, matched ignoring case: "General Number", "Currency",
 *      "Fixed", "Standard", "Percent", "Scientific";
 *   2. otherwise a text that only the OLAP syntax explains (a backslash, a
 *      double quote, a third section after two ';', a lower-case exponent
 *      "e+"/"e-"/"e0", an exponent "E-", a '?' placeholder or a scaling comma
 *      just before the decimal point or after the last digit placeholder) is
 *      converted from the OLAP syntax;
 *   3. otherwise the text is applied as an ICU pattern, and when ICU rejects
 *      it, converted from the OLAP syntax.
 * docs/numeric_formats.md lists the OLAP elements and the named formats
 * with the ICU patterns they become. An OLAP zero section (the third) is
 * kept beside the ICU pattern and used for values equal to zero; a scaling
 * comma divides by 1000 each. getPattern always gives the ICU pattern of the
 * positive and negative sections.
 *
 * Symbols (separators, signs, zero digit, currency symbol) are the locale's,
 * from ICU's own locale data; the currency and word companion files of the
 * internal resources are not consulted. setCurrencySymbol changes the symbol
 * that the pattern's currency sign (U+00A4) shows; useCurrencySymbol(true)
 * switches to the locale's currency pattern, useCurrencySymbol(false) back
 * to its plain number pattern.
 *
 * Output rule: every format... operation APPENDS its text to `out` and
 * returns `out`; every get... operation REPLACES the content of its out
 * string.
 *
 * Ownership: the object owns its ICU formatter(s) and symbols; copies are
 * deep and independent.
 * Thread safety: one object per thread; distinct objects may be used
 * from different threads at the same time (ICU's formatters are not
 * promised to be safe for concurrent use of one object).
 * Throws: I18NRuntimeError -7 when a pattern is rejected ("Invalid numeric
 * format pattern: ..."), when a digit buffer is not a decimal number
 * ("Invalid digit buffer: ...") or when ICU fails; XYLOutOfMemoryError when
 * memory runs out. Raise sites record "i18n/cpp/i18n_numericformat".
 */
#ifndef XYLCORE_I18N_CPP_I18N_NUMERICFORMAT_H
#define XYLCORE_I18N_CPP_I18N_NUMERICFORMAT_H

#include <XYLCore/XYLExport.h>
#include <XYLCore/i18n/cpp/i18n_locale.h>
#include <XYLCore/i18n/cpp/i18n_string.h>

class xI18NNumericFormat;

class XYL_API I18NNumericFormat {
public:
  // The default locale's number format.
  I18NNumericFormat();
  // The locale's number format.
  explicit I18NNumericFormat(const I18NLocale &locale);
  I18NNumericFormat(const I18NNumericFormat &other);
  I18NNumericFormat &operator=(const I18NNumericFormat &other);
  ~I18NNumericFormat();

  // ---- Formatting (appends to `out`, returns `out`) ------------------------
  I18NString &format(long value, I18NString &out) const;
  I18NString &format(long long value, I18NString &out) const;
  I18NString &format(int value, I18NString &out) const { return format(static_cast<long long>(value), out); }
  I18NString &format(double value, I18NString &out) const;
  // A decimal number as text, exactly (no rounding through double):
  // optional sign, digits with at most one '.', optional exponent
  // ("-1234.5678", "1e10", ".5"), with at most 1000 digits and an exponent
  // within +-1000. Anything else (empty, null, blanks, "NaN", a second '.')
  // raises I18NRuntimeError -7.
  I18NString &formatDigitBuffer(const char *digits, I18NString &out) const;

  // ---- Pattern -------------------------------------------------------------
  // The ICU pattern in use (replaces `pattern`).
  void getPattern(I18NString &pattern) const;
  // An ICU pattern, an OLAP format string or a named format (see the
  // banner). A rejected pattern raises I18NRuntimeError -7 and leaves the
  // format unchanged.
  void setPattern(const I18NString &pattern);
  // Whether setPattern would accept the text.
  static bool validate(const I18NString &pattern);

  // ---- Symbols (getters replace `out`) -------------------------------------
  void getCurrencySymbol(I18NString &out) const;
  void setCurrencySymbol(const I18NString &symbol);
  // true: the locale's currency pattern; false: its plain number pattern.
  void useCurrencySymbol(bool use);
  void getDecimalSeparator(I18NString &out) const;
  void getMonetaryDecimalSeparator(I18NString &out) const;
  void getGroupingSeparator(I18NString &out) const;
  void getMinusSign(I18NString &out) const;
  void getPlusSign(I18NString &out) const;
  void getZeroDigit(I18NString &out) const;

  // The locale the format was created for.
  const I18NLocale &getLocale() const;

private:
  xI18NNumericFormat *m_pImpl; // owned
};

#endif // XYLCORE_I18N_CPP_I18N_NUMERICFORMAT_H
