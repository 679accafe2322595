// SPDX-License-Identifier: Apache-2.0
// Attacks on the wake-up promises of the synchronisation classes, with real
// threads (2, 4 and 8): back-to-back sets, signals and posts with several
// waiters and exact counts of who was released; hand-overs of thousands of
// rounds; readers and writers that must never meet; every time-out value.
// Each waiting step is bounded, so a lost wake-up fails instead of hanging.
#include <XYLCore/ExceptionHierarchy/XYLErrors.h>
#include <XYLCore/Threads/XYLThread.h>
#include <XYLCore/Threads/XYLThreadAutoResetEvent.h>
#include <XYLCore/Threads/XYLThreadConditionVariable.h>
#include <XYLCore/Threads/XYLThreadCriticalSection.h>
#include <XYLCore/Threads/XYLThreadManualResetEvent.h>
#include <XYLCore/Threads/XYLThreadMutex.h>
#include <XYLCore/Threads/XYLThreadRWLock.h>
#include <XYLCore/Threads/XYLThreadSemaphore.h>

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <thread>
#include <vector>

namespace {

const unsigned long kForever = 4294967295ul;
const unsigned long kBound = 5000; // ms any single wake-up may take before it counts as lost

// Lets the started threads reach their blocking call.
void letThemBlock() { std::this_thread::sleep_for(std::chrono::milliseconds(20)); }

// Runs `body(i)` on `count` threads and joins them.
void onThreads(int count, const std::function<void(int)> &body) {
  std::vector<std::thread> threads;
  for (int i = 0; i < count; ++i)
    threads.emplace_back(body, i);
  for (std::thread &t : threads)
    t.join();
}

class ThreadCount : public ::testing::TestWithParam<int> {};
INSTANTIATE_TEST_SUITE_P(Waiters, ThreadCount, ::testing::Values(2, 4, 8));

// n waiters block; n back-to-back releases must let every one of them go.
// `wait` answers whether the waiter was released within kBound.
void expectBackToBackReleases(int n, const std::function<bool()> &wait, const std::function<void()> &release) {
  for (int round = 0; round < 10; ++round) {
    std::atomic<int> released{0};
    std::vector<std::thread> waiters;
    for (int i = 0; i < n; ++i)
      waiters.emplace_back([&] {
        if (wait())
          ++released;
      });
    letThemBlock();
    for (int i = 0; i < n; ++i)
      release();
    for (std::thread &t : waiters)
      t.join();
    ASSERT_EQ(n, released.load()) << "round " << round;
  }
}

TEST_P(ThreadCount, BackToBackSetsOfAnAutoResetEventReleaseEveryWaiter) {
  XYLThreadAutoResetEvent event;
  expectBackToBackReleases(
      GetParam(), [&] { return event.timedWait(kBound) == 1; }, [&] { event.signal(); });
  EXPECT_EQ(0, event.timedWait(0)) << "every set had a waiter: none may stay signalled";
}

TEST_P(ThreadCount, BackToBackPostsReleaseEveryWaiter) {
  XYLThreadSemaphore semaphore(0);
  expectBackToBackReleases(
      GetParam(), [&] { return semaphore.timedWait(kBound) == 1; }, [&] { semaphore.post(1); });
  EXPECT_EQ(0, semaphore.tryWait());
}

TEST_P(ThreadCount, BackToBackSignalsReleaseEveryWaiter) {
  XYLThreadCriticalSection lock(0);
  XYLThreadConditionVariable cv;
  int tickets = 0; // guarded by lock
  expectBackToBackReleases(
      GetParam(),
      [&] {
        lock.lock();
        int woken = cv.timedWait(lock, kBound);
        if (woken)
          ++tickets;
        lock.unlock();
        return woken == 1;
      },
      [&] {
        lock.lock();
        cv.signal();
        lock.unlock();
      });
  EXPECT_EQ(10 * GetParam(), tickets);
}

TEST(XYLThreadAutoResetEventTest, SetsWithoutAWaiterLeaveOneSignal) {
  XYLThreadAutoResetEvent event;
  event.signal();
  event.signal(); // changes nothing
  EXPECT_EQ(1, event.timedWait(0));
  EXPECT_EQ(0, event.timedWait(0));
  EXPECT_EQ(0, event.timedWait(1));
}

// k signals with n > k waiters release exactly k of them; the broadcast after
// releases the rest, and a signal never reaches a thread that came later.
TEST_P(ThreadCount, SignalsReleaseExactlyAsManyWaitersAsThereWereSignals) {
  const int n = GetParam();
  const int k = n / 2;
  XYLThreadMutex lock(0);
  XYLThreadConditionVariable cv;
  std::atomic<int> waiting{0}, woken{0};
  std::vector<std::thread> waiters;
  for (int i = 0; i < n; ++i)
    waiters.emplace_back([&] {
      lock.lock();
      ++waiting;
      if (cv.timedWait(lock, kBound))
        ++woken;
      lock.unlock();
    });
  while (waiting.load() < n)
    std::this_thread::yield();
  lock.lock(); // every waiter is inside timedWait now
  for (int i = 0; i < k; ++i)
    cv.signal();
  lock.unlock();
  std::this_thread::sleep_for(std::chrono::milliseconds(100));
  EXPECT_EQ(k, woken.load());
  lock.lock();
  cv.broadcast();
  lock.unlock();
  for (std::thread &t : waiters)
    t.join();
  EXPECT_EQ(n, woken.load());
}

// A thread that signals and at once waits again must not take its own
// signal: the hand-over would stop.
TEST(XYLThreadConditionVariableTest, HandsTheTurnOverThousandsOfTimes) {
  XYLThreadMutex lock(0);
  XYLThreadConditionVariable cv;
  int turn = 0;
  bool stalled = false; // guarded by lock; ends both sides at the first stall
  int rounds[2] = {0, 0};
  onThreads(2, [&](int me) {
    lock.lock();
    for (; rounds[me] < 4000 && !stalled; ++rounds[me]) {
      while (turn != me && !stalled)
        if (!cv.timedWait(lock, 1000)) {
          stalled = true;
          cv.broadcast();
        }
      turn = 1 - me;
      cv.signal();
    }
    lock.unlock();
  });
  EXPECT_FALSE(stalled) << "stalled after " << rounds[0] << " and " << rounds[1] << " hand-overs";
}

TEST(XYLThreadAutoResetEventTest, PingPongsThousandsOfTimes) {
  XYLThreadAutoResetEvent ping, pong;
  std::atomic<int> lost{0};
  std::thread partner([&] {
    for (int i = 0; i < 4000; ++i) {
      if (!ping.timedWait(kBound))
        ++lost;
      pong.signal();
    }
  });
  for (int i = 0; i < 4000; ++i) {
    ping.signal();
    if (!pong.timedWait(kBound))
      ++lost;
  }
  partner.join();
  EXPECT_EQ(0, lost.load());
}

TEST(XYLThreadManualResetEventTest, OneSetReleasesEveryWaiterAndStays) {
  XYLThreadManualResetEvent event(0);
  std::atomic<int> released{0};
  std::vector<std::thread> waiters;
  for (int i = 0; i < 8; ++i)
    waiters.emplace_back([&] { released += event.timedWait(kBound); });
  letThemBlock();
  event.signal();
  for (std::thread &t : waiters)
    t.join();
  EXPECT_EQ(8, released.load());
  EXPECT_EQ(1, event.timedWait(0));
  event.reset();
  EXPECT_EQ(0, event.timedWait(1));
}

// Holds a lock on another thread until told to give it back.
class Holder {
public:
  Holder(std::function<void()> take, std::function<void()> give) {
    std::atomic<bool> taken{false};
    m_thread = std::thread([this, take, give, &taken] {
      take();
      taken = true;
      while (!m_release.load())
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
      give();
    });
    while (!taken.load())
      std::this_thread::yield();
  }
  void release() { m_release = true; }
  ~Holder() {
    m_release = true;
    m_thread.join();
  }

private:
  std::atomic<bool> m_release{false};
  std::thread m_thread;
};

// Every time-out value on an object that stays unavailable (0 and 1 ms
// expire, the second after at least a millisecond) and on one that becomes
// available 20 ms later (all bits set waits for it).
TEST(XYLThreadTimeoutsTest, ZeroAndOneMillisecondExpireAndAllBitsWait) {
  XYLThreadSemaphore semaphore(0);
  XYLThreadAutoResetEvent event;
  XYLThreadMutex mutex(0);
  XYLThreadRWLock rw;
  struct Case {
    const char *name;
    std::function<int(unsigned long)> attempt;
    std::function<void()> undo;      // gives back a successful attempt
    std::function<Holder *()> block; // null: starts unavailable
    std::function<void(Holder *)> makeAvailable;
  };
  auto releaseHolder = [](Holder *h) { h->release(); };
  const Case cases[] = {
      {"semaphore", [&](unsigned long ms) { return semaphore.timedWait(ms); }, [] {}, [] { return nullptr; },
       [&](Holder *) { semaphore.post(1); }},
      {"event", [&](unsigned long ms) { return event.timedWait(ms); }, [] {}, [] { return nullptr; },
       [&](Holder *) { event.signal(); }},
      {"mutex", [&](unsigned long ms) { return mutex.timedLock(ms); }, [&] { mutex.unlock(); },
       [&] { return new Holder([&] { mutex.lock(); }, [&] { mutex.unlock(); }); }, releaseHolder},
      {"rw write", [&](unsigned long ms) { return rw.timedLock(ms); }, [&] { rw.unlock(); },
       [&] { return new Holder([&] { rw.readLock(); }, [&] { rw.unlock(); }); }, releaseHolder},
      {"rw read", [&](unsigned long ms) { return rw.timedReadLock(ms); }, [&] { rw.unlock(); },
       [&] { return new Holder([&] { rw.lock(); }, [&] { rw.unlock(); }); }, releaseHolder},
  };
  for (const Case &c : cases) {
    SCOPED_TRACE(c.name);
    std::unique_ptr<Holder> holder(c.block());
    EXPECT_EQ(0, c.attempt(0));
    auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(0, c.attempt(1));
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::microseconds(900));
    std::thread later([&] {
      std::this_thread::sleep_for(std::chrono::milliseconds(20));
      c.makeAvailable(holder.get());
    });
    EXPECT_EQ(1, c.attempt(kForever));
    later.join();
    holder.reset();
    c.undo();
  }
  XYLThreadCriticalSection cs(0);
  XYLThreadConditionVariable cv;
  cs.lock();
  EXPECT_EQ(0, cv.timedWait(cs, 0));
  EXPECT_EQ(0, cv.timedWait(cs, 1));
  cs.unlock();
}

