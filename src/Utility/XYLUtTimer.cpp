// SPDX-License-Identifier: Apache-2.0
// OS-independent part of the timers; the clocks are in posix/XYLUtTimer_posix.inc.
#include "XYLUtOS_internal.h"

#include <XYLCore/Utility/XYLUtTimer.h>
#include <XYLCore/Utility/xyltimer.h>

#include <cstdio>

namespace {

// Milliseconds between two readings in 100-ns units: 64-bit signed division,
// truncated to 32 bits.
unsigned long millisecondsBetween(std::int64_t later, std::int64_t earlier) {
  std::int64_t difference =
      static_cast<std::int64_t>(static_cast<std::uint64_t>(later) - static_cast<std::uint64_t>(earlier));
  return static_cast<std::uint32_t>(difference / 10000);
}

// The timer behind the plain functions; constant-initialised, so it is ready
// before any static constructor of the library runs.
XYLUtTimer g_processTimer;

} // namespace

void XYLTimeSnapShot::reset() {
  m_wallClock = 0;
  m_kernelTime = 0;
  m_userTime = 0;
}

void XYLTimeSnapShot::snap() { xyl_ut_os::readTimes(m_wallClock, m_kernelTime, m_userTime); }

void XYLTimeSnapShot::set(std::int64_t wallClock, std::int64_t kernelTime, std::int64_t userTime) {
  m_wallClock = wallClock;
  m_kernelTime = kernelTime;
  m_userTime = userTime;
}

unsigned long XYLTimeSnapShot::getElapsed(const XYLTimeSnapShot &earlier) const {
  return millisecondsBetween(m_wallClock, earlier.m_wallClock);
}

unsigned long XYLTimeSnapShot::getSystem(const XYLTimeSnapShot &earlier) const {
  return millisecondsBetween(m_kernelTime, earlier.m_kernelTime);
}

unsigned long XYLTimeSnapShot::getUser(const XYLTimeSnapShot &earlier) const {
  return millisecondsBetween(m_userTime, earlier.m_userTime);
}

void XYLUtTimer::start() {
  m_end.reset();
  m_start.snap();
}

void XYLUtTimer::stop() { m_end.snap(); }

unsigned long XYLUtTimer::getElapsed(int stopFirst) {
  if (stopFirst != 0)
    stop();
  return m_end.getElapsed(m_start);
}

unsigned long XYLUtTimer::getSystem(int stopFirst) {
  if (stopFirst != 0)
    stop();
  return m_end.getSystem(m_start);
}

unsigned long XYLUtTimer::getUser(int stopFirst) {
  if (stopFirst != 0)
    stop();
  return m_end.getUser(m_start);
}

unsigned long XYLUtTimer::getCPU(int stopFirst) {
  if (stopFirst != 0)
    stop();
  return static_cast<std::uint32_t>(m_end.getUser(m_start) + m_end.getSystem(m_start));
}

const char *XYLUtTimer::getTimes(int stopFirst) {
  if (stopFirst != 0)
    stop();
  unsigned s = static_cast<unsigned>(getSystem(0));
  unsigned u = static_cast<unsigned>(getUser(0));
  unsigned e = static_cast<unsigned>(getElapsed(0));
  unsigned t = s + u;
  // The '#' flag is meaningless for %u and ignored; the line keeps its
  // historical format text.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat"
  std::snprintf(m_buffer, sizeof m_buffer, "%u.%#03us %u.%#03uu %u.%#03ut %u.%#03ue%s", s / 1000, s % 1000, u / 1000,
                u % 1000, t / 1000, t % 1000, e / 1000, e % 1000, stopFirst != 0 ? "" : "(passive)");
#pragma GCC diagnostic pop
  return m_buffer;
}

void xylTimerStart(void) { g_processTimer.start(); }

void xylTimerStop(void) { g_processTimer.stop(); }

unsigned long xylTimerGetElapsed(int stopFirst) { return g_processTimer.getElapsed(stopFirst); }

unsigned long xylTimerGetCPU(int stopFirst) { return g_processTimer.getCPU(stopFirst); }

const char *xylTimerGetTimes(int stopFirst) { return g_processTimer.getTimes(stopFirst); }

#include "posix/XYLUtTimer_posix.inc"
