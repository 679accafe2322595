/* SPDX-License-Identifier: Apache-2.0
 * i18n_intervalformat.h - I18NIntervalFormat, a duration rendered as text for
 * a locale: a year-month interval (years, months) or a day-time interval
 * (days, hours, minutes, seconds, milliseconds), in a short or a long style.
 *
 * Long style. Each shown unit, in the order years, months or days, hours,
 * minutes, seconds, milliseconds, adds the leading piece, the number (from
 * the numeric format), the middle piece, the unit word and the trailing
 * piece. The pieces come from the locale's TIME_PERIOD_SYNTAX_SEPARATOR
 * template (two `<param index="N"/>` elements; index 1 is the number, index
 * 2 the word, so a template that names index 2 first puts the word before
 * the number): the text before the first '<' (a single space when the
 * template has no '<'), the text between the first '>' and the next '<',
 * and the text after the second element's '>'. With the built-in English
 * template " <param index="1"/> <param index="2"/>" that gives
 * " 1 day 2 hours" - note the leading space, which every unit brings.
 *
 * Unit words. The word of a value is "<UNIT>_COMPLETE_<CATEGORY>" when the
 * locale's words hold such a key for the value's ICU plural category
 * (ZERO, ONE, TWO, FEW, MANY, OTHER: "21 день", "22 дня", "25 дней");
 * otherwise "<UNIT>_COMPLETE_SINGULAR" for a value of 1 and
 * "<UNIT>_COMPLETE_PLURAL" for any other value. The category of a negative
 * value is that of its magnitude (so -1 takes the singular). A locale
 * without a time-period file gets the built-in English words and template,
 * and a SINGULAR or PLURAL key that a file leaves out keeps its English
 * word.
 *
 * Short style. Year-month: years and months joined by the time separator,
 * the months two digits ("3:04"). Day-time: the days, a space, then hours,
 * minutes and seconds joined by the time separator and the milliseconds
 * after a full stop ("3 04:05:06.007"). Hours, minutes and seconds are at
 * least two digits and milliseconds three, padded with the numeric format's
 * zero digit (longer values keep all their digits, grouped as the numeric
 * format groups them: "1,234"); days and years are not padded. When the
 * seconds are not shown the milliseconds are a field of their own, joined
 * by the time separator ("04:05:007"). No shown field at all gives an empty
 * result. The time separator is the locale's (ICU's date-format symbols;
 * ":" when ICU has none) until setTimeSeparatorSymbol replaces it. Digits
 * and the minus sign come from the numeric format; a negative field shows
 * the minus sign before its padded digits ("-05").
 *
 * Day-time types (I18NIntervalFormatDTType) name the interval's leading and
 * trailing field, as an SQL interval qualifier does. Values above the
 * leading field are folded into it (a day is 24 hours, an hour 60 minutes,
 * a minute 60 seconds, a second 1000 milliseconds): 1 day 2 hours as
 * HOUR_TO_MINUTE is 26 hours. Fields below the trailing field are left out
 * (truncated, never rounded); the types that end with SECOND keep the
 * milliseconds. The show flags then hide fields of the type as well.
 *
 * Signs. The long-value forms format every value as it stands (a negative
 * value gets the numeric format's minus sign). An XYLInterval2 carries its
 * sign separately: its fields are magnitudes (a negative field counts by its
 * magnitude) and a negative `sign` puts the numeric format's minus sign in
 * front of the whole result (addIntervalSign); zero or positive adds none,
 * and an empty result stays empty.
 *
 * format() replaces the contents of its output string (it does not append)
 * and returns it.
 *
 * Ownership: the format owns its words, its template pieces and its numeric
 * format; copies are deep and independent.
 * Thread safety: the const operations (format and the getters) may run on
 * one object from several threads at once; the setters need external
 * synchronisation. Construct only between I18NInitialize and I18NTerminate.
 * Throws: XYLOutOfMemoryError when memory runs out (the template pieces are
 * allocated through XYLUtMemory); I18NRuntimeError -7 when a day-time
 * type folds a value beyond the range of long; I18NRuntimeError from the
 * internal resources and the numeric format.
 */
#ifndef XYLCORE_I18N_CPP_I18N_INTERVALFORMAT_H
#define XYLCORE_I18N_CPP_I18N_INTERVALFORMAT_H

#include <XYLCore/XYLExport.h>
#include <XYLCore/i18n/cpp/i18n_locale.h>
#include <XYLCore/i18n/cpp/i18n_numericformat.h>
#include <XYLCore/i18n/cpp/i18n_string.h>

// A year-month interval. Both fields carry their own sign.
struct XYLIntervalYM {
  long years;
  long months;
};

// A day-time interval: the fields are magnitudes, `sign` below 0 makes the
// whole interval negative (0 or above: positive).
struct XYLInterval2 {
  long days;
  long hours;
  long minutes;
  long seconds;
  long milliseconds;
  int sign;
};

