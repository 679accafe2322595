// SPDX-License-Identifier: Apache-2.0
#include <XYLCore/ExceptionHierarchy/XYLErrors.h>

#include <gtest/gtest.h>

#include <thread>
#include <typeinfo>

namespace {

TEST(XYLDeferredThrowableTest, EmptyCheckReturns) {
  XYLDeferredThrowable deferred;
  EXPECT_TRUE(deferred.isEmpty());
  deferred.check(XYL_HERE, nullptr, "XYL_CHECK");
  XYLDeferredThrowable copy(deferred);
  EXPECT_TRUE(copy.isEmpty());
}

TEST(XYLDeferredThrowableTest, CheckThrowsACopyOfTheMostDerivedClassWithOneMoreLine) {
  XYLIndexOutOfBoundsError original(11, "index");
  original.addBackTrace(XYLFileLocation("worker", 3), nullptr, "XYL_THROW");
  XYLDeferredThrowable deferred;
  deferred.set(original);
  // The deferred object holds its own copy.
  original.addBackTrace(XYLFileLocation("later", 4), nullptr, nullptr);
  try {
    deferred.check(XYLFileLocation("waiter", 8), "joined", "XYL_CHECK");
    FAIL() << "check did not throw";
  } catch (XYLThrowable &e) {
    EXPECT_EQ(typeid(XYLIndexOutOfBoundsError), typeid(e));
    EXPECT_STREQ("index", e.getMessage());
    ASSERT_EQ(2u, e.getBackTrace().size());
    XYLList<char *> &trace = const_cast<XYLList<char *> &>(e.getBackTrace());
    EXPECT_STREQ("waiter(8):XYLIndexOutOfBoundsError: XYL_CHECK: joined", trace.back());
  }
}

TEST(XYLDeferredThrowableTest, CopiesAndAssignmentsAreIndependent) {
  XYLDeferredThrowable a;
  a = XYLException(XYLSeverityWarning, 5);
  XYLDeferredThrowable b(a);
  XYLDeferredThrowable c;
  c = a;
  a.set(XYLSystemError(1, "replaced"));
  ASSERT_FALSE(b.isEmpty());
  EXPECT_EQ(typeid(XYLException), typeid(*b.get()));
  EXPECT_EQ(typeid(XYLException), typeid(*c.get()));
  EXPECT_EQ(typeid(XYLSystemError), typeid(*a.get()));
  c = c;
  EXPECT_EQ(XYLSeverityWarning, c.get()->getSeverity());
}

// The intended use: a worker captures its failure, the waiting thread raises
// it after the join.
TEST(XYLDeferredThrowableTest, HandsAFailureFromAWorkerToTheWaiter) {
  XYLDeferredThrowable deferred;
  std::thread worker([&deferred] {
    try {
      XYL_THROW(XYLIllegalArgumentError(2, "bad task"));
    } catch (XYLThrowable &e) {
      deferred.set(e);
    }
  });
  worker.join();
  EXPECT_THROW(deferred.check(XYL_HERE, nullptr, "XYL_CHECK"), XYLIllegalArgumentError);
}

} // namespace
