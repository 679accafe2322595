/* SPDX-License-Identifier: Apache-2.0
 * i18n_c.h - the flat C interface of the internationalisation layer.
 *
 * Every function wraps one operation of the internationalisation classes
 * (I18NString and its iterator, I18NConverter, I18NLocale,
 * I18NNumericFormat, I18NDateTimeFormat, I18NCollator, I18NBidi) for callers
 * that cannot use classes. Valid C89, C99 and C++; include this header
 * alone. Start the layer with I18NInitialize() before the first call and
 * stop it with I18NTerminate() after the last (declared here too).
 *
 * Handles. Each family has an opaque handle type (a pointer to an
 * incomplete struct, so that C compilers reject a converter handle where a
 * string handle is expected); behind it is the library's object. A function
 * whose name contains "Create" takes a pointer to the caller's handle
 * variable first, stores the new handle there, or null when it fails. A
 * function whose name ends in "Free" deletes the object when the handle is
 * not null and sets the caller's variable to null, so freeing twice is
 * harmless. A null handle passed to any other function reports
 * I18N_GENERAL_FAILURE (-7).
 *
 * Errors. The last argument of every function is an I18NErrorCodes*; the
 * function first stores I18N_SUCCESS (0) there, and leaves a failure code
 * when the operation fails (a null error pointer is allowed: the code is
 * then lost). The codes: I18N_ALLOCATION_FAILURE -1 (an allocator callback
 * could not provide memory; the C heap counts as the callback of the
 * variants without one), I18N_NORMALIZATION_FAILURE -2,
 * I18N_INVALID_ENCODING -3 (unknown encoding name), I18N_GENERAL_FAILURE -7
 * (anything else: an ICU failure, a resource not found, a static external
 * buffer that cannot grow, a null handle, memory exhaustion inside the
 * classes, any unexpected failure), I18N_BUFFER_TOO_SMALL -9 and
 * I18N_NEGATIVE_ALLOCATION_SIZE -10 (a callback reported a negative size:
 * handed on as the callback reported it). No function throws or lets a C++
 * exception escape.
 *
 * Results. Queries return their answer (offset, count, boolean, order) as
 * the function's value; what they return after a failure is stated per
 * family (0, or -1 for offsets). Functions that produce a buffer return its
 * length, or -1 when the error is not 0 afterwards. Functions that produce
 * text fill a string handle the caller created (the "target"); the getters
 * replace its content, the format functions append to it, as the classes
 * do.
 *
 * Returned buffers belong to the caller. A buffer from a "WithAllocator"
 * function (and from i18nCodeUnitsCopy/Concat given a callback) was
 * obtained through that callback: release it by calling the same callback
 * with the same context and size 0. A buffer from the variant without the
 * suffix (or given a null callback) came from the C heap: release it with
 * free(). i18nStringFreeBuffer releases NOTHING (it only reports 0; it is
 * kept for callers written against it). Pointers returned as const
 * (i18nConverterGetEncoding) belong to the object and must not be freed.
 *
 * Threads. A handle belongs to one thread at a time; distinct handles may
 * be used from different threads. An iterator handle refers to its string:
 * free the iterator before (or without using it after) the string.
 */
#ifndef XYLCORE_I18N_C_I18N_C_H
#define XYLCORE_I18N_C_I18N_C_H

#include <XYLCore/XYLExport.h>
#include <XYLCore/i18n/cpp/i18n_init.h>
#include <XYLCore/i18n/cpp/i18n_types.h>

#include <stdio.h>

/* The error codes, the allocator callback type
 * (I18N_STRINGBUFFER_ALLOCATOR_CALLBACK), the offset type (I18NStringOffset)
 * and the converters' user callback types are defined once, in
 * i18n_types.h (valid C), and shared with the classes. */

typedef struct I18NStringHandle_ *I18NStringHandle;
typedef struct I18NStringIteratorHandle_ *I18NStringIteratorHandle;
typedef struct I18NConverterHandle_ *I18NConverterHandle;
typedef struct I18NLocaleHandle_ *I18NLocaleHandle;
typedef struct I18NNumericFormatHandle_ *I18NNumericFormatHandle;
typedef struct I18NDateTimeFormatHandle_ *I18NDateTimeFormatHandle;
typedef struct I18NCollatorHandle_ *I18NCollatorHandle;
typedef struct I18NBidiHandle_ *I18NBidiHandle;

XYL_EXTERN_C_BEGIN

/* ---- string: creation ------------------------------------------------------
 * The allocator callback of a string (null: the C heap) provides its own
 * buffers and every buffer it returns. Byte lengths of -1 mean
 * NUL-terminated; a null or empty encoding means "UTF8". */
