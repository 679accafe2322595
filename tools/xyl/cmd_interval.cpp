// SPDX-License-Identifier: Apache-2.0
// xyl interval [--locale L] [--style short|long] [--ym YEARS MONTHS |
// DAYS HOURS MINUTES SECONDS MILLIS]: a duration given on the command line,
// written in a locale's words (long) or digits (short), every unit shown.
#include "xyl_commands.h"
#include "xyl_io.h"

#include <XYLCore/ExceptionHierarchy/XYLErrors.h>
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
  std::string locale = "en-us", styleName = "long";
  bool yearMonth = false;
  const ValueOption options[] = {
      {"--locale", &locale, nullptr}, {"--style", &styleName, nullptr}, {"--ym", nullptr, &yearMonth}};
  std::vector<std::string> operands;
  if (!parseValueOptions(argc, argv, options, 3, operands) || (styleName != "short" && styleName != "long"))
    return usage(*findCommand("interval"));
  const I18NIntervalFormatStyle style = styleName == "short" ? I18N_INTERVAL_FORMAT_SHORT : I18N_INTERVAL_FORMAT_LONG;
  std::vector<long> values;
  for (const std::string &operand : operands) {
    long value;
    if (!parseValue(operand.c_str(), value)) {
      std::fprintf(stderr, "%s: '%s' is not a whole number\n", argv[0], operand.c_str());
      return usage(*findCommand("interval"));
    }
    values.push_back(value);
  }
  if (values.size() != (yearMonth ? 2u : 5u))
    return usage(*findCommand("interval"));

  I18NSession session(argv[0]);
  if (!session.started())
    return kBadData;
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
