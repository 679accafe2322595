/* SPDX-License-Identifier: Apache-2.0
 * XYLMessage.h - catalog messages: a message number and parameters looked
 * up in a named message catalog.
 *
 * format(location, locale, out) opens the catalog `<name>` for `locale`
 * under `location` (XYLResourceFile: <location>/<locale>/<name>.bmf, then
 * the language's folder, then <location>/<name>.bmf; a null location is
 * the library's catalog directory) and looks the number up:
 *   - a text with no "{0" in it, for a message without parameters, is
 *     appended as it stands (other braces included);
 *   - otherwise the text is an ICU MessageFormat pattern formatted for the
 *     locale with the first ten parameters as arguments {0}..{9} (further
 *     parameters are ignored): unsigned longs and longs as 32-bit integers,
 *     doubles as doubles, message numbers (tag 5) as the text of that number
 *     in the same catalog, dates (tag 6) as dates of that many milliseconds
 *     since 1970-01-01 UTC, everything else as its plain text;
 *   - when the catalog or the number is missing or formatting fails, the
 *     message's XML rendering without the text is appended instead.
 * Catalog texts are UTF-8.
 *
 * XYLMessage opens and closes the catalog on every call. XYLMessageFile
 * keeps it open between calls (reopening when the catalog name, location or
 * locale change) until close() or its destruction; copies and clones start
 * with no catalog open.
 *
 * XML as XYLMessageComponents, with the catalog name as File and the class
 * name as Name. Ownership, thread safety and failures as for XYLMessageBase;
 * an XYLMessageFile's open catalog belongs to one thread too.
 */
#ifndef XYLCORE_MESSAGES_XYLMESSAGE_H
#define XYLCORE_MESSAGES_XYLMESSAGE_H

#include <XYLCore/Messages/XYLMessageComponents.h>

#include <string>

class XYLResourceFile;

class XYL_API XYLMessage : public XYLMessageComponents {
public:
  // The catalog name (ASCII; in the platform default encoding) and the
  // message number (0 unless given).
  explicit XYLMessage(const char *msgFile);
  XYLMessage(const char *msgFile, unsigned int messageNumber);
  explicit XYLMessage(const I18NString &msgFile);
  XYLMessage(const I18NString &msgFile, unsigned int messageNumber);
  ~XYLMessage() override;

  XYLMessageBase *clone() const override;
  const char *getClassName() const override { return "XYLMessage"; }
  void format(const char *location, const char *locale, I18NString &out) const override;
  void toString(const char *location, const char *locale, I18NString &out, int withText) const override;

  const I18NString &getMsgFile() const { return m_msgFile; }
  void setMsgFile(const I18NString &msgFile) { m_msgFile = msgFile; }

protected:
  // The localisation itself, from an open or closed catalog.
  void formatFrom(XYLResourceFile &catalog, const char *locale, I18NString &out) const;

private:
  I18NString m_msgFile;
};

class XYL_API XYLMessageFile : public XYLMessage {
public:
  explicit XYLMessageFile(const char *msgFile);
  XYLMessageFile(const char *msgFile, unsigned int messageNumber);
  explicit XYLMessageFile(const I18NString &msgFile);
  XYLMessageFile(const I18NString &msgFile, unsigned int messageNumber);
  // The copy does not share the open catalog.
  XYLMessageFile(const XYLMessageFile &other);
  XYLMessageFile &operator=(const XYLMessageFile &other);
  ~XYLMessageFile() override;

  XYLMessageBase *clone() const override;
  const char *getClassName() const override { return "XYLMessageFile"; }
  void format(const char *location, const char *locale, I18NString &out) const override;

  // Closes the catalog kept open (nothing when none is).
  void close();

private:
  mutable XYLResourceFile *m_pCatalog; // created on first format
  mutable std::string m_catalogKey;    // name, location and locale it was opened for
};

#endif // XYLCORE_MESSAGES_XYLMESSAGE_H
