// SPDX-License-Identifier: Apache-2.0
// XYLMessageBase and the messages without a catalog number.
#include <XYLCore/ExceptionHierarchy/XYLErrors.h>
#include <XYLCore/Messages/XYLMessageBase.h>
#include <XYLCore/Messages/XYLMessageString.h>
#include <XYLCore/i18n/cpp/i18n_converter.h>

#include "XYLMessageText.h"

#include <cstdio>
#include <cstring>
#include <unicode/unistr.h>

void xyl_messages::appendPlatformText(I18NString &out, const char *text) {
  if (text == nullptr || *text == '\0')
    return;
  try {
    out.append(I18NString(text, I18NGetPlatformDefaultEncoding()));
  } catch (I18NRuntimeError &) {
    appendUTF8(out, text, std::strlen(text));
  }
}

void xyl_messages::appendUTF8(I18NString &out, const char *text, std::size_t length) {
  if (length == 0)
    return;
  icu::UnicodeString decoded = icu::UnicodeString::fromUTF8(icu::StringPiece(text, static_cast<int32_t>(length)));
  out.append(I18NString(decoded));
}

// --- XYLMessageBase ---------------------------------------------------------

XYLMessageBase::~XYLMessageBase() = default;

void XYLMessageBase::openElement(I18NString &out, const I18NString *file) const {
  out.append("<Message Name=\"");
  out.append(getClassName());
  out.append("\" File=\"");
  if (file != nullptr)
    out.append(*file);
  out.append("\" Severity=\"");
  out.append(getSeverityName(getSeverity()));
  char nesting[32];
  std::snprintf(nesting, sizeof nesting, "\" Nesting=\"%d\" >", static_cast<int>(m_nesting));
  out.append(nesting);
}

// --- XYLMessageString -------------------------------------------------------

XYLMessageString::XYLMessageString() = default;

XYLMessageString::XYLMessageString(const I18NString &text) : m_text(text) {}

XYLMessageString::XYLMessageString(XYLSeverity severity, const I18NString &text)
    : XYLMessageBase(severity), m_text(text) {}

XYLMessageString::XYLMessageString(const char *text) { xyl_messages::appendPlatformText(m_text, text); }

XYLMessageString::XYLMessageString(XYLSeverity severity, const char *text) : XYLMessageBase(severity) {
  xyl_messages::appendPlatformText(m_text, text);
}

XYLMessageString::~XYLMessageString() = default;

XYLMessageBase *XYLMessageString::clone() const { return new XYLMessageString(*this); }

void XYLMessageString::format(const char *, const char *, I18NString &out) const { out.append(m_text); }

// The text element is always there, whatever the switch.
void XYLMessageString::toString(const char *location, const char *locale, I18NString &out, int) const {
  openElement(out, nullptr);
  out.append("<MessageText>");
  format(location, locale, out);
  out.append("</MessageText></Message>");
}

// --- XYLErrnoMessage, XYLWin32Message: carried, never rendered -------------

XYLErrnoMessage::~XYLErrnoMessage() = default;
XYLMessageBase *XYLErrnoMessage::clone() const { return new XYLErrnoMessage(*this); }
void XYLErrnoMessage::format(const char *, const char *, I18NString &) const {}
void XYLErrnoMessage::toString(const char *, const char *, I18NString &, int) const {}

XYLWin32Message::~XYLWin32Message() = default;
XYLMessageBase *XYLWin32Message::clone() const { return new XYLWin32Message(*this); }
void XYLWin32Message::format(const char *, const char *, I18NString &) const {}
void XYLWin32Message::toString(const char *, const char *, I18NString &, int) const {}
