// SPDX-License-Identifier: Apache-2.0
// Durations, collation and visual order for a user's locale.
#include <XYLCore/i18n/cpp/i18n_bidi.h>
#include <XYLCore/i18n/cpp/i18n_collator.h>
#include <XYLCore/i18n/cpp/i18n_init.h>
#include <XYLCore/i18n/cpp/i18n_intervalformat.h>
#include <XYLCore/i18n/cpp/i18n_locale.h>
#include <XYLCore/i18n/cpp/i18n_numericformat.h>
#include <cstdio>

int main() {
  if (!I18NInitialize())
    return 1;
  {
    I18NLocale de("de-de");
    I18NString duration, number;
    I18NIntervalFormat interval(de);                                           // long style: numbers and unit words
    interval.format(1, 2, 30, 0, 0, duration, I18N_INTERVAL_DT_DAY_TO_MINUTE); // replaces
    I18NNumericFormat numeric(de);
    numeric.format(1234567.891, number); // appends
    std::printf("[%s] %s\n", duration.c_str("UTF-8"), number.c_str("UTF-8"));
    I18NCollator collator(de);
    int order = collator.collate(I18NString("\xC3\x84pfel", "UTF-8"), I18NString("Birnen", "UTF-8"));
    std::printf("Äpfel before Birnen: %s\n", order < 0 ? "yes" : "no");
    I18NBidi bidi(I18NString("abc \xD7\x90\xD7\x91\xD7\x92", "UTF-8")); // Hebrew alef bet gimel
    std::printf("visual: %s\n", bidi.getVisualString().c_str("UTF-8"));
  }
  I18NTerminate();
  return 0;
}
