// SPDX-License-Identifier: Apache-2.0
// I18NString: SQL LIKE patterns compiled to ICU regular expressions.
//
// Translation. Every regular-expression metacharacter of the pattern is
// escaped with a backslash (the set "[\\+\\*\\?\\.\\[\\^\\$\\(\\)\\{\\|\\\\]",
// plus the closing brace and bracket, which ICU rejects or may read
// specially); control characters and unpaired surrogates are written as
// \x{...}. '_' becomes ANY, the set of every code point [\x{0}-\x{10FFFF}]
// (not '.', which ICU lets swallow a CR LF pair as one character). The
// pattern is split at its unescaped '%' signs into segments
// seg0 % seg1 % ... % segN (runs of '%' count once), and built as
//
//     (?>ANY*?(seg0)) (?>ANY*?seg1) ... (?>ANY*?segN-1) ANY*segN
//
// Every segment has a fixed length in code points, so the leftmost
// occurrence of seg0 and of each middle segment is always the best choice:
// if the rest cannot match after it, it cannot match after a later one
// either. The atomic groups keep the matcher from retrying the others, which
// bounds the work by (text length) x (pattern length) instead of letting
// "%a%a%a%a%b" explode; only the last segment keeps ordinary backtracking.
// matchLike runs matches() and also asks group 1 (seg0) to start at 0;
// substringLike runs lookingAt() and returns [start of group 1, end), the
// leftmost match, extended as far as the last segment allows.
#include <XYLCore/i18n/cpp/i18n_string.h>

#include "i18n_string_internal.h"

#include <cstdio>
#include <memory>
#include <unicode/regex.h>
#include <unicode/utf16.h>
#include <vector>

using namespace i18n_string_detail;

namespace {

// One code point, whatever it is (a lone surrogate included).
const char kAny[] = "[\\x{0}-\\x{10FFFF}]";

bool isMetacharacter(UChar32 c) {
  switch (c) {
  case '[':
  case '+':
  case '*':
  case '?':
  case '.':
  case '^':
  case '$':
  case '(':
  case ')':
  case '{':
  case '|':
  case '\\':
  case '}':
  case ']':
    return true;
  default:
    return false;
  }
}

void appendLiteral(icu::UnicodeString &regex, UChar32 c) {
  if (isMetacharacter(c)) {
    regex.append(static_cast<char16_t>('\\'));
    regex.append(c);
  } else if (c < 0x20 || c == 0x7F || U_IS_SURROGATE(c)) {
    char hex[16];
    std::snprintf(hex, sizeof hex, "\\x{%X}", static_cast<unsigned int>(c));
    regex.append(icu::UnicodeString(hex, -1, US_INV));
  } else {
    regex.append(c);
  }
}

// Runs a matcher, turning ICU failures (time or stack limits) into -7.
std::unique_ptr<icu::RegexMatcher> matcherFor(I18NPatternCode code, const icu::UnicodeString &text) {
  if (code == nullptr)
    raiseRuntime(I18N_GENERAL_FAILURE, "The LIKE pattern code is NULL.");
  UErrorCode status = U_ZERO_ERROR;
  std::unique_ptr<icu::RegexMatcher> matcher(code->matcher(text, status));
  if (U_FAILURE(status) || matcher == nullptr)
    raiseRuntime(I18N_GENERAL_FAILURE, "The LIKE pattern could not be applied.");
  return matcher;
}

} // namespace

