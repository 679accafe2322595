// SPDX-License-Identifier: Apache-2.0
// Proves that a pooled converter taken and returned, and a conversion into
// a caller's buffer, allocate nothing in the steady state: malloc, calloc
// and realloc are counted for the whole process (the library included).
// Sanitizer builds replace the allocator themselves, so the test is skipped
// there.
#include <XYLCore/i18n/cpp/i18n_converter.h>
#include <XYLCore/i18n/cpp/i18n_init.h>

#include <gtest/gtest.h>

#include <atomic>
#include <cstddef>

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define XYL_I18N_COUNTING_ALLOCATOR 0
#else
#define XYL_I18N_COUNTING_ALLOCATOR 1
#endif

#if XYL_I18N_COUNTING_ALLOCATOR
namespace {
std::atomic<bool> gCounting{false};
std::atomic<long> gAllocations{0};
} // namespace

extern "C" {
void *__libc_malloc(std::size_t);
void *__libc_calloc(std::size_t, std::size_t);
void *__libc_realloc(void *, std::size_t);

void *malloc(std::size_t size) {
  if (gCounting.load(std::memory_order_relaxed))
    gAllocations.fetch_add(1, std::memory_order_relaxed);
  return __libc_malloc(size);
}
void *calloc(std::size_t count, std::size_t size) {
  if (gCounting.load(std::memory_order_relaxed))
    gAllocations.fetch_add(1, std::memory_order_relaxed);
  return __libc_calloc(count, size);
}
void *realloc(void *block, std::size_t size) {
  if (gCounting.load(std::memory_order_relaxed))
    gAllocations.fetch_add(1, std::memory_order_relaxed);
  return __libc_realloc(block, size);
}
}
#endif

TEST(I18NConverterAllocationTest, PooledTakeReturnAndConversionAllocateNothing) {
#if !XYL_I18N_COUNTING_ALLOCATOR
  GTEST_SKIP() << "the sanitizer owns the allocator in this build";
#else
  ASSERT_NE(0, I18NInitialize());
  unsigned short units[64];
  char bytes[64];
  I18NErrorCodes error = I18N_SUCCESS;
  { // warm-up: the first borrow clones and registers this thread's slot
    I18NConverterUTF8 a;
    I18NConverterUTF16 b;
    I18NConverterPlatformDefault c;
    a->toUnicode("x", 1, units, sizeof units, &error);
  }
  // The counter sees the test's own allocations too, so nothing but the
  // library runs while it is on.
  gAllocations.store(0);
  gCounting.store(true);
  int failures = 0;
  for (int i = 0; i < 1000; ++i) {
    I18NConverterUTF8 utf8;
    I18NConverterUTF16 utf16;
    I18NConverterPlatformDefault platform;
    int n = utf8->toUnicode("gr\xC3\xBC\xC3\x9F \xE2\x82\xAC", 10, units, sizeof units, &error);
    n = utf16->fromUnicode(units, n, bytes, sizeof bytes, &error);
    if (error != I18N_SUCCESS || n != 12)
      ++failures;
  }
  gCounting.store(false);
  EXPECT_EQ(0, failures);
  EXPECT_EQ(0, gAllocations.load());
  I18NTerminate();
#endif
}
