// SPDX-License-Identifier: Apache-2.0
// Both reference counts: counting, cleanup once per drop to 0, and the lock
// that XYLReferenceCount holds around cleanup.
#include <XYLCore/Threads/XYLReferenceCount.h>
#include <XYLCore/Threads/XYLThreadUnsafeReferenceCount.h>

#include "XYLThreadsTestSupport.h"

#include <atomic>
#include <memory>
#include <thread>
#include <vector>

namespace {

using xyltest::Gate;
using xyltest::kBlockedProbeMs;

template <class Base> class CountingCleanup : public Base {
public:
  void cleanup() override { cleanups++; }
  std::atomic<int> cleanups{0};
};

template <class Count> class ReferenceCountTest : public testing::Test {};
using CountTypes = testing::Types<XYLThreadUnsafeReferenceCount, XYLReferenceCount>;
TYPED_TEST_SUITE(ReferenceCountTest, CountTypes);

TYPED_TEST(ReferenceCountTest, CleanupRunsOncePerDropToZero) {
  struct Step {
    char op; // '+' add, '-' remove
    int expectedCount;
    int expectedCleanups;
  };
  const Step steps[] = {
      {'+', 1, 0},  {'+', 2, 0}, {'-', 1, 0}, {'-', 0, 1}, // first drop to 0
      {'-', -1, 1},                                        // past 0: no cleanup
      {'+', 0, 1},                                         // reaching 0 upwards is not a drop
      {'+', 1, 1},  {'-', 0, 2},                           // a second drop cleans up again
  };
  CountingCleanup<TypeParam> count;
  EXPECT_EQ(0, count.getReferenceCount());
  int i = 0;
  for (const Step &s : steps) {
    int got = s.op == '+' ? count.addReference() : count.removeReference();
    EXPECT_EQ(s.expectedCount, got) << "step " << i;
    EXPECT_EQ(s.expectedCount, count.getReferenceCount()) << "step " << i;
    EXPECT_EQ(s.expectedCleanups, count.cleanups.load()) << "step " << i;
    ++i;
  }
}

// cleanup() may delete the object: removeReference touches nothing after it
// (AddressSanitizer reports it otherwise).
class SelfDeleting : public XYLThreadUnsafeReferenceCount {
public:
  explicit SelfDeleting(int *deleted) : m_deleted(deleted) {}
  ~SelfDeleting() override { ++*m_deleted; }
  void cleanup() override { delete this; }

private:
  int *m_deleted;
};

TEST(XYLThreadUnsafeReferenceCountTest, CleanupMayDeleteTheObject) {
  int deleted = 0;
  SelfDeleting *object = new SelfDeleting(&deleted);
  object->addReference();
  object->addReference();
  EXPECT_EQ(1, object->removeReference());
  EXPECT_EQ(0, object->removeReference());
  EXPECT_EQ(1, deleted);
}

TEST(XYLReferenceCountTest, ManyThreadsDroppingTheLastReferencesCleanUpOnce) {
  CountingCleanup<XYLReferenceCount> count;
  const int threads = 4, each = 1000;
  for (int i = 0; i < threads * each; ++i)
    count.addReference();
  std::vector<std::thread> workers;
  for (int t = 0; t < threads; ++t)
    workers.emplace_back([&] {
      for (int i = 0; i < each; ++i)
        count.removeReference();
    });
  for (std::thread &w : workers)
    w.join();
  EXPECT_EQ(0, count.getReferenceCount());
  EXPECT_EQ(1, count.cleanups.load());
}

// While cleanup runs, another thread that asks for the count must wait for
// it: the lock is held around cleanup.
class LockProbingCount : public XYLReferenceCount {
public:
  void cleanup() override {
    other = std::thread([this] {
      seenByOther = getReferenceCount();
      otherDone.open();
    });
    blockedDuringCleanup = !otherDone.passWithin(kBlockedProbeMs);
    // The same thread may use the object again (the lock is recursive).
    countInsideCleanup = getReferenceCount();
  }
  std::thread other;
  Gate otherDone;
  bool blockedDuringCleanup = false;
  int countInsideCleanup = -99;
  std::atomic<int> seenByOther{-99};
};

TEST(XYLReferenceCountTest, CleanupRunsUnderTheLock) {
  LockProbingCount count;
  count.addReference();
  EXPECT_EQ(0, count.removeReference());
  EXPECT_TRUE(count.blockedDuringCleanup);
  EXPECT_EQ(0, count.countInsideCleanup);
  EXPECT_TRUE(count.otherDone.passWithin(10000)); // released after cleanup
  count.other.join();
  EXPECT_EQ(0, count.seenByOther.load());
}

} // namespace
