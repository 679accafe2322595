// SPDX-License-Identifier: Apache-2.0
// xyl sort --locale L [--level N] [FILE...]: the lines of the files (or of
// standard input; UTF-8) in the collation order of a locale, written
// unchanged to standard output.
//
// Each line gets its ICU sort key once; the sort compares the keys' first
// eight bytes as one number and asks the collator only among lines whose
// prefixes are equal. Memory holds the input text and 16 bytes per line.
#include "xyl_commands.h"
#include "xyl_io.h"

#include <XYLCore/ExceptionHierarchy/XYLErrors.h>
#include <XYLCore/i18n/cpp/i18n_collator.h>
#include <XYLCore/i18n/cpp/i18n_internalresources.h>
#include <XYLCore/i18n/cpp/i18n_string.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>
#include <sys/stat.h>
#include <unicode/ucol.h>
#include <unicode/ustring.h>
#include <vector>

namespace xyltool {

namespace {

// One input line: the first bytes of its sort key, big-endian in an
// integer so that they compare as one number, and where its text starts.
struct Line {
  std::uint64_t prefix;
  std::uint64_t start;
};

// The first 8 bytes of a sort key (zeros after a shorter key, which orders
// it before the longer keys it begins, as the key's end does).
std::uint64_t keyPrefix(const std::uint8_t *key, int32_t size) {
  std::uint64_t prefix = 0;
  for (int32_t i = 0; i < 8; ++i)
    prefix = (prefix << 8) | (i < size ? key[i] : 0u);
  return prefix;
}

// An ICU collator for the locale as the library opens it (a bare language
// widened to its default locale), comparing canonically equivalent texts as
// equal. Null when ICU refuses it.
UCollator *openKeyCollator(const std::string &locale, int level) {
  std::string name;
  I18NInternalResources::getDefaultLocaleForLanguage(locale.c_str(), name);
  UErrorCode status = U_ZERO_ERROR;
  UCollator *collator = ucol_open(name.c_str(), &status);
  if (U_SUCCESS(status))
    ucol_setAttribute(collator, UCOL_NORMALIZATION_MODE, UCOL_ON, &status);
  if (U_SUCCESS(status) && level >= 0)
    ucol_setAttribute(collator, UCOL_STRENGTH, level == 3 ? UCOL_IDENTICAL : static_cast<UColAttributeValue>(level),
                      &status);
  if (U_FAILURE(status)) {
    ucol_close(collator);
    return nullptr;
  }
  return collator;
}

// The total size of the inputs that are regular files, to size the text
// buffer once.
std::size_t knownSize(const std::vector<std::string> &files) {
  std::size_t total = 0;
  struct stat status;
  for (const std::string &name : files)
    if (name != "-" && stat(name.c_str(), &status) == 0 && S_ISREG(status.st_mode))
      total += static_cast<std::size_t>(status.st_size) + 1;
  if (files.empty() || std::find(files.begin(), files.end(), "-") != files.end())
    if (fstat(0, &status) == 0 && S_ISREG(status.st_mode))
      total += static_cast<std::size_t>(status.st_size) + 1;
  return total;
}

// Splits the text into lines and takes each line's key prefix; false after
// a message for a line that is not UTF-8 or holds a zero byte.
bool makeKeys(const char *command, const std::string &text, const UCollator *collator, std::vector<Line> &lines) {
  lines.reserve(static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n')));
  std::vector<UChar> units(256);
  std::vector<std::uint8_t> key(256);
  std::size_t start = 0;
  while (start < text.size()) {
    const std::size_t end = text.find('\n', start);
    const std::size_t length = end - start; // the text always ends with a line feed
    const char *bytes = text.data() + start;
    if (std::memchr(bytes, '\0', length) != nullptr) {
      std::fprintf(stderr, "%s: line %zu holds a zero byte\n", command, lines.size() + 1);
      return false;
    }
    if (units.size() < length + 1)
      units.resize(length + 1);
    UErrorCode status = U_ZERO_ERROR;
    int32_t unitCount = 0;
    u_strFromUTF8(units.data(), static_cast<int32_t>(units.size()), &unitCount, bytes, static_cast<int32_t>(length),
                  &status);
    if (U_FAILURE(status)) {
      std::fprintf(stderr, "%s: line %zu is not valid UTF-8\n", command, lines.size() + 1);
      return false;
    }
    int32_t size = ucol_getSortKey(collator, units.data(), unitCount, key.data(), static_cast<int32_t>(key.size()));
    if (size > static_cast<int32_t>(key.size())) {
      key.resize(static_cast<std::size_t>(size));
      size = ucol_getSortKey(collator, units.data(), unitCount, key.data(), size);
    }
    lines.push_back({keyPrefix(key.data(), size - 1), start}); // the key's size counts its final zero
    start = end + 1;
  }
  return true;
}

// Lines whose key prefixes are equal, in input order, ordered by the
// collator (its equal lines keep their order).
class TieOrder {
public:
  TieOrder(const std::string &text, const UCollator *collator) : m_text(text), m_collator(collator) {}
  bool operator()(const Line &a, const Line &b) const {
    UErrorCode status = U_ZERO_ERROR;
    return ucol_strcollUTF8(m_collator, m_text.data() + a.start, static_cast<int32_t>(length(a)),
                            m_text.data() + b.start, static_cast<int32_t>(length(b)), &status) == UCOL_LESS;
  }
  std::size_t length(const Line &line) const { return m_text.find('\n', line.start) - line.start; }
  // True when every line of [first, last) repeats the first one's bytes.
  bool allSame(const Line *first, const Line *last) const {
    const std::size_t size = length(*first);
    for (const Line *line = first + 1; line != last; ++line)
      if (length(*line) != size || std::memcmp(m_text.data() + line->start, m_text.data() + first->start, size) != 0)
        return false;
    return true;
  }

private:
  const std::string &m_text;
  const UCollator *m_collator;
};

// Sorts by key prefix and input order with integer comparisons only; then
// each run of equal prefixes, unless its lines are all the same, by the
// collator (the keys may differ further on).
void sortLines(std::vector<Line> &lines, const TieOrder &ties) {
  std::sort(lines.begin(), lines.end(), [](const Line &a, const Line &b) {
    return a.prefix != b.prefix ? a.prefix < b.prefix : a.start < b.start;
  });
  Line *const end = lines.data() + lines.size();
  for (Line *run = lines.data(); run != end;) {
    Line *next = run + 1;
    while (next != end && next->prefix == run->prefix)
      ++next;
    if (next - run > 1 && !ties.allSame(run, next))
      std::stable_sort(run, next, ties);
    run = next;
  }
}

} // namespace

int runSort(int argc, char **argv) {
  std::string locale, levelName;
  bool haveLocale = false, haveLevel = false;
  const ValueOption options[] = {{"--locale", &locale, &haveLocale}, {"--level", &levelName, &haveLevel}};
  std::vector<std::string> files;
  if (!parseValueOptions(argc, argv, options, 2, files) || !haveLocale ||
      (haveLevel && (levelName.size() != 1 || levelName[0] < '0' || levelName[0] > '3')))
    return usage(*findCommand("sort"));
  const int level = haveLevel ? levelName[0] - '0' : -1;

  I18NSession session(argv[0]);
  if (!session.started())
    return kBadData;
  // The library's collator decides which locales and levels are valid.
  try {
    I18NCollator check{I18NString(locale.c_str(), "UTF-8")};
    if (level >= 0)
      check.setLevel(static_cast<I18NCollationLevels>(level));
  } catch (XYLThrowable &e) {
    std::fprintf(stderr, "%s: locale '%s': %s\n", argv[0], locale.c_str(),
                 e.getMessage() != nullptr ? e.getMessage() : e.getThrowableName());
    return kBadUsage;
  }
  std::unique_ptr<UCollator, void (*)(UCollator *)> collator(openKeyCollator(locale, level), ucol_close);
  if (collator == nullptr) {
    std::fprintf(stderr, "%s: locale '%s': no collator\n", argv[0], locale.c_str());
    return kBadUsage;
  }

  std::string text;
  text.reserve(knownSize(files));
  {
    Progress progress(argv[0]);
    if (readInputs(argv[0], files, text, true, &progress) != kSuccess)
      return kBadData;
  }
  std::vector<Line> lines;
  if (!makeKeys(argv[0], text, collator.get(), lines))
    return kBadData;
  const TieOrder ties(text, collator.get());
  sortLines(lines, ties);
  for (const Line &line : lines)
    writeOut(text.data() + line.start, ties.length(line) + 1);
  return kSuccess;
}

} // namespace xyltool
