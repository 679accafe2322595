/* SPDX-License-Identifier: Apache-2.0
 * XYLThreadMonitor.h - a lock together with the data it guards.
 *
 * XYLThreadMonitor<Lock, Data> is an XYLThreadLockableResource whose lock(),
 * unlock() and tryLock() are those of the embedded Lock (any
 * XYLThreadLockableResource with a default constructor; the library uses
 * XYLThreadCriticalSection), and which also holds one Data. Take the lock
 * (XYLThreadGuard guard(monitor);) and then reach the data with get(); the
 * monitor does not check that the caller holds the lock. get() is virtual so
 * that a derived monitor can hand out a view of its data instead.
 *
 * XYLBinder<Lock, Data> holds a monitor and gives the data with operator*;
 * callers guard every access with XYLThreadGuard guard(binder.monitor()).
 *
 * Ownership: the monitor owns its lock and its Data. Thread safety: as the
 * embedded lock; the data only under the lock. Throws what the lock's and
 * Data's constructors throw, and what the lock's operations throw.
 */
#ifndef XYLCORE_THREADPOOLS_XYLTHREADMONITOR_H
#define XYLCORE_THREADPOOLS_XYLTHREADMONITOR_H

#include <XYLCore/Threads/XYLThreadLockableResource.h>

template <class Lock, class Data> class XYLThreadMonitor : public XYLThreadLockableResource {
public:
  XYLThreadMonitor() : m_lock(), m_data() {}

  void lock() override { m_lock.lock(); }
  void unlock() override { m_lock.unlock(); }
  int tryLock() override { return m_lock.tryLock(); }

  // The guarded data; hold the lock while using it.
  virtual Data &get() { return m_data; }
  virtual const Data &get() const { return m_data; }

private:
  Lock m_lock;
  Data m_data;
};

template <class Lock, class Data> class XYLBinder {
public:
  XYLBinder() : m_monitor() {}

  // The lock to hold around every use of the data.
  XYLThreadMonitor<Lock, Data> &monitor() { return m_monitor; }

  Data &operator*() { return m_monitor.get(); }
  const Data &operator*() const { return m_monitor.get(); }

private:
  XYLBinder(const XYLBinder &) = delete;
  XYLBinder &operator=(const XYLBinder &) = delete;

  XYLThreadMonitor<Lock, Data> m_monitor;
};

#endif // XYLCORE_THREADPOOLS_XYLTHREADMONITOR_H
