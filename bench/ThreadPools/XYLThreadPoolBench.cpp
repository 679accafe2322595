// SPDX-License-Identifier: Apache-2.0
// Thread pools against a minimal std::thread + std::condition_variable pool:
// throughput of trivial tasks through a queued pool with two workers, and
// the latency from execute to the start of the task on an idle worker, for
// the fixed pool's hand-off and the queued pool (wall-clock throughout).
#include <XYLCore/ThreadPools/XYLThreadPoolFixed.h>
#include <XYLCore/ThreadPools/XYLThreadPoolQueued.h>

#include <benchmark/benchmark.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>
#include <vector>

namespace {

const unsigned long kForever = 4294967295ul;
const int kTasks = 100000;

// Counts down; the task that reaches 0 wakes the waiting benchmark thread.
class CountDown {
public:
  void reset(int count) { m_left.store(count); }
  void arrive() {
    if (m_left.fetch_sub(1) == 1) {
      std::lock_guard<std::mutex> lock(m_mutex);
      m_done = true;
      m_cv.notify_one();
    }
  }
  void wait() {
    std::unique_lock<std::mutex> lock(m_mutex);
    m_cv.wait(lock, [this] { return m_done; });
    m_done = false;
  }

private:
  std::atomic<int> m_left{0};
  std::mutex m_mutex;
  std::condition_variable m_cv;
  bool m_done = false;
};

class TrivialTask : public XYLThreadRunnable {
public:
  explicit TrivialTask(CountDown &countDown) : m_countDown(countDown) {}
  void run() override { m_countDown.arrive(); }

private:
  CountDown &m_countDown;
};

// The peer: workers take runnables from a deque under one mutex and wait on
// one condition variable.
class StdCvPool {
public:
  explicit StdCvPool(int workers) {
    for (int i = 0; i < workers; ++i)
      m_threads.emplace_back([this] { work(); });
  }
  ~StdCvPool() {
    {
      std::lock_guard<std::mutex> lock(m_mutex);
      m_stop = true;
    }
    m_cv.notify_all();
    for (std::thread &t : m_threads)
      t.join();
  }
  void execute(XYLThreadRunnable *task, unsigned long /*timeout*/ = 0) {
    {
      std::lock_guard<std::mutex> lock(m_mutex);
      m_tasks.push_back(task);
    }
    m_cv.notify_one();
  }

private:
  void work() {
    for (;;) {
      XYLThreadRunnable *task;
      {
        std::unique_lock<std::mutex> lock(m_mutex);
        m_cv.wait(lock, [this] { return m_stop || !m_tasks.empty(); });
        if (m_tasks.empty())
          return;
        task = m_tasks.front();
        m_tasks.pop_front();
      }
      task->run();
    }
  }

  std::mutex m_mutex;
  std::condition_variable m_cv;
  std::deque<XYLThreadRunnable *> m_tasks;
  bool m_stop = false;
  std::vector<std::thread> m_threads;
};

void BM_XylThreadPoolQueued_Throughput(benchmark::State &state) {
  CountDown countDown;
  TrivialTask task(countDown);
  XYLThreadPoolQueued pool(2, 0, 0);
  for (auto _ : state) {
    countDown.reset(kTasks);
    for (int i = 0; i < kTasks; ++i)
      pool.execute(&task, kForever);
    countDown.wait();
  }
  state.SetItemsProcessed(state.iterations() * kTasks);
}
BENCHMARK(BM_XylThreadPoolQueued_Throughput)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_StdCvPool_Throughput(benchmark::State &state) {
  CountDown countDown;
  TrivialTask task(countDown);
  StdCvPool pool(2);
  for (auto _ : state) {
    countDown.reset(kTasks);
    for (int i = 0; i < kTasks; ++i)
      pool.execute(&task);
    countDown.wait();
  }
  state.SetItemsProcessed(state.iterations() * kTasks);
}
BENCHMARK(BM_StdCvPool_Throughput)->Unit(benchmark::kMillisecond)->UseRealTime();

// Records when it starts, then says it is done.
class StampTask : public XYLThreadRunnable {
public:
  void run() override {
    m_started = std::chrono::steady_clock::now();
    m_done.store(true, std::memory_order_release);
  }
  std::chrono::steady_clock::time_point m_started;
  std::atomic<bool> m_done{false};
};

// Waits for the task, then gives the worker time to block again, so that
// every hand-off wakes a sleeping worker.
void settle(StampTask &task) {
  while (!task.m_done.load(std::memory_order_acquire))
    std::this_thread::yield();
  task.m_done.store(false, std::memory_order_relaxed);
  std::this_thread::sleep_for(std::chrono::microseconds(200));
}

// One hand-off per iteration: the time from execute to the task's start on
// the pool's single idle worker.
template <class Pool> void runHandOff(benchmark::State &state, Pool &pool) {
  StampTask task;
  for (auto _ : state) {
    const auto start = std::chrono::steady_clock::now();
    pool.execute(&task, kForever);
    settle(task);
    state.SetIterationTime(std::chrono::duration<double>(task.m_started - start).count());
  }
}

void BM_XylThreadPoolFixed_HandOff(benchmark::State &state) {
  XYLThreadPoolFixed pool(1);
  runHandOff(state, pool);
}

void BM_XylThreadPoolQueued_HandOff(benchmark::State &state) {
  XYLThreadPoolQueued pool(1, 0, 0);
  runHandOff(state, pool);
}

void BM_StdCv_HandOff(benchmark::State &state) {
  StdCvPool pool(1);
  runHandOff(state, pool);
}

BENCHMARK(BM_XylThreadPoolFixed_HandOff)->UseManualTime()->Unit(benchmark::kMicrosecond)->Iterations(2000);
BENCHMARK(BM_XylThreadPoolQueued_HandOff)->UseManualTime()->Unit(benchmark::kMicrosecond)->Iterations(2000);
BENCHMARK(BM_StdCv_HandOff)->UseManualTime()->Unit(benchmark::kMicrosecond)->Iterations(2000);

} // namespace
