// SPDX-License-Identifier: Apache-2.0
// xyl interval [--locale L] [--style short|long] [--ym] [NUMBER...]: a
// duration (YEARS MONTHS with --ym, else DAYS HOURS MINUTES SECONDS MILLIS)
// given on the command line, or one per line of standard input, written in
// a locale's words (long) or digits (short), every unit shown.
#include "xyl_commands.h"
#include "xyl_io.h"

#include <XYLCore/ExceptionHierarchy/XYLErrors.h>
#include <XYLCore/i18n/cpp/i18n_intervalformat.h>
#include <XYLCore/i18n/cpp/i18n_locale.h>
#include <XYLCore/i18n/cpp/i18n_string.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

namespace xyltool {

namespace {

// A whole decimal number that fits 32 bits (the interval fields' range).
bool parseValue(const char *text, long &value) {
  errno = 0;
  char *end = nullptr;
  const long long parsed = std::strtoll(text, &end, 10);
  if (errno != 0 || end == text || *end != '\0' || parsed < INT_MIN || parsed > INT_MAX)
    return false;
  value = static_cast<long>(parsed);
  return true;
}

// The numbers of one duration; false (after a message that starts with `where`)
// unless there are `count` whole numbers.
bool parseDuration(const std::string &where, const std::vector<std::string> &words, std::size_t count,
                   std::vector<long> &values) {
  values.clear();
  for (const std::string &word : words) {
    long value;
    if (!parseValue(word.c_str(), value)) {
      std::fprintf(stderr, "%s: '%s' is not a whole number\n", where.c_str(), word.c_str());
      return false;
    }
    values.push_back(value);
  }
  if (values.size() == count)
    return true;
  std::fprintf(stderr, "%s: %zu numbers, want %zu\n", where.c_str(), values.size(), count);
  return false;
}

std::vector<std::string> splitWords(std::string_view line) {
  std::vector<std::string> words;
  std::size_t start = 0;
  while ((start = line.find_first_not_of(" \t\r", start)) != std::string_view::npos) {
    const std::size_t end = std::min(line.find_first_of(" \t\r", start), line.size());
    words.emplace_back(line.substr(start, end - start));
    start = end;
  }
  return words;
}

} // namespace

int runInterval(int argc, char **argv) {
  std::string locale = "en-us", styleName = "long";
  bool yearMonth = false;
  const ValueOption options[] = {
      {"--locale", &locale, nullptr}, {"--style", &styleName, nullptr}, {"--ym", nullptr, &yearMonth}};
  std::vector<std::string> operands;
  if (!parseValueOptions(argc, argv, options, 3, operands) || (styleName != "short" && styleName != "long"))
    return usage(*findCommand("interval"));
  const I18NIntervalFormatStyle style = styleName == "short" ? I18N_INTERVAL_FORMAT_SHORT : I18N_INTERVAL_FORMAT_LONG;
  const std::size_t count = yearMonth ? 2u : 5u;
  std::vector<long> values;
  if (!operands.empty() && !parseDuration(argv[0], operands, count, values))
    return usage(*findCommand("interval"));

  I18NSession session(argv[0]);
  if (!session.started())
    return kBadData;
  try {
    I18NIntervalFormat format(I18NLocale(locale.c_str()), style);
    auto write = [&]() {
      I18NString out;
      if (yearMonth)
        format.format(values[0], values[1], out);
      else
        format.format(values[0], values[1], values[2], values[3], values[4], out);
      writeOut(out.c_str("UTF-8"), std::strlen(out.c_str("UTF-8")));
      writeOut("\n", 1);
    };
    if (!operands.empty()) {
      write();
      return kSuccess;
    }
    return forEachLine(argv[0], {}, [&](std::string_view line, long long number) {
      if (!parseDuration(std::string(argv[0]) + ": line " + std::to_string(number), splitWords(line), count, values))
        return false;
      write();
      return true;
    });
  } catch (XYLThrowable &e) {
    std::fprintf(stderr, "%s: %s\n", argv[0], e.getMessage() != nullptr ? e.getMessage() : e.getThrowableName());
    return kBadData;
  }
}

} // namespace xyltool