XYL_API void i18nStringCreate(I18NStringHandle *string, I18NErrorCodes *error);
XYL_API void i18nStringCreateWithAllocator(I18NStringHandle *string, I18N_STRINGBUFFER_ALLOCATOR_CALLBACK allocator,
                                           void *context, I18NErrorCodes *error);
/* Empty, with room for initialSize characters. */
XYL_API void i18nStringCreateInitialSize(I18NStringHandle *string, int initialSize, I18NErrorCodes *error);
XYL_API void i18nStringCreateInitialSizeWithAllocator(I18NStringHandle *string, int initialSize,
                                                      I18N_STRINGBUFFER_ALLOCATOR_CALLBACK allocator, void *context,
                                                      I18NErrorCodes *error);
/* From `length` bytes in `encoding` (-3 for an unknown encoding). */
XYL_API void i18nStringBytesToString(I18NStringHandle *string, const char *bytes, int length, const char *encoding,
                                     I18NErrorCodes *error);
XYL_API void i18nStringBytesToStringWithAllocator(I18NStringHandle *string, const char *bytes, int length,
                                                  const char *encoding, I18N_STRINGBUFFER_ALLOCATOR_CALLBACK allocator,
                                                  void *context, I18NErrorCodes *error);
/* From NUL-terminated bytes. */
XYL_API void i18nStringNtBytesToString(I18NStringHandle *string, const char *bytes, const char *encoding,
                                       I18NErrorCodes *error);
XYL_API void i18nStringNtBytesToStringWithAllocator(I18NStringHandle *string, const char *bytes, const char *encoding,
                                                    I18N_STRINGBUFFER_ALLOCATOR_CALLBACK allocator, void *context,
                                                    I18NErrorCodes *error);
/* One code point (UTF-32). */
XYL_API void i18nStringCodePointToString(I18NStringHandle *string, unsigned int codePoint, I18NErrorCodes *error);
XYL_API void i18nStringCodePointToStringWithAllocator(I18NStringHandle *string, unsigned int codePoint,
                                                      I18N_STRINGBUFFER_ALLOCATOR_CALLBACK allocator, void *context,
                                                      I18NErrorCodes *error);
XYL_API void i18nStringCodePointToStringInitialSize(I18NStringHandle *string, int initialSize, unsigned int codePoint,
                                                    I18NErrorCodes *error);
XYL_API void i18nStringCodePointToStringInitialSizeWithAllocator(I18NStringHandle *string, int initialSize,
                                                                 unsigned int codePoint,
                                                                 I18N_STRINGBUFFER_ALLOCATOR_CALLBACK allocator,
                                                                 void *context, I18NErrorCodes *error);
/* From a NUL-terminated UTF-32 array (null: empty). */
XYL_API void i18nStringCodePointsToString(I18NStringHandle *string, const unsigned int *codePoints,
                                          I18NErrorCodes *error);
XYL_API void i18nStringCodePointsToStringWithAllocator(I18NStringHandle *string, const unsigned int *codePoints,
                                                       I18N_STRINGBUFFER_ALLOCATOR_CALLBACK allocator, void *context,
                                                       I18NErrorCodes *error);
/* `count` copies of one code point (count below 1: empty). */
XYL_API void i18nStringRepeatingCodePointToString(I18NStringHandle *string, unsigned int codePoint, int count,
                                                  I18NErrorCodes *error);
XYL_API void i18nStringRepeatingCodePointToStringWithAllocator(I18NStringHandle *string, unsigned int codePoint,
                                                               int count,
                                                               I18N_STRINGBUFFER_ALLOCATOR_CALLBACK allocator,
                                                               void *context, I18NErrorCodes *error);
XYL_API void i18nStringRepeatingCodePointToStringInitialSize(I18NStringHandle *string, int initialSize,
                                                             unsigned int codePoint, int count, I18NErrorCodes *error);
XYL_API void i18nStringRepeatingCodePointToStringInitialSizeWithAllocator(
    I18NStringHandle *string, int initialSize, unsigned int codePoint, int count,
    I18N_STRINGBUFFER_ALLOCATOR_CALLBACK allocator, void *context, I18NErrorCodes *error);
/* A copy of `source` (with its allocator). */
XYL_API void i18nStringStringToString(I18NStringHandle *string, I18NStringHandle source, I18NErrorCodes *error);
/* Makes the string's UTF-16 live in the caller's buffer of byteSize bytes
 * (which holds NUL-terminated UTF-16, adopted as the content). Without an
 * allocator the buffer cannot grow: a change that does not fit reports -7.
 * The buffer stays the caller's. */
XYL_API void i18nStringAttach(I18NStringHandle string, void *buffer, int byteSize, I18NErrorCodes *error);
XYL_API void i18nStringFree(I18NStringHandle *string, I18NErrorCodes *error);

