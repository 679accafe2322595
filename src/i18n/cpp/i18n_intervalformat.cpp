// SPDX-License-Identifier: Apache-2.0
// I18NIntervalFormat: durations as text, in digits or with unit words.
#include <XYLCore/ExceptionHierarchy/Errors/I18NRuntimeError.h>
#include <XYLCore/ExceptionHierarchy/XYLErrors.h>
#include <XYLCore/Utility/XYLUtMemory.h>
#include <XYLCore/i18n/cpp/i18n_internalresources.h>
#include <XYLCore/i18n/cpp/i18n_intervalformat.h>

#include <unicode/dtfmtsym.h>
#include <unicode/plurrule.h>
#include <unicode/unistr.h>

#include <climits>
#include <cstring>
#include <map>
#include <memory>
#include <new>
#include <string>

namespace {

enum Unit { kYear, kMonth, kDay, kHour, kMinute, kSecond, kMillisecond, kUnitCount };

const char *const kUnitNames[kUnitCount] = {"YEAR", "MONTH", "DAY", "HOUR", "MINUTE", "SECOND", "MILLISECOND"};

// The word forms of a unit: the two classic keys, then one per ICU plural
// category.
enum Form { kSingular, kPlural, kZero, kOne, kTwo, kFew, kMany, kOther, kFormCount };

const char *const kFormNames[kFormCount] = {"SINGULAR", "PLURAL", "ZERO", "ONE", "TWO", "FEW", "MANY", "OTHER"};

const char *const kEnglishSingular[kUnitCount] = {"year", "month", "day", "hour", "minute", "second", "millisecond"};
const char *const kEnglishPlural[kUnitCount] = {"years",   "months",  "days",        "hours",
                                                "minutes", "seconds", "milliseconds"};
const char kEnglishSyntax[] = " <param index=\"1\"/> <param index=\"2\"/>";
const char kSyntaxKey[] = "TIME_PERIOD_SYNTAX_SEPARATOR";

I18NString utf8Text(const std::string &text) {
  return I18NString(text.c_str(), "UTF-8", static_cast<int>(text.size()));
}

// A NUL-terminated copy of `count` UTF-16 units from the C heap.
unsigned short *copyUnits(const char16_t *units, int count) {
  unsigned short *copy = static_cast<unsigned short *>(
      XYLUtMemory::malloc((static_cast<std::size_t>(count) + 1) * sizeof(unsigned short)));
  if (copy == nullptr)
    XYL_THROW(XYLOutOfMemoryError(0L, nullptr));
  if (count > 0)
    std::memcpy(copy, units, static_cast<std::size_t>(count) * sizeof(unsigned short));
  copy[count] = 0;
  return copy;
}

unsigned short *copyUnits(const unsigned short *text) {
  if (text == nullptr)
    return nullptr;
  int count = 0;
  while (text[count] != 0)
    ++count;
  return copyUnits(reinterpret_cast<const char16_t *>(text), count);
}

unsigned long magnitude(long value) {
  return value < 0 ? 0UL - static_cast<unsigned long>(value) : static_cast<unsigned long>(value);
}

// From a catch handler: passes the exception on, std::bad_alloc as
// XYLOutOfMemoryError.
[[noreturn]] void rethrowAsLibraryError() {
  try {
    throw;
  } catch (std::bad_alloc &) {
    XYL_THROW(XYLOutOfMemoryError(0L, nullptr));
  }
}

} // namespace

// The words of one locale, resolved per unit and form, with the plural
// rules when the words use plural categories.
class xI18NIntervalWords {
public:
  xI18NIntervalWords() : m_present() {}
  xI18NIntervalWords(const xI18NIntervalWords &other) : m_present() {
    for (int u = 0; u < kUnitCount; ++u)
      for (int f = 0; f < kFormCount; ++f) {
        m_words[u][f] = other.m_words[u][f];
        m_present[u][f] = other.m_present[u][f];
      }
    if (other.m_pRules)
      m_pRules.reset(other.m_pRules->clone());
    if (other.m_pRules && !m_pRules)
      throw std::bad_alloc();
  }

