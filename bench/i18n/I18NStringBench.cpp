// SPDX-License-Identifier: Apache-2.0
// I18NString benchmarks, each beside its peer in the same binary:
//  - construction from ASCII bytes vs std::string and icu::UnicodeString::fromUTF8;
//  - the ASCII test of 1 MiB vs a byte-at-a-time loop;
//  - mixed non-ASCII UTF-8 to a string vs u_strFromUTF8, and back vs u_strToUTF8;
//  - find, length and erase on ASCII text vs std::string.
// Figures only: nothing here passes or fails on speed.
#include "I18NBenchSupport.h"

#include <XYLCore/i18n/cpp/i18n_init.h>
#include <XYLCore/i18n/cpp/i18n_string.h>

#include <benchmark/benchmark.h>
#include <unicode/unistr.h>
#include <unicode/ustring.h>

#include <cstdlib>
#include <string>
#include <vector>

namespace {

std::string asciiText(size_t n) {
  static const char kWords[] = "GET /api/v1/items?id=42&sort=name HTTP/1.1 Host: example.org Accept: text/plain ";
  std::string s;
  while (s.size() < n)
    s += kWords;
  s.resize(n);
  return s;
}

// Mixed text: English, French, German, Russian, Greek and Chinese with a few
// emoji, as UTF-8.
std::string mixedText(size_t n) {
  static const char kMixed[] = "The caf\xC3\xA9 na\xC3\xAFve fa\xC3\xA7"
                               "ade, Stra\xC3\x9F"
                               "e "
                               "\xD0\x9F\xD1\x80\xD0\xB8\xD0\xB2\xD0\xB5\xD1\x82 \xCE\xB1\xCE\xB2\xCE\xB3 "
                               "\xE4\xBD\xA0\xE5\xA5\xBD\xE4\xB8\x96\xE7\x95\x8C \xF0\x9F\x98\x80 ok; ";
  std::string s;
  while (s.size() < n)
    s += kMixed;
  // Cut at a character boundary.
  size_t cut = n;
  while (cut > 0 && (static_cast<unsigned char>(s[cut]) & 0xC0) == 0x80)
    --cut;
  s.resize(cut);
  return s;
}

// ---- Construction from ASCII bytes ------------------------------------------------------

void BM_XylString_FromAscii(benchmark::State &state) {
  std::string text = asciiText(static_cast<size_t>(state.range(0)));
  for (auto _ : state) {
    I18NString s(text.data(), "UTF-8", static_cast<int>(text.size()));
    benchmark::DoNotOptimize(s);
  }
  state.SetBytesProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_XylString_FromAscii)->Arg(16)->Arg(64)->Arg(4096);

void BM_StdString_FromAscii(benchmark::State &state) {
  std::string text = asciiText(static_cast<size_t>(state.range(0)));
  for (auto _ : state) {
    std::string s(text.data(), text.size());
    benchmark::DoNotOptimize(s);
  }
  state.SetBytesProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_StdString_FromAscii)->Arg(16)->Arg(64)->Arg(4096);

void BM_IcuUnicodeString_FromUTF8(benchmark::State &state) {
  std::string text = asciiText(static_cast<size_t>(state.range(0)));
  for (auto _ : state) {
    icu::UnicodeString s =
        icu::UnicodeString::fromUTF8(icu::StringPiece(text.data(), static_cast<int32_t>(text.size())));
    benchmark::DoNotOptimize(s);
  }
  state.SetBytesProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_IcuUnicodeString_FromUTF8)->Arg(16)->Arg(64)->Arg(4096);

void BM_XylString_DefaultConstruct(benchmark::State &state) {
  for (auto _ : state) {
    I18NString s;
    benchmark::DoNotOptimize(s);
  }
}
BENCHMARK(BM_XylString_DefaultConstruct);

void BM_StdString_DefaultConstruct(benchmark::State &state) {
  for (auto _ : state) {
    std::string s;
    benchmark::DoNotOptimize(s);
  }
}
BENCHMARK(BM_StdString_DefaultConstruct);

// ---- The ASCII test -------------------------------------------------------------------------

const size_t kMiB = 1 << 20;

void BM_XylIsAscii_1MiB(benchmark::State &state) {
  std::string text = asciiText(kMiB);
  for (auto _ : state) {
    benchmark::DoNotOptimize(text.data());
    bool ascii = I18NString::isASCII(text.data(), "UTF-8", static_cast<int>(text.size()));
    benchmark::DoNotOptimize(ascii);
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * kMiB));
}
BENCHMARK(BM_XylIsAscii_1MiB);

// The plain loop: one byte at a time, leaving at the first non-ASCII byte
// (the early exit keeps the compiler from vectorising it).
__attribute__((noinline)) bool byteLoopIsAscii(const char *p, size_t n) {
  for (size_t i = 0; i < n; ++i)
    if (static_cast<unsigned char>(p[i]) & 0x80)
      return false;
  return true;
}

void BM_ByteLoopIsAscii_1MiB(benchmark::State &state) {
  std::string text = asciiText(kMiB);
  for (auto _ : state) {
    benchmark::DoNotOptimize(text.data());
    bool ascii = byteLoopIsAscii(text.data(), text.size());
    benchmark::DoNotOptimize(ascii);
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * kMiB));
}
BENCHMARK(BM_ByteLoopIsAscii_1MiB);

// ---- Mixed UTF-8 in and out -----------------------------------------------------------------

