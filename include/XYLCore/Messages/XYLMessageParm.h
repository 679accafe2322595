/* SPDX-License-Identifier: Apache-2.0
 * XYLMessageParm.h - one typed parameter of a catalog message.
 *
 * A parameter holds a type tag (XYLMsgParm) and one value. It renders in two
 * forms: as an XML element for logs and as plain text, the form a catalog
 * text receives when it cannot be formatted any better:
 *
 *   tag  value kind        XML  Type=...                 plain text
 *   0    unknown           "unknown" Value="             (empty)
 *   1    unsigned long     "ulong" Value="%u"            %u
 *   2    long              "long" Value="%d"             %d
 *   3    double            "double" Value="%f"           %f
 *   4    string            "string" Value="<text>"       the text
 *   5    message number    "msgid" Value="%#04x"         msgid(%#04x)
 *   6    date (long, ms)   "long" Value="%d"             %d
 *   7    opaque (long)     "opaque" Value="%#04x"        <opaque parm>
 *   else illegal           "illegal" Value="             (empty)
 *
 * Tag 6 is written like a plain long; only localised formatting treats it
 * as a date (milliseconds since 1970-01-01 UTC). Numbers are rendered as the
 * 32-bit values a long holds on the library's reference platform, whatever
 * the width of long here. Texts go into the XML unescaped.
 *
 * Ownership: a parameter owns a copy of its text. Thread safety: none; a
 * parameter belongs to one thread. Throws only XYLOutOfMemoryError (copying
 * or rendering text).
 */
#ifndef XYLCORE_MESSAGES_XYLMESSAGEPARM_H
#define XYLCORE_MESSAGES_XYLMESSAGEPARM_H

#include <XYLCore/XYLExport.h>
#include <XYLCore/i18n/cpp/i18n_string.h>

// A fixed underlying type: a tag outside the list is "illegal", not undefined.
enum XYLMsgParm : int {
  XYLMsgParmUnknown = 0,
  XYLMsgParmULong = 1,
  XYLMsgParmLong = 2,
  XYLMsgParmDouble = 3,
  XYLMsgParmString = 4,
  XYLMsgParmMsgID = 5,
  XYLMsgParmDate = 6,
  XYLMsgParmOpaque = 7
};

class XYL_API XYLMessageParm {
public:
  // Tag 0, no value.
  XYLMessageParm();
  // Tag 1, or tag 5 (a message number of the same catalog) when
  // `isMessageNumber` is nonzero.
  XYLMessageParm(unsigned long value, int isMessageNumber = 0);
  // Tag 2 unless another tag is given (6 for a date, 7 for an opaque value).
  XYLMessageParm(long value, XYLMsgParm tag = XYLMsgParmLong);
  // Conveniences for literals: an int is a long (tag 2), an unsigned int an
  // unsigned long (tag 1).
  XYLMessageParm(int value);
  XYLMessageParm(unsigned int value);
  // Tag 3.
  XYLMessageParm(double value);
  // Tag 4; the text is copied.
  XYLMessageParm(const I18NString &text);
  // Tag 4 from bytes in the platform default encoding (null: empty).
  XYLMessageParm(const char *text);

  XYLMsgParm getType() const { return m_type; }
  // Each stores the value when the parameter holds that kind (tags 2, 6, 7
  // for long; 1, 5 for unsigned long; 3; 4) and returns 1; otherwise leaves
  // `value` alone and returns 0.
  int getValue(long &value) const;
  int getValue(unsigned long &value) const;
  int getValue(double &value) const;
  int getValue(I18NString &value) const;

  // "XYLMessageParm".
  const char *getClassName() const { return "XYLMessageParm"; }
  // Appends the plain text (table above).
  void getText(I18NString &out) const;
  // Appends "<MessageParm Name=\"XYLMessageParm\" Type=<type and value> />";
  // with `textOnly` nonzero "<MessageParm Text=\"<plain text>\" />" instead.
  void toString(I18NString &out, int textOnly) const;

private:
  XYLMsgParm m_type;
  long m_long;
  unsigned long m_ulong;
  double m_double;
  I18NString m_text;
};

#endif // XYLCORE_MESSAGES_XYLMESSAGEPARM_H
