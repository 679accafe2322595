/* SPDX-License-Identifier: Apache-2.0
 * XYLMessageBase.h - the root of the message classes.
 *
 * A message is a localisable piece of diagnostic text with a severity and a
 * nesting level. Every message renders two ways, both appended to an
 * I18NString and both given a catalog location (a directory; null for the
 * library's catalog directory) and a locale name ("en-us"; null or empty
 * means "en-us"):
 *   format    the localised text, for a user;
 *   toString  an XML element for logs, written without line breaks and
 *             without escaping; with a nonzero switch it includes the
 *             localised text as <MessageText>.
 * A message that cannot be localised (catalog or number missing, the
 * formatter failing) shows its XML form, without the text, as its text.
 *
 * The nesting level tells messages added by outer layers of a call chain
 * from inner ones; only XYLMessageSet sets it (see there).
 *
 * Ownership: a message owns everything it holds; clone() gives a heap copy
 * the caller deletes. Thread safety: none; a message belongs to one thread.
 * Throws: nothing for missing catalogs or texts; XYLOutOfMemoryError when
 * memory runs out.
 */
#ifndef XYLCORE_MESSAGES_XYLMESSAGEBASE_H
#define XYLCORE_MESSAGES_XYLMESSAGEBASE_H

#include <XYLCore/ExceptionHierarchy/XYLThrowable.h>
#include <XYLCore/XYLExport.h>
#include <XYLCore/i18n/cpp/i18n_string.h>

class XYLMessageSet;

class XYL_API XYLMessageBase {
public:
  virtual ~XYLMessageBase();
  // A heap copy of the most-derived message.
  virtual XYLMessageBase *clone() const = 0;
  // The class's own name ("XYLMessageComponents").
  virtual const char *getClassName() const = 0;
  // Appends the localised text.
  virtual void format(const char *location, const char *locale, I18NString &out) const = 0;
  // Appends the XML rendering; a nonzero `withText` includes the text.
  virtual void toString(const char *location, const char *locale, I18NString &out, int withText) const = 0;
  virtual XYLSeverity getSeverity() const { return m_severity; }
  virtual void setSeverity(XYLSeverity severity) { m_severity = severity; }

  unsigned int getNesting() const { return m_nesting; }
  // "Fatal", "Error", "Warning", "Information"; other values are undefined.
  static const char *getSeverityName(XYLSeverity severity) { return XYLThrowable::getSeverityName(severity); }

protected:
  // Severity Error unless given; nesting 0.
  explicit XYLMessageBase(XYLSeverity severity = XYLSeverityError) : m_severity(severity), m_nesting(0) {}
  XYLMessageBase(const XYLMessageBase &) = default;
  XYLMessageBase &operator=(const XYLMessageBase &) = default;

  // "<Message Name=\"<class>\" File=\"<file>\" Severity=\"<name>\"
  // Nesting=\"<n>\" >", the opening every message's XML shares.
  void openElement(I18NString &out, const I18NString *file) const;

private:
  friend class XYLMessageSet;
  void setNesting(unsigned int nesting) { m_nesting = nesting; }
  void increaseNesting() { ++m_nesting; }

  XYLSeverity m_severity;
  unsigned int m_nesting;
};

#endif // XYLCORE_MESSAGES_XYLMESSAGEBASE_H
