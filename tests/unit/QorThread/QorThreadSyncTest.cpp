// SPDX-License-Identifier: Apache-2.0
// Synchronisation objects under real concurrency: mutex ownership across
// threads, abandoned and auto-unlock mutexes, condition-variable wake-ups,
// read/write-lock writer preference, events, the message queue and keys.
// Threads move through explicit phases; the only timed waits are those whose
// expiry is under test.
#include "QorThreadTestSupport.h"

#include <atomic>
#include <string>
#include <thread>
#include <vector>

using qortest::QorThreadFixture;
using namespace std::chrono_literals;

namespace {

// Runs fn on a layer thread and joins it.
void onLayerThread(std::function<void()> fn) {
  QorThread_ thread = nullptr;
  ASSERT_EQ(QORTHREAD_OK, qorThreadCreate(
                              [](void *arg) -> void * {
                                (*static_cast<std::function<void()> *>(arg))();
                                return nullptr;
                              },
                              &fn, &thread, 0));
  ASSERT_EQ(QORTHREAD_OK, qorThreadRelease(thread)); // joins
}

// ---- mutexes ------------------------------------------------------------------------------------

TEST_F(QorThreadFixture, HeldMutexIsInUseForOthersAndTheirTimedLockExpires) {
  QorMutex_ m = nullptr;
  ASSERT_EQ(QORTHREAD_OK, qorThreadMutexCreate(&m, 0));
  ASSERT_EQ(QORTHREAD_OK, qorThreadMutexLock(m, "", 0));
  std::thread([&] {
    EXPECT_EQ(QORTHREAD_INUSE, qorThreadMutexTryLock(m, "", 0));
    qortest::expectAboutMs(60, [&] { EXPECT_EQ(QORTHREAD_TIMEOUT, qorThreadMutexTimedLock(m, 60, "", 0)); });
    EXPECT_EQ(QORTHREAD_ERROR, qorThreadMutexUnlock(m)) << "not the owner";
  }).join();
  ASSERT_EQ(QORTHREAD_OK, qorThreadMutexUnlock(m));
  std::thread([&] {
    EXPECT_EQ(QORTHREAD_OK, qorThreadMutexTryLock(m, "", 0));
    EXPECT_EQ(QORTHREAD_OK, qorThreadMutexUnlock(m));
  }).join();
  qorThreadMutexDestroy(m);
}

// A thread ending while it holds a mutex abandons it; the next taker gets
// it by each way of taking, from a layer thread and from a foreign one.
TEST_F(QorThreadFixture, AbandonedMutexCountsAsAcquired) {
  const std::function<int(QorMutex_)> ways[] = {
      [](QorMutex_ m) { return qorThreadMutexLock(m, "", 0); },
      [](QorMutex_ m) { return qorThreadMutexTryLock(m, "", 0); },
      [](QorMutex_ m) { return qorThreadMutexTimedLock(m, 5000, "", 0); },
  };
  for (const auto &take : ways) {
    QorMutex_ m = nullptr;
    ASSERT_EQ(QORTHREAD_OK, qorThreadMutexCreate(&m, 0));
    onLayerThread([&] { ASSERT_EQ(QORTHREAD_OK, take(m)); });
    std::thread([&] { ASSERT_EQ(QORTHREAD_OK, take(m)); }).join();
    EXPECT_EQ(QORTHREAD_OK, take(m));
    EXPECT_EQ(QORTHREAD_OK, qorThreadMutexUnlock(m));
    std::thread([&] { // an ordinary mutex again
      EXPECT_EQ(QORTHREAD_OK, qorThreadMutexTryLock(m, "", 0));
      EXPECT_EQ(QORTHREAD_OK, qorThreadMutexUnlock(m));
    })
        .join();
    EXPECT_EQ(QORTHREAD_OK, qorThreadMutexDestroy(m));
  }
}

// Auto-unlock mutexes are given back, every level, when their thread ends,
// for layer and foreign threads; the critical-section kind would otherwise
// stay locked for good.
TEST_F(QorThreadFixture, AutoUnlockMutexesAreReleasedWhenTheirThreadEnds) {
  for (bool layerThread : {true, false}) {
    for (int kind : {QorMutexAttrNoop, QorMutexAttrCriticalSection}) {
      QorMutex_ a = nullptr, b = nullptr;
      qorThreadMutexCreate(&a, QorMutexAttrAutoUnlock, kind, 0);
      qorThreadMutexCreate(&b, QorMutexAttrAutoUnlock, kind, 0);
      auto takeAndEnd = [&] {
        for (QorMutex_ m : {a, a, b})
          ASSERT_EQ(QORTHREAD_OK, qorThreadMutexLock(m, "holder.cpp", 1));
      };
      layerThread ? onLayerThread(takeAndEnd) : std::thread(takeAndEnd).join();
      QorThread_ owner = reinterpret_cast<QorThread_>(1);
      qorThreadMutexGetLockSite(a, &owner, nullptr, nullptr);
      EXPECT_EQ(nullptr, owner);
      EXPECT_TRUE(qortest::finishesWithin(10s,
                                          [&] {
                                            for (QorMutex_ m : {a, b}) {
                                              EXPECT_EQ(QORTHREAD_OK, qorThreadMutexLock(m, "", 0));
                                              EXPECT_EQ(QORTHREAD_OK, qorThreadMutexUnlock(m));
                                            }
                                          }))
          << "layer thread " << layerThread << " kind " << kind;
      qorThreadMutexDestroy(a);
      qorThreadMutexDestroy(b);
    }
  }
}

TEST_F(QorThreadFixture, MutexHeldByAnotherThreadIsNotDestroyed) {
  QorMutex_ m = nullptr;
  QorEvent_ held = nullptr, release = nullptr;
  qorThreadMutexCreate(&m, 0);
  qorThreadEventCreate(&held, 1, 0, 0);
  qorThreadEventCreate(&release, 1, 0, 0);
  std::thread owner([&] {
    qorThreadMutexLock(m, "", 0);
    qorThreadEventSet(held);
    qorThreadEventWait(release);
    qorThreadMutexUnlock(m);
  });
  qorThreadEventWait(held);
  EXPECT_EQ(QORTHREAD_ERROR, qorThreadMutexDestroy(m));
  qorThreadEventSet(release);
  owner.join();
  EXPECT_EQ(QORTHREAD_OK, qorThreadMutexDestroy(m));
  qorThreadEventDestroy(held);
  qorThreadEventDestroy(release);
}

class QorThreadMutexCountTest : public QorThreadFixture, public ::testing::WithParamInterface<std::tuple<int, int>> {};

// A plain counter changed only under the lock ends exact.
TEST_P(QorThreadMutexCountTest, MutualExclusionHolds) {
  QorMutex_ m = nullptr;
  ASSERT_EQ(QORTHREAD_OK, qorThreadMutexCreate(&m, std::get<0>(GetParam()), 0));
  long counter = 0;
  std::vector<std::thread> workers;
  for (int t = 0; t < std::get<1>(GetParam()); ++t)
    workers.emplace_back([&] {
      for (int i = 0; i < 2000; ++i) {
        qorThreadMutexLock(m, "", 0);
        counter = counter + 1;
        qorThreadMutexUnlock(m);
      }
    });
  for (std::thread &w : workers)
    w.join();
  EXPECT_EQ(2000L * std::get<1>(GetParam()), counter);
  qorThreadMutexDestroy(m);
}

INSTANTIATE_TEST_SUITE_P(KindsAndThreads, QorThreadMutexCountTest,
                         ::testing::Combine(::testing::Values(int{QorMutexAttrNoop}, int{QorMutexAttrCriticalSection},
                                                              int{QorMutexAttrAutoUnlock}),
                                            ::testing::Values(2, 4)));

// ---- condition variables ------------------------------------------------------------------

// Waiters arrive under the mutex and wait until `go`; the test learns that
// they are inside their wait by holding the mutex while all have arrived.
struct ConditionRig {
  QorCondition_ cv = nullptr;
  QorMutex_ m = nullptr;
  bool cs;
  int arrived = 0, go = 0, woken = 0; // guarded by m