/* ---- string: output --------------------------------------------------------
 * The content as a new NUL-terminated byte buffer in `encoding`, stored in
 * *bytes (null on failure); returns its length without terminator, or -1.
 * A conversion the encoding cannot make reports -7. */
XYL_API int i18nStringStringToBytes(I18NStringHandle string, const char *encoding, char **bytes, I18NErrorCodes *error);
XYL_API int i18nStringStringToBytesWithAllocator(I18NStringHandle string, const char *encoding, char **bytes,
                                                 I18N_STRINGBUFFER_ALLOCATOR_CALLBACK allocator, void *context,
                                                 I18NErrorCodes *error);
/* Releases nothing: only stores 0 into the error (see the banner). */
XYL_API void i18nStringFreeBuffer(char *buffer, I18NErrorCodes *error);
/* Reads one line (fgets semantics: up to and including the newline, or to
 * the end of input) in the platform default encoding into the string,
 * replacing its content. Returns the length of the content in code points:
 * 0 at the end of input, -1 on failure. */
XYL_API int i18nStringFgets(I18NStringHandle string, FILE *stream, I18NErrorCodes *error);
/* Writes the string in the platform default encoding (fputs: no newline);
 * returns the bytes written, or -1 (-7 when the stream fails). */
XYL_API int i18nStringFputs(I18NStringHandle string, FILE *stream, I18NErrorCodes *error);
/* i18nStringFgets on standard input. */
XYL_API int i18nStringGets(I18NStringHandle string, I18NErrorCodes *error);
/* The string and a newline on standard output (puts). */
XYL_API int i18nStringPuts(I18NStringHandle string, I18NErrorCodes *error);

/* ---- string: size (0 after a failure) -------------------------------------- */
/* Code points. */
XYL_API int i18nStringStringLength(I18NStringHandle string, I18NErrorCodes *error);
/* Bytes of the NUL-terminated UTF-16 form: 0 when empty, else units*2+2. */
XYL_API int i18nStringStringSize(I18NStringHandle string, I18NErrorCodes *error);
XYL_API int i18nStringCodePointLength(unsigned int codePoint, I18NErrorCodes *error);
XYL_API int i18nStringCodePointSize(unsigned int codePoint, I18NErrorCodes *error);
XYL_API int i18nStringCodePointsLength(const unsigned int *codePoints, I18NErrorCodes *error);
XYL_API int i18nStringCodePointsSize(const unsigned int *codePoints, I18NErrorCodes *error);
/* Always 0: display width is not computed. */
XYL_API int i18nStringDisplaySize(I18NStringHandle string, I18NErrorCodes *error);
/* 1 when empty, else 0. */
XYL_API int i18nStringEmpty(I18NStringHandle string, I18NErrorCodes *error);

/* ---- string: edit ------------------------------------------------------------
 * Offsets and counts are in UTF-16 code units; a count of -1 means to the
 * end. */
XYL_API void i18nStringAppendString(I18NStringHandle string, I18NStringHandle source, I18NErrorCodes *error);
XYL_API void i18nStringAppendCodePoint(I18NStringHandle string, unsigned int codePoint, I18NErrorCodes *error);
XYL_API void i18nStringAppendCodePoints(I18NStringHandle string, const unsigned int *codePoints, I18NErrorCodes *error);
XYL_API void i18nStringAppendRepeatingCodePoint(I18NStringHandle string, unsigned int codePoint, int count,
                                                I18NErrorCodes *error);
XYL_API void i18nStringInsertString(I18NStringHandle string, I18NStringOffset offset, I18NStringHandle source,
                                    I18NErrorCodes *error);
XYL_API void i18nStringInsertCodePoint(I18NStringHandle string, I18NStringOffset offset, unsigned int codePoint,
                                       I18NErrorCodes *error);
XYL_API void i18nStringInsertCodePoints(I18NStringHandle string, I18NStringOffset offset,
                                        const unsigned int *codePoints, I18NErrorCodes *error);
XYL_API void i18nStringInsertRepeatingCodePoint(I18NStringHandle string, I18NStringOffset offset,
                                                unsigned int codePoint, int count, I18NErrorCodes *error);
XYL_API void i18nStringReplaceString(I18NStringHandle string, I18NStringOffset offset, int count,
                                     I18NStringHandle source, I18NErrorCodes *error);
XYL_API void i18nStringReplaceCodePoint(I18NStringHandle string, I18NStringOffset offset, int count,
                                        unsigned int codePoint, I18NErrorCodes *error);
XYL_API void i18nStringReplaceCodePoints(I18NStringHandle string, I18NStringOffset offset, int count,
                                         const unsigned int *codePoints, I18NErrorCodes *error);
