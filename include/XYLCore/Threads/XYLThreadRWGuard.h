/* SPDX-License-Identifier: Apache-2.0
 * XYLThreadRWGuard.h - holds a read or a write lock for one scope.
 *
 * Contract: built with read non-zero the constructor calls readLock(), with
 * read zero lock() (the write lock); the destructor calls unlock(). The
 * guard does not own the resource, which must outlive it.
 * Throws: the constructor passes on what the lock throws. An unlock() that
 * throws in the destructor ends the process (std::terminate).
 * Thread safety: a guard belongs to the thread that made it.
 */
#ifndef XYLCORE_THREADS_XYLTHREADRWGUARD_H
#define XYLCORE_THREADS_XYLTHREADRWGUARD_H

#include <XYLCore/Threads/XYLThreadRWLockableResource.h>

class XYL_API XYLThreadRWGuard {
public:
  XYLThreadRWGuard(XYLThreadRWLockableResource &resource, int read);
  ~XYLThreadRWGuard();

private:
  XYLThreadRWGuard(const XYLThreadRWGuard &) = delete;
  XYLThreadRWGuard &operator=(const XYLThreadRWGuard &) = delete;

  XYLThreadRWLockableResource &m_resource;
};

#endif // XYLCORE_THREADS_XYLTHREADRWGUARD_H
