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
  std::string path;
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
    std::string image, error;
    XYLCatalogCompiler::write(entries, image, error);
    d.path = "/tmp/xyl_bench_catalog_" + std::to_string(::getpid()) + ".bmf";
    std::FILE *file = std::fopen(d.path.c_str(), "wb");
    std::fwrite(image.data(), 1, image.size(), file);
    std::fclose(file);
    return d;
  }();
  return all;
}

void BM_XylCatalogLookup(benchmark::State &state) {
  const Data &d = data();
  // Opened once: whole-file loading no longer needs the file afterwards.
  static XYLResourceFile catalog(d.path.c_str(), nullptr, XYLResourceFile::XYLResourceWholeFile);
  ::unlink(d.path.c_str());
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
    const unsigned int key = d.queries[i++ % kQueries];
    const auto it =
        std::lower_bound(d.pairs.begin(), d.pairs.end(), key,
                         [](const std::pair<unsigned int, std::string> &p, unsigned int k) { return p.first < k; });
    std::string found = (it != d.pairs.end() && it->first == key) ? it->second : std::string();
    benchmark::DoNotOptimize(found);
  }
}
BENCHMARK(BM_StdLowerBound);

// The search alone: the reader's text pointer against the pair's, no copy.
void BM_XylCatalogLookupNoCopy(benchmark::State &state) {
  const Data &d = data();
  static XYLCatalogReader reader(true);
  if (!reader.isOpen()) {
    const std::string image = d.path + ".raw";
    std::string bytes, error;
    std::vector<XYLCatalogEntry> entries;
    for (const auto &p : d.pairs)
      entries.push_back({p.first, p.second, 0});
    XYLCatalogCompiler::write(entries, bytes, error);
    std::FILE *file = std::fopen(image.c_str(), "wb");
    std::fwrite(bytes.data(), 1, bytes.size(), file);
    std::fclose(file);
    reader.open(image.c_str());
    ::unlink(image.c_str());
  }
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
    const unsigned int key = d.queries[i++ % kQueries];
    const auto it =
        std::lower_bound(d.pairs.begin(), d.pairs.end(), key,
                         [](const std::pair<unsigned int, std::string> &p, unsigned int k) { return p.first < k; });
    const char *found = (it != d.pairs.end() && it->first == key) ? it->second.c_str() : nullptr;
    benchmark::DoNotOptimize(found);
  }
}
BENCHMARK(BM_StdLowerBoundNoCopy);

} // namespace
