// SPDX-License-Identifier: Apache-2.0
#include <XYLCore/Messages/XYLMessage.h>
#include <XYLCore/PlugIns/XYLPluginException.h>

#include "Messages/XYLMessageText.h"

#include <new>

XYL_IMPLEMENT_THROWABLE(XYLPluginException)

XYLPluginException &XYLPluginException::addLocalizationMessage(const I18NString &text) {
  XYLMessage message(getCatalogName(), static_cast<unsigned int>(getErrorCode()));
  message.setSeverity(getSeverity());
  message << XYLMessageParm(text);
  addMessage(message);
  return *this;
}

XYLPluginException &XYLPluginException::addLocalizationMessage(const char *text) {
  I18NString value;
  xyl_messages::appendPlatformText(value, text);
  return addLocalizationMessage(value);
}
