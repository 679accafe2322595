// SPDX-License-Identifier: Apache-2.0
// Fuzz target: the internationalisation resource file. The input is written
// to a scratch file and read as the resource file; a malformed file must be
// reported and ignored, and every table query must still answer.
#include <XYLCore/i18n/cpp/i18n_internalresources.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <map>
#include <memory>
#include <string>
#include <unistd.h>

#include <unicode/translit.h>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  static const std::string path = "/tmp/xyl_i18nres_fuzz_" + std::to_string(getpid()) + ".xml";
  std::FILE *file = std::fopen(path.c_str(), "wb");
  if (file == nullptr)
    return 0;
  if (size > 0)
    std::fwrite(data, 1, size, file);
  std::fclose(file);
  I18NInternalResources::load(path.c_str());
  unsigned int codePoints[8];
  I18NInternalResources::getReplacementSequence("UTF-8", "\xFF", 1, codePoints, 8);
  char bytes[8];
  I18NInternalResources::getReplacementSequence("ISO-8859-1", 0x20AC, bytes, 8);
  (void)I18NInternalResources::isNonNormalizable(0x2126);
  std::unique_ptr<icu::Transliterator> transliterator(I18NInternalResources::getTransliterator());
  if (transliterator) {
    icu::UnicodeString text(u"\u301c abc");
    transliterator->transliterate(text);
  }
  std::string text;
  I18NInternalResources::getLocaleIdFroLCID(1033, text);
  I18NInternalResources::getDefaultLocaleForLanguage("de", text);
  I18NInternalResources::getEncodingForLocale("ja-jp", text);
  (void)I18NInternalResources::getLCIDForLocale("en-us");
  (void)I18NInternalResources::getUTF8BytesPerCodePoint();
  (void)I18NInternalResources::useAsciiFastPath();
  std::remove(path.c_str());
  return 0;
}
