/* SPDX-License-Identifier: Apache-2.0
 * The internationalisation layer's C interface used from C: every family
 * through handles, allocator callbacks and error codes. Exits 0 when every
 * answer is as documented.
 */
#define _POSIX_C_SOURCE 200809L /* mkstemp, fdopen */
#include <XYLCore/i18n/c/i18n_c.h>

#include "c_check.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

/* An allocator that counts its blocks and can be told to fail. */
struct Pool {
  int live;   /* blocks handed out and not yet freed */
  int failAs; /* 0: work; otherwise the code to report */
};

static char *poolAllocator(void *context, char *buffer, int newSize, int *error) {
  struct Pool *pool = (struct Pool *)context;
  char *block;
  if (error != NULL)
    *error = 0;
  if (newSize == 0) { /* frees even while failing, so nothing leaks */
    if (buffer != NULL) {
      free(buffer);
      --pool->live;
    }
    return NULL;
  }
  if (newSize < 0 || pool->failAs == I18N_NEGATIVE_ALLOCATION_SIZE) {
    *error = I18N_NEGATIVE_ALLOCATION_SIZE;
    return NULL;
  }
  if (pool->failAs != 0) {
    *error = pool->failAs;
    return NULL;
  }
  block = (char *)realloc(buffer, (size_t)newSize);
  if (block == NULL) {
    *error = I18N_ALLOCATION_FAILURE;
    return NULL;
  }
  if (buffer == NULL)
    ++pool->live;
  return block;
}

/* The string's UTF-8 bytes equal `expected`. */
static int hasText(I18NStringHandle s, const char *expected) {
  I18NErrorCodes error;
  char *bytes = NULL;
  int length = i18nStringStringToBytes(s, "UTF-8", &bytes, &error);
  int same = error == 0 && length == (int)strlen(expected) && memcmp(bytes, expected, (size_t)length) == 0;
  free(bytes);
  return same;
}

static void outputReplacement(unsigned int codePoint, const char *encoding, char *bytes, int *length,
                              I18NErrorCodes *error) {
  (void)encoding;
  (void)error;
  bytes[0] = codePoint == 0xE9u ? 'E' : '?';
  *length = 1;
}

