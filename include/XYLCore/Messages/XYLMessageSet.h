/* SPDX-License-Identifier: Apache-2.0
 * XYLMessageSet.h - an ordered list of owned messages, the payload of
 * XYLException.
 *
 * The set stores clones of the messages given to it and deletes them with
 * itself. It has a nesting level of its own (0 at first): every message it
 * receives through addMessage, addMessageFront or operator<< gets the set's
 * current level, and increaseNesting raises that level by one, so the
 * messages added by outer layers of a call chain carry higher levels than
 * the inner ones. transferMessages moves messages over with the levels they
 * have.
 *
 * Rendering (location and locale as for XYLMessageBase):
 *   format    each message's text followed by "\n", in order;
 *   toString  "<Messages>", each message's XML in order, "</Messages>";
 *             nothing at all when the set is empty.
 *
 * Ownership: the set owns its messages; getMessageN returns a pointer that
 * stays valid while the message is in the set. Copies clone every message.
 * Thread safety: none; a set belongs to one thread.
 * Throws: XYLOutOfMemoryError when memory runs out, except the copy
 * constructor, which leaves out a message it cannot copy (copies are made
 * while exceptions are raised).
 */
#ifndef XYLCORE_MESSAGES_XYLMESSAGESET_H
#define XYLCORE_MESSAGES_XYLMESSAGESET_H

#include <XYLCore/Messages/XYLMessageBase.h>

#include <vector>

class XYL_API XYLMessageSet {
public:
  XYLMessageSet();
  XYLMessageSet(const XYLMessageSet &other);
  XYLMessageSet &operator=(const XYLMessageSet &other);
  virtual ~XYLMessageSet();

  // Appends a clone of `message` at the set's nesting level.
  void addMessage(const XYLMessageBase &message);
  // Prepends a clone of `message` at the set's nesting level.
  void addMessageFront(const XYLMessageBase &message);
  XYLMessageSet &operator<<(const XYLMessageBase &message);
  // The message at `index` (from 0), or null at or beyond the count.
  XYLMessageBase *getMessageN(unsigned int index) const;
  unsigned int getMessageCount() const { return static_cast<unsigned int>(m_messages.size()); }
  // Moves every message of `other` to the end of this set; `other` is left
  // empty (its nesting level stays).
  void transferMessages(XYLMessageSet &other);

  unsigned int getNesting() const { return m_nesting; }
  void increaseNesting() { ++m_nesting; }
  // The most severe (lowest) severity among the messages; Information when
  // the set is empty.
  XYLSeverity getSeverity() const;

  void format(const char *location, const char *locale, I18NString &out) const;
  void toString(const char *location, const char *locale, I18NString &out, int withText) const;

private:
  void clear();
  XYLMessageBase *adopt(const XYLMessageBase &message) const;

  std::vector<XYLMessageBase *> m_messages;
  unsigned int m_nesting;
};

#endif // XYLCORE_MESSAGES_XYLMESSAGESET_H
