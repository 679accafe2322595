/* SPDX-License-Identifier: Apache-2.0
 * i18n_datetimeformat.h - I18NDateTimeFormat, a locale's date and time
 * format over ICU's SimpleDateFormat (Gregorian calendar).
 *
 * A date-time format is created for a locale (the default locale, "en-us"
 * unless I18NInitialize set another) with that locale's medium date and
 * medium time pattern ("MMM d, y, h:mm:ss a" in English) and the time zone
 * "UTC". Pattern, names and calendar are the Gregorian calendar's, also for
 * a locale whose default calendar is another (ar-sa, th-th, fa-ir). Patterns are ICU date patterns: unquoted ASCII letters are
 * fields, text between apostrophes is literal, "''" is an apostrophe;
 * validate accepts a pattern whose every unquoted ASCII letter is a field
 * letter ICU knows and whose quotes are closed.
 *
 * Output rule: every format operation APPENDS its text to `out` and returns
 * `out`; every get... operation REPLACES the content of its out string.
 * Names (AM/PM, days, months) are the locale's, from ICU's own locale data;
 * the word companion files of the internal resources are not consulted.
 *
 * Ownership: the object owns its ICU formatter, calendar and symbols;
 * copies are deep and independent.
 * Thread safety: one object per thread; distinct objects may be used
 * from different threads at the same time (ICU's formatters are not
 * promised to be safe for concurrent use of one object).
 * Throws: I18NRuntimeError -7 for a rejected pattern ("Invalid date-time
 * format pattern: ..."), an unknown time zone ("Unknown time zone: ..."), a
 * day outside 1..7 or a month outside 1..12, calendar fields that do not
 * make a date, and ICU failures; XYLOutOfMemoryError when memory runs out.
 * Raise sites record "i18n/cpp/i18n_datetimeformat".
 */
#ifndef XYLCORE_I18N_CPP_I18N_DATETIMEFORMAT_H
#define XYLCORE_I18N_CPP_I18N_DATETIMEFORMAT_H

#include <XYLCore/XYLExport.h>
#include <XYLCore/i18n/cpp/i18n_locale.h>
#include <XYLCore/i18n/cpp/i18n_string.h>

class xI18NDateTimeFormat;

class XYL_API I18NDateTimeFormat {
public:
  // The default locale's format.
  I18NDateTimeFormat();
  explicit I18NDateTimeFormat(const I18NLocale &locale);
  I18NDateTimeFormat(const I18NDateTimeFormat &other);
  I18NDateTimeFormat &operator=(const I18NDateTimeFormat &other);
  ~I18NDateTimeFormat();

  // ---- Formatting (appends to `out`, returns `out`) ------------------------
  // Milliseconds since 1970-01-01 00:00:00 UTC, shown in the format's zone.
  I18NString &format(double epochMilliseconds, I18NString &out) const;
  // A wall-clock time in the format's zone (proleptic Gregorian calendar):
  // year 1..9999, month 1..12, day 1..31, hour 0..23, minute 0..59, second
  // 0..59, millisecond 0..999. Fields outside these ranges, or a day the
  // month does not have, raise I18NRuntimeError -7.
  I18NString &calendarFormat(int year, int month, int day, int hour, int minute, int second, int millisecond,
                             I18NString &out) const;

  // ---- Pattern -------------------------------------------------------------
  void getPattern(I18NString &pattern) const;
  // A rejected pattern raises I18NRuntimeError -7 and leaves the format
  // unchanged.
  void setPattern(const I18NString &pattern);
  static bool validate(const I18NString &pattern);

  // ---- Names (replace `out`) ----------------------------------------------
  void getAmString(I18NString &out) const;
  void getPmString(I18NString &out) const;
  // day: 1 = Sunday .. 7 = Saturday.
  void getDayName(int day, I18NString &out) const;
  void getDayShortName(int day, I18NString &out) const;
  // month: 1 = January .. 12 = December.
  void getMonthName(int month, I18NString &out) const;
  void getMonthShortName(int month, I18NString &out) const;

  // ---- Time zone -----------------------------------------------------------
  // An Olson identifier ("Europe/Paris"), "UTC", or a custom "GMT+hh:mm".
  void setTimeZone(const I18NString &zoneId);
  void getTimeZone(I18NString &zoneId) const;

  const I18NLocale &getLocale() const;

private:
  xI18NDateTimeFormat *m_pImpl; // owned
};

#endif // XYLCORE_I18N_CPP_I18N_DATETIMEFORMAT_H
