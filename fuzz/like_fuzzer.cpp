// SPDX-License-Identifier: Apache-2.0
// SQL LIKE fuzz target. The first byte chooses the escape code point (0:
// none, else one of a few characters, regular-expression metacharacters
// among them); the rest is split at the first zero byte into the pattern and
// the text, both read as UTF-8 with invalid bytes substituted. matchLike
// must agree with a small dynamic-programming matcher, and substringLike
// must return the leftmost-starting, then longest, matching piece. Inputs
// are cut to keep the reference matcher cheap.
#include <XYLCore/ExceptionHierarchy/XYLErrors.h>
#include <XYLCore/i18n/cpp/i18n_converter.h>
#include <XYLCore/i18n/cpp/i18n_string.h>

#include <unicode/unistr.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

namespace {
void check(bool condition) {
  if (!condition)
    std::abort();
}

std::vector<UChar32> codePoints(const I18NString &s) {
  std::vector<UChar32> out;
  const icu::UnicodeString &u = s.getUnicodeString();
  for (int i = 0; i < u.length(); i = u.moveIndex32(i, 1))
    out.push_back(u.char32At(i));
  return out;
}

struct Token {
  int kind; // 0 literal, 1 one code point, 2 any run
  UChar32 c;
};

std::vector<Token> tokens(const std::vector<UChar32> &p, UChar32 escape) {
  std::vector<Token> out;
  for (size_t i = 0; i < p.size(); ++i) {
    if (escape != 0 && p[i] == escape)
      out.push_back({0, i + 1 < p.size() ? p[++i] : escape});
    else if (p[i] == '%')
      out.push_back({2, 0});
    else if (p[i] == '_')
      out.push_back({1, 0});
    else
      out.push_back({0, p[i]});
  }
  return out;
}

// ends[j] tells whether text[from, from + j) matches the whole pattern.
std::vector<char> matchingEnds(const std::vector<Token> &t, const std::vector<UChar32> &text, size_t from) {
  size_t n = text.size() - from;
  std::vector<char> previous(n + 1, 0), current(n + 1, 0);
  previous[0] = 1;
  for (const Token &k : t) {
    for (size_t j = 0; j <= n; ++j) {
      if (k.kind == 2)
        current[j] = previous[j] || (j > 0 && current[j - 1]);
      else
        current[j] = j > 0 && previous[j - 1] && (k.kind == 1 || k.c == text[from + j - 1]);
    }
    previous.swap(current);
  }
  return previous;
}

I18NString fromUtf8(const char *bytes, size_t length) {
  I18NConverter converter("UTF-8");
  converter.setBuiltInUnconvertibleInputSequenceCallback(2);
  return I18NString(bytes, converter, static_cast<int>(length));
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  if (size == 0)
    return 0;
  static const UChar32 kEscapes[] = {0, '!', '\\', '%', '_', '[', 0xE9, '.'};
  UChar32 escape = kEscapes[data[0] & 7];
  const char *rest = reinterpret_cast<const char *>(data + 1);
  size_t restLength = size - 1;
  const char *zero = static_cast<const char *>(std::memchr(rest, 0, restLength));
  size_t patternLength = zero != nullptr ? static_cast<size_t>(zero - rest) : restLength;
  const char *textBytes = zero != nullptr ? zero + 1 : rest + restLength;
  size_t textLength = restLength - patternLength - (zero != nullptr ? 1 : 0);
  if (patternLength > 64)
    patternLength = 64;
  if (textLength > 256)
    textLength = 256;
  try {
    I18NString pattern = fromUtf8(rest, patternLength);
    I18NString text = fromUtf8(textBytes, textLength);
    std::vector<Token> t = tokens(codePoints(pattern), escape);
    std::vector<UChar32> p = codePoints(text);

    I18NPatternCode code = I18NString::getPatternCode(pattern, static_cast<unsigned int>(escape));
    bool matched = text.matchLike(code);
    I18NString piece = text.substringLike(code);
    I18NString::deletePatternCode(code);
    check(matched == (matchingEnds(t, p, 0).back() != 0));

    // The leftmost start at which anything matches, and there the longest end.
    bool found = false;
    size_t start = 0, end = 0;
    for (size_t from = 0; from <= p.size() && !found; ++from) {
      std::vector<char> ends = matchingEnds(t, p, from);
      for (size_t j = ends.size(); j-- > 0 && !found;)
        if (ends[j]) {
          found = true;
          start = from;
          end = from + j;
        }
    }
    std::vector<UChar32> got = codePoints(piece);
    if (!found) {
      check(got.empty());
    } else {
      check(got.size() == end - start);
      for (size_t k = 0; k < got.size(); ++k)
        check(got[k] == p[start + k]);
    }
  } catch (I18NRuntimeError &) {
    // A documented outcome (for instance ICU refusing an expression).
  }
  return 0;
}
