// SPDX-License-Identifier: Apache-2.0
// Bytes in a client's encoding become an I18NString; find, convert back.
#include <XYLCore/ExceptionHierarchy/XYLErrors.h>
#include <XYLCore/i18n/cpp/i18n_init.h>
#include <XYLCore/i18n/cpp/i18n_locale.h>
#include <XYLCore/i18n/cpp/i18n_string.h>
#include <cstdio>

int main() {
  if (!I18NInitialize()) // counted; finds the resources and ICU's data
    return 1;
  {
    I18NString ascii("plain ASCII stays bytes", "UTF-8");
    I18NString text("Gr\xFC\xDF"
                    "e aus K\xF6ln",
                    "ISO-8859-1"); // Latin-1 bytes
    std::printf("%d code points, \"K\" at %d, UTF-8: %s\n", text.length(), text.find(I18NString("K", "UTF-8")),
                text.c_str("UTF-8"));
    I18NLocale de("de-de");
    de.toUpper(text);
    std::printf("upper: %s, ASCII length %d\n", text.c_str("UTF-8"), ascii.length());
    try {
      I18NString bad("x", "no-such-encoding");
    } catch (I18NRuntimeError &e) {
      std::printf("unknown encoding -> %ld\n", e.getErrorCode()); // -3
    }
  }
  I18NTerminate(); // strings and locales must be gone by now
  return 0;
}
