// SPDX-License-Identifier: Apache-2.0
// Converter benchmarks, each beside its ICU peer: a pooled converter taken
// and returned vs ucnv_open + ucnv_close of the same encoding; opening and
// cloning windows-1252; UTF-8 to UTF-16 through a converter vs ICU's
// u_strFromUTF8 and ucnv_toUChars, and back vs u_strToUTF8.
#include "I18NBenchSupport.h"

#include <XYLCore/i18n/c/i18n_c.h>
#include <XYLCore/i18n/cpp/i18n_converter.h>
#include <XYLCore/i18n/cpp/i18n_init.h>

#include <benchmark/benchmark.h>
#include <unicode/ucnv.h>
#include <unicode/unistr.h>
#include <unicode/ustring.h>

#include <string>
#include <vector>

namespace {

void BM_XylPooledTakeReturn_UTF8(benchmark::State &state) {
  for (auto _ : state) {
    I18NConverterUTF8 converter;
    benchmark::DoNotOptimize(&converter.getConverter());
  }
}
BENCHMARK(BM_XylPooledTakeReturn_UTF8);

void BM_IcuOpenClose_UTF8(benchmark::State &state) {
  for (auto _ : state) {
    UErrorCode status = U_ZERO_ERROR;
    UConverter *converter = ucnv_open("UTF-8", &status);
    benchmark::DoNotOptimize(converter);
    ucnv_close(converter);
  }
}
BENCHMARK(BM_IcuOpenClose_UTF8);

void BM_XylPooledTakeReturn_PlatformDefault(benchmark::State &state) {
  state.SetLabel(I18NGetPlatformDefaultEncoding());
  for (auto _ : state) {
    I18NConverterPlatformDefault converter;
    benchmark::DoNotOptimize(&converter.getConverter());
  }
}
BENCHMARK(BM_XylPooledTakeReturn_PlatformDefault);

void BM_IcuOpenClose_PlatformDefault(benchmark::State &state) {
  const char *name = I18NGetPlatformDefaultEncoding();
  state.SetLabel(name);
  for (auto _ : state) {
    UErrorCode status = U_ZERO_ERROR;
    UConverter *converter = ucnv_open(name, &status);
    benchmark::DoNotOptimize(converter);
    ucnv_close(converter);
  }
}
BENCHMARK(BM_IcuOpenClose_PlatformDefault);

void BM_XylPooledTakeReturn_UTF8_Threads(benchmark::State &state) {
  for (auto _ : state) {
    I18NConverterUTF8 converter;
    benchmark::DoNotOptimize(&converter.getConverter());
  }
}
BENCHMARK(BM_XylPooledTakeReturn_UTF8_Threads)->Threads(2)->UseRealTime();

void BM_IcuOpenClose_UTF8_Threads(benchmark::State &state) {
  for (auto _ : state) {
    UErrorCode status = U_ZERO_ERROR;
    UConverter *converter = ucnv_open("UTF-8", &status);
    benchmark::DoNotOptimize(converter);
    ucnv_close(converter);
  }
}
BENCHMARK(BM_IcuOpenClose_UTF8_Threads)->Threads(2)->UseRealTime();

// A converter by name made and destroyed, as a server does per request:
// through the C++ class, through the C interface, and ICU's own ways of
// getting one (opening it, cloning an opened prototype: ucnv_clone is
// ucnv_safeClone with ICU sizing the memory).
void BM_XylOpen(benchmark::State &state, const char *name) {
  for (auto _ : state) {
    I18NConverter converter(name);
    benchmark::DoNotOptimize(converter.getUConverter());
  }
}
BENCHMARK_CAPTURE(BM_XylOpen, Windows1252, "windows-1252");
BENCHMARK_CAPTURE(BM_XylOpen, ShiftJIS, "Shift_JIS");

void BM_XylCApiCreateFree(benchmark::State &state, const char *name) {
  for (auto _ : state) {
    I18NConverterHandle converter = nullptr;
    I18NErrorCodes error;
    i18nConverterCreate(&converter, name, &error);
    benchmark::DoNotOptimize(converter);
    i18nConverterFree(&converter, &error);
  }
}
BENCHMARK_CAPTURE(BM_XylCApiCreateFree, Windows1252, "windows-1252");
BENCHMARK_CAPTURE(BM_XylCApiCreateFree, ShiftJIS, "Shift_JIS");

void BM_IcuOpenClose(benchmark::State &state, const char *name) {
  for (auto _ : state) {
    UErrorCode status = U_ZERO_ERROR;
    UConverter *converter = ucnv_open(name, &status);
    benchmark::DoNotOptimize(converter);
    ucnv_close(converter);
  }
}
BENCHMARK_CAPTURE(BM_IcuOpenClose, Windows1252, "windows-1252");
BENCHMARK_CAPTURE(BM_IcuOpenClose, ShiftJIS, "Shift_JIS");

void BM_IcuSafeClone(benchmark::State &state, const char *name) {
  UErrorCode status = U_ZERO_ERROR;
  UConverter *prototype = ucnv_open(name, &status);
  for (auto _ : state) {
    status = U_ZERO_ERROR;
    UConverter *copy = ucnv_clone(prototype, &status);
    benchmark::DoNotOptimize(copy);
    ucnv_close(copy);
  }
  ucnv_close(prototype);
}
BENCHMARK_CAPTURE(BM_IcuSafeClone, Windows1252, "windows-1252");
BENCHMARK_CAPTURE(BM_IcuSafeClone, ShiftJIS, "Shift_JIS");

void BM_XylOpen_Windows1252_Threads(benchmark::State &state) {
  for (auto _ : state) {
    I18NConverter converter("windows-1252");
    benchmark::DoNotOptimize(converter.getUConverter());
  }
}
BENCHMARK(BM_XylOpen_Windows1252_Threads)->Threads(2)->UseRealTime();

void BM_IcuSafeClone_Windows1252_Threads(benchmark::State &state) {
  static UConverter *prototype = [] {
    UErrorCode status = U_ZERO_ERROR;
    return ucnv_open("windows-1252", &status);
  }();
  for (auto _ : state) {
    UErrorCode status = U_ZERO_ERROR;
    UConverter *copy = ucnv_clone(prototype, &status);
    benchmark::DoNotOptimize(copy);
    ucnv_close(copy);
  }
}
BENCHMARK(BM_IcuSafeClone_Windows1252_Threads)->Threads(2)->UseRealTime();

void BM_XylClone_Windows1252(benchmark::State &state) {
  I18NConverter prototype("windows-1252");
  for (auto _ : state) {
    I18NConverter copy(prototype);
    benchmark::DoNotOptimize(copy.getUConverter());
  }
}
BENCHMARK(BM_XylClone_Windows1252);

// Mixed text: ASCII words with Latin-1, Greek, CJK and an emoji.
std::string mixedText(size_t bytes) {
  const std::string piece = "caf\xC3\xA9 \xCE\xB1\xCE\xB2 \xE6\xBC\xA2\xE5\xAD\x97 data \xF0\x9F\x98\x80 ";
  std::string text;
  while (text.size() + piece.size() <= bytes)
    text += piece;
  while (text.size() < bytes)
    text.push_back('x');
  return text;
}

void BM_XylConverter_UTF8ToUTF16(benchmark::State &state) {
  const std::string text = mixedText(static_cast<size_t>(state.range(0)));
  std::vector<unsigned short> target(text.size() + 1);
  for (auto _ : state) {
    I18NConverterUTF8 converter;
    I18NErrorCodes error;
    int n = converter->toUnicode(text.data(), static_cast<int>(text.size()), target.data(),
                                 static_cast<int>(target.size() * 2), &error);
    benchmark::DoNotOptimize(n);
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * state.range(0));
}
BENCHMARK(BM_XylConverter_UTF8ToUTF16)->Arg(64)->Arg(4096)->Arg(1 << 20);

void BM_Icu_u_strFromUTF8(benchmark::State &state) {
  const std::string text = mixedText(static_cast<size_t>(state.range(0)));
  std::vector<UChar> target(text.size() + 1);
  for (auto _ : state) {
    UErrorCode status = U_ZERO_ERROR;
    int32_t n = 0;
    u_strFromUTF8(target.data(), static_cast<int32_t>(target.size()), &n, text.data(),
                  static_cast<int32_t>(text.size()), &status);
    benchmark::DoNotOptimize(n);
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * state.range(0));
}
BENCHMARK(BM_Icu_u_strFromUTF8)->Arg(64)->Arg(4096)->Arg(1 << 20);

void BM_Icu_ucnv_toUChars(benchmark::State &state) {
  const std::string text = mixedText(static_cast<size_t>(state.range(0)));
  std::vector<UChar> target(text.size() + 1);
  UErrorCode status = U_ZERO_ERROR;
  UConverter *converter = ucnv_open("UTF-8", &status);
  for (auto _ : state) {
    status = U_ZERO_ERROR;
    int32_t n = ucnv_toUChars(converter, target.data(), static_cast<int32_t>(target.size()), text.data(),
                              static_cast<int32_t>(text.size()), &status);
    benchmark::DoNotOptimize(n);
  }
  ucnv_close(converter);
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * state.range(0));
}
BENCHMARK(BM_Icu_ucnv_toUChars)->Arg(64)->Arg(4096)->Arg(1 << 20);

