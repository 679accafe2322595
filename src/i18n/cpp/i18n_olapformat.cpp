// SPDX-License-Identifier: Apache-2.0
// OLAP-style number format strings turned into ICU decimal patterns.
#include "i18n/cpp/i18n_olapformat.h"

#include <unicode/uchar.h>

#include <vector>

namespace i18n_olap {

namespace {

bool isPlaceholder(UChar c) { return c == u'0' || c == u'#' || c == u'?'; }

// Characters an ICU affix shows as themselves without quoting.
bool isPlainAffixChar(UChar c) {
  // 'E' right after the digits would start an ICU exponent.
  if ((c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z'))
    return c != u'E';
  switch (c) {
  case u' ':
  case u'$':
  case u'(':
  case u')':
  case u'/':
  case u':':
  case u'[':
  case u']':
  case u'{':
  case u'}':
  case u'<':
  case u'>':
  case u'!':
  case u'&':
  case u'^':
  case u'~':
  case u'=':
  case u'_':
  case u'|':
  case u'\'':
    return true;
  default:
    return c >= 0x80 && c != 0x2030 && c != 0x00A4 && c != 0x2031;
  }
}

// An affix under construction: literal runs are quoted for ICU as a whole
// when they hold any character ICU would read as a symbol; '%' stays
// unquoted (it is ICU's percent too).
struct Affix {
  icu::UnicodeString icu; // ICU form
  icu::UnicodeString raw; // the text as shown
  icu::UnicodeString run; // pending literal run

  void literal(UChar c) {
    run.append(c);
    raw.append(c);
  }
  void percent() {
    flush();
    icu.append(u'%');
    raw.append(u'%');
  }
  void flush() {
    if (run.isEmpty())
      return;
    bool plain = true;
    for (int32_t i = 0; i < run.length(); ++i)
      plain = plain && isPlainAffixChar(run[i]);
    if (!plain)
      icu.append(u'\'');
    for (int32_t i = 0; i < run.length(); ++i) {
      if (run[i] == u'\'')
        icu.append(u'\'');
      icu.append(run[i]);
    }
    if (!plain)
      icu.append(u'\'');
    run.remove();
  }
};

// One section, parsed.
struct Section {
  Affix prefix;
  Affix suffix;
  icu::UnicodeString intDigits;  // '0' '#' in order ('?' read as '#')
  icu::UnicodeString fracDigits; // the same after the decimal point
  bool grouping = false;
  bool decimalPoint = false;
  bool exponent = false;
  bool exponentPlus = false;
  bool lowerCaseExponent = false;
  int exponentDigits = 0;
  int scale = 0;
  bool hasDigits = false;

  // The numeric part as ICU writes it.
  icu::UnicodeString core() const {
    icu::UnicodeString out;
    int32_t firstZero = intDigits.indexOf(u'0');
    int intMin = firstZero < 0 ? 0 : intDigits.length() - firstZero;
    if (exponent) {
      for (int i = intMin; i < intDigits.length(); ++i)
        out.append(u'#');
      for (int i = 0; i < intMin; ++i)
        out.append(u'0');
      if (intDigits.isEmpty())
        out.append(u'#');
    } else if (grouping) {
      int width = intMin > 4 ? intMin : 4;
      for (int k = 0; k < width; ++k) {
        int p = width - 1 - k;
        out.append(p < intMin ? u'0' : u'#');
        if (p > 0 && p % 3 == 0)
          out.append(u',');
      }
    } else if (intMin == 0) {
      out.append(u'#');
    } else {
      for (int i = 0; i < intMin; ++i)
        out.append(u'0');
    }
    if (decimalPoint) {
      out.append(u'.');
      int32_t lastZero = fracDigits.lastIndexOf(u'0');
      int fracMin = lastZero + 1;
      for (int i = 0; i < fracMin; ++i)
        out.append(u'0');
      for (int i = fracMin; i < fracDigits.length(); ++i)
        out.append(u'#');
    }
    if (exponent) {
      out.append(u'E');
      if (exponentPlus)
        out.append(u'+');
      int n = exponentDigits > 0 ? exponentDigits : 1;
      for (int i = 0; i < n; ++i)
        out.append(u'0');
    }
    return out;
  }
};

enum State { Prefix, Integer, Fraction, Exponent, Suffix };

bool parseSection(const icu::UnicodeString &s, Section &sec, const char *&error) {
  State state = Prefix;
  int32_t n = s.length();
  auto literal = [&](UChar c) {
    if (state == Prefix) {
      sec.prefix.literal(c);
    } else {
      state = Suffix;
      sec.suffix.literal(c);
    }
  };
  for (int32_t i = 0; i < n; ++i) {
    UChar c = s[i];
    if (c == u'"') {
      int32_t end = s.indexOf(u'"', i + 1);
      if (end < 0) {
        error = "unterminated double quote";
        return false;
      }
      if (state != Prefix)
        state = Suffix;
      for (int32_t k = i + 1; k < end; ++k)
        literal(s[k]);
      i = end;
    } else if (c == u'\\') {
      if (i + 1 >= n) {
        error = "backslash at the end";
        return false;
      }
      literal(s[++i]);
    } else if (isPlaceholder(c)) {
      UChar d = c == u'?' ? u'#' : c;
      if (state == Suffix) {
        error = "digit placeholder after literal text";
        return false;
      }
      sec.hasDigits = true;
      if (state == Prefix)
        state = Integer;
      if (state == Integer)
        sec.intDigits.append(d);
      else if (state == Fraction)
        sec.fracDigits.append(d);
      else
        ++sec.exponentDigits;
    } else if (c == u'.' && (state == Prefix || state == Integer)) {
      state = Fraction;
      sec.decimalPoint = true;
    } else if (c == u',' && (state == Integer || state == Fraction) && sec.hasDigits) {
      int32_t k = i;
      while (k < n && s[k] == u',')
        ++k;
      if (k < n && isPlaceholder(s[k])) {
        if (state == Fraction) {
          error = "comma between decimal places";
          return false;
        }
        sec.grouping = true;
      } else {
        sec.scale -= 3 * (k - i);
        if (sec.scale < -300) {
          error = "too many scaling commas";
          return false;
        }
      }
      i = k - 1;
    } else if ((c == u'E' || c == u'e') && (state == Integer || state == Fraction) && sec.hasDigits && i + 1 < n &&
               (isPlaceholder(s[i + 1]) ||
                ((s[i + 1] == u'+' || s[i + 1] == u'-') && i + 2 < n && isPlaceholder(s[i + 2])))) {
      state = Exponent;
      sec.exponent = true;
      sec.lowerCaseExponent = c == u'e';
      if (s[i + 1] == u'+' || s[i + 1] == u'-') {
        sec.exponentPlus = s[i + 1] == u'+';
        ++i;
      }
    } else if (c == u'%') {
      if (state == Prefix) {
        sec.prefix.percent();
      } else {
        state = Suffix;
        sec.suffix.percent();
      }
    } else {
      literal(c);
    }
  }
  if (sec.intDigits.length() + sec.fracDigits.length() > 400 || sec.exponentDigits > 8) {
    error = "too many digit placeholders";
    return false;
  }
  sec.prefix.flush();
  sec.suffix.flush();
  return true;
}

// Splits at ';' outside double quotes and not escaped by a backslash.
std::vector<icu::UnicodeString> splitSections(const icu::UnicodeString &text) {
  std::vector<icu::UnicodeString> sections(1);
  bool quoted = false;
  for (int32_t i = 0; i < text.length(); ++i) {
    UChar c = text[i];
    if (c == u'\\' && !quoted && i + 1 < text.length()) {
      sections.back().append(c).append(text[++i]);
      continue;
    }
    if (c == u'"')
      quoted = !quoted;
    if (c == u';' && !quoted)
      sections.emplace_back();
    else
      sections.back().append(c);
  }
  return sections;
}

} // namespace

bool findNamedFormat(const icu::UnicodeString &text, OlapFormat &out) {
  static const struct {
    const char16_t *name;
    const char16_t *pattern;
  } kNamed[] = {
      {u"General Number", u"0.###############"},
      {u"Currency", u"\u00A4#,##0.00"},
      {u"Fixed", u"0.00"},
      {u"Standard", u"#,##0.00"},
      {u"Percent", u"0.00%"},
      {u"Scientific", u"0.00E+00"},
  };
  for (const auto &named : kNamed) {
    if (text.caseCompare(icu::UnicodeString(named.name), U_FOLD_CASE_DEFAULT) == 0) {
      out = OlapFormat();
      out.pattern = icu::UnicodeString(named.pattern);
      out.localeCurrency = named.name[0] == u'C';
      return true;
    }
  }
  return false;
}

bool looksLikeOlap(const icu::UnicodeString &text) {
  bool quoted = false;
  bool digitSeen = false;
  int semicolons = 0;
  int32_t n = text.length();
  for (int32_t i = 0; i < n; ++i) {
    UChar c = text[i];
    if (c == u'\'') {
      quoted = !quoted;
      continue;
    }
    if (quoted)
      continue;
    UChar next = i + 1 < n ? text[i + 1] : 0;
    switch (c) {
    case u'\\':
    case u'"':
    case u'?':
      return true;
    case u';':
      if (++semicolons >= 2)
        return true;
      digitSeen = false;
      break;
    case u'0':
    case u'#':
      digitSeen = true;
      break;
    case u'e':
      if (digitSeen && (next == u'+' || next == u'-' || next == u'0' || next == u'#'))
        return true;
      break;
    case u'E':
      if (digitSeen && next == u'-')
        return true;
      break;
    case u',': {
      int32_t k = i;
      while (k < n && text[k] == u',')
        ++k;
      if (digitSeen && (k >= n || (text[k] != u'0' && text[k] != u'#')))
        return true;
      break;
    }
    default:
      break;
    }
  }
  return false;
}

bool convertOlap(const icu::UnicodeString &text, OlapFormat &out, const char *&error) {
  out = OlapFormat();
  std::vector<icu::UnicodeString> parts = splitSections(text);
  if (parts.size() > 3) {
    error = "more than three sections";
    return false;
  }
  Section sections[3];
  for (std::size_t i = 0; i < parts.size(); ++i) {
    if (!parseSection(parts[i], sections[i], error))
      return false;
  }
  const Section &positive = sections[0];
  if (!positive.hasDigits) {
    error = "the first section has no digit placeholder";
    return false;
  }
  icu::UnicodeString core = positive.core();
  out.pattern.append(positive.prefix.icu).append(core).append(positive.suffix.icu);
  if (parts.size() > 1 && !parts[1].isEmpty()) {
    const Section &negative = sections[1];
    if (!negative.hasDigits) {
      error = "the negative section has no digit placeholder";
      return false;
    }
    // ICU takes only the affixes of a negative subpattern.
    out.pattern.append(u';').append(negative.prefix.icu).append(core).append(negative.suffix.icu);
  }
  out.scale = positive.scale;
  out.lowerCaseExponent = positive.lowerCaseExponent;
  if (parts.size() > 2 && !parts[2].isEmpty()) {
    const Section &zero = sections[2];
    out.hasZero = true;
    out.zeroIsLiteral = !zero.hasDigits;
    if (out.zeroIsLiteral)
      out.zeroText.append(zero.prefix.raw).append(zero.suffix.raw);
    else
      out.zeroText.append(zero.prefix.icu).append(zero.core()).append(zero.suffix.icu);
  }
  return true;
}

} // namespace i18n_olap