XYL_API void i18nStringReplaceRepeatingCodePoint(I18NStringHandle string, I18NStringOffset offset, int count,
                                                 unsigned int codePoint, int repeat, I18NErrorCodes *error);
XYL_API void i18nStringErase(I18NStringHandle string, I18NStringOffset offset, int count, I18NErrorCodes *error);
/* form: 0 default (NFC), 1 NFC, 2 NFD, 3 NFKC, 4 NFKD; others report -7. */
XYL_API void i18nStringNormalize(I18NStringHandle string, int form, I18NErrorCodes *error);
/* `count` units from `offset` into the target string (its content
 * replaced). */
XYL_API void i18nStringSubstr(I18NStringHandle string, I18NStringOffset offset, int count, I18NStringHandle target,
                              I18NErrorCodes *error);
XYL_API void i18nStringSubstring(I18NStringHandle string, I18NStringOffset offset, int count, I18NStringHandle target,
                                 I18NErrorCodes *error);

/* ---- string: search ----------------------------------------------------------
 * The offset found, or -1 (also after a failure). Forward families start
 * at `start` (negative: 0); the backward families (Rfind, FindLastOf,
 * FindLastNotOf) search back from `start`, or from the end when start is
 * negative. The -Of families treat the needle as a set of code points. */
XYL_API I18NStringOffset i18nStringFindString(I18NStringHandle string, I18NStringHandle needle, I18NStringOffset start,
                                              I18NErrorCodes *error);
XYL_API I18NStringOffset i18nStringFindCodePoint(I18NStringHandle string, unsigned int codePoint,
                                                 I18NStringOffset start, I18NErrorCodes *error);
XYL_API I18NStringOffset i18nStringFindCodePoints(I18NStringHandle string, const unsigned int *codePoints,
                                                  I18NStringOffset start, I18NErrorCodes *error);
XYL_API I18NStringOffset i18nStringRfindString(I18NStringHandle string, I18NStringHandle needle, I18NStringOffset start,
                                               I18NErrorCodes *error);
XYL_API I18NStringOffset i18nStringRfindCodePoint(I18NStringHandle string, unsigned int codePoint,
                                                  I18NStringOffset start, I18NErrorCodes *error);
XYL_API I18NStringOffset i18nStringRfindCodePoints(I18NStringHandle string, const unsigned int *codePoints,
                                                   I18NStringOffset start, I18NErrorCodes *error);
XYL_API I18NStringOffset i18nStringFindFirstOfString(I18NStringHandle string, I18NStringHandle set,
                                                     I18NStringOffset start, I18NErrorCodes *error);
XYL_API I18NStringOffset i18nStringFindFirstOfCodePoint(I18NStringHandle string, unsigned int codePoint,
                                                        I18NStringOffset start, I18NErrorCodes *error);
XYL_API I18NStringOffset i18nStringFindFirstOfCodePoints(I18NStringHandle string, const unsigned int *codePoints,
                                                         I18NStringOffset start, I18NErrorCodes *error);
XYL_API I18NStringOffset i18nStringFindFirstNotOfString(I18NStringHandle string, I18NStringHandle set,
                                                        I18NStringOffset start, I18NErrorCodes *error);
XYL_API I18NStringOffset i18nStringFindFirstNotOfCodePoint(I18NStringHandle string, unsigned int codePoint,
                                                           I18NStringOffset start, I18NErrorCodes *error);
XYL_API I18NStringOffset i18nStringFindFirstNotOfCodePoints(I18NStringHandle string, const unsigned int *codePoints,
                                                            I18NStringOffset start, I18NErrorCodes *error);
XYL_API I18NStringOffset i18nStringFindLastOfString(I18NStringHandle string, I18NStringHandle set,
                                                    I18NStringOffset start, I18NErrorCodes *error);
XYL_API I18NStringOffset i18nStringFindLastOfCodePoint(I18NStringHandle string, unsigned int codePoint,
                                                       I18NStringOffset start, I18NErrorCodes *error);
XYL_API I18NStringOffset i18nStringFindLastOfCodePoints(I18NStringHandle string, const unsigned int *codePoints,
                                                        I18NStringOffset start, I18NErrorCodes *error);
XYL_API I18NStringOffset i18nStringFindLastNotOfString(I18NStringHandle string, I18NStringHandle set,
                                                       I18NStringOffset start, I18NErrorCodes *error);
XYL_API I18NStringOffset i18nStringFindLastNotOfCodePoint(I18NStringHandle string, unsigned int codePoint,
                                                          I18NStringOffset start, I18NErrorCodes *error);
