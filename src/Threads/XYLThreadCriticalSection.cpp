// SPDX-License-Identifier: Apache-2.0
#include <XYLCore/Threads/XYLThreadCriticalSection.h>

#include "XYLThreadStatus_internal.h"

using xyl_threads::raiseOperationFailure;

XYLThreadCriticalSection::XYLThreadCriticalSection(int recursive) : m_mutex(nullptr) {
  int status = qorThreadMutexCreate(&m_mutex, QorMutexAttrCriticalSection,
                                    recursive != 0 ? QorMutexAttrRecursive : QorMutexAttrNoop, QorMutexAttrEnd);
  if (status != QORTHREAD_OK)
    xyl_threads::raiseCreateFailure(
        XYL_HERE, status, XYLThreadErrorOutOfCriticalSections, "XYLThreadCriticalSection::XYLThreadCriticalSection",
        "XYLThreadCriticalSection::XYLThreadCriticalSection: QorThread ran out of memory",
        "XYLThreadCriticalSection::XYLThreadCriticalSection: QorThread interface or unexpected error");
}

XYLThreadCriticalSection::~XYLThreadCriticalSection() { qorThreadMutexDestroy(m_mutex); }

void XYLThreadCriticalSection::lock() {
  if (qorThreadMutexLock(m_mutex, XYL_SOURCE_FILE, __LINE__) != QORTHREAD_OK)
    raiseOperationFailure(XYL_HERE, "XYLThreadCriticalSection::lock: QorThread interface or unexpected error");
}

void XYLThreadCriticalSection::unlock() {
  if (qorThreadMutexUnlock(m_mutex) != QORTHREAD_OK)
    raiseOperationFailure(XYL_HERE, "XYLThreadCriticalSection::unlock: QorThread interface or unexpected error");
}

int XYLThreadCriticalSection::tryLock() {
  int status = qorThreadMutexTryLock(m_mutex, XYL_SOURCE_FILE, __LINE__);
  if (status == QORTHREAD_NOT_SUPPORTED)
    XYL_THROW(XYLUnsupportedOperationError(0L, "XYLThreadCriticalSection::tryLock not supported on this platform"));
  if (status == QORTHREAD_OK)
    return 1;
  if (status == QORTHREAD_INUSE)
    return 0;
  raiseOperationFailure(XYL_HERE, "XYLThreadCriticalSection::tryLock: QorThread interface or unexpected error");
}
