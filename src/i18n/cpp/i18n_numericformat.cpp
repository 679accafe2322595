// SPDX-License-Identifier: Apache-2.0
// I18NNumericFormat: ICU's DecimalFormat with the OLAP format strings and
// an optional zero section on top.
#include "i18n/cpp/i18n_format_support.h"
#include "i18n/cpp/i18n_olapformat.h"

#include <XYLCore/ExceptionHierarchy/XYLErrors.h>
#include <XYLCore/i18n/cpp/i18n_numericformat.h>

#include <unicode/dcfmtsym.h>
#include <unicode/decimfmt.h>
#include <unicode/locid.h>
#include <unicode/numfmt.h>
#include <unicode/unistr.h>

#include <cstring>
#include <memory>
#include <new>
#include <string>

namespace {

// Everything a compiled pattern needs to format.
struct Compiled {
  std::unique_ptr<icu::DecimalFormat> format;
  std::unique_ptr<icu::DecimalFormat> zeroFormat; // zero section with digits
  bool hasZero = false;
  bool zeroIsLiteral = false;
  icu::UnicodeString zeroText;
};

icu::DecimalFormat *createStyle(const icu::Locale &locale, UNumberFormatStyle style,
                                const icu::DecimalFormatSymbols &symbols) {
  UErrorCode status = U_ZERO_ERROR;
  std::unique_ptr<icu::NumberFormat> base(icu::NumberFormat::createInstance(locale, style, status));
  if (status == U_MEMORY_ALLOCATION_ERROR)
    raiseOutOfMemory();
  auto *decimal = dynamic_cast<icu::DecimalFormat *>(base.get());
  if (U_FAILURE(status) || decimal == nullptr)
    raiseFailure(std::string("ICU cannot create a number format for the locale ") + locale.getName() + ".");
  base.release();
  decimal->setDecimalFormatSymbols(symbols);
  return decimal;
}

icu::DecimalFormat *createFromPattern(const icu::UnicodeString &pattern, const icu::DecimalFormatSymbols &symbols) {
  UErrorCode status = U_ZERO_ERROR;
  UParseError parseError;
  auto *copy = new icu::DecimalFormatSymbols(symbols);
  if (copy == nullptr)
    raiseOutOfMemory();
  std::unique_ptr<icu::DecimalFormat> format(new icu::DecimalFormat(pattern, copy, parseError, status));
  if (format == nullptr)
    raiseOutOfMemory();
  if (status == U_MEMORY_ALLOCATION_ERROR)
    raiseOutOfMemory();
  return U_SUCCESS(status) ? format.release() : nullptr;
}

// Compiles a named format, an OLAP string or an ICU pattern; false with
// `why` set when the text is rejected.
bool compile(const icu::UnicodeString &text, const icu::Locale &locale, const icu::DecimalFormatSymbols &symbols,
             Compiled &out, std::string &why) {
  if (text.isEmpty()) {
    why = "the pattern is empty";
    return false;
  }
  i18n_olap::OlapFormat olap;
  if (!i18n_olap::findNamedFormat(text, olap)) {
    const char *error = nullptr;
    bool olapOnly = i18n_olap::looksLikeOlap(text);
    if (!olapOnly) {
      out.format.reset(createFromPattern(text, symbols));
      if (out.format != nullptr)
        return true;
    }
    if (!i18n_olap::convertOlap(text, olap, error)) {
      why = olapOnly ? error : "ICU rejects it and it is no OLAP format string either";
      return false;
    }
  }
  if (olap.localeCurrency) {
    out.format.reset(createStyle(locale, UNUM_CURRENCY, symbols));
    out.format->setRoundingMode(icu::NumberFormat::kRoundHalfUp);
    return true;
  }
  icu::DecimalFormatSymbols own(symbols);
  if (olap.lowerCaseExponent)
    own.setSymbol(icu::DecimalFormatSymbols::kExponentialSymbol, icu::UnicodeString(u"e"));
  out.format.reset(createFromPattern(olap.pattern, own));
  if (out.format == nullptr) {
    why = "ICU rejects the converted pattern " + utf8(olap.pattern);
    return false;
  }
  // OLAP formats round halves away from zero; ICU patterns keep ICU's
  // half-even rounding.
  out.format->setRoundingMode(icu::NumberFormat::kRoundHalfUp);
  if (olap.scale != 0)
    out.format->setMultiplierScale(olap.scale);
  out.hasZero = olap.hasZero;
  out.zeroIsLiteral = olap.zeroIsLiteral;
  out.zeroText = olap.zeroText;
  if (olap.hasZero && !olap.zeroIsLiteral) {
    out.zeroFormat.reset(createFromPattern(olap.zeroText, own));
    if (out.zeroFormat == nullptr) {
      why = "ICU rejects the converted zero section " + utf8(olap.zeroText);
      return false;
    }
    out.zeroFormat->setRoundingMode(icu::NumberFormat::kRoundHalfUp);
  }
  return true;
}

// Optional sign, digits with at most one '.', optional exponent; at least
// one digit before the exponent, at most kMaxDigits digits and an exponent
// within +-kMaxDigits (the text ICU writes stays small).
const int kMaxDigits = 1000;

bool isDecimalNumber(const char *text) {
  const char *p = text;
  if (*p == '+' || *p == '-')
    ++p;
  int digits = 0;
  bool point = false;
  for (; (*p >= '0' && *p <= '9') || (*p == '.' && !point); ++p) {
    if (*p == '.')
      point = true;
    else
      ++digits;
  }
  if (digits == 0 || digits > kMaxDigits)
    return false;
  if (*p == 'e' || *p == 'E') {
    ++p;
    if (*p == '+' || *p == '-')
      ++p;
    int exponentDigits = 0;
    long exponent = 0;
    for (; *p >= '0' && *p <= '9'; ++p) {
      if (++exponentDigits <= 9)
        exponent = exponent * 10 + (*p - '0');
    }
    if (exponentDigits == 0 || exponentDigits > 9 || exponent > kMaxDigits)
      return false;
  }
  return *p == '\0';
}

bool isZeroNumber(const char *text) {
  for (const char *p = text; *p != '\0' && *p != 'e' && *p != 'E'; ++p) {
    if (*p >= '1' && *p <= '9')
      return false;
  }
  return true;
}

} // namespace

