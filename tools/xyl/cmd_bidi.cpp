// SPDX-License-Identifier: Apache-2.0
// xyl bidi [FILE...]: each line of the files (or of standard input; UTF-8)
// in visual order.
//
// Characters are only moved (no mirroring, controls kept). UTF-8 cannot
// carry the swapped units of a supplementary character in a right-to-left
// run, so such a pair is written as its character.
#include "xyl_commands.h"
#include "xyl_io.h"

#include <XYLCore/ExceptionHierarchy/XYLErrors.h>
#include <XYLCore/i18n/cpp/i18n_bidi.h>
#include <XYLCore/i18n/cpp/i18n_string.h>

#include <cstdio>
#include <string>
#include <unicode/unistr.h>
#include <unicode/utf16.h>
#include <vector>

namespace xyltool {

namespace {

// The visual string as UTF-8, with swapped surrogate pairs put back.
std::string toUtf8(const I18NString &visual) {
  if (visual.empty())
    return std::string();
  icu::UnicodeString units(visual.getUnicodeString());
  for (int32_t i = 0; i + 1 < units.length(); ++i) {
    const char16_t first = units.charAt(i);
    const char16_t second = units.charAt(i + 1);
    if (U16_IS_TRAIL(first) && U16_IS_LEAD(second)) {
      units.setCharAt(i, second);
      units.setCharAt(i + 1, first);
      ++i;
    } else if (U16_IS_LEAD(first) && U16_IS_TRAIL(second)) {
      ++i;
    }
  }
  std::string out;
  units.toUTF8String(out);
  return out;
}

} // namespace

int runBidi(int argc, char **argv) {
  std::vector<std::string> files;
  if (!parseValueOptions(argc, argv, nullptr, 0, files))
    return usage(*findCommand("bidi"));
  std::string input;
  {
    Progress progress(argv[0]);
    if (readInputs(argv[0], files, input, true, &progress) != kSuccess)
      return kBadData;
  }
  I18NSession session(argv[0]);
  if (!session.started())
    return kBadData;
  int result = kSuccess;
  try {
    I18NBidi bidi;
    size_t start = 0;
    while (start < input.size() && result == kSuccess) {
      size_t end = input.find('\n', start);
      if (end == std::string::npos)
        end = input.size();
      const std::string line = input.substr(start, end - start);
      bidi.setText(I18NString(line.data(), "UTF-8", static_cast<int>(line.size())));
      const std::string visual = toUtf8(bidi.getVisualString());
      if (!writeAll(stdout, visual.data(), visual.size()) || !writeAll(stdout, "\n", 1)) {
        std::fprintf(stderr, "%s: cannot write standard output\n", argv[0]);
        result = kBadData;
      }
      start = end + 1;
    }
  } catch (XYLThrowable &e) {
    std::fprintf(stderr, "%s: %s\n", argv[0], e.getMessage() != nullptr ? e.getMessage() : e.getThrowableName());
    result = kBadData;
  }
  if (std::fflush(stdout) != 0)
    result = kBadData;
  return result;
}

} // namespace xyltool
