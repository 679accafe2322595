/* SPDX-License-Identifier: Apache-2.0
 * XYLThreadRWLock.h - the library's read/write lock.
 *
 * Contract: many readers or one writer; writers are preferred (a new reader
 * waits while any writer waits); not recursive. The object owns one layer
 * read/write lock. Not copyable.
 *
 * Throws:
 *  - constructor: XYLThreadResourceError -4 "XYLThreadRWLock::XYLThreadRWLock"
 *    when none is left; XYLOutOfMemoryError "XYLThreadRWLock::XYLThreadRWLock:
 *    QorThread ran out of memory"; XYLThreadResourceError -1
 *    "XYLThreadRWLock::XYLThreadRWLock: QorThread interface or unexpected
 *    error" otherwise.
 *  - every operation: XYLThreadResourceError -1 "XYLThreadRWLock::<op>:
 *    QorThread interface or unexpected error" (<op> is lock, unlock,
 *    tryLock, readLock, tryReadLock, timedLock or timedReadLock).
 *
 * Thread safety: any thread may use the object. Deadlock hazards: a holder
 * that locks again waits for itself (read after read too, when a writer
 * waits in between); an upgrade from read to write waits for itself.
 */
#ifndef XYLCORE_THREADS_XYLTHREADRWLOCK_H
#define XYLCORE_THREADS_XYLTHREADRWLOCK_H

#include <XYLCore/QorThread/qorthread.h>
#include <XYLCore/Threads/XYLThreadRWLockableResource.h>

class XYL_API XYLThreadRWLock : public XYLThreadRWLockableResource {
public:
  XYLThreadRWLock();
  ~XYLThreadRWLock() override;

  void lock() override;
  void unlock() override;
  int tryLock() override;
  void readLock() override;
  int tryReadLock() override;
  // 1 when taken, 0 when the milliseconds passed first (4294967295 waits
  // without limit).
  int timedLock(unsigned long milliseconds) override;
  int timedReadLock(unsigned long milliseconds) override;

private:
  QorRWLock_ m_rwlock;
};

#endif // XYLCORE_THREADS_XYLTHREADRWLOCK_H
