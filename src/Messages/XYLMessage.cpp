// SPDX-License-Identifier: Apache-2.0
// XYLMessage and XYLMessageFile: catalog lookup and ICU message formatting.
#include <XYLCore/Messages/XYLMessage.h>
#include <XYLCore/Resources/XYLResourceFile.h>

#include "XYLMessageText.h"

#include <cstdint>
#include <string>
#include <unicode/fmtable.h>
#include <unicode/locid.h>
#include <unicode/msgfmt.h>
#include <unicode/unistr.h>

namespace {

// Only the first ten parameters become arguments; the rest are ignored.
const unsigned int kMaxArguments = 10;

// "en-us" -> the ICU locale en_US; null or empty means "en-us".
icu::Locale localeFor(const char *name) {
  std::string id = (name == nullptr || *name == '\0') ? "en-us" : name;
  for (char &c : id)
    if (c == '-')
      c = '_';
  return icu::Locale(id.c_str());
}

icu::UnicodeString fromUTF8(const std::string &text) {
  return icu::UnicodeString::fromUTF8(icu::StringPiece(text.data(), static_cast<int32_t>(text.size())));
}

// The argument for one parameter.
icu::Formattable argumentFor(const XYLMessageParm &parm, XYLResourceFile &catalog) {
  long asLong = 0;
  unsigned long asULong = 0;
  double asDouble = 0.0;
  switch (parm.getType()) {
  case XYLMsgParmULong:
    parm.getValue(asULong);
    return icu::Formattable(static_cast<int32_t>(static_cast<uint32_t>(asULong)));
  case XYLMsgParmLong:
    parm.getValue(asLong);
    return icu::Formattable(static_cast<int32_t>(asLong));
  case XYLMsgParmDouble:
    parm.getValue(asDouble);
    return icu::Formattable(asDouble);
  case XYLMsgParmMsgID: {
    parm.getValue(asULong);
    const char *text = nullptr;
    std::string found = catalog.getResource(static_cast<unsigned int>(asULong), &text);
    if (text != nullptr)
      return icu::Formattable(fromUTF8(found));
    break; // not in the catalog: its plain text "msgid(0x..)"
  }
  case XYLMsgParmDate:
    // Milliseconds since 1970 as they stand. A long wider than 32 bits is
    // used whole: every 32-bit value gives the same date it always did.
    parm.getValue(asLong);
    return icu::Formattable(static_cast<UDate>(asLong), icu::Formattable::kIsDate);
  default:
    break;
  }
  I18NString text;
  parm.getText(text);
  return icu::Formattable(text.getUnicodeString());
}

} // namespace

// --- XYLMessage ---------------------------------------------------------------

XYLMessage::XYLMessage(const char *msgFile) { xyl_messages::appendPlatformText(m_msgFile, msgFile); }

XYLMessage::XYLMessage(const char *msgFile, unsigned int messageNumber) : XYLMessageComponents(messageNumber) {
  xyl_messages::appendPlatformText(m_msgFile, msgFile);
}

XYLMessage::XYLMessage(const I18NString &msgFile) : m_msgFile(msgFile) {}

XYLMessage::XYLMessage(const I18NString &msgFile, unsigned int messageNumber)
    : XYLMessageComponents(messageNumber), m_msgFile(msgFile) {}

XYLMessage::~XYLMessage() = default;

XYLMessageBase *XYLMessage::clone() const { return new XYLMessage(*this); }

void XYLMessage::format(const char *location, const char *locale, I18NString &out) const {
  XYLResourceFile catalog;
  if (!m_msgFile.empty())
    catalog.open(m_msgFile.c_str(), location, locale);
  formatFrom(catalog, locale, out);
}

void XYLMessage::toString(const char *location, const char *locale, I18NString &out, int withText) const {
  renderXML(location, locale, out, withText, &m_msgFile);
}

void XYLMessage::formatFrom(XYLResourceFile &catalog, const char *locale, I18NString &out) const {
  const char *found = nullptr;
  std::string text;
  if (catalog.isOpen())
    text = catalog.getResource(getMessageID(), &found);
  if (found != nullptr) {
    if (getParmCount() == 0 && text.find("{0") == std::string::npos) {
      xyl_messages::appendUTF8(out, text);
      return;
    }
    UErrorCode status = U_ZERO_ERROR;
    icu::MessageFormat formatter(fromUTF8(text), localeFor(locale), status);
    if (U_SUCCESS(status)) {
      const unsigned int count = getParmCount() < kMaxArguments ? getParmCount() : kMaxArguments;
      icu::Formattable arguments[kMaxArguments];
      for (unsigned int i = 0; i < count; ++i)
        arguments[i] = argumentFor(*getParmN(i), catalog);
      icu::UnicodeString result;
      icu::FieldPosition position(icu::FieldPosition::DONT_CARE);
      formatter.format(arguments, static_cast<int32_t>(count), result, position, status);
      if (U_SUCCESS(status)) {
        out.append(I18NString(result));
        return;
      }
    }
  }
  // Cannot be localised: the number and parameters as XML, without text.
  toString(nullptr, locale, out, 0);
}

// --- XYLMessageFile -------------------------------------------------------

XYLMessageFile::XYLMessageFile(const char *msgFile) : XYLMessage(msgFile), m_pCatalog(nullptr) {}

XYLMessageFile::XYLMessageFile(const char *msgFile, unsigned int messageNumber)
    : XYLMessage(msgFile, messageNumber), m_pCatalog(nullptr) {}

XYLMessageFile::XYLMessageFile(const I18NString &msgFile) : XYLMessage(msgFile), m_pCatalog(nullptr) {}

XYLMessageFile::XYLMessageFile(const I18NString &msgFile, unsigned int messageNumber)
    : XYLMessage(msgFile, messageNumber), m_pCatalog(nullptr) {}

XYLMessageFile::XYLMessageFile(const XYLMessageFile &other) : XYLMessage(other), m_pCatalog(nullptr) {}

XYLMessageFile &XYLMessageFile::operator=(const XYLMessageFile &other) {
  if (this != &other) {
    close();
    XYLMessage::operator=(other);
  }
  return *this;
}

XYLMessageFile::~XYLMessageFile() { delete m_pCatalog; }

XYLMessageBase *XYLMessageFile::clone() const { return new XYLMessageFile(*this); }

void XYLMessageFile::format(const char *location, const char *locale, I18NString &out) const {
  std::string key(getMsgFile().empty() ? "" : getMsgFile().c_str());
  key.append(1, '\0').append(location ? location : "").append(1, '\0').append(locale ? locale : "");
  if (m_pCatalog == nullptr)
    m_pCatalog = new XYLResourceFile();
  if (!m_pCatalog->isOpen() || key != m_catalogKey) {
    m_pCatalog->close();
    m_catalogKey.clear();
    if (!getMsgFile().empty() && m_pCatalog->open(getMsgFile().c_str(), location, locale))
      m_catalogKey = key;
  }
  formatFrom(*m_pCatalog, locale, out);
}

void XYLMessageFile::close() {
  if (m_pCatalog != nullptr)
    m_pCatalog->close();
  m_catalogKey.clear();
}
