/* SPDX-License-Identifier: Apache-2.0 */
// XYLFmText_internal.h - paths and texts between I18NString and the bytes
// of the platform default encoding, for the I18NString forms of the file
// and directory classes.
#ifndef XYLCORE_SRC_FILEMANAGEMENT_XYLFMTEXT_INTERNAL_H
#define XYLCORE_SRC_FILEMANAGEMENT_XYLFMTEXT_INTERNAL_H

#include <cstddef>
#include <string>

class I18NString;

namespace xyl_fm {

// The bytes of `path` in the platform default encoding. False, with the
// thread's last error set, when a character has no form there (EILSEQ; no
// replacement is made, it would name another file) or the path holds a NUL
// character (EINVAL). Passes on XYLOutOfMemoryError.
bool toNativePath(const I18NString &path, std::string &bytes);

// `length` bytes in the platform default encoding as text; false (EILSEQ,
// text unchanged) when they are not valid in that encoding.
bool fromNativeText(const char *bytes, std::size_t length, I18NString &text);
inline bool fromNativeText(const std::string &bytes, I18NString &text) {
  return fromNativeText(bytes.data(), bytes.size(), text);
}

// The text the file classes give for an error number: the library's own
// for end of file, else the system's; empty when there is none.
I18NString errorMessage(unsigned long number);

} // namespace xyl_fm

#endif // XYLCORE_SRC_FILEMANAGEMENT_XYLFMTEXT_INTERNAL_H
