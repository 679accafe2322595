// SPDX-License-Identifier: Apache-2.0
#include <XYLCore/Messages/XYLMessageSet.h>

#include <new>

XYLMessageSet::XYLMessageSet() : m_nesting(0) {}

// Copies are made while exceptions are raised: a message that cannot be
// copied is left out instead of throwing.
XYLMessageSet::XYLMessageSet(const XYLMessageSet &other) : m_nesting(other.m_nesting) {
  try {
    m_messages.reserve(other.m_messages.size());
  } catch (...) {
    return;
  }
  for (const XYLMessageBase *message : other.m_messages) {
    try {
      m_messages.push_back(message->clone());
    } catch (...) {
    }
  }
}

XYLMessageSet &XYLMessageSet::operator=(const XYLMessageSet &other) {
  if (this != &other) {
    XYLMessageSet copy(other);
    clear();
    m_messages.swap(copy.m_messages);
    m_nesting = other.m_nesting;
  }
  return *this;
}

XYLMessageSet::~XYLMessageSet() { clear(); }

void XYLMessageSet::clear() {
  for (XYLMessageBase *message : m_messages)
    delete message;
  m_messages.clear();
}

// A clone at the set's nesting level.
XYLMessageBase *XYLMessageSet::adopt(const XYLMessageBase &message) const {
  XYLMessageBase *copy = message.clone();
  copy->setNesting(m_nesting);
  return copy;
}

void XYLMessageSet::addMessage(const XYLMessageBase &message) {
  XYLMessageBase *copy = adopt(message);
  try {
    m_messages.push_back(copy);
  } catch (...) {
    delete copy;
    throw;
  }
}

void XYLMessageSet::addMessageFront(const XYLMessageBase &message) {
  XYLMessageBase *copy = adopt(message);
  try {
    m_messages.insert(m_messages.begin(), copy);
  } catch (...) {
    delete copy;
    throw;
  }
}

XYLMessageSet &XYLMessageSet::operator<<(const XYLMessageBase &message) {
  addMessage(message);
  return *this;
}

XYLMessageBase *XYLMessageSet::getMessageN(unsigned int index) const {
  return index < m_messages.size() ? m_messages[index] : nullptr;
}

void XYLMessageSet::transferMessages(XYLMessageSet &other) {
  if (&other == this)
    return;
  m_messages.insert(m_messages.end(), other.m_messages.begin(), other.m_messages.end());
  other.m_messages.clear();
}

XYLSeverity XYLMessageSet::getSeverity() const {
  XYLSeverity most = XYLSeverityInformation;
  for (const XYLMessageBase *message : m_messages)
    if (message->getSeverity() < most)
      most = message->getSeverity();
  return most;
}

void XYLMessageSet::format(const char *location, const char *locale, I18NString &out) const {
  for (const XYLMessageBase *message : m_messages) {
    message->format(location, locale, out);
    out.append("\n");
  }
}

void XYLMessageSet::toString(const char *location, const char *locale, I18NString &out, int withText) const {
  if (m_messages.empty())
    return;
  out.append("<Messages>");
  for (const XYLMessageBase *message : m_messages)
    message->toString(location, locale, out, withText);
  out.append("</Messages>");
}
