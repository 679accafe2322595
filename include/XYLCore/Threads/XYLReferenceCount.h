/* SPDX-License-Identifier: Apache-2.0
 * XYLReferenceCount.h - a reference count shared between threads.
 *
 * Contract: as XYLThreadUnsafeReferenceCount, but addReference,
 * removeReference and getReferenceCount each run while holding the object's
 * critical section, and cleanup() is called with that lock held: no other
 * thread can add or remove a reference, or read the count, until cleanup
 * returns. So the count reaches 0 and cleanup runs exactly once per drop to
 * 0, whatever the number of threads.
 * Deadlock hazard: cleanup() runs under the lock; it may call this object's
 * operations again on the same thread (the lock is recursive), but must not
 * wait for another thread that uses the object. It must not delete the
 * object (the lock is released after it returns).
 * Throws: the constructor as XYLThreadCriticalSection's; the operations what
 * the lock or cleanup() throws (the lock is released either way).
 */
#ifndef XYLCORE_THREADS_XYLREFERENCECOUNT_H
#define XYLCORE_THREADS_XYLREFERENCECOUNT_H

#include <XYLCore/Threads/XYLThreadCriticalSection.h>
#include <XYLCore/Threads/XYLThreadUnsafeReferenceCount.h>

class XYL_API XYLReferenceCount : public XYLThreadUnsafeReferenceCount {
public:
  XYLReferenceCount();
  ~XYLReferenceCount() override;

  int addReference() override;
  int removeReference() override;
  int getReferenceCount() override;

private:
  XYLThreadCriticalSection m_lock;
};

#endif // XYLCORE_THREADS_XYLREFERENCECOUNT_H
