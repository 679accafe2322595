/* SPDX-License-Identifier: Apache-2.0
 * XYLThreadRWLockableResource.h - the library's read/write lock interface,
 * taken and released through XYLThreadRWGuard.
 *
 * Contract: many readers or one writer. lock()/readLock() block; the try
 * forms answer 1 (taken) or 0 (busy) at once; the timed forms wait at most
 * the given milliseconds (4294967295 waits without limit) and answer 1 or 0.
 * unlock() gives back the caller's read or write hold. Failures throw
 * XYLThreadResourceError (code -1).
 * Deadlock hazard: the library's implementation is not recursive and
 * prefers writers; a reader that read-locks again while a writer waits
 * waits for itself.
 */
#ifndef XYLCORE_THREADS_XYLTHREADRWLOCKABLERESOURCE_H
#define XYLCORE_THREADS_XYLTHREADRWLOCKABLERESOURCE_H

#include <XYLCore/XYLExport.h>

class XYL_API XYLThreadRWLockableResource {
public:
  virtual ~XYLThreadRWLockableResource();
  // Write (exclusive) lock.
  virtual void lock() = 0;
  virtual void unlock() = 0;
  virtual int tryLock() = 0;
  // Read (shared) lock.
  virtual void readLock() = 0;
  virtual int tryReadLock() = 0;
  virtual int timedLock(unsigned long milliseconds) = 0;
  virtual int timedReadLock(unsigned long milliseconds) = 0;

protected:
  XYLThreadRWLockableResource() = default;

private:
  XYLThreadRWLockableResource(const XYLThreadRWLockableResource &) = delete;
  XYLThreadRWLockableResource &operator=(const XYLThreadRWLockableResource &) = delete;
};

#endif // XYLCORE_THREADS_XYLTHREADRWLOCKABLERESOURCE_H
