// SPDX-License-Identifier: Apache-2.0
// The thread classes against the peers a server would otherwise use, each
// measured in this binary:
//  - lock+unlock of XYLThreadCriticalSection and XYLThreadMutex against
//    std::mutex, alone and with two threads contending (wall-clock);
//  - read and write pairs of XYLThreadRWLock against pthread_rwlock_t;
//  - ping-pong round trips between two threads through XYLThreadSemaphore and
//    XYLThreadAutoResetEvent against sem_t, and through
//    XYLThreadConditionVariable against std::condition_variable.
#include <XYLCore/Threads/XYLThreadAutoResetEvent.h>
#include <XYLCore/Threads/XYLThreadConditionVariable.h>
#include <XYLCore/Threads/XYLThreadCriticalSection.h>
#include <XYLCore/Threads/XYLThreadMutex.h>
#include <XYLCore/Threads/XYLThreadRWLock.h>
#include <XYLCore/Threads/XYLThreadSemaphore.h>

#include <benchmark/benchmark.h>

#include <pthread.h>
#include <semaphore.h>

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <thread>

namespace {

// glibc skips atomic instructions while a process has one thread; a second
// thread that sleeps for the whole run makes every measurement pay what a
// server pays.
struct SecondThread {
  SecondThread() {
    std::thread([] {
      for (;;)
        std::this_thread::sleep_for(std::chrono::hours(1));
    }).detach();
  }
};
const SecondThread g_secondThread;

// ---- exclusive locks: alone and contended --------------------------------------------
// With ->Threads(2) both threads share one lock; the time is wall-clock.

XYLThreadCriticalSection g_criticalSection(0);
XYLThreadMutex g_mutex(0);
std::mutex g_stdMutex;
pthread_rwlock_t g_rwlockPeer = PTHREAD_RWLOCK_INITIALIZER;
XYLThreadRWLock *g_rwlock = new XYLThreadRWLock;

template <class Lock> void lockLoop(benchmark::State &state, Lock &lock) {
  for (auto _ : state) {
    lock.lock();
    benchmark::ClobberMemory();
    lock.unlock();
  }
}

void BM_XylCriticalSection_LockUnlock(benchmark::State &state) { lockLoop(state, g_criticalSection); }
void BM_XylMutex_LockUnlock(benchmark::State &state) { lockLoop(state, g_mutex); }
void BM_StdMutex_LockUnlock(benchmark::State &state) { lockLoop(state, g_stdMutex); }
BENCHMARK(BM_XylCriticalSection_LockUnlock)->Threads(1)->Threads(2)->UseRealTime();
BENCHMARK(BM_XylMutex_LockUnlock)->Threads(1)->Threads(2)->UseRealTime();
BENCHMARK(BM_StdMutex_LockUnlock)->Threads(1)->Threads(2)->UseRealTime();

// ---- read/write locks -------------------------------------------------------------------

void BM_XylRWLock_ReadPair(benchmark::State &state) {
  for (auto _ : state) {
    g_rwlock->readLock();
    benchmark::ClobberMemory();
    g_rwlock->unlock();
  }
}
void BM_PthreadRWLock_ReadPair(benchmark::State &state) {
  for (auto _ : state) {
    pthread_rwlock_rdlock(&g_rwlockPeer);
    benchmark::ClobberMemory();
    pthread_rwlock_unlock(&g_rwlockPeer);
  }
}
void BM_XylRWLock_WritePair(benchmark::State &state) {
  for (auto _ : state) {
    g_rwlock->lock();
    benchmark::ClobberMemory();
    g_rwlock->unlock();
  }
}
void BM_PthreadRWLock_WritePair(benchmark::State &state) {
  for (auto _ : state) {
    pthread_rwlock_wrlock(&g_rwlockPeer);
    benchmark::ClobberMemory();
    pthread_rwlock_unlock(&g_rwlockPeer);
  }
}
BENCHMARK(BM_XylRWLock_ReadPair)->Threads(1)->Threads(2)->UseRealTime();
BENCHMARK(BM_PthreadRWLock_ReadPair)->Threads(1)->Threads(2)->UseRealTime();
BENCHMARK(BM_XylRWLock_WritePair)->Threads(1)->Threads(2)->UseRealTime();
BENCHMARK(BM_PthreadRWLock_WritePair)->Threads(1)->Threads(2)->UseRealTime();

// ---- ping-pong between two threads --------------------------------------------------------
// One iteration is a round trip: the measuring thread wakes the partner and
// waits to be woken back.

template <class Signal> struct PingPong {
  void partner() {
    for (;;) {
      ping.wait();
      if (stop.load(std::memory_order_relaxed))
        return;
      pong.post();
    }
  }
  Signal ping, pong;
  std::atomic<bool> stop{false};
};

// Every signal kind behind one wait/post vocabulary.
struct XylSemaphoreSignal {
  XYLThreadSemaphore s{0};
  void wait() { s.wait(); }
  void post() { s.post(); }
};

struct XylEventSignal {
  XYLThreadAutoResetEvent e;
  void wait() { e.wait(); }
  void post() { e.signal(); }
};

struct SemTSignal {
  SemTSignal() { sem_init(&s, 0, 0); }
  ~SemTSignal() { sem_destroy(&s); }
  void wait() {
    while (sem_wait(&s) != 0) {
    }
  }
  void post() { sem_post(&s); }
  sem_t s;
};

// A flag under a lock with a condition variable: the usual hand-over.
struct XylConditionSignal {
  XYLThreadCriticalSection lock{0};
  XYLThreadConditionVariable cv;
  bool set = false;
  void wait() {
    lock.lock();
    while (!set)
      cv.wait(lock);
    set = false;
    lock.unlock();
  }
  void post() {
    lock.lock();
    set = true;
    cv.signal();
    lock.unlock();
  }
};

struct StdConditionSignal {
  std::mutex lock;
  std::condition_variable cv;
  bool set = false;
  void wait() {
    std::unique_lock<std::mutex> hold(lock);
    cv.wait(hold, [this] { return set; });
    set = false;
  }
  void post() {
    std::lock_guard<std::mutex> hold(lock);
    set = true;
    cv.notify_one();
  }
};

template <class Signal> void runPingPong(benchmark::State &state) {
  PingPong<Signal> pp;
  std::thread partner([&] { pp.partner(); });
  for (auto _ : state) {
    pp.ping.post();
    pp.pong.wait();
  }
  pp.stop = true;
  pp.ping.post();
  partner.join();
}

void BM_XylSemaphore_PingPong(benchmark::State &state) { runPingPong<XylSemaphoreSignal>(state); }
void BM_XylAutoResetEvent_PingPong(benchmark::State &state) { runPingPong<XylEventSignal>(state); }
void BM_SemT_PingPong(benchmark::State &state) { runPingPong<SemTSignal>(state); }
void BM_XylConditionVariable_PingPong(benchmark::State &state) { runPingPong<XylConditionSignal>(state); }
void BM_StdConditionVariable_PingPong(benchmark::State &state) { runPingPong<StdConditionSignal>(state); }
BENCHMARK(BM_XylSemaphore_PingPong)->UseRealTime();
BENCHMARK(BM_XylAutoResetEvent_PingPong)->UseRealTime();
BENCHMARK(BM_SemT_PingPong)->UseRealTime();
BENCHMARK(BM_XylConditionVariable_PingPong)->UseRealTime();
BENCHMARK(BM_StdConditionVariable_PingPong)->UseRealTime();

} // namespace
