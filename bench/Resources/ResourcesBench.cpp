// SPDX-License-Identifier: Apache-2.0
// Catalog lookup (whole-file loading) against std::lower_bound over the same
// (number, text) pairs held in a sorted std::vector. Both return the text as
// a std::string, as XYLResourceFile::getResource does.
#include <XYLCore/Resources/XYLResourceFile.h>

#include "Resources/XYLCatalogCompiler.h"
#include "Resources/XYLCatalogReader.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <string>
#include <unistd.h>
#include <utility>
#include <vector>

namespace {

const int kEntries = 10000;
const int kQueries = 4096;

struct Data {
  std::vector<std::pair<unsigned int, std::string>> pairs; // sorted by number
  std::vector<unsigned int> queries;                       // present numbers, shuffled
  std::string image;                                       // the compiled catalog
};

const Data &data() {
  static const Data all = [] {
    Data d;
    std::uint32_t seed = 2463534242u;
    const auto next = [&seed] {
      seed ^= seed << 13;
      seed ^= seed >> 17;
      seed ^= seed << 5;
      return seed;
    };
    std::vector<XYLCatalogEntry> entries;
    for (int i = 0; i < kEntries; ++i) {
      // Spread over the whole unsigned range, texts of typical message length.
      const unsigned int number = static_cast<unsigned int>(i) * 429496u + (next() % 1000u);
      std::string text = "Message " + std::to_string(number) + ": the operation could not complete {0}";
      entries.push_back({number, text, 0});
      d.pairs.emplace_back(number, text);
    }
    for (int i = 0; i < kQueries; ++i)
      d.queries.push_back(d.pairs[next() % kEntries].first);
    std::string error;
    XYLCatalogCompiler::write(entries, d.image, error);
    return d;
  }();
  return all;
}

// Writes the catalog to a temporary file for `open`, then removes it:
// whole-file loading no longer needs the file once open.
template <class Open> void openFromTemporaryFile(Open open) {
  const std::string path = "/tmp/xyl_bench_catalog_" + std::to_string(::getpid()) + ".bmf";
  std::FILE *file = std::fopen(path.c_str(), "wb");
  std::fwrite(data().image.data(), 1, data().image.size(), file);
  std::fclose(file);
  open(path.c_str());
  ::unlink(path.c_str());
}

const std::pair<unsigned int, std::string> *findPair(unsigned int key) {
  const auto &pairs = data().pairs;
  const auto it =
      std::lower_bound(pairs.begin(), pairs.end(), key,
                       [](const std::pair<unsigned int, std::string> &p, unsigned int k) { return p.first < k; });
  return it != pairs.end() && it->first == key ? &*it : nullptr;
}

void BM_XylCatalogLookup(benchmark::State &state) {
  const Data &d = data();
  static XYLResourceFile catalog(XYLResourceFile::XYLResourceWholeFile);
  if (!catalog.isOpen())
    openFromTemporaryFile([](const char *path) { catalog.open(path, nullptr); });
  if (!catalog.isOpen()) {
    state.SkipWithError("catalog did not open");
    return;
  }
  std::size_t i = 0;
  for (auto _ : state) {
    const char *text = nullptr;
    std::string found = catalog.getResource(d.queries[i++ % kQueries], &text);
    benchmark::DoNotOptimize(found);
  }
}
BENCHMARK(BM_XylCatalogLookup);

void BM_StdLowerBound(benchmark::State &state) {
  const Data &d = data();
  std::size_t i = 0;
  for (auto _ : state) {
    const auto *pair = findPair(d.queries[i++ % kQueries]);
    std::string found = pair != nullptr ? pair->second : std::string();
    benchmark::DoNotOptimize(found);
  }
}
BENCHMARK(BM_StdLowerBound);

// The search alone: the reader's text pointer against the pair's, no copy.
void BM_XylCatalogLookupNoCopy(benchmark::State &state) {
  const Data &d = data();
  static XYLCatalogReader reader(true);
  if (!reader.isOpen())
    openFromTemporaryFile([](const char *path) { reader.open(path); });
  std::size_t i = 0;
  for (auto _ : state) {
    std::size_t length = 0;
    benchmark::DoNotOptimize(reader.lookup(d.queries[i++ % kQueries], &length));
  }
}
BENCHMARK(BM_XylCatalogLookupNoCopy);

void BM_StdLowerBoundNoCopy(benchmark::State &state) {
  const Data &d = data();
  std::size_t i = 0;
  for (auto _ : state) {
    const auto *pair = findPair(d.queries[i++ % kQueries]);
    const char *found = pair != nullptr ? pair->second.c_str() : nullptr;
    benchmark::DoNotOptimize(found);
  }
}
BENCHMARK(BM_StdLowerBoundNoCopy);

} // namespace