  // The word for `value` of `unit`.
  const I18NString &word(int unit, long value) const {
    if (m_pRules) {
      const unsigned long n = magnitude(value);
      int form = categoryForm(n <= 0x7FFFFFFFUL ? m_pRules->select(static_cast<int32_t>(n))
                                                : m_pRules->select(static_cast<double>(n)));
      if (form >= 0 && m_present[unit][form])
        return m_words[unit][form];
    }
    // The classic pair: the singular for exactly 1, so "-1 days". The plural
    // rules above count the magnitude, as ICU's categories are defined.
    return m_words[unit][value == 1 ? kSingular : kPlural];
  }

  static int categoryForm(const icu::UnicodeString &category) {
    static const char16_t *const kCategories[kFormCount] = {nullptr, nullptr, u"zero", u"one",
                                                            u"two",  u"few",  u"many", u"other"};
    for (int f = kZero; f < kFormCount; ++f)
      if (category == icu::UnicodeString(true, kCategories[f], -1)) // read-only alias, no copy
        return f;
    return -1;
  }

  I18NString m_words[kUnitCount][kFormCount];
  bool m_present[kUnitCount][kFormCount];
  std::unique_ptr<icu::PluralRules> m_pRules; // null: singular/plural only
};

// ---- Construction ------------------------------------------------------------

I18NIntervalFormat::I18NIntervalFormat(const I18NLocale &locale, I18NIntervalFormatStyle style)
    : m_locale(locale), m_style(style), m_numericFormat(locale), m_showYears(1), m_showMonths(1), m_showDays(1),
      m_showHours(1), m_showMinutes(1), m_showSeconds(1), m_showMilliseconds(1), m_pWords(nullptr), m_pLeading(nullptr),
      m_pMiddle(nullptr), m_pTrailing(nullptr), m_wordFirst(false) {
  try {
    applyLocaleDefaults();
    loadResources();
  } catch (...) {
    freePieces();
    delete m_pWords;
    rethrowAsLibraryError();
  }
}

I18NIntervalFormat::I18NIntervalFormat(const I18NIntervalFormat &other)
    : m_locale(other.m_locale), m_style(other.m_style), m_numericFormat(other.m_numericFormat),
      m_timeSeparator(other.m_timeSeparator), m_showYears(other.m_showYears), m_showMonths(other.m_showMonths),
      m_showDays(other.m_showDays), m_showHours(other.m_showHours), m_showMinutes(other.m_showMinutes),
      m_showSeconds(other.m_showSeconds), m_showMilliseconds(other.m_showMilliseconds), m_pWords(nullptr),
      m_pLeading(nullptr), m_pMiddle(nullptr), m_pTrailing(nullptr), m_wordFirst(other.m_wordFirst) {
  try {
    m_pWords = new xI18NIntervalWords(*other.m_pWords);
    copyPieces(other);
  } catch (...) {
    freePieces();
    delete m_pWords;
    rethrowAsLibraryError();
  }
}

I18NIntervalFormat &I18NIntervalFormat::operator=(const I18NIntervalFormat &other) {
  if (this == &other)
    return *this;
  // Build the copy first, then swap it in: a failure leaves this unchanged.
  I18NIntervalFormat copy(other);
  m_locale = copy.m_locale;
  m_style = copy.m_style;
  m_numericFormat = copy.m_numericFormat;
  m_timeSeparator = copy.m_timeSeparator;
  m_showYears = copy.m_showYears;
  m_showMonths = copy.m_showMonths;
  m_showDays = copy.m_showDays;
  m_showHours = copy.m_showHours;
  m_showMinutes = copy.m_showMinutes;
  m_showSeconds = copy.m_showSeconds;
  m_showMilliseconds = copy.m_showMilliseconds;
  m_wordFirst = copy.m_wordFirst;
  std::swap(m_pWords, copy.m_pWords);
  std::swap(m_pLeading, copy.m_pLeading);
  std::swap(m_pMiddle, copy.m_pMiddle);
  std::swap(m_pTrailing, copy.m_pTrailing);
  return *this;
}

