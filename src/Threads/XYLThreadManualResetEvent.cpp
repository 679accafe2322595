// SPDX-License-Identifier: Apache-2.0
#include <XYLCore/Threads/XYLThreadManualResetEvent.h>

#include "XYLThreadStatus_internal.h"

using xyl_threads::raiseOperationFailure;

XYLThreadManualResetEvent::XYLThreadManualResetEvent(int signalled) : m_event(nullptr) { initialize(signalled); }

XYLThreadManualResetEvent::~XYLThreadManualResetEvent() { qorThreadEventDestroy(m_event); }

void XYLThreadManualResetEvent::initialize(int signalled) {
  int status = qorThreadEventCreate(&m_event, 1, signalled != 0 ? 1 : 0, QorEventAttrEnd);
  // The exhausted case shares the auto-reset event's text on purpose.
  if (status != QORTHREAD_OK)
    xyl_threads::raiseCreateFailure(
        XYL_HERE, status, XYLThreadErrorOutOfEvents, "XYLThreadAutoResetEvent: out of events",
        "QorThread ran out of memory",
        "XYLThreadManualResetEvent::XYLThreadManualResetEvent: QorThread interface or unexpected error");
}

void XYLThreadManualResetEvent::wait() {
  if (qorThreadEventWait(m_event) != QORTHREAD_OK)
    raiseOperationFailure(XYL_HERE, "XYLThreadManualResetEvent::wait: QorThread interface or unexpected error");
}

int XYLThreadManualResetEvent::timedWait(unsigned long milliseconds) {
  int status = qorThreadEventTimedWait(m_event, xyl_threads::toLayerMilliseconds(milliseconds));
  if (status == QORTHREAD_OK)
    return 1;
  if (status == QORTHREAD_TIMEOUT)
    return 0;
  raiseOperationFailure(XYL_HERE, "XYLThreadManualResetEvent::timedWait: QorThread interface or unexpected error");
}

void XYLThreadManualResetEvent::signal() {
  if (qorThreadEventSet(m_event) != QORTHREAD_OK)
    raiseOperationFailure(XYL_HERE, "XYLThreadManualResetEvent::signal: QorThread interface or unexpected error");
}

void XYLThreadManualResetEvent::reset() {
  if (qorThreadEventReset(m_event) != QORTHREAD_OK)
    raiseOperationFailure(XYL_HERE, "XYLThreadManualResetEvent::reset: QorThread interface or unexpected error");
}
