// SPDX-License-Identifier: Apache-2.0
#include <XYLCore/ExceptionHierarchy/XYLErrors.h>
#include <XYLCore/ThreadPools/XYLThreadPoolFixed.h>
#include <XYLCore/ThreadPools/XYLThreadPoolQueued.h>

#include "XYLTestLatch.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <vector>

namespace {

const unsigned long kForever = 4294967295ul;
// How long a task waits for a state change before it gives up.
const long long kPatienceMs = 20000;

long long millisecondsSince(std::chrono::steady_clock::time_point start) {
  return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - start).count();
}

// A runnable made of a function.
class Task : public XYLThreadRunnable {
public:
  explicit Task(std::function<void()> body) : m_body(std::move(body)) {}
  void run() override { m_body(); }

private:
  std::function<void()> m_body;
};

// Counts its runs and opens a latch after each.
class CountingTask : public XYLThreadRunnable {
public:
  explicit CountingTask(xyltest::Latch *done = nullptr) : m_done(done) {}
  void run() override {
    m_runs.fetch_add(1);
    if (m_done != nullptr)
      m_done->countDown();
  }
  int runs() const { return m_runs.load(); }

private:
  std::atomic<int> m_runs{0};
  xyltest::Latch *m_done;
};

// Signals that it started, then waits at the gate.
class BlockingTask : public XYLThreadRunnable {
public:
  BlockingTask(xyltest::Latch &started, xyltest::Gate &gate) : m_started(started), m_gate(gate) {}
  void run() override {
    m_started.countDown();
    m_gate.pass();
  }

private:
  xyltest::Latch &m_started;
  xyltest::Gate &m_gate;
};

struct PoolKind {
  const char *name;
  std::function<XYLThreadPool *(unsigned long workers)> make;
  const char *shuttingDown;
};

const PoolKind kPoolKinds[] = {
    {"fixed", [](unsigned long n) -> XYLThreadPool * { return new XYLThreadPoolFixed(n); },
     "XYLThreadPoolFixed::execute: attempted to execute while shutting down"},
    {"queued", [](unsigned long n) -> XYLThreadPool * { return new XYLThreadPoolQueued(n, 1, 0); },
     "XYLThreadPoolQueued::execute: attempted to execute while shutting down"},
};

TEST(XYLThreadPoolTest, RunsEveryTaskOnItsWorkers) {
  for (const PoolKind &kind : kPoolKinds) {
    const unsigned long workers = 3;
    const int tasks = 300;
    xyltest::Latch done(tasks);
    std::mutex mutex;
    std::set<std::thread::id> threads;
    Task task([&] {
      {
        std::lock_guard<std::mutex> lock(mutex);
        threads.insert(std::this_thread::get_id());
      }
      done.countDown();
    });
    std::unique_ptr<XYLThreadPool> pool(kind.make(workers));
    for (int i = 0; i < tasks; ++i)
      ASSERT_EQ(1, pool->execute(&task, kForever)) << kind.name;
    ASSERT_TRUE(done.wait()) << kind.name;
    pool.reset();
    EXPECT_LE(threads.size(), workers) << kind.name;
    EXPECT_EQ(0u, threads.count(std::this_thread::get_id())) << kind.name;
  }
}

// A task of the pool keeps calling execute while the pool is destroyed: it
// sees the shutting-down error, and the destructor waits for it to return.
TEST(XYLThreadPoolTest, ExecuteDuringDestructionThrows) {
  for (const PoolKind &kind : kPoolKinds) {
    std::unique_ptr<XYLThreadPool> pool(kind.make(1));
    XYLThreadPool *raw = pool.get();
    xyltest::Latch started(1);
    std::atomic<bool> returned{false};
    std::string message;
    std::string name;
    CountingTask noop;
    Task probe([&] {
      started.countDown();
      // Gives up after a while so that a pool that never throws fails the
      // test instead of hanging it.
      const auto start = std::chrono::steady_clock::now();
      while (millisecondsSince(start) < kPatienceMs) {
        try {
          raw->execute(&noop, 0);
        } catch (XYLIllegalStateError &e) {
          message = e.getMessage() != nullptr ? e.getMessage() : "";
          name = e.getThrowableName();
          break;
        }
        std::this_thread::yield();
      }
      returned.store(true);
    });
    ASSERT_EQ(1, pool->execute(&probe, kForever));
    ASSERT_TRUE(started.wait());
    pool.reset();
    EXPECT_TRUE(returned.load()) << kind.name << ": the destructor returned before the task";
    EXPECT_EQ(kind.shuttingDown, message) << kind.name;
    EXPECT_EQ("XYLIllegalStateError", name) << kind.name;
  }
}

