/* SPDX-License-Identifier: Apache-2.0 */
// Private: the catalog source format and the ".bmf" writer, shared by the
// library (exported for `xyl msgc`, `xyl msgdump`, tests and the fuzzer) and
// the build-time compiler of the library's own catalog. Plain standard C++:
// no other part of the library is needed.
//
// Source format (UTF-8 text, one entry per line):
//   # a comment line; blank lines are ignored
//   <number> <text>
// The number is decimal or hexadecimal with "0x" (0 .. 4294967295) and is
// followed by at least one space or tab. The text is either the rest of the
// line (trailing spaces and tabs dropped) or a double-quoted string followed
// by nothing but spaces, tabs or a "#" comment. Escapes in both forms:
// \n \t \r \\ \" \xHH (one byte) \uXXXX and \UXXXXXXXX (a code point, written
// as UTF-8). A text must be valid UTF-8 without a zero byte; a number may
// appear once. Line ends are LF or CRLF.
#ifndef XYLCORE_SRC_RESOURCES_XYLCATALOGCOMPILER_H
#define XYLCORE_SRC_RESOURCES_XYLCATALOGCOMPILER_H

#include <XYLCore/XYLExport.h>

#include <cstddef>
#include <string>
#include <vector>

struct XYLCatalogEntry {
  unsigned int number;
  std::string text;
  unsigned int line; // the source line (0 when not from a source)
};

class XYL_API XYLCatalogCompiler {
public:
  // Parses a source; false with `error` set to "line N: ..." on the first
  // fault. `entries` receives the entries in source order.
  static bool parse(const char *data, std::size_t size, std::vector<XYLCatalogEntry> &entries, std::string &error);
  // Writes the ".bmf" image of `entries` (sorted here by unsigned number) to
  // `image`; false with `error` set for a duplicate number or a catalog too
  // large for 32-bit sizes.
  static bool write(std::vector<XYLCatalogEntry> entries, std::string &image, std::string &error);
  // One source line (without line end) that parses back to (number, text):
  // the number in hexadecimal and the text quoted and escaped. Bytes that
  // are not valid UTF-8 are written as \xHH (which parse() then rejects).
  static std::string formatEntry(unsigned int number, const char *text, std::size_t length);
  // Whether `text` is valid UTF-8 (no overlong forms, surrogates or values
  // above U+10FFFF).
  static bool isValidUtf8(const char *text, std::size_t length);
};

#endif
