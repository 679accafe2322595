// SPDX-License-Identifier: Apache-2.0
// I18NDateTimeFormat: ICU's SimpleDateFormat over a Gregorian calendar.
#include "i18n/cpp/i18n_format_support.h"

#include <XYLCore/ExceptionHierarchy/XYLErrors.h>
#include <XYLCore/i18n/cpp/i18n_datetimeformat.h>

#include <unicode/dtfmtsym.h>
#include <unicode/gregocal.h>
#include <unicode/locid.h>
#include <unicode/smpdtfmt.h>
#include <unicode/timezone.h>
#include <unicode/unistr.h>

#include <memory>
#include <new>
#include <string>

namespace {

// Closed quotes, and every unquoted ASCII letter a field letter.
bool isValidPattern(const icu::UnicodeString &pattern) {
  icu::UnicodeString letters(icu::DateFormatSymbols::getPatternUChars());
  bool quoted = false;
  for (int32_t i = 0; i < pattern.length(); ++i) {
    UChar c = pattern[i];
    if (c == u'\'') {
      quoted = !quoted;
      continue;
    }
    if (!quoted && ((c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z')) && letters.indexOf(c) < 0)
      return false;
  }
  return !quoted;
}

} // namespace

class xI18NDateTimeFormat {
public:
  explicit xI18NDateTimeFormat(const I18NLocale &loc) : locale(loc) {}
  xI18NDateTimeFormat(const xI18NDateTimeFormat &other) : locale(other.locale) {
    format.reset(other.format->clone());
    if (format == nullptr)
      raiseOutOfMemory();
  }

  I18NLocale locale;
  std::unique_ptr<icu::SimpleDateFormat> format; // owns its Gregorian calendar and zone
};

namespace {

xI18NDateTimeFormat *createImpl(const I18NLocale &locale) {
  std::unique_ptr<xI18NDateTimeFormat> impl(new (std::nothrow) xI18NDateTimeFormat(locale));
  if (impl == nullptr)
    raiseOutOfMemory();
  // Pattern, symbols and calendar all come from the Gregorian calendar, also
  // where the locale's own default is another (ar-SA, th-TH, fa-IR) or the
  // name asks for one: a Gregorian date in the pattern of, say, the Islamic
  // calendar matches neither calendar's text.
  icu::Locale icuLocale(locale.getLocale());
  UErrorCode keywordStatus = U_ZERO_ERROR;
  icuLocale.setKeywordValue("calendar", "gregorian", keywordStatus);
  if (U_FAILURE(keywordStatus))
    raiseFailure(std::string("ICU cannot select the Gregorian calendar for ") + icuLocale.getName() + ".");
  std::unique_ptr<icu::DateFormat> base(
      icu::DateFormat::createDateTimeInstance(icu::DateFormat::kMedium, icu::DateFormat::kMedium, icuLocale));
  auto *simple = dynamic_cast<icu::SimpleDateFormat *>(base.get());
  if (simple == nullptr)
    raiseFailure(std::string("ICU cannot create a date format for the locale ") + icuLocale.getName() + ".");
  base.release();
  impl->format.reset(simple);
  UErrorCode status = U_ZERO_ERROR;
  auto *calendar = new icu::GregorianCalendar(icu::TimeZone::getGMT()->clone(), icuLocale, status);
  if (calendar == nullptr)
    raiseOutOfMemory();
  if (U_FAILURE(status)) {
    delete calendar;
    raiseFailure("ICU cannot create a Gregorian calendar.");
  }
  // Fixed start of the proleptic calendar: no Julian dates before 1582.
  calendar->setGregorianChange(-8.64e15, status);
  simple->adoptCalendar(calendar);
  std::unique_ptr<icu::TimeZone> utc(icu::TimeZone::createTimeZone(icu::UnicodeString(u"UTC")));
  if (utc == nullptr)
    raiseOutOfMemory();
  simple->adoptTimeZone(utc.release());
  return impl.release();
}

const icu::DateFormatSymbols &symbolsOf(const xI18NDateTimeFormat &impl) {
  const icu::DateFormatSymbols *symbols = impl.format->getDateFormatSymbols();
  if (symbols == nullptr)
    raiseFailure("ICU has no date format symbols for the locale.");
  return *symbols;
}

// Name number `index` (low..high) of an ICU array whose entry for `low` is
// at `first`.
void nameAt(const icu::UnicodeString *names, int32_t count, int first, int index, int low, int high, const char *what,
            I18NString &out) {
  if (index < low || index > high)
    raiseFailure(std::string("The ") + what + " " + std::to_string(index) + " is outside " + std::to_string(low) +
                 ".." + std::to_string(high) + ".");
  int32_t at = first + index - low;
  if (names == nullptr || at >= count)
    raiseFailure("ICU has no such name for the locale.");
  out.setTo(names[at]);
}

} // namespace

I18NDateTimeFormat::I18NDateTimeFormat() : m_pImpl(createImpl(I18NLocale(I18NLocale::gI18NDefaultLocaleName))) {}

I18NDateTimeFormat::I18NDateTimeFormat(const I18NLocale &locale) : m_pImpl(createImpl(locale)) {}

I18NDateTimeFormat::I18NDateTimeFormat(const I18NDateTimeFormat &other) : m_pImpl(copyImpl(*other.m_pImpl)) {}

I18NDateTimeFormat &I18NDateTimeFormat::operator=(const I18NDateTimeFormat &other) {
  assignImpl(m_pImpl, *other.m_pImpl);
  return *this;
}

I18NDateTimeFormat::~I18NDateTimeFormat() { delete m_pImpl; }

I18NString &I18NDateTimeFormat::format(double epochMilliseconds, I18NString &out) const {
  if (!(epochMilliseconds > -1e17 && epochMilliseconds < 1e17))
    raiseFailure("The time " + std::to_string(epochMilliseconds) + " is outside the calendar's range.");
  icu::UnicodeString text;
  m_pImpl->format->format(static_cast<UDate>(epochMilliseconds), text);
  appendResult(out, text);
  return out;
}

I18NString &I18NDateTimeFormat::calendarFormat(int year, int month, int day, int hour, int minute, int second,
                                               int millisecond, I18NString &out) const {
  if (year < 1 || year > 9999 || month < 1 || month > 12 || day < 1 || day > 31 || hour < 0 || hour > 23 ||
      minute < 0 || minute > 59 || second < 0 || second > 59 || millisecond < 0 || millisecond > 999)
    raiseFailure("The calendar fields " + std::to_string(year) + "-" + std::to_string(month) + "-" +
                 std::to_string(day) + " " + std::to_string(hour) + ":" + std::to_string(minute) + ":" +
                 std::to_string(second) + "." + std::to_string(millisecond) + " are out of range.");
  std::unique_ptr<icu::Calendar> calendar(m_pImpl->format->getCalendar()->clone());
  if (calendar == nullptr)
    raiseOutOfMemory();
  calendar->clear();
  calendar->setLenient(false);
  calendar->set(year, month - 1, day, hour, minute, second);
  calendar->set(UCAL_MILLISECOND, millisecond);
  UErrorCode status = U_ZERO_ERROR;
  calendar->getTime(status);
  if (U_FAILURE(status))
    raiseFailure("The month " + std::to_string(month) + " of " + std::to_string(year) + " has no day " +
                 std::to_string(day) + ".");
  icu::UnicodeString text;
  icu::FieldPosition position;
  m_pImpl->format->format(*calendar, text, position);
  appendResult(out, text);
  return out;
}

void I18NDateTimeFormat::getPattern(I18NString &pattern) const {
  icu::UnicodeString text;
  m_pImpl->format->toPattern(text);
  pattern.setTo(text);
}

void I18NDateTimeFormat::setPattern(const I18NString &pattern) {
  const icu::UnicodeString &text = pattern.getUnicodeString();
  if (!isValidPattern(text))
    raiseFailure("Invalid date-time format pattern: \"" + utf8(text) + "\".");
  m_pImpl->format->applyPattern(text);
}

bool I18NDateTimeFormat::validate(const I18NString &pattern) { return isValidPattern(pattern.getUnicodeString()); }

void I18NDateTimeFormat::getAmString(I18NString &out) const {
  int32_t count = 0;
  const icu::UnicodeString *names = symbolsOf(*m_pImpl).getAmPmStrings(count);
  nameAt(names, count, 0, 0, 0, 0, "AM/PM index", out);
}

void I18NDateTimeFormat::getPmString(I18NString &out) const {
  int32_t count = 0;
  const icu::UnicodeString *names = symbolsOf(*m_pImpl).getAmPmStrings(count);
  nameAt(names, count, 1, 1, 1, 1, "AM/PM index", out);
}

void I18NDateTimeFormat::getDayName(int day, I18NString &out) const {
  int32_t count = 0;
  const icu::UnicodeString *names = symbolsOf(*m_pImpl).getWeekdays(count);
  nameAt(names, count, 1, day, 1, 7, "day", out); // entry 1 is Sunday
}

void I18NDateTimeFormat::getDayShortName(int day, I18NString &out) const {
  int32_t count = 0;
  const icu::UnicodeString *names = symbolsOf(*m_pImpl).getShortWeekdays(count);
  nameAt(names, count, 1, day, 1, 7, "day", out); // entry 1 is Sunday
}

void I18NDateTimeFormat::getMonthName(int month, I18NString &out) const {
  int32_t count = 0;
  const icu::UnicodeString *names = symbolsOf(*m_pImpl).getMonths(count);
  nameAt(names, count, 0, month, 1, 12, "month", out);
}

void I18NDateTimeFormat::getMonthShortName(int month, I18NString &out) const {
  int32_t count = 0;
  const icu::UnicodeString *names = symbolsOf(*m_pImpl).getShortMonths(count);
  nameAt(names, count, 0, month, 1, 12, "month", out);
}

void I18NDateTimeFormat::setTimeZone(const I18NString &zoneId) {
  const icu::UnicodeString &id = zoneId.getUnicodeString();
  std::unique_ptr<icu::TimeZone> zone(icu::TimeZone::createTimeZone(id));
  if (zone == nullptr)
    raiseOutOfMemory();
  if (*zone == icu::TimeZone::getUnknown())
    raiseFailure("Unknown time zone: \"" + utf8(id) + "\".");
  m_pImpl->format->adoptTimeZone(zone.release());
}

void I18NDateTimeFormat::getTimeZone(I18NString &zoneId) const {
  icu::UnicodeString id;
  m_pImpl->format->getTimeZone().getID(id);
  zoneId.setTo(id);
}

const I18NLocale &I18NDateTimeFormat::getLocale() const { return m_pImpl->locale; }
