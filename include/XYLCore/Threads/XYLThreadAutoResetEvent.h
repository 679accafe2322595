/* SPDX-License-Identifier: Apache-2.0
 * XYLThreadAutoResetEvent.h - an event that lets one waiter through per
 * signal and then resets itself.
 *
 * Contract: made non-signalled. signal() releases one waiter, or, with no
 * waiter, stays signalled until the next wait consumes it (signals do not
 * add up). wait() blocks without limit; timedWait answers 1 (signalled) or
 * 0 (the milliseconds passed; 4294967295 waits without limit). The object
 * owns one layer event. Not copyable.
 *
 * Throws:
 *  - constructor: XYLThreadResourceError -7 "XYLThreadAutoResetEvent: out of
 *    events" when none is left; XYLOutOfMemoryError "QorThread ran out of
 *    memory"; XYLThreadResourceError -1 "XYLThreadAutoResetEvent::
 *    XYLThreadAutoResetEvent: QorThread interface or unexpected error"
 *    (written without the line break) otherwise.
 *  - every operation: XYLThreadResourceError -1
 *    "XYLThreadAutoResetEvent::<op>: QorThread interface or unexpected error".
 *
 * Thread safety: any thread may use the object.
 */
#ifndef XYLCORE_THREADS_XYLTHREADAUTORESETEVENT_H
#define XYLCORE_THREADS_XYLTHREADAUTORESETEVENT_H

#include <XYLCore/QorThread/qorthread.h>
#include <XYLCore/XYLExport.h>

class XYL_API XYLThreadAutoResetEvent {
public:
  XYLThreadAutoResetEvent();
  virtual ~XYLThreadAutoResetEvent();

  void wait();
  int timedWait(unsigned long milliseconds);
  void signal();

private:
  XYLThreadAutoResetEvent(const XYLThreadAutoResetEvent &) = delete;
  XYLThreadAutoResetEvent &operator=(const XYLThreadAutoResetEvent &) = delete;

  QorEvent_ m_event;
};

#endif // XYLCORE_THREADS_XYLTHREADAUTORESETEVENT_H