void BM_XylString_FromUtf8Mixed(benchmark::State &state) {
  std::string text = mixedText(static_cast<size_t>(state.range(0)));
  for (auto _ : state) {
    I18NString s(text.data(), "UTF-8", static_cast<int>(text.size()));
    benchmark::DoNotOptimize(s);
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
}
BENCHMARK(BM_XylString_FromUtf8Mixed)->Arg(256)->Arg(4096)->Arg(65536);

void BM_IcuStrFromUTF8_Mixed(benchmark::State &state) {
  std::string text = mixedText(static_cast<size_t>(state.range(0)));
  std::vector<UChar> target(text.size() + 1);
  for (auto _ : state) {
    UErrorCode status = U_ZERO_ERROR;
    int32_t length = 0;
    u_strFromUTF8(target.data(), static_cast<int32_t>(target.size()), &length, text.data(),
                  static_cast<int32_t>(text.size()), &status);
    benchmark::DoNotOptimize(target.data());
    benchmark::DoNotOptimize(length);
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
}
BENCHMARK(BM_IcuStrFromUTF8_Mixed)->Arg(256)->Arg(4096)->Arg(65536);

// The same with a new ICU string each time (allocation included, as for ours).
void BM_IcuUnicodeString_FromUTF8Mixed(benchmark::State &state) {
  std::string text = mixedText(static_cast<size_t>(state.range(0)));
  for (auto _ : state) {
    icu::UnicodeString s = icu::UnicodeString::fromUTF8(text);
    benchmark::DoNotOptimize(s);
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
}
BENCHMARK(BM_IcuUnicodeString_FromUTF8Mixed)->Arg(256)->Arg(4096)->Arg(65536);

void BM_XylString_ToUtf8Mixed(benchmark::State &state) {
  std::string text = mixedText(static_cast<size_t>(state.range(0)));
  I18NString s(text.data(), "UTF-8", static_cast<int>(text.size()));
  for (auto _ : state) {
    int length = 0;
    char *bytes = s.toBytes("UTF-8", &length);
    benchmark::DoNotOptimize(bytes);
    I18NString::freeBuffer(bytes);
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
}
BENCHMARK(BM_XylString_ToUtf8Mixed)->Arg(256)->Arg(4096)->Arg(65536);

void BM_IcuStrToUTF8_Mixed(benchmark::State &state) {
  std::string text = mixedText(static_cast<size_t>(state.range(0)));
  icu::UnicodeString source = icu::UnicodeString::fromUTF8(text);
  std::vector<char> target(static_cast<size_t>(source.length()) * 3 + 1);
  for (auto _ : state) {
    UErrorCode status = U_ZERO_ERROR;
    int32_t length = 0;
    u_strToUTF8(target.data(), static_cast<int32_t>(target.size()), &length, source.getBuffer(), source.length(),
                &status);
    benchmark::DoNotOptimize(target.data());
    benchmark::DoNotOptimize(length);
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
}
BENCHMARK(BM_IcuStrToUTF8_Mixed)->Arg(256)->Arg(4096)->Arg(65536);

// ---- find, length, erase on ASCII -----------------------------------------------------------

void BM_XylString_Find(benchmark::State &state) {
  std::string text = asciiText(static_cast<size_t>(state.range(0))) + "needle";
  I18NString s(text.data(), "UTF-8", static_cast<int>(text.size()));
  I18NString needle("needle", "UTF-8");
  for (auto _ : state)
    benchmark::DoNotOptimize(s.find(needle, 0));
}
BENCHMARK(BM_XylString_Find)->Arg(64)->Arg(1024);

void BM_StdString_Find(benchmark::State &state) {
  std::string s = asciiText(static_cast<size_t>(state.range(0))) + "needle";
  std::string needle("needle");
  for (auto _ : state)
    benchmark::DoNotOptimize(s.find(needle, 0));
}
BENCHMARK(BM_StdString_Find)->Arg(64)->Arg(1024);

void BM_XylString_Length(benchmark::State &state) {
  std::string text = asciiText(64);
  I18NString s(text.data(), "UTF-8", static_cast<int>(text.size()));
  for (auto _ : state) {
    benchmark::DoNotOptimize(s);
    benchmark::DoNotOptimize(s.length());
  }
}
BENCHMARK(BM_XylString_Length);

void BM_StdString_Length(benchmark::State &state) {
  std::string s = asciiText(64);
  for (auto _ : state) {
    benchmark::DoNotOptimize(s);
    benchmark::DoNotOptimize(s.length());
  }
}
BENCHMARK(BM_StdString_Length);

// A copy of the text, then a piece erased from its middle.
void BM_XylString_CopyErase(benchmark::State &state) {
  std::string text = asciiText(static_cast<size_t>(state.range(0)));
  I18NString base(text.data(), "UTF-8", static_cast<int>(text.size()));
  for (auto _ : state) {
    I18NString s(base);
    s.erase(static_cast<int>(text.size() / 4), static_cast<int>(text.size() / 2));
    benchmark::DoNotOptimize(s);
  }
}
BENCHMARK(BM_XylString_CopyErase)->Arg(64)->Arg(1024);

void BM_StdString_CopyErase(benchmark::State &state) {
  std::string base = asciiText(static_cast<size_t>(state.range(0)));
  for (auto _ : state) {
    std::string s(base);
    s.erase(base.size() / 4, base.size() / 2);
    benchmark::DoNotOptimize(s);
  }
}
BENCHMARK(BM_StdString_CopyErase)->Arg(64)->Arg(1024);

} // namespace
