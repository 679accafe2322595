/* SPDX-License-Identifier: Apache-2.0
 * XYLThreadLockableResource.h - the library's exclusive-lock interface,
 * taken and released through XYLThreadGuard.
 *
 * Contract: lock() blocks until the caller owns the lock; unlock() gives one
 * hold back; tryLock() answers 1 (taken) or 0 (busy) without blocking, or
 * throws XYLUnsupportedOperationError where the kind of lock cannot try.
 * Whether a holder may lock again (recursion) is the implementation's
 * promise; both library implementations are recursive for their owner.
 * Failures throw XYLThreadResourceError (code -1).
 * Thread safety: every operation may be called from any thread; unlock by a
 * thread that does not hold the lock is an error.
 */
#ifndef XYLCORE_THREADS_XYLTHREADLOCKABLERESOURCE_H
#define XYLCORE_THREADS_XYLTHREADLOCKABLERESOURCE_H

#include <XYLCore/XYLExport.h>

class XYL_API XYLThreadLockableResource {
public:
  virtual ~XYLThreadLockableResource();
  virtual void lock() = 0;
  virtual void unlock() = 0;
  // 1 when the lock was taken, 0 when another thread holds it.
  virtual int tryLock() = 0;

protected:
  XYLThreadLockableResource() = default;

private:
  XYLThreadLockableResource(const XYLThreadLockableResource &) = delete;
  XYLThreadLockableResource &operator=(const XYLThreadLockableResource &) = delete;
};

#endif // XYLCORE_THREADS_XYLTHREADLOCKABLERESOURCE_H
