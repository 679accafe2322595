// SPDX-License-Identifier: Apache-2.0
// XYLThreadKey, XYLThreadInit, and what every constructor throws when the
// layer runs out of memory or of objects.
#include <XYLCore/Threads/XYLReferenceCount.h>
#include <XYLCore/Threads/XYLThreadAutoResetEvent.h>
#include <XYLCore/Threads/XYLThreadConditionVariable.h>
#include <XYLCore/Threads/XYLThreadCriticalSection.h>
#include <XYLCore/Threads/XYLThreadInit.h>
#include <XYLCore/Threads/XYLThreadKey.h>
#include <XYLCore/Threads/XYLThreadManualResetEvent.h>
#include <XYLCore/Threads/XYLThreadMutex.h>
#include <XYLCore/Threads/XYLThreadRWLock.h>
#include <XYLCore/Threads/XYLThreadRecursiveCriticalSection.h>
#include <XYLCore/Threads/XYLThreadRecursiveMutex.h>
#include <XYLCore/Threads/XYLThreadSemaphore.h>

#include "XYLFaultInjection.h"
#include "XYLThreadTestAccess.h"
#include "XYLThreadsTestSupport.h"

#include <functional>
#include <memory>
#include <thread>
#include <vector>

namespace {

using xyltest::ExpectedError;

TEST(XYLThreadKeyTest, EachThreadSeesOnlyItsOwnValue) {
  XYLThreadKey key;
  EXPECT_EQ(nullptr, key.getValue());
  int mine = 0;
  key.setValue(&mine);
  const int threads = 4;
  int values[threads];
  std::vector<std::thread> workers;
  std::vector<void *> seenAtStart(threads, &mine), seenAfter(threads);
  for (int t = 0; t < threads; ++t)
    workers.emplace_back([&, t] {
      seenAtStart[t] = key.getValue(); // a new thread starts with null
      key.setValue(&values[t]);
      std::this_thread::yield();
      seenAfter[t] = key.getValue();
    });
  for (std::thread &w : workers)
    w.join();
  for (int t = 0; t < threads; ++t) {
    EXPECT_EQ(nullptr, seenAtStart[t]) << t;
    EXPECT_EQ(&values[t], seenAfter[t]) << t;
  }
  EXPECT_EQ(&mine, key.getValue());
  key.setValue(nullptr);
  EXPECT_EQ(nullptr, key.getValue());
}

// Keys are a limited resource of the process: make them until the layer
// refuses, check the error, and give them all back.
TEST(XYLThreadKeyTest, ExhaustionThrowsTheKeyKindsCode) {
  std::vector<std::unique_ptr<XYLThreadKey>> keys;
  bool refused = false;
  for (int i = 0; i < 100000 && !refused; ++i) {
    try {
      keys.push_back(std::make_unique<XYLThreadKey>());
    } catch (XYLThrowable &) {
      refused = true;
    }
  }
  ASSERT_TRUE(refused) << "no key limit reached after " << keys.size() << " keys";
  xyltest::expectXylError({"XYLThreadResourceError", -3, "XYLThreadKey::XYLThreadKey", "Threads/XYLThreadKey"},
                          [] { XYLThreadKey one; });
  // The thread classes' own key cannot be made either.
  xyltest::expectXylError({"XYLThreadResourceError", -3, "XYLThreadKey::XYLThreadKey", "Threads/XYLThreadKey"},
                          [] { XYLThreadTestAccess::initialize(); });
  keys.pop_back();
  EXPECT_NO_THROW(XYLThreadKey one);
}

TEST(XYLThreadKeyTest, SetValueWithoutMemoryThrows) {
  XYLThreadKey key;
  std::thread fresh([&] {
    // A thread's first value may need a slot; a later one must not fail.
    bool thrown = false;
    {
      xyltest::AllocationFailure failNext(1);
      try {
        key.setValue(&key);
      } catch (XYLThrowable &) {
        thrown = true;
      }
    }
    if (thrown) {
      xyltest::expectXylError(
          {"XYLOutOfMemoryError", 0, "XYLThreadKey::setValue: out of memory", "Threads/XYLThreadKey"}, [&] {
            xyltest::AllocationFailure failAgain(1);
            key.setValue(&key);
          });
    }
    key.setValue(&key);
    EXPECT_EQ(&key, key.getValue());
  });
  fresh.join();
}

TEST(XYLThreadInitTest, AnotherInitialiserSucceedsOnAnInitialisedLayer) {
  XYLThreadInit init;
  EXPECT_EQ(1, init.getSuccess());
  EXPECT_EQ(0, init.getErrorCode());
}

// ---- constructors out of memory ----------------------------------------

struct ConstructorCase {
  const char *what;
  std::function<void()> make;
  ExpectedError expected;
};

const char *const kNoMemory = "QorThread ran out of memory";

std::vector<ConstructorCase> constructorCases() {
  return {
      {"mutex",
       [] { XYLThreadMutex m(0); },
       {"XYLOutOfMemoryError", 0, "XYLThreadMutex::XYLThreadMutex: QorThread ran out of memory",
        "Threads/XYLThreadMutex"}},
      {"recursive mutex",
       [] { XYLThreadRecursiveMutex m; },
       {"XYLOutOfMemoryError", 0, "XYLThreadMutex::XYLThreadMutex: QorThread ran out of memory",
        "Threads/XYLThreadMutex"}},
      {"critical section",
       [] { XYLThreadCriticalSection cs(0); },
       {"XYLOutOfMemoryError", 0, "XYLThreadCriticalSection::XYLThreadCriticalSection: QorThread ran out of memory",
        "Threads/XYLThreadCriticalSection"}},
      {"recursive critical section",
       [] { XYLThreadRecursiveCriticalSection cs; },
       {"XYLOutOfMemoryError", 0, "XYLThreadCriticalSection::XYLThreadCriticalSection: QorThread ran out of memory",
        "Threads/XYLThreadCriticalSection"}},
      {"reference count",
       [] { XYLReferenceCount count; },
       {"XYLOutOfMemoryError", 0, "XYLThreadCriticalSection::XYLThreadCriticalSection: QorThread ran out of memory",
        "Threads/XYLThreadCriticalSection"}},
      {"read/write lock",
       [] { XYLThreadRWLock rw; },
       {"XYLOutOfMemoryError", 0, "XYLThreadRWLock::XYLThreadRWLock: QorThread ran out of memory",
        "Threads/XYLThreadRWLock"}},
      {"semaphore",
       [] { XYLThreadSemaphore s(1); },
       {"XYLOutOfMemoryError", 0, "XYLThreadSemaphore::XYLThreadSemaphore: QorThread ran out of memory",
        "Threads/XYLThreadSemaphore"}},
      {"key",
       [] { XYLThreadKey k; },
       {"XYLOutOfMemoryError", 0, "XYLThreadKey::XYLThreadKey: QorThread ran out of memory", "Threads/XYLThreadKey"}},
      {"auto-reset event",
       [] { XYLThreadAutoResetEvent e; },
       {"XYLOutOfMemoryError", 0, kNoMemory, "Threads/XYLThreadAutoResetEvent"}},
      {"manual-reset event",
       [] { XYLThreadManualResetEvent e(1); },
       {"XYLOutOfMemoryError", 0, kNoMemory, "Threads/XYLThreadManualResetEvent"}},
      {"condition variable",
       [] { XYLThreadConditionVariable cv; },
       {"XYLOutOfMemoryError", 0, kNoMemory, "Threads/XYLThreadConditionVariable"}},
  };
}

// Fails the 1st, 2nd, ... allocation of each constructor until it gets
// through: every injected failure must surface as the documented error, and
// at least the first must (each constructor allocates its layer record).
TEST(XYLThreadConstructorTest, EveryAllocationFailureThrowsTheDocumentedError) {
  for (const ConstructorCase &c : constructorCases()) {
    SCOPED_TRACE(c.what);
    int failures = 0;
    for (long n = 1; n < 20; ++n) {
      bool thrown = false;
      try {
        xyltest::AllocationFailure failNth(n);
        c.make();
      } catch (XYLThrowable &) {
        thrown = true;
      }
      if (!thrown)
        break;
      ++failures;
      // Replay the same failure to check it in full.
      xyltest::expectXylError(c.expected, [&] {
        xyltest::AllocationFailure failNth(n);
        c.make();
      });
    }
    EXPECT_GE(failures, 1);
    EXPECT_NO_THROW(c.make());
  }
}

} // namespace
