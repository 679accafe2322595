// xyl interval [--locale L] [--style short|long] [--ym YEARS MONTHS |
// DAYS HOURS MINUTES SECONDS MILLIS]: a duration given on the command line,
// written in a locale's words (long) or digits (short), every unit shown.
#include "xyl_commands.h"

#include <XYLCore/ExceptionHierarchy/XYLErrors.h>
#include <XYLCore/i18n/cpp/i18n_init.h>
#include <XYLCore/i18n/cpp/i18n_intervalformat.h>
#include <XYLCore/i18n/cpp/i18n_locale.h>
#include <XYLCore/i18n/cpp/i18n_string.h>

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

namespace xyltool {

namespace {

const Command kSelf = {
    "interval", "interval [--locale L] [--style short|long] [--ym YEARS MONTHS | DAYS HOURS MINUTES SECONDS MILLIS]",
    "format a duration for a locale (default en-us, long style)", runInterval};

// Starts and stops the internationalisation layer around the command.
struct I18NScope {
  I18NScope() : started(I18NInitialize() != 0) {}
  ~I18NScope() {
    if (started)
      I18NTerminate();
  }
  bool started;
};

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

} // namespace

int runInterval(int argc, char **argv) {
  std::string locale = "en-us";
  I18NIntervalFormatStyle style = I18N_INTERVAL_FORMAT_LONG;
  bool yearMonth = false;
  std::vector<long> values;
  for (int i = 1; i < argc; ++i) {
    const std::string argument = argv[i];
    if (argument == "--ym") {
      yearMonth = true;
    } else if (argument == "--locale" || argument == "--style") {
      if (i + 1 >= argc)
        return usage(kSelf);
      const std::string value = argv[++i];
      if (argument == "--locale")
        locale = value;
      else if (value == "short")
        style = I18N_INTERVAL_FORMAT_SHORT;
      else if (value == "long")
        style = I18N_INTERVAL_FORMAT_LONG;
      else
        return usage(kSelf);
    } else {
      long value;
      if (!parseValue(argv[i], value)) {
        std::fprintf(stderr, "%s: '%s' is not a whole number\n", argv[0], argv[i]);
        return usage(kSelf);
      }
      values.push_back(value);
    }
  }
  if (values.size() != (yearMonth ? 2u : 5u))
    return usage(kSelf);

  I18NScope scope;
  if (!scope.started) {
    std::fprintf(stderr, "%s: the internationalisation layer did not start\n", argv[0]);
    return kBadData;
  }
  try {
    I18NIntervalFormat format(I18NLocale(locale.c_str()), style);
    I18NString out;
    if (yearMonth)
      format.format(values[0], values[1], out);
    else
      format.format(values[0], values[1], values[2], values[3], values[4], out);
    std::printf("%s\n", out.c_str("UTF-8"));
  } catch (XYLThrowable &e) {
    std::fprintf(stderr, "%s: %s\n", argv[0], e.getMessage() != nullptr ? e.getMessage() : e.getThrowableName());
    return kBadData;
  }
  return kSuccess;
}

} // namespace xyltool
