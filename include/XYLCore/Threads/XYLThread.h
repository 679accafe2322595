/* SPDX-License-Identifier: Apache-2.0
 * XYLThread.h - a thread of the library: runs a runnable, or its own run(),
 * on a thread of the thread layer.
 *
 * Contract:
 *  - The constructor stores the runnable (not owned; may be null, then the
 *    thread runs this object's run(), which a subclass overrides; the base
 *    run() does nothing). Nothing starts until start().
 *  - start() starts the thread with a stack of 4096000 bytes. On the new
 *    thread the object is stored in the library's thread key (when the
 *    library is initialised, see xylCoreInitialize), then run() of the
 *    runnable or of the object is called, then the at-exit routine that code
 *    on the thread registered. Starting an object whose earlier thread was
 *    not joined joins it first (and throws what that join throws).
 *  - join() waits for the thread's end and releases the layer's record;
 *    join() on an object never started, or joined already, does nothing.
 *    A thread whose run() ended by an exception (or by a fault turned into
 *    one) is reported by join() throwing; the record is then kept, so every
 *    later join() throws the same, and the destructor releases it.
 *  - isAlive() is true from start() until the thread's routine has ended.
 *  - The destructor waits for a started thread that was not joined and
 *    releases its record; it throws nothing. A subclass whose run() uses
 *    the subclass's own members must join() in its own destructor, before
 *    those members are destroyed.
 *
 * Throws:
 *  - start(): what join() throws, for an earlier thread not yet joined;
 *    XYLThreadResourceError -3 (no message) when the layer has no
 *    thread left; XYLOutOfMemoryError "QorThread ran out of memory";
 *    XYLThreadResourceError -1 "QorThread interface or unknown error".
 *  - join(): XYLThreadResourceError -1 "QorThread either detected deadlock
 *    or an unexpected error occurred" (a thread joining itself, for
 *    instance); XYLThreadResourceError -1 "QorThread caught a hardware
 *    exception" when the thread ended by an exception.
 *
 * Thread safety: start, join and the destructor belong to one controlling
 * thread at a time; isAlive may be asked from any thread, but not while
 * start or join runs. The static operations may be called from any thread.
 * Blocking: join and the destructor wait without limit for the thread.
 * Deadlock hazard: a thread that joins or destroys its own object.
 */
#ifndef XYLCORE_THREADS_XYLTHREAD_H
#define XYLCORE_THREADS_XYLTHREAD_H

#include <XYLCore/Core/xylcore.h>
#include <XYLCore/QorThread/qorthread.h>
#include <XYLCore/Threads/XYLThreadRunnable.h>

class XYLThreadTestAccess;

class XYL_API XYLThread : public XYLThreadRunnable {
public:
  // A routine run on a thread after its work, registered with atExit.
  typedef void (*AtExitRoutine)(void);

  explicit XYLThread(XYLThreadRunnable *runnable = nullptr);
  ~XYLThread() override;

  // The thread's work when no runnable was given: nothing, unless a subclass
  // overrides it.
  void run() override;
  virtual void start();
  virtual void join();
  virtual bool isAlive();

  // Gives up the processor.
  static void yield();
  // Sleeps the given milliseconds (counted as 32 bits).
  static void sleep(unsigned long milliseconds);
  // The calling thread's operating-system identity.
  static unsigned long currentThreadId();

private:
  XYLThread(const XYLThread &) = delete;
  XYLThread &operator=(const XYLThread &) = delete;

  // The layer's entry routine; arg is the XYLThread.
  static void *main(void *arg);
  // Make and delete the key that maps threads to their XYLThread; both
  // return 0. Initialize throws XYLOutOfMemoryError (no message) when the
  // key cannot be allocated, and what XYLThreadKey's constructor throws.
  static int Initialize();
  static int Terminate();
  // With set non-zero registers routine on the calling thread's XYLThread,
  // with set zero clears it. 0 on success; -1 when the library is not
  // initialised, the calling thread is not an XYLThread, or set is non-zero
  // with a null routine.
  static int atExit(AtExitRoutine routine, int set);

  friend int ::xylCoreInitialize(const char *);
  friend int ::xylCoreTerminate(const char *);
  // The unit tests' window on the private operations.
  friend class ::XYLThreadTestAccess;

  QorThread_ m_thread;
  XYLThreadRunnable *m_runnable;
  AtExitRoutine m_atExit;
};

#endif // XYLCORE_THREADS_XYLTHREAD_H
