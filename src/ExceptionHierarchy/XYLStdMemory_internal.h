// SPDX-License-Identifier: Apache-2.0
// Private: exported operations that build a standard string or container
// let no std::bad_alloc escape to a caller who catches XYLThrowable. It
// becomes XYLOutOfMemoryError, and the caller's objects keep their value.
#ifndef XYLCORE_SRC_EXCEPTIONHIERARCHY_XYLSTDMEMORY_INTERNAL_H
#define XYLCORE_SRC_EXCEPTIONHIERARCHY_XYLSTDMEMORY_INTERNAL_H

#include <XYLCore/ExceptionHierarchy/XYLErrors.h>

#include <cstddef>
#include <new>
#include <string>

namespace xyl_std_memory {

// Runs `body` and returns its value; std::bad_alloc becomes
// XYLOutOfMemoryError.
template <class F> decltype(auto) guarded(F &&body) {
  try {
    return body();
  } catch (std::bad_alloc &) {
    XYL_THROW(XYLOutOfMemoryError(0L, nullptr));
  }
}

// Runs `body` (which returns a value) on a copy of `target` and installs
// the copy when it returns: a failure leaves `target` as it was.
template <class T, class F> auto onCopy(T &target, F &&body) {
  return guarded([&]() {
    T scratch(target);
    auto result = body(scratch);
    target.swap(scratch); // cannot fail
    return result;
  });
}

// Runs `body`, which only appends to `text`; a failure cuts `text` back to
// its length before (shrinking never allocates), without copying it first.
template <class F> void appending(std::string &text, F &&body) {
  const std::size_t before = text.size();
  try {
    body();
  } catch (std::bad_alloc &) {
    text.resize(before);
    XYL_THROW(XYLOutOfMemoryError(0L, nullptr));
  }
}

} // namespace xyl_std_memory

#endif
