// SPDX-License-Identifier: Apache-2.0
// The thread classes against their usual peers: uncontended lock+unlock of
// XYLThreadCriticalSection and XYLThreadMutex against std::mutex, a read
// lock+unlock of XYLThreadRWLock against pthread_rwlock_t, and a ping-pong
// between two threads through XYLThreadSemaphore / XYLThreadAutoResetEvent
// against sem_t.
#include <XYLCore/Threads/XYLThreadAutoResetEvent.h>
#include <XYLCore/Threads/XYLThreadCriticalSection.h>
#include <XYLCore/Threads/XYLThreadGuard.h>
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

// glibc skips atomic instructions while a process has one thread; a parked
// second thread makes every measurement pay what a server pays.
struct SecondThread {
  SecondThread() {
    std::thread([this] {
      std::unique_lock<std::mutex> hold(m_mutex);
      m_wake.wait(hold, [] { return false; });
    }).detach();
  }
  std::mutex m_mutex;
  std::condition_variable m_wake;
};
SecondThread *g_secondThread = new SecondThread;

// ---- uncontended exclusive locks -----------------------------------------

void BM_XylCriticalSection_LockUnlock(benchmark::State &state) {
  XYLThreadCriticalSection cs(0);
  for (auto _ : state) {
    cs.lock();
    cs.unlock();
  }
}
BENCHMARK(BM_XylCriticalSection_LockUnlock);

void BM_XylCriticalSection_Guard(benchmark::State &state) {
  XYLThreadCriticalSection cs(0);
  for (auto _ : state) {
    XYLThreadGuard guard(cs);
  }
}
BENCHMARK(BM_XylCriticalSection_Guard);

void BM_XylMutex_LockUnlock(benchmark::State &state) {
  XYLThreadMutex mutex(0);
  for (auto _ : state) {
    mutex.lock();
    mutex.unlock();
  }
}
BENCHMARK(BM_XylMutex_LockUnlock);

void BM_StdMutex_LockUnlock(benchmark::State &state) {
  std::mutex mutex;
  for (auto _ : state) {
    mutex.lock();
    mutex.unlock();
  }
}
BENCHMARK(BM_StdMutex_LockUnlock);

// The floor under XYLThreadMutex: a mutex that an ending owner hands over
// (robust) and that its owner may take again (recursive) costs this much in
// the C library alone.
void BM_PthreadRobustRecursiveMutex_LockUnlock(benchmark::State &state) {
  pthread_mutexattr_t attr;
  pthread_mutexattr_init(&attr);
  pthread_mutexattr_settype(&attr, PTHREAD_MUTEX_RECURSIVE);
  pthread_mutexattr_setrobust(&attr, PTHREAD_MUTEX_ROBUST);
  pthread_mutex_t mutex;
  pthread_mutex_init(&mutex, &attr);
  pthread_mutexattr_destroy(&attr);
  for (auto _ : state) {
    pthread_mutex_lock(&mutex);
    pthread_mutex_unlock(&mutex);
  }
  pthread_mutex_destroy(&mutex);
}
BENCHMARK(BM_PthreadRobustRecursiveMutex_LockUnlock);

// ---- read/write lock, read side -------------------------------------------

void BM_XylRWLock_ReadLockUnlock(benchmark::State &state) {
  XYLThreadRWLock rw;
  for (auto _ : state) {
    rw.readLock();
    rw.unlock();
  }
}
BENCHMARK(BM_XylRWLock_ReadLockUnlock);

void BM_PthreadRWLock_ReadLockUnlock(benchmark::State &state) {
  pthread_rwlock_t rw;
  pthread_rwlock_init(&rw, nullptr);
  for (auto _ : state) {
    pthread_rwlock_rdlock(&rw);
    pthread_rwlock_unlock(&rw);
  }
  pthread_rwlock_destroy(&rw);
}
BENCHMARK(BM_PthreadRWLock_ReadLockUnlock);

// ---- ping-pong between two threads ----------------------------------------
// One iteration is a round trip: the measuring thread wakes the partner and
// waits to be woken back.

template <class Signal> struct PingPong {
  // Wakes `to` once per round until stopped.
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

// The library classes and sem_t behind one wait/post vocabulary.
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
BENCHMARK(BM_XylSemaphore_PingPong)->UseRealTime();

void BM_XylAutoResetEvent_PingPong(benchmark::State &state) { runPingPong<XylEventSignal>(state); }
BENCHMARK(BM_XylAutoResetEvent_PingPong)->UseRealTime();

void BM_SemT_PingPong(benchmark::State &state) { runPingPong<SemTSignal>(state); }
BENCHMARK(BM_SemT_PingPong)->UseRealTime();

} // namespace
