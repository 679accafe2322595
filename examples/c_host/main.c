/* SPDX-License-Identifier: Apache-2.0 */
/* A C host of XYLCore: only the C interfaces. It starts the library, turns
 * bytes into a string handle, searches it, converts it to another encoding,
 * orders two words for a German reader, encodes bytes as Base64, and shows
 * how failures come back through the error argument. */
#include <XYLCore/Core/xylcore.h>
#include <XYLCore/Utility/xylbase64.h>
#include <XYLCore/i18n/c/i18n_c.h>

#include <stdio.h>
#include <stdlib.h>

static int startLibrary(void) { return xylInitialize() == 0 && I18NInitialize() != 0; }

static void searchAndConvert(void) {
  I18NErrorCodes error = I18N_SUCCESS;
  I18NStringHandle text = NULL;
  I18NStringHandle word = NULL;
  char *latin1 = NULL;
  int length;

  i18nStringBytesToString(&text,
                          "Gr\xc3\xbc\xc3\x9f"
                          "e aus K\xc3\xb6ln",
                          -1, "UTF-8", &error);
  i18nStringBytesToString(&word, "K\xc3\xb6ln", -1, "UTF-8", &error);
  printf("length %d, the city starts at %d\n", i18nStringStringLength(text, &error),
         (int)i18nStringFindString(text, word, 0, &error));
  length = i18nStringStringToBytes(text, "ISO-8859-1", &latin1, &error);
  printf("as ISO-8859-1: %d bytes (error %d)\n", length, (int)error);
  free(latin1); /* no allocator was given: the C heap */
  i18nStringFree(&text, &error);
  i18nStringFree(&word, &error);
  i18nStringFree(&word, &error); /* a second free is harmless */
}

static void compareForGermanReaders(void) {
  I18NErrorCodes error = I18N_SUCCESS;
  I18NLocaleHandle german = NULL;
  I18NCollatorHandle collator = NULL;
  I18NStringHandle a = NULL;
  I18NStringHandle b = NULL;

  i18nLocaleCreate(&german, "de-de", &error);
  i18nCollatorCreate(&collator, german, &error);
  i18nStringBytesToString(&a, "\xc3\x84pfel", -1, "UTF-8", &error);
  i18nStringBytesToString(&b, "Birne", -1, "UTF-8", &error);
  printf("\"\xc3\x84pfel\" sorts %s \"Birne\"\n",
         i18nCollatorCollateStrings(collator, a, b, &error) < 0 ? "before" : "after");
  i18nStringFree(&a, &error);
  i18nStringFree(&b, &error);
  i18nCollatorFree(&collator, &error);
  i18nLocaleFree(&german, &error);
}

static void reportABadEncoding(void) {
  I18NErrorCodes error = I18N_SUCCESS;
  I18NStringHandle text = NULL;
  i18nStringBytesToString(&text, "x", -1, "no-such-encoding", &error);
  printf("an unknown encoding gives error %d and %s handle\n", (int)error, text == NULL ? "a null" : "a");
}

int main(void) {
  const char raw[] = "XYLCore";
  char base64[64];

  if (!startLibrary()) {
    fprintf(stderr, "c_host: the library did not start\n");
    return 1;
  }
  searchAndConvert();
  compareForGermanReaders();
  reportABadEncoding();
  XYLBase64Encode((const unsigned char *)raw, sizeof raw - 1, base64);
  printf("Base64 of \"%s\": %s\n", raw, base64);
  I18NTerminate();
  xylTerminate();
  return 0;
}
