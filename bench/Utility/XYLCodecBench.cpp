// SPDX-License-Identifier: Apache-2.0
// Codecs against their peers: CRC-32 against ISA-L's crc32_gzip_refl (zlib for
// reference), Base64 against APR, the squisher round trip
// against zlib's compress2 (level 9) plus uncompress.
#include <XYLCore/Utility/XYLSquisher.h>
#include <XYLCore/Utility/XYLUtCrc32.h>
#include <XYLCore/Utility/xylbase64.h>

#include <benchmark/benchmark.h>

#include <cstdint>
#include <isa-l/crc.h>
#include <random>
#include <string>
#include <vector>
#include <zlib.h>

#ifdef XYL_HAVE_APRUTIL
#include <apr_base64.h>
#endif

namespace {

std::vector<unsigned char> randomBytes(std::size_t n) {
  std::mt19937 generator(1234);
  std::vector<unsigned char> out(n);
  for (auto &b : out)
    b = static_cast<unsigned char>(generator());
  return out;
}

// Word-like text of the given size, the kind of payload a token carries.
std::string sampleText(std::size_t n) {
  static const char *const words[] = {"request", "server",  "session", "value", "user", "the", "of",   "and",
                                      "catalog", "message", "thread",  "pool",  "lock", "id",  "time", "error"};
  std::mt19937 generator(99);
  std::string text;
  while (text.size() < n) {
    text += words[generator() % 16];
    text += (generator() % 11 == 0) ? ",\n" : " ";
    if (generator() % 7 == 0)
      text += std::to_string(generator() % 100000);
  }
  text.resize(n);
  return text;
}

void BM_XylCrc32(benchmark::State &state) {
  auto data = randomBytes(static_cast<std::size_t>(state.range(0)));
  for (auto _ : state)
    benchmark::DoNotOptimize(XYLUtCrc32::crc32(0, data.data(), static_cast<unsigned int>(data.size())));
  state.SetBytesProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_XylCrc32)->Arg(8)->Arg(16)->Arg(64)->Arg(256)->Arg(1024)->Arg(1 << 20);

// zlib's crc32(0, ...) is ISA-L's crc32_gzip_refl(0, ...).
void BM_IsalCrc32(benchmark::State &state) {
  auto data = randomBytes(static_cast<std::size_t>(state.range(0)));
  for (auto _ : state)
    benchmark::DoNotOptimize(crc32_gzip_refl(0, data.data(), static_cast<std::uint64_t>(data.size())));
  state.SetBytesProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_IsalCrc32)->Arg(8)->Arg(16)->Arg(64)->Arg(256)->Arg(1024)->Arg(1 << 20);

void BM_ZlibCrc32(benchmark::State &state) {
  auto data = randomBytes(static_cast<std::size_t>(state.range(0)));
  for (auto _ : state)
    benchmark::DoNotOptimize(crc32(0, data.data(), static_cast<uInt>(data.size())));
  state.SetBytesProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_ZlibCrc32)->Arg(64)->Arg(1 << 20);

void BM_XylBase64Encode(benchmark::State &state) {
  auto data = randomBytes(static_cast<std::size_t>(state.range(0)));
  std::vector<char> out(XYLBase64EncodedSize(static_cast<unsigned int>(data.size())));
  for (auto _ : state) {
    XYLBase64Encode(data.data(), static_cast<unsigned int>(data.size()), out.data());
    benchmark::DoNotOptimize(out.data());
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_XylBase64Encode)->Arg(48)->Arg(1 << 20);

void BM_XylBase64Decode(benchmark::State &state) {
  auto data = randomBytes(static_cast<std::size_t>(state.range(0)));
  std::vector<char> text(XYLBase64EncodedSize(static_cast<unsigned int>(data.size())));
  XYLBase64Encode(data.data(), static_cast<unsigned int>(data.size()), text.data());
  std::vector<unsigned char> out(text.size());
  unsigned int length = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(XYLBase64Decode(text.data(), out.data(), &length));
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_XylBase64Decode)->Arg(48)->Arg(1 << 20);

#ifdef XYL_HAVE_APRUTIL
void BM_AprBase64Encode(benchmark::State &state) {
  auto data = randomBytes(static_cast<std::size_t>(state.range(0)));
  std::vector<char> out(static_cast<std::size_t>(apr_base64_encode_len(static_cast<int>(data.size()))));
  for (auto _ : state) {
    apr_base64_encode(out.data(), reinterpret_cast<const char *>(data.data()), static_cast<int>(data.size()));
    benchmark::DoNotOptimize(out.data());
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_AprBase64Encode)->Arg(48)->Arg(1 << 20);

void BM_AprBase64Decode(benchmark::State &state) {
  auto data = randomBytes(static_cast<std::size_t>(state.range(0)));
  std::vector<char> text(static_cast<std::size_t>(apr_base64_encode_len(static_cast<int>(data.size()))));
  apr_base64_encode(text.data(), reinterpret_cast<const char *>(data.data()), static_cast<int>(data.size()));
  std::vector<char> out(static_cast<std::size_t>(apr_base64_decode_len(text.data())));
  for (auto _ : state) {
    benchmark::DoNotOptimize(apr_base64_decode(out.data(), text.data()));
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_AprBase64Decode)->Arg(48)->Arg(1 << 20);
#endif

// Token out and text back, allocations included.
void BM_XylSquishRoundTrip(benchmark::State &state) {
  std::string text = sampleText(static_cast<std::size_t>(state.range(0)));
  for (auto _ : state) {
    char *token = XYLSquisher::squish(text.c_str());
    char *back = XYLSquisher::unSquish(token);
    benchmark::DoNotOptimize(back);
    delete[] token;
    delete[] back;
  }
  state.SetBytesProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_XylSquishRoundTrip)->Arg(20 << 10);

void BM_ZlibCompressUncompress(benchmark::State &state) {
  std::string text = sampleText(static_cast<std::size_t>(state.range(0)));
  std::vector<Bytef> packed(compressBound(text.size()));
  std::vector<Bytef> back(text.size() + 1);
  for (auto _ : state) {
    uLongf packedLength = packed.size();
    compress2(packed.data(), &packedLength, reinterpret_cast<const Bytef *>(text.data()), text.size(), 9);
    uLongf backLength = text.size();
    benchmark::DoNotOptimize(uncompress(back.data(), &backLength, packed.data(), packedLength));
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_ZlibCompressUncompress)->Arg(20 << 10);

} // namespace
