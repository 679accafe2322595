/* SPDX-License-Identifier: Apache-2.0
 * xylsquish.h - the squisher: a NUL-terminated text as a compact, checksummed,
 * printable token, and back (C).
 *
 * Token: 8 + N bytes encoded as one unit with XYLBase64URLEncode:
 *   offset 0, 4 bytes: length of the text in bytes (no terminator), big-endian
 *   offset 4, 4 bytes: CRC-32 of bytes 8 .. 8+N-1, big-endian, computed as
 *                      zlib's crc32 started with 0xFFFFFFFF (not 0)
 *   offset 8, N bytes: a zlib stream (RFC 1950) of the text, level 9
 * Any zlib and any Base64 decoder with the URL alphabet ("_" for 62, "~" for
 * 63, "=" padding) can read a token, and any zlib stream framed this way is
 * accepted.
 *
 * Unsquishing takes two steps so that the caller can size the output:
 *
 *   XYLsquState state;
 *   unsigned int size;
 *   if (XYLsqu_unsquish1(token, &state, &size) == 0) {
 *     char *text = malloc(size);
 *     if (text != NULL && XYLsqu_unsquish2(&state, text) == 0) { use(text); }
 *     free(text);
 *   }
 *   free(state.m_pData);   (always safe: null once the block is released)
 *
 * Ownership of the decoded block: XYLsqu_unsquish1 allocates it on the C heap
 * (malloc) and stores it in the state, also when it fails; it is released by a
 * successful XYLsqu_unsquish2, which then sets m_pData to null. After any
 * failure the caller releases it with free(state.m_pData). A state that was
 * never passed to XYLsqu_unsquish1 holds nothing to free.
 *
 * Result codes of XYLsqu_unsquish1:
 *   0  success; *size (when size is not null) = original length + 1
 *   1  the token is not valid Base64 (or no memory for the decoded block, in
 *      which case m_pData is null)
 *   2  the original length in the header is above 10000000
 *   3  checksum mismatch, or a decoded token shorter than the 8-byte header
 *      (checked before the length)
 * XYLsqu_unsquish2 returns zlib's uncompress result: 0 (Z_OK) success,
 * -3 (Z_DATA_ERROR) a corrupt stream, -5 (Z_BUF_ERROR) a stream longer than
 * the header says, -4 (Z_MEM_ERROR); -2 (Z_STREAM_ERROR) when the state holds
 * no decoded token.
 *
 * Limits: texts up to 10000000 bytes round-trip; XYLsqu_squished_size
 * saturates at 0xFFFFFFFF for texts whose token would not fit 32-bit sizes.
 * Thread safety: reentrant; a state belongs to one caller at a time.
 * Failure: result codes only; nothing is thrown.
 */
#ifndef XYLCORE_UTILITY_XYLSQUISH_H
#define XYLCORE_UTILITY_XYLSQUISH_H

#include <XYLCore/XYLExport.h>

XYL_EXTERN_C_BEGIN

/* Filled by XYLsqu_unsquish1, consumed by XYLsqu_unsquish2. */
typedef struct XYLsquState {
  unsigned char *m_pData;        /* decoded token (C heap), or null */
  unsigned int m_originalLength; /* text length from the header */
  unsigned int m_decodedLength;  /* bytes in m_pData */
} XYLsquState;

/* Bytes to give XYLsqu_squish for a text of length textLength, terminator
 * included: never less than XYLBase64URLEncodedSize(L + L / 1000 + 16), and
 * always enough for the header plus zlib's worst case, so that incompressible
 * text cannot overrun the output. */
XYL_API unsigned int XYLsqu_squished_size(unsigned int textLength);

/* Writes the token of the NUL-terminated text (null counts as empty) and a
 * terminator into out, sized with XYLsqu_squished_size(strlen(text)). If
 * memory runs out the output is the empty string (which never unsquishes). */
XYL_API void XYLsqu_squish(const char *text, char *out);

/* First step: decodes and checks token (null counts as invalid) into state.
 * See the codes above; size may be null. */
XYL_API int XYLsqu_unsquish1(const char *token, XYLsquState *state, unsigned int *size);

/* Second step: inflates the checked token into out (the size reported by
 * XYLsqu_unsquish1, at least) and terminates the text. On success releases the
 * decoded block; on failure leaves it for the caller. */
XYL_API int XYLsqu_unsquish2(XYLsquState *state, char *out);

XYL_EXTERN_C_END

#endif /* XYLCORE_UTILITY_XYLSQUISH_H */
