// SPDX-License-Identifier: Apache-2.0
// xyl msgc | msgdump: compile a message catalog source into a ".bmf" file,
// and print a catalog back in the source format.
#include "xyl_commands.h"
#include "xyl_io.h"

#include "Resources/XYLCatalogCompiler.h"
#include "Resources/XYLCatalogReader.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

namespace xyltool {

namespace {

// "dir/name.msg" gives "dir/name.bmf"; a name without extension gets one.
std::string defaultOutput(const std::string &source) {
  const std::string::size_type slash = source.find_last_of('/');
  const std::string::size_type dot = source.find_last_of('.');
  if (dot != std::string::npos && (slash == std::string::npos || dot > slash))
    return source.substr(0, dot) + ".bmf";
  return source + ".bmf";
}

bool writeImage(const char *command, const std::string &path, const std::string &image) {
  if (path == "-") {
    writeOut(image);
    return true;
  }
  std::FILE *out = std::fopen(path.c_str(), "wb");
  if (out == nullptr) {
    std::fprintf(stderr, "%s: cannot create %s: %s\n", command, path.c_str(), std::strerror(errno));
    return false;
  }
  bool ok = writeAll(out, image.data(), image.size());
  ok = std::fclose(out) == 0 && ok;
  if (!ok)
    std::fprintf(stderr, "%s: %s: %s\n", command, path.c_str(), std::strerror(errno));
  return ok;
}

} // namespace

int runMsgc(int argc, char **argv) {
  std::string output;
  const ValueOption options[] = {{"-o", &output, nullptr}};
  std::vector<std::string> operands;
  if (!parseValueOptions(argc, argv, options, 1, operands) || operands.size() != 1)
    return usage(*findCommand("msgc"));
  const std::string &source = operands[0];
  if (output.empty())
    output = source == "-" ? "-" : defaultOutput(source);

  std::string text;
  if (readInputs(argv[0], operands, text, false) != kSuccess)
    return kBadData;
  std::vector<XYLCatalogEntry> entries;
  std::string error;
  std::string image;
  if (!XYLCatalogCompiler::parse(text.data(), text.size(), entries, error) ||
      !XYLCatalogCompiler::write(entries, image, error)) {
    std::fprintf(stderr, "%s: %s: %s\n", argv[0], source.c_str(), error.c_str());
    return kBadData;
  }
  return writeImage(argv[0], output, image) ? kSuccess : kBadData;
}

int runMsgdump(int argc, char **argv) {
  std::vector<std::string> operands;
  if (!parseValueOptions(argc, argv, nullptr, 0, operands) || operands.size() != 1)
    return usage(*findCommand("msgdump"));
  const char *path = operands[0].c_str();
  XYLCatalogReader reader(true);
  if (!reader.open(path)) {
    const XYLCatalogReader::Status status = reader.getStatus();
    if (status == XYLCatalogReader::NotOpened || status == XYLCatalogReader::ReadFailed)
      std::fprintf(stderr, "%s: %s: %s: %s\n", argv[0], path, XYLCatalogReader::describe(status),
                   std::strerror(static_cast<int>(reader.getErrorNumber())));
    else
      std::fprintf(stderr, "%s: %s: %s\n", argv[0], path, XYLCatalogReader::describe(status));
    return kBadData;
  }
  std::string out = "# " + std::to_string(reader.getCount()) + " messages\n";
  int result = kSuccess;
  for (unsigned int i = 0; i < reader.getCount(); ++i) {
    unsigned int number = 0;
    std::size_t length = 0;
    const char *found = reader.getEntry(i, &number, &length);
    if (found == nullptr) {
      out += "# " + std::to_string(number) + ": text unavailable (outside the text area or not terminated)\n";
      result = kBadData;
      continue;
    }
    out += XYLCatalogCompiler::formatEntry(number, found, length);
    out += '\n';
  }
  writeOut(out);
  if (result != kSuccess)
    std::fprintf(stderr, "%s: %s: some texts are unavailable\n", argv[0], path);
  return result;
}

} // namespace xyltool
