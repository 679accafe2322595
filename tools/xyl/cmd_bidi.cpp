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
#include <memory>
#include <string>
#include <unicode/unistr.h>
#include <unicode/utf16.h>
#include <unicode/utf8.h>
#include <vector>

namespace xyltool {

namespace {

// Writes the visual string as UTF-8, a buffer at a time, with swapped
// surrogate pairs put back.
void writeVisual(const I18NString &visual) {
  const icu::UnicodeString &text = visual.getUnicodeString();
  const char16_t *units = text.getBuffer();
  const int32_t count = text.length();
  char out[65536];
  int32_t used = 0;
  for (int32_t i = 0; i < count;) {
    UChar32 c = units[i++];
    if (i < count && ((U16_IS_TRAIL(c) && U16_IS_LEAD(units[i])) || (U16_IS_LEAD(c) && U16_IS_TRAIL(units[i]))))
      c = U16_IS_LEAD(c) ? U16_GET_SUPPLEMENTARY(c, units[i++]) : U16_GET_SUPPLEMENTARY(units[i++], c);
    else if (U16_IS_SURROGATE(c))
      c = 0xFFFD;                                                // a lone half has no UTF-8 form
    U8_APPEND_UNSAFE(reinterpret_cast<uint8_t *>(out), used, c); // room is kept below

    if (used > static_cast<int32_t>(sizeof out) - 8) {
      writeOut(out, static_cast<std::size_t>(used));
      used = 0;
    }
  }
  out[used++] = '\n';
  writeOut(out, static_cast<std::size_t>(used));
}

} // namespace

int runBidi(int argc, char **argv) {
  std::vector<std::string> files;
  if (!parseValueOptions(argc, argv, nullptr, 0, files))
    return usage(*findCommand("bidi"));
  I18NSession session(argv[0]);
  if (!session.started())
    return kBadData;
  Progress progress(argv[0]);
  std::unique_ptr<I18NBidi> bidi;
  return forEachLine(
      argv[0], files,
      [&](std::string_view line, long long number) {
        try {
          if (bidi == nullptr)
            bidi.reset(new I18NBidi);
          bidi->setText(I18NString(line.data(), "UTF-8", static_cast<int>(line.size())));
          writeVisual(bidi->getVisualString());
          return true;
        } catch (XYLThrowable &e) {
          std::fprintf(stderr, "%s: line %lld: %s\n", argv[0], number,
                       e.getMessage() != nullptr ? e.getMessage() : e.getThrowableName());
          return false;
        }
      },
      &progress);
}

} // namespace xyltool
