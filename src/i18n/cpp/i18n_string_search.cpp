// SPDX-License-Identifier: Apache-2.0
// I18NString: the four search families (find, rfind, findFirstOf /
// findLastOf, findFirstNotOf / findLastNotOf).
//
// Shared rules: an empty string, an empty needle or the code point 0 gives
// -1; a negative start counts as 0; a start at or beyond the length (in code
// units) gives -1. While both sides are ASCII the search runs over bytes.
// A needle holding a code point of 0x80 or more first moves the string to
// Unicode mode (lazily, under its stripe lock). In Unicode mode find and
// rfind bring the needle into the string's normalisation form first
// (normalizeParameter); the -Of families take the needle as a set of code
// points as it stands.
#include <XYLCore/i18n/cpp/i18n_string.h>

#include "i18n_string_internal.h"

#include <algorithm>
#include <climits>
#include <string_view>
#include <unicode/utf16.h>
#include <vector>

using namespace i18n_string_detail;

namespace {

// The ASCII content of a string, or null when its content is not ASCII.
const char *asciiContent(const I18NString &s, int &length) {
  icu::UnicodeString *form = I18NStringAccess::unicodeForm(s);
  int asciiLength = I18NStringAccess::asciiLength(s);
  if (form != nullptr && asciiLength < 0)
    return nullptr;
  length = asciiLength;
  return I18NStringAccess::asciiBuffer(s);
}

// A needle as UTF-16 (a copy when it is in ASCII mode).
icu::UnicodeString unitsOf(const I18NString &s) {
  int length = 0;
  const char *bytes = asciiContent(s, length);
  if (bytes == nullptr)
    return I18NStringAccess::unicodeForm(s)->tempSubString();
  icu::UnicodeString text;
  char16_t *units = text.getBuffer(length + 1);
  if (units == nullptr)
    raiseHeapFailure();
  widenAscii(units, bytes, static_cast<std::size_t>(length));
  text.releaseBuffer(length);
  return text;
}

std::size_t codePointCount(const unsigned int *codePoints, bool &ascii) {
  ascii = true;
  std::size_t n = 0;
  if (codePoints == nullptr)
    return 0;
  for (; codePoints[n] != 0; ++n)
    ascii = ascii && codePoints[n] < 0x80;
  return n;
}

// A set of code points: a bitmap for ASCII members, a sorted list for the
// others.
class CodePointSet {
public:
  void add(UChar32 c) {
    if (c < 0x80)
      m_ascii[c >> 6] |= 1ULL << (c & 63);
    else
      m_others.push_back(c);
  }
  void seal() {
    std::sort(m_others.begin(), m_others.end());
    m_others.erase(std::unique(m_others.begin(), m_others.end()), m_others.end());
  }
  bool contains(UChar32 c) const {
    if (c < 0x80)
      return (m_ascii[c >> 6] >> (c & 63)) & 1;
    return std::binary_search(m_others.begin(), m_others.end(), c);
  }
  bool containsAscii(unsigned char b) const { return (m_ascii[b >> 6] >> (b & 63)) & 1; }
  bool hasNonAscii() const { return !m_others.empty(); }
  bool empty() const { return m_ascii[0] == 0 && m_ascii[1] == 0 && m_others.empty(); }

private:
  unsigned long long m_ascii[2] = {0, 0};
  std::vector<UChar32> m_others;
};

} // namespace

// The needle brought into this string's normalisation form: the form last
// given to normalize (while the string has not changed since), else the
// default form while the string is marked normalised; unchanged while
// normalisation is off or the string's form is not known.
icu::UnicodeString I18NString::normalizeParameter(const icu::UnicodeString &needle) const {
  if ((m_flags & FLAG_NORMALIZATION_OFF) != 0)
    return needle;
  I18NNormalizationForms form = I18N_NORMALIZATION_DEFAULT;
  if (m_normalizationForm > 0)
    form = static_cast<I18NNormalizationForms>(m_normalizationForm - 1);
  else if ((m_flags & FLAG_NORMALIZED) == 0)
    return needle;
  bool ascii = true;
  for (int i = 0; ascii && i < needle.length(); ++i)
    ascii = needle.charAt(i) < 0x80;
  if (ascii)
    return needle; // ASCII text is in every normalisation form
  I18NString copy(needle);
  copy.skipCompatibilityTransliteration(true);
  copy.normalize(form);
  return copy.getUnicodeString();
}

