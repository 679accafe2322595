// SPDX-License-Identifier: Apache-2.0
#include <XYLCore/ExceptionHierarchy/XYLErrors.h>
#include <XYLCore/Utility/XYLUtStrTok.h>

#include <cstring>
#include <new>

namespace {
const char kDefaultDelimiters[] = "\t\n\v\f\r ";
} // namespace

XYLUtStrTok::XYLUtStrTok(const char *text, const char *delimiters)
    : m_pText(nullptr), m_pPosition(nullptr), m_lLength(0), m_pToken(nullptr), m_lTokenCapacity(0),
      m_pDelimiters(nullptr) {
  set(text, delimiters);
}

XYLUtStrTok::~XYLUtStrTok() { delete[] m_pToken; }

const char *XYLUtStrTok::nextToken(const char *text, const char *&position, long &length, const char *delimiters) {
  if (text == nullptr) {
    position = nullptr;
    length = 0;
    return nullptr;
  }
  if (position == nullptr) {
    position = text;
    length = 0;
  } else {
    position += length;
    // Skip the delimiter that ended the previous token.
    if (*position != 0)
      ++position;
  }
  if (delimiters == nullptr)
    delimiters = kDefaultDelimiters;
  position += std::strspn(position, delimiters);
  length = static_cast<long>(std::strcspn(position, delimiters));
  if (*position == 0)
    position = nullptr;
  return position;
}

long XYLUtStrTok::countTokens(const char *text, const char *delimiters) {
  const char *position = nullptr;
  long length = 0;
  long count = 0;
  while (nextToken(text, position, length, delimiters) != nullptr)
    ++count;
  return count;
}

void XYLUtStrTok::set(const char *text, const char *delimiters) {
  if (text == nullptr) {
    clear();
    return;
  }
  long needed = static_cast<long>(std::strlen(text)) + 1;
  if (m_lTokenCapacity < needed) {
    char *token = new (std::nothrow) char[static_cast<std::size_t>(needed)];
    if (token == nullptr)
      XYL_THROW(XYLOutOfMemoryError(0L, nullptr));
    delete[] m_pToken;
    m_pToken = token;
    m_lTokenCapacity = needed;
  }
  m_pText = text;
  m_pDelimiters = delimiters;
  reset();
}

void XYLUtStrTok::reset() {
  m_pPosition = nullptr;
  m_lLength = 0;
  if (m_pToken != nullptr)
    m_pToken[0] = 0;
}

void XYLUtStrTok::clear() {
  delete[] m_pToken;
  m_pToken = nullptr;
  m_lTokenCapacity = 0;
  m_pText = nullptr;
  m_pPosition = nullptr;
  m_lLength = 0;
}

char *XYLUtStrTok::next(const char *delimiters) {
  if (delimiters == nullptr)
    delimiters = m_pDelimiters;
  const char *token = nextToken(m_pText, m_pPosition, m_lLength, delimiters);
  if (token == nullptr || m_pToken == nullptr)
    return nullptr;
  // The buffer was sized for the text given to set(); a text the caller has
  // lengthened since then is cut rather than overrun.
  long length = m_lLength < m_lTokenCapacity ? m_lLength : m_lTokenCapacity - 1;
  std::memcpy(m_pToken, token, static_cast<std::size_t>(length));
  m_pToken[length] = 0;
  return m_pToken;
}