void BM_XylConverter_UTF16ToUTF8(benchmark::State &state) {
  const std::string text = mixedText(static_cast<size_t>(state.range(0)));
  const icu::UnicodeString source = icu::UnicodeString::fromUTF8(text);
  std::vector<char> target(text.size() + 1);
  for (auto _ : state) {
    I18NConverterUTF8 converter;
    I18NErrorCodes error;
    int n = converter->fromUnicode(reinterpret_cast<const unsigned short *>(source.getBuffer()), source.length() * 2,
                                   target.data(), static_cast<int>(target.size()), &error);
    benchmark::DoNotOptimize(n);
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * state.range(0));
}
BENCHMARK(BM_XylConverter_UTF16ToUTF8)->Arg(64)->Arg(4096)->Arg(1 << 20);

void BM_Icu_u_strToUTF8(benchmark::State &state) {
  const std::string text = mixedText(static_cast<size_t>(state.range(0)));
  const icu::UnicodeString source = icu::UnicodeString::fromUTF8(text);
  std::vector<char> target(text.size() + 1);
  for (auto _ : state) {
    UErrorCode status = U_ZERO_ERROR;
    int32_t n = 0;
    u_strToUTF8(target.data(), static_cast<int32_t>(target.size()), &n, source.getBuffer(), source.length(), &status);
    benchmark::DoNotOptimize(n);
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * state.range(0));
}
BENCHMARK(BM_Icu_u_strToUTF8)->Arg(64)->Arg(4096)->Arg(1 << 20);

} // namespace
