// SPDX-License-Identifier: Apache-2.0
// Replaces every global operator new and delete of the test process with
// malloc and free plus a countdown. Replacing the whole family keeps
// allocation and release paired under AddressSanitizer.
#include "XYLOperatorNewFailure.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace {
std::atomic<long> g_countdown{0};
std::atomic<bool> g_fired{false};

bool failThisOne() {
  long countdown = g_countdown.load(std::memory_order_relaxed);
  if (countdown == 0)
    return false;
  if (countdown > 1) {
    g_countdown.store(countdown - 1, std::memory_order_relaxed);
    return false;
  }
  g_countdown.store(0, std::memory_order_relaxed);
  g_fired.store(true, std::memory_order_relaxed);
  return true;
}

void *allocate(std::size_t size) {
  if (failThisOne())
    return nullptr;
  return std::malloc(size == 0 ? 1 : size);
}

void *allocateOrThrow(std::size_t size) {
  void *block = allocate(size);
  if (block == nullptr)
    throw std::bad_alloc();
  return block;
}
} // namespace

namespace xyltest {
OperatorNewFailure::OperatorNewFailure(long countdown) {
  g_fired.store(false, std::memory_order_relaxed);
  g_countdown.store(countdown, std::memory_order_relaxed);
}
OperatorNewFailure::~OperatorNewFailure() { g_countdown.store(0, std::memory_order_relaxed); }
bool OperatorNewFailure::fired() const { return g_fired.load(std::memory_order_relaxed); }
} // namespace xyltest

void *operator new(std::size_t size) { return allocateOrThrow(size); }
void *operator new[](std::size_t size) { return allocateOrThrow(size); }
void *operator new(std::size_t size, const std::nothrow_t &) noexcept { return allocate(size); }
void *operator new[](std::size_t size, const std::nothrow_t &) noexcept { return allocate(size); }
void operator delete(void *block) noexcept { std::free(block); }
void operator delete[](void *block) noexcept { std::free(block); }
void operator delete(void *block, std::size_t) noexcept { std::free(block); }
void operator delete[](void *block, std::size_t) noexcept { std::free(block); }
void operator delete(void *block, const std::nothrow_t &) noexcept { std::free(block); }
void operator delete[](void *block, const std::nothrow_t &) noexcept { std::free(block); }
