// SPDX-License-Identifier: Apache-2.0
// A helper process for the Japanese compatibility tests: normalises the code
// points given as hexadecimal arguments under this process's locale settings
// and prints three lines: the platform default encoding, the text after
// normalize(), and the text after normalize() with the compatibility step
// skipped (UTF-16 units in hexadecimal). Each test starts it with its own
// environment, since the platform encoding is worked out once per process.
#include <XYLCore/i18n/cpp/i18n_converter.h>
#include <XYLCore/i18n/cpp/i18n_init.h>
#include <XYLCore/i18n/cpp/i18n_string.h>

#include <cstdio>
#include <cstdlib>
#include <vector>

// glibc keeps the data of a locale loaded from LOCPATH for the life of the
// process, which LeakSanitizer would report when the probe exits.
extern "C" const char *__asan_default_options() { return "detect_leaks=0"; }

namespace {

void printUnits(const I18NString &text) {
  I18NString copy(text);
  const unsigned short *units = copy.getUTF16Buffer();
  for (int i = 0; i < copy.unitLength(); ++i)
    std::printf("%s%04X", i == 0 ? "" : " ", units[i]);
  std::printf("\n");
}

} // namespace

int main(int argc, char **argv) {
  if (I18NInitialize() == 0)
    return 2;
  std::vector<unsigned int> points;
  for (int i = 1; i < argc; ++i)
    points.push_back(static_cast<unsigned int>(std::strtoul(argv[i], nullptr, 16)));
  points.push_back(0);
  std::printf("%s\n", I18NGetPlatformDefaultEncoding());
  try {
    I18NString applied(points.data());
    applied.normalize(I18N_NORMALIZATION_DEFAULT);
    printUnits(applied);
    I18NString skipped(points.data());
    skipped.skipCompatibilityTransliteration(true);
    skipped.normalize(I18N_NORMALIZATION_DEFAULT);
    printUnits(skipped);
  } catch (...) {
    std::printf("exception\n");
  }
  std::fflush(stdout);
  I18NTerminate();
  return 0;
}
