// SPDX-License-Identifier: Apache-2.0
// I18NCollator::collate of two already-normalised strings against
// ucol_strcoll on the same UTF-16 data, for German and Japanese word pairs;
// and I18NBidi's visual string of a mixed line against ubidi_writeReordered.
// Figures only: nothing here passes or fails on speed.
#include "I18NBenchSupport.h"

#include <XYLCore/i18n/cpp/i18n_bidi.h>
#include <XYLCore/i18n/cpp/i18n_collator.h>
#include <XYLCore/i18n/cpp/i18n_init.h>
#include <XYLCore/i18n/cpp/i18n_string.h>

#include <benchmark/benchmark.h>
#include <unicode/ubidi.h>
#include <unicode/ucol.h>
#include <unicode/unistr.h>

#include <string>
#include <vector>

namespace {

const char *const kGerman[] = {"M\xC3\xBCller",
                               "Mueller",
                               "Stra\xC3\x9F"
                               "e",
                               "Strasse",
                               "\xC3\x84pfel",
                               "Apfel",
                               "Gr\xC3\xB6\xC3\x9F"
                               "e",
                               "Gro\xC3\x9F",
                               "Zucker",
                               "zuckers\xC3\xBC\xC3\x9F",
                               "\xC3\x9C"
                               "bersetzung",
                               "Uebersetzung",
                               "Bahnhofstra\xC3\x9F"
                               "e 12",
                               "Bahnhof",
                               "K\xC3\xA4se",
                               "Kasse"};
const char *const kJapanese[] = {"\xE6\x9D\xB1\xE4\xBA\xAC\xE9\x83\xBD",
                                 "\xE3\x81\xA8\xE3\x81\x86\xE3\x81\x8D\xE3\x82\x87\xE3\x81\x86",
                                 "\xE3\x83\x88\xE3\x82\xA6\xE3\x82\xAD\xE3\x83\xA7\xE3\x82\xA6",
                                 "\xE5\xA4\xA7\xE9\x98\xAA",
                                 "\xE3\x81\x8A\xE3\x81\x8A\xE3\x81\x95\xE3\x81\x8B",
                                 "\xE3\x82\xAA\xE3\x83\xBC\xE3\x82\xB5\xE3\x82\xAB",
                                 "\xE3\x81\x8B\xE3\x81\x8C\xE3\x81\xBF",
                                 "\xE3\x82\xAB\xE3\x82\xAC\xE3\x83\x9F",
                                 "\xE3\x81\xB2\xE3\x82\x89\xE3\x81\x8C\xE3\x81\xAA",
                                 "\xEF\xBE\x8B\xEF\xBE\x97\xEF\xBD\xB6\xEF\xBE\x9E\xEF\xBE\x85",
                                 "\xE6\xBC\xA2\xE5\xAD\x97\xE3\x81\xA8\xE4\xBB\xAE\xE5\x90\x8D",
                                 "\xE3\x81\x8B\xE3\x82\x93\xE3\x81\x98",
                                 "\xE3\x83\x87\xE3\x83\xBC\xE3\x82\xBF",
                                 "\xE3\x83\x87\xE3\x83\xBC\xE3\x82\xBF\xE3\x83\x99\xE3\x83\xBC\xE3\x82\xB9",
                                 "\xE6\x97\xA5\xE6\x9C\xAC\xE8\xAA\x9E",
                                 "\xE3\x81\xAB\xE3\x81\xBB\xE3\x82\x93\xE3\x81\x94"};

template <size_t N> std::vector<I18NString> normalised(const char *const (&words)[N]) {
  std::vector<I18NString> out;
  for (const char *word : words) {
    out.emplace_back(word, "UTF-8");
    out.back().normalize();
  }
  return out;
}

// The strings' own NUL-terminated UTF-16 buffers.
std::vector<const UChar *> buffersOf(const std::vector<I18NString> &texts) {
  std::vector<const UChar *> out;
  for (const I18NString &text : texts)
    out.push_back(reinterpret_cast<const UChar *>(text.getUTF16Buffer()));
  return out;
}

template <size_t N> void xylCollate(benchmark::State &state, const char *locale, const char *const (&words)[N]) {
  I18NCollator collator(I18NString(locale, "UTF-8"));
  std::vector<I18NString> texts = normalised(words);
  size_t i = 0;
  int sum = 0;
  for (auto _ : state) {
    sum += collator.collate(texts[i % N], texts[(i + 1) % N]);
    ++i;
  }
  benchmark::DoNotOptimize(sum);
}

// The pointer form on plain UTF-16: the cost of the call alone.
template <size_t N> void xylCollatePointer(benchmark::State &state, const char *locale, const char *const (&words)[N]) {
  I18NCollator collator(I18NString(locale, "UTF-8"));
  const std::vector<I18NString> strings = normalised(words);
  const std::vector<const UChar *> texts = buffersOf(strings);
  size_t i = 0;
  int sum = 0;
  for (auto _ : state) {
    sum += collator.collate(texts[i % N], texts[(i + 1) % N]);
    ++i;
  }
  benchmark::DoNotOptimize(sum);
}

template <size_t N> void icuStrcoll(benchmark::State &state, const char *locale, const char *const (&words)[N]) {
  UErrorCode status = U_ZERO_ERROR;
  UCollator *collator = ucol_open(locale, &status);
  // The very buffers the strings of BM_XylCollate hold.
  const std::vector<I18NString> strings = normalised(words);
  const std::vector<const UChar *> texts = buffersOf(strings);
  size_t i = 0;
  int sum = 0;
  for (auto _ : state) {
    sum += ucol_strcoll(collator, texts[i % N], -1, texts[(i + 1) % N], -1);
    ++i;
  }
  benchmark::DoNotOptimize(sum);
  ucol_close(collator);
}

void BM_XylCollate_German(benchmark::State &state) { xylCollate(state, "de-de", kGerman); }
void BM_XylCollatePointer_German(benchmark::State &state) { xylCollatePointer(state, "de-de", kGerman); }
void BM_IcuStrcoll_German(benchmark::State &state) { icuStrcoll(state, "de-de", kGerman); }
void BM_XylCollate_Japanese(benchmark::State &state) { xylCollate(state, "ja-jp", kJapanese); }
void BM_IcuStrcoll_Japanese(benchmark::State &state) { icuStrcoll(state, "ja-jp", kJapanese); }
BENCHMARK(BM_XylCollate_German);
BENCHMARK(BM_XylCollatePointer_German);
BENCHMARK(BM_IcuStrcoll_German);
BENCHMARK(BM_XylCollate_Japanese);
BENCHMARK(BM_IcuStrcoll_Japanese);

// A line of English with Hebrew and digits, about 80 units.
const char kMixedLine[] = "Order 1234: \xD7\xA9\xD7\x9C\xD7\x95\xD7\x9D \xD7\xA2\xD7\x95\xD7\x9C\xD7\x9D (42) shipped "
                          "to \xD7\x97\xD7\x99\xD7\xA4\xD7\x94 on 2026-11-22, total 99.50";

void BM_XylBidiVisual(benchmark::State &state) {
  const I18NString line(kMixedLine, "UTF-8");
  I18NBidi bidi;
  for (auto _ : state) {
    bidi.setText(line);
    I18NString visual = bidi.getVisualString();
    benchmark::DoNotOptimize(visual);
  }
}

void BM_IcuBidiWriteReordered(benchmark::State &state) {
  const icu::UnicodeString line = icu::UnicodeString::fromUTF8(kMixedLine);
  std::u16string text(line.getBuffer(), static_cast<size_t>(line.length()));
  UBiDi *bidi = ubidi_open();
  std::u16string out(text.size() + 1, u'\0');
  for (auto _ : state) {
    UErrorCode status = U_ZERO_ERROR;
    ubidi_setPara(bidi, text.c_str(), -1, UBIDI_DEFAULT_LTR, nullptr, &status);
    const int32_t n = ubidi_writeReordered(bidi, &out[0], static_cast<int32_t>(out.size()), 0, &status);
    icu::UnicodeString visual(out.data(), n);
    benchmark::DoNotOptimize(visual);
  }
  ubidi_close(bidi);
}
BENCHMARK(BM_XylBidiVisual);
BENCHMARK(BM_IcuBidiWriteReordered);

} // namespace
