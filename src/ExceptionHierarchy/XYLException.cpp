// SPDX-License-Identifier: Apache-2.0
#include <XYLCore/ExceptionHierarchy/XYLException.h>
#include <XYLCore/Utility/XYLUtMemory.h>
#include <XYLCore/i18n/cpp/i18n_converter.h>

#include "Messages/XYLMessageText.h"

#include <cstring>
#include <new>

XYL_IMPLEMENT_THROWABLE(XYLException)

namespace {
// The locale of the renderings that take none.
const char *const kDefaultLocale = "en-us";
} // namespace

XYLException::XYLException(const XYLException &other) : XYLThrowable(other), XYLMessageSet(other) {}

XYLException &XYLException::operator=(const XYLException &other) {
  if (this != &other) {
    XYLThrowable::operator=(other);
    XYLMessageSet::operator=(other);
  }
  return *this;
}

XYLException::~XYLException() {
  XYLUtMemory::free(m_pRenderedXML);
  XYLUtMemory::free(m_pRenderedMessage);
}

XYLException &XYLException::operator<<(const XYLMessageBase &message) {
  addMessage(message);
  return *this;
}

// Replaces `slot` by the bytes of `text` in the platform default encoding,
// or in UTF-8 when that encoding cannot hold the text; null on failure.
char *XYLException::keep(char *&slot, const I18NString &text) noexcept {
  XYLUtMemory::free(slot);
  slot = nullptr;
  const char *encodings[] = {I18NGetPlatformDefaultEncoding(), "UTF8"};
  for (const char *encoding : encodings) {
    try {
      int length = 0;
      const char *bytes = text.c_str(encoding, &length);
      char *copy = static_cast<char *>(XYLUtMemory::malloc(static_cast<std::size_t>(length) + 1));
      if (copy == nullptr)
        return nullptr;
      std::memcpy(copy, bytes, static_cast<std::size_t>(length));
      copy[length] = '\0';
      slot = copy;
      return copy;
    } catch (...) {
    }
  }
  return nullptr;
}

void XYLException::toString(const char *location, const char *locale, I18NString &out, int withText) {
  const char *code = getErrorCodeString();
  out.append("<Exception Name=\"");
  out.append(getThrowableName());
  out.append("\" Error=\"");
  xyl_messages::appendPlatformText(out, code);
  out.append("\" Severity=\"");
  out.append(getSeverityName(XYLThrowable::getSeverity()));
  out.append("\">");
  const char *plain = getPlainMessage();
  if (plain != nullptr) {
    out.append("<Messages><MessageText>");
    xyl_messages::appendPlatformText(out, plain);
    out.append("</MessageText>");
    for (unsigned int i = 0; i < getMessageCount(); ++i)
      getMessageN(i)->toString(location, locale, out, withText);
    out.append("</Messages>");
  } else {
    XYLMessageSet::toString(location, locale, out, withText);
  }
  const XYLList<char *> &trace = getBackTrace();
  if (!trace.empty()) {
    out.append("<TraceInfo>");
    XYLList<char *> &lines = const_cast<XYLList<char *> &>(trace);
    for (XYLList<char *>::iterator it = lines.begin(); it != lines.end(); ++it) {
      out.append("<Trace Text=\"");
      xyl_messages::appendPlatformText(out, *it);
      out.append("\" />");
    }
    out.append("</TraceInfo>");
  }
  out.append("</Exception>");
}

const char *XYLException::toString() {
  try {
    I18NString text;
    toString(nullptr, kDefaultLocale, text, 1);
    return keep(m_pRenderedXML, text);
  } catch (...) {
    XYLUtMemory::free(m_pRenderedXML);
    m_pRenderedXML = nullptr;
    return nullptr;
  }
}

const char *XYLException::getMessage() const {
  if (getPlainMessage() != nullptr)
    return getPlainMessage();
  if (getMessageCount() == 0)
    return ""; // the rendering of an empty set; callers hand it to printf
  try {
    I18NString text;
    format(nullptr, kDefaultLocale, text);
    return keep(m_pRenderedMessage, text);
  } catch (...) {
    XYLUtMemory::free(m_pRenderedMessage);
    m_pRenderedMessage = nullptr;
    return nullptr;
  }
}

const char *XYLException::getMessage() { return static_cast<const XYLException *>(this)->getMessage(); }
