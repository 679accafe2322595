// SPDX-License-Identifier: Apache-2.0
// Tests of src/i18n/cpp/i18n_datetimeformat.cpp: default pattern, epoch and
// calendar-field formatting in several zones, pattern validation, names.
#include "I18NTestSupport.h"

#include <XYLCore/ExceptionHierarchy/XYLErrors.h>
#include <XYLCore/i18n/cpp/i18n_datetimeformat.h>
#include <XYLCore/i18n/cpp/i18n_init.h>

#include <gtest/gtest.h>
#include <unicode/locid.h>
#include <unicode/udat.h>
#include <unicode/unistr.h>

#include <string>

namespace {

using i18ntest::make;
using i18ntest::raisedCode;
using i18ntest::text;

class I18NDateTimeFormatTest : public i18ntest::InitializedTest {};

const char *const kIso = "yyyy-MM-dd HH:mm:ss.SSS";

} // namespace

TEST_F(I18NDateTimeFormatTest, DefaultPatternIsUtcAndAppends) {
  I18NDateTimeFormat en(I18NLocale("en-us"));
  I18NString out("at ", "UTF-8");
  en.format(0.0, out);
  EXPECT_EQ("at Jan 1, 1970, 12:00:00\u202FAM", text(out));
  I18NString zone("stale", "UTF-8");
  en.getTimeZone(zone);
  EXPECT_EQ("UTC", text(zone));
}

// The default pattern, the names and the calendar are all Gregorian, also for
// locales whose own calendar is another: the text must be ICU's own for
// "<locale>@calendar=gregorian".
TEST_F(I18NDateTimeFormatTest, DefaultFormatIsGregorianInEveryLocale) {
  const char *const locales[] = {"ar-sa", "th-th", "fa-ir", "ps-af", "ar-eg", "he-il", "hi-in",
                                 "ja-jp", "zh-tw", "zh-cn", "ko-kr", "en-us", "en-gb", "de-de",
                                 "fr-fr", "es-es", "ru-ru", "pl-pl", "tr-tr", "pt-br"};
  const double when = 1234567890123.0; // 2009-02-13 23:31:30 UTC
  for (const char *name : locales) {
    I18NLocale locale(name);
    const std::string icuName = std::string(locale.getLocale().getName()) + "@calendar=gregorian";
    UErrorCode status = U_ZERO_ERROR;
    UDateFormat *peer = udat_open(UDAT_MEDIUM, UDAT_MEDIUM, icuName.c_str(), u"UTC", -1, nullptr, 0, &status);
    ASSERT_TRUE(U_SUCCESS(status)) << icuName;
    UChar expected[256], pattern[256];
    int32_t length = udat_format(peer, when, expected, 256, nullptr, &status);
    int32_t patternLength = udat_toPattern(peer, false, pattern, 256, &status);
    udat_close(peer);
    ASSERT_TRUE(U_SUCCESS(status)) << icuName;

    I18NDateTimeFormat format(locale);
    I18NString out, ours;
    format.getPattern(ours);
    EXPECT_EQ(text(I18NString(icu::UnicodeString(pattern, patternLength))), text(ours)) << icuName;
    EXPECT_EQ(text(I18NString(icu::UnicodeString(expected, length))), text(format.format(when, out))) << icuName;
  }
}

TEST_F(I18NDateTimeFormatTest, EpochInZones) {
  const struct {
    const char *zone;
    double ms;
    const char *expected;
  } cases[] = {
      {"UTC", 1234567890123.0, "2009-02-13 23:31:30.123 +00:00"},
      {"Europe/Paris", 1234567890123.0, "2009-02-14 00:31:30.123 +01:00"},
      {"America/New_York", 1234567890123.0, "2009-02-13 18:31:30.123 -05:00"},
      {"Europe/Paris", 1214567890123.0, "2008-06-27 13:58:10.123 +02:00"},
      {"GMT+05:30", -1.0, "1970-01-01 05:29:59.999 +05:30"},
      {"UTC", -62135596800000.0, "0001-01-01 00:00:00.000 +00:00"}, // proleptic Gregorian
  };
  for (const auto &c : cases) {
    I18NDateTimeFormat format{I18NLocale("en-us")};
    format.setPattern(make("yyyy-MM-dd HH:mm:ss.SSS xxx"));
    format.setTimeZone(make(c.zone));
    I18NString out;
    EXPECT_EQ(c.expected, text(format.format(c.ms, out))) << c.zone;
  }
  I18NDateTimeFormat format{I18NLocale("en-us")};
  EXPECT_EQ(-7, raisedCode([&] { format.setTimeZone(make("Mars/Olympus_Mons")); }));
  I18NString out;
  EXPECT_EQ(-7, raisedCode([&] { format.format(1.0 / 0.0, out); }));
}

