// SPDX-License-Identifier: Apache-2.0
// The monitor forwards to the lock it embeds, whichever kind that is; the
// binder's data is the monitor's.
#include <XYLCore/ThreadPools/XYLThreadMonitor.h>
#include <XYLCore/Threads/XYLThreadGuard.h>
#include <XYLCore/Threads/XYLThreadMutex.h>

#include <gtest/gtest.h>

#include <string>
#include <thread>

namespace {

template <class Monitor> int tryLockFromAnotherThread(Monitor &monitor) {
  int taken = -1;
  std::thread other([&] {
    taken = monitor.tryLock();
    if (taken == 1)
      monitor.unlock();
  });
  other.join();
  return taken;
}

TEST(XYLThreadMonitorTest, LockingTheMonitorLocksItsEmbeddedMutex) {
  XYLThreadMonitor<XYLThreadMutex, int> monitor;
  EXPECT_EQ(1, tryLockFromAnotherThread(monitor));
  {
    XYLThreadGuard guard(monitor);
    monitor.get() = 42;
    EXPECT_EQ(0, tryLockFromAnotherThread(monitor));
  }
  EXPECT_EQ(1, tryLockFromAnotherThread(monitor));
  const auto &view = monitor;
  EXPECT_EQ(42, view.get());
}

TEST(XYLBinderTest, DereferencingGivesTheMonitorsData) {
  XYLBinder<XYLThreadMutex, std::string> binder;
  {
    XYLThreadGuard guard(binder.monitor());
    *binder = "guarded";
    EXPECT_EQ(0, tryLockFromAnotherThread(binder.monitor()));
  }
  const XYLBinder<XYLThreadMutex, std::string> &view = binder;
  EXPECT_EQ("guarded", *view);
  EXPECT_EQ(&*binder, &binder.monitor().get());
}

} // namespace
