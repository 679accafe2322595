#include "xyl_io.h"

#include <cstring>

namespace xyltool {

bool readAll(std::FILE *in, std::string &out) {
  char chunk[65536];
  std::size_t got;
  while ((got = std::fread(chunk, 1, sizeof chunk, in)) > 0)
    out.append(chunk, got);
  return !std::ferror(in);
}

bool writeAll(std::FILE *out, const void *data, std::size_t size) {
  return std::fwrite(data, 1, size, out) == size && std::fflush(out) == 0;
}

bool wantsHelp(int argc, char **argv) {
  for (int i = 1; i < argc; ++i) {
    if (std::strcmp(argv[i], "--") == 0)
      return false;
    if (std::strcmp(argv[i], "-h") == 0 || std::strcmp(argv[i], "--help") == 0)
      return true;
  }
  return false;
}

} // namespace xyltool
