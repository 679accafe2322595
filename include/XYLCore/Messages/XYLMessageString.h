/* SPDX-License-Identifier: Apache-2.0
 * XYLMessageString.h - messages that carry no catalog number: a ready text,
 * a runtime-library error number, an operating-system error code.
 *
 * XYLMessageString's text is its localised text, whatever the locale. Its
 * XML is
 *   <Message Name="XYLMessageString" File="" Severity="Error" Nesting="0" >
 *   <MessageText>text</MessageText></Message>
 * (one line, unescaped; the text element is always present).
 *
 * XYLErrnoMessage (an errno value) and XYLWin32Message (an operating-system
 * error code; on this platform an errno-style code as well) render nothing
 * at all, neither text nor XML: they exist so that code can put the raw
 * code into a message set for whoever inspects it.
 *
 * Ownership, thread safety and failures as for XYLMessageBase.
 */
#ifndef XYLCORE_MESSAGES_XYLMESSAGESTRING_H
#define XYLCORE_MESSAGES_XYLMESSAGESTRING_H

#include <XYLCore/Messages/XYLMessageBase.h>

class XYL_API XYLMessageString : public XYLMessageBase {
public:
  XYLMessageString();
  explicit XYLMessageString(const I18NString &text);
  XYLMessageString(XYLSeverity severity, const I18NString &text);
  // From bytes in the platform default encoding (null: empty).
  explicit XYLMessageString(const char *text);
  XYLMessageString(XYLSeverity severity, const char *text);
  ~XYLMessageString() override;

  XYLMessageBase *clone() const override;
  const char *getClassName() const override { return "XYLMessageString"; }
  void format(const char *location, const char *locale, I18NString &out) const override;
  void toString(const char *location, const char *locale, I18NString &out, int withText) const override;

  const I18NString &getText() const { return m_text; }
  void setText(const I18NString &text) { m_text = text; }

private:
  I18NString m_text;
};

class XYL_API XYLErrnoMessage : public XYLMessageBase {
public:
  explicit XYLErrnoMessage(int errorNumber) : m_errno(errorNumber) {}
  XYLErrnoMessage(XYLSeverity severity, int errorNumber) : XYLMessageBase(severity), m_errno(errorNumber) {}
  ~XYLErrnoMessage() override;

  XYLMessageBase *clone() const override;
  const char *getClassName() const override { return "XYLErrnoMessage"; }
  // Both append nothing.
  void format(const char *location, const char *locale, I18NString &out) const override;
  void toString(const char *location, const char *locale, I18NString &out, int withText) const override;

  int getErrno() const { return m_errno; }

private:
  int m_errno;
};

class XYL_API XYLWin32Message : public XYLMessageBase {
public:
  explicit XYLWin32Message(long code) : m_code(code) {}
  XYLWin32Message(XYLSeverity severity, long code) : XYLMessageBase(severity), m_code(code) {}
  ~XYLWin32Message() override;

  XYLMessageBase *clone() const override;
  const char *getClassName() const override { return "XYLWin32Message"; }
  // Both append nothing.
  void format(const char *location, const char *locale, I18NString &out) const override;
  void toString(const char *location, const char *locale, I18NString &out, int withText) const override;

  long getCode() const { return m_code; }

private:
  long m_code;
};

#endif // XYLCORE_MESSAGES_XYLMESSAGESTRING_H
