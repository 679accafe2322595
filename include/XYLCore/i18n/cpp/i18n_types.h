/* SPDX-License-Identifier: Apache-2.0
 * i18n_types.h - the small vocabulary shared by the internationalisation
 * classes and their C wrappers: error codes, the buffer allocator callback
 * and the offset type.
 *
 * This header is valid C and C++ and includes nothing but the export macros,
 * so the C interface can use the same definitions.
 *
 * Error codes are signed 32-bit values; 0 is success. The library produces
 * -1 (an allocator callback could not provide memory), -2 (normalisation
 * failed), -3 (the encoding name is not valid), -7 (general failure: a
 * resource was not found, an ICU call or a conversion failed, a static
 * external buffer cannot be resized, any unexpected exception), -9 (a
 * caller's buffer is too small) and -10 (a negative size was passed to an
 * allocator callback).
 */
#ifndef XYLCORE_I18N_CPP_I18N_TYPES_H
#define XYLCORE_I18N_CPP_I18N_TYPES_H

#include <XYLCore/XYLExport.h>

typedef enum I18NErrorCodes {
  I18N_SUCCESS = 0,
  I18N_ALLOCATION_FAILURE = -1,
  I18N_NORMALIZATION_FAILURE = -2,
  I18N_INVALID_ENCODING = -3,
  I18N_GENERAL_FAILURE = -7,
  I18N_BUFFER_TOO_SMALL = -9,
  I18N_NEGATIVE_ALLOCATION_SIZE = -10
} I18NErrorCodes;

/* A caller-supplied allocator. Contract (the library's default allocator
 * behaves exactly so, and a caller's must too):
 *   1. if `error` is not null, store 0 into it;
 *   2. newSize < 0: store -10, return null;
 *   3. newSize == 0: free `buffer` (when not null), return null;
 *   4. otherwise reallocate `buffer` (null allocates) to newSize bytes and
 *      return the block; on failure store -1 and return null.
 * `context` is handed back unchanged from whoever registered the callback. */
typedef char *(*I18N_STRINGBUFFER_ALLOCATOR_CALLBACK)(void *context, char *buffer, int newSize, int *error);

/* A signed 32-bit offset in UTF-16 code units; -1 means "not found". */
typedef int I18NStringOffset;

/* User callback for byte sequences that cannot be converted to Unicode
 * (unconvertible input mode 3). Called with the converter's encoding name and
 * the offending bytes. On entry *count holds the capacity of `codePoints`
 * (I18N_CONVERTER_CALLBACK_CAPACITY) and *error is 0; the callback stores up
 * to that many UTF-32 code points and their number in *count. When it leaves
 * *error at 0 and *count above 0 the code points replace the bytes;
 * otherwise the conversion fails as if no callback existed. */
typedef void (*I18N_UNCONVERTIBLE_INPUT_SEQUENCE_CALLBACK)(const char *encoding, const char *bytes, int length,
                                                           unsigned int *codePoints, int *count, I18NErrorCodes *error);

/* User callback for code points that the target encoding cannot represent
 * (unconvertible output mode 3). On entry *length holds the capacity of
 * `bytes` (I18N_CONVERTER_CALLBACK_CAPACITY) and *error is 0; the callback
 * stores up to that many bytes and their number in *length. When it leaves
 * *error at 0 and *length above 0 the bytes are written in place of the code
 * point; otherwise the conversion fails. */
typedef void (*I18N_UNCONVERTIBLE_OUTPUT_SEQUENCE_CALLBACK)(unsigned int codePoint, const char *encoding, char *bytes,
                                                            int *length, I18NErrorCodes *error);

/* Room the library gives a user callback for its replacement. */
#define I18N_CONVERTER_CALLBACK_CAPACITY 32

#endif /* XYLCORE_I18N_CPP_I18N_TYPES_H */