static void testStrings(void) {
  I18NErrorCodes error = I18N_GENERAL_FAILURE;
  I18NStringHandle s = NULL, needle = NULL, part = NULL, copy = NULL;
  static const unsigned int smile[] = {0x61u, 0x1F600u, 0x62u, 0u};
  static const unsigned int set[] = {0x6Fu, 0x6Cu, 0u};

  i18nStringNtBytesToString(&s, "hello world", "UTF-8", &error);
  CHECK(error == 0 && s != NULL);
  i18nStringNtBytesToString(&needle, "world", NULL, &error);
  CHECK(i18nStringFindString(s, needle, 0, &error) == 6 && error == 0);
  CHECK(i18nStringFindString(s, needle, 7, &error) == -1);
  CHECK(i18nStringRfindCodePoint(s, 'o', -1, &error) == 7);
  CHECK(i18nStringRfindCodePoint(s, 'o', 6, &error) == 4);
  CHECK(i18nStringFindFirstOfCodePoints(s, set, 0, &error) == 2);
  CHECK(i18nStringFindLastNotOfCodePoint(s, 'd', -1, &error) == 9);
  CHECK(i18nStringFindFirstNotOfString(s, needle, 0, &error) == 0);
  CHECK(i18nStringFindCodePoints(s, set, 0, &error) == -1);
  CHECK(i18nStringStringLength(s, &error) == 11 && i18nStringStringSize(s, &error) == 24);
  CHECK(i18nStringEmpty(s, NULL) == 0 && i18nStringDisplaySize(s, &error) == 0);

  /* Edits, with the results read back. */
  i18nStringCreate(&part, &error);
  i18nStringSubstr(s, 6, 5, part, &error);
  CHECK(error == 0 && hasText(part, "world") && i18nStringCompare(part, needle, &error) == 0);
  i18nStringReplaceCodePoint(s, 0, 5, 0xE9u, &error);
  CHECK(error == 0 && hasText(s, "\xc3\xa9 world"));
  i18nStringInsertRepeatingCodePoint(s, 0, '-', 2, &error);
  i18nStringAppendCodePoints(s, smile, &error);
  CHECK(error == 0 && hasText(s, "--\xc3\xa9 worlda\xf0\x9f\x98\x80"
                                 "b"));
  i18nStringErase(s, 0, 2, &error);
  CHECK(i18nStringStringLength(s, &error) == 10 && i18nStringStringSize(s, &error) == 24);
  i18nStringStringToString(&copy, s, &error);
  CHECK(error == 0 && i18nStringCompare(copy, s, &error) == 0);
  i18nStringNormalize(copy, 2, &error); /* NFD: e + combining acute */
  CHECK(error == 0 && i18nStringStringLength(copy, &error) == 11);
  i18nStringNormalize(copy, 9, &error);
  CHECK(error == I18N_GENERAL_FAILURE);

  /* Offsets step over a surrogate pair as one character. */
  i18nStringFree(&s, &error);
  i18nStringCodePointsToString(&s, smile, &error);
  CHECK(i18nStringIncrementOffset(s, 1, &error) == 3 && i18nStringDecrementOffset(s, 3, &error) == 1);
  CHECK(i18nStringIncrementOffset(s, 4, &error) == -1 && i18nStringCodePointLength(0x1F600u, &error) == 1);
  CHECK(i18nStringCodePointsSize(smile, &error) == 10 && i18nStringCodePointsLength(smile, &error) == 3);

  /* Single code point and repeat constructors. */
  i18nStringFree(&copy, &error);
  i18nStringRepeatingCodePointToStringInitialSize(&copy, 50, 'x', 3, &error);
  CHECK(error == 0 && hasText(copy, "xxx"));

  i18nStringFree(&s, &error);
  i18nStringFree(&needle, &error);
  i18nStringFree(&part, &error);
  i18nStringFree(&copy, &error);
  i18nStringFree(&copy, &error); /* twice: harmless */
  CHECK(error == 0 && copy == NULL);
}

static void testIterators(void) {
  I18NErrorCodes error;
  I18NStringHandle s = NULL;
  I18NStringIteratorHandle it = NULL, end = NULL;
  static const unsigned int text[] = {0x61u, 0x1F600u, 0x62u, 0u};
  static const unsigned int walk[] = {0x61u, 0x1F600u, 0x62u};
  int i;

  i18nStringCodePointsToString(&s, text, &error);
  i18nStringBegin(s, &it, &error);
  i18nStringEnd(s, &end, &error);
  CHECK(error == 0 && it != NULL && end != NULL);
  for (i = 0; i < 3; ++i) {
    CHECK(i18nStringIteratorEqual(it, end, &error) == 0);
    CHECK(i18nStringIteratorAt(it, &error) == walk[i] && error == 0);
    i18nStringIteratorNext(it, &error);
  }
  CHECK(i18nStringIteratorEqual(it, end, &error) == 1);
  CHECK(i18nStringIteratorPrevious(it, &error) == 3 && i18nStringIteratorPrevious(it, &error) == 1);
  i18nStringBegin(s, &end, &error); /* moves the existing iterator */
  CHECK(i18nStringIteratorPrevious(end, &error) == 0 && i18nStringIteratorAt(end, &error) == 0x61u);
  i18nStringIteratorFree(&it, &error);
  i18nStringIteratorFree(&it, &error);
  i18nStringIteratorFree(&end, &error);
  CHECK(error == 0 && it == NULL && end == NULL);
  i18nStringFree(&s, &error);
}

