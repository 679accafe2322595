// SPDX-License-Identifier: Apache-2.0
// Numeric format benchmarks beside their ICU peer: one double formatted by a
// cached I18NNumericFormat into an I18NString vs the same format's
// icu::DecimalFormat into a UnicodeString (both cleared each round); the
// same for a 64-bit integer and for a date.
#include <XYLCore/i18n/cpp/i18n_datetimeformat.h>
#include <XYLCore/i18n/cpp/i18n_init.h>
#include <XYLCore/i18n/cpp/i18n_numericformat.h>

#include <benchmark/benchmark.h>
#include <unicode/decimfmt.h>
#include <unicode/locid.h>
#include <unicode/numfmt.h>
#include <unicode/smpdtfmt.h>
#include <unicode/timezone.h>
#include <unicode/unistr.h>

#include <memory>

namespace {

struct Setup {
  Setup() { I18NInitialize(); }
} gSetup;

const double kValues[] = {1234567.891, -0.125, 42.0, 9.87654321e12, 3.5e-3, 100.0, -77777.7, 0.5};

std::unique_ptr<icu::DecimalFormat> icuFormat() {
  UErrorCode status = U_ZERO_ERROR;
  std::unique_ptr<icu::NumberFormat> base(icu::NumberFormat::createInstance(icu::Locale("en_US"), status));
  return std::unique_ptr<icu::DecimalFormat>(dynamic_cast<icu::DecimalFormat *>(base.release()));
}

void BM_XylFormatDouble(benchmark::State &state) {
  I18NNumericFormat format{I18NLocale("en-us")};
  I18NString out;
  std::size_t i = 0;
  for (auto _ : state) {
    out.erase();
    format.format(kValues[i++ & 7], out);
    benchmark::DoNotOptimize(&out);
  }
}
BENCHMARK(BM_XylFormatDouble);

void BM_IcuFormatDouble(benchmark::State &state) {
  std::unique_ptr<icu::DecimalFormat> format = icuFormat();
  icu::UnicodeString out;
  std::size_t i = 0;
  for (auto _ : state) {
    out.remove();
    format->format(kValues[i++ & 7], out);
    benchmark::DoNotOptimize(&out);
  }
}
BENCHMARK(BM_IcuFormatDouble);

void BM_XylFormatInt64(benchmark::State &state) {
  I18NNumericFormat format{I18NLocale("en-us")};
  I18NString out;
  long long value = 1;
  for (auto _ : state) {
    out.erase();
    format.format(value, out);
    value = value * 7 + 3;
    benchmark::DoNotOptimize(&out);
  }
}
BENCHMARK(BM_XylFormatInt64);

void BM_IcuFormatInt64(benchmark::State &state) {
  std::unique_ptr<icu::DecimalFormat> format = icuFormat();
  icu::UnicodeString out;
  long long value = 1;
  for (auto _ : state) {
    out.remove();
    format->format(static_cast<int64_t>(value), out);
    value = value * 7 + 3;
    benchmark::DoNotOptimize(&out);
  }
}
BENCHMARK(BM_IcuFormatInt64);

void BM_XylFormatDate(benchmark::State &state) {
  I18NDateTimeFormat format{I18NLocale("en-us")};
  format.setPattern(I18NString("yyyy-MM-dd HH:mm:ss.SSS", "UTF-8"));
  I18NString out;
  double ms = 1234567890123.0;
  for (auto _ : state) {
    out.erase();
    format.format(ms, out);
    ms += 1000.0;
    benchmark::DoNotOptimize(&out);
  }
}
BENCHMARK(BM_XylFormatDate);

void BM_IcuFormatDate(benchmark::State &state) {
  UErrorCode status = U_ZERO_ERROR;
  icu::SimpleDateFormat format(icu::UnicodeString(u"yyyy-MM-dd HH:mm:ss.SSS"), icu::Locale("en_US"), status);
  format.adoptTimeZone(icu::TimeZone::createTimeZone(icu::UnicodeString(u"UTC")));
  icu::UnicodeString out;
  double ms = 1234567890123.0;
  for (auto _ : state) {
    out.remove();
    format.format(ms, out);
    ms += 1000.0;
    benchmark::DoNotOptimize(&out);
  }
}
BENCHMARK(BM_IcuFormatDate);

} // namespace
