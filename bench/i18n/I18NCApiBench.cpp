// SPDX-License-Identifier: Apache-2.0
// The cost of the C interface's frame: i18nStringFindString against the
// I18NString::find it wraps, on the same strings (an ASCII haystack of 1 KiB
// with the needle at its end, and a short Unicode-mode one). The difference
// of the pairs' times is the frame's cost per call.
// Figures only: nothing here passes or fails on speed.
#include "I18NBenchSupport.h"

#include <XYLCore/i18n/c/i18n_c.h>
#include <XYLCore/i18n/cpp/i18n_string.h>

#include <benchmark/benchmark.h>

#include <string>

namespace {

struct Texts {
  I18NString *haystack;
  I18NString *needle;
};

Texts texts(int which) {
  static I18NString asciiHaystack((std::string(1000, 'a') + "needle").c_str(), "UTF-8");
  static I18NString asciiNeedle("needle", "UTF-8");
  static I18NString unicodeHaystack("caf\xc3\xa9 au lait, cr\xc3\xa8me br\xc3\xbbl\xc3\xa9"
                                    "e",
                                    "UTF-8");
  static I18NString unicodeNeedle("br\xc3\xbb", "UTF-8");
  if (which == 0)
    return {&asciiHaystack, &asciiNeedle};
  return {&unicodeHaystack, &unicodeNeedle};
}

void BM_CxxFind(benchmark::State &state) {
  Texts t = texts(static_cast<int>(state.range(0)));
  for (auto _ : state) {
    int offset = t.haystack->find(*t.needle, 0);
    benchmark::DoNotOptimize(offset);
  }
}
BENCHMARK(BM_CxxFind)->Arg(0)->Arg(1);

void BM_CFindString(benchmark::State &state) {
  Texts t = texts(static_cast<int>(state.range(0)));
  I18NStringHandle haystack = reinterpret_cast<I18NStringHandle>(t.haystack);
  I18NStringHandle needle = reinterpret_cast<I18NStringHandle>(t.needle);
  I18NErrorCodes error;
  for (auto _ : state) {
    int offset = i18nStringFindString(haystack, needle, 0, &error);
    benchmark::DoNotOptimize(offset);
    benchmark::DoNotOptimize(error);
  }
}
BENCHMARK(BM_CFindString)->Arg(0)->Arg(1);

// A call with almost no work of its own shows the frame alone.
void BM_CxxLength(benchmark::State &state) {
  Texts t = texts(1);
  for (auto _ : state) {
    int length = t.haystack->length();
    benchmark::DoNotOptimize(length);
  }
}
BENCHMARK(BM_CxxLength);

void BM_CStringLength(benchmark::State &state) {
  I18NStringHandle haystack = reinterpret_cast<I18NStringHandle>(texts(1).haystack);
  I18NErrorCodes error;
  for (auto _ : state) {
    int length = i18nStringStringLength(haystack, &error);
    benchmark::DoNotOptimize(length);
  }
}
BENCHMARK(BM_CStringLength);

} // namespace