// Whatever a task lets escape is reported and costs no worker: after three
// failing tasks of every kind on a 2-worker pool, all later work still runs
// and the error handler heard each failure once.
TEST(XYLThreadPoolTest, ThrowingTasksAreReportedAndCostNoWorker) {
  for (const PoolKind &kind : kPoolKinds) {
    SCOPED_TRACE(kind.name);
    std::unique_ptr<XYLThreadPool> pool(kind.make(2));
    struct Heard {
      std::mutex lock;
      std::vector<std::string> reports;
    } heard;
    pool->setErrorHandler(
        [](XYLThreadPool *, XYLThreadRunnable *, const char *report, void *context) {
          Heard *h = static_cast<Heard *>(context);
          std::lock_guard<std::mutex> hold(h->lock);
          h->reports.push_back(report);
        },
        &heard);
    Task throwsXyl([] { XYL_THROW(XYLIllegalStateError(5L, "xyl failure")); });
    Task throwsStd([] { throw std::runtime_error("std failure"); });
    Task throwsInt([] { throw 7; });
    for (Task *t : {&throwsXyl, &throwsStd, &throwsInt, &throwsXyl, &throwsStd, &throwsInt})
      ASSERT_EQ(1, pool->execute(t, kForever));
    xyltest::Latch done(100);
    CountingTask counter(&done);
    for (int i = 0; i < 100; ++i)
      ASSERT_EQ(1, pool->execute(&counter, kForever));
    EXPECT_TRUE(done.wait());
    pool.reset();
    EXPECT_EQ(100, counter.runs());
    ASSERT_EQ(6u, heard.reports.size());
    int xyl = 0, std = 0, unknown = 0;
    for (const std::string &r : heard.reports) {
      xyl += r.find("xyl failure") != std::string::npos && r.find("XYLIllegalStateError") != std::string::npos;
      std += r == "std failure";
      unknown += r == "unknown exception";
    }
    EXPECT_EQ(2, xyl);
    EXPECT_EQ(2, std);
    EXPECT_EQ(2, unknown);
  }
}

// Producers on several threads hand over tasks with every time-out; each
// accepted task runs exactly once, each refused one never.
class XYLThreadPoolProducersTest : public testing::TestWithParam<int> {};

