// SPDX-License-Identifier: Apache-2.0
#include <XYLCore/ExceptionHierarchy/XYLErrors.h>
#include <XYLCore/XYLCustodian/XYLCustodian.h>

#include "XYLCustodianTestSupport.h"
#include "XYLTestLatch.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <ctime>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace {

using xyltest::CycleCounter;
using xyltest::RunningCustodian;
using xyltest::Task;

// Tasks are declared before the custodian of each test, so that they are
// still alive during its last cycle.
const unsigned long kShortPeriod = 20;

TEST(XYLCustodianTest, RegisteringWithoutACustodianAnswersZero) {
  Task task;
  EXPECT_EQ(0, XYLCustodian::registerTask(&task));
  EXPECT_EQ(0, XYLCustodian::deRegisterTask(&task));
  ASSERT_EQ(1, XYLCustodianTestAccess::initialize());
  EXPECT_EQ(1, XYLCustodianTestAccess::initialize()) << "a second initialize keeps the instance";
  XYLCustodianTestAccess::terminate();
  EXPECT_EQ(0, XYLCustodian::registerTask(&task)) << "after terminate";
  XYLCustodianTestAccess::terminate();
  EXPECT_EQ(0, task.calls());
}

TEST(XYLCustodianTest, NullTask) {
  RunningCustodian custodian(kShortPeriod);
  ASSERT_TRUE(custodian.ok());
  EXPECT_EQ(1, XYLCustodian::registerTask(nullptr));
  EXPECT_EQ(0, XYLCustodian::deRegisterTask(nullptr));
}

TEST(XYLCustodianTest, RegisteringTwiceThrowsTheAssertion) {
  struct Case {
    bool active; // already moved to the active set by a cycle
    const char *message;
  };
  const Case cases[] = {{false, "XYL_ASSERT(task != *iter);"}, {true, "XYL_ASSERT(task != *iterJobs);"}};
  for (const Case &c : cases) {
    xyltest::Latch called(1);
    Task task([&](int) {
      called.countDown();
      return 0;
    });
    // A long period keeps the task pending; a short one lets it go active.
    RunningCustodian custodian(c.active ? kShortPeriod : 60000);
    ASSERT_EQ(1, XYLCustodian::registerTask(&task));
    if (c.active) {
      ASSERT_TRUE(called.wait());
    }
    try {
      XYLCustodian::registerTask(&task);
      ADD_FAILURE() << "no assertion for " << c.message;
    } catch (XYLAssertError &e) {
      EXPECT_STREQ(c.message, e.getMessage());
      ASSERT_FALSE(e.getBackTrace().empty());
      const std::string line(const_cast<XYLList<char *> &>(e.getBackTrace()).front());
      EXPECT_EQ(0u, line.find("XYLCustodian/XYLCustodian(")) << line;
    }
    EXPECT_EQ(1, XYLCustodian::deRegisterTask(&task)) << "still registered once";
    EXPECT_EQ(0, XYLCustodian::deRegisterTask(&task));
  }
}

TEST(XYLCustodianTest, FinishedTaskIsCalledExactlyOnce) {
  Task finished([](int) { return 1; });
  CycleCounter cycles(4);
  RunningCustodian custodian(kShortPeriod);
  ASSERT_EQ(1, XYLCustodian::registerTask(&finished));
  ASSERT_EQ(1, XYLCustodian::registerTask(&cycles));
  // The counter joined no earlier than the finished task: after four of its
  // cycles the finished task has had at least three chances.
  ASSERT_TRUE(cycles.waitForCycles());
  EXPECT_EQ(1, finished.calls());
  EXPECT_EQ(0, XYLCustodian::deRegisterTask(&finished)) << "already dropped";
  custodian.stop();
  EXPECT_EQ(1, finished.calls()) << "not even called in the last cycle";
}

TEST(XYLCustodianTest, LastCycleTellsTasksTheCustodianIsTerminating) {
  xyltest::Latch twice(2);
  Task task([&](int) {
    twice.countDown();
    return 0;
  });
  RunningCustodian custodian(kShortPeriod);
  ASSERT_EQ(1, XYLCustodian::registerTask(&task));
  ASSERT_TRUE(twice.wait());
  custodian.stop();
  const std::vector<int> flags = task.flags();
  ASSERT_GE(flags.size(), 3u);
  for (std::size_t i = 0; i + 1 < flags.size(); ++i)
    EXPECT_EQ(0, flags[i]) << i;
  EXPECT_NE(0, flags.back()) << "the last call is made while terminating";
  EXPECT_EQ(0, XYLCustodian::registerTask(&task));
}

TEST(XYLCustodianTest, TerminationWakesTheCustodianForItsLastCycle) {
  Task kept, removed;
  RunningCustodian custodian(60000);
  ASSERT_EQ(1, XYLCustodian::registerTask(&kept));
  ASSERT_EQ(1, XYLCustodian::registerTask(&removed));
  EXPECT_EQ(1, XYLCustodian::deRegisterTask(&removed)) << "removed while pending";
  EXPECT_EQ(0, XYLCustodian::deRegisterTask(&removed));
  const auto start = std::chrono::steady_clock::now();
  custodian.stop();
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(30)) << "termination wakes the thread";
  EXPECT_EQ(std::vector<int>{1}, kept.flags());
  EXPECT_EQ(0, removed.calls());
}

