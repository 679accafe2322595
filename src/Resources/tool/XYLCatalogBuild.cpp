// SPDX-License-Identifier: Apache-2.0
// Build-time catalog compiler: `xylcatalogbuild <source> <output.bmf>`.
// Compiles the library's own catalogs without needing the library itself
// (the same parser and writer as `xyl msgc`).
#include "Resources/XYLCatalogCompiler.h"

#include <cstdio>
#include <fstream>
#include <iterator>
#include <sstream>

int main(int argc, char **argv) {
  if (argc != 3) {
    std::fprintf(stderr, "usage: xylcatalogbuild SOURCE OUTPUT\n");
    return 2;
  }
  std::ifstream in(argv[1], std::ios::binary);
  if (!in) {
    std::fprintf(stderr, "xylcatalogbuild: cannot read %s\n", argv[1]);
    return 1;
  }
  const std::string source((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  std::vector<XYLCatalogEntry> entries;
  std::string error;
  std::string image;
  if (!XYLCatalogCompiler::parse(source.data(), source.size(), entries, error) ||
      !XYLCatalogCompiler::write(entries, image, error)) {
    std::fprintf(stderr, "%s:%s\n", argv[1], error.c_str());
    return 1;
  }
  std::ofstream out(argv[2], std::ios::binary | std::ios::trunc);
  out.write(image.data(), static_cast<std::streamsize>(image.size()));
  out.close();
  if (!out) {
    std::fprintf(stderr, "xylcatalogbuild: cannot write %s\n", argv[2]);
    return 1;
  }
  return 0;
}
