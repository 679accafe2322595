/* SPDX-License-Identifier: Apache-2.0
 * XYLThreadSemaphore.h - a counting semaphore.
 *
 * Contract: wait() takes one unit, blocking while the count is 0; tryWait()
 * answers 1 (taken) or 0 (count was 0) at once; timedWait waits at most its
 * milliseconds (4294967295 without limit) and answers 1 or 0; post(n) adds
 * n units one by one (post(0) does nothing). The count never passes
 * 0x7FFFFFFF. The object owns one layer semaphore. Not copyable.
 *
 * Throws:
 *  - constructor: XYLThreadResourceError -5
 *    "XYLThreadSemaphore::XYLThreadSemaphore" when none is left;
 *    XYLOutOfMemoryError "XYLThreadSemaphore::XYLThreadSemaphore: QorThread
 *    ran out of memory"; XYLThreadResourceError -1
 *    "XYLThreadSemaphore::XYLThreadSemaphore: QorThread interface or
 *    unexpected error" otherwise (also for an initial count above the
 *    maximum).
 *  - every operation: XYLThreadResourceError -1 "XYLThreadSemaphore::<op>:
 *    QorThread interface or unexpected error" (post past the maximum; the
 *    units posted before the failing one stay posted).
 *
 * Thread safety: any thread may use the object; waiters are woken in no
 * particular order.
 */
#ifndef XYLCORE_THREADS_XYLTHREADSEMAPHORE_H
#define XYLCORE_THREADS_XYLTHREADSEMAPHORE_H

#include <XYLCore/QorThread/qorthread.h>
#include <XYLCore/XYLExport.h>

class XYL_API XYLThreadSemaphore {
public:
  explicit XYLThreadSemaphore(unsigned long initialCount = 0);
  virtual ~XYLThreadSemaphore();

  void wait();
  int tryWait();
  int timedWait(unsigned long milliseconds);
  void post(unsigned long count = 1);

private:
  XYLThreadSemaphore(const XYLThreadSemaphore &) = delete;
  XYLThreadSemaphore &operator=(const XYLThreadSemaphore &) = delete;
  void initialize(unsigned long initialCount);

  QorSemaphore_ m_semaphore;
};

#endif // XYLCORE_THREADS_XYLTHREADSEMAPHORE_H