XYL_API I18NStringOffset i18nStringFindLastNotOfCodePoints(I18NStringHandle string, const unsigned int *codePoints,
                                                           I18NStringOffset start, I18NErrorCodes *error);

/* ---- string: offsets and order --------------------------------------------------
 * Begin/End position an iterator at the first character / the end. When
 * *iterator is null a new iterator is stored there (free it with
 * i18nStringIteratorFree); otherwise the existing one is moved to the
 * string. */
XYL_API void i18nStringBegin(I18NStringHandle string, I18NStringIteratorHandle *iterator, I18NErrorCodes *error);
XYL_API void i18nStringEnd(I18NStringHandle string, I18NStringIteratorHandle *iterator, I18NErrorCodes *error);
/* One code point forward/back (a surrogate pair is one step); -1 when there
 * is none. Stepping from the last character gives the length. */
XYL_API I18NStringOffset i18nStringIncrementOffset(I18NStringHandle string, I18NStringOffset offset,
                                                   I18NErrorCodes *error);
XYL_API I18NStringOffset i18nStringDecrementOffset(I18NStringHandle string, I18NStringOffset offset,
                                                   I18NErrorCodes *error);
/* Below, equal to or above 0 by UTF-16 code units (0 after a failure). */
XYL_API int i18nStringCompare(I18NStringHandle string, I18NStringHandle other, I18NErrorCodes *error);

/* ---- string iterator ---------------------------------------------------------- */
/* The code point at the iterator (-7 at the end of an ASCII-mode string). */
XYL_API unsigned int i18nStringIteratorAt(I18NStringIteratorHandle iterator, I18NErrorCodes *error);
/* 1 when both walk the same string at the same offset. */
XYL_API int i18nStringIteratorEqual(I18NStringIteratorHandle iterator, I18NStringIteratorHandle other,
                                    I18NErrorCodes *error);
/* One code point forward/back; returns the new offset (-1 on failure). The
 * end and the start are sticky. */
XYL_API I18NStringOffset i18nStringIteratorNext(I18NStringIteratorHandle iterator, I18NErrorCodes *error);
XYL_API I18NStringOffset i18nStringIteratorPrevious(I18NStringIteratorHandle iterator, I18NErrorCodes *error);
XYL_API void i18nStringIteratorFree(I18NStringIteratorHandle *iterator, I18NErrorCodes *error);

/* ---- code units: NUL-terminated UTF-16 buffers ------------------------------------
 * Copy/Concat (re)allocate *target through the allocator (null: the C
 * heap) and return its size in bytes with the terminator, or -1 with the
 * callback's code (-1, -10); *target is unchanged after a failure. */
XYL_API int i18nCodeUnitsConcat(unsigned short **target, const unsigned short *source,
                                I18N_STRINGBUFFER_ALLOCATOR_CALLBACK allocator, void *context, I18NErrorCodes *error);
XYL_API int i18nCodeUnitsCopy(unsigned short **target, const unsigned short *source,
                              I18N_STRINGBUFFER_ALLOCATOR_CALLBACK allocator, void *context, I18NErrorCodes *error);
/* Code points (a surrogate pair counts once); 0 for null. */
XYL_API int i18nCodeUnitsLength(const unsigned short *units, I18NErrorCodes *error);
/* Bytes including the terminator; 0 for null. */
XYL_API int i18nCodeUnitsSize(const unsigned short *units, I18NErrorCodes *error);

/* ---- code points: character classes (1 or 0) ----------------------------------- */
XYL_API int i18nCodePointIsDigit(unsigned int codePoint, I18NErrorCodes *error);
XYL_API int i18nCodePointIsLetter(unsigned int codePoint, I18NErrorCodes *error);
XYL_API int i18nCodePointIsSpace(unsigned int codePoint, I18NErrorCodes *error);
XYL_API int i18nCodePointIsWhitespace(unsigned int codePoint, I18NErrorCodes *error);
XYL_API int i18nCodePointIsPunctuation(unsigned int codePoint, I18NErrorCodes *error);
XYL_API int i18nCodePointIsAlphanumeric(unsigned int codePoint, I18NErrorCodes *error);

/* ---- converter -------------------------------------------------------------------
 * Byte lengths of -1 mean terminated by the encoding's NUL; UTF-16 sides
 * are counted in bytes. A conversion the modes reject reports -7. */
XYL_API void i18nConverterCreate(I18NConverterHandle *converter, const char *encoding, I18NErrorCodes *error);
XYL_API void i18nConverterFree(I18NConverterHandle *converter, I18NErrorCodes *error);
/* The encoding name as asked for (owned by the converter); null on failure. */
XYL_API const char *i18nConverterGetEncoding(I18NConverterHandle converter, I18NErrorCodes *error);
/* Bytes to a new NUL-terminated UTF-16 buffer in *target; returns its bytes
 * without terminator, or -1. */
