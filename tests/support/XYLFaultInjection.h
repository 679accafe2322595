/* SPDX-License-Identifier: Apache-2.0 */
// Test-only helpers that drive the library's allocation seam.
#ifndef XYLCORE_TESTS_SUPPORT_XYLFAULTINJECTION_H
#define XYLCORE_TESTS_SUPPORT_XYLFAULTINJECTION_H

#include <XYLCore/Utility/XYLUtMemory.h>

namespace xyltest {

// While alive, the `countdown`-th C-heap allocation of the library fails
// (and, when sticky, every later one). The destructor turns injection off.
class AllocationFailure {
public:
  explicit AllocationFailure(long countdown, bool sticky = false) {
    XYLUtMemory::setFailureCountdown(countdown, sticky ? 1 : 0);
  }
  ~AllocationFailure() { XYLUtMemory::setFailureCountdown(0, 0); }

private:
  AllocationFailure(const AllocationFailure &) = delete;
  AllocationFailure &operator=(const AllocationFailure &) = delete;
};

} // namespace xyltest

#endif