TEST(XYLCustodianTest, DeRegisteredTaskIsNotCalledAgain) {
  xyltest::Latch called(1);
  Task task([&](int) {
    called.countDown();
    return 0;
  });
  CycleCounter cycles(3);
  RunningCustodian custodian(kShortPeriod);
  ASSERT_EQ(1, XYLCustodian::registerTask(&task));
  ASSERT_TRUE(called.wait());
  EXPECT_EQ(1, XYLCustodian::deRegisterTask(&task));
  const int calls = task.calls();
  ASSERT_EQ(1, XYLCustodian::registerTask(&cycles));
  ASSERT_TRUE(cycles.waitForCycles());
  EXPECT_EQ(calls, task.calls());
}

// deRegisterTask of a task that is running waits until the cycle is over.
TEST(XYLCustodianTest, RemovingARunningTaskWaitsForIt) {
  xyltest::Latch entered(1);
  std::atomic<bool> removing{false};
  std::atomic<bool> inside{false};
  Task task([&](int terminating) {
    if (terminating != 0)
      return 0;
    inside.store(true);
    entered.countDown();
    // Stay inside until the other thread is calling deRegisterTask, and a
    // little longer so that it reaches the lock it must wait for.
    while (!removing.load())
      std::this_thread::yield();
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    inside.store(false);
    return 0;
  });
  CycleCounter cycles(3);
  RunningCustodian custodian(kShortPeriod);
  ASSERT_EQ(1, XYLCustodian::registerTask(&task));
  ASSERT_TRUE(entered.wait());
  bool insideWhenReturned = true;
  int answer = -1;
  std::thread remover([&] {
    removing.store(true);
    answer = XYLCustodian::deRegisterTask(&task);
    insideWhenReturned = inside.load();
  });
  remover.join();
  EXPECT_EQ(1, answer);
  EXPECT_FALSE(insideWhenReturned) << "deRegisterTask returned while the task ran";
  const int calls = task.calls();
  ASSERT_EQ(1, XYLCustodian::registerTask(&cycles));
  ASSERT_TRUE(cycles.waitForCycles());
  EXPECT_EQ(calls, task.calls());
}

// Tasks may change the registrations from inside a cycle, their own included.
TEST(XYLCustodianTest, TasksMayRegisterAndRemoveTasksFromTheirCycle) {
  xyltest::Latch childRan(1);
  Task child([&](int) {
    childRan.countDown();
    return 0;
  });
  std::atomic<int> selfRemoval{-1};
  std::atomic<int> registration{-1};
  Task *selfPointer = nullptr;
  Task self([&](int) {
    registration.store(XYLCustodian::registerTask(&child));
    selfRemoval.store(XYLCustodian::deRegisterTask(selfPointer));
    return 0;
  });
  selfPointer = &self;
  CycleCounter cycles(3);
  RunningCustodian custodian(kShortPeriod);
  ASSERT_EQ(1, XYLCustodian::registerTask(&self));
  ASSERT_TRUE(childRan.wait());
  EXPECT_EQ(1, registration.load());
  EXPECT_EQ(1, selfRemoval.load());
  ASSERT_EQ(1, XYLCustodian::registerTask(&cycles));
  ASSERT_TRUE(cycles.waitForCycles());
  EXPECT_EQ(1, self.calls());
}

TEST(XYLCustodianTest, SetScheduleSetsThePeriodOfTheNextCycles) {
  EXPECT_EQ(60000ul, XYLCustodian::getSchedule());
  EXPECT_EQ(60000ul, XYLCustodianTestAccess::setSchedule(5000)) << "returns the previous period";
  EXPECT_EQ(5000ul, XYLCustodian::getSchedule());
  EXPECT_EQ(5000ul, XYLCustodianTestAccess::setSchedule(0x100000000ul + 150)) << "periods count as 32 bits";
  EXPECT_EQ(150ul, XYLCustodian::getSchedule());

  // Consecutive calls are at least one period apart.
  std::mutex mutex;
  std::vector<std::chrono::steady_clock::time_point> calls;
  xyltest::Latch three(3);
  Task task([&](int) {
    {
      std::lock_guard<std::mutex> lock(mutex);
      calls.push_back(std::chrono::steady_clock::now());
    }
    three.countDown();
    return 0;
  });
  ASSERT_EQ(1, XYLCustodianTestAccess::initialize());
  ASSERT_EQ(1, XYLCustodian::registerTask(&task));
  ASSERT_TRUE(three.wait());
  ASSERT_EQ(1, XYLCustodian::deRegisterTask(&task));
  XYLCustodianTestAccess::terminate();
  EXPECT_EQ(150ul, XYLCustodianTestAccess::setSchedule(60000));
  for (std::size_t i = 1; i < calls.size(); ++i)
    EXPECT_GE(calls[i] - calls[i - 1], std::chrono::milliseconds(150)) << i;
}

double processCpuSeconds() {
  struct timespec now;
  ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) / 1e9;
}

TEST(XYLCustodianTest, IdleCustodianUsesNoProcessorTime) {
  CycleCounter first(1);
  RunningCustodian custodian(200);
  ASSERT_EQ(1, XYLCustodian::registerTask(&first));
  ASSERT_TRUE(first.waitForCycles());
  const double before = processCpuSeconds();
  std::this_thread::sleep_for(std::chrono::seconds(1));
  EXPECT_LT(processCpuSeconds() - before, 0.02) << "seconds of processor time over an idle second";
}

} // namespace
