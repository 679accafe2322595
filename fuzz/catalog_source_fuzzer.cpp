// SPDX-License-Identifier: Apache-2.0
// Fuzz target: the catalog source parser. Any bytes either fail with a line
// number or parse; a parsed source must compile, and printing its entries
// back in the source format must parse to the same entries.
#include "Resources/XYLCatalogCompiler.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  std::vector<XYLCatalogEntry> entries;
  std::string error;
  if (!XYLCatalogCompiler::parse(reinterpret_cast<const char *>(data), size, entries, error)) {
    if (error.compare(0, 5, "line ") != 0)
      std::abort();
    return 0;
  }
  std::string image;
  if (!XYLCatalogCompiler::write(entries, image, error))
    std::abort();
  std::string source;
  for (const XYLCatalogEntry &entry : entries) {
    if (!XYLCatalogCompiler::isValidUtf8(entry.text.data(), entry.text.size()))
      std::abort();
    source += XYLCatalogCompiler::formatEntry(entry.number, entry.text.data(), entry.text.size()) + "\n";
  }
  std::vector<XYLCatalogEntry> again;
  if (!XYLCatalogCompiler::parse(source.data(), source.size(), again, error) || again.size() != entries.size())
    std::abort();
  for (std::size_t i = 0; i < entries.size(); ++i) {
    if (again[i].number != entries[i].number || again[i].text != entries[i].text)
      std::abort();
  }
  return 0;
}
