/* SPDX-License-Identifier: Apache-2.0
 * XYLThreadConditionVariable.h - a condition variable used with an
 * XYLThreadMutex or an XYLThreadCriticalSection.
 *
 * Contract: the caller holds the lock around wait, timedWait, signal and
 * broadcast. wait releases the lock, sleeps until woken and takes the lock
 * again before it returns (also when it throws); timedWait answers 1 (woken)
 * or 0 (the milliseconds passed; the lock is held again either way). A
 * signal with no waiter is lost; broadcast wakes every current waiter and
 * returns once the last of them has woken. Waiters may wake spuriously:
 * test the predicate in a loop. Hold the lock once only while waiting (a
 * recursive hold is released one level, so the wait would keep the lock).
 * The object owns one layer condition variable. Not copyable.
 *
 * Throws:
 *  - constructor: XYLThreadResourceError -6
 *    "XYLThreadConditionVariable::XYLThreadConditionVariable" when none is
 *    left; XYLOutOfMemoryError "QorThread ran out of memory";
 *    XYLThreadResourceError -1 "XYLThreadConditionVariable::
 *    XYLThreadConditionVariable: QorThread interface or unexpected error"
 *    (written without the line break) otherwise.
 *  - every operation: XYLThreadResourceError -1
 *    "XYLThreadConditionVariable::<op>: QorThread interface or unexpected
 *    error" (<op> is wait, timedWait, signal or broadcast).
 *
 * Thread safety: any thread may use the object, with the lock held.
 */
#ifndef XYLCORE_THREADS_XYLTHREADCONDITIONVARIABLE_H
#define XYLCORE_THREADS_XYLTHREADCONDITIONVARIABLE_H

#include <XYLCore/QorThread/qorthread.h>
#include <XYLCore/XYLExport.h>

class XYLThreadMutex;
class XYLThreadCriticalSection;

class XYL_API XYLThreadConditionVariable {
public:
  XYLThreadConditionVariable();
  virtual ~XYLThreadConditionVariable();

  void wait(XYLThreadMutex &mutex);
  int timedWait(XYLThreadMutex &mutex, unsigned long milliseconds);
  void wait(XYLThreadCriticalSection &criticalSection);
  int timedWait(XYLThreadCriticalSection &criticalSection, unsigned long milliseconds);
  void signal();
  void broadcast();

private:
  XYLThreadConditionVariable(const XYLThreadConditionVariable &) = delete;
  XYLThreadConditionVariable &operator=(const XYLThreadConditionVariable &) = delete;

  QorCondition_ m_condition;
};

#endif // XYLCORE_THREADS_XYLTHREADCONDITIONVARIABLE_H