I18NIntervalFormat::~I18NIntervalFormat() {
  freePieces();
  delete m_pWords;
}

void I18NIntervalFormat::reset() {
  try {
    m_showYears = m_showMonths = m_showDays = m_showHours = m_showMinutes = m_showSeconds = m_showMilliseconds = 1;
    m_numericFormat = I18NNumericFormat(m_locale);
    applyLocaleDefaults();
  } catch (std::bad_alloc &) {
    XYL_THROW(XYLOutOfMemoryError(0L, nullptr));
  }
}

void I18NIntervalFormat::applyLocaleDefaults() {
  UErrorCode status = U_ZERO_ERROR;
  icu::DateFormatSymbols symbols(m_locale.getLocale(), status);
  icu::UnicodeString separator;
  if (U_SUCCESS(status))
    symbols.getTimeSeparatorString(separator);
  if (separator.isEmpty())
    separator = icu::UnicodeString(u":");
  m_timeSeparator = I18NString(separator);
}

void I18NIntervalFormat::setNumericFormat(const I18NNumericFormat &numericFormat) { m_numericFormat = numericFormat; }

void I18NIntervalFormat::setTimeSeparatorSymbol(const I18NString &separator) { m_timeSeparator = separator; }

// ---- Resources ---------------------------------------------------------------------

void I18NIntervalFormat::loadResources() {
  I18NString normalized;
  m_locale.getNormalizedName(normalized);
  std::map<std::string, std::string> texts;
  I18NInternalResources::getTimePeriodResources(normalized.c_str("UTF-8"), texts);

  std::unique_ptr<xI18NIntervalWords> words(new xI18NIntervalWords());
  bool categories = false;
  for (int u = 0; u < kUnitCount; ++u) {
    for (int f = 0; f < kFormCount; ++f) {
      std::string key = std::string(kUnitNames[u]) + "_COMPLETE_" + kFormNames[f];
      auto found = texts.find(key);
      if (found != texts.end()) {
        words->m_words[u][f] = utf8Text(found->second);
        words->m_present[u][f] = true;
        categories = categories || f >= kZero;
      } else if (f == kSingular || f == kPlural) {
        // A key the locale's file leaves out keeps the English word.
        words->m_words[u][f] = I18NString(f == kSingular ? kEnglishSingular[u] : kEnglishPlural[u], "UTF-8");
      }
    }
  }
  if (categories) {
    UErrorCode status = U_ZERO_ERROR;
    words->m_pRules.reset(icu::PluralRules::forLocale(m_locale.getLocale(), status));
    if (status == U_MEMORY_ALLOCATION_ERROR)
      throw std::bad_alloc();
    if (U_FAILURE(status))
      words->m_pRules.reset();
  }
  auto syntax = texts.find(kSyntaxKey);
  parseSeparatorTemplate(syntax != texts.end() ? utf8Text(syntax->second) : I18NString(kEnglishSyntax, "UTF-8"));
  delete m_pWords;
  m_pWords = words.release();
}

