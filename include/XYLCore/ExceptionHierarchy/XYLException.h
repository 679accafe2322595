/* SPDX-License-Identifier: Apache-2.0
 * XYLException.h - recoverable conditions, carrying a set of catalog
 * messages.
 *
 * The second branch of the tree beside XYLError: severity Error unless
 * given, a numeric or text code, and the messages of an XYLMessageSet (the
 * exception is one). Messages chain on:
 *   XYL_THROW(XYLException(17) << XYLMessage("mycatalog", 17));
 * A copy (every raise makes one) copies the messages.
 *
 * Renderings, for a catalog location (null: the library's catalog
 * directory) and a locale:
 *   toString(location, locale, out, withText) appends
 *     <Exception Name="..." Error="<code text>" Severity="...">, the message
 *     set's XML (withText nonzero: with each message's localised text),
 *     <TraceInfo><Trace Text="<line>" />...</TraceInfo> when there is a
 *     trace, and </Exception>; unescaped, without line breaks. A plain
 *     message, when one is held (XYLException's constructors take none),
 *     goes first inside <Messages> as <MessageText>...</MessageText>.
 *   toString() is that rendering for "en-us" with the texts, from the
 *     library's catalogs;
 *   getMessage() is the plain message when one is held, else the set's
 *     texts for "en-us" (each followed by "\n"): "" for an empty set.
 * Both return bytes in the platform default encoding (UTF-8 for a text that
 * encoding cannot hold), owned by the exception and rebuilt on every call:
 * a pointer stays valid until the next call of the same operation or the
 * exception's destruction. They never throw: they return null when the
 * rendering fails (memory).
 *
 * getSeverity() is the exception's own severity (the set's is
 * XYLMessageSet::getSeverity()).
 * Thread safety and ownership otherwise as for XYLThrowable.
 */
#ifndef XYLCORE_EXCEPTIONHIERARCHY_XYLEXCEPTION_H
#define XYLCORE_EXCEPTIONHIERARCHY_XYLEXCEPTION_H

#include <XYLCore/ExceptionHierarchy/XYLThrowable.h>
#include <XYLCore/Messages/XYLMessageSet.h>

class XYL_API XYLException : public XYLThrowable, public XYLMessageSet {
  XYL_DECLARE_THROWABLE(XYLException)

public:
  explicit XYLException(long code) : XYLThrowable(XYLSeverityError, code, nullptr) {}
  explicit XYLException(int code) : XYLThrowable(XYLSeverityError, static_cast<long>(code), nullptr) {}
  XYLException(XYLSeverity severity, long code) : XYLThrowable(severity, code, nullptr) {}
  XYLException(XYLSeverity severity, int code) : XYLThrowable(severity, static_cast<long>(code), nullptr) {}
  explicit XYLException(const char *codeText) : XYLThrowable(XYLSeverityError, codeText, nullptr) {}
  XYLException(XYLSeverity severity, const char *codeText) : XYLThrowable(severity, codeText, nullptr) {}
  // Copies the throwable and every message; the renderings are not copied.
  XYLException(const XYLException &other);
  XYLException &operator=(const XYLException &other);
  ~XYLException() override;

  // See the banner.
  const char *getMessage() override;
  const char *toString() override;
  // The same as getMessage(), for a constant exception.
  virtual const char *getMessage() const;
  virtual void toString(const char *location, const char *locale, I18NString &out, int withText);

  // Appends a clone of `message` to the set; returns the exception.
  XYLException &operator<<(const XYLMessageBase &message);

  using XYLThrowable::getSeverity;

private:
  static char *keep(char *&slot, const I18NString &text) noexcept;

  char *m_pRenderedXML = nullptr;             // toString()'s result
  mutable char *m_pRenderedMessage = nullptr; // getMessage()'s result
};

#endif // XYLCORE_EXCEPTIONHIERARCHY_XYLEXCEPTION_H