// find / rfind over code units. `needle` holds `needleLength` units.
I18NStringOffset I18NString::findUnits(const unsigned short *needle, int needleLength, bool needleAscii,
                                       I18NStringOffset start, bool backward) const {
  int length = unitLength();
  if (length <= 0 || needleLength <= 0)
    return -1;
  if (start < 0)
    start = 0;
  if (start >= length)
    return -1;
  int asciiLength = 0;
  const char *bytes = needleAscii ? asciiContent(*this, asciiLength) : nullptr;
  if (bytes != nullptr) {
    // Narrow the needle (its units are all below 0x80).
    char small[64];
    std::string narrowed;
    char *n = small;
    if (needleLength > static_cast<int>(sizeof small)) {
      narrowed.resize(static_cast<std::size_t>(needleLength));
      n = &narrowed[0];
    }
    for (int i = 0; i < needleLength; ++i)
      n[i] = static_cast<char>(needle[i]);
    std::string_view haystack(bytes, static_cast<std::size_t>(asciiLength));
    std::string_view what(n, static_cast<std::size_t>(needleLength));
    std::size_t at = backward ? haystack.rfind(what, static_cast<std::size_t>(start))
                              : haystack.find(what, static_cast<std::size_t>(start));
    return at == std::string_view::npos ? -1 : static_cast<I18NStringOffset>(at);
  }
  const icu::UnicodeString &form = forceUnicode();
  icu::UnicodeString text(reinterpret_cast<const char16_t *>(needle), needleLength);
  if (!needleAscii)
    text = normalizeParameter(text);
  if (text.isEmpty())
    return -1;
  if (!backward)
    return form.indexOf(text, start);
  long end = static_cast<long>(start) + text.length();
  if (end > length)
    end = length;
  return form.lastIndexOf(text, 0, static_cast<int32_t>(end));
}

I18NStringOffset I18NString::find(const I18NString &needle, I18NStringOffset start) const {
  int needleLength = 0;
  const char *bytes = asciiContent(needle, needleLength);
  if (bytes != nullptr && needleLength > 0) {
    // Both ASCII: a plain byte search without any copy of the needle.
    int length = 0;
    const char *haystack = asciiContent(*this, length);
    if (haystack != nullptr) {
      if (length <= 0)
        return -1;
      if (start < 0)
        start = 0;
      if (start >= length)
        return -1;
      std::size_t at =
          std::string_view(haystack, static_cast<std::size_t>(length))
              .find(std::string_view(bytes, static_cast<std::size_t>(needleLength)), static_cast<std::size_t>(start));
      return at == std::string_view::npos ? -1 : static_cast<I18NStringOffset>(at);
    }
  }
  if (needle.empty())
    return -1;
  icu::UnicodeString units = unitsOf(needle);
  return findUnits(reinterpret_cast<const unsigned short *>(units.getBuffer()), units.length(), bytes != nullptr, start,
                   false);
}

I18NStringOffset I18NString::find(const unsigned int *needle, I18NStringOffset start) const {
  bool ascii;
  std::size_t n = codePointCount(needle, ascii);
  if (n == 0)
    return -1;
  icu::UnicodeString units;
  for (std::size_t i = 0; i < n; ++i)
    if (needle[i] <= 0x10FFFF)
      units.append(static_cast<UChar32>(needle[i]));
  return findUnits(reinterpret_cast<const unsigned short *>(units.getBuffer()), units.length(), ascii, start, false);
}

I18NStringOffset I18NString::find(unsigned int codePoint, I18NStringOffset start) const {
  if (codePoint == 0 || codePoint > 0x10FFFF)
    return -1;
  int length = 0;
  const char *bytes = codePoint < 0x80 ? asciiContent(*this, length) : nullptr;
  if (bytes != nullptr) {
    if (length <= 0)
      return -1;
    if (start < 0)
      start = 0;
    if (start >= length)
      return -1;
    const void *at = std::memchr(bytes + start, static_cast<int>(codePoint), static_cast<std::size_t>(length - start));
    return at == nullptr ? -1 : static_cast<I18NStringOffset>(static_cast<const char *>(at) - bytes);
  }
  icu::UnicodeString units(static_cast<UChar32>(codePoint));
  return findUnits(reinterpret_cast<const unsigned short *>(units.getBuffer()), units.length(), codePoint < 0x80, start,
                   false);
}

I18NStringOffset I18NString::rfind(const I18NString &needle, I18NStringOffset start) const {
  if (needle.empty())
    return -1;
  int needleLength = 0;
  bool ascii = asciiContent(needle, needleLength) != nullptr;
  icu::UnicodeString units = unitsOf(needle);
  return findUnits(reinterpret_cast<const unsigned short *>(units.getBuffer()), units.length(), ascii, start, true);
}

I18NStringOffset I18NString::rfind(const unsigned int *needle, I18NStringOffset start) const {
  bool ascii;
  std::size_t n = codePointCount(needle, ascii);
  if (n == 0)
    return -1;
  icu::UnicodeString units;
  for (std::size_t i = 0; i < n; ++i)
    if (needle[i] <= 0x10FFFF)
      units.append(static_cast<UChar32>(needle[i]));
  return findUnits(reinterpret_cast<const unsigned short *>(units.getBuffer()), units.length(), ascii, start, true);
}

I18NStringOffset I18NString::rfind(unsigned int codePoint, I18NStringOffset start) const {
  if (codePoint == 0 || codePoint > 0x10FFFF)
    return -1;
  icu::UnicodeString units(static_cast<UChar32>(codePoint));
  return findUnits(reinterpret_cast<const unsigned short *>(units.getBuffer()), units.length(), codePoint < 0x80, start,
                   true);
}

