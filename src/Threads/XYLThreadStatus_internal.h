/* SPDX-License-Identifier: Apache-2.0 */
// Private to Threads/: turns thread layer status codes into the library's
// exceptions. Every raise takes the caller's XYL_HERE, so the back trace
// names the class's own source file and line.
#ifndef XYLCORE_SRC_THREADS_XYLTHREADSTATUS_INTERNAL_H
#define XYLCORE_SRC_THREADS_XYLTHREADSTATUS_INTERNAL_H

#include <XYLCore/ExceptionHierarchy/XYLErrors.h>
#include <XYLCore/QorThread/qorthread.h>

namespace xyl_threads {

// Thrown with the library's throw convention at `where`.
template <class Throwable> [[noreturn]] void raiseAt(Throwable &&throwable, const XYLFileLocation &where) {
  throwable.hurl(where, nullptr, "XYL_THROW");
  __builtin_unreachable(); // hurl always throws
}

// A constructor's failure: an exhausted layer (QORTHREAD_LIMIT) becomes the
// kind's XYLThreadResourceError code with `limitText`, no memory an
// XYLOutOfMemoryError with `noMemoryText`, anything else
// XYLThreadResourceError -1 with `otherText`.
[[noreturn]] [[gnu::cold]] [[gnu::noinline]] inline void
raiseCreateFailure(const XYLFileLocation &where, int status, XYLThreadErrorCode limitCode, const char *limitText,
                   const char *noMemoryText, const char *otherText) {
  if (status == QORTHREAD_LIMIT)
    raiseAt(XYLThreadResourceError(limitCode, limitText), where);
  if (status == QORTHREAD_NOMEM)
    raiseAt(XYLOutOfMemoryError(0L, noMemoryText), where);
  raiseAt(XYLThreadResourceError(XYLThreadErrorGeneric, otherText), where);
}

// An operation's failure: XYLThreadResourceError -1 with `text`.
[[noreturn]] [[gnu::cold]] [[gnu::noinline]] inline void raiseOperationFailure(const XYLFileLocation &where,
                                                                               const char *text) {
  raiseAt(XYLThreadResourceError(XYLThreadErrorGeneric, text), where);
}

// Milliseconds as the layer counts them: 32 bits, all bits set waits
// without limit (a 64-bit all-ones value is kept as the 32-bit one).
inline unsigned int toLayerMilliseconds(unsigned long milliseconds) { return static_cast<unsigned int>(milliseconds); }

} // namespace xyl_threads

#endif // XYLCORE_SRC_THREADS_XYLTHREADSTATUS_INTERNAL_H
