/* SPDX-License-Identifier: Apache-2.0
 * xylbase64.h - Base64 in the standard and in the URL-safe alphabet (C).
 *
 * Two families share one algorithm and differ only in the characters for the
 * values 62 and 63:
 *
 *   XYLBase64Encode / XYLBase64Decode        "...0123456789+/"  padding "="
 *   XYLBase64URLEncode / XYLBase64URLDecode  "...0123456789_~"  padding "="
 *
 * Encoding emits four characters per three input bytes, pads the last group
 * with "=" and never inserts line breaks.
 *
 * Decoding is deliberately lax, so that text produced by older encoders keeps
 * decoding: white space (space, \t, \n, \v, \f, \r) is skipped anywhere; every
 * other byte is mapped by a fixed table in which only "@" (0x40) and the bytes
 * from 0x7B up (other than "~" in the URL family) are rejected. Punctuation
 * below "0" and the characters between "Z" and "a" decode to some value, and
 * "=" decodes as 0 wherever it stands; only the third and fourth character of
 * a group are tested for "=" (each one present suppresses its output byte).
 *
 * Result codes of the decoders:
 *   0  success: the bytes, a terminating zero byte and *outLength are stored
 *   1  the non-blank characters are not a multiple of 4 (partial last group)
 *   2  a character outside the alphabet; decoding stops at the group that
 *      holds it, groups before it stay written
 * On 1 and 2 *outLength is not touched.
 *
 * Output sizing: an encoder writes exactly XYLBase64EncodedSize(n) bytes
 * (terminator included). A decoder writes at most the decoded bytes plus one
 * zero byte; sizing the output as strlen(in) + 1 bytes is always enough.
 *
 * Ownership: the caller owns every buffer; nothing is allocated.
 * Thread safety: all functions are reentrant and may run on any thread.
 * Failure: result codes only; nothing is thrown. Arguments must not be null.
 */
#ifndef XYLCORE_UTILITY_XYLBASE64_H
#define XYLCORE_UTILITY_XYLBASE64_H

#include <XYLCore/XYLExport.h>

XYL_EXTERN_C_BEGIN

/* Size of the encoding of n bytes including the terminating NUL:
 * ((n * 8) / 6 + 3) rounded down to a multiple of 4, plus 1, computed in 32-bit
 * unsigned arithmetic (so n * 8 wraps for n of 2^29 and more). */
XYL_API unsigned int XYLBase64EncodedSize(unsigned int n);
XYL_API unsigned int XYLBase64URLEncodedSize(unsigned int n);

/* Encodes n bytes of in into out, which holds XYLBase64EncodedSize(n) bytes,
 * and terminates it with NUL. An empty input gives the empty string. */
XYL_API void XYLBase64Encode(const unsigned char *in, unsigned int n, char *out);
XYL_API void XYLBase64URLEncode(const unsigned char *in, unsigned int n, char *out);

/* Decodes the NUL-terminated text in into out (at least strlen(in) + 1
 * bytes); returns 0, 1 or 2 as described above. */
XYL_API int XYLBase64Decode(const char *in, unsigned char *out, unsigned int *outLength);
XYL_API int XYLBase64URLDecode(const char *in, unsigned char *out, unsigned int *outLength);

XYL_EXTERN_C_END

#endif /* XYLCORE_UTILITY_XYLBASE64_H */
