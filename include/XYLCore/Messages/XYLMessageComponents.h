/* SPDX-License-Identifier: Apache-2.0
 * XYLMessageComponents.h - a message number with typed parameters.
 *
 * The number and parameters of a catalog message without the catalog: its
 * text (format) is its own XML rendering without the text element, so the
 * number and parameters stay readable in any log. XYLMessage adds the
 * catalog.
 *
 * XML (one line, unescaped):
 *   <Message Name="XYLMessageComponents" File="" Severity="Error"
 *   Nesting="0" >[<MessageText>text</MessageText>]<MessageComponents
 *   ID="0x2a" >[<MessageParms><MessageParm .../>...</MessageParms>]
 *   </MessageComponents></Message>
 * The ID is printed with "%#04x" (so 0 prints as "0000"); File is the
 * catalog name, empty here. Parameters render in their XML form (not their
 * text form) whatever the switch.
 *
 * Ownership, thread safety and failures as for XYLMessageBase.
 */
#ifndef XYLCORE_MESSAGES_XYLMESSAGECOMPONENTS_H
#define XYLCORE_MESSAGES_XYLMESSAGECOMPONENTS_H

#include <XYLCore/Messages/XYLMessageBase.h>
#include <XYLCore/Messages/XYLMessageParm.h>

#include <vector>

class XYL_API XYLMessageComponents : public XYLMessageBase {
public:
  // Number 0, severity Error, no parameters.
  XYLMessageComponents();
  explicit XYLMessageComponents(unsigned int messageNumber);
  XYLMessageComponents(XYLSeverity severity, unsigned int messageNumber);
  ~XYLMessageComponents() override;

  XYLMessageBase *clone() const override;
  const char *getClassName() const override { return "XYLMessageComponents"; }
  // The XML rendering with the switch 0.
  void format(const char *location, const char *locale, I18NString &out) const override;
  void toString(const char *location, const char *locale, I18NString &out, int withText) const override;

  void setMessage(unsigned int messageNumber) { m_messageNumber = messageNumber; }
  void setMessage(XYLSeverity severity, unsigned int messageNumber);
  unsigned int getMessageID() const { return m_messageNumber; }

  // Appends one parameter (copied).
  void addParameter(const XYLMessageParm &parm);
  XYLMessageComponents &operator<<(const XYLMessageParm &parm);
  unsigned int getParmCount() const { return static_cast<unsigned int>(m_parms.size()); }
  // The parameter at `index` (from 0), or null at or beyond the count.
  const XYLMessageParm *getParmN(unsigned int index) const;

protected:
  // The XML rendering with `file` as the File attribute (null: empty).
  void renderXML(const char *location, const char *locale, I18NString &out, int withText, const I18NString *file) const;

private:
  unsigned int m_messageNumber;
  std::vector<XYLMessageParm> m_parms;
};

#endif // XYLCORE_MESSAGES_XYLMESSAGECOMPONENTS_H
