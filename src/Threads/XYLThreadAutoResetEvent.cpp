// SPDX-License-Identifier: Apache-2.0
#include <XYLCore/Threads/XYLThreadAutoResetEvent.h>

#include "XYLThreadStatus_internal.h"

using xyl_threads::raiseOperationFailure;

XYLThreadAutoResetEvent::XYLThreadAutoResetEvent() : m_event(nullptr) {
  int status = qorThreadEventCreate(&m_event, 0, 0, QorEventAttrEnd);
  if (status != QORTHREAD_OK)
    xyl_threads::raiseCreateFailure(
        XYL_HERE, status, XYLThreadErrorOutOfEvents, "XYLThreadAutoResetEvent: out of events",
        "QorThread ran out of memory",
        "XYLThreadAutoResetEvent::XYLThreadAutoResetEvent: QorThread interface or unexpected error");
}

XYLThreadAutoResetEvent::~XYLThreadAutoResetEvent() { qorThreadEventDestroy(m_event); }

void XYLThreadAutoResetEvent::wait() {
  if (qorThreadEventWait(m_event) != QORTHREAD_OK)
    raiseOperationFailure(XYL_HERE, "XYLThreadAutoResetEvent::wait: QorThread interface or unexpected error");
}

int XYLThreadAutoResetEvent::timedWait(unsigned long milliseconds) {
  int status = qorThreadEventTimedWait(m_event, xyl_threads::toLayerMilliseconds(milliseconds));
  if (status == QORTHREAD_OK)
    return 1;
  if (status == QORTHREAD_TIMEOUT)
    return 0;
  raiseOperationFailure(XYL_HERE, "XYLThreadAutoResetEvent::timedWait: QorThread interface or unexpected error");
}

void XYLThreadAutoResetEvent::signal() {
  if (qorThreadEventSet(m_event) != QORTHREAD_OK)
    raiseOperationFailure(XYL_HERE, "XYLThreadAutoResetEvent::signal: QorThread interface or unexpected error");
}