/* Every "WithAllocator" path reports the failing callback's own code. */
static void testFailingAllocatorCodes(void) {
  static const int codes[] = {I18N_ALLOCATION_FAILURE, I18N_NEGATIVE_ALLOCATION_SIZE};
  static const char text[] = "caf\xc3\xa9 with a tail longer than any inline buffer of the string";
  static const unsigned int points[] = {0xE9, 0x4E2D, 0x1F600, 0};
  static const unsigned short units[] = {0xE9, 0x61, 0};
  I18NErrorCodes error;
  I18NStringHandle source = NULL, s = NULL;
  I18NConverterHandle converter = NULL;
  unsigned short *unicode;
  char *bytes;
  int i, j;
  i18nStringNtBytesToString(&source, text, "UTF-8", &error);
  i18nConverterCreate(&converter, "ISO-8859-1", &error);
  for (i = 0; i < 2; ++i) {
    struct Pool pool = {0, 0};
    int code = codes[i];
    pool.failAs = code;
    i18nStringNtBytesToStringWithAllocator(&s, text, "UTF-8", poolAllocator, &pool, &error);
    CHECK(s == NULL && error == code);
    i18nStringBytesToStringWithAllocator(&s, text, (int)sizeof text - 1, "UTF-8", poolAllocator, &pool, &error);
    CHECK(s == NULL && error == code);
    i18nStringCodePointsToStringWithAllocator(&s, points, poolAllocator, &pool, &error);
    CHECK(s == NULL && error == code);
    i18nStringRepeatingCodePointToStringWithAllocator(&s, 0xE9, 300, poolAllocator, &pool, &error);
    CHECK(s == NULL && error == code);
    bytes = (char *)&pool;
    CHECK(i18nStringStringToBytesWithAllocator(source, "UTF-8", &bytes, poolAllocator, &pool, &error) == -1);
    CHECK(error == code && bytes == NULL);
    unicode = (unsigned short *)&pool;
    CHECK(i18nConverterToUnicodeWithAllocator(converter, "abc", 3, &unicode, poolAllocator, &pool, &error) == -1);
    CHECK(error == code && unicode == NULL);
    bytes = (char *)&pool;
    CHECK(i18nConverterFromUnicodeWithAllocator(converter, units, 6, &bytes, poolAllocator, &pool, &error) == -1);
    CHECK(error == code && bytes == NULL);
    /* Strings made with the callback, which fails later while growing
     * (the ASCII form, or the Unicode form it turns into). */
    for (j = 0; j < 2; ++j) {
      pool.failAs = 0;
      i18nStringNtBytesToStringWithAllocator(&s, "plain", "UTF-8", poolAllocator, &pool, &error);
      CHECK(s != NULL && error == 0);
      pool.failAs = code;
      i18nStringAppendRepeatingCodePoint(s, j == 0 ? 0x61 : 0x4E2D, 5000, &error);
      CHECK(error == code);
      pool.failAs = 0;
      i18nStringFree(&s, &error);
    }
    CHECK(pool.live == 0);
  }
  i18nConverterFree(&converter, &error);
  i18nStringFree(&source, &error);
}

static void testAllocators(void) {
  I18NErrorCodes error;
  struct Pool pool = {0, 0};
  I18NStringHandle s = NULL;
  char *bytes = NULL;
  unsigned short *units = NULL;
  static const unsigned short abc[] = {0x61, 0x62, 0x63, 0};
  int length;

  i18nStringNtBytesToStringWithAllocator(&s, "caf\xc3\xa9 au lait, and a long tail", "UTF-8", poolAllocator, &pool,
                                         &error);
  CHECK(error == 0 && pool.live > 0);
  length = i18nStringStringToBytesWithAllocator(s, "ISO-8859-1", &bytes, poolAllocator, &pool, &error);
  CHECK(error == 0 && length == 29 && bytes != NULL && (unsigned char)bytes[3] == 0xE9u);
  poolAllocator(&pool, bytes, 0, NULL);
  i18nStringFreeBuffer(bytes, &error); /* releases nothing, reports 0 */
  CHECK(error == 0);

  /* A conversion that fails returns -1 and the failure's code. */
  bytes = (char *)&pool;
  length = i18nStringStringToBytesWithAllocator(s, "US-ASCII", &bytes, poolAllocator, &pool, &error);
  CHECK(length == -1 && error == I18N_GENERAL_FAILURE && bytes == NULL);
  i18nStringFree(&s, &error);
  CHECK(pool.live == 0);

  /* Code unit buffers: copy, concatenate, failing allocators. */
  CHECK(i18nCodeUnitsCopy(&units, abc, poolAllocator, &pool, &error) == 8 && error == 0);
  CHECK(i18nCodeUnitsConcat(&units, abc, poolAllocator, &pool, &error) == 14 && units[5] == 0x63);
  CHECK(i18nCodeUnitsLength(units, &error) == 6 && i18nCodeUnitsSize(units, &error) == 14);
  pool.failAs = I18N_ALLOCATION_FAILURE;
  CHECK(i18nCodeUnitsConcat(&units, abc, poolAllocator, &pool, &error) == -1 && error == I18N_ALLOCATION_FAILURE);
  pool.failAs = I18N_NEGATIVE_ALLOCATION_SIZE;
  CHECK(i18nCodeUnitsCopy(&units, abc, poolAllocator, &pool, &error) == -1 && error == I18N_NEGATIVE_ALLOCATION_SIZE);
  CHECK(units != NULL && i18nCodeUnitsSize(units, &error) == 14); /* unchanged */
  pool.failAs = 0;
  poolAllocator(&pool, (char *)units, 0, NULL);
  CHECK(pool.live == 0);
  units = NULL;
  CHECK(i18nCodeUnitsCopy(&units, abc, NULL, NULL, &error) == 8);
  free(units);
}

