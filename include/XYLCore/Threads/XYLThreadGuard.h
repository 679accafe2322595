/* SPDX-License-Identifier: Apache-2.0
 * XYLThreadGuard.h - holds an exclusive lock for one scope.
 *
 * Contract: the constructor calls lock() on the resource and the destructor
 * unlock(); the guard does not own the resource, which must outlive it.
 * Throws: the constructor passes on what lock() throws (the lock is then not
 * held). An unlock() that throws in the destructor ends the process
 * (std::terminate): it means the guard's thread no longer held the lock.
 * Thread safety: a guard belongs to the thread that made it.
 */
#ifndef XYLCORE_THREADS_XYLTHREADGUARD_H
#define XYLCORE_THREADS_XYLTHREADGUARD_H

#include <XYLCore/Threads/XYLThreadLockableResource.h>

class XYL_API XYLThreadGuard {
public:
  explicit XYLThreadGuard(XYLThreadLockableResource &resource);
  ~XYLThreadGuard();

private:
  XYLThreadGuard(const XYLThreadGuard &) = delete;
  XYLThreadGuard &operator=(const XYLThreadGuard &) = delete;

  XYLThreadLockableResource &m_resource;
};

#endif // XYLCORE_THREADS_XYLTHREADGUARD_H
