/* SPDX-License-Identifier: Apache-2.0
 * XYLThreadMutex.h - an exclusive lock of the thread layer's mutex kind.
 *
 * Contract: recursive for its owner (each lock needs one unlock), with
 * try-lock and timed lock. A mutex whose owner thread ended while holding it
 * counts as acquired by the next locker (abandoned). Each lock passes the
 * call site inside this class to the layer, which records it for
 * auto-unlock mutexes. The object owns one layer mutex, made in the
 * constructor and destroyed in the destructor; destroying a held mutex is
 * an error. Not copyable.
 *
 * Throws:
 *  - constructor: XYLThreadResourceError -7 "XYLThreadMutex::XYLThreadMutex"
 *    when the layer has no mutex left; XYLOutOfMemoryError
 *    "XYLThreadMutex::XYLThreadMutex: QorThread ran out of memory";
 *    XYLThreadResourceError -1 "XYLThreadMutex::XYLThreadMutex: QorThread
 *    interface or unexpected error" for anything else.
 *  - every operation: XYLThreadResourceError -1 "XYLThreadMutex::<op>:
 *    QorThread interface or unexpected error" (for example unlock by a
 *    thread that does not hold it).
 *
 * Thread safety: any thread may use the object. Blocking: lock() waits
 * without limit; timedLock waits at most its milliseconds (4294967295 waits
 * without limit). Deadlock hazard: taking two mutexes in different orders.
 */
#ifndef XYLCORE_THREADS_XYLTHREADMUTEX_H
#define XYLCORE_THREADS_XYLTHREADMUTEX_H

#include <XYLCore/QorThread/qorthread.h>
#include <XYLCore/Threads/XYLThreadLockableResource.h>

class XYL_API XYLThreadMutex : public XYLThreadLockableResource {
public:
  // With recursive non-zero the layer mutex is asked for recursively (both
  // answers give a recursive mutex; the flag is kept for the record).
  explicit XYLThreadMutex(int recursive = 0);
  ~XYLThreadMutex() override;

  void lock() override;
  void unlock() override;
  // 1 when taken, 0 when another thread holds it.
  int tryLock() override;
  // 1 when taken, 0 when the milliseconds passed first.
  int timedLock(unsigned long milliseconds);
  // The layer mutex, for condition variables.
  QorMutex_ getLock() const { return m_mutex; }

private:
  QorMutex_ m_mutex;
};

#endif // XYLCORE_THREADS_XYLTHREADMUTEX_H