XYL_API int i18nConverterToUnicode(I18NConverterHandle converter, const char *source, int sourceLength,
                                   unsigned short **target, I18NErrorCodes *error);
XYL_API int i18nConverterToUnicodeWithAllocator(I18NConverterHandle converter, const char *source, int sourceLength,
                                                unsigned short **target, I18N_STRINGBUFFER_ALLOCATOR_CALLBACK allocator,
                                                void *context, I18NErrorCodes *error);
/* Bytes into the target string (content replaced); returns its length in
 * code points, or -1. */
XYL_API int i18nConverterToUnicodeString(I18NConverterHandle converter, const char *source, int sourceLength,
                                         I18NStringHandle target, I18NErrorCodes *error);
/* UTF-16 to a new buffer terminated by the encoding's NUL in *target;
 * returns its bytes without terminator, or -1. */
XYL_API int i18nConverterFromUnicode(I18NConverterHandle converter, const unsigned short *source, int sourceBytes,
                                     char **target, I18NErrorCodes *error);
XYL_API int i18nConverterFromUnicodeWithAllocator(I18NConverterHandle converter, const unsigned short *source,
                                                  int sourceBytes, char **target,
                                                  I18N_STRINGBUFFER_ALLOCATOR_CALLBACK allocator, void *context,
                                                  I18NErrorCodes *error);
/* The string's text to a new C-heap buffer in *target. */
XYL_API int i18nConverterFromUnicodeString(I18NConverterHandle converter, I18NStringHandle source, char **target,
                                           I18NErrorCodes *error);
/* Size arithmetic (0 after a failure): room in bytes for n characters and
 * the terminator, characters that fit in a number of bytes, NUL widths. */
XYL_API int i18nConverterNumLegacyBytes(I18NConverterHandle converter, int codePoints, I18NErrorCodes *error);
XYL_API int i18nConverterNumLegacyCodePoints(I18NConverterHandle converter, int bytes, I18NErrorCodes *error);
XYL_API int i18nConverterNumUnicodeBytes(I18NConverterHandle converter, int codePoints, I18NErrorCodes *error);
XYL_API int i18nConverterNumUnicodeCodePoints(I18NConverterHandle converter, int bytes, I18NErrorCodes *error);
XYL_API int i18nConverterSizeofLegacyNull(I18NConverterHandle converter, I18NErrorCodes *error);
XYL_API int i18nConverterSizeofUnicodeNull(I18NConverterHandle converter, I18NErrorCodes *error);
/* Unconvertible-sequence modes (0 escape, 1 replacement from the
 * resources, 2 substitute, 3 user-defined, 4 stop); setting a mode outside
 * 0..4 changes nothing. The getters return -1 after a failure. */
XYL_API int i18nConverterGetBuiltInUnconvertibleInputSequenceCallback(I18NConverterHandle converter,
                                                                      I18NErrorCodes *error);
XYL_API int i18nConverterGetBuiltInUnconvertibleOutputSequenceCallback(I18NConverterHandle converter,
                                                                       I18NErrorCodes *error);
XYL_API void i18nConverterSetBuiltInUnconvertibleInputSequenceCallback(I18NConverterHandle converter, int mode,
                                                                       I18NErrorCodes *error);
XYL_API void i18nConverterSetBuiltInUnconvertibleOutputSequenceCallback(I18NConverterHandle converter, int mode,
                                                                        I18NErrorCodes *error);
/* The user callbacks, used while the direction's mode is 3. */
XYL_API I18N_UNCONVERTIBLE_INPUT_SEQUENCE_CALLBACK
i18nConverterGetUserDefinedUnconvertibleInputSequenceCallback(I18NConverterHandle converter, I18NErrorCodes *error);
/* (The "In" in this name is part of the published interface.) */
XYL_API I18N_UNCONVERTIBLE_OUTPUT_SEQUENCE_CALLBACK
i18nConverterGetUserDefinedInUnconvertibleOutputSequenceCallback(I18NConverterHandle converter, I18NErrorCodes *error);
XYL_API void i18nConverterSetUserDefinedUnconvertibleInputSequenceCallback(
    I18NConverterHandle converter, I18N_UNCONVERTIBLE_INPUT_SEQUENCE_CALLBACK callback, I18NErrorCodes *error);
XYL_API void i18nConverterSetUserDefinedUnconvertibleOutputSequenceCallback(
    I18NConverterHandle converter, I18N_UNCONVERTIBLE_OUTPUT_SEQUENCE_CALLBACK callback, I18NErrorCodes *error);

