/* SPDX-License-Identifier: Apache-2.0
 * XYLThreadCriticalSection.h - the light exclusive lock: the thread layer's
 * critical-section kind.
 *
 * Contract: recursive for its owner (each lock needs one unlock); cheaper
 * than XYLThreadMutex, but without try-lock, timed lock or abandonment
 * handling (a holder that ends keeps it locked for ever). The object owns
 * one layer mutex of critical-section kind; destroying a held critical
 * section is an error. Not copyable.
 *
 * Throws:
 *  - constructor: XYLThreadResourceError -4
 *    "XYLThreadCriticalSection::XYLThreadCriticalSection" when the layer has
 *    none left; XYLOutOfMemoryError with that name followed by
 *    ": QorThread ran out of memory"; XYLThreadResourceError -1 with that
 *    name followed by ": QorThread interface or unexpected error" otherwise.
 *  - tryLock: always XYLUnsupportedOperationError
 *    "XYLThreadCriticalSection::tryLock not supported on this platform".
 *  - lock, unlock: XYLThreadResourceError -1 "XYLThreadCriticalSection::<op>:
 *    QorThread interface or unexpected error".
 *
 * Thread safety: any thread may use the object. Blocking: lock() waits
 * without limit. Deadlock hazard: taking two locks in different orders.
 */
#ifndef XYLCORE_THREADS_XYLTHREADCRITICALSECTION_H
#define XYLCORE_THREADS_XYLTHREADCRITICALSECTION_H

#include <XYLCore/QorThread/qorthread.h>
#include <XYLCore/Threads/XYLThreadLockableResource.h>

class XYL_API XYLThreadCriticalSection : public XYLThreadLockableResource {
public:
  explicit XYLThreadCriticalSection(int recursive = 0);
  ~XYLThreadCriticalSection() override;

  void lock() override;
  void unlock() override;
  // Not offered by this kind of lock: throws XYLUnsupportedOperationError.
  int tryLock() override;
  // The layer mutex, for condition variables.
  QorMutex_ getLock() const { return m_mutex; }

private:
  QorMutex_ m_mutex;
};

#endif // XYLCORE_THREADS_XYLTHREADCRITICALSECTION_H
