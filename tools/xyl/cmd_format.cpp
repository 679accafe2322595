// SPDX-License-Identifier: Apache-2.0
// xyl format-number [--locale L] [--pattern P] VALUE... and
// xyl format-date [--locale L] [--pattern P] [--zone Z] EPOCH_MS...: each
// value on its own line, formatted for a locale (default en-us).
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
#include <string>
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

// Splits the options from the values; false on a missing option value, an
// option the command does not take or no value at all.
bool parseOptions(int argc, char **argv, bool takesZone, Options &options) {
  const ValueOption known[] = {{"--locale", &options.locale, nullptr},
                               {"--pattern", &options.pattern, &options.hasPattern},
                               {"--zone", &options.zone, &options.hasZone}};
  return parseValueOptions(argc, argv, known, takesZone ? 3 : 2, options.values) && !options.values.empty();
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
    for (const std::string &value : options.values) {
      I18NString out;
      format.formatDigitBuffer(value.c_str(), out); // exact: no rounding through a double
      std::printf("%s\n", out.c_str("UTF-8"));
    }
  } catch (XYLThrowable &e) {
    return report(argv[0], e);
  }
  return kSuccess;
}

int runFormatDate(int argc, char **argv) {
  Options options;
  if (!parseOptions(argc, argv, true, options))
    return usage(*findCommand("format-date"));
  std::vector<double> times;
  for (const std::string &value : options.values) {
    errno = 0;
    char *end = nullptr;
    const double ms = std::strtod(value.c_str(), &end);
    if (errno != 0 || end == value.c_str() || *end != '\0' || !std::isfinite(ms)) {
      std::fprintf(stderr, "%s: '%s' is not a number of milliseconds\n", argv[0], value.c_str());
      return usage(*findCommand("format-date"));
    }
    times.push_back(ms);
  }
  I18NSession session(argv[0]);
  if (!session.started())
    return kBadData;
  try {
    I18NDateTimeFormat format{I18NLocale(options.locale.c_str())};
    if (options.hasPattern)
      format.setPattern(I18NString(options.pattern.c_str(), "UTF-8"));
    if (options.hasZone)
      format.setTimeZone(I18NString(options.zone.c_str(), "UTF-8"));
    for (double ms : times) {
      I18NString out;
      format.format(ms, out);
      std::printf("%s\n", out.c_str("UTF-8"));
    }
  } catch (XYLThrowable &e) {
    return report(argv[0], e);
  }
  return kSuccess;
}

} // namespace xyltool