/* ---- locale ------------------------------------------------------------------------
 * A null or empty name means "en-us". The name getters copy NUL-terminated
 * ASCII into the caller's buffer of bufferSize bytes and return its length
 * without terminator; a buffer too small for text and terminator reports -9
 * (-1 returned; the buffer holds as much as fits, terminated). */
XYL_API void i18nLocaleCreate(I18NLocaleHandle *locale, const char *name, I18NErrorCodes *error);
XYL_API void i18nLocaleFree(I18NLocaleHandle *locale, I18NErrorCodes *error);
XYL_API int i18nLocaleGetName(I18NLocaleHandle locale, char *buffer, int bufferSize, I18NErrorCodes *error);
XYL_API int i18nLocaleGetLanguage(I18NLocaleHandle locale, char *buffer, int bufferSize, I18NErrorCodes *error);
XYL_API int i18nLocaleGetCountry(I18NLocaleHandle locale, char *buffer, int bufferSize, I18NErrorCodes *error);
XYL_API int i18nLocaleGetVariant(I18NLocaleHandle locale, char *buffer, int bufferSize, I18NErrorCodes *error);
/* Locale-sensitive order of two strings (0 after a failure). */
XYL_API int i18nLocaleCompare(I18NLocaleHandle locale, I18NStringHandle string, I18NStringHandle other,
                              I18NErrorCodes *error);
XYL_API int i18nLocaleCompareIgnoreCase(I18NLocaleHandle locale, I18NStringHandle string, I18NStringHandle other,
                                        I18NErrorCodes *error);
/* Case mapping in place under the locale's rules. */
XYL_API void i18nLocaleToLower(I18NLocaleHandle locale, I18NStringHandle string, I18NErrorCodes *error);
XYL_API void i18nLocaleToUpper(I18NLocaleHandle locale, I18NStringHandle string, I18NErrorCodes *error);

/* ---- numeric format ----------------------------------------------------------------
 * A null locale means the default locale. Format functions append to the
 * target; getters replace its content. Validate returns 1 or 0. */
XYL_API void i18nNumericFormatCreate(I18NNumericFormatHandle *format, I18NLocaleHandle locale, I18NErrorCodes *error);
XYL_API void i18nNumericFormatFree(I18NNumericFormatHandle *format, I18NErrorCodes *error);
XYL_API void i18nNumericFormatFormat(I18NNumericFormatHandle format, double value, I18NStringHandle target,
                                     I18NErrorCodes *error);
/* A decimal number as text, exactly ("-1234.5678", "1e10"); -7 otherwise. */
XYL_API void i18nNumericFormatFormatDigitBuffer(I18NNumericFormatHandle format, const char *digits,
                                                I18NStringHandle target, I18NErrorCodes *error);
XYL_API void i18nNumericFormatGetPattern(I18NNumericFormatHandle format, I18NStringHandle target,
                                         I18NErrorCodes *error);
/* A rejected pattern reports -7 and leaves the format unchanged. */
XYL_API void i18nNumericFormatSetPattern(I18NNumericFormatHandle format, I18NStringHandle pattern,
                                         I18NErrorCodes *error);
XYL_API int i18nNumericFormatValidate(I18NStringHandle pattern, I18NErrorCodes *error);
XYL_API void i18nNumericFormatGetCurrencySymbol(I18NNumericFormatHandle format, I18NStringHandle target,
                                                I18NErrorCodes *error);
XYL_API void i18nNumericFormatSetCurrencySymbol(I18NNumericFormatHandle format, I18NStringHandle symbol,
                                                I18NErrorCodes *error);
/* Non-zero: the locale's currency pattern; 0: its plain number pattern. */
XYL_API void i18nNumericFormatUseCurrencySymbol(I18NNumericFormatHandle format, int use, I18NErrorCodes *error);
XYL_API void i18nNumericFormatGetDecimalSeparator(I18NNumericFormatHandle format, I18NStringHandle target,
                                                  I18NErrorCodes *error);
XYL_API void i18nNumericFormatGetMonetaryDecimalSeparator(I18NNumericFormatHandle format, I18NStringHandle target,
                                                          I18NErrorCodes *error);
XYL_API void i18nNumericFormatGetGroupingSeparator(I18NNumericFormatHandle format, I18NStringHandle target,
                                                   I18NErrorCodes *error);
XYL_API void i18nNumericFormatGetMinusSign(I18NNumericFormatHandle format, I18NStringHandle target,
                                           I18NErrorCodes *error);
XYL_API void i18nNumericFormatGetPlusSign(I18NNumericFormatHandle format, I18NStringHandle target,
                                          I18NErrorCodes *error);
XYL_API void i18nNumericFormatGetZeroDigit(I18NNumericFormatHandle format, I18NStringHandle target,
                                           I18NErrorCodes *error);

