// SPDX-License-Identifier: Apache-2.0
// XYLByteBuffer against std::string: many small appends, and integers
// streamed as decimal text (std::to_chars for the string).
#include <XYLCore/Types/XYLByteBuffer.h>

#include <benchmark/benchmark.h>

#include <charconv>
#include <cstdint>
#include <string>
#include <vector>

namespace {

const int kPieces = 1000000;

struct Piece {
  unsigned offset;
  unsigned length;
};

// A fixed pseudo-random mix of 1- to 16-byte pieces of one source text.
const std::vector<Piece> &pieces() {
  static const std::vector<Piece> all = [] {
    std::vector<Piece> out;
    out.reserve(kPieces);
    std::uint32_t seed = 2463534242u;
    for (int i = 0; i < kPieces; ++i) {
      seed ^= seed << 13;
      seed ^= seed >> 17;
      seed ^= seed << 5;
      out.push_back(Piece{seed % 4000, 1 + (seed >> 16) % 16});
    }
    return out;
  }();
  return all;
}

const std::string &source() {
  static const std::string text = [] {
    std::string out;
    for (int i = 0; i < 4100; ++i)
      out += static_cast<char>('a' + i % 26);
    return out;
  }();
  return text;
}

// Integers of every magnitude, both signs.
const std::vector<int> &integers() {
  static const std::vector<int> all = [] {
    std::vector<int> out;
    out.reserve(kPieces);
    std::uint32_t seed = 88172645u;
    for (int i = 0; i < kPieces; ++i) {
      seed ^= seed << 13;
      seed ^= seed >> 17;
      seed ^= seed << 5;
      out.push_back(static_cast<int>(seed) >> (seed % 31));
    }
    return out;
  }();
  return all;
}

// Argument: the block size.
void BM_XylByteBuffer_AppendSmall(benchmark::State &state) {
  const char *text = source().data();
  const std::vector<Piece> &all = pieces();
  for (auto _ : state) {
    XYLByteBuffer buffer(0, static_cast<unsigned>(state.range(0)));
    for (const Piece &p : all)
      buffer.appendChars(text + p.offset, p.length);
    benchmark::DoNotOptimize(buffer.str());
  }
  state.SetItemsProcessed(state.iterations() * kPieces);
}
BENCHMARK(BM_XylByteBuffer_AppendSmall)->Arg(1024)->Arg(65536)->Unit(benchmark::kMillisecond);

void BM_StdString_AppendSmall(benchmark::State &state) {
  const char *text = source().data();
  const std::vector<Piece> &all = pieces();
  for (auto _ : state) {
    std::string buffer;
    for (const Piece &p : all)
      buffer.append(text + p.offset, p.length);
    benchmark::DoNotOptimize(buffer.data());
  }
  state.SetItemsProcessed(state.iterations() * kPieces);
}
BENCHMARK(BM_StdString_AppendSmall)->Unit(benchmark::kMillisecond);

void BM_XylByteBuffer_StreamIntegers(benchmark::State &state) {
  const std::vector<int> &all = integers();
  for (auto _ : state) {
    XYLByteBuffer buffer(0, static_cast<unsigned>(state.range(0)));
    for (int value : all)
      buffer << value;
    benchmark::DoNotOptimize(buffer.str());
  }
  state.SetItemsProcessed(state.iterations() * kPieces);
}
BENCHMARK(BM_XylByteBuffer_StreamIntegers)->Arg(1024)->Arg(65536)->Unit(benchmark::kMillisecond);

void BM_StdString_ToChars(benchmark::State &state) {
  const std::vector<int> &all = integers();
  for (auto _ : state) {
    std::string buffer;
    for (int value : all) {
      char digits[16];
      std::to_chars_result r = std::to_chars(digits, digits + sizeof digits, value);
      buffer.append(digits, static_cast<std::size_t>(r.ptr - digits));
    }
    benchmark::DoNotOptimize(buffer.data());
  }
  state.SetItemsProcessed(state.iterations() * kPieces);
}
BENCHMARK(BM_StdString_ToChars)->Unit(benchmark::kMillisecond);

} // namespace
