/*
 * XYLThreadMonitor.h - a lock together with the data it guards.
 *
 * XYLThreadMonitor<T> is an XYLThreadCriticalSection that also holds one T.
 * Take the lock (XYLThreadGuard guard(monitor);) and then reach the data with
 * get(); the monitor does not check that the caller holds the lock.
 *
 * Ownership: the monitor owns its T. Thread safety: as the critical section
 * (recursive for its owner); the data only under the lock. Throws what the
 * critical section's constructor and T's constructor throw.
 */
#ifndef XYLCORE_THREADPOOLS_XYLTHREADMONITOR_H
#define XYLCORE_THREADPOOLS_XYLTHREADMONITOR_H

#include <XYLCore/Threads/XYLThreadCriticalSection.h>

template <class T> class XYLThreadMonitor : public XYLThreadCriticalSection {
public:
  XYLThreadMonitor() : XYLThreadCriticalSection(0), m_data() {}

  // The guarded data; hold the lock while using it.
  T &get() { return m_data; }
  const T &get() const { return m_data; }

private:
  T m_data;
};

#endif // XYLCORE_THREADPOOLS_XYLTHREADMONITOR_H
