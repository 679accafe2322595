// xyl format-number [--locale L] [--pattern P] VALUE... and
// xyl format-date [--locale L] [--pattern P] [--zone Z] EPOCH_MS...: each
// value on its own line, formatted for a locale (default en-us).
#include "xyl_commands.h"

#include <XYLCore/ExceptionHierarchy/XYLErrors.h>
#include <XYLCore/i18n/cpp/i18n_datetimeformat.h>
#include <XYLCore/i18n/cpp/i18n_init.h>
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

const Command kNumber = {"format-number", "format-number [--locale L] [--pattern P] VALUE...",
                         "format decimal numbers for a locale (ICU pattern, OLAP format string or named format)",
                         runFormatNumber};
const Command kDate = {"format-date", "format-date [--locale L] [--pattern P] [--zone Z] EPOCH_MS...",
                       "format times given in milliseconds since 1970 for a locale (default zone UTC)", runFormatDate};

// Starts and stops the internationalisation layer around the command.
struct I18NScope {
  I18NScope() : started(I18NInitialize() != 0) {}
  ~I18NScope() {
    if (started)
      I18NTerminate();
  }
  bool started;
};

struct Options {
  std::string locale = "en-us";
  std::string pattern;
  std::string zone;
  bool hasPattern = false;
  bool hasZone = false;
  std::vector<const char *> values;
};

// Splits the options from the values; false on a missing option value, an
// option the command does not take or no value at all.
bool parseOptions(int argc, char **argv, bool takesZone, Options &options) {
  for (int i = 1; i < argc; ++i) {
    const std::string argument = argv[i];
    if (argument == "--") {
      for (++i; i < argc; ++i)
        options.values.push_back(argv[i]);
      break;
    }
    if (argument == "--locale" || argument == "--pattern" || (takesZone && argument == "--zone")) {
      if (i + 1 >= argc)
        return false;
      const char *value = argv[++i];
      if (argument == "--locale") {
        options.locale = value;
      } else if (argument == "--pattern") {
        options.pattern = value;
        options.hasPattern = true;
      } else {
        options.zone = value;
        options.hasZone = true;
      }
    } else if (argument.size() > 2 && argument.compare(0, 2, "--") == 0) {
      std::fprintf(stderr, "%s: unknown option '%s'\n", argv[0], argv[i]);
      return false;
    } else {
      options.values.push_back(argv[i]);
    }
  }
  return !options.values.empty();
}

int report(const char *command, XYLThrowable &e) {
  std::fprintf(stderr, "%s: %s\n", command, e.getMessage() != nullptr ? e.getMessage() : e.getThrowableName());
  return kBadData;
}

} // namespace

int runFormatNumber(int argc, char **argv) {
  Options options;
  if (!parseOptions(argc, argv, false, options))
    return usage(kNumber);
  I18NScope scope;
  if (!scope.started) {
    std::fprintf(stderr, "%s: the internationalisation layer did not start\n", argv[0]);
    return kBadData;
  }
  try {
    I18NNumericFormat format{I18NLocale(options.locale.c_str())};
    if (options.hasPattern)
      format.setPattern(I18NString(options.pattern.c_str(), "UTF-8"));
    for (const char *value : options.values) {
      I18NString out;
      format.formatDigitBuffer(value, out); // exact: no rounding through a double
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
    return usage(kDate);
  std::vector<double> times;
  for (const char *value : options.values) {
    errno = 0;
    char *end = nullptr;
    const double ms = std::strtod(value, &end);
    if (errno != 0 || end == value || *end != '\0' || !std::isfinite(ms)) {
      std::fprintf(stderr, "%s: '%s' is not a number of milliseconds\n", argv[0], value);
      return usage(kDate);
    }
    times.push_back(ms);
  }
  I18NScope scope;
  if (!scope.started) {
    std::fprintf(stderr, "%s: the internationalisation layer did not start\n", argv[0]);
    return kBadData;
  }
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
