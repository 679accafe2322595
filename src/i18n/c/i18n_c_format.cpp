// SPDX-License-Identifier: Apache-2.0
// C interface: numeric and date-time formats.
#include "i18n_c_frame.h"

#include <XYLCore/i18n/cpp/i18n_datetimeformat.h>
#include <XYLCore/i18n/cpp/i18n_numericformat.h>

using namespace i18n_c;

namespace {
// A format for a locale handle; null means the default locale.
template <typename Format> Format *makeFormat(I18NLocaleHandle locale) {
  return locale == nullptr ? new Format() : new Format(obj(locale));
}

} // namespace

// ---- Numeric format -----------------------------------------------------------

void i18nNumericFormatCreate(I18NNumericFormatHandle *format, I18NLocaleHandle locale, I18NErrorCodes *error) {
  create(format, error, [&]() { return makeFormat<I18NNumericFormat>(locale); });
}

void i18nNumericFormatFree(I18NNumericFormatHandle *format, I18NErrorCodes *error) {
  destroy<I18NNumericFormat>(format, error);
}

void i18nNumericFormatFormat(I18NNumericFormatHandle format, double value, I18NStringHandle target,
                             I18NErrorCodes *error) {
  guard(error, [&]() {
    const I18NNumericFormat &f = obj(format);
    f.format(value, obj(target));
  });
}

void i18nNumericFormatFormatDigitBuffer(I18NNumericFormatHandle format, const char *digits, I18NStringHandle target,
                                        I18NErrorCodes *error) {
  guard(error, [&]() {
    const I18NNumericFormat &f = obj(format);
    f.formatDigitBuffer(digits, obj(target));
  });
}

void i18nNumericFormatGetPattern(I18NNumericFormatHandle format, I18NStringHandle target, I18NErrorCodes *error) {
  guard(error, [&]() { obj(format).getPattern(obj(target)); });
}

void i18nNumericFormatSetPattern(I18NNumericFormatHandle format, I18NStringHandle pattern, I18NErrorCodes *error) {
  guard(error, [&]() { obj(format).setPattern(obj(pattern)); });
}

int i18nNumericFormatValidate(I18NStringHandle pattern, I18NErrorCodes *error) {
  return guard(error, 0, [&]() { return I18NNumericFormat::validate(obj(pattern)) ? 1 : 0; });
}

void i18nNumericFormatGetCurrencySymbol(I18NNumericFormatHandle format, I18NStringHandle target,
                                        I18NErrorCodes *error) {
  guard(error, [&]() { obj(format).getCurrencySymbol(obj(target)); });
}

void i18nNumericFormatSetCurrencySymbol(I18NNumericFormatHandle format, I18NStringHandle symbol,
                                        I18NErrorCodes *error) {
  guard(error, [&]() { obj(format).setCurrencySymbol(obj(symbol)); });
}

void i18nNumericFormatUseCurrencySymbol(I18NNumericFormatHandle format, int use, I18NErrorCodes *error) {
  guard(error, [&]() { obj(format).useCurrencySymbol(use != 0); });
}

#define I18N_C_NUMERIC_GETTER(Name, member)                                                                            \
  void i18nNumericFormat##Name(I18NNumericFormatHandle format, I18NStringHandle target, I18NErrorCodes *error) {       \
    guard(error, [&]() { obj(format).member(obj(target)); });                                                          \
  }

I18N_C_NUMERIC_GETTER(GetDecimalSeparator, getDecimalSeparator)
I18N_C_NUMERIC_GETTER(GetMonetaryDecimalSeparator, getMonetaryDecimalSeparator)
I18N_C_NUMERIC_GETTER(GetGroupingSeparator, getGroupingSeparator)
I18N_C_NUMERIC_GETTER(GetMinusSign, getMinusSign)
I18N_C_NUMERIC_GETTER(GetPlusSign, getPlusSign)
I18N_C_NUMERIC_GETTER(GetZeroDigit, getZeroDigit)

// ---- Date-time format -----------------------------------------------------------

void i18nDateTimeFormatCreate(I18NDateTimeFormatHandle *format, I18NLocaleHandle locale, I18NErrorCodes *error) {
  create(format, error, [&]() { return makeFormat<I18NDateTimeFormat>(locale); });
}

void i18nDateTimeFormatFree(I18NDateTimeFormatHandle *format, I18NErrorCodes *error) {
  destroy<I18NDateTimeFormat>(format, error);
}

void i18nDateTimeFormatFormat(I18NDateTimeFormatHandle format, double epochMilliseconds, I18NStringHandle target,
                              I18NErrorCodes *error) {
  guard(error, [&]() {
    const I18NDateTimeFormat &f = obj(format);
    f.format(epochMilliseconds, obj(target));
  });
}

void i18nDateTimeFormatCalendarFormat(I18NDateTimeFormatHandle format, int year, int month, int day, int hour,
                                      int minute, int second, int millisecond, I18NStringHandle target,
                                      I18NErrorCodes *error) {
  guard(error, [&]() {
    const I18NDateTimeFormat &f = obj(format);
    f.calendarFormat(year, month, day, hour, minute, second, millisecond, obj(target));
  });
}

void i18nDateTimeFormatGetPattern(I18NDateTimeFormatHandle format, I18NStringHandle target, I18NErrorCodes *error) {
  guard(error, [&]() { obj(format).getPattern(obj(target)); });
}

void i18nDateTimeFormatSetPattern(I18NDateTimeFormatHandle format, I18NStringHandle pattern, I18NErrorCodes *error) {
  guard(error, [&]() { obj(format).setPattern(obj(pattern)); });
}

int i18nDateTimeFormatValidate(I18NStringHandle pattern, I18NErrorCodes *error) {
  return guard(error, 0, [&]() { return I18NDateTimeFormat::validate(obj(pattern)) ? 1 : 0; });
}

void i18nDateTimeFormatGetAmString(I18NDateTimeFormatHandle format, I18NStringHandle target, I18NErrorCodes *error) {
  guard(error, [&]() { obj(format).getAmString(obj(target)); });
}

void i18nDateTimeFormatGetPmString(I18NDateTimeFormatHandle format, I18NStringHandle target, I18NErrorCodes *error) {
  guard(error, [&]() { obj(format).getPmString(obj(target)); });
}

#define I18N_C_DATETIME_NAME(Name, member)                                                                             \
  void i18nDateTimeFormat##Name(I18NDateTimeFormatHandle format, int which, I18NStringHandle target,                   \
                                I18NErrorCodes *error) {                                                               \
    guard(error, [&]() { obj(format).member(which, obj(target)); });                                                   \
  }

I18N_C_DATETIME_NAME(GetDayName, getDayName)
I18N_C_DATETIME_NAME(GetDayShortName, getDayShortName)
I18N_C_DATETIME_NAME(GetMonthName, getMonthName)
I18N_C_DATETIME_NAME(GetMonthShortName, getMonthShortName)