/* ---- date-time format --------------------------------------------------------------
 * As the numeric format. Dates are milliseconds since 1970-01-01 00:00:00
 * UTC; days run 1 (Sunday) to 7, months 1 to 12. */
XYL_API void i18nDateTimeFormatCreate(I18NDateTimeFormatHandle *format, I18NLocaleHandle locale, I18NErrorCodes *error);
XYL_API void i18nDateTimeFormatFree(I18NDateTimeFormatHandle *format, I18NErrorCodes *error);
XYL_API void i18nDateTimeFormatFormat(I18NDateTimeFormatHandle format, double epochMilliseconds,
                                      I18NStringHandle target, I18NErrorCodes *error);
/* A wall-clock time in the format's zone; fields out of range report -7. */
XYL_API void i18nDateTimeFormatCalendarFormat(I18NDateTimeFormatHandle format, int year, int month, int day, int hour,
                                              int minute, int second, int millisecond, I18NStringHandle target,
                                              I18NErrorCodes *error);
XYL_API void i18nDateTimeFormatGetPattern(I18NDateTimeFormatHandle format, I18NStringHandle target,
                                          I18NErrorCodes *error);
XYL_API void i18nDateTimeFormatSetPattern(I18NDateTimeFormatHandle format, I18NStringHandle pattern,
                                          I18NErrorCodes *error);
XYL_API int i18nDateTimeFormatValidate(I18NStringHandle pattern, I18NErrorCodes *error);
XYL_API void i18nDateTimeFormatGetAmString(I18NDateTimeFormatHandle format, I18NStringHandle target,
                                           I18NErrorCodes *error);
XYL_API void i18nDateTimeFormatGetPmString(I18NDateTimeFormatHandle format, I18NStringHandle target,
                                           I18NErrorCodes *error);
XYL_API void i18nDateTimeFormatGetDayName(I18NDateTimeFormatHandle format, int day, I18NStringHandle target,
                                          I18NErrorCodes *error);
XYL_API void i18nDateTimeFormatGetDayShortName(I18NDateTimeFormatHandle format, int day, I18NStringHandle target,
                                               I18NErrorCodes *error);
XYL_API void i18nDateTimeFormatGetMonthName(I18NDateTimeFormatHandle format, int month, I18NStringHandle target,
                                            I18NErrorCodes *error);
XYL_API void i18nDateTimeFormatGetMonthShortName(I18NDateTimeFormatHandle format, int month, I18NStringHandle target,
                                                 I18NErrorCodes *error);

/* ---- collator ---------------------------------------------------------------------
 * A null locale means ICU's default locale. Collate functions return -1, 0
 * or 1 (0 after a failure). Levels: 0 primary, 1 secondary, 2 tertiary,
 * 3 identical; GetLevel returns -1 after a failure. */
XYL_API void i18nCollatorCreate(I18NCollatorHandle *collator, I18NLocaleHandle locale, I18NErrorCodes *error);
XYL_API void i18nCollatorFree(I18NCollatorHandle *collator, I18NErrorCodes *error);
XYL_API int i18nCollatorCollateStrings(I18NCollatorHandle collator, I18NStringHandle string, I18NStringHandle other,
                                       I18NErrorCodes *error);
/* Two NUL-terminated UTF-16 buffers. */
XYL_API int i18nCollatorCollateBuffers(I18NCollatorHandle collator, const unsigned short *units,
                                       const unsigned short *other, I18NErrorCodes *error);
XYL_API int i18nCollatorGetLevel(I18NCollatorHandle collator, I18NErrorCodes *error);
XYL_API void i18nCollatorSetLevel(I18NCollatorHandle collator, int level, I18NErrorCodes *error);

/* ---- bidi -------------------------------------------------------------------------
 * The text in logical and in visual (display) order; the getters replace
 * the target's content. */
XYL_API void i18nBidiCreate(I18NBidiHandle *bidi, I18NErrorCodes *error);
XYL_API void i18nBidiCreateFromString(I18NBidiHandle *bidi, I18NStringHandle text, I18NErrorCodes *error);
XYL_API void i18nBidiSetText(I18NBidiHandle bidi, I18NStringHandle text, I18NErrorCodes *error);
XYL_API void i18nBidiGetLogicalString(I18NBidiHandle bidi, I18NStringHandle target, I18NErrorCodes *error);
XYL_API void i18nBidiGetVisualString(I18NBidiHandle bidi, I18NStringHandle target, I18NErrorCodes *error);
XYL_API void i18nBidiFree(I18NBidiHandle *bidi, I18NErrorCodes *error);

XYL_EXTERN_C_END

#endif /* XYLCORE_I18N_C_I18N_C_H */
