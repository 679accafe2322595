// SPDX-License-Identifier: Apache-2.0
#include <XYLCore/Threads/XYLThreadRWLock.h>

#include "XYLThreadStatus_internal.h"

using xyl_threads::raiseOperationFailure;
using xyl_threads::toLayerMilliseconds;

XYLThreadRWLock::XYLThreadRWLock() : m_rwlock(nullptr) {
  int status = qorThreadRWLockCreate(&m_rwlock, QorRWLockAttrEnd);
  if (status != QORTHREAD_OK)
    xyl_threads::raiseCreateFailure(XYL_HERE, status, XYLThreadErrorOutOfRWLocks, "XYLThreadRWLock::XYLThreadRWLock",
                                    "XYLThreadRWLock::XYLThreadRWLock: QorThread ran out of memory",
                                    "XYLThreadRWLock::XYLThreadRWLock: QorThread interface or unexpected error");
}

XYLThreadRWLock::~XYLThreadRWLock() { qorThreadRWLockDestroy(m_rwlock); }

void XYLThreadRWLock::lock() {
  if (qorThreadRWLockWriteLock(m_rwlock) != QORTHREAD_OK)
    raiseOperationFailure(XYL_HERE, "XYLThreadRWLock::lock: QorThread interface or unexpected error");
}

void XYLThreadRWLock::unlock() {
  if (qorThreadRWLockUnlock(m_rwlock) != QORTHREAD_OK)
    raiseOperationFailure(XYL_HERE, "XYLThreadRWLock::unlock: QorThread interface or unexpected error");
}

int XYLThreadRWLock::tryLock() {
  int status = qorThreadRWLockTryWriteLock(m_rwlock);
  if (status == QORTHREAD_OK)
    return 1;
  if (status == QORTHREAD_INUSE)
    return 0;
  raiseOperationFailure(XYL_HERE, "XYLThreadRWLock::tryLock: QorThread interface or unexpected error");
}

void XYLThreadRWLock::readLock() {
  if (qorThreadRWLockReadLock(m_rwlock) != QORTHREAD_OK)
    raiseOperationFailure(XYL_HERE, "XYLThreadRWLock::readLock: QorThread interface or unexpected error");
}

int XYLThreadRWLock::tryReadLock() {
  int status = qorThreadRWLockTryReadLock(m_rwlock);
  if (status == QORTHREAD_OK)
    return 1;
  if (status == QORTHREAD_INUSE)
    return 0;
  raiseOperationFailure(XYL_HERE, "XYLThreadRWLock::tryReadLock: QorThread interface or unexpected error");
}

int XYLThreadRWLock::timedLock(unsigned long milliseconds) {
  int status = qorThreadRWLockTimedWriteLock(m_rwlock, toLayerMilliseconds(milliseconds));
  if (status == QORTHREAD_OK)
    return 1;
  if (status == QORTHREAD_TIMEOUT)
    return 0;
  raiseOperationFailure(XYL_HERE, "XYLThreadRWLock::timedLock: QorThread interface or unexpected error");
}

int XYLThreadRWLock::timedReadLock(unsigned long milliseconds) {
  int status = qorThreadRWLockTimedReadLock(m_rwlock, toLayerMilliseconds(milliseconds));
  if (status == QORTHREAD_OK)
    return 1;
  if (status == QORTHREAD_TIMEOUT)
    return 0;
  raiseOperationFailure(XYL_HERE, "XYLThreadRWLock::timedReadLock: QorThread interface or unexpected error");
}
