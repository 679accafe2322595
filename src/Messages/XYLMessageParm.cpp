// SPDX-License-Identifier: Apache-2.0
#include <XYLCore/Messages/XYLMessageParm.h>

#include "XYLMessageText.h"

#include <cstdint>
#include <cstdio>

XYLMessageParm::XYLMessageParm() : m_type(XYLMsgParmUnknown), m_long(0), m_ulong(0), m_double(0.0) {}

XYLMessageParm::XYLMessageParm(unsigned long value, int isMessageNumber)
    : m_type(isMessageNumber ? XYLMsgParmMsgID : XYLMsgParmULong), m_long(0), m_ulong(value), m_double(0.0) {}

XYLMessageParm::XYLMessageParm(long value, XYLMsgParm tag) : m_type(tag), m_long(value), m_ulong(0), m_double(0.0) {}

XYLMessageParm::XYLMessageParm(int value) : XYLMessageParm(static_cast<long>(value)) {}

XYLMessageParm::XYLMessageParm(unsigned int value) : XYLMessageParm(static_cast<unsigned long>(value)) {}

XYLMessageParm::XYLMessageParm(double value) : m_type(XYLMsgParmDouble), m_long(0), m_ulong(0), m_double(value) {}

XYLMessageParm::XYLMessageParm(const I18NString &text)
    : m_type(XYLMsgParmString), m_long(0), m_ulong(0), m_double(0.0), m_text(text) {}

XYLMessageParm::XYLMessageParm(const char *text) : m_type(XYLMsgParmString), m_long(0), m_ulong(0), m_double(0.0) {
  xyl_messages::appendPlatformText(m_text, text);
}

int XYLMessageParm::getValue(long &value) const {
  if (m_type != XYLMsgParmLong && m_type != XYLMsgParmDate && m_type != XYLMsgParmOpaque)
    return 0;
  value = m_long;
  return 1;
}

int XYLMessageParm::getValue(unsigned long &value) const {
  if (m_type != XYLMsgParmULong && m_type != XYLMsgParmMsgID)
    return 0;
  value = m_ulong;
  return 1;
}

int XYLMessageParm::getValue(double &value) const {
  if (m_type != XYLMsgParmDouble)
    return 0;
  value = m_double;
  return 1;
}

int XYLMessageParm::getValue(I18NString &value) const {
  if (m_type != XYLMsgParmString)
    return 0;
  value = m_text;
  return 1;
}

// Numbers keep the 32-bit values a long holds on the reference platform.
void XYLMessageParm::getText(I18NString &out) const {
  char number[400]; // "%f" of the largest double takes 316
  switch (m_type) {
  case XYLMsgParmULong:
    std::snprintf(number, sizeof number, "%u", static_cast<std::uint32_t>(m_ulong));
    break;
  case XYLMsgParmLong:
  case XYLMsgParmDate:
    std::snprintf(number, sizeof number, "%d", static_cast<std::int32_t>(m_long));
    break;
  case XYLMsgParmDouble:
    std::snprintf(number, sizeof number, "%f", m_double);
    break;
  case XYLMsgParmString:
    out.append(m_text);
    return;
  case XYLMsgParmMsgID:
    std::snprintf(number, sizeof number, "msgid(%#04x)", static_cast<std::uint32_t>(m_ulong));
    break;
  case XYLMsgParmOpaque:
    out.append("<opaque parm>");
    return;
  default:
    return;
  }
  out.append(number);
}

void XYLMessageParm::toString(I18NString &out, int textOnly) const {
  if (textOnly) {
    out.append("<MessageParm Text=\"");
    getText(out);
    out.append("\" />");
    return;
  }
  out.append("<MessageParm Name=\"");
  out.append(getClassName());
  out.append("\" Type=");
  char value[400];
  switch (m_type) {
  case XYLMsgParmUnknown:
    out.append("\"unknown\" Value=\"");
    break;
  case XYLMsgParmULong:
    std::snprintf(value, sizeof value, "\"ulong\" Value=\"%u\"", static_cast<std::uint32_t>(m_ulong));
    out.append(value);
    break;
  case XYLMsgParmLong:
  case XYLMsgParmDate: // a date is written as the long it is
    std::snprintf(value, sizeof value, "\"long\" Value=\"%d\"", static_cast<std::int32_t>(m_long));
    out.append(value);
    break;
  case XYLMsgParmDouble:
    std::snprintf(value, sizeof value, "\"double\" Value=\"%f\"", m_double);
    out.append(value);
    break;
  case XYLMsgParmString:
    out.append("\"string\" Value=\"");
    out.append(m_text);
    out.append("\"");
    break;
  case XYLMsgParmMsgID:
    std::snprintf(value, sizeof value, "\"msgid\" Value=\"%#04x\"", static_cast<std::uint32_t>(m_ulong));
    out.append(value);
    break;
  case XYLMsgParmOpaque:
    std::snprintf(value, sizeof value, "\"opaque\" Value=\"%#04x\"", static_cast<std::uint32_t>(m_long));
    out.append(value);
    break;
  default:
    out.append("\"illegal\" Value=\"");
    break;
  }
  out.append(" />");
}