// Writers and readers must never be inside together, whichever way the
// writer enters (try, timed, blocking) and however many readers stream by.
TEST_P(ThreadCount, WritersNeverMeetReaders) {
  const int n = GetParam();
  XYLThreadRWLock rw;
  std::atomic<int> readersInside{0}, writersInside{0}, clashes{0};
  std::atomic<bool> stop{false};
  std::vector<std::thread> threads;
  for (int i = 0; i < n; ++i)
    threads.emplace_back([&, i] {
      for (int round = 0; !stop.load() || round < 200; ++round) {
        if (i == 0 || (round % 7 == 0 && i % 2 == 0)) { // writers
          int how = round % 3;
          int got = how == 0 ? rw.tryLock() : how == 1 ? rw.timedLock(1) : (rw.lock(), 1);
          if (!got)
            continue;
          if (writersInside.fetch_add(1) != 0 || readersInside.load() != 0)
            ++clashes;
          writersInside.fetch_sub(1);
          rw.unlock();
        } else {
          int got = round % 2 ? rw.tryReadLock() : (rw.readLock(), 1);
          if (!got)
            continue;
          readersInside.fetch_add(1);
          if (writersInside.load() != 0)
            ++clashes;
          readersInside.fetch_sub(1);
          rw.unlock();
        }
        if (round > 20000)
          break;
      }
    });
  std::this_thread::sleep_for(std::chrono::milliseconds(200));
  stop = true;
  for (std::thread &t : threads)
    t.join();
  EXPECT_EQ(0, clashes.load());
}

