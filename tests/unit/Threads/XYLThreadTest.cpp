// SPDX-License-Identifier: Apache-2.0
// XYLThread: start, join, isAlive, the at-exit routine and the statics.
#include <XYLCore/Threads/XYLThread.h>

#include "XYLFaultInjection.h"
#include "XYLThreadTestAccess.h"
#include "XYLThreadsTestSupport.h"

#include <atomic>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <mutex>
#include <set>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace {

using xyltest::Gate;
using xyltest::kBlockedProbeMs;

// Runs a function as its work.
class FunctionRunnable : public XYLThreadRunnable {
public:
  explicit FunctionRunnable(std::function<void()> work) : m_work(std::move(work)) {}
  void run() override { m_work(); }

private:
  std::function<void()> m_work;
};

// A thread subclass with its own run().
class CountingThread : public XYLThread {
public:
  explicit CountingThread(XYLThreadRunnable *runnable = nullptr) : XYLThread(runnable) {}
  ~CountingThread() override { join(); }
  void run() override { ownRuns++; }
  std::atomic<int> ownRuns{0};
};

TEST(XYLThreadTest, JoinOfANeverStartedOrJoinedThreadDoesNothing) {
  XYLThread never;
  EXPECT_FALSE(never.isAlive());
  EXPECT_NO_THROW(never.join());
  EXPECT_NO_THROW(never.join());

  std::atomic<int> runs{0};
  FunctionRunnable work([&] { runs++; });
  XYLThread once(&work);
  once.start();
  once.join();
  EXPECT_EQ(1, runs.load());
  EXPECT_FALSE(once.isAlive());
  EXPECT_NO_THROW(once.join());
  EXPECT_EQ(1, runs.load());
}

TEST(XYLThreadTest, RunsTheRunnableWhenGivenAndItsOwnRunOtherwise) {
  std::atomic<int> runnableRuns{0};
  FunctionRunnable work([&] { runnableRuns++; });
  {
    CountingThread withRunnable(&work);
    withRunnable.start();
    withRunnable.join();
    EXPECT_EQ(1, runnableRuns.load());
    EXPECT_EQ(0, withRunnable.ownRuns.load());
  }
  {
    CountingThread alone;
    alone.start();
    alone.join();
    EXPECT_EQ(1, alone.ownRuns.load());
  }
  XYLThread plain; // the base run() does nothing
  plain.start();
  EXPECT_NO_THROW(plain.join());
}

TEST(XYLThreadTest, IsAliveUntilTheRoutineHasEnded) {
  Gate release;
  FunctionRunnable work([&] { release.pass(); });
  XYLThread thread(&work);
  thread.start();
  EXPECT_TRUE(thread.isAlive());
  release.open();
  auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
  while (thread.isAlive() && std::chrono::steady_clock::now() < deadline)
    XYLThread::yield();
  EXPECT_FALSE(thread.isAlive()); // ended, not yet joined
  thread.join();
  EXPECT_FALSE(thread.isAlive());
}

// Collects the thread layer's trace statements.
std::mutex g_traceMutex;
std::vector<std::string> g_traceLines;
void collectTrace(const char *line, void *) {
  std::lock_guard<std::mutex> hold(g_traceMutex);
  g_traceLines.emplace_back(line);
}

TEST(XYLThreadTest, AsksTheLayerForAStackOf4096000Bytes) {
  XYLThread thread;
  qorThreadSetTraceSink(collectTrace, nullptr);
  thread.start();
  qorThreadSetTraceSink(nullptr, nullptr);
  thread.join();
  // The create statement names this object as the argument and ends with
  // the attribute words: the stack size in hexadecimal (0x3e8000).
  char arg[32];
  std::snprintf(arg, sizeof arg, "arg:%x,", static_cast<unsigned>(reinterpret_cast<uintptr_t>(&thread)));
  std::lock_guard<std::mutex> hold(g_traceMutex);
  int creates = 0;
  for (const std::string &line : g_traceLines)
    if (line.find("qorThreadCreate(") != std::string::npos && line.find(arg) != std::string::npos) {
      ++creates;
      EXPECT_NE(std::string::npos, line.find(" STACK SIZE 3e8000 )")) << line;
    }
  EXPECT_EQ(1, creates);
}