static void testConverters(void) {
  I18NErrorCodes error;
  I18NConverterHandle latin = NULL, ascii = NULL, bad = (I18NConverterHandle)&error;
  I18NStringHandle s = NULL;
  unsigned short *units = NULL;
  char *bytes = NULL;

  i18nConverterCreate(&bad, "no-such-encoding", &error);
  CHECK(error == I18N_INVALID_ENCODING && bad == NULL);
  i18nStringNtBytesToString(&s, "abc", "no-such-encoding", &error);
  CHECK(error == I18N_INVALID_ENCODING && s == NULL);

  i18nConverterCreate(&latin, "ISO-8859-1", &error);
  CHECK(error == 0 && strcmp(i18nConverterGetEncoding(latin, &error), "ISO-8859-1") == 0);
  CHECK(i18nConverterToUnicode(latin, "caf\xe9", 4, &units, &error) == 8 && units[3] == 0xE9);
  CHECK(i18nConverterFromUnicode(latin, units, 8, &bytes, &error) == 4 && memcmp(bytes, "caf\xe9", 4) == 0);
  free(units);
  free(bytes);
  i18nStringCreate(&s, &error);
  CHECK(i18nConverterToUnicodeString(latin, "caf\xe9", -1, s, &error) == 4 && hasText(s, "caf\xc3\xa9"));
  CHECK(i18nConverterNumLegacyBytes(latin, 10, &error) == 11 && i18nConverterNumUnicodeBytes(latin, 10, &error) == 22);
  CHECK(i18nConverterNumLegacyCodePoints(latin, 11, &error) == 10);
  CHECK(i18nConverterNumUnicodeCodePoints(latin, 22, &error) == 10);
  CHECK(i18nConverterSizeofLegacyNull(latin, &error) == 1 && i18nConverterSizeofUnicodeNull(latin, &error) == 2);

  /* Unconvertible output: stop, then a user callback. */
  i18nConverterCreate(&ascii, "US-ASCII", &error);
  CHECK(i18nConverterGetBuiltInUnconvertibleOutputSequenceCallback(ascii, &error) == 1);
  i18nConverterSetBuiltInUnconvertibleOutputSequenceCallback(ascii, 4, &error);
  i18nConverterSetBuiltInUnconvertibleOutputSequenceCallback(ascii, 7, &error); /* ignored */
  CHECK(i18nConverterGetBuiltInUnconvertibleOutputSequenceCallback(ascii, &error) == 4);
  CHECK(i18nConverterFromUnicodeString(ascii, s, &bytes, &error) == -1 && error == I18N_GENERAL_FAILURE);
  CHECK(bytes == NULL);
  i18nConverterSetUserDefinedUnconvertibleOutputSequenceCallback(ascii, outputReplacement, &error);
  i18nConverterSetBuiltInUnconvertibleOutputSequenceCallback(ascii, 3, &error);
  CHECK(i18nConverterGetUserDefinedInUnconvertibleOutputSequenceCallback(ascii, &error) == outputReplacement);
  CHECK(i18nConverterGetUserDefinedUnconvertibleInputSequenceCallback(ascii, &error) == NULL);
  CHECK(i18nConverterFromUnicodeString(ascii, s, &bytes, &error) == 4 && error == 0 && memcmp(bytes, "cafE", 4) == 0);
  free(bytes);
  i18nConverterSetBuiltInUnconvertibleInputSequenceCallback(ascii, 2, &error);
  CHECK(i18nConverterGetBuiltInUnconvertibleInputSequenceCallback(ascii, &error) == 2);

  i18nConverterFree(&latin, &error);
  i18nConverterFree(&latin, &error);
  i18nConverterFree(&ascii, &error);
  CHECK(error == 0 && latin == NULL && ascii == NULL);
  i18nStringFree(&s, &error);
}