I18NPatternCode I18NString::getPatternCode(const I18NString &pattern, unsigned int escape) {
  // A copy, so that an ASCII-mode pattern stays in ASCII mode.
  icu::UnicodeString text;
  if (I18NStringAccess::unicodeForm(pattern) != nullptr && I18NStringAccess::asciiLength(pattern) < 0) {
    text = *I18NStringAccess::unicodeForm(pattern);
  } else {
    int n = I18NStringAccess::asciiLength(pattern);
    char16_t *buffer = text.getBuffer(n + 1);
    if (buffer == nullptr)
      raiseHeapFailure();
    widenAscii(buffer, I18NStringAccess::asciiBuffer(pattern), static_cast<std::size_t>(n));
    text.releaseBuffer(n);
  }
  const char16_t *units = text.getBuffer();
  int length = text.length();
  std::vector<icu::UnicodeString> segments(1);
  bool escaped = false;
  for (int i = 0; i < length;) {
    UChar32 c;
    U16_NEXT(units, i, length, c);
    if (escaped) {
      appendLiteral(segments.back(), c);
      escaped = false;
    } else if (escape != 0 && static_cast<unsigned int>(c) == escape) {
      escaped = true;
    } else if (c == '%') {
      // Runs of '%' mean the same as one.
      if (!(segments.size() > 1 && segments.back().isEmpty()))
        segments.emplace_back();
    } else if (c == '_') {
      segments.back().append(icu::UnicodeString(kAny, -1, US_INV));
    } else {
      appendLiteral(segments.back(), c);
    }
  }
  if (escaped) // an escape at the very end stands for itself
    appendLiteral(segments.back(), static_cast<UChar32>(escape));

  const icu::UnicodeString any(kAny, -1, US_INV);
  icu::UnicodeString regex("(?>", -1, US_INV);
  regex.append(any).append(icu::UnicodeString("*?(", -1, US_INV));
  regex.append(segments.front());
  regex.append(icu::UnicodeString("))", -1, US_INV));
  for (std::size_t k = 1; k + 1 < segments.size(); ++k) {
    regex.append(icu::UnicodeString("(?>", -1, US_INV)).append(any).append(icu::UnicodeString("*?", -1, US_INV));
    regex.append(segments[k]);
    regex.append(static_cast<char16_t>(')'));
  }
  if (segments.size() > 1) {
    regex.append(any).append(static_cast<char16_t>('*'));
    regex.append(segments.back());
  }
  UErrorCode status = U_ZERO_ERROR;
  UParseError parseError;
  I18NPatternCode code = icu::RegexPattern::compile(regex, UREGEX_DOTALL, parseError, status);
  if (U_FAILURE(status) || code == nullptr) {
    delete code;
    raiseRuntime(I18N_GENERAL_FAILURE, "The LIKE pattern could not be compiled.");
  }
  return code;
}

void I18NString::deletePatternCode(I18NPatternCode &code) {
  delete code;
  code = nullptr;
}

bool I18NString::matchLike(I18NPatternCode code) const {
  std::unique_ptr<icu::RegexMatcher> matcher = matcherFor(code, forceUnicode());
  UErrorCode status = U_ZERO_ERROR;
  bool matched = matcher->matches(status) && matcher->start(1, status) == 0;
  if (U_FAILURE(status))
    raiseRuntime(I18N_GENERAL_FAILURE, "The LIKE pattern could not be applied.");
  return matched;
}

bool I18NString::matchLike(const I18NString &pattern, unsigned int escape) const {
  I18NPatternCode code = getPatternCode(pattern, escape);
  std::unique_ptr<icu::RegexPattern> owner(code);
  return matchLike(code);
}

I18NString I18NString::substringLike(I18NPatternCode code) const {
  const icu::UnicodeString &text = forceUnicode();
  std::unique_ptr<icu::RegexMatcher> matcher = matcherFor(code, text);
  UErrorCode status = U_ZERO_ERROR;
  I18NString result(m_pAllocator, m_pAllocatorContext);
  if (matcher->lookingAt(status) && U_SUCCESS(status)) {
    int start = matcher->start(1, status);
    int end = matcher->end(status);
    if (U_SUCCESS(status) && end > start)
      result.assignUnits(text.getBuffer() + start, end - start);
  }
  if (U_FAILURE(status))
    raiseRuntime(I18N_GENERAL_FAILURE, "The LIKE pattern could not be applied.");
  return result;
}

I18NString I18NString::substringLike(const I18NString &pattern, unsigned int escape) const {
  I18NPatternCode code = getPatternCode(pattern, escape);
  std::unique_ptr<icu::RegexPattern> owner(code);
  return substringLike(code);
}
