// SPDX-License-Identifier: Apache-2.0
// XYLCustodian: the singleton housekeeping thread.
#include <XYLCore/XYLCustodian/XYLCustodian.h>

#include <XYLCore/ExceptionHierarchy/XYLErrors.h>
#include <XYLCore/Logging/XYLMiniLogger.h>
#include <XYLCore/Threads/XYLThreadGuard.h>

#include <chrono>
#include <cstdlib>
#include <new>

namespace {

const unsigned long kDefaultSchedule = 60000;
// Periods, like time-outs, count as 32 bits; all bits set waits without limit.
const unsigned long kForever = 0xFFFFFFFFul;
const int kTaskFailureExitCode = 327;
const char kLogName[] = "XYLCustodian";

// Guards the instance pointer and the period. Made on first use, after the
// thread layer has been set up.
XYLThreadCriticalSection &staticLock() {
  static XYLThreadCriticalSection lock(0);
  return lock;
}

// The last words of a custodian whose task threw: one log entry, then the
// process ends at once, without running any clean-up.
[[noreturn]] void dieOfTaskFailure(const char *what, const char *text) {
  {
    XYLMiniLogger logger(kLogName);
    logger.log(what, text);
  }
  std::_Exit(kTaskFailureExitCode);
}

} // namespace

XYLCustodian *XYLCustodian::m_pInstance = nullptr;
std::atomic<unsigned long> XYLCustodian::m_schedule{kDefaultSchedule};

XYLCustodian::XYLCustodian()
    : XYLThread(nullptr), m_jobLock(0), m_jobCondition(), m_jobs(), m_pendingLock(0), m_pending(), m_started(0),
      m_terminating(0) {}

XYLCustodian::~XYLCustodian() {
  {
    XYLThreadGuard guard(m_jobLock);
    m_terminating.store(1);
    m_jobCondition.signal();
  }
  try {
    join();
  } catch (...) {
    // Only a failure of the thread layer gets here; the base destructor
    // releases what is left of the thread.
  }
}

int XYLCustodian::registerTask(XYLCustodianTask *task) {
  XYLCustodian *instance;
  {
    XYLThreadGuard guard(staticLock());
    instance = m_pInstance;
  }
  return instance == nullptr ? 0 : instance->assignTask(task);
}

int XYLCustodian::deRegisterTask(XYLCustodianTask *task) {
  XYLCustodian *instance;
  {
    XYLThreadGuard guard(staticLock());
    instance = m_pInstance;
  }
  return instance == nullptr ? 0 : instance->removeTask(task);
}

unsigned long XYLCustodian::getSchedule() { return m_schedule.load(); }

unsigned long XYLCustodian::setSchedule(unsigned long schedule) {
  XYLThreadGuard guard(staticLock());
  const unsigned long previous = m_schedule.load();
  if (previous != 0 && previous != kForever)
    m_schedule.store(schedule & kForever);
  return previous;
}

int XYLCustodian::initialize() {
  XYLThreadGuard guard(staticLock());
  if (m_pInstance == nullptr)
    m_pInstance = new (std::nothrow) XYLCustodian();
  return m_pInstance != nullptr ? 1 : 0;
}

void XYLCustodian::terminate() {
  XYLCustodian *instance;
  {
    XYLThreadGuard guard(staticLock());
    instance = m_pInstance;
    m_pInstance = nullptr;
  }
  delete instance;
}

int XYLCustodian::assignTask(XYLCustodianTask *task) {
  if (task == nullptr)
    return 1;
  XYLThreadGuard guard(m_pendingLock);
  if (m_started.load() == 0 && m_terminating.load() == 0) {
    start();
    m_started.store(1);
  }
  if (m_started.load() == 0 || m_terminating.load() != 0)
    return 0;
  // clang-format off
  std::set<XYLCustodianTask *>::iterator iter = m_pending.find(task);
  if (iter != m_pending.end())
    XYL_ASSERT(task != *iter);
  std::set<XYLCustodianTask *>::iterator iterJobs = m_jobs.find(task);
  if (iterJobs != m_jobs.end())
    XYL_ASSERT(task != *iterJobs);
  // clang-format on
  try {
    m_pending.insert(task);
  } catch (std::bad_alloc &) {
    XYL_THROW(XYLOutOfMemoryError(0L, nullptr));
  }
  return 1;
}

int XYLCustodian::removeTask(XYLCustodianTask *task) {
  if (task == nullptr)
    return 0;
  {
    XYLThreadGuard guard(m_pendingLock);
    if (m_pending.erase(task) != 0)
      return 1;
  }
  // Waits while the run loop is in a cycle: it holds the job lock throughout.
  XYLThreadGuard jobGuard(m_jobLock);
  XYLThreadGuard pendingGuard(m_pendingLock);
  return m_jobs.erase(task) != 0 ? 1 : 0;
}

void XYLCustodian::waitForNextCycle() {
  const unsigned long period = m_schedule.load();
  if (period == kForever) {
    while (m_terminating.load() == 0)
      m_jobCondition.wait(m_jobLock);
    return;
  }
  // Wake-ups before the period is over (other than for shutdown) wait on.
  typedef std::chrono::steady_clock Clock;
  const Clock::time_point deadline = Clock::now() + std::chrono::milliseconds(period);
  while (m_terminating.load() == 0) {
    const Clock::time_point now = Clock::now();
    if (now >= deadline)
      return;
    const long long left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - now).count() + 1;
    m_jobCondition.timedWait(m_jobLock, static_cast<unsigned long>(left));
  }
}

void XYLCustodian::run() {
  try {
    XYLThreadGuard jobGuard(m_jobLock);
    do {
      waitForNextCycle();
      {
        XYLThreadGuard pendingGuard(m_pendingLock);
        m_jobs.insert(m_pending.begin(), m_pending.end());
        m_pending.clear();
      }
      // The walk finds its place again after each call, because a task may
      // deregister tasks (itself included) while it runs.
      std::set<XYLCustodianTask *>::iterator it = m_jobs.begin();
      while (it != m_jobs.end()) {
        XYLCustodianTask *task = *it;
        const int finished = task->doTask(m_terminating.load());
        XYLThread::yield();
        if (finished != 0) {
          XYLThreadGuard pendingGuard(m_pendingLock);
          m_jobs.erase(task);
        }
        it = m_jobs.upper_bound(task);
      }
    } while (m_terminating.load() == 0);
  } catch (XYLThrowable &caught) {
    dieOfTaskFailure("XYLCustodian Caught XYLThrowable", caught.toString());
  } catch (std::bad_alloc &) {
    dieOfTaskFailure("XYLCustodian Caught CSTD_STD_NAME::bad_alloc Exception", "");
  } catch (std::exception &caught) {
    dieOfTaskFailure("XYLCustodian Caught C++ Exception", caught.what());
  } catch (...) {
    dieOfTaskFailure("XYLCustodian Caught Unknown", "XYLCustodian catch (...)");
  }
}
