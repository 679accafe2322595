// SPDX-License-Identifier: Apache-2.0
#include <XYLCore/Utility/XYLUtMemory.h>

#include <atomic>
#include <cstdlib>
#include <cstring>

namespace {
std::atomic<long> g_countdown{0};
std::atomic<int> g_sticky{0};
std::atomic<long> g_failed{0};

// True when the injected countdown says this allocation must fail. The
// countdown is a test device used from one thread, so plain loads and stores
// suffice; they are atomic only to keep other threads' reads defined.
bool injectFailure() {
  long countdown = g_countdown.load(std::memory_order_relaxed);
  if (countdown == 0)
    return false;
  if (countdown > 1) {
    g_countdown.store(countdown - 1, std::memory_order_relaxed);
    return false;
  }
  // 1: this allocation fails; -1: a sticky countdown fails every allocation.
  g_countdown.store(g_sticky.load(std::memory_order_relaxed) ? -1 : 0, std::memory_order_relaxed);
  g_failed.fetch_add(1, std::memory_order_relaxed);
  return true;
}
} // namespace

void *XYLUtMemory::malloc(std::size_t size) { return injectFailure() ? nullptr : std::malloc(size); }

void *XYLUtMemory::calloc(std::size_t count, std::size_t size) {
  return injectFailure() ? nullptr : std::calloc(count, size);
}

void *XYLUtMemory::realloc(void *block, std::size_t size) {
  return injectFailure() ? nullptr : std::realloc(block, size);
}

void XYLUtMemory::free(void *block) { std::free(block); }

char *XYLUtMemory::strdup(const char *text) {
  if (text == nullptr)
    return nullptr;
  std::size_t length = std::strlen(text) + 1;
  char *copy = static_cast<char *>(XYLUtMemory::malloc(length));
  if (copy != nullptr)
    std::memcpy(copy, text, length);
  return copy;
}

long XYLUtMemory::setFailureCountdown(long countdown, int sticky) {
  g_sticky.store(sticky != 0, std::memory_order_relaxed);
  g_countdown.store(countdown < 0 ? 0 : countdown, std::memory_order_relaxed);
  return g_failed.exchange(0, std::memory_order_relaxed);
}