static void testLocales(void) {
  I18NErrorCodes error;
  I18NLocaleHandle tr = NULL, en = NULL;
  I18NStringHandle a = NULL, b = NULL;
  char name[16];

  i18nLocaleCreate(&tr, "tr-TR", &error);
  i18nLocaleCreate(&en, NULL, &error);
  CHECK(error == 0 && i18nLocaleGetName(en, name, sizeof name, &error) == 5 && strcmp(name, "en-us") == 0);
  CHECK(i18nLocaleGetLanguage(tr, name, sizeof name, &error) == 2 && strcmp(name, "tr") == 0);
  CHECK(i18nLocaleGetCountry(tr, name, sizeof name, &error) == 2);
  CHECK(i18nLocaleGetVariant(tr, name, sizeof name, &error) == 0 && name[0] == '\0');
  CHECK(i18nLocaleGetName(tr, name, 5, &error) == -1 && error == I18N_BUFFER_TOO_SMALL && strcmp(name, "tr-T") == 0);
  CHECK(i18nLocaleGetName(tr, name, 6, &error) == 5 && error == 0);

  i18nStringNtBytesToString(&a, "i", NULL, &error);
  i18nStringNtBytesToString(&b, "i", NULL, &error);
  i18nLocaleToUpper(tr, a, &error);
  i18nLocaleToUpper(en, b, &error);
  CHECK(error == 0 && hasText(a, "\xc4\xb0") && hasText(b, "I"));
  CHECK(i18nLocaleCompareIgnoreCase(en, b, a, &error) != 0);
  i18nLocaleToLower(en, b, &error);
  CHECK(hasText(b, "i") && i18nLocaleCompare(en, b, b, &error) == 0);
  i18nStringFree(&a, &error);
  i18nStringFree(&b, &error);
  i18nLocaleFree(&tr, &error);
  i18nLocaleFree(&tr, &error);
  i18nLocaleFree(&en, &error);
  CHECK(error == 0 && tr == NULL);
}