I18NStringOffset I18NString::rfind(const I18NString &needle) const { return rfind(needle, unitLength() - 1); }
I18NStringOffset I18NString::rfind(const unsigned int *needle) const { return rfind(needle, unitLength() - 1); }
I18NStringOffset I18NString::rfind(unsigned int codePoint) const { return rfind(codePoint, unitLength() - 1); }

// The -Of families. `inSet` true: first/last code point in the set; false:
// outside it.
I18NStringOffset I18NString::findSet(const unsigned int *set, int setLength, I18NStringOffset start, bool backward,
                                     bool inSet) const {
  int length = unitLength();
  if (length <= 0 || setLength <= 0)
    return -1;
  if (start < 0)
    start = 0;
  if (start >= length)
    return -1;
  CodePointSet members;
  for (int i = 0; i < setLength; ++i)
    if (set[i] <= 0x10FFFF)
      members.add(static_cast<UChar32>(set[i]));
  members.seal();
  int asciiLength = 0;
  const char *bytes = members.hasNonAscii() ? nullptr : asciiContent(*this, asciiLength);
  if (bytes != nullptr) {
    const unsigned char *b = reinterpret_cast<const unsigned char *>(bytes);
    if (!backward) {
      for (int i = start; i < asciiLength; ++i)
        if (members.containsAscii(b[i]) == inSet)
          return i;
    } else {
      for (int i = start; i >= 0; --i)
        if (members.containsAscii(b[i]) == inSet)
          return i;
    }
    return -1;
  }
  const icu::UnicodeString &form = forceUnicode();
  const char16_t *units = form.getBuffer();
  if (!backward) {
    int i = start;
    while (i < length) {
      int at = i;
      UChar32 c;
      U16_NEXT(units, i, length, c);
      if (members.contains(c) == inSet)
        return at;
    }
    return -1;
  }
  // Backward: begin with the code point that holds the unit at `start`.
  int i = start + 1;
  if (U16_IS_LEAD(units[start]) && start + 1 < length && U16_IS_TRAIL(units[start + 1]))
    i = start + 2;
  while (i > 0) {
    UChar32 c;
    U16_PREV(units, 0, i, c);
    if (members.contains(c) == inSet)
      return i;
  }
  return -1;
}

namespace {
// The code points of a string, for the -Of families.
std::vector<unsigned int> codePointsOf(const I18NString &s) {
  std::vector<unsigned int> points;
  int length = 0;
  const char *bytes = asciiContent(s, length);
  if (bytes != nullptr) {
    points.assign(reinterpret_cast<const unsigned char *>(bytes),
                  reinterpret_cast<const unsigned char *>(bytes) + length);
    return points;
  }
  const icu::UnicodeString &form = *I18NStringAccess::unicodeForm(s);
  const char16_t *units = form.getBuffer();
  int n = form.length();
  for (int i = 0; i < n;) {
    UChar32 c;
    U16_NEXT(units, i, n, c);
    points.push_back(static_cast<unsigned int>(c));
  }
  return points;
}

int arrayLength(const unsigned int *set) {
  bool ascii;
  std::size_t n = codePointCount(set, ascii);
  return n > static_cast<std::size_t>(INT_MAX) ? INT_MAX : static_cast<int>(n);
}
} // namespace

#define XYL_I18N_SET_FAMILY(Name, Backward, InSet)                                                                     \
  I18NStringOffset I18NString::Name(const I18NString &set, I18NStringOffset start) const {                             \
    std::vector<unsigned int> points = codePointsOf(set);                                                              \
    return findSet(points.data(), static_cast<int>(points.size()), start, Backward, InSet);                            \
  }                                                                                                                    \
  I18NStringOffset I18NString::Name(const unsigned int *set, I18NStringOffset start) const {                           \
    return findSet(set, arrayLength(set), start, Backward, InSet);                                                     \
  }                                                                                                                    \
  I18NStringOffset I18NString::Name(unsigned int codePoint, I18NStringOffset start) const {                            \
    unsigned int set[2] = {codePoint, 0};                                                                              \
    return findSet(set, codePoint == 0 ? 0 : 1, start, Backward, InSet);                                               \
  }

XYL_I18N_SET_FAMILY(findFirstOf, false, true)
XYL_I18N_SET_FAMILY(findFirstNotOf, false, false)
XYL_I18N_SET_FAMILY(findLastOf, true, true)
XYL_I18N_SET_FAMILY(findLastNotOf, true, false)

#undef XYL_I18N_SET_FAMILY

I18NStringOffset I18NString::findLastOf(const I18NString &set) const { return findLastOf(set, unitLength() - 1); }
I18NStringOffset I18NString::findLastOf(const unsigned int *set) const { return findLastOf(set, unitLength() - 1); }
I18NStringOffset I18NString::findLastOf(unsigned int codePoint) const {
  return findLastOf(codePoint, unitLength() - 1);
}
I18NStringOffset I18NString::findLastNotOf(const I18NString &set) const { return findLastNotOf(set, unitLength() - 1); }
I18NStringOffset I18NString::findLastNotOf(const unsigned int *set) const {
  return findLastNotOf(set, unitLength() - 1);
}
I18NStringOffset I18NString::findLastNotOf(unsigned int codePoint) const {
  return findLastNotOf(codePoint, unitLength() - 1);
}