TEST_F(I18NDateTimeFormatTest, CalendarFields) {
  I18NDateTimeFormat format{I18NLocale("en-us")};
  format.setPattern(make(kIso));
  I18NString out;
  format.calendarFormat(2024, 2, 29, 13, 5, 9, 7, out);
  format.calendarFormat(1582, 10, 10, 0, 0, 0, 0, out.append(" | ")); // a day the Julian switch would skip
  format.setTimeZone(make("Europe/Paris"));                           // wall time of the zone
  format.calendarFormat(2024, 7, 1, 23, 59, 59, 999, out.append(" | "));
  EXPECT_EQ("2024-02-29 13:05:09.007 | 1582-10-10 00:00:00.000 | 2024-07-01 23:59:59.999", text(out));
  const int bad[][7] = {{2023, 2, 29, 0, 0, 0, 0}, {2024, 4, 31, 0, 0, 0, 0}, {2024, 13, 1, 0, 0, 0, 0},
                        {2024, 0, 1, 0, 0, 0, 0},  {2024, 1, 0, 0, 0, 0, 0},  {2024, 1, 1, 24, 0, 0, 0},
                        {2024, 1, 1, 0, 60, 0, 0}, {2024, 1, 1, 0, 0, 60, 0}, {2024, 1, 1, 0, 0, 0, 1000},
                        {0, 1, 1, 0, 0, 0, 0},     {10000, 1, 1, 0, 0, 0, 0}, {2024, 1, 1, -1, 0, 0, 0}};
  for (const auto &f : bad) {
    I18NString ignored;
    EXPECT_EQ(-7, raisedCode([&] { format.calendarFormat(f[0], f[1], f[2], f[3], f[4], f[5], f[6], ignored); }))
        << f[0] << "-" << f[1] << "-" << f[2] << " " << f[3] << ":" << f[4] << ":" << f[5] << "." << f[6];
  }
}

TEST_F(I18NDateTimeFormatTest, Patterns) {
  const struct {
    const char *pattern;
    bool valid;
  } cases[] = {
      {"yyyy-MM-dd", true},     {"HH:mm 'o''clock'", true},  {"EEEE, d MMMM y G", true}, {"''", true}, {"12/31", true},
      {"yyyy-MM-dd 'T", false}, {"yyyy-MM-ddTHH:mm", false}, {"yyyy-jj", false},         {"'", false},
  };
  I18NDateTimeFormat format{I18NLocale("en-us")};
  format.setPattern(make(kIso));
  for (const auto &c : cases) {
    EXPECT_EQ(c.valid, I18NDateTimeFormat::validate(make(c.pattern))) << c.pattern;
    I18NDateTimeFormat copy(format);
    EXPECT_EQ(c.valid ? 0 : -7, raisedCode([&] { copy.setPattern(make(c.pattern)); })) << c.pattern;
    I18NString pattern;
    copy.getPattern(pattern);
    EXPECT_EQ(c.valid ? c.pattern : kIso, text(pattern)) << c.pattern;
  }
  I18NDateTimeFormat de{I18NLocale("de-de")};
  de.setPattern(make("EEEE, d. MMMM y 'um' HH:mm"));
  I18NString out;
  EXPECT_EQ("Freitag, 13. Februar 2009 um 23:31", text(de.format(1234567890123.0, out)));
  I18NDateTimeFormat assigned{I18NLocale("en-us")};
  assigned = de;
  out = "";
  EXPECT_EQ("Freitag, 13. Februar 2009 um 23:31", text(assigned.format(1234567890123.0, out)));
}

TEST_F(I18NDateTimeFormatTest, Names) {
  const struct {
    const char *locale;
    const char *am, *pm, *sunday, *sun, *saturday, *sat, *january, *jan, *december, *dec;
  } cases[] = {
      {"en-us", "AM", "PM", "Sunday", "Sun", "Saturday", "Sat", "January", "Jan", "December", "Dec"},
      {"de-de", "AM", "PM", "Sonntag", "So.", "Samstag", "Sa.", "Januar", "Jan.", "Dezember", "Dez."},
      {"fr-fr", "AM", "PM", "dimanche", "dim.", "samedi", "sam.", "janvier", "janv.", "d\u00E9cembre", "d\u00E9c."},
  };
  for (const auto &c : cases) {
    I18NDateTimeFormat format{I18NLocale(c.locale)};
    I18NString s("stale", "UTF-8");
    format.getAmString(s);
    EXPECT_EQ(c.am, text(s)) << c.locale;
    format.getPmString(s);
    EXPECT_EQ(c.pm, text(s)) << c.locale;
    format.getDayName(1, s);
    EXPECT_EQ(c.sunday, text(s)) << c.locale;
    format.getDayShortName(1, s);
    EXPECT_EQ(c.sun, text(s)) << c.locale;
    format.getDayName(7, s);
    EXPECT_EQ(c.saturday, text(s)) << c.locale;
    format.getDayShortName(7, s);
    EXPECT_EQ(c.sat, text(s)) << c.locale;
    format.getMonthName(1, s);
    EXPECT_EQ(c.january, text(s)) << c.locale;
    format.getMonthShortName(1, s);
    EXPECT_EQ(c.jan, text(s)) << c.locale;
    format.getMonthName(12, s);
    EXPECT_EQ(c.december, text(s)) << c.locale;
    format.getMonthShortName(12, s);
    EXPECT_EQ(c.dec, text(s)) << c.locale;
  }
  I18NDateTimeFormat en{I18NLocale("en-us")};
  I18NString s;
  for (int bad : {0, 8, -1}) {
    EXPECT_EQ(-7, raisedCode([&] { en.getDayName(bad, s); })) << bad;
    EXPECT_EQ(-7, raisedCode([&] { en.getDayShortName(bad, s); })) << bad;
  }
  for (int bad : {0, 13}) {
    EXPECT_EQ(-7, raisedCode([&] { en.getMonthName(bad, s); })) << bad;
    EXPECT_EQ(-7, raisedCode([&] { en.getMonthShortName(bad, s); })) << bad;
  }
}