typedef enum I18NIntervalFormatStyle {
  I18N_INTERVAL_FORMAT_SHORT = 0, // digits with separators: "1 02:03:04.005"
  I18N_INTERVAL_FORMAT_LONG = 1   // numbers and unit words: " 1 day 2 hours"
} I18NIntervalFormatStyle;

// Leading and trailing field of a day-time interval (see the banner).
typedef enum I18NIntervalFormatDTType {
  I18N_INTERVAL_DT_ALL = 0, // every field as given, nothing folded
  I18N_INTERVAL_DT_DAY,
  I18N_INTERVAL_DT_DAY_TO_HOUR,
  I18N_INTERVAL_DT_DAY_TO_MINUTE,
  I18N_INTERVAL_DT_DAY_TO_SECOND,
  I18N_INTERVAL_DT_HOUR,
  I18N_INTERVAL_DT_HOUR_TO_MINUTE,
  I18N_INTERVAL_DT_HOUR_TO_SECOND,
  I18N_INTERVAL_DT_MINUTE,
  I18N_INTERVAL_DT_MINUTE_TO_SECOND,
  I18N_INTERVAL_DT_SECOND
} I18NIntervalFormatDTType;

class xI18NIntervalWords;

class XYL_API I18NIntervalFormat {
public:
  // Loads the locale's words and template; every unit shown, the locale's
  // numeric format and time separator.
  I18NIntervalFormat(const I18NLocale &locale, I18NIntervalFormatStyle style = I18N_INTERVAL_FORMAT_LONG);
  I18NIntervalFormat(const I18NIntervalFormat &other);
  I18NIntervalFormat &operator=(const I18NIntervalFormat &other);
  ~I18NIntervalFormat();

  // Back to the state after construction (style kept): every unit shown,
  // the locale's numeric format and time separator.
  void reset();

  I18NIntervalFormatStyle getStyle() const { return m_style; }
  void setStyle(I18NIntervalFormatStyle style) { m_style = style; }
  void setNumericFormat(const I18NNumericFormat &numericFormat);
  const I18NNumericFormat &getI18NNumericFormat() const { return m_numericFormat; }
  void setTimeSeparatorSymbol(const I18NString &separator);
  const I18NString &getTimeSeparatorSymbol() const { return m_timeSeparator; }

  // Show flags: 0 leaves the unit out, anything else shows it.
  void showYears(const int &flag) { m_showYears = flag; }
  void showMonths(const int &flag) { m_showMonths = flag; }
  void showDays(const int &flag) { m_showDays = flag; }
  void showHours(const int &flag) { m_showHours = flag; }
  void showMinutes(const int &flag) { m_showMinutes = flag; }
  void showSeconds(const int &flag) { m_showSeconds = flag; }
  void showMilliseconds(const int &flag) { m_showMilliseconds = flag; }

  // A year-month interval into `out` (replacing its contents).
  I18NString &format(long years, long months, I18NString &out) const;
  I18NString &format(const XYLIntervalYM &interval, I18NString &out) const;
  // A day-time interval into `out` (replacing its contents).
  I18NString &format(long days, long hours, long minutes, long seconds, long milliseconds, I18NString &out,
                     I18NIntervalFormatDTType type = I18N_INTERVAL_DT_ALL) const;
  I18NString &format(const XYLInterval2 &interval, I18NString &out,
                     I18NIntervalFormatDTType type = I18N_INTERVAL_DT_ALL) const;

  // Puts the numeric format's minus sign in front of `text` when `sign` is
  // below 0; otherwise leaves it alone.
  void addIntervalSign(int sign, I18NString &text) const;

private:
  void loadResources();
  void parseSeparatorTemplate(const I18NString &syntax);
  void freePieces();
  void copyPieces(const I18NIntervalFormat &other);
  void applyLocaleDefaults();
  void formatShortYM(long years, long months, I18NString &out) const;
  void formatLongYM(long years, long months, I18NString &out) const;
  void formatShortDT(const long *values, const bool *shown, I18NString &out) const;
  void formatLongDT(const long *values, const bool *shown, I18NString &out) const;
  void formatDT(long days, long hours, long minutes, long seconds, long milliseconds, I18NString &out,
                I18NIntervalFormatDTType type) const;
  void appendUnit(int unit, long value, I18NString &out) const;
  void appendPadded(long value, int width, I18NString &out) const;

  I18NLocale m_locale;
  I18NIntervalFormatStyle m_style;
  I18NNumericFormat m_numericFormat;
  I18NString m_timeSeparator;
  int m_showYears;
  int m_showMonths;
  int m_showDays;
  int m_showHours;
  int m_showMinutes;
  int m_showSeconds;
  int m_showMilliseconds;
  xI18NIntervalWords *m_pWords; // resource map, plural rules
  unsigned short *m_pLeading;   // NUL-terminated UTF-16, owned
  unsigned short *m_pMiddle;    // NUL-terminated UTF-16, owned (null: none)
  unsigned short *m_pTrailing;  // NUL-terminated UTF-16, owned (null: none)
  bool m_wordFirst;             // the template names the word before the number
};

#endif // XYLCORE_I18N_CPP_I18N_INTERVALFORMAT_H
