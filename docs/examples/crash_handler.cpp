// SPDX-License-Identifier: Apache-2.0
// Mode 1 of the fault handler: a bad memory access becomes XYLWin32SEHError.
// Build code that should translate faults with -fnon-call-exceptions.
#include <XYLCore/ExceptionHierarchy/XYLErrors.h>
#include <XYLCore/QorThread/XYLWin32SEHHandler.h>
#include <cstdint>
#include <cstdio>

static int readAt(volatile int *p) { return *p; }

int main() {
  // Usually set in the environment as XYL_HWE_ABORT=1:65535 (translate,
  // write the report only, no dump); configure() does the same in code.
  XYLWin32SEHHandler::configure("1:65535");
  try {
    volatile std::uintptr_t address = 16; // the first page is never mapped
    std::printf("%d\n", readAt(reinterpret_cast<volatile int *>(address)));
  } catch (XYLWin32SEHError &e) {
    std::printf("caught fault, code %ld\n", e.getErrorCode()); // -1073741819
    return e.getErrorCode() == -1073741819L ? 0 : 1;
  }
  return 1;
}