TEST(XYLThreadTest, StartAgainRunsAgainAndJoinsAnUnjoinedRunFirst) {
  std::atomic<int> runs{0};
  FunctionRunnable work([&] { runs++; });
  XYLThread thread(&work);
  thread.start();
  thread.join();
  thread.start();
  thread.start(); // the second run was not joined: start waits for it
  thread.join();
  EXPECT_EQ(3, runs.load());
}

TEST(XYLThreadTest, DestructorWaitsForAnUnjoinedThread) {
  Gate release, destroyed;
  std::atomic<bool> finished{false};
  FunctionRunnable work([&] {
    release.pass();
    finished = true;
  });
  auto thread = std::make_unique<XYLThread>(&work);
  thread->start();
  std::thread destroyer([&] {
    thread.reset();
    destroyed.open();
  });
  EXPECT_FALSE(destroyed.passWithin(kBlockedProbeMs));
  release.open();
  EXPECT_TRUE(destroyed.passWithin(10000));
  destroyer.join();
  EXPECT_TRUE(finished.load());
}

TEST(XYLThreadTest, ARunEndedByAnExceptionIsReportedByEveryJoin) {
  FunctionRunnable work([] { throw std::runtime_error("task failed"); });
  XYLThread thread(&work);
  thread.start();
  const xyltest::ExpectedError expected{"XYLThreadResourceError", -1, "QorThread caught a hardware exception",
                                        "Threads/XYLThread"};
  xyltest::expectXylError(expected, [&] { thread.join(); });
  EXPECT_FALSE(thread.isAlive());
  // The record is kept, so the object still reports the failure.
  xyltest::expectXylError(expected, [&] { thread.join(); });
}

TEST(XYLThreadTest, AThreadJoiningItselfGetsTheDeadlockError) {
  XYLThread *self = nullptr;
  Gate started;
  bool checked = false;
  FunctionRunnable work([&] {
    started.pass();
    xyltest::expectXylError({"XYLThreadResourceError", -1,
                             "QorThread either detected deadlock or an unexpected error occurred", "Threads/XYLThread"},
                            [&] { self->join(); });
    checked = true;
  });
  XYLThread thread(&work);
  self = &thread;
  thread.start();
  started.open();
  thread.join();
  EXPECT_TRUE(checked);
}

TEST(XYLThreadTest, StaticOperations) {
  unsigned long mine = XYLThread::currentThreadId();
  EXPECT_EQ(mine, XYLThread::currentThreadId());
  std::set<unsigned long> ids{mine};
  std::atomic<unsigned long> other{0};
  FunctionRunnable work([&] { other = XYLThread::currentThreadId(); });
  XYLThread a(&work), b(&work);
  a.start();
  a.join();
  ids.insert(other.load());
  EXPECT_EQ(2u, ids.size()) << "another thread has another id";

  auto started = std::chrono::steady_clock::now();
  XYLThread::sleep(50);
  EXPECT_GE(std::chrono::steady_clock::now() - started, std::chrono::milliseconds(45));
  XYLThread::yield();
}

// ---- the key and the at-exit routine -----------------------------------

std::atomic<int> g_atExitCalls{0};
std::atomic<unsigned long> g_atExitThread{0};
void countAtExit() {
  g_atExitThread = XYLThread::currentThreadId();
  g_atExitCalls++;
}

