// SPDX-License-Identifier: Apache-2.0
// The thread layer's contract on one thread: status names, attribute lists,
// argument checks, allocation failures, trace statements, and the counting
// and time-out behaviour of each object kind.
#include "QorThreadTestSupport.h"

#include <XYLCore/Utility/XYLUtMemory.h>
#include <XYLFaultInjection.h>

#include <climits>

using qortest::QorThreadFixture;

namespace {

TEST(QorThreadErrorNameTest, NamesEveryCodeAndOnlyThose) {
  const char *const names[] = {
      "QORTHREAD_BADATTRIB", "QORTHREAD_BADPARM",  "QORTHREAD_NOMSGSET", "QORTHREAD_NOT_SUPPORTED",
      "QORTHREAD_TIMEOUT",   "QORTHREAD_DEADLOCK", "QORTHREAD_LIMIT",    "QORTHREAD_NOMEM",
      "QORTHREAD_ERROR",     "QORTHREAD_OK",       "QORTHREAD_INUSE"};
  for (int code = -9; code <= 1; ++code)
    EXPECT_STREQ(names[code + 9], qorThreadErrorName(code));
  for (int code : {2, -10, INT_MAX, INT_MIN})
    EXPECT_STREQ("<invalid QorThread Error Code!>", qorThreadErrorName(code)) << code;
}

// ---- one create call per kind, taking up to six tags ---------------------------------

void *idleRoutine(void *) { return nullptr; }
void noTrap(void *, QorThread_, QorThreadState) {}

QorThread_ self() {
  QorThread_ thread = nullptr;
  qorThreadSelf(&thread);
  return thread;
}

struct Creator {
  const char *kind;
  int (*create)(const int *t, bool *made); // t: tags; *made: a handle came out
};

#define QOR_CREATOR(kind, Type, call, destroy)                                                                         \
  Creator {                                                                                                            \
    kind, [](const int *t, bool *made) {                                                                               \
      Type h = reinterpret_cast<Type>(1);                                                                              \
      int rc = call;                                                                                                   \
      *made = h != nullptr;                                                                                            \
      if (h != nullptr)                                                                                                \
        destroy(h);                                                                                                    \
      return rc;                                                                                                       \
    }                                                                                                                  \
  }
#define QOR_TAGS t[0], t[1], t[2], t[3], t[4], t[5]
const Creator kCreators[] = {
    QOR_CREATOR("thread", QorThread_, qorThreadCreate(idleRoutine, nullptr, &h, QOR_TAGS), qorThreadRelease),
    QOR_CREATOR("trap", QorThreadStateTrap_,
                qorThreadStateTrapCreate(self(), QorThreadStateCanceling, noTrap, nullptr, &h, QOR_TAGS),
                qorThreadStateTrapDestroy),
    QOR_CREATOR("mutex", QorMutex_, qorThreadMutexCreate(&h, QOR_TAGS), qorThreadMutexDestroy),
    QOR_CREATOR("semaphore", QorSemaphore_, qorThreadSemaphoreCreate(&h, 1u, QOR_TAGS), qorThreadSemaphoreDestroy),
    QOR_CREATOR("condition", QorCondition_, qorThreadConditionCreate(&h, QOR_TAGS), qorThreadConditionDestroy),
    QOR_CREATOR("event", QorEvent_, qorThreadEventCreate(&h, 1, 0, QOR_TAGS), qorThreadEventDestroy),
    QOR_CREATOR("rwlock", QorRWLock_, qorThreadRWLockCreate(&h, QOR_TAGS), qorThreadRWLockDestroy),
    QOR_CREATOR("msgqueue", QorMsgQueue_, qorThreadMsgQueueCreate(&h, nullptr, QOR_TAGS), qorThreadMsgQueueDestroy),
};

TEST_F(QorThreadFixture, AttributeListsAreCheckedPerKindAndScannedToTheEnd) {
  self(); // the trap creator's thread record exists before any counting
  struct Case {
    int tags[6];
    bool okForAll;
  } cases[] = {
      {{0}, true},
      {{1, 2, 1, 0}, true},   // Noop, DisableSyntax, Noop
      {{10, 0}, false},       // past every kind's last tag
      {{1, 10, 1, 0}, false}, // bad in the middle
      {{-1, 0}, false},       // never a tag
      {{1, 1, 1, 1, 10, 0}, false},
      {{6, 0}, false}, // CriticalSection for mutexes, CancelFlagInheritable for threads, unknown elsewhere
  };
  for (const Creator &creator : kCreators) {
    for (const Case &c : cases) {
      std::string kind = creator.kind;
      bool tagSix = c.tags[0] == 6, mutexOrThread = kind == "mutex" || kind == "thread";
      int expected = c.okForAll || (tagSix && mutexOrThread) ? QORTHREAD_OK : QORTHREAD_BADATTRIB;
      bool made = false;
      // A bad list must fail before any allocation.
      XYLUtMemory::setFailureCountdown(expected == QORTHREAD_OK ? 0 : 1, 1);
      int rc = creator.create(c.tags, &made);
      long failedAllocations = XYLUtMemory::setFailureCountdown(0, 0);
      EXPECT_EQ(expected, rc) << creator.kind << " tags " << c.tags[0] << "," << c.tags[1];
      EXPECT_EQ(expected == QORTHREAD_OK, made) << creator.kind;
      EXPECT_EQ(0, failedAllocations) << creator.kind;
    }
  }
}

TEST_F(QorThreadFixture, BadTagIsEchoedWithTheRestOfTheList) {
  qortest::TraceCapture trace;
  QorMutex_ m = nullptr;
  ASSERT_EQ(QORTHREAD_BADATTRIB,
            qorThreadMutexCreate(&m, QorMutexAttrAutoUnlock, 77, QorMutexAttrCriticalSection, QorMutexAttrEnd));
  ASSERT_FALSE(trace.statements().empty());
  EXPECT_EQ("[A]qorThreadMutexCreate( QorMutexAttrAutoUnlock 77 QorMutexAttrCriticalSection QorMutexAttrEnd )",
            trace.statements()[0]);
  trace.clear(); // a DisableSyntax after the bad tag is still read: silence
  ASSERT_EQ(QORTHREAD_BADATTRIB, qorThreadMutexCreate(&m, 77, QorMutexAttrDisableSyntax, QorMutexAttrEnd));
  EXPECT_TRUE(trace.lines().empty());
}

TEST_F(QorThreadFixture, NullHandlesAndOutPointersAreBadParm) {
  int status = 0;
  const int results[] = {qorThreadMutexCreate(nullptr, 0),
                         qorThreadMutexLock(nullptr, "", 0),
                         qorThreadMutexUnlock(nullptr),
                         qorThreadMutexTryLock(nullptr, "", 0),
                         qorThreadSemaphoreCreate(nullptr, 0, 0),
                         qorThreadSemaphorePost(nullptr),
                         qorThreadConditionWait(nullptr, nullptr),
                         qorThreadConditionBroadcast(nullptr),
                         qorThreadEventCreate(nullptr, 0, 0, 0),
                         qorThreadEventSet(nullptr),
                         qorThreadRWLockReadLock(nullptr),
                         qorThreadKeyCreate(nullptr, nullptr),
                         qorThreadKeyGetValue(nullptr, nullptr),
                         qorThreadMsgQueuePut(nullptr, 1),
                         qorThreadJoin(nullptr, nullptr),
                         qorThreadSuspend(nullptr),
                         qorThreadContinue(nullptr),
                         qorThreadRelease(nullptr),
                         qorThreadSelf(nullptr),
                         qorThreadStateTrapDestroy(nullptr),
                         qorThreadMutexDestroy(nullptr),
                         qorThreadRWLockDestroy(nullptr),
                         (qorThreadMsgQueueGet(nullptr, 0, &status), status),
                         qorThreadStateTrapCreate(self(), QorThreadStateLast, noTrap, nullptr, nullptr, 0)};
  for (size_t i = 0; i < sizeof results / sizeof results[0]; ++i)
    EXPECT_EQ(QORTHREAD_BADPARM, results[i]) << "call #" << i;
}

TEST_F(QorThreadFixture, CreateWithoutThreadPointerNeedsDetachedAndAllocatesNothing) {
  XYLUtMemory::setFailureCountdown(1, 1);
  int rc = qorThreadCreate(idleRoutine, nullptr, nullptr, QorThreadAttrSuspended, QorThreadAttrEnd);
  EXPECT_EQ(0, XYLUtMemory::setFailureCountdown(0, 0));
  EXPECT_EQ(QORTHREAD_BADPARM, rc);
}

// Fails the Nth allocation for N = 1, 2, ... until the create succeeds; each
// failed run answers QORTHREAD_NOMEM and hands out no handle.
TEST_F(QorThreadFixture, EveryAllocationFailureOfACreateIsNoMem) {
  self();
  const int noTags[6] = {0};
  for (const Creator &creator : kCreators) {
    long n = 1;
    for (;; ++n) {
      bool made = true;
      int rc;
      {
        xyltest::AllocationFailure failure(n);
        rc = creator.create(noTags, &made);
      }
      if (rc == QORTHREAD_OK || n == 10)
        break;
      EXPECT_EQ(QORTHREAD_NOMEM, rc) << creator.kind << " n=" << n;
      EXPECT_FALSE(made) << creator.kind << " n=" << n;
    }
    EXPECT_GT(n, 1) << creator.kind << " made no allocation";
    EXPECT_LT(n, 10) << creator.kind << " never succeeded";
  }
  QorKey_ key = reinterpret_cast<QorKey_>(1);
  xyltest::AllocationFailure failure(1);
  EXPECT_EQ(QORTHREAD_NOMEM, qorThreadKeyCreate(&key, nullptr));
  EXPECT_EQ(nullptr, key);
}

TEST_F(QorThreadFixture, MessageQueueIsFifoAndKeepsAFailedPutAsStickyError) {
  int owner = 0, status = 0;
  QorMsgQueue_ q = nullptr;
  ASSERT_EQ(QORTHREAD_OK, qorThreadMsgQueueCreate(&q, &owner, QorSemaphoreAttrNoop, 0));
  EXPECT_EQ(&owner, qorThreadMsgQueueGetOwner(q));
  {
    xyltest::AllocationFailure failure(1);
    EXPECT_EQ(QORTHREAD_NOMEM, qorThreadMsgQueuePut(q, 5));
  }
  for (int v : {3, -1, INT_MIN})
    ASSERT_EQ(QORTHREAD_OK, qorThreadMsgQueuePut(q, v));
  EXPECT_EQ(QORTHREAD_NOMEM, qorThreadMsgQueueGetError(q)); // sticky past later puts
  for (int v : {3, -1, INT_MIN}) {
    EXPECT_EQ(v, qorThreadMsgQueueGet(q, QORTHREAD_INFINITE, &status));
    EXPECT_EQ(QORTHREAD_OK, status);
  }
  EXPECT_EQ(0, qorThreadMsgQueueGet(q, 0, &status));
  EXPECT_EQ(QORTHREAD_TIMEOUT, status);
  ASSERT_EQ(QORTHREAD_OK, qorThreadMsgQueuePut(q, 9)); // freed with the queue
  EXPECT_EQ(QORTHREAD_OK, qorThreadMsgQueueDestroy(q));
}

// ---- counting and resetting ----------------------------------------------------------------

TEST_F(QorThreadFixture, SemaphoreCountsUpToItsMaximum) {
  QorSemaphore_ s = nullptr;
  EXPECT_EQ(QORTHREAD_ERROR, qorThreadSemaphoreCreate(&s, 0x80000000u, 0));
  ASSERT_EQ(QORTHREAD_OK, qorThreadSemaphoreCreate(&s, 2u, 0));
  const int steps[] = {qorThreadSemaphoreTryWait(s),      qorThreadSemaphoreWait(s), qorThreadSemaphoreTryWait(s),
                       qorThreadSemaphoreTimedWait(s, 0), qorThreadSemaphorePost(s), qorThreadSemaphoreTimedWait(s, 5)};
  const int expected[] = {QORTHREAD_OK, QORTHREAD_OK, QORTHREAD_INUSE, QORTHREAD_TIMEOUT, QORTHREAD_OK, QORTHREAD_OK};
  for (int i = 0; i < 6; ++i)
    EXPECT_EQ(expected[i], steps[i]) << "step " << i;
  qorThreadSemaphoreDestroy(s);
  ASSERT_EQ(QORTHREAD_OK, qorThreadSemaphoreCreate(&s, 0x7FFFFFFFu, 0));
  EXPECT_EQ(QORTHREAD_ERROR, qorThreadSemaphorePost(s)); // past the maximum
  EXPECT_EQ(QORTHREAD_OK, qorThreadSemaphoreTryWait(s));
  EXPECT_EQ(QORTHREAD_OK, qorThreadSemaphorePost(s));
  qorThreadSemaphoreDestroy(s);
}

TEST_F(QorThreadFixture, EventsResetAsTheirKindSays) {
  for (int manual : {0, 1}) {
    int afterOneWait = manual ? QORTHREAD_OK : QORTHREAD_TIMEOUT;
    QorEvent_ e = nullptr;
    ASSERT_EQ(QORTHREAD_OK, qorThreadEventCreate(&e, manual, 1, 0));
    EXPECT_EQ(QORTHREAD_OK, qorThreadEventWait(e));
    EXPECT_EQ(afterOneWait, qorThreadEventTimedWait(e, 0)) << manual;
    qorThreadEventReset(e);
    EXPECT_EQ(QORTHREAD_TIMEOUT, qorThreadEventTimedWait(e, 0)) << manual;
    qorThreadEventSet(e);
    qorThreadEventSet(e); // a second set adds nothing
    EXPECT_EQ(QORTHREAD_OK, qorThreadEventTimedWait(e, 0));
    EXPECT_EQ(afterOneWait, qorThreadEventTimedWait(e, 0)) << manual;
    qorThreadEventDestroy(e);
  }
}

TEST_F(QorThreadFixture, TimedWaitsExpireAtAboutTheirLimit) {
  QorSemaphore_ s = nullptr;
  QorEvent_ e = nullptr;
  QorMsgQueue_ q = nullptr;
  QorCondition_ cv = nullptr;
  QorMutex_ m = nullptr;
  qorThreadSemaphoreCreate(&s, 0u, 0);
  qorThreadEventCreate(&e, 0, 0, 0);
  qorThreadMsgQueueCreate(&q, nullptr, 0);
  qorThreadConditionCreate(&cv, 0);
  qorThreadMutexCreate(&m, 0);
  const std::function<int(unsigned int)> waits[] = {
      [&](unsigned int ms) { return qorThreadSemaphoreTimedWait(s, ms); },
      [&](unsigned int ms) { return qorThreadEventTimedWait(e, ms); },
      [&](unsigned int ms) {
        int status = 0;
        qorThreadMsgQueueGet(q, ms, &status);
        return status;
      },
      [&](unsigned int ms) {
        qorThreadMutexLock(m, "", 0);
        int rc = qorThreadConditionTimedWait(cv, m, ms);
        EXPECT_EQ(QORTHREAD_OK, qorThreadMutexUnlock(m)) << "held again after the time-out";
        return rc;
      },
  };
  for (const auto &wait : waits)
    for (unsigned int ms : {20u, 120u})
      qortest::expectAboutMs(ms, [&] { EXPECT_EQ(QORTHREAD_TIMEOUT, wait(ms)); });
  qorThreadMutexDestroy(m);
  qorThreadConditionDestroy(cv);
  qorThreadMsgQueueDestroy(q);
  qorThreadEventDestroy(e);
  qorThreadSemaphoreDestroy(s);
}

TEST_F(QorThreadFixture, KeysHoldAValueEachUntilTheyRunOut) {
  std::vector<QorKey_> keys;
  int rc = QORTHREAD_OK;
  while (rc == QORTHREAD_OK && keys.size() < 100000) {
    QorKey_ key = nullptr;
    rc = qorThreadKeyCreate(&key, nullptr);
    if (rc == QORTHREAD_OK) {
      keys.push_back(key);
      qorThreadKeySetValue(key, &keys);
    }
  }
  EXPECT_EQ(QORTHREAD_LIMIT, rc);
  ASSERT_GE(keys.size(), 2u);
  int mine = 0;
  qorThreadKeySetValue(keys[1], &mine);
  void *value = nullptr;
  qorThreadKeyGetValue(keys[0], &value);
  EXPECT_EQ(&keys, value);
  qorThreadKeyGetValue(keys[1], &value);
  EXPECT_EQ(&mine, value);
  for (QorKey_ key : keys) {
    qorThreadKeySetValue(key, nullptr);
    qorThreadKeyDestroy(key);
  }
}

// ---- mutexes on one thread -------------------------------------------------------------------

TEST_F(QorThreadFixture, BothMutexKindsAreRecursiveAndOnlyTheMutexTriesOrTimesOut) {
  struct Case {
    int tag;
    int tryAndTimed; // answer of try-lock and timed lock on a free mutex
  } cases[] = {{QorMutexAttrNoop, QORTHREAD_OK},
               {QorMutexAttrRecursive, QORTHREAD_OK},
               {QorMutexAttrCriticalSection, QORTHREAD_NOT_SUPPORTED}};
  for (const Case &c : cases) {
    QorMutex_ m = nullptr;
    ASSERT_EQ(QORTHREAD_OK, qorThreadMutexCreate(&m, c.tag, 0));
    int held = 0;
    for (int i = 0; i < 2; ++i, ++held)
      EXPECT_EQ(QORTHREAD_OK, qorThreadMutexLock(m, "", 0));
    EXPECT_EQ(c.tryAndTimed, qorThreadMutexTryLock(m, "", 0)) << c.tag;
    EXPECT_EQ(c.tryAndTimed, qorThreadMutexTimedLock(m, 5, "", 0)) << c.tag;
    held += c.tryAndTimed == QORTHREAD_OK ? 2 : 0;
    for (int i = 0; i < held; ++i)
      EXPECT_EQ(QORTHREAD_OK, qorThreadMutexUnlock(m)) << c.tag;
    if (c.tryAndTimed == QORTHREAD_OK) { // (a critical section has no owner check)
      EXPECT_EQ(QORTHREAD_ERROR, qorThreadMutexUnlock(m)) << c.tag << ": one unlock too many";
    }
    EXPECT_EQ(QORTHREAD_OK, qorThreadMutexDestroy(m));
  }
}

TEST_F(QorThreadFixture, AutoUnlockMutexRecordsItsFirstLockSiteUntilFullyReleased) {
  static const char *const kFile = "first.cpp";
  for (int kind : {QorMutexAttrNoop, QorMutexAttrCriticalSection}) {
    QorMutex_ m = nullptr;
    ASSERT_EQ(QORTHREAD_OK, qorThreadMutexCreate(&m, QorMutexAttrAutoUnlock, kind, 0));
    qorThreadMutexLock(m, kFile, 11);
    qorThreadMutexLock(m, "second.cpp", 22);
    QorThread_ owner = nullptr;
    const char *file = nullptr;
    int line = 0;
    for (QorThread_ expected : {self(), self(), static_cast<QorThread_>(nullptr)}) {
      qorThreadMutexGetLockSite(m, &owner, &file, &line);
      EXPECT_EQ(expected, owner) << kind;
      if (expected != nullptr) {
        EXPECT_EQ(kFile, file);
        EXPECT_EQ(11, line);
        qorThreadMutexUnlock(m);
      }
    }
    qorThreadMutexLock(m, kFile, 33); // destroyed while held: taken off the owner's list
    EXPECT_EQ(QORTHREAD_OK, qorThreadMutexDestroy(m));
  }
}

// ---- trace -------------------------------------------------------------------------------------

TEST_F(QorThreadFixture, CreateStatementsFollowTheirFormats) {
  using qortest::hex32;
  QorThread_ me = self(); // the identity names the caller's record once it has one
  qortest::TraceCapture trace;
  int marker = 0;
  QorMutex_ m = nullptr;
  QorEvent_ e1 = nullptr, e2 = nullptr;
  QorSemaphore_ s = nullptr;
  qorThreadMutexCreate(&m, QorMutexAttrTraceObj, &marker, QorMutexAttrRecursive, QorMutexAttrAutoUnlock,
                       QorMutexAttrCriticalSection, 0);
  qorThreadEventCreate(&e1, 1, 1, 0);
  qorThreadEventCreate(&e2, 0, 0, QorEventAttrNoop, 0);
  qorThreadSemaphoreCreate(&s, 5u, 0);
  std::string words = " TRACEOBJ " + hex32(&marker) + " RECURSIVE AUTOUNLOCK CRITICAL SECTION";
  std::vector<std::string> expected = {
      "[S]qorThreadMutexCreate( m:" + hex32(&m) + "=" + hex32(m) + words + " )",
      "CREATE MUTEX " + hex32(m) + words + ";",
      "[S]qorThreadEventCreate( event:" + hex32(&e1) + "=" + hex32(e1) + ", manualReset:TRUE, setSignaled:TRUE )",
      "CREATE SIGNALEDEVENT " + hex32(e1) + " WITH MANUAL RESET;",
      "[S]qorThreadEventCreate( event:" + hex32(&e2) + "=" + hex32(e2) + ", manualReset:FALSE, setSignaled:FALSE )",
      "CREATE EVENT " + hex32(e2) + ";",
      "[S]qorThreadSemaphoreCreate( s:" + hex32(&s) + "=" + hex32(s) + ", count:5 )",
      "CREATE SEMAPHORE " + hex32(s) + " WITH COUNT 5;",
  };
  EXPECT_EQ(expected, trace.statements());
  // Every line starts with the caller's identity: record, handle, id.
  char identity[32], id[32];
  std::snprintf(identity, sizeof identity, "%8x(", static_cast<unsigned int>(reinterpret_cast<std::uintptr_t>(me)));
  std::snprintf(id, sizeof id, ",%8x) ", static_cast<unsigned int>(qorThreadCurrentId()));
  EXPECT_EQ(0u, trace.lines()[0].find(identity)) << trace.lines()[0];
  EXPECT_NE(std::string::npos, trace.lines()[0].find(id)) << trace.lines()[0];

  trace.clear(); // a failed create has no CREATE statement; a silenced one says nothing
  QorMutex_ failed = nullptr;
  {
    xyltest::AllocationFailure failure(1);
    qorThreadMutexCreate(&failed, 0);
  }
  QorCondition_ quiet = nullptr;
  qorThreadConditionCreate(&quiet, QorConditionAttrDisableSyntax, 0);
  EXPECT_EQ(std::vector<std::string>{"[E]qorThreadMutexCreate( m:" + hex32(&failed) + "=0 )"}, trace.statements());
  qorThreadConditionDestroy(quiet);
  qorThreadMutexDestroy(m);
  qorThreadEventDestroy(e1);
  qorThreadEventDestroy(e2);
  qorThreadSemaphoreDestroy(s);
}

TEST_F(QorThreadFixture, ProcessInitialisationIsCounted) {
  EXPECT_EQ(QORTHREAD_OK, xylThreadProcessInitialize("XYLThreads"));
  EXPECT_EQ(QORTHREAD_OK, xylThreadProcessTerminate("XYLThreads"));
  EXPECT_NE(nullptr, self()) << "the program's own initialisation still holds";
}

} // namespace