  explicit ConditionRig(bool criticalSection) : cs(criticalSection) {
    qorThreadConditionCreate(&cv, 0);
    qorThreadMutexCreate(&m, cs ? QorMutexAttrCriticalSection : QorMutexAttrNoop, 0);
  }
  ~ConditionRig() {
    qorThreadConditionDestroy(cv);
    qorThreadMutexDestroy(m);
  }
  void lock() { qorThreadMutexLock(m, "", 0); }
  void unlock() { qorThreadMutexUnlock(m); }
  int wait(unsigned int ms = QORTHREAD_INFINITE) {
    if (ms == QORTHREAD_INFINITE)
      return cs ? qorThreadConditionWaitCS(cv, m) : qorThreadConditionWait(cv, m);
    return cs ? qorThreadConditionTimedWaitCS(cv, m, ms) : qorThreadConditionTimedWait(cv, m, ms);
  }
  void waiter() {
    lock();
    ++arrived;
    while (go == 0)
      EXPECT_EQ(QORTHREAD_OK, wait());
    ++woken;
    unlock();
  }
  // Returns holding m once `count` waiters wait; then wakes them with
  // `wake` and joins them.
  void wakeAll(std::vector<std::thread> &waiters, const std::function<int()> &wake) {
    for (;;) {
      lock();
      if (arrived >= static_cast<int>(waiters.size()))
        break;
      unlock();
      std::this_thread::yield();
    }
    go = 1;
    EXPECT_EQ(QORTHREAD_OK, wake());
    unlock();
    for (std::thread &w : waiters)
      w.join();
  }
};

class QorThreadBroadcastTest : public QorThreadFixture, public ::testing::WithParamInterface<std::tuple<bool, int>> {};

TEST_P(QorThreadBroadcastTest, BroadcastWakesEveryWaiter) {
  ConditionRig rig(std::get<0>(GetParam()));
  std::vector<std::thread> waiters;
  for (int i = 0; i < std::get<1>(GetParam()); ++i)
    waiters.emplace_back([&] { rig.waiter(); });
  rig.wakeAll(waiters, [&] { return qorThreadConditionBroadcast(rig.cv); });
  EXPECT_EQ(std::get<1>(GetParam()), rig.woken);
}

INSTANTIATE_TEST_SUITE_P(KindsAndWaiters, QorThreadBroadcastTest,
                         ::testing::Combine(::testing::Bool(), ::testing::Values(1, 3, 8)));

// Once broadcast, the variable takes the broadcast path for every later
// wake-up too (the flag stays); rounds of signal and broadcast keep working.
TEST_F(QorThreadFixture, SignalAndBroadcastRoundsKeepWorking) {
  for (bool cs : {false, true}) {
    ConditionRig rig(cs);
    for (int round = 0; round < 6; ++round) {
      int count = round % 2 == 0 ? 1 : 3;
      rig.arrived = rig.go = rig.woken = 0;
      std::vector<std::thread> waiters;
      for (int i = 0; i < count; ++i)
        waiters.emplace_back([&] { rig.waiter(); });
      rig.wakeAll(waiters,
                  [&] { return count == 1 ? qorThreadConditionSignal(rig.cv) : qorThreadConditionBroadcast(rig.cv); });
      EXPECT_EQ(count, rig.woken) << "round " << round;
    }
  }
}

TEST_F(QorThreadFixture, WakeUpsWithoutWaitersAreLostAndDoNotBlock) {
  for (bool cs : {false, true}) {
    ConditionRig rig(cs);
    EXPECT_TRUE(qortest::finishesWithin(10s, [&] {
      rig.lock();
      EXPECT_EQ(QORTHREAD_OK, qorThreadConditionBroadcast(rig.cv)); // returns at once
      EXPECT_EQ(QORTHREAD_OK, qorThreadConditionSignal(rig.cv));
      EXPECT_EQ(QORTHREAD_OK, qorThreadConditionSignal(rig.cv));
      EXPECT_EQ(QORTHREAD_TIMEOUT, rig.wait(30)) << "a kept signal would end this wait at once";
      rig.unlock();
    }));
  }
}

// A waiter whose time runs out while a broadcast is under way must not keep
// the broadcaster (who holds the mutex) waiting for it.
TEST_F(QorThreadFixture, TimedOutWaitersDoNotBlockABroadcast) {
  for (int round = 0; round < 20; ++round) {
    ConditionRig rig(false);
    std::vector<std::thread> waiters;
    for (int i = 0; i < 3; ++i)
      waiters.emplace_back([&, i] {
        rig.lock();
        ++rig.arrived;
        i == 0 ? rig.wait(1) : rig.wait();
        rig.unlock();
      });
    EXPECT_TRUE(qortest::finishesWithin(
        10s, [&] { rig.wakeAll(waiters, [&] { return qorThreadConditionBroadcast(rig.cv); }); }));
  }
}

// ---- read/write locks -----------------------------------------------------------------------

TEST_F(QorThreadFixture, ReadWriteLockAnswersFollowItsHolders) {
  QorRWLock_ rw = nullptr;
  ASSERT_EQ(QORTHREAD_OK, qorThreadRWLockCreate(&rw, 0));
  const int answers[] = {qorThreadRWLockTryReadLock(rw),  qorThreadRWLockReadLock(rw),
                         qorThreadRWLockTryWriteLock(rw), qorThreadRWLockUnlock(rw),
                         qorThreadRWLockUnlock(rw),       qorThreadRWLockTryWriteLock(rw),
                         qorThreadRWLockTryWriteLock(rw), qorThreadRWLockTryReadLock(rw),
                         qorThreadRWLockUnlock(rw),       qorThreadRWLockTimedWriteLock(rw, QORTHREAD_INFINITE),
                         qorThreadRWLockUnlock(rw)};
  const int expected[] = {QORTHREAD_OK,    QORTHREAD_OK,    QORTHREAD_INUSE, QORTHREAD_OK, QORTHREAD_OK, QORTHREAD_OK,
                          QORTHREAD_INUSE, QORTHREAD_INUSE, QORTHREAD_OK,    QORTHREAD_OK, QORTHREAD_OK};
  for (size_t i = 0; i < sizeof answers / sizeof answers[0]; ++i)
    EXPECT_EQ(expected[i], answers[i]) << "step " << i;
  // Timed attempts expire against the other side's holder.
  for (bool readerHolds : {true, false}) {
    readerHolds ? qorThreadRWLockReadLock(rw) : qorThreadRWLockWriteLock(rw);
    std::thread([&] {
      qortest::expectAboutMs(50, [&] {
        EXPECT_EQ(QORTHREAD_TIMEOUT,
                  readerHolds ? qorThreadRWLockTimedWriteLock(rw, 50) : qorThreadRWLockTimedReadLock(rw, 50));
      });
    }).join();
    // The timed-out waiter no longer counts: a reader gets in once it is free.
    EXPECT_EQ(readerHolds ? QORTHREAD_OK : QORTHREAD_INUSE, qorThreadRWLockTryReadLock(rw));
    qorThreadRWLockUnlock(rw);
    if (readerHolds)
      qorThreadRWLockUnlock(rw);
  }
  EXPECT_EQ(QORTHREAD_OK, qorThreadRWLockTimedReadLock(rw, 0));
  qorThreadRWLockUnlock(rw);
  qorThreadRWLockDestroy(rw);
}

// A reader arriving while a reader holds the lock and a writer waits must
// wait behind the writer.
TEST_F(QorThreadFixture, WaitingWriterKeepsNewReadersOut) {
  QorRWLock_ rw = nullptr;
  QorEvent_ triedTimed = nullptr;
  qorThreadRWLockCreate(&rw, 0);
  qorThreadEventCreate(&triedTimed, 1, 0, 0);
  ASSERT_EQ(QORTHREAD_OK, qorThreadRWLockReadLock(rw)); // the first reader
  std::mutex logLock;
  std::string log;
  auto note = [&](char c) {
    std::lock_guard<std::mutex> guard(logLock);
    log += c;
  };
  std::thread writer([&] {
    qorThreadRWLockWriteLock(rw);
    note('W');
    qorThreadRWLockUnlock(rw);
  });
  // Phase 1: the writer waits (only then does a try-read fail while readers
  // alone hold the lock).
  ASSERT_TRUE(qortest::eventually([&] {
    int rc = qorThreadRWLockTryReadLock(rw);
    if (rc == QORTHREAD_OK)
      qorThreadRWLockUnlock(rw);
    return rc == QORTHREAD_INUSE;
  }));
  std::thread reader([&] {
    EXPECT_EQ(QORTHREAD_TIMEOUT, qorThreadRWLockTimedReadLock(rw, 30)) << "would pass without writer preference";
    qorThreadEventSet(triedTimed);
    qorThreadRWLockReadLock(rw);
    note('R');
    qorThreadRWLockUnlock(rw);
  });
  qorThreadEventWait(triedTimed); // phase 2: the new reader was kept out
  qorThreadRWLockUnlock(rw);      // the first reader leaves
  writer.join();
  reader.join();
  EXPECT_EQ("WR", log);
  qorThreadEventDestroy(triedTimed);
  qorThreadRWLockDestroy(rw);
}

class QorThreadRWLockStressTest : public QorThreadFixture,
                                  public ::testing::WithParamInterface<std::tuple<int, int>> {};

// Writers keep two fields equal; readers never see them differ.
TEST_P(QorThreadRWLockStressTest, ReadersNeverSeeAHalfWrite) {
  QorRWLock_ rw = nullptr;
  qorThreadRWLockCreate(&rw, 0);
  long first = 0, second = 0;
  std::atomic<int> mismatches{0};
  std::vector<std::thread> threads;
  for (int w = 0; w < std::get<1>(GetParam()); ++w)
    threads.emplace_back([&] {
      for (int i = 0; i < 500; ++i) {
        qorThreadRWLockWriteLock(rw);
        ++first;
        std::this_thread::yield();
        ++second;
        qorThreadRWLockUnlock(rw);
      }
    });
  for (int r = 0; r < std::get<0>(GetParam()); ++r)
    threads.emplace_back([&] {
      for (int i = 0; i < 500; ++i) {
        qorThreadRWLockReadLock(rw);
        mismatches += first != second;
        qorThreadRWLockUnlock(rw);
      }
    });
  for (std::thread &t : threads)
    t.join();
  EXPECT_EQ(0, mismatches.load());
  EXPECT_EQ(500L * std::get<1>(GetParam()), first);
  qorThreadRWLockDestroy(rw);
}

INSTANTIATE_TEST_SUITE_P(ReadersAndWriters, QorThreadRWLockStressTest,
                         ::testing::Values(std::make_tuple(1, 1), std::make_tuple(3, 1), std::make_tuple(3, 2)));

// ---- events, message queue, keys ------------------------------------------------------------

TEST_F(QorThreadFixture, ManualResetEventReleasesEveryWaiterAutoResetOnePerSet) {
  QorEvent_ manual = nullptr, automatic = nullptr;
  qorThreadEventCreate(&manual, 1, 0, 0);
  qorThreadEventCreate(&automatic, 0, 0, 0);
  std::atomic<int> passedManual{0}, passedAuto{0};
  std::vector<std::thread> threads;
  for (int i = 0; i < 3; ++i)
    threads.emplace_back([&] {
      EXPECT_EQ(QORTHREAD_OK, qorThreadEventWait(manual));
      ++passedManual;
      EXPECT_EQ(QORTHREAD_OK, qorThreadEventWait(automatic));
      ++passedAuto;
    });
  qorThreadEventSet(manual);
  ASSERT_TRUE(qortest::eventually([&] { return passedManual.load() == 3; }));
  for (int expected = 1; expected <= 3; ++expected) {
    qorThreadEventSet(automatic);
    ASSERT_TRUE(qortest::eventually([&] { return passedAuto.load() == expected; }));
    EXPECT_EQ(QORTHREAD_TIMEOUT, qorThreadEventTimedWait(automatic, 0)) << "reset after letting one through";
  }
  for (std::thread &t : threads)
    t.join();
  EXPECT_EQ(3, passedAuto.load());
  qorThreadEventDestroy(manual);
  qorThreadEventDestroy(automatic);
}

TEST_F(QorThreadFixture, MessageQueueDeliversEveryValueOnceInProducerOrder) {
  QorMsgQueue_ q = nullptr;
  qorThreadMsgQueueCreate(&q, nullptr, 0);
  const int producers = 3, perProducer = 500;
  std::vector<std::thread> threads;
  for (int p = 0; p < producers; ++p)
    threads.emplace_back([&, p] {
      for (int i = 0; i < perProducer; ++i)
        qorThreadMsgQueuePut(q, p * 100000 + i);
    });
  std::vector<int> next(producers, 0);
  for (int n = 0; n < producers * perProducer; ++n) {
    int status = QORTHREAD_ERROR;
    int value = qorThreadMsgQueueGet(q, QORTHREAD_INFINITE, &status);
    ASSERT_EQ(QORTHREAD_OK, status);
    ASSERT_EQ(next.at(value / 100000)++, value % 100000);
  }
  for (std::thread &t : threads)
    t.join();
  qorThreadMsgQueueDestroy(q);
}

TEST_F(QorThreadFixture, KeyValuesArePerThreadAndDestructorsRunAtThreadEnd) {
  static std::atomic<int> destroyed{0};
  static std::atomic<void *> lastDestroyed{nullptr};
  QorKey_ key = nullptr;
  ASSERT_EQ(QORTHREAD_OK, qorThreadKeyCreate(&key, [](void *value) {
              ++destroyed;
              lastDestroyed = value;
            }));
  int mine = 0, theirs = 0;
  qorThreadKeySetValue(key, &mine);
  onLayerThread([&] {
    void *value = &mine;
    qorThreadKeyGetValue(key, &value);
    EXPECT_EQ(nullptr, value) << "a new thread starts empty";
    qorThreadKeySetValue(key, &theirs);
  });
  onLayerThread([] {}); // no value, no destructor call
  EXPECT_EQ(1, destroyed.load());
  EXPECT_EQ(&theirs, lastDestroyed.load());
  void *value = nullptr;
  qorThreadKeyGetValue(key, &value);
  EXPECT_EQ(&mine, value);
  qorThreadKeySetValue(key, nullptr);
  qorThreadKeyDestroy(key);
}

} // namespace
