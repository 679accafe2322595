// SPDX-License-Identifier: Apache-2.0
// xyl format-number [--locale L] [--pattern P] VALUE... and
// xyl format-date [--locale L] [--pattern P] [--zone Z] EPOCH_MS...: each
// value on its own line, formatted for a locale (default en-us). Without
// values on the command line, each line of standard input is one value.
#include "xyl_commands.h"
#include "xyl_io.h"

#include <XYLCore/ExceptionHierarchy/XYLErrors.h>
#include <XYLCore/i18n/cpp/i18n_datetimeformat.h>
#include <XYLCore/i18n/cpp/i18n_locale.h>
#include <XYLCore/i18n/cpp/i18n_numericformat.h>
#include <XYLCore/i18n/cpp/i18n_string.h>

#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace xyltool {

namespace {

struct Options {
  std::string locale = "en-us";
  std::string pattern;
  std::string zone;
  bool hasPattern = false;
  bool hasZone = false;
  std::vector<std::string> values;
};

// Splits the options from the values; false on a missing option value or
// an option the command does not take.
bool parseOptions(int argc, char **argv, bool takesZone, Options &options) {
  const ValueOption known[] = {{"--locale", &options.locale, nullptr},
                               {"--pattern", &options.pattern, &options.hasPattern},
                               {"--zone", &options.zone, &options.hasZone}};
  return parseValueOptions(argc, argv, known, takesZone ? 3 : 2, options.values);
}

// Hands each value to `each`: the command line's, or, when it has none, each
// line of standard input with blanks around it removed. Returns kSuccess, or
// kBadData once `each` returns false (it reports itself).
int forEachValue(const char *command, const std::vector<std::string> &values,
                 const std::function<bool(const std::string &)> &each) {
  for (const std::string &value : values)
    if (!each(value))
      return kBadData;
  if (!values.empty())
    return kSuccess;
  return forEachLine(command, {}, [&](std::string_view line, long long) {
    const std::size_t first = line.find_first_not_of(" \t\r");
    const std::size_t last = line.find_last_not_of(" \t\r");
    return each(first == std::string_view::npos ? std::string() : std::string(line.substr(first, last - first + 1)));
  });
}

// Writes one formatted value and its line feed.
void writeLine(const I18NString &text) {
  writeOut(text.c_str("UTF-8"), std::strlen(text.c_str("UTF-8")));
  writeOut("\n", 1);
}

// Milliseconds since 1970, or false after a message.
bool parseTime(const char *command, const std::string &value, double &ms) {
  errno = 0;
  char *end = nullptr;
  ms = std::strtod(value.c_str(), &end);
  if (errno == 0 && end != value.c_str() && *end == '\0' && std::isfinite(ms))
    return true;
  std::fprintf(stderr, "%s: '%s' is not a number of milliseconds\n", command, value.c_str());
  return false;
}

int report(const char *command, XYLThrowable &e) {
  std::fprintf(stderr, "%s: %s\n", command, e.getMessage() != nullptr ? e.getMessage() : e.getThrowableName());
  return kBadData;
}

} // namespace

int runFormatNumber(int argc, char **argv) {
  Options options;
  if (!parseOptions(argc, argv, false, options))
    return usage(*findCommand("format-number"));
  I18NSession session(argv[0]);
  if (!session.started())
    return kBadData;
  try {
    I18NNumericFormat format{I18NLocale(options.locale.c_str())};
    if (options.hasPattern)
      format.setPattern(I18NString(options.pattern.c_str(), "UTF-8"));
    return forEachValue(argv[0], options.values, [&](const std::string &value) {
      I18NString out;
      format.formatDigitBuffer(value.c_str(), out); // exact: no rounding through a double
      writeLine(out);
      return true;
    });
  } catch (XYLThrowable &e) {
    return report(argv[0], e);
  }
}

int runFormatDate(int argc, char **argv) {
  Options options;
  if (!parseOptions(argc, argv, true, options))
    return usage(*findCommand("format-date"));
  // Values on the command line are checked before anything is written.
  double ms = 0;
  for (const std::string &value : options.values)
    if (!parseTime(argv[0], value, ms))
      return usage(*findCommand("format-date"));
  I18NSession session(argv[0]);
  if (!session.started())
    return kBadData;
  try {
    I18NDateTimeFormat format{I18NLocale(options.locale.c_str())};
    if (options.hasPattern)
      format.setPattern(I18NString(options.pattern.c_str(), "UTF-8"));
    if (options.hasZone)
      format.setTimeZone(I18NString(options.zone.c_str(), "UTF-8"));
    return forEachValue(argv[0], options.values, [&](const std::string &value) {
      if (!parseTime(argv[0], value, ms))
        return false;
      I18NString out;
      format.format(ms, out);
      writeLine(out);
      return true;
    });
  } catch (XYLThrowable &e) {
    return report(argv[0], e);
  }
}

} // namespace xyltool