// A writer's try-lock against a stream of readers entering by the fast
// path: the check for readers and the closing of their path must be one
// step, or a reader gets in beside the writer.
TEST_P(ThreadCount, TryLockingWriterNeverMeetsStreamingReaders) {
  XYLThreadRWLock rw;
  std::atomic<int> readersInside{0}, writersInside{0}, clashes{0};
  std::atomic<bool> stop{false};
  std::vector<std::thread> readers;
  for (int i = 1; i < GetParam(); ++i)
    readers.emplace_back([&] {
      while (!stop.load(std::memory_order_relaxed)) {
        rw.readLock();
        readersInside.fetch_add(1);
        if (writersInside.load() != 0)
          ++clashes;
        readersInside.fetch_sub(1);
        rw.unlock();
      }
    });
  auto until = std::chrono::steady_clock::now() + std::chrono::milliseconds(300);
  while (std::chrono::steady_clock::now() < until) {
    if (!rw.tryLock())
      continue;
    writersInside.store(1);
    for (int look = 0; look < 64; ++look)
      if (readersInside.load() != 0)
        ++clashes;
    writersInside.store(0);
    rw.unlock();
  }
  stop = true;
  for (std::thread &t : readers)
    t.join();
  EXPECT_EQ(0, clashes.load());
}

// A writer that waits shuts the readers out; the readers that queued behind
// it all get in after the writer is done.
TEST(XYLThreadRWLockTest, QueuedReadersAndWritersAllGetThrough) {
  XYLThreadRWLock rw;
  rw.readLock();
  std::atomic<int> done{0};
  std::thread writer([&] {
    if (rw.timedLock(kBound)) {
      ++done;
      rw.unlock();
    }
  });
  letThemBlock();
  EXPECT_EQ(0, rw.tryReadLock()) << "a waiting writer is preferred";
  std::vector<std::thread> readers;
  for (int i = 0; i < 4; ++i)
    readers.emplace_back([&] {
      if (rw.timedReadLock(kBound)) {
        ++done;
        rw.unlock();
      }
    });
  letThemBlock();
  rw.unlock();
  writer.join();
  for (std::thread &t : readers)
    t.join();
  EXPECT_EQ(5, done.load());
}

// The handle must be stored before the routine can run: a thread that joins
// itself at once is told of the deadlock, every time.
class SelfJoiner : public XYLThread {
public:
  SelfJoiner() : XYLThread(nullptr) {}
  void run() override {
    try {
      join();
    } catch (XYLThreadResourceError &) {
      refused = true;
    }
  }
  std::atomic<bool> refused{false};
};

TEST(XYLThreadTest, JoiningItselfRightAfterStartIsRefusedEveryTime) {
  std::atomic<int> missed{0};
  onThreads(4, [&](int) {
    for (int round = 0; round < 250; ++round) {
      SelfJoiner thread;
      thread.start();
      thread.join();
      if (!thread.refused.load())
        ++missed;
    }
  });
  EXPECT_EQ(0, missed.load());
}

} // namespace