class xI18NNumericFormat {
public:
  xI18NNumericFormat(const I18NLocale &loc, const icu::DecimalFormatSymbols &sym) : locale(loc), symbols(sym) {}
  xI18NNumericFormat(const xI18NNumericFormat &other)
      : locale(other.locale), symbols(other.symbols), hasZero(other.hasZero), zeroIsLiteral(other.zeroIsLiteral),
        zeroText(other.zeroText) {
    format.reset(other.format->clone());
    if (other.zeroFormat != nullptr)
      zeroFormat.reset(other.zeroFormat->clone());
    if (format == nullptr || (other.zeroFormat != nullptr && zeroFormat == nullptr))
      raiseOutOfMemory();
  }

  void install(Compiled &compiled) {
    format = std::move(compiled.format);
    zeroFormat = std::move(compiled.zeroFormat);
    hasZero = compiled.hasZero;
    zeroIsLiteral = compiled.zeroIsLiteral;
    zeroText = compiled.zeroText;
  }

  I18NString &formatZero(I18NString &out) const {
    if (zeroIsLiteral) {
      appendResult(out, zeroText);
    } else {
      icu::UnicodeString text;
      zeroFormat->format(0.0, text);
      appendResult(out, text);
    }
    return out;
  }

  const icu::UnicodeString &symbol(icu::DecimalFormatSymbols::ENumberFormatSymbol which) const {
    return format->getDecimalFormatSymbols()->getConstSymbol(which);
  }

  I18NLocale locale;
  icu::DecimalFormatSymbols symbols; // the locale's, with a custom currency symbol when set
  std::unique_ptr<icu::DecimalFormat> format;
  std::unique_ptr<icu::DecimalFormat> zeroFormat;
  bool hasZero = false;
  bool zeroIsLiteral = false;
  icu::UnicodeString zeroText;
};

namespace {

xI18NNumericFormat *createImpl(const I18NLocale &locale) {
  UErrorCode status = U_ZERO_ERROR;
  icu::DecimalFormatSymbols symbols(locale.getLocale(), status);
  if (U_FAILURE(status))
    raiseFailure("ICU cannot load the number symbols of the locale.");
  std::unique_ptr<xI18NNumericFormat> impl(new (std::nothrow) xI18NNumericFormat(locale, symbols));
  if (impl == nullptr)
    raiseOutOfMemory();
  impl->format.reset(createStyle(locale.getLocale(), UNUM_DECIMAL, impl->symbols));
  return impl.release();
}

} // namespace

I18NNumericFormat::I18NNumericFormat() : m_pImpl(createImpl(I18NLocale(I18NLocale::gI18NDefaultLocaleName))) {}

I18NNumericFormat::I18NNumericFormat(const I18NLocale &locale) : m_pImpl(createImpl(locale)) {}

I18NNumericFormat::I18NNumericFormat(const I18NNumericFormat &other) : m_pImpl(copyImpl(*other.m_pImpl)) {}

I18NNumericFormat &I18NNumericFormat::operator=(const I18NNumericFormat &other) {
  assignImpl(m_pImpl, *other.m_pImpl);
  return *this;
}

I18NNumericFormat::~I18NNumericFormat() { delete m_pImpl; }

I18NString &I18NNumericFormat::format(long value, I18NString &out) const {
  return format(static_cast<long long>(value), out);
}

