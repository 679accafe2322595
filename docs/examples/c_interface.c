/* SPDX-License-Identifier: Apache-2.0 */
/* The flat C interface: handles, error codes last, Free of null is harmless. */
#include <XYLCore/i18n/c/i18n_c.h>
#include <stdio.h>

int main(void) {
  I18NErrorCodes error;
  I18NStringHandle text = NULL, needle = NULL;
  if (!I18NInitialize())
    return 1;
  i18nStringBytesToString(&text, "na\xC3\xAFve caf\xC3\xA9", -1, "UTF-8", &error);
  i18nStringBytesToString(&needle, "caf", -1, "UTF-8", &error);
  printf("found at %d\n", (int)i18nStringFindString(text, needle, 0, &error));
  i18nStringFree(&needle, &error);
  i18nStringBytesToString(&needle, "x", -1, "no-such-encoding", &error);
  printf("bad encoding -> %d, handle %s\n", (int)error, needle == NULL ? "null" : "set");
  i18nStringFree(&text, &error);
  i18nStringFree(&needle, &error); /* null: does nothing */
  I18NTerminate();
  return 0;
}
