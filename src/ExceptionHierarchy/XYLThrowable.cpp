// SPDX-License-Identifier: Apache-2.0
#include <XYLCore/ExceptionHierarchy/XYLErrors.h>
#include <XYLCore/Utility/XYLUtMemory.h>

#include <cstdio>
#include <cstring>
#include <memory>
#include <new>
#include <string>

namespace {

const char *const kSeverityNames[] = {"Fatal", "Error", "Warning", "Information"};

// Writes the decimal text of `value` ending just before `end`; returns its
// first character. The buffer must hold 21 characters.
char *formatDecimal(char *end, long value) {
  unsigned long magnitude = value < 0 ? 0UL - static_cast<unsigned long>(value) : static_cast<unsigned long>(value);
  char *p = end;
  do {
    *--p = static_cast<char>('0' + magnitude % 10);
    magnitude /= 10;
  } while (magnitude != 0);
  if (value < 0)
    *--p = '-';
  return p;
}

// Appends `length` bytes of `text` at `cursor` and returns the new end.
char *put(char *cursor, const char *text, std::size_t length) {
  if (length != 0)
    std::memcpy(cursor, text, length);
  return cursor + length;
}

char *put(char *cursor, const char *text) { return put(cursor, text, std::strlen(text)); }

// The literals of the XML rendering; their lengths are computed once per
// process on first use. Two threads racing to compute them write the same
// values, so no lock is needed.
struct RenderingLiterals {
  static constexpr const char *open = "<Exception Name=\"";
  static constexpr const char *error = "\" Error=\"";
  static constexpr const char *severity = "\" Severity=\"";
  static constexpr const char *openEnd = "\">";
  static constexpr const char *messages = "<Messages><MessageText>";
  static constexpr const char *messagesEnd = "</MessageText></Messages>";
  static constexpr const char *trace = "<TraceInfo>";
  static constexpr const char *traceLine = "<Trace Text=\"";
  static constexpr const char *traceLineEnd = "\"/>";
  static constexpr const char *traceEnd = "</TraceInfo>";
  static constexpr const char *close = "</Exception>";
};

std::size_t lengthOrZero(const char *text) { return text ? std::strlen(text) : 0; }

} // namespace

XYLThrowable::XYLThrowable()
    : m_pRendering(nullptr), m_iCodeIsNumber(0), m_lErrorCode(0), m_pErrorCode(nullptr), m_severity(XYLSeverityFatal),
      m_pMessage(nullptr) {}

XYLThrowable::XYLThrowable(long code, const char *message) : XYLThrowable(XYLSeverityFatal, code, message) {}

XYLThrowable::XYLThrowable(XYLSeverity severity, long code, const char *message)
    : m_pRendering(nullptr), m_iCodeIsNumber(1), m_lErrorCode(code), m_pErrorCode(nullptr), m_severity(severity),
      m_pMessage(XYLUtMemory::strdup(message)) {}

XYLThrowable::XYLThrowable(const char *codeText, const char *message)
    : XYLThrowable(XYLSeverityFatal, codeText, message) {}

XYLThrowable::XYLThrowable(XYLSeverity severity, const char *codeText, const char *message)
    : m_pRendering(nullptr), m_iCodeIsNumber(0), m_lErrorCode(0), m_pErrorCode(XYLUtMemory::strdup(codeText)),
      m_severity(severity), m_pMessage(XYLUtMemory::strdup(message)) {}

XYLThrowable::XYLThrowable(const XYLThrowable &other)
    : m_pRendering(nullptr), m_iCodeIsNumber(0), m_lErrorCode(0), m_pErrorCode(nullptr), m_severity(XYLSeverityFatal),
      m_pMessage(nullptr) {
  copyFrom(other);
}

XYLThrowable &XYLThrowable::operator=(const XYLThrowable &other) {
  if (this != &other) {
    release();
    copyFrom(other);
  }
  return *this;
}

XYLThrowable::~XYLThrowable() { release(); }

