/* SPDX-License-Identifier: Apache-2.0
 * XYLUtTimer.h - wall-clock and processor time of the current process.
 *
 * XYLTimeSnapShot records one instant: the wall-clock time (100-ns units
 * since 1601-01-01 UTC) and the kernel and user processor time the process
 * has used so far (100-ns units). Differences are reported in milliseconds,
 * computed with 64-bit signed division and truncated to 32 bits: an interval
 * of more than 2^32 ms (about 49.7 days) wraps.
 *
 * XYLUtTimer keeps a start and an end snapshot. start() clears the end and
 * records the start; stop() records the end and may be called many times.
 * Between start() and the first stop() the end is all zero, so a reading
 * taken with stopFirst = 0 is meaningless then; read with stopFirst non-zero,
 * or read the "(passive)" figures of the last stop().
 *
 * Resolution: wall clock as the system real-time clock (typically 1 us or
 * better); processor times as the kernel accounts them (typically a few ms).
 *
 * Thread safety: none. A timer belongs to one thread at a time. getTimes
 * returns a pointer into the timer, overwritten by its next call.
 * Nothing here throws or allocates.
 */
#ifndef XYLCORE_UTILITY_XYLUTTIMER_H
#define XYLCORE_UTILITY_XYLUTTIMER_H

#include <XYLCore/Utility/xyltimer.h>
#include <XYLCore/XYLExport.h>
#include <cstdint>

class XYL_API XYLTimeSnapShot {
public:
  constexpr XYLTimeSnapShot() : m_wallClock(0), m_kernelTime(0), m_userTime(0) {}

  // All three values become 0.
  void reset();
  // Records the three values now.
  void snap();
  // (this value - earlier's) / 10000 in 64-bit signed arithmetic, truncated
  // to 32 bits: milliseconds of wall-clock, kernel and user time.
  unsigned long getElapsed(const XYLTimeSnapShot &earlier) const;
  unsigned long getSystem(const XYLTimeSnapShot &earlier) const;
  unsigned long getUser(const XYLTimeSnapShot &earlier) const;

  // The recorded values in 100-ns units.
  std::int64_t getWallClockTime() const { return m_wallClock; }
  std::int64_t getKernelTime() const { return m_kernelTime; }
  std::int64_t getUserTime() const { return m_userTime; }
  // Sets the three values (100-ns units), as if snapped at that instant.
  void set(std::int64_t wallClock, std::int64_t kernelTime, std::int64_t userTime);

private:
  std::int64_t m_wallClock;
  std::int64_t m_kernelTime;
  std::int64_t m_userTime;
};

class XYL_API XYLUtTimer {
public:
  constexpr XYLUtTimer() : m_buffer{}, m_start(), m_end() {}

  // Clears the end snapshot, then records the start.
  void start();
  // Records the end snapshot.
  void stop();
  // Milliseconds between the start and the end snapshot; with stopFirst
  // non-zero, stop() first.
  unsigned long getElapsed(int stopFirst);
  unsigned long getSystem(int stopFirst);
  unsigned long getUser(int stopFirst);
  // User plus system milliseconds (32-bit sum).
  unsigned long getCPU(int stopFirst);
  // One line of system, user, total processor and elapsed seconds with three
  // decimals: "0.015s 0.031u 0.046t 1.204e", followed directly by
  // "(passive)" when stopFirst is 0. Points into this timer.
  const char *getTimes(int stopFirst);

protected:
  char m_buffer[128];
  XYLTimeSnapShot m_start;
  XYLTimeSnapShot m_end;
};

#endif // XYLCORE_UTILITY_XYLUTTIMER_H
