// SPDX-License-Identifier: Apache-2.0
// Tests of src/i18n/cpp/i18n_intervalformat.cpp: both styles, the show flags,
// the day-time types, the separator template, plural words cross-checked
// against ICU's own unit names, copies and allocation failures.
#include "I18NTestSupport.h"

#include <XYLCore/ExceptionHierarchy/XYLErrors.h>
#include <XYLCore/i18n/cpp/i18n_init.h>
#include <XYLCore/i18n/cpp/i18n_intervalformat.h>

#include <XYLFaultInjection.h>
#include <gtest/gtest.h>

#include <unicode/measfmt.h>
#include <unicode/measunit.h>
#include <unicode/measure.h>

#include <climits>
#include <fstream>
#include <memory>
#include <string>

namespace {

using i18ntest::EnvGuard;
using i18ntest::ScratchDir;

std::string text(const I18NString &s) {
  std::string out;
  s.getUnicodeString().toUTF8String(out);
  return out;
}

enum Flags { Y = 1, MO = 2, D = 4, H = 8, MI = 16, S = 32, MS = 64, ALL = 127 };

void applyFlags(I18NIntervalFormat &format, int flags) {
  format.showYears(flags & Y);
  format.showMonths(flags & MO);
  format.showDays(flags & D);
  format.showHours(flags & H);
  format.showMinutes(flags & MI);
  format.showSeconds(flags & S);
  format.showMilliseconds(flags & MS);
}

// The word files of the installation plus made-up locales with odd
// templates, in a directory of their own that the whole process uses.
class I18NIntervalFormatTest : public ::testing::Test {
protected:
  static void SetUpTestSuite() {
    s_dir = new ScratchDir();
    for (const char *locale : {"de", "fr", "ru", "pl", "ar"}) {
      const std::string name = std::string("xyli18nrestp_") + locale + ".xml";
      std::ifstream in(std::string(XYL_I18N_RESOURCES) + "/" + name);
      s_dir->write(name, std::string(std::istreambuf_iterator<char>(in), {}));
    }
    const std::string head = "<i18nResources>";
    s_dir->write("xyli18nrestp_xa.xml", head + "<text key='TIME_PERIOD_SYNTAX_SEPARATOR'>--</text></i18nResources>");
    s_dir->write("xyli18nrestp_xb.xml", head + "<text key='DAY_COMPLETE_SINGULAR'>jour</text>" +
                                            "<text key='TIME_PERIOD_SYNTAX_SEPARATOR'>[&lt;param index=\"2\"/&gt;: "
                                            "&lt;param index=\"1\"/&gt;]</text></i18nResources>");
    s_env = new EnvGuard("QOR_EXEC_PATH", s_dir->path().c_str());
  }
  static void TearDownTestSuite() {
    delete s_env;
    delete s_dir;
  }
  void SetUp() override { ASSERT_NE(0, I18NInitialize()); }
  void TearDown() override { I18NTerminate(); }

  static ScratchDir *s_dir;
  static EnvGuard *s_env;
};
ScratchDir *I18NIntervalFormatTest::s_dir = nullptr;
EnvGuard *I18NIntervalFormatTest::s_env = nullptr;

std::string formatDT(const char *locale, I18NIntervalFormatStyle style, int flags, I18NIntervalFormatDTType type,
                     long d, long h, long m, long s, long ms) {
  I18NIntervalFormat format(I18NLocale(locale), style);
  applyFlags(format, flags);
  I18NString out("stale", "UTF-8");
  return text(format.format(d, h, m, s, ms, out, type));
}

} // namespace

