// SPDX-License-Identifier: Apache-2.0
// Sequential reads and writes of a 64 MiB file in 1 MiB pieces: XYLFmFile
// against plain open/read/write/close on the same file.
#include <XYLCore/FileManagement/XYLFmFile.h>

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <fcntl.h>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

const std::size_t kChunk = 1 << 20;
const std::size_t kTotal = 64 << 20;

// The file the benchmarks use, in $TMPDIR or /tmp, removed at exit.
struct BenchFile {
  BenchFile() {
    const char *base = std::getenv("TMPDIR");
    path = std::string(base != nullptr && *base != '\0' ? base : "/tmp") + "/xylfmbench.XXXXXX";
    const int fd = ::mkstemp(&path[0]);
    if (fd >= 0)
      ::close(fd);
  }
  ~BenchFile() { ::unlink(path.c_str()); }
  std::string path;
};

const std::string &benchFile() {
  static BenchFile file;
  return file.path;
}

std::vector<char> &chunk() {
  static std::vector<char> data(kChunk, 'x');
  return data;
}

// Makes sure the file holds 64 MiB (the read benchmarks' input).
void fillFile() {
  const int fd = ::open(benchFile().c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
  for (std::size_t done = 0; done < kTotal; done += kChunk)
    if (::write(fd, chunk().data(), kChunk) != static_cast<ssize_t>(kChunk))
      break;
  ::close(fd);
}

void BM_XylFmFile_Write64MiB(benchmark::State &state) {
  for (auto _ : state) {
    XYLFmFile file;
    if (file.open(benchFile().c_str(), XYLFmFileModes::createAlways, 0) == 0) {
      state.SkipWithError("open failed");
      break;
    }
    for (std::size_t done = 0; done < kTotal; done += kChunk)
      benchmark::DoNotOptimize(file.write(chunk().data(), kChunk));
    file.close();
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(kTotal));
}

void BM_PosixWrite_Write64MiB(benchmark::State &state) {
  for (auto _ : state) {
    const int fd = ::open(benchFile().c_str(), O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    if (fd < 0) {
      state.SkipWithError("open failed");
      break;
    }
    for (std::size_t done = 0; done < kTotal; done += kChunk)
      benchmark::DoNotOptimize(::write(fd, chunk().data(), kChunk));
    ::close(fd);
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(kTotal));
}

void BM_XylFmFile_Read64MiB(benchmark::State &state) {
  fillFile();
  std::vector<char> buffer(kChunk);
  for (auto _ : state) {
    XYLFmFile file;
    if (file.open(benchFile().c_str(), XYLFmFileModes::openExisting, 1) == 0) {
      state.SkipWithError("open failed");
      break;
    }
    for (std::size_t done = 0; done < kTotal; done += kChunk)
      benchmark::DoNotOptimize(file.read(buffer.data(), kChunk));
    file.close();
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(kTotal));
}

void BM_PosixRead_Read64MiB(benchmark::State &state) {
  fillFile();
  std::vector<char> buffer(kChunk);
  for (auto _ : state) {
    const int fd = ::open(benchFile().c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) {
      state.SkipWithError("open failed");
      break;
    }
    for (std::size_t done = 0; done < kTotal; done += kChunk)
      benchmark::DoNotOptimize(::read(fd, buffer.data(), kChunk));
    ::close(fd);
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(kTotal));
}

BENCHMARK(BM_XylFmFile_Write64MiB)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_PosixWrite_Write64MiB)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_XylFmFile_Read64MiB)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_PosixRead_Read64MiB)->Unit(benchmark::kMillisecond);

} // namespace