// The template holds two parameter elements, as in
// ' <param index="1"/> <param index="2"/>': the text before the first '<'
// leads each unit (a single space when there is no '<' at all), the text
// between the first '>' and the next '<' joins the two parameters, and the
// text after the second element closes the unit. Parameter 1 is the number,
// 2 the word; a first element naming index 2 puts the word first.
void I18NIntervalFormat::parseSeparatorTemplate(const I18NString &syntax) {
  const icu::UnicodeString &text = syntax.getUnicodeString();
  const char16_t *units = text.getBuffer();
  const int length = text.length();
  const int firstOpen = text.indexOf(u'<');

  freePieces();
  m_wordFirst = false;
  if (firstOpen < 0) {
    m_pLeading = copyUnits(u" ", 1);
    return;
  }
  m_pLeading = copyUnits(units, firstOpen);
  const int firstClose = text.indexOf(u'>', firstOpen);
  if (firstClose < 0)
    return;
  if (text.tempSubStringBetween(firstOpen, firstClose).indexOf(icu::UnicodeString(u"\"2\"")) >= 0)
    m_wordFirst = true;
  const int secondOpen = text.indexOf(u'<', firstClose);
  if (secondOpen < 0)
    return;
  m_pMiddle = copyUnits(units + firstClose + 1, secondOpen - firstClose - 1);
  const int secondClose = text.indexOf(u'>', secondOpen);
  if (secondClose >= 0 && secondClose + 1 < length)
    m_pTrailing = copyUnits(units + secondClose + 1, length - secondClose - 1);
}

void I18NIntervalFormat::freePieces() {
  XYLUtMemory::free(m_pLeading);
  XYLUtMemory::free(m_pMiddle);
  XYLUtMemory::free(m_pTrailing);
  m_pLeading = m_pMiddle = m_pTrailing = nullptr;
}

void I18NIntervalFormat::copyPieces(const I18NIntervalFormat &other) {
  m_pLeading = copyUnits(other.m_pLeading);
  m_pMiddle = copyUnits(other.m_pMiddle);
  m_pTrailing = copyUnits(other.m_pTrailing);
}

// ---- Formatting ----------------------------------------------------------------------

I18NString &I18NIntervalFormat::format(long years, long months, I18NString &out) const {
  try {
    out.erase();
    if (m_style == I18N_INTERVAL_FORMAT_SHORT)
      formatShortYM(years, months, out);
    else
      formatLongYM(years, months, out);
  } catch (std::bad_alloc &) {
    XYL_THROW(XYLOutOfMemoryError(0L, nullptr));
  }
  return out;
}

I18NString &I18NIntervalFormat::format(const XYLIntervalYM &interval, I18NString &out) const {
  return format(interval.years, interval.months, out);
}

I18NString &I18NIntervalFormat::format(long days, long hours, long minutes, long seconds, long milliseconds,
                                       I18NString &out, I18NIntervalFormatDTType type) const {
  try {
    out.erase();
    formatDT(days, hours, minutes, seconds, milliseconds, out, type);
  } catch (std::bad_alloc &) {
    XYL_THROW(XYLOutOfMemoryError(0L, nullptr));
  }
  return out;
}

I18NString &I18NIntervalFormat::format(const XYLInterval2 &interval, I18NString &out,
                                       I18NIntervalFormatDTType type) const {
  try {
    out.erase();
    // The fields are magnitudes; the sign belongs to the whole interval.
    auto field = [](long value) { return value < 0 && value != LONG_MIN ? -value : value; };
    formatDT(field(interval.days), field(interval.hours), field(interval.minutes), field(interval.seconds),
             field(interval.milliseconds), out, type);
    if (!out.empty())
      addIntervalSign(interval.sign, out);
  } catch (std::bad_alloc &) {
    XYL_THROW(XYLOutOfMemoryError(0L, nullptr));
  }
  return out;
}

void I18NIntervalFormat::addIntervalSign(int sign, I18NString &text) const {
  if (sign >= 0)
    return;
  I18NString minus;
  m_numericFormat.getMinusSign(minus);
  text.insert(0, minus);
}

