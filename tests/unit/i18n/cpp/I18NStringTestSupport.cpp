// SPDX-License-Identifier: Apache-2.0
#include "I18NStringTestSupport.h"

#include <XYLCore/Utility/XYLUtMemory.h>
#include <XYLCore/i18n/cpp/i18n_init.h>

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <unicode/uclean.h>
#include <unicode/unistr.h>

namespace i18nstringtest {

namespace {
std::atomic<long> g_icuAllocations{0};

void *countedAlloc(const void *, size_t size) {
  g_icuAllocations.fetch_add(1, std::memory_order_relaxed);
  return std::malloc(size);
}
void *countedRealloc(const void *, void *block, size_t size) {
  g_icuAllocations.fetch_add(1, std::memory_order_relaxed);
  return std::realloc(block, size);
}
void countedFree(const void *, void *block) { std::free(block); }

// Installed before main: every later ICU heap allocation is counted. Blocks
// ICU took before come from malloc too, so freeing them here is correct.
struct InstallCounters {
  InstallCounters() {
    UErrorCode status = U_ZERO_ERROR;
    u_setMemoryFunctions(nullptr, countedAlloc, countedRealloc, countedFree, &status);
  }
} g_install;

// The layer is initialised for the whole run, so converters come from the
// pools as in a server.
class I18NLayer : public ::testing::Environment {
public:
  void SetUp() override { ASSERT_NE(0, I18NInitialize()); }
  void TearDown() override { I18NTerminate(); }
};
::testing::Environment *const g_layer = ::testing::AddGlobalTestEnvironment(new I18NLayer);
} // namespace

long icuAllocations() { return g_icuAllocations.load(std::memory_order_relaxed); }

std::u16string unitsOf(const I18NString &text) {
  I18NString copy(text); // getUTF16Buffer changes the mode of the copy only
  const unsigned short *units = copy.getUTF16Buffer();
  return std::u16string(reinterpret_cast<const char16_t *>(units), static_cast<size_t>(copy.unitLength()));
}

std::string utf8Of(const I18NString &text) {
  int length = 0;
  char *bytes = text.toBytes("UTF-8", &length);
  std::string result(bytes, static_cast<size_t>(length));
  I18NString::freeBuffer(bytes);
  return result;
}

char *CountingAllocator::callback(void *context, char *buffer, int newSize, int *error) {
  CountingAllocator *self = static_cast<CountingAllocator *>(context);
  if (newSize == 0)
    ++self->frees;
  else if (self->failAfter >= 0 && self->calls >= self->failAfter) {
    ++self->calls;
    if (error != nullptr)
      *error = -1;
    return nullptr;
  } else
    ++self->calls;
  return I18NDefaultStringBufferAllocator(nullptr, buffer, newSize, error);
}

} // namespace i18nstringtest
