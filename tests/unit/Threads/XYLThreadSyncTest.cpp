// SPDX-License-Identifier: Apache-2.0
// Semaphores, both events and the condition variable.
#include <XYLCore/Threads/XYLThreadAutoResetEvent.h>
#include <XYLCore/Threads/XYLThreadConditionVariable.h>
#include <XYLCore/Threads/XYLThreadCriticalSection.h>
#include <XYLCore/Threads/XYLThreadGuard.h>
#include <XYLCore/Threads/XYLThreadManualResetEvent.h>
#include <XYLCore/Threads/XYLThreadMutex.h>
#include <XYLCore/Threads/XYLThreadSemaphore.h>

#include "XYLThreadsTestSupport.h"

#include <atomic>
#include <chrono>
#include <thread>
#include <vector>

namespace {

using xyltest::Gate;
using xyltest::kBlockedProbeMs;

// How many units a semaphore holds now (takes them all, then gives them back).
int drain(XYLThreadSemaphore &s) {
  int n = 0;
  while (s.tryWait() == 1)
    ++n;
  s.post(static_cast<unsigned long>(n));
  return n;
}

TEST(XYLThreadSemaphoreTest, CountsFromItsInitialValue) {
  struct Case {
    unsigned long initial, posted;
    int expected;
  };
  const Case cases[] = {{0, 0, 0}, {0, 1, 1}, {3, 0, 3}, {3, 2, 5}, {0, 1000, 1000}};
  for (const Case &c : cases) {
    XYLThreadSemaphore s(c.initial);
    s.post(c.posted);
    ASSERT_EQ(c.expected, drain(s)) << c.initial << "+" << c.posted;
    for (int i = 0; i < c.expected; ++i)
      s.wait();
    EXPECT_EQ(0, s.tryWait());
    EXPECT_EQ(0, s.timedWait(0));
  }
}

TEST(XYLThreadSemaphoreTest, TimedWaitExpiresOnlyWithoutUnits) {
  XYLThreadSemaphore s(0);
  auto started = std::chrono::steady_clock::now();
  EXPECT_EQ(0, s.timedWait(50));
  EXPECT_GE(std::chrono::steady_clock::now() - started, std::chrono::milliseconds(45));
  s.post();
  EXPECT_EQ(1, s.timedWait(50));
  s.post();
  EXPECT_EQ(1, s.timedWait(0xFFFFFFFFul));
}

TEST(XYLThreadSemaphoreTest, WaitBlocksUntilAnotherThreadPosts) {
  XYLThreadSemaphore s(0);
  Gate through;
  std::thread waiter([&] {
    s.wait();
    through.open();
  });
  EXPECT_FALSE(through.passWithin(kBlockedProbeMs));
  s.post();
  EXPECT_TRUE(through.passWithin(10000));
  waiter.join();
}

TEST(XYLThreadSemaphoreTest, ProducersAndConsumersBalance) {
  for (int pairs : {1, 3}) {
    XYLThreadSemaphore s(0);
    const int perThread = 5000;
    std::atomic<int> consumed{0};
    std::vector<std::thread> threads;
    for (int p = 0; p < pairs; ++p) {
      threads.emplace_back([&] {
        for (int i = 0; i < perThread; ++i)
          s.post();
      });
      threads.emplace_back([&] {
        for (int i = 0; i < perThread; ++i) {
          s.wait();
          consumed++;
        }
      });
    }
    for (std::thread &t : threads)
      t.join();
    EXPECT_EQ(pairs * perThread, consumed.load());
    EXPECT_EQ(0, s.tryWait());
  }
}

TEST(XYLThreadSemaphoreTest, CountsPastTheMaximumAreRefused) {
  xyltest::expectXylError({"XYLThreadResourceError", -1,
                           "XYLThreadSemaphore::XYLThreadSemaphore: QorThread interface or unexpected error",
                           "Threads/XYLThreadSemaphore"},
                          [] { XYLThreadSemaphore s(0x80000000ul); });
  XYLThreadSemaphore full(0x7FFFFFFFul);
  xyltest::expectXylError({"XYLThreadResourceError", -1,
                           "XYLThreadSemaphore::post: QorThread interface or unexpected error",
                           "Threads/XYLThreadSemaphore"},
                          [&] { full.post(); });
  EXPECT_EQ(1, full.tryWait());
  full.post(); // room for one again
}

// ---- events ------------------------------------------------------------

TEST(XYLThreadAutoResetEventTest, OneSignalLetsOneWaitThrough) {
  XYLThreadAutoResetEvent event;
  EXPECT_EQ(0, event.timedWait(0)); // made non-signalled
  event.signal();
  event.signal(); // signals do not add up
  EXPECT_EQ(1, event.timedWait(0));
  EXPECT_EQ(0, event.timedWait(0));

  std::atomic<int> through{0};
  std::vector<std::thread> waiters;
  for (int i = 0; i < 2; ++i)
    waiters.emplace_back([&] {
      event.wait();
      through++;
    });
  event.signal();
  auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
  while (through.load() == 0 && std::chrono::steady_clock::now() < deadline)
    std::this_thread::yield();
  EXPECT_EQ(1, through.load());
  std::this_thread::sleep_for(std::chrono::milliseconds(kBlockedProbeMs));
  EXPECT_EQ(1, through.load()); // the second waiter is still blocked
  event.signal();
  for (std::thread &w : waiters)
    w.join();
  EXPECT_EQ(2, through.load());
}

TEST(XYLThreadManualResetEventTest, StaysSignalledUntilReset) {
  for (int initially : {0, 1, 5}) {
    XYLThreadManualResetEvent event(initially);
    int expected = initially != 0 ? 1 : 0;
    EXPECT_EQ(expected, event.timedWait(0)) << initially;
    EXPECT_EQ(expected, event.timedWait(1)) << initially;
    event.signal();
    EXPECT_EQ(1, event.timedWait(0));
    EXPECT_EQ(1, event.timedWait(0));
    event.wait();
    event.reset();
    EXPECT_EQ(0, event.timedWait(0));
  }
}

TEST(XYLThreadManualResetEventTest, SignalReleasesEveryWaiter) {
  XYLThreadManualResetEvent event(0);
  std::atomic<int> through{0};
  std::vector<std::thread> waiters;
  for (int i = 0; i < 4; ++i)
    waiters.emplace_back([&] {
      event.wait();
      through++;
    });
  std::this_thread::sleep_for(std::chrono::milliseconds(kBlockedProbeMs));
  EXPECT_EQ(0, through.load());
  event.signal();
  for (std::thread &w : waiters)
    w.join();
  EXPECT_EQ(4, through.load());
}

// ---- condition variable, with either kind of lock ----------------------

template <class Lock> class XYLThreadConditionVariableTest : public testing::Test {};

using LockTypes = testing::Types<XYLThreadMutex, XYLThreadCriticalSection>;
TYPED_TEST_SUITE(XYLThreadConditionVariableTest, LockTypes);

TYPED_TEST(XYLThreadConditionVariableTest, TimedWaitExpiresWithTheLockHeldAgain) {
  TypeParam lock(0);
  XYLThreadConditionVariable cv;
  lock.lock();
  auto started = std::chrono::steady_clock::now();
  EXPECT_EQ(0, cv.timedWait(lock, 50));
  EXPECT_GE(std::chrono::steady_clock::now() - started, std::chrono::milliseconds(45));
  // Held by this thread again: another thread cannot take it, this one can
  // give it back.
  Gate acquired;
  std::thread other([&] {
    XYLThreadGuard guard(lock);
    acquired.open();
  });
  EXPECT_FALSE(acquired.passWithin(kBlockedProbeMs));
  EXPECT_NO_THROW(lock.unlock());
  EXPECT_TRUE(acquired.passWithin(10000));
  other.join();
}

TYPED_TEST(XYLThreadConditionVariableTest, ASignalWithoutWaitersIsLost) {
  TypeParam lock(0);
  XYLThreadConditionVariable cv;
  XYLThreadGuard guard(lock);
  cv.signal();
  cv.broadcast(); // returns at once without waiters
  EXPECT_EQ(0, cv.timedWait(lock, 30));
}

TYPED_TEST(XYLThreadConditionVariableTest, BroadcastWakesEveryWaiterAndSignalOne) {
  for (int waiters : {1, 4}) {
    TypeParam lock(0);
    XYLThreadConditionVariable cv;
    int waiting = 0, woken = 0;
    bool go = false;
    std::vector<std::thread> threads;
    for (int i = 0; i < waiters; ++i)
      threads.emplace_back([&] {
        XYLThreadGuard guard(lock);
        ++waiting;
        while (!go)
          cv.wait(lock);
        ++woken;
      });
    // Each waiter counts itself and waits in one hold of the lock, so a
    // full count seen under the lock means every one of them is waiting.
    for (;;) {
      XYLThreadGuard guard(lock);
      if (waiting == waiters)
        break;
      std::this_thread::yield();
    }
    {
      XYLThreadGuard guard(lock);
      go = true;
      cv.broadcast();
    }
    for (std::thread &t : threads)
      t.join();
    EXPECT_EQ(waiters, woken);
  }
}

TYPED_TEST(XYLThreadConditionVariableTest, HandsItemsFromProducerToConsumer) {
  TypeParam lock(0);
  XYLThreadConditionVariable cv;
  std::vector<int> queue;
  long sum = 0;
  const int items = 2000;
  std::thread consumer([&] {
    for (int taken = 0; taken < items;) {
      XYLThreadGuard guard(lock);
      while (queue.empty())
        cv.timedWait(lock, 0xFFFFFFFFul);
      sum += queue.back();
      queue.pop_back();
      ++taken;
    }
  });
  for (int i = 1; i <= items; ++i) {
    XYLThreadGuard guard(lock);
    queue.push_back(i);
    cv.signal();
  }
  consumer.join();
  EXPECT_EQ(static_cast<long>(items) * (items + 1) / 2, sum);
}

} // namespace
