// SPDX-License-Identifier: Apache-2.0
#include <XYLCore/Threads/XYLThreadMutex.h>

#include "XYLThreadStatus_internal.h"

using xyl_threads::raiseOperationFailure;

XYLThreadMutex::XYLThreadMutex(int recursive) : m_mutex(nullptr) {
  int status =
      qorThreadMutexCreate(&m_mutex, recursive != 0 ? QorMutexAttrRecursive : QorMutexAttrNoop, QorMutexAttrEnd);
  if (status != QORTHREAD_OK)
    xyl_threads::raiseCreateFailure(XYL_HERE, status, XYLThreadErrorOutOfMutexes, "XYLThreadMutex::XYLThreadMutex",
                                    "XYLThreadMutex::XYLThreadMutex: QorThread ran out of memory",
                                    "XYLThreadMutex::XYLThreadMutex: QorThread interface or unexpected error");
}

XYLThreadMutex::~XYLThreadMutex() { qorThreadMutexDestroy(m_mutex); }

void XYLThreadMutex::lock() {
  if (qorThreadMutexLock(m_mutex, XYL_SOURCE_FILE, __LINE__) != QORTHREAD_OK)
    raiseOperationFailure(XYL_HERE, "XYLThreadMutex::lock: QorThread interface or unexpected error");
}

void XYLThreadMutex::unlock() {
  if (qorThreadMutexUnlock(m_mutex) != QORTHREAD_OK)
    raiseOperationFailure(XYL_HERE, "XYLThreadMutex::unlock: QorThread interface or unexpected error");
}

int XYLThreadMutex::tryLock() {
  int status = qorThreadMutexTryLock(m_mutex, XYL_SOURCE_FILE, __LINE__);
  if (status == QORTHREAD_OK)
    return 1;
  if (status == QORTHREAD_INUSE)
    return 0;
  raiseOperationFailure(XYL_HERE, "XYLThreadMutex::tryLock: QorThread interface or unexpected error");
}

int XYLThreadMutex::timedLock(unsigned long milliseconds) {
  int status =
      qorThreadMutexTimedLock(m_mutex, xyl_threads::toLayerMilliseconds(milliseconds), XYL_SOURCE_FILE, __LINE__);
  if (status == QORTHREAD_OK)
    return 1;
  if (status == QORTHREAD_TIMEOUT)
    return 0;
  raiseOperationFailure(XYL_HERE, "XYLThreadMutex::timedLock: QorThread interface or unexpected error");
}
