// SPDX-License-Identifier: Apache-2.0
// Name lookups of XYLDBTypes against standard maps holding the same names,
// and XYLVariant's string round trip against std::variant.
#include <XYLCore/Types/XYLDBTypes.h>
#include <XYLCore/Types/XYLVariant.h>

#include <benchmark/benchmark.h>

#include <map>
#include <string>
#include <string_view>
#include <unordered_map>
#include <variant>

namespace {

// A mix of names found early, late and not at all.
const char *const kNames[] = {"xs:string",       "xs:int",   "xs:positiveInteger", "xs:dateTime", "xs:NMTOKENS",
                              "xs:base64Binary", "xs:QName", "xs:unknownThing",    "xs:anyType",  "xs:decimal"};
const int kNameCount = sizeof kNames / sizeof kNames[0];

void BM_XylDBTypes_GetXSTypeCode(benchmark::State &state) {
  const XYLDBTypes &types = *XYLDBTypes::get();
  int i = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(types.getXSTypeCode(kNames[i]));
    i = (i + 1) % kNameCount;
  }
}
BENCHMARK(BM_XylDBTypes_GetXSTypeCode)->ThreadRange(1, 4);

// The same 45 names in a hash map keyed by std::string, looked up the way a
// caller holding a const char* would: by building a string first.
std::unordered_map<std::string, int> makeHashMap() {
  std::unordered_map<std::string, int> map;
  const XYLDBTypes &types = *XYLDBTypes::get();
  for (int code = 0; code <= 44; ++code)
    map.emplace(types.getName(static_cast<XSType>(code)), code);
  return map;
}

void BM_StdUnorderedMap_Find(benchmark::State &state) {
  static const std::unordered_map<std::string, int> map = makeHashMap();
  int i = 0;
  for (auto _ : state) {
    auto found = map.find(kNames[i]);
    benchmark::DoNotOptimize(found == map.end() ? 0 : found->second);
    i = (i + 1) % kNameCount;
  }
}
BENCHMARK(BM_StdUnorderedMap_Find)->ThreadRange(1, 4);

// An ordered map with a transparent comparator: no string is built per lookup.
void BM_StdMapTransparent_Find(benchmark::State &state) {
  static const std::map<std::string, int, std::less<>> map = [] {
    std::map<std::string, int, std::less<>> m;
    for (const auto &entry : makeHashMap())
      m.emplace(entry.first, entry.second);
    return m;
  }();
  int i = 0;
  for (auto _ : state) {
    auto found = map.find(std::string_view(kNames[i]));
    benchmark::DoNotOptimize(found == map.end() ? 0 : found->second);
    i = (i + 1) % kNameCount;
  }
}
BENCHMARK(BM_StdMapTransparent_Find)->ThreadRange(1, 4);

const char kText[] = "a column value of some forty characters..";

void BM_XylVariant_StringRoundTrip(benchmark::State &state) {
  XYLVariant v;
  for (auto _ : state) {
    v.setValue(kText);
    char *out = nullptr;
    v.getValue(out);
    benchmark::DoNotOptimize(out);
    v.setValue(42L);
  }
}
BENCHMARK(BM_XylVariant_StringRoundTrip);

void BM_StdVariant_StringRoundTrip(benchmark::State &state) {
  std::variant<long, unsigned long, double, std::string, void *> v;
  for (auto _ : state) {
    v = std::string(kText);
    benchmark::DoNotOptimize(std::get<std::string>(v).c_str());
    v = 42L;
  }
}
BENCHMARK(BM_StdVariant_StringRoundTrip);

void BM_XylVariant_LongText(benchmark::State &state) {
  XYLVariant v;
  v.setValue(-1234567L);
  char buffer[32];
  for (auto _ : state) {
    benchmark::DoNotOptimize(v.getValue(buffer, sizeof buffer));
    benchmark::ClobberMemory();
  }
}
BENCHMARK(BM_XylVariant_LongText);

void BM_StdToString_Long(benchmark::State &state) {
  long value = -1234567L;
  for (auto _ : state) {
    std::string text = std::to_string(value);
    benchmark::DoNotOptimize(text.data());
  }
}
BENCHMARK(BM_StdToString_Long);

} // namespace
