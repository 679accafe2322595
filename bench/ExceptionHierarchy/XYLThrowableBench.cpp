// SPDX-License-Identifier: Apache-2.0
// Raising and catching: XYL_THROW of an XYLRuntimeError with a message
// against throwing a std::runtime_error with the same message.
#include <XYLCore/ExceptionHierarchy/XYLErrors.h>

#include <benchmark/benchmark.h>

#include <stdexcept>

namespace {

const char kMessage[] = "the request named an unknown table";

[[gnu::noinline]] void raiseXyl(int code) { XYL_THROW(XYLRuntimeError(code, kMessage)); }

[[gnu::noinline]] void raiseStd(int) { throw std::runtime_error(kMessage); }

void BM_XylThrowCatch(benchmark::State &state) {
  for (auto _ : state) {
    try {
      raiseXyl(5);
    } catch (XYLRuntimeError &e) {
      benchmark::DoNotOptimize(e.getMessage());
    }
  }
}
BENCHMARK(BM_XylThrowCatch);

void BM_StdThrowCatch(benchmark::State &state) {
  for (auto _ : state) {
    try {
      raiseStd(5);
    } catch (std::runtime_error &e) {
      benchmark::DoNotOptimize(e.what());
    }
  }
}
BENCHMARK(BM_StdThrowCatch);

// One rethrow level on each side, as a library boundary adds.
void BM_XylThrowRethrowCatch(benchmark::State &state) {
  for (auto _ : state) {
    try {
      try {
        raiseXyl(5);
      } catch (XYLThrowable &e) {
        XYL_RETHROW(e);
      }
    } catch (XYLRuntimeError &e) {
      benchmark::DoNotOptimize(e.getMessage());
    }
  }
}
BENCHMARK(BM_XylThrowRethrowCatch);

void BM_StdThrowRethrowCatch(benchmark::State &state) {
  for (auto _ : state) {
    try {
      try {
        raiseStd(5);
      } catch (std::exception &) {
        throw;
      }
    } catch (std::runtime_error &e) {
      benchmark::DoNotOptimize(e.what());
    }
  }
}
BENCHMARK(BM_StdThrowRethrowCatch);

void BM_XylToString(benchmark::State &state) {
  XYLRuntimeError e(5, kMessage);
  e.addBackTrace(XYL_HERE, nullptr, "XYL_THROW");
  for (auto _ : state)
    benchmark::DoNotOptimize(e.toString());
}
BENCHMARK(BM_XylToString);

} // namespace