TEST_F(I18NIntervalFormatTest, DayTimeIntervals) {
  const auto L = I18N_INTERVAL_FORMAT_LONG;
  const auto SH = I18N_INTERVAL_FORMAT_SHORT;
  struct Case {
    const char *locale;
    I18NIntervalFormatStyle style;
    int flags;
    I18NIntervalFormatDTType type;
    long d, h, m, s, ms;
    const char *expected;
  } cases[] = {
      // No word file for English: the built-in words and template.
      {"en-us", L, D | H, I18N_INTERVAL_DT_ALL, 1, 2, 3, 4, 5, " 1 day 2 hours"},
      {"ja", L, ALL, I18N_INTERVAL_DT_ALL, 2, 1, 0, 1, 1, " 2 days 1 hour 0 minutes 1 second 1 millisecond"},
      {"en-us", L, 0, I18N_INTERVAL_DT_ALL, 1, 2, 3, 4, 5, ""},
      {"de", L, D | H, I18N_INTERVAL_DT_ALL, 1, 2, 0, 0, 0, " 1 Tag 2 Stunden"},
      {"fr-fr", L, D | H, I18N_INTERVAL_DT_ALL, 2, 1, 0, 0, 0, " 2 jours 1 heure"},
      // Types fold the leading fields and drop the trailing ones.
      {"en", L, ALL, I18N_INTERVAL_DT_DAY_TO_HOUR, 1, 2, 3, 4, 5, " 1 day 2 hours"},
      {"en", L, ALL, I18N_INTERVAL_DT_HOUR_TO_MINUTE, 1, 2, 30, 4, 5, " 26 hours 30 minutes"},
      {"en", L, ALL, I18N_INTERVAL_DT_MINUTE_TO_SECOND, 0, 1, 1, 5, 250, " 61 minutes 5 seconds 250 milliseconds"},
      {"en", L, ALL, I18N_INTERVAL_DT_SECOND, 0, 0, 1, 1, 1, " 61 seconds 1 millisecond"},
      {"en", L, ALL, I18N_INTERVAL_DT_DAY, 3, 23, 59, 59, 999, " 3 days"},
      {"en", L, MI, I18N_INTERVAL_DT_HOUR_TO_SECOND, 1, 1, 1, 1, 1, " 1 minute"},
      // Short style: widths, milliseconds as the fraction or a field.
      {"en", SH, ALL, I18N_INTERVAL_DT_ALL, 3, 4, 5, 6, 7, "3 04:05:06.007"},
      {"en", SH, D | H | MI | MS, I18N_INTERVAL_DT_ALL, 3, 4, 5, 6, 7, "3 04:05:007"},
      {"en", SH, MI | S, I18N_INTERVAL_DT_ALL, 3, 4, 5, 6, 7, "05:06"},
      {"en", SH, D, I18N_INTERVAL_DT_ALL, 3, 4, 5, 6, 7, "3"},
      {"en", SH, 0, I18N_INTERVAL_DT_ALL, 3, 4, 5, 6, 7, ""},
      {"en", SH, ALL, I18N_INTERVAL_DT_HOUR_TO_SECOND, 4, 4, 0, 59, 12, "100:00:59.012"},
      {"en", SH, ALL, I18N_INTERVAL_DT_ALL, 0, -5, 10, 100, 1234, "0 -05:10:100.1,234"},
      // Templates: none at all (a single space leads), reversed with a tail.
      {"xa", L, D | H, I18N_INTERVAL_DT_ALL, 1, 2, 0, 0, 0, " 1day 2hours"},
      {"xb", L, D | H, I18N_INTERVAL_DT_ALL, 1, 2, 0, 0, 0, "[jour: 1][hours: 2]"},
  };
  for (const Case &c : cases)
    EXPECT_EQ(c.expected, formatDT(c.locale, c.style, c.flags, c.type, c.d, c.h, c.m, c.s, c.ms))
        << c.locale << " flags " << c.flags << " type " << c.type;
}