TEST_P(XYLThreadPoolProducersTest, EveryAcceptedTaskRunsOnce) {
  const int producers = GetParam();
  struct Shape {
    const char *name;
    std::function<XYLThreadPool *()> make;
    unsigned long timeout;
  };
  const Shape shapes[] = {
      {"queued unbounded", [] { return new XYLThreadPoolQueued(2, 0, 0); }, 0},
      {"queued bounded, 0 ms", [] { return new XYLThreadPoolQueued(2, 4, 0); }, 0},
      {"queued bounded, 1 ms", [] { return new XYLThreadPoolQueued(2, 4, 0); }, 1},
      {"queued bounded, forever", [] { return new XYLThreadPoolQueued(2, 4, 0); }, kForever},
      {"fixed, 0 ms", [] { return new XYLThreadPoolFixed(2); }, 0},
      {"fixed, 1 ms", [] { return new XYLThreadPoolFixed(2); }, 1},
      {"fixed, forever", [] { return new XYLThreadPoolFixed(2); }, kForever},
  };
  for (const Shape &shape : shapes) {
    SCOPED_TRACE(shape.name);
    CountingTask counter;
    std::atomic<int> accepted{0};
    {
      std::unique_ptr<XYLThreadPool> pool(shape.make());
      std::vector<std::thread> threads;
      for (int p = 0; p < producers; ++p)
        threads.emplace_back([&] {
          for (int i = 0; i < 2000; ++i)
            accepted += pool->execute(&counter, shape.timeout);
        });
      for (std::thread &t : threads)
        t.join();
      auto start = std::chrono::steady_clock::now();
      while (counter.runs() < accepted.load() && millisecondsSince(start) < kPatienceMs)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    EXPECT_EQ(accepted.load(), counter.runs());
    if (shape.timeout == kForever) {
      EXPECT_EQ(2000 * producers, accepted.load());
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Producers, XYLThreadPoolProducersTest, testing::Values(2, 4, 8));

class XYLThreadPoolFixedBusyTest : public testing::TestWithParam<unsigned long> {};

TEST_P(XYLThreadPoolFixedBusyTest, AllWorkersBusyAnswersZero) {
  const unsigned long workers = GetParam();
  xyltest::Gate gate;
  xyltest::Latch started(static_cast<int>(workers));
  BlockingTask blocker(started, gate);
  CountingTask probe;
  XYLThreadPoolFixed pool(workers);
  EXPECT_EQ(workers, pool.getWorkerCount());
  for (unsigned long i = 0; i < workers; ++i)
    ASSERT_EQ(1, pool.execute(&blocker, kForever));
  ASSERT_TRUE(started.wait());

  auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(0, pool.execute(&probe, 0));
  EXPECT_LT(millisecondsSince(start), 1000) << "timeout 0 does not wait";
  start = std::chrono::steady_clock::now();
  EXPECT_EQ(0, pool.execute(&probe, 50));
  EXPECT_GE(millisecondsSince(start), 50);

  gate.open();
  xyltest::Latch ran(1);
  CountingTask afterwards(&ran);
  EXPECT_EQ(1, pool.execute(&afterwards, kForever)) << "a worker comes back when its task ends";
  EXPECT_TRUE(ran.wait());
  EXPECT_EQ(0, probe.runs()) << "a refused runnable is never run";
}

INSTANTIATE_TEST_SUITE_P(Workers, XYLThreadPoolFixedBusyTest, testing::Values(1ul, 2ul, 4ul));

TEST(XYLThreadPoolFixedTest, PoolWithoutWorkersRefuses) {
  XYLThreadPoolFixed pool(0);
  CountingTask probe;
  EXPECT_EQ(0, pool.execute(&probe, 0));
  EXPECT_EQ(0, pool.execute(&probe, 20));
  EXPECT_EQ(0, probe.runs());
}

TEST(XYLThreadPoolQueuedTest, CapacityBoundsTheQueue) {
  for (unsigned long capacity : {1ul, 2ul, 5ul}) {
    xyltest::Gate gate;
    xyltest::Latch started(1);
    BlockingTask blocker(started, gate);
    XYLThreadPoolQueued pool(1, capacity, 0);
    EXPECT_EQ(capacity, pool.getCapacity());
    ASSERT_EQ(1, pool.execute(&blocker, kForever));
    ASSERT_TRUE(started.wait());

    xyltest::Latch done(static_cast<int>(capacity));
    std::mutex mutex;
    std::vector<unsigned long> order;
    std::vector<std::unique_ptr<Task>> queued;
    for (unsigned long i = 0; i < capacity; ++i) {
      queued.emplace_back(new Task([&, i] {
        {
          std::lock_guard<std::mutex> lock(mutex);
          order.push_back(i);
        }
        done.countDown();
      }));
      EXPECT_EQ(1, pool.execute(queued.back().get(), 0)) << capacity << ": slot " << i;
    }
    CountingTask refused;
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(0, pool.execute(&refused, 0)) << capacity;
    EXPECT_LT(millisecondsSince(start), 1000);
    EXPECT_EQ(0, pool.execute(&refused, 30)) << capacity;

    gate.open();
    ASSERT_TRUE(done.wait());
    std::vector<unsigned long> expected;
    for (unsigned long i = 0; i < capacity; ++i)
      expected.push_back(i);
    EXPECT_EQ(expected, order) << "queued tasks run in order";
    EXPECT_EQ(0, refused.runs());
  }
}

TEST(XYLThreadPoolQueuedTest, CapacityZeroIsUnbounded) {
  xyltest::Gate gate;
  xyltest::Latch started(1);
  BlockingTask blocker(started, gate);
  XYLThreadPoolQueued pool(1, 0, 0);
  ASSERT_EQ(1, pool.execute(&blocker, kForever));
  ASSERT_TRUE(started.wait());
  const int tasks = 5000;
  xyltest::Latch done(tasks);
  CountingTask counter(&done);
  for (int i = 0; i < tasks; ++i)
    ASSERT_EQ(1, pool.execute(&counter, 0)) << i;
  gate.open();
  EXPECT_TRUE(done.wait());
  EXPECT_EQ(tasks, counter.runs());
}

TEST(XYLThreadPoolQueuedTest, FullQueueTakesTheTaskWhenASlotFrees) {
  xyltest::Gate gate;
  xyltest::Latch started(1);
  BlockingTask blocker(started, gate);
  XYLThreadPoolQueued pool(1, 1, 0);
  ASSERT_EQ(1, pool.execute(&blocker, kForever));
  ASSERT_TRUE(started.wait());
  xyltest::Latch done(2);
  CountingTask first(&done), second(&done);
  ASSERT_EQ(1, pool.execute(&first, 0));
  int answer = -1;
  std::thread producer([&] { answer = pool.execute(&second, kForever); });
  gate.open();
  producer.join();
  EXPECT_EQ(1, answer);
  EXPECT_TRUE(done.wait());
  EXPECT_EQ(1, second.runs());
}

// Shutdown begins while the only worker is busy and three tasks are queued:
// with drain they all run, without it none does.
TEST(XYLThreadPoolQueuedTest, DrainDecidesWhatHappensToQueuedTasks) {
  struct Case {
    int drain;
    int expectedRuns;
  };
  for (const Case &c : {Case{0, 0}, Case{1, 3}}) {
    std::unique_ptr<XYLThreadPoolQueued> pool(new XYLThreadPoolQueued(1, 3, c.drain));
    XYLThreadPoolQueued *raw = pool.get();
    EXPECT_EQ(c.drain, pool->getDrain());
    xyltest::Latch started(1);
    xyltest::Gate queued;
    CountingTask filler;
    // Returns once the destructor has set the flag (execute throws then;
    // before, the full queue answers 0).
    Task waitForShutdown([&] {
      started.countDown();
      queued.pass();
      const auto start = std::chrono::steady_clock::now();
      while (millisecondsSince(start) < kPatienceMs) {
        try {
          raw->execute(&filler, 0);
        } catch (XYLIllegalStateError &) {
          return;
        }
        std::this_thread::yield();
      }
      ADD_FAILURE() << "execute never saw the shutdown";
    });
    ASSERT_EQ(1, pool->execute(&waitForShutdown, kForever));
    ASSERT_TRUE(started.wait());
    CountingTask tasks[3];
    for (CountingTask &task : tasks)
      ASSERT_EQ(1, pool->execute(&task, 0));
    queued.open();
    pool.reset();
    int runs = 0;
    for (CountingTask &task : tasks)
      runs += task.runs();
    EXPECT_EQ(c.expectedRuns, runs) << "drain " << c.drain;
    EXPECT_EQ(0, filler.runs());
  }
}

TEST(XYLThreadPoolQueuedTest, IdleWorkersStopWithoutWaitingForTheirPoll) {
  for (int drain : {0, 1}) {
    const auto start = std::chrono::steady_clock::now();
    {
      XYLThreadPoolQueued pool(4, 0, drain);
      xyltest::Latch done(1);
      CountingTask task(&done);
      ASSERT_EQ(1, pool.execute(&task, kForever));
      ASSERT_TRUE(done.wait());
    }
    EXPECT_LT(millisecondsSince(start), static_cast<long long>(XYLThreadPoolQueued::POLL_INTERVAL) / 2)
        << "drain " << drain;
  }
}

} // namespace
