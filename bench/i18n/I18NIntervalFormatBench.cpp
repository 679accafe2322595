// SPDX-License-Identifier: Apache-2.0
// I18NIntervalFormat's long style (days, hours, minutes, seconds with their
// words) against ICU's MeasureFormat writing the same four measures in its
// wide form, for English (built-in words) and Russian (plural categories).
// Figures only: nothing here passes or fails on speed.
#include <XYLCore/i18n/cpp/i18n_init.h>
#include <XYLCore/i18n/cpp/i18n_intervalformat.h>
#include <XYLCore/i18n/cpp/i18n_locale.h>
#include <XYLCore/i18n/cpp/i18n_string.h>

#include <benchmark/benchmark.h>
#include <unicode/measfmt.h>
#include <unicode/measunit.h>
#include <unicode/measure.h>

#include <cstdlib>
#include <memory>

namespace {

struct Setup {
  Setup() {
    setenv("QOR_EXEC_PATH", XYL_I18N_RESOURCES, 1);
    I18NInitialize();
  }
} gSetup;

const char *const kLocales[] = {"en-us", "ru"};

void BM_XylIntervalFormat_Long(benchmark::State &state) {
  I18NIntervalFormat format(I18NLocale(kLocales[state.range(0)]), I18N_INTERVAL_FORMAT_LONG);
  format.showMilliseconds(0);
  I18NString out;
  long n = 0;
  for (auto _ : state) {
    format.format(n % 30, 2 + n % 20, 21, 5, 0, out);
    benchmark::DoNotOptimize(out.unitLength());
    ++n;
  }
  state.SetLabel(kLocales[state.range(0)]);
}
BENCHMARK(BM_XylIntervalFormat_Long)->Arg(0)->Arg(1);

void BM_IcuMeasureFormat_Long(benchmark::State &state) {
  UErrorCode status = U_ZERO_ERROR;
  icu::MeasureFormat format(icu::Locale(kLocales[state.range(0)]), UMEASFMT_WIDTH_WIDE, status);
  std::unique_ptr<icu::MeasureUnit> units[4] = {
      std::unique_ptr<icu::MeasureUnit>(icu::MeasureUnit::createDay(status)),
      std::unique_ptr<icu::MeasureUnit>(icu::MeasureUnit::createHour(status)),
      std::unique_ptr<icu::MeasureUnit>(icu::MeasureUnit::createMinute(status)),
      std::unique_ptr<icu::MeasureUnit>(icu::MeasureUnit::createSecond(status))};
  icu::UnicodeString out;
  long n = 0;
  for (auto _ : state) {
    const int32_t values[4] = {static_cast<int32_t>(n % 30), static_cast<int32_t>(2 + n % 20), 21, 5};
    icu::Measure measures[4] = {
        icu::Measure(values[0], units[0]->clone(), status), icu::Measure(values[1], units[1]->clone(), status),
        icu::Measure(values[2], units[2]->clone(), status), icu::Measure(values[3], units[3]->clone(), status)};
    icu::FieldPosition position;
    out.remove();
    format.formatMeasures(measures, 4, out, position, status);
    benchmark::DoNotOptimize(out.length());
    ++n;
  }
  if (U_FAILURE(status))
    state.SkipWithError("ICU failed");
  state.SetLabel(kLocales[state.range(0)]);
}
BENCHMARK(BM_IcuMeasureFormat_Long)->Arg(0)->Arg(1);

} // namespace
