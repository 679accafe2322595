// SPDX-License-Identifier: Apache-2.0
// Runs every file below the given directories (or the given files) once
// through LLVMFuzzerTestOneInput. A crash, a sanitizer report or an escaping
// exception fails the run; documented error results do not.
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);

namespace {
int replayFile(const std::filesystem::path &path) {
  std::ifstream in(path, std::ios::binary);
  if (!in) {
    std::fprintf(stderr, "cannot read %s\n", path.c_str());
    return 1;
  }
  std::vector<char> bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t *>(bytes.data()), bytes.size());
  return 0;
}
} // namespace

int main(int argc, char **argv) {
  int failures = 0;
  size_t count = 0;
  for (int i = 1; i < argc; ++i) {
    std::filesystem::path root(argv[i]);
    if (std::filesystem::is_directory(root)) {
      for (const auto &entry : std::filesystem::recursive_directory_iterator(root)) {
        if (entry.is_regular_file()) {
          failures += replayFile(entry.path());
          ++count;
        }
      }
    } else {
      failures += replayFile(root);
      ++count;
    }
  }
  std::printf("replayed %zu inputs\n", count);
  return failures == 0 && count > 0 ? 0 : 1;
}
