// SPDX-License-Identifier: Apache-2.0
// A helper process for the platform-default tests: prints the platform
// default encoding and its normalised name as this process's locale
// settings give them (each test starts it with its own environment).
#include <XYLCore/i18n/cpp/i18n_converter.h>

#include <cstdio>

// glibc keeps the data of a locale loaded from LOCPATH for the life of the
// process, which LeakSanitizer would report when the probe exits.
extern "C" const char *__asan_default_options() { return "detect_leaks=0"; }

int main() {
  std::printf("%s\n%s\n", I18NGetPlatformDefaultEncoding(), I18NGetNormalizedPlatformDefaultEncoding());
  std::fflush(stdout);
  return 0;
}
