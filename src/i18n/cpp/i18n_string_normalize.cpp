// SPDX-License-Identifier: Apache-2.0
// I18NString::normalize: the quick check, the non-normalisable code points
// of the internal resources and the Japanese compatibility step.
//
// Forms map to ICU's normalisers through one table whose entry 0 is the
// default form (canonical composition). The normalised flag (0x02) means
// "the content is in the default form": it is set after normalising to the
// default form (or to NFC, the same thing) and cleared after any other form.
#include <XYLCore/i18n/cpp/i18n_converter.h>
#include <XYLCore/i18n/cpp/i18n_internalresources.h>
#include <XYLCore/i18n/cpp/i18n_string.h>

#include "i18n_string_internal.h"

#include <atomic>
#include <cstring>
#include <memory>
#include <unicode/normalizer2.h>
#include <unicode/translit.h>
#include <unicode/ucnv.h>
#include <unicode/utf16.h>

using namespace i18n_string_detail;

namespace {

enum class Mode { NFC, NFD, NFKC, NFKD };

// Entry 0 is the default form.
const Mode kModes[] = {Mode::NFC, Mode::NFC, Mode::NFD, Mode::NFKC, Mode::NFKD};
const Mode kDefaultMode = kModes[0];

const icu::Normalizer2 *normalizerFor(Mode mode, UErrorCode &status) {
  switch (mode) {
  case Mode::NFC:
    return icu::Normalizer2::getNFCInstance(status);
  case Mode::NFD:
    return icu::Normalizer2::getNFDInstance(status);
  case Mode::NFKC:
    return icu::Normalizer2::getNFKCInstance(status);
  case Mode::NFKD:
    return icu::Normalizer2::getNFKDInstance(status);
  }
  return nullptr;
}

// Whether the platform default encoding is one of the Japanese code pages
// whose tables map some characters differently from Unicode: 0 unknown,
// 1 no, 2 yes. Worked out once per process.
std::atomic<int> g_japanesePlatform{0};

// Whether `converter` (ICU's canonical converter name) is one of the IBM
// Japanese code pages 943, 942 and 33722. The five names are those tables'
// converters in the ICU builds the step was made for; other ICU builds ship
// the same code pages under other revision suffixes (ICU 72 has
// "ibm-943_P15A-2003" for Shift_JIS and has none of the 2000 revisions), so a
// converter of the same code page number counts too.
bool isJapaneseIbmConverter(const char *converter) {
  static const char *const kJapanese[] = {"ibm-943_P15A_P14A-2003", "ibm-943_P130-2000", "ibm-33722",
                                          "ibm-942_P120-2000", "ibm-942_P12A-2000"};
  static const char *const kCodePages[] = {"ibm-943_", "ibm-942_", "ibm-33722_"};
  for (const char *name : kJapanese)
    if (std::strcmp(converter, name) == 0)
      return true;
  for (const char *prefix : kCodePages)
    if (std::strncmp(converter, prefix, std::strlen(prefix)) == 0)
      return true;
  return false;
}

bool japanesePlatform() {
  int known = g_japanesePlatform.load(std::memory_order_acquire);
  if (known != 0)
    return known == 2;
  UErrorCode status = U_ZERO_ERROR;
  const char *alias = ucnv_getAlias(I18NGetPlatformDefaultEncoding(), 0, &status);
  if (U_FAILURE(status) || alias == nullptr)
    raiseRuntime(I18N_GENERAL_FAILURE,
                 "Resources access error, could not find the alias for the platform default encoding name.");
  const bool japanese = isJapaneseIbmConverter(alias);
  g_japanesePlatform.store(japanese ? 2 : 1, std::memory_order_release);
  return japanese;
}

// Normalises `text` run by run, copying non-normalisable code points as they
// are, so that those characters survive every form. Each run is normalised by
// itself: nothing composes across an excluded character.
void appendNormalized(const icu::Normalizer2 &normalizer, const icu::UnicodeString &run, icu::UnicodeString &result,
                      UErrorCode &status) {
  icu::UnicodeString piece;
  normalizer.normalize(run, piece, status);
  result.append(piece);
}

icu::UnicodeString normalizeAroundExclusions(const icu::Normalizer2 &normalizer, const icu::UnicodeString &text,
                                             UErrorCode &status) {
  icu::UnicodeString result;
  const char16_t *units = text.getBuffer();
  int length = text.length();
  int runStart = 0;
  for (int i = 0; i < length && U_SUCCESS(status);) {
    int at = i;
    UChar32 c;
    U16_NEXT(units, i, length, c);
    if (!I18NInternalResources::isNonNormalizable(static_cast<unsigned int>(c)))
      continue;
    if (at > runStart)
      appendNormalized(normalizer, text.tempSubString(runStart, at - runStart), result, status);
    result.append(text, at, i - at);
    runStart = i;
  }
  if (runStart < length && U_SUCCESS(status))
    appendNormalized(normalizer, text.tempSubString(runStart), result, status);
  return result;
}

} // namespace

void I18NString::normalize(I18NNormalizationForms form) {
  if ((m_flags & FLAG_NORMALIZATION_OFF) != 0) {
    m_flags |= FLAG_NORMALIZED;
    return;
  }
  int index = static_cast<int>(form);
  if (index < 0 || index >= static_cast<int>(sizeof kModes / sizeof kModes[0]))
    index = 0;
  const Mode mode = kModes[index];
  const bool isDefault = mode == kDefaultMode;
  icu::UnicodeString &text = unicodeForWrite();
  if (text.isEmpty()) {
    m_flags |= FLAG_NORMALIZED;
    m_normalizationForm = index + 1;
    return;
  }
  UErrorCode status = U_ZERO_ERROR;
  const icu::Normalizer2 *normalizer = normalizerFor(mode, status);
  UNormalizationCheckResult check = UNORM_NO;
  if (U_SUCCESS(status))
    check = normalizer->quickCheck(text, status);
  if (U_FAILURE(status))
    raiseRuntime(I18N_NORMALIZATION_FAILURE, nullptr);

  bool changed = false;
  if (check != UNORM_YES) {
    icu::UnicodeString result;
    if (I18NInternalResources::hasNonNormalizableCharacters())
      result = normalizeAroundExclusions(*normalizer, text, status);
    else
      normalizer->normalize(text, result, status);
    if (U_FAILURE(status) || result.isBogus())
      raiseRuntime(I18N_NORMALIZATION_FAILURE, "An error occured during string normalization.");
    if (result != text) {
      text = result;
      changed = true;
    }
  }

  // The Japanese compatibility step.
  if ((m_flags & FLAG_SKIP_COMPATIBILITY) == 0 && japanesePlatform()) {
    std::unique_ptr<icu::Transliterator> transliterator(I18NInternalResources::getTransliterator());
    if (transliterator != nullptr) {
      transliterator->transliterate(text);
      if (text.isBogus())
        raiseRuntime(I18N_NORMALIZATION_FAILURE, "An error occured during string normalization.");
      changed = true;
    }
  }

  if (changed)
    afterUnicodeChange();
  else
    refreshUTF16Buffer();
  if (isDefault)
    m_flags |= FLAG_NORMALIZED;
  else
    m_flags &= static_cast<unsigned char>(~FLAG_NORMALIZED);
  m_normalizationForm = index + 1;
}