TEST_F(I18NIntervalFormatTest, YearMonthIntervalsAndSigns) {
  struct Case {
    const char *locale;
    I18NIntervalFormatStyle style;
    int flags;
    long years, months;
    const char *expected;
  } cases[] = {
      {"en", I18N_INTERVAL_FORMAT_LONG, ALL, 1, 2, " 1 year 2 months"},
      {"en", I18N_INTERVAL_FORMAT_LONG, ALL, 0, 1, " 0 years 1 month"},
      // The two classic forms give the singular for exactly 1 only; plural
      // categories (ru) follow ICU's rules, which count the magnitude.
      {"en", I18N_INTERVAL_FORMAT_LONG, ALL, -1, 0, " -1 years 0 months"},
      {"de", I18N_INTERVAL_FORMAT_LONG, Y | MO, -1, 1, " -1 Jahre 1 Monat"},
      {"ru", I18N_INTERVAL_FORMAT_LONG, Y, -1, 0, " -1 год"},
      {"de", I18N_INTERVAL_FORMAT_LONG, Y | MO, 1, 2, " 1 Jahr 2 Monate"},
      {"en", I18N_INTERVAL_FORMAT_LONG, D | H, 1, 2, ""},
      {"en", I18N_INTERVAL_FORMAT_SHORT, ALL, 3, 4, "3:04"},
      {"en", I18N_INTERVAL_FORMAT_SHORT, MO, 3, 4, "4"},
      {"en", I18N_INTERVAL_FORMAT_SHORT, Y | D, 3, 4, "3"},
  };
  for (const Case &c : cases) {
    I18NIntervalFormat format(I18NLocale(c.locale), c.style);
    applyFlags(format, c.flags);
    I18NString out;
    EXPECT_EQ(c.expected, text(format.format(XYLIntervalYM{c.years, c.months}, out))) << c.locale << c.years;
  }

  I18NIntervalFormat format(I18NLocale("en"), I18N_INTERVAL_FORMAT_LONG);
  applyFlags(format, D | H);
  I18NString out;
  EXPECT_EQ("- 1 day 2 hours", text(format.format(XYLInterval2{1, 2, 3, 4, 5, -1}, out)));
  EXPECT_EQ(" 1 day 2 hours", text(format.format(XYLInterval2{-1, -2, 0, 0, 0, 1}, out))); // magnitudes
  applyFlags(format, 0);
  EXPECT_EQ("", text(format.format(XYLInterval2{1, 2, 3, 4, 5, -1}, out))); // nothing to sign
  format.setStyle(I18N_INTERVAL_FORMAT_SHORT);
  applyFlags(format, ALL);
  format.setTimeSeparatorSymbol(I18NString("h", "UTF-8"));
  EXPECT_EQ("-1 02h03h04.005", text(format.format(XYLInterval2{1, 2, 3, 4, 5, -1}, out)));
  // Folding days into hours must not wrap around.
  EXPECT_THROW(format.format(LONG_MAX / 2, 0, 0, 0, 0, out, I18N_INTERVAL_DT_HOUR), I18NRuntimeError);
}

TEST_F(I18NIntervalFormatTest, SettingsCopiesAndReset) {
  I18NIntervalFormat german(I18NLocale("de"), I18N_INTERVAL_FORMAT_LONG);
  applyFlags(german, D);
  I18NIntervalFormat copy(german);
  copy.showHours(1);
  I18NString out;
  EXPECT_EQ(" 2 Tage", text(german.format(2, 1, 0, 0, 0, out)));
  EXPECT_EQ(" 2 Tage 1 Stunde", text(copy.format(2, 1, 0, 0, 0, out)));

  I18NIntervalFormat english(I18NLocale("en"), I18N_INTERVAL_FORMAT_SHORT);
  english = copy;
  EXPECT_EQ(I18N_INTERVAL_FORMAT_LONG, english.getStyle());
  EXPECT_EQ(" 2 Tage 1 Stunde", text(english.format(2, 1, 0, 0, 0, out)));
  english.showDays(0);
  EXPECT_EQ(" 2 Tage 1 Stunde", text(copy.format(2, 1, 0, 0, 0, out))); // independent

  I18NNumericFormat decimals(I18NLocale("en"));
  decimals.setPattern(I18NString("0.0", "UTF-8"));
  copy.setNumericFormat(decimals);
  copy.setTimeSeparatorSymbol(I18NString("/", "UTF-8"));
  EXPECT_EQ(" 2.0 Tage 1.0 Stunde", text(copy.format(2, 1, 0, 0, 0, out)));
  copy.reset();
  copy.setStyle(I18N_INTERVAL_FORMAT_SHORT);
  EXPECT_EQ("2 01:00:00.000", text(copy.format(2, 1, 0, 0, 0, out)));
  EXPECT_EQ(":", text(copy.getTimeSeparatorSymbol()));
}

