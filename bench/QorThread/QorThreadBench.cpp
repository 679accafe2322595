// SPDX-License-Identifier: Apache-2.0
// The thread layer's hot paths beside their pthreads and std peers: mutex
// lock+unlock (both kinds), a read/write-lock read pair, and semaphore and
// event ping-pong between two threads.
#include <XYLCore/QorThread/qorthread.h>

#include <benchmark/benchmark.h>

#include <atomic>
#include <mutex>
#include <pthread.h>
#include <semaphore.h>
#include <thread>

namespace {

// glibc skips atomic instructions while a process has one thread; a second,
// idle thread makes every measurement pay what a server pays.
void prepare() {
  static const bool ready = [] {
    xylThreadProcessInitialize("XYLThreads");
    std::thread([] {
      static std::mutex never;
      never.lock();
      never.lock(); // blocks for good
    }).detach();
    return true;
  }();
  (void)ready;
}

// ---- mutex lock + unlock ------------------------------------------------------------

void xylMutexLoop(benchmark::State &state, int kindTag) {
  prepare();
  QorMutex_ m = nullptr;
  qorThreadMutexCreate(&m, kindTag, QorMutexAttrEnd);
  for (auto _ : state) {
    qorThreadMutexLock(m, __FILE__, __LINE__);
    qorThreadMutexUnlock(m);
  }
  qorThreadMutexDestroy(m);
}

void BM_XylMutex_LockUnlock(benchmark::State &state) { xylMutexLoop(state, QorMutexAttrNoop); }
void BM_XylCriticalSection_LockUnlock(benchmark::State &state) { xylMutexLoop(state, QorMutexAttrCriticalSection); }

void BM_StdMutex_LockUnlock(benchmark::State &state) {
  prepare();
  std::mutex m;
  for (auto _ : state) {
    m.lock();
    m.unlock();
  }
}

void BM_PthreadRobustMutex_LockUnlock(benchmark::State &state) {
  prepare();
  pthread_mutexattr_t attr;
  pthread_mutexattr_init(&attr);
  pthread_mutexattr_setrobust(&attr, PTHREAD_MUTEX_ROBUST);
  pthread_mutex_t m;
  pthread_mutex_init(&m, &attr);
  for (auto _ : state) {
    pthread_mutex_lock(&m);
    pthread_mutex_unlock(&m);
  }
  pthread_mutex_destroy(&m);
  pthread_mutexattr_destroy(&attr);
}

void BM_PthreadRecursiveMutex_LockUnlock(benchmark::State &state) {
  prepare();
  pthread_mutexattr_t attr;
  pthread_mutexattr_init(&attr);
  pthread_mutexattr_settype(&attr, PTHREAD_MUTEX_RECURSIVE);
  pthread_mutex_t m;
  pthread_mutex_init(&m, &attr);
  for (auto _ : state) {
    pthread_mutex_lock(&m);
    pthread_mutex_unlock(&m);
  }
  pthread_mutex_destroy(&m);
  pthread_mutexattr_destroy(&attr);
}

// ---- read/write lock read pair ----------------------------------------------------------

void BM_XylRWLock_ReadPair(benchmark::State &state) {
  prepare();
  QorRWLock_ rw = nullptr;
  qorThreadRWLockCreate(&rw, QorRWLockAttrEnd);
  for (auto _ : state) {
    qorThreadRWLockReadLock(rw);
    qorThreadRWLockUnlock(rw);
  }
  qorThreadRWLockDestroy(rw);
}

void BM_PthreadRWLock_ReadPair(benchmark::State &state) {
  prepare();
  pthread_rwlock_t rw = PTHREAD_RWLOCK_INITIALIZER;
  for (auto _ : state) {
    pthread_rwlock_rdlock(&rw);
    pthread_rwlock_unlock(&rw);
  }
  pthread_rwlock_destroy(&rw);
}

// ---- ping-pong: one iteration is one round trip between two threads ------------------------

template <class PostPing, class WaitPing, class PostPong, class WaitPong>
void pingPong(benchmark::State &state, PostPing postPing, WaitPing waitPing, PostPong postPong, WaitPong waitPong) {
  std::atomic<bool> stop{false};
  std::thread partner([&] {
    for (;;) {
      waitPing();
      if (stop.load(std::memory_order_acquire))
        return;
      postPong();
    }
  });
  for (auto _ : state) {
    postPing();
    waitPong();
  }
  stop.store(true, std::memory_order_release);
  postPing();
  partner.join();
}

void BM_XylSemaphore_PingPong(benchmark::State &state) {
  prepare();
  QorSemaphore_ ping = nullptr, pong = nullptr;
  qorThreadSemaphoreCreate(&ping, 0u, QorSemaphoreAttrEnd);
  qorThreadSemaphoreCreate(&pong, 0u, QorSemaphoreAttrEnd);
  pingPong(
      state, [&] { qorThreadSemaphorePost(ping); }, [&] { qorThreadSemaphoreWait(ping); },
      [&] { qorThreadSemaphorePost(pong); }, [&] { qorThreadSemaphoreWait(pong); });
  qorThreadSemaphoreDestroy(ping);
  qorThreadSemaphoreDestroy(pong);
}

void BM_XylEvent_PingPong(benchmark::State &state) {
  prepare();
  QorEvent_ ping = nullptr, pong = nullptr;
  qorThreadEventCreate(&ping, 0, 0, QorEventAttrEnd);
  qorThreadEventCreate(&pong, 0, 0, QorEventAttrEnd);
  pingPong(
      state, [&] { qorThreadEventSet(ping); }, [&] { qorThreadEventWait(ping); }, [&] { qorThreadEventSet(pong); },
      [&] { qorThreadEventWait(pong); });
  qorThreadEventDestroy(ping);
  qorThreadEventDestroy(pong);
}

void BM_SemT_PingPong(benchmark::State &state) {
  prepare();
  sem_t ping, pong;
  sem_init(&ping, 0, 0);
  sem_init(&pong, 0, 0);
  pingPong(
      state, [&] { sem_post(&ping); }, [&] { sem_wait(&ping); }, [&] { sem_post(&pong); }, [&] { sem_wait(&pong); });
  sem_destroy(&ping);
  sem_destroy(&pong);
}

BENCHMARK(BM_XylMutex_LockUnlock);
BENCHMARK(BM_PthreadRobustMutex_LockUnlock);
BENCHMARK(BM_XylCriticalSection_LockUnlock);
BENCHMARK(BM_StdMutex_LockUnlock);
BENCHMARK(BM_PthreadRecursiveMutex_LockUnlock);
BENCHMARK(BM_XylRWLock_ReadPair);
BENCHMARK(BM_PthreadRWLock_ReadPair);
BENCHMARK(BM_XylSemaphore_PingPong)->UseRealTime();
BENCHMARK(BM_XylEvent_PingPong)->UseRealTime();
BENCHMARK(BM_SemT_PingPong)->UseRealTime();

} // namespace
