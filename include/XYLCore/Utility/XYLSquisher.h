/* SPDX-License-Identifier: Apache-2.0
 * XYLSquisher.h - the squisher for C++ callers.
 *
 * Static wrappers over xylsquish.h that allocate their results with operator
 * new[]; the caller releases a result with delete[]. The token format and its
 * limits are those of xylsquish.h.
 *
 * Thread safety: reentrant. Failure: a null result; nothing is thrown (memory
 * exhaustion also gives null, never std::bad_alloc).
 */
#ifndef XYLCORE_UTILITY_XYLSQUISHER_H
#define XYLCORE_UTILITY_XYLSQUISHER_H

#include <XYLCore/XYLExport.h>

class XYL_API XYLSquisher {
public:
  // The token of the NUL-terminated text (null counts as empty), zero-filled
  // past its terminator up to XYLsqu_squished_size(strlen(text)) bytes; null
  // if memory ran out.
  static char *squish(const char *text);
  // The text of token, NUL-terminated; null for a token that does not decode,
  // fails its checksum or length check or does not inflate, and when memory
  // ran out.
  static char *unSquish(const char *token);

private:
  XYLSquisher() = delete;
};

#endif // XYLCORE_UTILITY_XYLSQUISHER_H
