// SPDX-License-Identifier: Apache-2.0
#include <XYLCore/ThreadPools/XYLThreadPoolFixed.h>
#include <XYLCore/ThreadPools/XYLThreadPoolQueued.h>

#include "XYLTestLatch.h"

#include <gtest/gtest.h>

#include <chrono>
#include <ctime>
#include <thread>

namespace {

double processCpuSeconds() {
  struct timespec now;
  ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) / 1e9;
}

class Counter : public XYLThreadRunnable {
public:
  explicit Counter(xyltest::Latch &done) : m_done(done) {}
  void run() override { m_done.countDown(); }

private:
  xyltest::Latch &m_done;
};

// Idle workers block in their queues: over an idle second the whole process
// uses next to no processor time (the slack covers the test's own wake-up).
TEST(XYLThreadPoolIdleTest, IdlePoolsUseNoProcessorTime) {
  XYLThreadPoolFixed fixed(4);
  XYLThreadPoolQueued unbounded(4, 0, 0);
  XYLThreadPoolQueued bounded(4, 8, 1);
  xyltest::Latch done(3);
  Counter counter(done);
  ASSERT_EQ(1, fixed.execute(&counter, 4294967295ul));
  ASSERT_EQ(1, unbounded.execute(&counter, 4294967295ul));
  ASSERT_EQ(1, bounded.execute(&counter, 4294967295ul));
  ASSERT_TRUE(done.wait());
  // Let the workers settle into their waits.
  std::this_thread::sleep_for(std::chrono::milliseconds(50));

  const double before = processCpuSeconds();
  std::this_thread::sleep_for(std::chrono::seconds(1));
  const double used = processCpuSeconds() - before;
  EXPECT_LT(used, 0.02) << "seconds of processor time over an idle second";
}

} // namespace