static void testFormatsCollatorBidi(void) {
  I18NErrorCodes error;
  I18NLocaleHandle en = NULL;
  I18NNumericFormatHandle number = NULL;
  I18NDateTimeFormatHandle date = NULL;
  I18NCollatorHandle collator = NULL;
  I18NBidiHandle bidi = NULL;
  I18NStringHandle out = NULL, a = NULL, b = NULL;
  static const unsigned short lowerA[] = {0x61, 0}, upperA[] = {0x41, 0};

  i18nLocaleCreate(&en, "en-us", &error);
  i18nStringCreate(&out, &error);
  i18nNumericFormatCreate(&number, en, &error);
  CHECK(error == 0 && number != NULL);
  i18nNumericFormatFormat(number, 1234.5, out, &error);
  CHECK(error == 0 && hasText(out, "1,234.5"));
  i18nNumericFormatFormatDigitBuffer(number, "not a number", out, &error);
  CHECK(error == I18N_GENERAL_FAILURE);
  i18nNumericFormatGetGroupingSeparator(number, out, &error);
  CHECK(error == 0 && hasText(out, ","));
  i18nNumericFormatGetPattern(number, out, &error);
  CHECK(error == 0 && i18nNumericFormatValidate(out, &error) == 1);
  i18nNumericFormatFree(&number, &error);

  i18nDateTimeFormatCreate(&date, en, &error);
  i18nDateTimeFormatGetMonthName(date, 1, out, &error);
  CHECK(error == 0 && hasText(out, "January"));
  i18nDateTimeFormatGetDayShortName(date, 1, out, &error);
  CHECK(error == 0 && hasText(out, "Sun"));
  i18nStringFree(&out, &error);
  i18nStringCreate(&out, &error);
  i18nDateTimeFormatCalendarFormat(date, 2024, 2, 30, 0, 0, 0, 0, out, &error);
  CHECK(error == I18N_GENERAL_FAILURE);
  i18nDateTimeFormatFree(&date, &error);
  i18nDateTimeFormatFree(&date, &error);
  CHECK(error == 0 && date == NULL);

  i18nCollatorCreate(&collator, en, &error);
  i18nCollatorSetLevel(collator, 0, &error);
  CHECK(i18nCollatorGetLevel(collator, &error) == 0 &&
        i18nCollatorCollateBuffers(collator, lowerA, upperA, &error) == 0);
  i18nCollatorSetLevel(collator, 2, &error);
  CHECK(i18nCollatorCollateBuffers(collator, lowerA, upperA, &error) != 0);
  i18nStringNtBytesToString(&a, "apple", NULL, &error);
  i18nStringNtBytesToString(&b, "Banana", NULL, &error);
  CHECK(i18nCollatorCollateStrings(collator, a, b, &error) < 0 && i18nStringCompare(a, b, &error) > 0);
  i18nCollatorFree(&collator, &error);

  i18nStringFree(&a, &error);
  i18nStringNtBytesToString(&a, "\xd7\x90\xd7\x91", "UTF-8", &error); /* alef bet */
  i18nBidiCreateFromString(&bidi, a, &error);
  i18nBidiGetVisualString(bidi, out, &error);
  CHECK(error == 0 && hasText(out, "\xd7\x91\xd7\x90"));
  i18nBidiSetText(bidi, b, &error);
  i18nBidiGetLogicalString(bidi, out, &error);
  CHECK(error == 0 && hasText(out, "Banana"));
  i18nBidiFree(&bidi, &error);
  i18nBidiCreate(&bidi, &error);
  i18nBidiGetVisualString(bidi, out, &error);
  CHECK(error == 0 && i18nStringEmpty(out, &error) == 1);
  i18nBidiFree(&bidi, &error);
  i18nBidiFree(&bidi, &error);
  CHECK(error == 0 && bidi == NULL);
  i18nStringFree(&a, &error);
  i18nStringFree(&b, &error);
  i18nStringFree(&out, &error);
  i18nLocaleFree(&en, &error);
}

static void testStreams(void) {
  I18NErrorCodes error;
  I18NStringHandle s = NULL;
  FILE *file = tmpfile();
  int i;
  static const char *lines[] = {"first line\n", "second\n", "tail without newline"};

  CHECK(file != NULL);
  if (file == NULL)
    return;
  i18nStringCreate(&s, &error);
  for (i = 0; i < 3; ++i) {
    i18nStringFree(&s, &error);
    i18nStringNtBytesToString(&s, lines[i], NULL, &error);
    CHECK(i18nStringFputs(s, file, &error) == (int)strlen(lines[i]));
  }
  rewind(file);
  for (i = 0; i < 3; ++i)
    CHECK(i18nStringFgets(s, file, &error) == (int)strlen(lines[i]) && hasText(s, lines[i]));
  CHECK(i18nStringFgets(s, file, &error) == 0 && error == 0 && i18nStringEmpty(s, &error) == 1);
  CHECK(i18nStringFputs(s, NULL, &error) == -1 && error == I18N_GENERAL_FAILURE);
  fclose(file);
  i18nStringFree(&s, &error);
}

