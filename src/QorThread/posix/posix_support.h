/* SPDX-License-Identifier: Apache-2.0 */
// posix_support.h - small POSIX helpers shared by the thread layer's Linux
// backend: errno values to status codes, and deadlines for millisecond
// time-outs on CLOCK_MONOTONIC.
#ifndef XYLCORE_SRC_QORTHREAD_POSIX_POSIX_SUPPORT_H
#define XYLCORE_SRC_QORTHREAD_POSIX_POSIX_SUPPORT_H

#include <XYLCore/QorThread/qorthread.h>

#include <cerrno>
#include <ctime>

namespace qor_posix {

// Folds an errno value into the layer's codes: 0 is success, exhaustion of
// memory is QORTHREAD_NOMEM, running out of keys QORTHREAD_LIMIT where the
// caller says so, a detected deadlock QORTHREAD_DEADLOCK, an expired wait
// QORTHREAD_TIMEOUT, a busy object QORTHREAD_INUSE; all else
// QORTHREAD_ERROR.
inline int statusFromErrno(int error) {
  switch (error) {
  case 0:
    return QORTHREAD_OK;
  case ENOMEM:
    return QORTHREAD_NOMEM;
  case EDEADLK:
    return QORTHREAD_DEADLOCK;
  case ETIMEDOUT:
    return QORTHREAD_TIMEOUT;
  case EBUSY:
    return QORTHREAD_INUSE;
  default:
    return QORTHREAD_ERROR;
  }
}

inline void timespecNormalise(timespec &ts) {
  while (ts.tv_nsec >= 1000000000L) {
    ts.tv_nsec -= 1000000000L;
    ++ts.tv_sec;
  }
  while (ts.tv_nsec < 0) {
    ts.tv_nsec += 1000000000L;
    --ts.tv_sec;
  }
}

// `base` plus `ms` milliseconds.
inline timespec timespecAddMs(timespec base, unsigned int ms) {
  base.tv_sec += static_cast<time_t>(ms / 1000u);
  base.tv_nsec += static_cast<long>(ms % 1000u) * 1000000L;
  timespecNormalise(base);
  return base;
}

// The absolute CLOCK_MONOTONIC time `ms` milliseconds from now.
inline timespec monotonicDeadline(unsigned int ms) {
  timespec now;
  clock_gettime(CLOCK_MONOTONIC, &now);
  return timespecAddMs(now, ms);
}

// The absolute CLOCK_REALTIME time equivalent to a monotonic deadline, for
// the few calls that only take realtime deadlines.
inline timespec realtimeFromMonotonic(const timespec &deadline) {
  timespec monoNow, realNow;
  clock_gettime(CLOCK_MONOTONIC, &monoNow);
  clock_gettime(CLOCK_REALTIME, &realNow);
  timespec result = realNow;
  result.tv_sec += deadline.tv_sec - monoNow.tv_sec;
  result.tv_nsec += deadline.tv_nsec - monoNow.tv_nsec;
  timespecNormalise(result);
  return result;
}

// True when `a` comes before `b`.
inline bool timespecLess(const timespec &a, const timespec &b) {
  return a.tv_sec < b.tv_sec || (a.tv_sec == b.tv_sec && a.tv_nsec < b.tv_nsec);
}

// True when the monotonic clock has reached `deadline`.
inline bool deadlinePassed(const timespec &deadline) {
  timespec now;
  clock_gettime(CLOCK_MONOTONIC, &now);
  return now.tv_sec > deadline.tv_sec || (now.tv_sec == deadline.tv_sec && now.tv_nsec >= deadline.tv_nsec);
}

// Milliseconds from now until `deadline`, rounded up, 0 when it has passed.
inline unsigned int remainingMs(const timespec &deadline) {
  timespec now;
  clock_gettime(CLOCK_MONOTONIC, &now);
  long long ns =
      (static_cast<long long>(deadline.tv_sec) - now.tv_sec) * 1000000000LL + (deadline.tv_nsec - now.tv_nsec);
  if (ns <= 0)
    return 0;
  return static_cast<unsigned int>((ns + 999999LL) / 1000000LL);
}

} // namespace qor_posix

#endif // XYLCORE_SRC_QORTHREAD_POSIX_POSIX_SUPPORT_H