// The word for each plural category must match ICU's own unit names; Polish
// days are the exception (ICU names the 24-hour "doba", durations read
// "dzień"/"dni").
TEST_F(I18NIntervalFormatTest, PluralWordsMatchIcuUnitNames) {
  struct Expected {
    const char *locale;
    long n;
    int flags;
    const char *text;
  } fixed[] = {
      {"ru", 21, D, " 21 день"},  {"ru", 22, D, " 22 дня"},     {"ru", 25, D, " 25 дней"},   {"ru", 11, H, " 11 часов"},
      {"pl", 1, H, " 1 godzina"}, {"pl", 22, H, " 22 godziny"}, {"pl", 25, H, " 25 godzin"}, {"pl", 2, D, " 2 dni"},
      {"pl", 1, D, " 1 dzień"},   {"ru-RU", 0, MI, " 0 минут"}, {"pl", 21, S, " 21 sekund"},
  };
  for (const Expected &e : fixed)
    EXPECT_EQ(e.text,
              formatDT(e.locale, I18N_INTERVAL_FORMAT_LONG, e.flags, I18N_INTERVAL_DT_ALL, e.n, e.n, e.n, e.n, e.n))
        << e.locale << " " << e.n;

  UErrorCode status = U_ZERO_ERROR;
  const std::unique_ptr<icu::MeasureUnit> units[] = {
      std::unique_ptr<icu::MeasureUnit>(icu::MeasureUnit::createYear(status)),
      std::unique_ptr<icu::MeasureUnit>(icu::MeasureUnit::createMonth(status)),
      std::unique_ptr<icu::MeasureUnit>(icu::MeasureUnit::createDay(status)),
      std::unique_ptr<icu::MeasureUnit>(icu::MeasureUnit::createHour(status)),
      std::unique_ptr<icu::MeasureUnit>(icu::MeasureUnit::createMinute(status)),
      std::unique_ptr<icu::MeasureUnit>(icu::MeasureUnit::createSecond(status)),
      std::unique_ptr<icu::MeasureUnit>(icu::MeasureUnit::createMillisecond(status))};
  ASSERT_TRUE(U_SUCCESS(status));
  for (const char *locale : {"ru", "pl", "ar"}) {
    I18NIntervalFormat format(I18NLocale(locale), I18N_INTERVAL_FORMAT_LONG);
    icu::MeasureFormat peer(icu::Locale(locale), UMEASFMT_WIDTH_WIDE, status);
    ASSERT_TRUE(U_SUCCESS(status));
    for (int unit = 0; unit < 7; ++unit) {
      if (std::string(locale) == "pl" && unit == 2)
        continue;
      applyFlags(format, 1 << unit);
      for (long n : {0L, 1L, 2L, 5L, 11L, 21L, 22L, 25L, 102L}) {
        I18NString out, number;
        unit < 2 ? format.format(n, n, out) : format.format(n, n, n, n, n, out);
        format.getI18NNumericFormat().format(n, number);
        const std::string ours = text(out);
        const std::string word = ours.substr(2 + text(number).size()); // " <n> <word>"
        icu::UnicodeString theirs;
        icu::FieldPosition position;
        icu::Measure measure(icu::Formattable(static_cast<int32_t>(n)), units[unit]->clone(), status);
        peer.formatMeasures(&measure, 1, theirs, position, status);
        std::string expected = text(I18NString(theirs));
        const std::size_t at = expected.find(text(number));
        if (at != std::string::npos) // Arabic leaves the number out for 1 and 2
          expected.erase(at, text(number).size() + 1);
        EXPECT_EQ(expected, word) << locale << " unit " << unit << " n " << n;
      }
    }
  }
}

TEST_F(I18NIntervalFormatTest, AllocationFailuresLeaveNothingBehind) {
  const I18NLocale locale("xb");
  long countdown = 1;
  for (;; ++countdown) {
    bool failed = false;
    try {
      xyltest::AllocationFailure failure(countdown);
      I18NIntervalFormat format(locale, I18N_INTERVAL_FORMAT_LONG);
      I18NIntervalFormat copy(format);
      I18NString out;
      applyFlags(copy, D | H);
      ASSERT_EQ("[jour: 1][hours: 2]", text(copy.format(1, 2, 0, 0, 0, out)));
    } catch (XYLOutOfMemoryError &) {
      failed = true;
    }
    if (!failed)
      break;
    ASSERT_LT(countdown, 200) << "never completed";
  }
  EXPECT_GT(countdown, 3); // the three template pieces at least were failed
}