// Copies every field and every trace line; a piece whose allocation fails is
// left out rather than thrown, since copies are made while raising.
void XYLThrowable::copyFrom(const XYLThrowable &other) {
  m_iCodeIsNumber = other.m_iCodeIsNumber;
  m_lErrorCode = other.m_lErrorCode;
  m_severity = other.m_severity;
  m_pErrorCode = XYLUtMemory::strdup(other.m_pErrorCode);
  m_pMessage = XYLUtMemory::strdup(other.m_pMessage);
  XYLList<char *> &lines = const_cast<XYLList<char *> &>(other.m_backTrace);
  for (XYLList<char *>::iterator it = lines.begin(); it != lines.end(); ++it) {
    char *line = XYLUtMemory::strdup(*it);
    if (line == nullptr)
      continue;
    try {
      m_backTrace.push_back(line);
    } catch (const std::bad_alloc &) {
      XYLUtMemory::free(line);
    }
  }
}

void XYLThrowable::release() {
  XYLUtMemory::free(m_pRendering);
  XYLUtMemory::free(m_pErrorCode);
  XYLUtMemory::free(m_pMessage);
  m_pRendering = m_pErrorCode = m_pMessage = nullptr;
  for (XYLList<char *>::iterator it = m_backTrace.begin(); it != m_backTrace.end(); ++it)
    XYLUtMemory::free(*it);
  m_backTrace.clear();
}

const char *XYLThrowable::getMessage() { return m_pMessage; }

const char *XYLThrowable::getSeverityName(XYLSeverity severity) { return kSeverityNames[severity]; }

const char *XYLThrowable::getErrorCodeString() {
  if (m_pErrorCode != nullptr)
    return m_pErrorCode;
  if (!m_iCodeIsNumber)
    return nullptr;
  if (m_lErrorCode == 0)
    return "0";
  char digits[24];
  char *end = digits + sizeof digits;
  char *first = formatDecimal(end, m_lErrorCode);
  std::size_t length = static_cast<std::size_t>(end - first);
  char *text = static_cast<char *>(XYLUtMemory::malloc(length + 1));
  if (text == nullptr)
    return nullptr;
  std::memcpy(text, first, length);
  text[length] = '\0';
  m_pErrorCode = text;
  return text;
}

void XYLThrowable::addBackTrace(const XYLFileLocation &location, const char *text, const char *macroName) noexcept {
  const char *file = location.getFile() ? location.getFile() : "<NULL FILE>";
  const char *name = getThrowableName();
  if (name == nullptr)
    name = "<NULL THROWABLE NAME>";
  char lineDigits[24];
  char *lineEnd = lineDigits + sizeof lineDigits;
  char *lineFirst = formatDecimal(lineEnd, location.getLine());
  std::size_t lineLength = static_cast<std::size_t>(lineEnd - lineFirst);
  std::size_t fileLength = std::strlen(file), nameLength = std::strlen(name);
  std::size_t macroLength = lengthOrZero(macroName), textLength = lengthOrZero(text);

  // "<file>(<line>):<name>: [<macro>: ][<text>]"
  std::size_t total =
      fileLength + 1 + lineLength + 2 + nameLength + 2 + (macroLength ? macroLength + 2 : 0) + textLength;
  char *line = static_cast<char *>(XYLUtMemory::malloc(total + 1));
  if (line == nullptr)
    return;
  char *cursor = put(line, file, fileLength);
  *cursor++ = '(';
  cursor = put(cursor, lineFirst, lineLength);
  cursor = put(cursor, "):", 2);
  cursor = put(cursor, name, nameLength);
  cursor = put(cursor, ": ", 2);
  if (macroLength) {
    cursor = put(cursor, macroName, macroLength);
    cursor = put(cursor, ": ", 2);
  }
  cursor = put(cursor, text, textLength);
  *cursor = '\0';
  try {
    m_backTrace.push_back(line);
  } catch (const std::bad_alloc &) {
    XYLUtMemory::free(line);
  }
}

void XYLThrowable::transferBackTrace(XYLThrowable &other) {
  if (&other != this)
    m_backTrace.splice_back(other.m_backTrace);
}

namespace {
constexpr std::size_t literalLength(const char *text) { return std::char_traits<char>::length(text); }
} // namespace

