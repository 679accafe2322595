/* SPDX-License-Identifier: Apache-2.0
 * XYLCustodian.h - the library's one background housekeeping thread.
 *
 * XYLCustodian is a process-wide singleton: xylCoreInitialize makes it and
 * xylCoreTerminate destroys it. Code registers XYLCustodianTask objects; the
 * custodian thread, started with the first registration, wakes every
 * getSchedule() milliseconds (60000 unless changed) and calls each active
 * task's doTask in the order of the tasks' addresses, dropping the tasks
 * that answer non-zero. A task registered during a cycle joins at the next.
 *
 * Contract:
 *  - registerTask answers 1 when the task was added (or is null), 0 when
 *    there is no custodian (before initialisation, after termination, or
 *    while it shuts down). Registering a task that is already registered
 *    throws XYLAssertError "XYL_ASSERT(task != *iter);" (still waiting for
 *    its first cycle) or "XYL_ASSERT(task != *iterJobs);" (active).
 *  - deRegisterTask answers 1 when the task was removed, 0 when it was not
 *    registered (or is null, or there is no custodian). When the task is
 *    being called at that moment, deRegisterTask waits until the whole cycle
 *    has ended; after it returns the task is never called again.
 *  - On destruction the custodian wakes, runs one last cycle with
 *    terminating non-zero, and its thread ends.
 *  - A task that throws ends the process: the custodian writes one entry to
 *    the mini log "XYLCustodian" ("../logs/XYLCustodian.log") whose source is
 *    "XYLCustodian Caught XYLThrowable" (text: the throwable's XML),
 *    "XYLCustodian Caught CSTD_STD_NAME::bad_alloc Exception" (empty text),
 *    "XYLCustodian Caught C++ Exception" (text: what()) or "XYLCustodian
 *    Caught Unknown" (text "XYLCustodian catch (...)"), then calls
 *    _exit(327): no destructors, no atexit handlers. This is deliberate.
 *  - The period counts as 32 bits. Once it is 0 (no wait between cycles) or
 *    4294967295 (cycles only when woken for shutdown) it can never change.
 *
 * Locks, in this order: a static lock guards the instance pointer and the
 * period and is never held while calling into the instance. The run loop
 * holds the job lock for its whole life (released only while it waits for
 * the next cycle) and takes the pending lock inside it; registerTask takes
 * only the pending lock; deRegisterTask takes the pending lock, releases it,
 * then the job lock (and the pending lock inside it for the removal: the
 * active set changes only with both locks held, so either lock suffices to
 * read it). A task may register or deregister tasks, itself included, from
 * doTask (the custodian thread already holds the job lock).
 * Deadlock hazard: a task must not wait for another thread that calls
 * deRegisterTask.
 *
 * Thread safety: the static operations may be called from any thread, but
 * not at the same time as the library's termination.
 * Blocking: deRegisterTask may wait for a whole cycle of tasks.
 *
 * Test seam: the private initialize, terminate and setSchedule are reachable
 * by the lifecycle functions and by a class named XYLCustodianTestAccess,
 * which only the unit tests define.
 */
#ifndef XYLCORE_XYLCUSTODIAN_XYLCUSTODIAN_H
#define XYLCORE_XYLCUSTODIAN_XYLCUSTODIAN_H

#include <XYLCore/Core/xylcore.h>
#include <XYLCore/Threads/XYLThread.h>
#include <XYLCore/Threads/XYLThreadConditionVariable.h>
#include <XYLCore/Threads/XYLThreadCriticalSection.h>
#include <XYLCore/XYLCustodian/XYLCustodianTask.h>

#include <atomic>
#include <set>

class XYLCustodianTestAccess;

class XYL_API XYLCustodian : public XYLThread {
public:
  // Adds `task` to be run from the next cycle on (see the contract above).
  static int registerTask(XYLCustodianTask *task);
  // Removes `task`; waits while the custodian is in a cycle.
  static int deRegisterTask(XYLCustodianTask *task);
  // The period between cycles in milliseconds.
  static unsigned long getSchedule();

private:
  XYLCustodian();
  // Wakes the thread for its last cycle and waits for it to end.
  ~XYLCustodian() override;

  void run() override;
  int assignTask(XYLCustodianTask *task);
  int removeTask(XYLCustodianTask *task);
  // Waits on the condition variable, job lock held, for one period or until
  // shutdown begins.
  void waitForNextCycle();

  // Makes the instance when there is none; 1 when an instance exists.
  static int initialize();
  // Takes the instance away and deletes it (outside the static lock).
  static void terminate();
  // Stores a new period unless the current one is 0 or 4294967295; returns
  // the previous period.
  static unsigned long setSchedule(unsigned long schedule);

  friend int ::xylCoreInitialize(const char *);
  friend int ::xylCoreTerminate(const char *);
  friend class ::XYLCustodianTestAccess;

  XYLThreadCriticalSection m_jobLock;
  XYLThreadConditionVariable m_jobCondition;
  std::set<XYLCustodianTask *> m_jobs;
  XYLThreadCriticalSection m_pendingLock;
  std::set<XYLCustodianTask *> m_pending;
  std::atomic<int> m_started;
  std::atomic<int> m_terminating;

  static XYLCustodian *m_pInstance;
  static std::atomic<unsigned long> m_schedule;
};

#endif // XYLCORE_XYLCUSTODIAN_XYLCUSTODIAN_H
