/* SPDX-License-Identifier: Apache-2.0
 * XYLThreadManualResetEvent.h - an event that stays signalled until reset.
 *
 * Contract: made signalled or not as asked. signal() releases every waiter
 * and every later wait until reset(); wait() blocks without limit while it
 * is not signalled; timedWait answers 1 (signalled) or 0 (the milliseconds
 * passed; 4294967295 waits without limit). The object owns one layer event.
 * Not copyable.
 *
 * Throws:
 *  - constructor: XYLThreadResourceError -7 "XYLThreadAutoResetEvent: out of
 *    events" when none is left (the text names the auto-reset class on
 *    purpose: both kinds share it); XYLOutOfMemoryError "QorThread ran out of
 *    memory"; XYLThreadResourceError -1 "XYLThreadManualResetEvent::
 *    XYLThreadManualResetEvent: QorThread interface or unexpected error"
 *    (written without the line break) otherwise.
 *  - every operation: XYLThreadResourceError -1
 *    "XYLThreadManualResetEvent::<op>: QorThread interface or unexpected
 *    error".
 *
 * Thread safety: any thread may use the object.
 */
#ifndef XYLCORE_THREADS_XYLTHREADMANUALRESETEVENT_H
#define XYLCORE_THREADS_XYLTHREADMANUALRESETEVENT_H

#include <XYLCore/QorThread/qorthread.h>
#include <XYLCore/XYLExport.h>

class XYL_API XYLThreadManualResetEvent {
public:
  explicit XYLThreadManualResetEvent(int signalled = 0);
  virtual ~XYLThreadManualResetEvent();

  void wait();
  int timedWait(unsigned long milliseconds);
  void signal();
  void reset();

private:
  XYLThreadManualResetEvent(const XYLThreadManualResetEvent &) = delete;
  XYLThreadManualResetEvent &operator=(const XYLThreadManualResetEvent &) = delete;
  void initialize(int signalled);

  QorEvent_ m_event;
};

#endif // XYLCORE_THREADS_XYLTHREADMANUALRESETEVENT_H