const char *XYLThrowable::toString() {
  typedef RenderingLiterals L;
  // Known at compile time, so that threads rendering at once share no state.
  constexpr std::size_t messageLength = literalLength(L::messages) + literalLength(L::messagesEnd);
  constexpr std::size_t traceFrameLength = literalLength(L::trace) + literalLength(L::traceEnd);
  constexpr std::size_t traceLineLength = literalLength(L::traceLine) + literalLength(L::traceLineEnd);
  constexpr std::size_t fixedLength = literalLength(L::open) + literalLength(L::error) + literalLength(L::severity) +
                                      literalLength(L::openEnd) + literalLength(L::close);

  const char *name = getThrowableName();
  const char *code = getErrorCodeString();
  const char *severity = getSeverityName(m_severity);
  const char *message = getMessage();
  std::size_t total = fixedLength + lengthOrZero(name) + lengthOrZero(code) + lengthOrZero(severity);
  if (message != nullptr)
    total += messageLength + std::strlen(message);
  if (!m_backTrace.empty()) {
    total += traceFrameLength;
    for (XYLList<char *>::iterator it = m_backTrace.begin(); it != m_backTrace.end(); ++it)
      total += traceLineLength + std::strlen(*it);
  }

  XYLUtMemory::free(m_pRendering);
  m_pRendering = static_cast<char *>(XYLUtMemory::malloc(total + 1));
  if (m_pRendering == nullptr)
    return nullptr;
  char *cursor = put(m_pRendering, L::open);
  cursor = put(cursor, name ? name : "");
  cursor = put(cursor, L::error);
  cursor = put(cursor, code ? code : "");
  cursor = put(cursor, L::severity);
  cursor = put(cursor, severity);
  cursor = put(cursor, L::openEnd);
  if (message != nullptr) {
    cursor = put(cursor, L::messages);
    cursor = put(cursor, message);
    cursor = put(cursor, L::messagesEnd);
  }
  if (!m_backTrace.empty()) {
    cursor = put(cursor, L::trace);
    for (XYLList<char *>::iterator it = m_backTrace.begin(); it != m_backTrace.end(); ++it) {
      cursor = put(cursor, L::traceLine);
      cursor = put(cursor, *it);
      cursor = put(cursor, L::traceLineEnd);
    }
    cursor = put(cursor, L::traceEnd);
  }
  cursor = put(cursor, L::close);
  *cursor = '\0';
  return m_pRendering;
}

// --- XYLDeferredThrowable ---------------------------------------------------

XYLDeferredThrowable::XYLDeferredThrowable() : m_pThrowable(nullptr) {}

XYLDeferredThrowable::XYLDeferredThrowable(const XYLDeferredThrowable &other)
    : m_pThrowable(other.m_pThrowable ? other.m_pThrowable->clone() : nullptr) {}

XYLDeferredThrowable &XYLDeferredThrowable::operator=(const XYLDeferredThrowable &other) {
  if (this != &other) {
    XYLThrowable *copy = other.m_pThrowable ? other.m_pThrowable->clone() : nullptr;
    delete m_pThrowable;
    m_pThrowable = copy;
  }
  return *this;
}

XYLDeferredThrowable &XYLDeferredThrowable::operator=(const XYLThrowable &throwable) {
  set(throwable);
  return *this;
}

XYLDeferredThrowable::~XYLDeferredThrowable() { delete m_pThrowable; }

void XYLDeferredThrowable::set(const XYLThrowable &throwable) {
  XYLThrowable *copy = throwable.clone();
  delete m_pThrowable;
  m_pThrowable = copy;
}

void XYLDeferredThrowable::check(const XYLFileLocation &location, const char *text, const char *macroName) {
  if (m_pThrowable != nullptr)
    m_pThrowable->hurl(location, text, macroName);
}

// --- assertions ----------------------------------------------------------------

void xyl_detail::raiseAssertion(const char *file, int line, const char *statement) {
  XYLFileLocation location(file, line);
  raise([statement](const XYLFileLocation &, const char *) { return XYLAssertError(0, statement); }, location,
        "XYL_THROW");
}

void xyl_detail::hurlCopy(const XYLThrowable &throwable, const XYLFileLocation &location, const char *macroName) {
  std::unique_ptr<XYLThrowable> copy(throwable.clone());
  if (copy == nullptr)
    raise([](const XYLFileLocation &, const char *) { return XYLOutOfMemoryError(0L, nullptr); }, location, macroName);
  copy->hurl(location, nullptr, macroName);
  __builtin_unreachable(); // hurl always throws
}
