// SPDX-License-Identifier: Apache-2.0
// Fuzz target: the catalog reader. The input is written to a scratch file
// and opened in both loading modes; a malformed catalog must be rejected or
// leave entries missing, and every text handed out must lie in the reader's
// memory and be zero-terminated.
#include "Resources/XYLCatalogReader.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <unistd.h>

namespace {

void check(bool condition) {
  if (!condition)
    std::abort();
}

void exercise(XYLCatalogReader &reader, size_t size) {
  const unsigned int count = reader.getCount();
  // Every entry, and the neighbours of the numbers present.
  for (unsigned int i = 0; i < count && i < 64; ++i) {
    unsigned int number = 0;
    std::size_t length = 0;
    const char *text = reader.getEntry(i, &number, &length);
    if (text != nullptr) {
      check(std::strlen(text) == length);
      check(length < size);
    }
    std::size_t again = 0;
    const char *found = reader.lookup(number, &again);
    check((found == nullptr) == (text == nullptr));
    reader.lookup(number + 1, &again);
    reader.lookup(number - 1, &again);
  }
  for (unsigned int probe : {0u, 1u, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFFu}) {
    std::size_t length = 0;
    if (const char *text = reader.lookup(probe, &length))
      check(std::strlen(text) == length);
  }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  static const std::string path = "/tmp/xyl_catalog_fuzz_" + std::to_string(::getpid()) + ".bmf";
  std::FILE *file = std::fopen(path.c_str(), "wb");
  if (file == nullptr)
    return 0;
  if (size > 0)
    std::fwrite(data, 1, size, file);
  std::fclose(file);
  for (const bool wholeFile : {true, false}) {
    XYLCatalogReader reader(wholeFile);
    if (reader.open(path.c_str()))
      exercise(reader, size);
    else
      check(reader.getStatus() != XYLCatalogReader::Ok && !reader.isOpen());
  }
  return 0;
}
