// SPDX-License-Identifier: Apache-2.0
#include <XYLCore/Messages/XYLMessageComponents.h>

#include <cstdint>
#include <cstdio>

XYLMessageComponents::XYLMessageComponents() : m_messageNumber(0) {}

XYLMessageComponents::XYLMessageComponents(unsigned int messageNumber) : m_messageNumber(messageNumber) {}

XYLMessageComponents::XYLMessageComponents(XYLSeverity severity, unsigned int messageNumber)
    : XYLMessageBase(severity), m_messageNumber(messageNumber) {}

XYLMessageComponents::~XYLMessageComponents() = default;

XYLMessageBase *XYLMessageComponents::clone() const { return new XYLMessageComponents(*this); }

void XYLMessageComponents::setMessage(XYLSeverity severity, unsigned int messageNumber) {
  setSeverity(severity);
  m_messageNumber = messageNumber;
}

void XYLMessageComponents::addParameter(const XYLMessageParm &parm) { m_parms.push_back(parm); }

XYLMessageComponents &XYLMessageComponents::operator<<(const XYLMessageParm &parm) {
  addParameter(parm);
  return *this;
}

const XYLMessageParm *XYLMessageComponents::getParmN(unsigned int index) const {
  return index < m_parms.size() ? &m_parms[index] : nullptr;
}

// Without a catalog the number and parameters are the best text there is.
void XYLMessageComponents::format(const char *location, const char *locale, I18NString &out) const {
  toString(location, locale, out, 0);
}

void XYLMessageComponents::toString(const char *location, const char *locale, I18NString &out, int withText) const {
  renderXML(location, locale, out, withText, nullptr);
}

void XYLMessageComponents::renderXML(const char *location, const char *locale, I18NString &out, int withText,
                                     const I18NString *file) const {
  openElement(out, file);
  if (withText) {
    out.append("<MessageText>");
    format(location, locale, out);
    out.append("</MessageText>");
  }
  char id[48];
  std::snprintf(id, sizeof id, "<MessageComponents ID=\"%#04x\" >", static_cast<std::uint32_t>(m_messageNumber));
  out.append(id);
  if (!m_parms.empty()) {
    out.append("<MessageParms>");
    for (const XYLMessageParm &parm : m_parms)
      parm.toString(out, 0);
    out.append("</MessageParms>");
  }
  out.append("</MessageComponents></Message>");
}