I18NString &I18NNumericFormat::format(long long value, I18NString &out) const {
  if (m_pImpl->hasZero && value == 0)
    return m_pImpl->formatZero(out);
  icu::UnicodeString text;
  m_pImpl->format->format(static_cast<int64_t>(value), text);
  appendResult(out, text);
  return out;
}

I18NString &I18NNumericFormat::format(double value, I18NString &out) const {
  if (m_pImpl->hasZero && value == 0.0)
    return m_pImpl->formatZero(out);
  icu::UnicodeString text;
  m_pImpl->format->format(value, text);
  appendResult(out, text);
  return out;
}

I18NString &I18NNumericFormat::formatDigitBuffer(const char *digits, I18NString &out) const {
  if (digits == nullptr || !isDecimalNumber(digits))
    raiseFailure(std::string("Invalid digit buffer: \"") + (digits == nullptr ? "(null)" : digits) + "\".");
  if (m_pImpl->hasZero && isZeroNumber(digits))
    return m_pImpl->formatZero(out);
  icu::UnicodeString text;
  UErrorCode status = U_ZERO_ERROR;
  m_pImpl->format->format(icu::StringPiece(digits), text, nullptr, status);
  if (U_FAILURE(status))
    raiseFailure(std::string("ICU cannot format the digit buffer \"") + digits + "\".");
  appendResult(out, text);
  return out;
}

void I18NNumericFormat::getPattern(I18NString &pattern) const {
  icu::UnicodeString text;
  m_pImpl->format->toPattern(text);
  pattern.setTo(text);
}

void I18NNumericFormat::setPattern(const I18NString &pattern) {
  Compiled compiled;
  std::string why;
  if (!compile(pattern.getUnicodeString(), m_pImpl->locale.getLocale(), m_pImpl->symbols, compiled, why))
    raiseFailure("Invalid numeric format pattern: \"" + utf8(pattern.getUnicodeString()) + "\" (" + why + ").");
  m_pImpl->install(compiled);
}

bool I18NNumericFormat::validate(const I18NString &pattern) {
  UErrorCode status = U_ZERO_ERROR;
  icu::Locale english("en_US");
  icu::DecimalFormatSymbols symbols(english, status);
  if (U_FAILURE(status))
    return false;
  Compiled compiled;
  std::string why;
  return compile(pattern.getUnicodeString(), english, symbols, compiled, why);
}

void I18NNumericFormat::getCurrencySymbol(I18NString &out) const {
  out.setTo(m_pImpl->symbol(icu::DecimalFormatSymbols::kCurrencySymbol));
}

void I18NNumericFormat::setCurrencySymbol(const I18NString &symbol) {
  const icu::UnicodeString &text = symbol.getUnicodeString();
  m_pImpl->symbols.setSymbol(icu::DecimalFormatSymbols::kCurrencySymbol, text);
  for (icu::DecimalFormat *format : {m_pImpl->format.get(), m_pImpl->zeroFormat.get()}) {
    if (format == nullptr)
      continue;
    icu::DecimalFormatSymbols own(*format->getDecimalFormatSymbols());
    own.setSymbol(icu::DecimalFormatSymbols::kCurrencySymbol, text);
    format->setDecimalFormatSymbols(own);
  }
}

void I18NNumericFormat::useCurrencySymbol(bool use) {
  Compiled compiled;
  compiled.format.reset(createStyle(m_pImpl->locale.getLocale(), use ? UNUM_CURRENCY : UNUM_DECIMAL, m_pImpl->symbols));
  m_pImpl->install(compiled);
}

void I18NNumericFormat::getDecimalSeparator(I18NString &out) const {
  out.setTo(m_pImpl->symbol(icu::DecimalFormatSymbols::kDecimalSeparatorSymbol));
}

void I18NNumericFormat::getMonetaryDecimalSeparator(I18NString &out) const {
  out.setTo(m_pImpl->symbol(icu::DecimalFormatSymbols::kMonetarySeparatorSymbol));
}

void I18NNumericFormat::getGroupingSeparator(I18NString &out) const {
  out.setTo(m_pImpl->symbol(icu::DecimalFormatSymbols::kGroupingSeparatorSymbol));
}

void I18NNumericFormat::getMinusSign(I18NString &out) const {
  out.setTo(m_pImpl->symbol(icu::DecimalFormatSymbols::kMinusSignSymbol));
}

void I18NNumericFormat::getPlusSign(I18NString &out) const {
  out.setTo(m_pImpl->symbol(icu::DecimalFormatSymbols::kPlusSignSymbol));
}

void I18NNumericFormat::getZeroDigit(I18NString &out) const {
  out.setTo(m_pImpl->symbol(icu::DecimalFormatSymbols::kZeroDigitSymbol));
}

const I18NLocale &I18NNumericFormat::getLocale() const { return m_pImpl->locale; }
