// SPDX-License-Identifier: Apache-2.0
// Code built WITHOUT -fnon-call-exceptions, on purpose: the fault in
// readWithCleanup lies outside every call site of its cleanup table, so the
// runtime cannot throw through it and calls std::terminate. The fault
// handler's tests use it to reach the thread guard's sigsetjmp fallback.
#include "XYLSEHandlerTestCode.h"

// The faults below are meant to reach the hardware: no sanitizer check may
// catch them first.
#define XYL_REAL_FAULT __attribute__((noinline, no_sanitize("address", "undefined")))

namespace xylsehtest {

namespace {
struct PlainWitness {
  ~PlainWitness() { ++g_plainDestructorsRun; }
};
} // namespace

int g_plainDestructorsRun = 0;

void touch(volatile int *) {}

// Called through a variable, so that the compiler must assume it may throw
// and give readWithCleanup a cleanup table.
void (*volatile g_touch)(volatile int *) = touch;

XYL_REAL_FAULT int readWithCleanup(volatile int *pointer) {
  PlainWitness witness;
  g_touch(pointer);
  return *pointer;
}

} // namespace xylsehtest