/* Every family answers a null handle with -7 and a neutral result. */
static void testNullHandles(void) {
  I18NErrorCodes error;
  I18NStringHandle none = NULL;
  I18NStringIteratorHandle noIterator = NULL;
  char *bytes = (char *)&error;

  CHECK(i18nStringFindString(none, none, 0, &error) == -1 && error == I18N_GENERAL_FAILURE);
  CHECK(i18nStringStringLength(none, &error) == 0 && error == I18N_GENERAL_FAILURE);
  CHECK(i18nStringStringToBytes(none, NULL, &bytes, &error) == -1 && error == I18N_GENERAL_FAILURE && bytes == NULL);
  i18nStringAppendString(none, none, &error);
  CHECK(error == I18N_GENERAL_FAILURE);
  i18nStringStringToString(NULL, none, &error);
  CHECK(error == I18N_GENERAL_FAILURE);
  CHECK(i18nStringIteratorNext(noIterator, &error) == -1 && error == I18N_GENERAL_FAILURE);
  CHECK(i18nConverterGetEncoding(NULL, &error) == NULL && error == I18N_GENERAL_FAILURE);
  CHECK(i18nLocaleGetName(NULL, NULL, 0, &error) == -1 && error == I18N_GENERAL_FAILURE);
  CHECK(i18nCollatorGetLevel(NULL, &error) == -1 && error == I18N_GENERAL_FAILURE);
  i18nBidiSetText(NULL, none, &error);
  CHECK(error == I18N_GENERAL_FAILURE);
  i18nNumericFormatGetMinusSign(NULL, none, &error);
  CHECK(error == I18N_GENERAL_FAILURE);
  i18nDateTimeFormatGetAmString(NULL, none, &error);
  CHECK(error == I18N_GENERAL_FAILURE);
  CHECK(i18nCodePointIsDigit('7', &error) == 1 && error == 0);
  CHECK(i18nCodePointIsLetter(0xE9u, &error) == 1 && i18nCodePointIsSpace(0x3000u, &error) == 1);
  CHECK(i18nCodePointIsWhitespace('\t', &error) == 1 && i18nCodePointIsPunctuation('!', &error) == 1);
  CHECK(i18nCodePointIsAlphanumeric('-', &error) == 0);
  i18nStringFree(NULL, &error);
  CHECK(error == 0);
}

/* Gets and Puts are Fgets and Fputs (plus a newline) on the standard
 * streams; both are pointed at files here, so this runs last. */
static void testStandardStreams(void) {
  I18NErrorCodes error;
  I18NStringHandle s = NULL;
  char path[] = "/tmp/i18n_c_XXXXXX";
  char line[32];
  FILE *file;
  int fd = mkstemp(path);

  CHECK(fd >= 0);
  if (fd < 0)
    return;
  file = fdopen(fd, "w");
  fputs("one\ntwo", file);
  fclose(file);
  CHECK(freopen(path, "r", stdin) != NULL);
  i18nStringCreate(&s, &error);
  CHECK(i18nStringGets(s, &error) == 4 && hasText(s, "one\n"));
  CHECK(i18nStringGets(s, &error) == 3 && hasText(s, "two"));
  CHECK(i18nStringGets(s, &error) == 0 && error == 0);

  i18nStringFree(&s, &error);
  i18nStringNtBytesToString(&s, "plain", NULL, &error);
  CHECK(freopen(path, "w", stdout) != NULL);
  CHECK(i18nStringPuts(s, &error) == 6 && error == 0);
  fflush(stdout);
  file = fopen(path, "r");
  CHECK(file != NULL && fgets(line, sizeof line, file) != NULL && strcmp(line, "plain\n") == 0);
  if (file != NULL)
    fclose(file);
  remove(path);
  i18nStringFree(&s, &error);
}

int main(void) {
  CHECK(I18NInitialize() != 0);
  testStrings();
  testIterators();
  testAllocators();
  testFailingAllocatorCodes();
  testConverters();
  testLocales();
  testFormatsCollatorBidi();
  testStreams();
  testNullHandles();
  testStandardStreams();
  I18NTerminate();
  if (failures != 0)
    fprintf(stderr, "%d check(s) failed\n", failures);
  return failures == 0 ? 0 : 1;
}