// Folds the fields above the type's leading field into it, leaves out those
// below its trailing field, then applies the show flags.
void I18NIntervalFormat::formatDT(long days, long hours, long minutes, long seconds, long milliseconds, I18NString &out,
                                  I18NIntervalFormatDTType type) const {
  static const long kFactor[4] = {24, 60, 60, 1000}; // day->hour->minute->second->millisecond
  static const struct {
    int lead, trail;
  } kRange[] = {{0, 4}, {0, 0}, {0, 1}, {0, 2}, {0, 4}, {1, 1}, {1, 2}, {1, 4}, {2, 2}, {2, 4}, {3, 4}};
  int index = static_cast<int>(type);
  if (index < 0 || index >= static_cast<int>(sizeof kRange / sizeof kRange[0]))
    index = 0;
  const int lead = kRange[index].lead;
  const int trail = kRange[index].trail;

  long values[5] = {days, hours, minutes, seconds, milliseconds};
  for (int i = 0; i < lead; ++i) {
    long scaled;
    if (__builtin_mul_overflow(values[i], kFactor[i], &scaled) ||
        __builtin_add_overflow(values[i + 1], scaled, &values[i + 1]))
      XYL_THROW(I18NRuntimeError(I18N_GENERAL_FAILURE, nullptr));
    values[i] = 0;
  }
  const int flags[5] = {m_showDays, m_showHours, m_showMinutes, m_showSeconds, m_showMilliseconds};
  bool shown[5];
  for (int i = 0; i < 5; ++i)
    shown[i] = i >= lead && i <= trail && flags[i] != 0;
  if (m_style == I18N_INTERVAL_FORMAT_SHORT)
    formatShortDT(values, shown, out);
  else
    formatLongDT(values, shown, out);
}

void I18NIntervalFormat::formatLongYM(long years, long months, I18NString &out) const {
  if (m_showYears != 0)
    appendUnit(kYear, years, out);
  if (m_showMonths != 0)
    appendUnit(kMonth, months, out);
}

void I18NIntervalFormat::formatLongDT(const long *values, const bool *shown, I18NString &out) const {
  for (int i = 0; i < 5; ++i)
    if (shown[i])
      appendUnit(kDay + i, values[i], out);
}

void I18NIntervalFormat::appendUnit(int unit, long value, I18NString &out) const {
  out.append(I18NString(m_pLeading, -1));
  const I18NString &word = m_pWords->word(unit, value);
  if (m_wordFirst)
    out.append(word);
  else
    m_numericFormat.format(value, out);
  if (m_pMiddle != nullptr)
    out.append(I18NString(m_pMiddle, -1));
  if (m_wordFirst)
    m_numericFormat.format(value, out);
  else
    out.append(word);
  if (m_pTrailing != nullptr)
    out.append(I18NString(m_pTrailing, -1));
}

void I18NIntervalFormat::formatShortYM(long years, long months, I18NString &out) const {
  if (m_showYears != 0)
    m_numericFormat.format(years, out);
  if (m_showMonths != 0) {
    if (m_showYears != 0) {
      out.append(m_timeSeparator);
      appendPadded(months, 2, out);
    } else {
      m_numericFormat.format(months, out);
    }
  }
}

void I18NIntervalFormat::formatShortDT(const long *values, const bool *shown, I18NString &out) const {
  if (shown[0])
    m_numericFormat.format(values[0], out);
  bool timeStarted = false;
  for (int i = 1; i < 5; ++i) {
    if (!shown[i])
      continue;
    if (i == 4 && shown[3]) {
      out.append(0x2Eu); // milliseconds as the seconds' fraction
    } else if (timeStarted) {
      out.append(m_timeSeparator);
    } else if (shown[0]) {
      out.append(0x20u); // between the days and the time
    }
    appendPadded(values[i], i == 4 ? 3 : 2, out);
    timeStarted = true;
  }
}

// The value with at least `width` digits, padded with the zero digit; a
// minus sign goes before the padding.
void I18NIntervalFormat::appendPadded(long value, int width, I18NString &out) const {
  if (value == LONG_MIN) {
    m_numericFormat.format(value, out);
    return;
  }
  if (value < 0) {
    I18NString minus;
    m_numericFormat.getMinusSign(minus);
    out.append(minus);
    value = -value;
  }
  int digits = 1;
  for (long rest = value / 10; rest != 0; rest /= 10)
    ++digits;
  if (digits < width) {
    I18NString zero;
    m_numericFormat.getZeroDigit(zero);
    for (; digits < width; ++digits)
      out.append(zero);
  }
  m_numericFormat.format(value, out);
}
