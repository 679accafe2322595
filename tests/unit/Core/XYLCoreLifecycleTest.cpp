// SPDX-License-Identifier: Apache-2.0
// The counted start and stop of the library.
#include <XYLCore/Core/xylcore.h>
#include <XYLCore/ExceptionHierarchy/XYLErrors.h>
#include <XYLCore/Threads/XYLThread.h>
#include <XYLCore/Threads/XYLThreadKey.h>
#include <XYLCore/XYLCustodian/XYLCustodian.h>

#include "XYLThreadTestAccess.h"

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <thread>
#include <vector>

namespace {

void noop() {}

class ProbeRunnable : public XYLThreadRunnable {
public:
  void run() override { result = XYLThreadTestAccess::atExit(noop, 1); }
  std::atomic<int> result{99};
};

// True while the thread classes are up: an XYLThread can then find its own
// object through the key, which the library makes on start-up.
bool threadClassesRunning() {
  ProbeRunnable probe;
  XYLThread thread(&probe);
  thread.start();
  thread.join();
  return probe.result.load() == 0;
}

class NeverDoneTask : public XYLCustodianTask {
public:
  int doTask(int) override { return 0; }
};

// True while a custodian exists: registration is refused otherwise.
bool custodianRunning() {
  NeverDoneTask task;
  if (XYLCustodian::registerTask(&task) == 0)
    return false;
  XYLCustodian::deRegisterTask(&task);
  return true;
}

class XYLCoreLifecycleTest : public testing::Test {
protected:
  void TearDown() override {
    // Leave the process as it was found, whatever the test did.
    while (xylCoreTerminate("XYL 1.0") == 0) {
    }
  }
};

TEST_F(XYLCoreLifecycleTest, NestedCallsStartOnceAndStopAtTheLastTerminate) {
  EXPECT_FALSE(threadClassesRunning());
  EXPECT_FALSE(custodianRunning());
  EXPECT_EQ(0, xylCoreInitialize("XYL 1.0"));
  EXPECT_TRUE(threadClassesRunning());
  EXPECT_TRUE(custodianRunning());
  EXPECT_EQ(0, xylCoreInitialize(nullptr)); // the version text is ignored

  EXPECT_EQ(0, xylCoreTerminate("anything"));
  EXPECT_TRUE(threadClassesRunning());
  EXPECT_TRUE(custodianRunning());

  EXPECT_EQ(0, xylCoreTerminate("XYL 1.0"));
  EXPECT_FALSE(threadClassesRunning());
  EXPECT_FALSE(custodianRunning());

  EXPECT_EQ(-2, xylCoreTerminate("XYL 1.0"));
  EXPECT_EQ(-2, xylCoreTerminate(nullptr));
}

TEST_F(XYLCoreLifecycleTest, ShortFormsAndARestartAfterFullTermination) {
  for (int round = 0; round < 3; ++round) {
    SCOPED_TRACE(round);
    EXPECT_EQ(0, xylInitialize());
    EXPECT_TRUE(threadClassesRunning());
    EXPECT_TRUE(custodianRunning());
    EXPECT_EQ(0, xylTerminate());
    EXPECT_FALSE(threadClassesRunning());
    EXPECT_FALSE(custodianRunning());
    EXPECT_EQ(-2, xylTerminate());
  }
}

// Without a thread-local key left, the thread classes cannot start: the
// first initialise fails but still counts, the custodian is started anyway,
// and a second initialise does not retry.
TEST_F(XYLCoreLifecycleTest, AFailedFirstInitialiseStillCounts) {
  std::vector<std::unique_ptr<XYLThreadKey>> keys;
  try {
    for (int i = 0; i < 100000; ++i)
      keys.push_back(std::make_unique<XYLThreadKey>());
  } catch (XYLThrowable &) {
  }
  ASSERT_LT(keys.size(), 100000u) << "no key limit reached";

  EXPECT_EQ(-3, xylCoreInitialize("XYL 1.0"));
  keys.clear(); // keys are available again, but nothing retries
  EXPECT_FALSE(threadClassesRunning());
  EXPECT_TRUE(custodianRunning());
  EXPECT_EQ(0, xylCoreInitialize("XYL 1.0"));
  EXPECT_FALSE(threadClassesRunning());

  EXPECT_EQ(0, xylCoreTerminate("XYL 1.0"));
  EXPECT_EQ(0, xylCoreTerminate("XYL 1.0"));
  EXPECT_FALSE(custodianRunning());
  EXPECT_EQ(-2, xylCoreTerminate("XYL 1.0"));

  // A full start afterwards works normally.
  EXPECT_EQ(0, xylCoreInitialize("XYL 1.0"));
  EXPECT_TRUE(threadClassesRunning());
  EXPECT_EQ(0, xylCoreTerminate("XYL 1.0"));
}

// Balanced pairs from many threads never see -2 and leave the count at 0,
// whether an outer hold keeps the library up or every pair may be the one
// that starts or stops it.
TEST_F(XYLCoreLifecycleTest, ConcurrentPairsStaySerialised) {
  for (bool outerHold : {true, false}) {
    SCOPED_TRACE(outerHold ? "outer hold" : "no outer hold");
    if (outerHold) {
      EXPECT_EQ(0, xylCoreInitialize("XYL 1.0"));
    }
    std::atomic<int> unexpected{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
      threads.emplace_back([&] {
        for (int i = 0; i < 100; ++i) {
          if (xylCoreInitialize("XYL 1.0") != 0)
            unexpected++;
          if (xylCoreTerminate("XYL 1.0") != 0)
            unexpected++;
        }
      });
    for (std::thread &t : threads)
      t.join();
    EXPECT_EQ(0, unexpected.load());
    EXPECT_EQ(outerHold, threadClassesRunning());
    if (outerHold) {
      EXPECT_EQ(0, xylCoreTerminate("XYL 1.0"));
    }
    EXPECT_EQ(-2, xylCoreTerminate("XYL 1.0"));
  }
}

TEST_F(XYLCoreLifecycleTest, StartAndStopFromDifferentThreads) {
  for (int round = 0; round < 5; ++round) {
    int started = 99, stopped = 99;
    std::thread([&] { started = xylCoreInitialize("XYL 1.0"); }).join();
    EXPECT_TRUE(custodianRunning());
    std::thread([&] { stopped = xylCoreTerminate("XYL 1.0"); }).join();
    EXPECT_EQ(0, started);
    EXPECT_EQ(0, stopped);
    EXPECT_FALSE(custodianRunning());
  }
}

} // namespace
