// SPDX-License-Identifier: Apache-2.0
// xyl sort --locale L [--level N] [FILE...]: the lines of the files (or of
// standard input; UTF-8) in the collation order of a locale, written
// unchanged to standard output.
#include "xyl_commands.h"
#include "xyl_io.h"

#include <XYLCore/ExceptionHierarchy/XYLErrors.h>
#include <XYLCore/i18n/cpp/i18n_collator.h>
#include <XYLCore/i18n/cpp/i18n_string.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

namespace xyltool {

int runSort(int argc, char **argv) {
  std::string locale, levelName;
  bool haveLocale = false, haveLevel = false;
  const ValueOption options[] = {{"--locale", &locale, &haveLocale}, {"--level", &levelName, &haveLevel}};
  std::vector<std::string> files;
  if (!parseValueOptions(argc, argv, options, 2, files) || !haveLocale ||
      (haveLevel && (levelName.size() != 1 || levelName[0] < '0' || levelName[0] > '3')))
    return usage(*findCommand("sort"));
  const int level = haveLevel ? levelName[0] - '0' : -1;

  std::string input;
  {
    Progress progress(argv[0]);
    if (readInputs(argv[0], files, input, true, &progress) != kSuccess)
      return kBadData;
  }
  I18NSession session(argv[0]);
  if (!session.started())
    return kBadData;
  std::unique_ptr<I18NCollator> collator;
  try {
    collator.reset(new I18NCollator(I18NString(locale.c_str(), "UTF-8")));
    if (level >= 0)
      collator->setLevel(static_cast<I18NCollationLevels>(level));
  } catch (XYLThrowable &e) {
    std::fprintf(stderr, "%s: locale '%s': %s\n", argv[0], locale.c_str(),
                 e.getMessage() != nullptr ? e.getMessage() : e.getThrowableName());
    return kBadUsage;
  }

  // Each line with its text; the strings are normalised once, up front, so
  // that the comparisons of the sort take them as they stand.
  struct Line {
    std::string bytes;
    I18NString text;
  };
  std::vector<Line> lines;
  size_t start = 0;
  int number = 0;
  while (start < input.size()) {
    size_t end = input.find('\n', start);
    if (end == std::string::npos)
      end = input.size();
    ++number;
    Line line;
    line.bytes = input.substr(start, end - start);
    if (line.bytes.find('\0') != std::string::npos) {
      std::fprintf(stderr, "%s: line %d holds a zero byte\n", argv[0], number);
      return kBadData;
    }
    try {
      line.text = I18NString(line.bytes.c_str(), "UTF-8", static_cast<int>(line.bytes.size()));
      line.text.normalize();
    } catch (XYLThrowable &e) {
      std::fprintf(stderr, "%s: line %d is not valid UTF-8: %s\n", argv[0], number,
                   e.getMessage() != nullptr ? e.getMessage() : e.getThrowableName());
      return kBadData;
    }
    lines.push_back(std::move(line));
    start = end + 1;
  }
  try {
    std::stable_sort(lines.begin(), lines.end(),
                     [&](const Line &a, const Line &b) { return collator->collate(a.text, b.text) < 0; });
  } catch (XYLThrowable &e) {
    std::fprintf(stderr, "%s: %s\n", argv[0], e.getMessage() != nullptr ? e.getMessage() : e.getThrowableName());
    return kBadData;
  }
  for (const Line &line : lines) {
    if (!writeAll(stdout, line.bytes.data(), line.bytes.size()) || !writeAll(stdout, "\n", 1)) {
      std::fprintf(stderr, "%s: cannot write standard output\n", argv[0]);
      return kBadData;
    }
  }
  return std::fflush(stdout) == 0 ? kSuccess : kBadData;
}

} // namespace xyltool
