/* SPDX-License-Identifier: Apache-2.0 */
// Text helpers shared by the message classes (internal).
#ifndef XYLCORE_SRC_MESSAGES_XYLMESSAGETEXT_H
#define XYLCORE_SRC_MESSAGES_XYLMESSAGETEXT_H

#include <XYLCore/i18n/cpp/i18n_string.h>

#include <string>

namespace xyl_messages {

// Appends bytes in the platform default encoding (null: nothing). Bytes
// that encoding cannot decode are taken as UTF-8 instead, so that a text
// from the system is never lost.
void appendPlatformText(I18NString &out, const char *text);

// Appends UTF-8 bytes; malformed sequences become U+FFFD.
void appendUTF8(I18NString &out, const char *text, std::size_t length);
inline void appendUTF8(I18NString &out, const std::string &text) { appendUTF8(out, text.data(), text.size()); }

} // namespace xyl_messages

#endif // XYLCORE_SRC_MESSAGES_XYLMESSAGETEXT_H
