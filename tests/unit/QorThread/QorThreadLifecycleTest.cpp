// SPDX-License-Identifier: Apache-2.0
// Threads from start to release: exit status and exit code, suspended start,
// suspend and continue, states, demise and state traps, cancellation,
// priorities, foreign and detached threads, and the thread trace statements.
#include "QorThreadTestSupport.h"

#include <atomic>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

using qortest::QorThreadFixture;
using namespace std::chrono_literals;

namespace {

// A manual-reset event owned by a test.
class Gate {
public:
  Gate() { qorThreadEventCreate(&m_event, 1, 0, 0); }
  ~Gate() { qorThreadEventDestroy(m_event); }
  void open() { qorThreadEventSet(m_event); }
  void wait() { EXPECT_EQ(QORTHREAD_OK, qorThreadEventWait(m_event)); }
  bool openWithin(unsigned int ms) { return qorThreadEventTimedWait(m_event, ms) == QORTHREAD_OK; }

private:
  QorEvent_ m_event = nullptr;
};

void *openGate(void *gate) {
  static_cast<Gate *>(gate)->open();
  return reinterpret_cast<void *>(3);
}
void *waitAtGate(void *gate) {
  static_cast<Gate *>(gate)->wait();
  return reinterpret_cast<void *>(7);
}
void *returnArgument(void *arg) { return arg; }
void *runUntilCanceled(void *) {
  QorThreadState state = QorThreadStateRunning;
  while (state != QorThreadStateCanceling)
    qorThreadTestCancel(nullptr, &state);
  return nullptr;
}

template <class T, int (*Get)(QorThread_, T *)> T query(QorThread_ thread) {
  T value{};
  EXPECT_EQ(QORTHREAD_OK, Get(thread, &value));
  return value;
}
const auto stateOf = query<QorThreadState, qorThreadGetState>;
const auto demiseOf = query<QorThreadDemise, qorThreadGetDemise>;
const auto exitCodeOf = query<int, qorThreadGetExitCode>;
const auto idOf = query<unsigned long, qorThreadGetId>;
const auto priorityOf = query<int, qorThreadGetPriority>;

// Records the states that traps report, in order, for every state of a thread.
struct StateLog {
  std::mutex lock;
  std::vector<QorThreadState> states;
  explicit StateLog(QorThread_ thread) {
    for (int s = QorThreadStateInitial; s < QorThreadStateLast; ++s) {
      QorThreadStateTrap_ trap = nullptr;
      EXPECT_EQ(QORTHREAD_OK,
                qorThreadStateTrapCreate(thread, static_cast<QorThreadState>(s), &trapRoutine, this, &trap, 0));
    }
  }
  static void trapRoutine(void *arg, QorThread_, QorThreadState state) {
    StateLog *log = static_cast<StateLog *>(arg);
    std::lock_guard<std::mutex> guard(log->lock);
    log->states.push_back(state);
  }
};

// Starts `routine` suspended, so that traps are in place before it runs;
// `prepare` runs before the continue. Returns the joined thread's status.
struct Outcome {
  int status;
  QorThreadDemise demise;
  std::vector<QorThreadState> states;
};
Outcome runWatched(QorThreadRoutine routine, void *arg, const std::function<void(QorThread_)> &prepare = {}) {
  QorThread_ thread = nullptr;
  EXPECT_EQ(QORTHREAD_OK, qorThreadCreate(routine, arg, &thread, QorThreadAttrSuspended, 0));
  StateLog log(thread);
  if (prepare)
    prepare(thread);
  qorThreadContinue(thread);
  Outcome outcome{-99, QorThreadDemiseNotDead, {}};
  EXPECT_EQ(QORTHREAD_OK, qorThreadJoin(thread, &outcome.status));
  outcome.demise = demiseOf(thread);
  outcome.states = log.states;
  EXPECT_EQ(QORTHREAD_OK, qorThreadRelease(thread));
  return outcome;
}

// ---- start, join, exit status ---------------------------------------------------------------------

TEST_F(QorThreadFixture, JoinGivesTheRoutinesResultAsOftenAsAsked) {
  for (std::intptr_t result : {std::intptr_t{0}, std::intptr_t{42}, std::intptr_t{-3}, std::intptr_t{0x100000005LL}}) {
    QorThread_ thread = nullptr;
    ASSERT_EQ(QORTHREAD_OK, qorThreadCreate(returnArgument, reinterpret_cast<void *>(result), &thread, 0));
    int first = -99, second = -99;
    EXPECT_EQ(QORTHREAD_OK, qorThreadJoin(thread, &first));
    EXPECT_EQ(QORTHREAD_OK, qorThreadJoin(thread, &second));
    EXPECT_EQ(static_cast<int>(result), first) << "cut to 32 bits";
    EXPECT_EQ(first, second);
    EXPECT_EQ(first, exitCodeOf(thread));
    EXPECT_EQ(QorThreadStateInitial, stateOf(thread));
    EXPECT_EQ(QorThreadDemisePeaceful, demiseOf(thread));
    EXPECT_EQ(QORTHREAD_OK, qorThreadRelease(thread));
  }
}

TEST_F(QorThreadFixture, RunningThreadIsStillActiveAndCannotJoinItself) {
  Gate gate;
  QorThread_ thread = nullptr;
  ASSERT_EQ(QORTHREAD_OK, qorThreadCreate(waitAtGate, &gate, &thread, QorThreadAttrStackSize, 4096000, 0));
  EXPECT_EQ(QORTHREAD_STILL_ACTIVE, exitCodeOf(thread));
  ASSERT_TRUE(qortest::eventually([&] { return stateOf(thread) == QorThreadStateRunning; }));
  EXPECT_EQ(QorThreadDemiseNotDead, demiseOf(thread));
  EXPECT_NE(qorThreadCurrentId(), idOf(thread));
  gate.open();
  EXPECT_EQ(QORTHREAD_OK, qorThreadRelease(thread));

  struct Seen {
    QorThread_ self = nullptr;
    int joinSelf = 0;
  } seen;
  ASSERT_EQ(QORTHREAD_OK, qorThreadCreate(
                              [](void *arg) -> void * {
                                Seen *s = static_cast<Seen *>(arg);
                                qorThreadSelf(&s->self);
                                s->joinSelf = qorThreadJoin(s->self, nullptr);
                                return nullptr;
                              },
                              &seen, &thread, 0));
  ASSERT_EQ(QORTHREAD_OK, qorThreadJoin(thread, nullptr));
  EXPECT_EQ(thread, seen.self);
  EXPECT_EQ(QORTHREAD_DEADLOCK, seen.joinSelf);
  qorThreadRelease(thread);
}

TEST_F(QorThreadFixture, ForeignThreadsGetARecordThatCannotBeJoined) {
  QorThread_ main = nullptr, again = nullptr, other = nullptr;
  ASSERT_EQ(QORTHREAD_OK, qorThreadSelf(&main));
  ASSERT_EQ(QORTHREAD_OK, qorThreadSelf(&again));
  EXPECT_EQ(main, again);
  EXPECT_EQ(QorThreadStateRunning, stateOf(main));
  EXPECT_EQ(QORTHREAD_STILL_ACTIVE, exitCodeOf(main));
  EXPECT_EQ(qorThreadCurrentId(), idOf(main));
  EXPECT_EQ(QORTHREAD_ERROR, qorThreadJoin(main, nullptr));
  EXPECT_EQ(QORTHREAD_ERROR, qorThreadRelease(main));
  std::thread([&] { qorThreadSelf(&other); }).join(); // freed when it ended
  EXPECT_NE(nullptr, other);
  EXPECT_NE(main, other);
}

// A detached thread may still be ending when the test (and, run alone, the
// program) ends, so it touches nothing but these static atomics.
std::atomic<int> g_detachedGo{0}, g_detachedDone{0};
void *detachedRoutine(void *) {
  while (g_detachedGo.load() == 0)
    std::this_thread::yield();
  g_detachedDone.fetch_add(1);
  return nullptr;
}

TEST_F(QorThreadFixture, DetachedThreadsNeedNoHandleAndCannotBeJoined) {
  ASSERT_EQ(QORTHREAD_OK, qorThreadCreate(detachedRoutine, nullptr, nullptr, QorThreadAttrDetached, 0));
  QorThread_ thread = nullptr;
  ASSERT_EQ(QORTHREAD_OK, qorThreadCreate(detachedRoutine, nullptr, &thread, QorThreadAttrDetached, 0));
  EXPECT_EQ(QORTHREAD_ERROR, qorThreadJoin(thread, nullptr)); // still running: the handle is valid
  EXPECT_EQ(QORTHREAD_ERROR, qorThreadRelease(thread));
  g_detachedGo = 1;
  EXPECT_TRUE(qortest::eventually([] { return g_detachedDone.load() == 2; }));
}

TEST_F(QorThreadFixture, BadListOrMissingHandleStartsNothing) {
  Gate ran;
  QorThread_ thread = reinterpret_cast<QorThread_>(1);
  EXPECT_EQ(QORTHREAD_BADATTRIB, qorThreadCreate(openGate, &ran, &thread, QorThreadAttrNoop, 12, 0));
  EXPECT_EQ(nullptr, thread);
  EXPECT_EQ(QORTHREAD_BADATTRIB, qorThreadCreate(openGate, &ran, nullptr, QorThreadAttrDetached, 99, 0));
  EXPECT_EQ(QORTHREAD_BADPARM, qorThreadCreate(openGate, &ran, nullptr, 0));
  EXPECT_FALSE(ran.openWithin(50));
}

// ---- states, demise, traps -----------------------------------------------------------------

TEST_F(QorThreadFixture, StateTrapsSeeEveryChangeAndDemiseFollows) {
  static std::atomic<bool> ran;
  using States = std::vector<QorThreadState>;
  const QorThreadState I = QorThreadStateInitial, R = QorThreadStateRunning, C = QorThreadStateCanceling,
                       E = QorThreadStateException;
  struct Case {
    const char *what;
    QorThreadRoutine routine;
    std::function<void(QorThread_)> prepare;
    int status;
    QorThreadDemise demise;
    States states;
    bool runs;
  } cases[] = {
      {"peaceful",
       [](void *) -> void * {
         ran = true;
         return reinterpret_cast<void *>(5);
       },
       {},
       5,
       QorThreadDemisePeaceful,
       States{R, I},
       true},
      {"exception",
       [](void *) -> void * {
         ran = true;
         throw std::runtime_error("routine failed");
       },
       {},
       QORTHREAD_EXIT_EXCEPTION,
       QorThreadDemiseException,
       States{R, E, I},
       true},
      {"cancel requested before the start",
       [](void *) -> void * {
         ran = true;
         return nullptr;
       },
       [](QorThread_ t) { qorThreadRequestCancel(t); }, 0, QorThreadDemiseCanceled, States{C, I}, false},
  };
  for (const Case &c : cases) {
    ran = false;
    Outcome outcome = runWatched(c.routine, nullptr, c.prepare);
    EXPECT_EQ(c.status, outcome.status) << c.what;
    EXPECT_EQ(c.demise, outcome.demise) << c.what;
    // A suspended start goes from Suspended straight to Running: the Initial
    // trap fires only when the routine has returned.
    EXPECT_EQ(c.states, outcome.states) << c.what;
    EXPECT_EQ(c.runs, ran.load()) << c.what;
  }
}

TEST_F(QorThreadFixture, TrapsCanBeDestroyedBeforeAndWhileTheyFire) {
  struct Counted {
    QorThreadStateTrap_ trap = nullptr;
    std::atomic<int> calls{0}, destroyed{-100};
  } early, self;
  auto count = [](void *arg, QorThread_, QorThreadState) {
    Counted *c = static_cast<Counted *>(arg);
    ++c->calls;
    if (c->destroyed == -100)
      c->destroyed = qorThreadStateTrapDestroy(c->trap);
  };
  runWatched(returnArgument, nullptr, [&](QorThread_ t) {
    qorThreadStateTrapCreate(t, QorThreadStateRunning, count, &early, &early.trap, 0);
    early.destroyed = qorThreadStateTrapDestroy(early.trap);
    qorThreadStateTrapCreate(t, QorThreadStateInitial, count, &self, &self.trap, 0);
  });
  EXPECT_EQ(0, early.calls.load());
  EXPECT_EQ(1, self.calls.load()) << "Initial is entered twice; the trap went after the first";
  EXPECT_EQ(QORTHREAD_OK, self.destroyed.load());
}

// The cancel flag is an int that other code sets; children inherit it only
// when it is marked inheritable.
TEST_F(QorThreadFixture, CancelFlagStopsItsThreadAndInheritingChildrenOnly) {
  for (bool inheritable : {true, false}) {
    struct Shared {
      int flag = 0;
      QorThread_ child = nullptr;
      std::atomic<int> childCreated{0};
    } shared;
    QorThread_ parent = nullptr;
    ASSERT_EQ(QORTHREAD_OK, qorThreadCreate(
                                [](void *arg) -> void * {
                                  Shared *s = static_cast<Shared *>(arg);
                                  qorThreadCreate(runUntilCanceled, nullptr, &s->child, 0);
                                  s->childCreated = 1;
                                  return runUntilCanceled(nullptr);
                                },
                                &shared, &parent, QorThreadAttrCancelFlag, static_cast<void *>(&shared.flag),
                                inheritable ? QorThreadAttrCancelFlagInheritable : QorThreadAttrNoop, 0));
    ASSERT_TRUE(qortest::eventually([&] { return shared.childCreated.load() == 1; }));
    __atomic_store_n(&shared.flag, 1, __ATOMIC_RELEASE);
    EXPECT_TRUE(qortest::finishesWithin(10s, [&] { qorThreadJoin(parent, nullptr); }));
    EXPECT_EQ(QorThreadDemiseCanceled, demiseOf(parent));
    if (inheritable) {
      EXPECT_TRUE(qortest::finishesWithin(10s, [&] { qorThreadJoin(shared.child, nullptr); }));
      EXPECT_EQ(QorThreadDemiseCanceled, demiseOf(shared.child));
    } else {
      EXPECT_EQ(QORTHREAD_STILL_ACTIVE, exitCodeOf(shared.child));
      qorThreadRequestCancel(shared.child); // the child had no flag; stop it another way
    }
    qorThreadRelease(shared.child);
    qorThreadRelease(parent);
  }
  int setBeforeTheStart = 1;
  QorThread_ thread = nullptr;
  ASSERT_EQ(QORTHREAD_OK, qorThreadCreate(returnArgument, reinterpret_cast<void *>(4), &thread, QorThreadAttrCancelFlag,
                                          static_cast<void *>(&setBeforeTheStart), 0));
  int status = -1;
  qorThreadJoin(thread, &status);
  EXPECT_EQ(0, status) << "the routine never ran";
  EXPECT_EQ(QorThreadDemiseCanceled, demiseOf(thread));
  qorThreadRelease(thread);
}

// ---- suspend and continue ---------------------------------------------------------------------

TEST_F(QorThreadFixture, SuspendedStartRunsOnlyAfterTheLastContinue) {
  Gate ran;
  QorThread_ thread = nullptr;
  ASSERT_EQ(QORTHREAD_OK, qorThreadCreate(openGate, &ran, &thread, QorThreadAttrSuspended, 0));
  EXPECT_EQ(QorThreadStateSuspended, stateOf(thread));
  EXPECT_EQ(QORTHREAD_STILL_ACTIVE, exitCodeOf(thread));
  EXPECT_FALSE(ran.openWithin(100)) << "ran before continue";
  EXPECT_EQ(QORTHREAD_OK, qorThreadSuspend(thread)); // counted: one more continue needed
  EXPECT_EQ(QORTHREAD_OK, qorThreadContinue(thread));
  EXPECT_FALSE(ran.openWithin(30)) << "ran with its start suspension pending";
  EXPECT_EQ(QORTHREAD_OK, qorThreadContinue(thread));
  ran.wait();
  EXPECT_EQ(QORTHREAD_OK, qorThreadRelease(thread));

  Gate ranToo; // released while still suspended: continued and joined
  ASSERT_EQ(QORTHREAD_OK, qorThreadCreate(openGate, &ranToo, &thread, QorThreadAttrSuspended, 0));
  EXPECT_TRUE(qortest::finishesWithin(10s, [&] { EXPECT_EQ(QORTHREAD_OK, qorThreadRelease(thread)); }));
  EXPECT_TRUE(ranToo.openWithin(0));
}

TEST_F(QorThreadFixture, SuspendStopsARunningThreadUntilEveryContinue) {
  static std::atomic<long> progress;
  static std::atomic<bool> stop;
  progress = 0;
  stop = false;
  QorThread_ thread = nullptr;
  ASSERT_EQ(QORTHREAD_OK, qorThreadCreate(
                              [](void *) -> void * {
                                while (!stop.load())
                                  ++progress;
                                return nullptr;
                              },
                              nullptr, &thread, 0));
  ASSERT_TRUE(qortest::eventually([&] { return progress.load() > 0; }));
  ASSERT_EQ(QORTHREAD_OK, qorThreadSuspend(thread)); // returns once the thread is parked
  ASSERT_EQ(QORTHREAD_OK, qorThreadSuspend(thread));
  long parkedAt = progress.load();
  for (int continues = 0; continues < 2; ++continues) {
    EXPECT_EQ(QorThreadStateSuspended, stateOf(thread));
    std::this_thread::sleep_for(30ms); // a window in which a running thread would progress
    EXPECT_EQ(parkedAt, progress.load()) << "after " << continues << " continues";
    ASSERT_EQ(QORTHREAD_OK, qorThreadContinue(thread));
  }
  EXPECT_EQ(QorThreadStateRunning, stateOf(thread));
  EXPECT_TRUE(qortest::eventually([&] { return progress.load() > parkedAt; }));
  EXPECT_EQ(QORTHREAD_OK, qorThreadContinue(thread)) << "continuing a running thread does nothing";
  stop = true;
  ASSERT_EQ(QORTHREAD_OK, qorThreadJoin(thread, nullptr));
  EXPECT_EQ(QORTHREAD_ERROR, qorThreadSuspend(thread)) << "the thread has ended";
  qorThreadRelease(thread);
}

TEST_F(QorThreadFixture, ThreadCanSuspendItself) {
  QorThread_ thread = nullptr;
  ASSERT_EQ(QORTHREAD_OK,
            qorThreadCreate(
                [](void *) -> void * {
                  QorThread_ self = nullptr;
                  qorThreadSelf(&self);
                  return reinterpret_cast<void *>(static_cast<std::intptr_t>(qorThreadSuspend(self) + 10));
                },
                nullptr, &thread, 0));
  ASSERT_TRUE(qortest::eventually([&] { return stateOf(thread) == QorThreadStateSuspended; }));
  EXPECT_EQ(QORTHREAD_STILL_ACTIVE, exitCodeOf(thread));
  ASSERT_EQ(QORTHREAD_OK, qorThreadContinue(thread));
  int status = -1;
  EXPECT_TRUE(qortest::finishesWithin(10s, [&] { qorThreadJoin(thread, &status); }));
  EXPECT_EQ(10 + QORTHREAD_OK, status);
  qorThreadRelease(thread);
}

// ---- priorities ---------------------------------------------------------------------------------

TEST_F(QorThreadFixture, PriorityLevelsRoundTripAndOthersFail) {
  Gate gate;
  QorThread_ thread = nullptr;
  ASSERT_EQ(QORTHREAD_OK, qorThreadCreate(waitAtGate, &gate, &thread, 0));
  for (int wanted : {-1, -2, -15}) { // only ever lowered, which needs no privilege
    EXPECT_EQ(QORTHREAD_OK, qorThreadSetPriority(thread, wanted)) << wanted;
    EXPECT_EQ(wanted, priorityOf(thread));
  }
  for (int invalid : {3, -3, 7, 16, -16})
    EXPECT_EQ(QORTHREAD_ERROR, qorThreadSetPriority(thread, invalid)) << invalid;
  gate.open();
  qorThreadRelease(thread);
}

// ---- trace ---------------------------------------------------------------------------------------

TEST_F(QorThreadFixture, ThreadOperationsTraceTheirCalls) {
  using qortest::hex32;
  qortest::TraceCapture trace;
  int marker = 0, status = 0;
  QorThread_ thread = nullptr;
  ASSERT_EQ(QORTHREAD_OK,
            qorThreadCreate(returnArgument, reinterpret_cast<void *>(9), &thread, QorThreadAttrSuspended,
                            QorThreadAttrTraceObj, static_cast<void *>(&marker), QorThreadAttrStackSize, 0x100000, 0));
  std::string tid = std::to_string(idOf(thread));
  std::string words = " SUSPENDED TRACEOBJ " + hex32(&marker) + " STACK SIZE 100000";
  qorThreadSuspend(thread);
  qorThreadContinue(thread);
  qorThreadContinue(thread);
  qorThreadJoin(thread, &status);
  std::vector<std::string> expected = {
      "[S]qorThreadCreate( routine:" + hex32(reinterpret_cast<void *>(&returnArgument)) +
          ", arg:9, threadP:" + hex32(&thread) + "=" + hex32(thread) + "(" + tid + ")" + words + " )",
      "CREATE THREAD " + tid + words + ";",
      "[I]<suspendThread>( thread:" + tid + " )",
      "[S]<suspendThread>( thread:" + tid + " ) = QORTHREAD_OK",
      "[I]<continueThread>( thread:" + tid + " )",
      "[S]<continueThread>( thread:" + tid + " ) = QORTHREAD_OK",
      "[I]<continueThread>( thread:" + tid + " )",
      "[S]<continueThread>( thread:" + tid + " ) = QORTHREAD_OK",
      "[I]<joinThread>( waitThread:" + hex32(thread) + ", statusP:" + hex32(&status) + " )",
      "[S]<joinThread>( waitThread:" + hex32(thread) + ", *statusP:9 ) = QORTHREAD_OK",
  };
  EXPECT_EQ(expected, trace.statements());
  qorThreadRelease(thread);
}

} // namespace
