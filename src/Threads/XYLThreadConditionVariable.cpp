// SPDX-License-Identifier: Apache-2.0
#include <XYLCore/Threads/XYLThreadConditionVariable.h>
#include <XYLCore/Threads/XYLThreadCriticalSection.h>
#include <XYLCore/Threads/XYLThreadMutex.h>

#include "XYLThreadStatus_internal.h"

using xyl_threads::raiseOperationFailure;
using xyl_threads::toLayerMilliseconds;

XYLThreadConditionVariable::XYLThreadConditionVariable() : m_condition(nullptr) {
  int status = qorThreadConditionCreate(&m_condition, QorConditionAttrEnd);
  if (status != QORTHREAD_OK)
    xyl_threads::raiseCreateFailure(
        XYL_HERE, status, XYLThreadErrorOutOfConditionVariables,
        "XYLThreadConditionVariable::XYLThreadConditionVariable", "QorThread ran out of memory",
        "XYLThreadConditionVariable::XYLThreadConditionVariable: QorThread interface or unexpected error");
}

XYLThreadConditionVariable::~XYLThreadConditionVariable() { qorThreadConditionDestroy(m_condition); }

void XYLThreadConditionVariable::wait(XYLThreadMutex &mutex) {
  if (qorThreadConditionWait(m_condition, mutex.getLock()) != QORTHREAD_OK)
    raiseOperationFailure(XYL_HERE, "XYLThreadConditionVariable::wait: QorThread interface or unexpected error");
}

int XYLThreadConditionVariable::timedWait(XYLThreadMutex &mutex, unsigned long milliseconds) {
  int status = qorThreadConditionTimedWait(m_condition, mutex.getLock(), toLayerMilliseconds(milliseconds));
  if (status == QORTHREAD_OK)
    return 1;
  if (status == QORTHREAD_TIMEOUT)
    return 0;
  raiseOperationFailure(XYL_HERE, "XYLThreadConditionVariable::timedWait: QorThread interface or unexpected error");
}

void XYLThreadConditionVariable::wait(XYLThreadCriticalSection &criticalSection) {
  if (qorThreadConditionWaitCS(m_condition, criticalSection.getLock()) != QORTHREAD_OK)
    raiseOperationFailure(XYL_HERE, "XYLThreadConditionVariable::wait: QorThread interface or unexpected error");
}

int XYLThreadConditionVariable::timedWait(XYLThreadCriticalSection &criticalSection, unsigned long milliseconds) {
  int status = qorThreadConditionTimedWaitCS(m_condition, criticalSection.getLock(), toLayerMilliseconds(milliseconds));
  if (status == QORTHREAD_OK)
    return 1;
  if (status == QORTHREAD_TIMEOUT)
    return 0;
  raiseOperationFailure(XYL_HERE, "XYLThreadConditionVariable::timedWait: QorThread interface or unexpected error");
}

void XYLThreadConditionVariable::signal() {
  if (qorThreadConditionSignal(m_condition) != QORTHREAD_OK)
    raiseOperationFailure(XYL_HERE, "XYLThreadConditionVariable::signal: QorThread interface or unexpected error");
}

void XYLThreadConditionVariable::broadcast() {
  if (qorThreadConditionBroadcast(m_condition) != QORTHREAD_OK)
    raiseOperationFailure(XYL_HERE, "XYLThreadConditionVariable::broadcast: QorThread interface or unexpected error");
}