TEST(XYLThreadTest, AtExitNeedsTheKeyAndAnXYLThread) {
  // Without the key (library not initialised) nothing can be registered.
  XYLThreadTestAccess::terminate();
  EXPECT_EQ(-1, XYLThreadTestAccess::atExit(countAtExit, 1));
  std::atomic<int> withoutKey{0};
  FunctionRunnable probe([&] { withoutKey = XYLThreadTestAccess::atExit(countAtExit, 1); });
  XYLThread early(&probe);
  early.start();
  early.join();
  EXPECT_EQ(-1, withoutKey.load());

  ASSERT_EQ(0, XYLThreadTestAccess::initialize());
  // This thread is not an XYLThread.
  EXPECT_EQ(-1, XYLThreadTestAccess::atExit(countAtExit, 1));
  EXPECT_EQ(-1, XYLThreadTestAccess::atExit(countAtExit, 0));
  EXPECT_EQ(0, XYLThreadTestAccess::terminate());
}

TEST(XYLThreadTest, AtExitRoutineRunsAfterTheWorkOnItsOwnThread) {
  ASSERT_EQ(0, XYLThreadTestAccess::initialize());
  struct Case {
    const char *what;
    std::function<int()> registration;
    int expectedResult;
    int expectedCalls;
  };
  const Case cases[] = {
      {"set", [] { return XYLThreadTestAccess::atExit(countAtExit, 1); }, 0, 1},
      {"set null", [] { return XYLThreadTestAccess::atExit(nullptr, 1); }, -1, 0},
      {"set then clear",
       [] { return XYLThreadTestAccess::atExit(countAtExit, 1) + XYLThreadTestAccess::atExit(countAtExit, 0); }, 0, 0},
      {"clear with null", [] { return XYLThreadTestAccess::atExit(nullptr, 0); }, 0, 0},
  };
  for (const Case &c : cases) {
    g_atExitCalls = 0;
    g_atExitThread = 0;
    std::atomic<int> result{99}, callsSeenByWork{-1};
    std::atomic<unsigned long> workThread{0};
    FunctionRunnable work([&] {
      result = c.registration();
      workThread = XYLThread::currentThreadId();
      callsSeenByWork = g_atExitCalls.load(); // not yet: the routine runs after the work
    });
    XYLThread thread(&work);
    thread.start();
    thread.join();
    EXPECT_EQ(c.expectedResult, result.load()) << c.what;
    EXPECT_EQ(0, callsSeenByWork.load()) << c.what;
    EXPECT_EQ(c.expectedCalls, g_atExitCalls.load()) << c.what;
    if (c.expectedCalls != 0) {
      EXPECT_EQ(workThread.load(), g_atExitThread.load()) << c.what << ": runs on the XYLThread's own thread";
    }
  }
  EXPECT_EQ(0, XYLThreadTestAccess::terminate());
}

TEST(XYLThreadTest, EachThreadRegistersOnItsOwnObject) {
  ASSERT_EQ(0, XYLThreadTestAccess::initialize());
  g_atExitCalls = 0;
  Gate bothRegistered;
  std::atomic<int> registered{0};
  FunctionRunnable registering([&] {
    XYLThreadTestAccess::atExit(countAtExit, 1);
    if (++registered == 2)
      bothRegistered.open();
    bothRegistered.pass();
  });
  FunctionRunnable plain([&] { bothRegistered.pass(); });
  XYLThread a(&registering), b(&registering), c(&plain);
  a.start();
  b.start();
  c.start();
  a.join();
  b.join();
  c.join();
  // Two registrations, two calls: c's object never got a routine.
  EXPECT_EQ(2, g_atExitCalls.load());
  EXPECT_EQ(0, XYLThreadTestAccess::terminate());
}

TEST(XYLThreadTest, StartWithoutMemoryThrowsOutOfMemory) {
  XYLThread thread;
  {
    xyltest::AllocationFailure failNext(1);
    xyltest::expectXylError({"XYLOutOfMemoryError", 0, "QorThread ran out of memory", "Threads/XYLThread"},
                            [&] { thread.start(); });
  }
  EXPECT_FALSE(thread.isAlive());
  EXPECT_NO_THROW(thread.join());
  thread.start(); // works again once memory is back
  thread.join();
}

} // namespace
