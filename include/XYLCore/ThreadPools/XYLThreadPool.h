/* SPDX-License-Identifier: Apache-2.0
 * XYLThreadPool.h - the interface of the library's thread pools.
 *
 * A pool runs XYLThreadRunnable objects on worker threads (XYLThread objects)
 * that it starts in its constructor and ends in its destructor. The two
 * pools are XYLThreadPoolFixed (a task goes straight to an idle worker) and
 * XYLThreadPoolQueued (tasks wait in one shared, optionally bounded queue).
 *
 * Contract of execute(runnable, timeout):
 *  - answers 1 when the runnable was handed over (it will be run once, on a
 *    worker thread, unless the pool is destroyed first, see each pool), and
 *    0 when the pool could not take it within `timeout` milliseconds (the
 *    runnable is then not run);
 *  - timeout 0 does not wait; 4294967295 waits without limit (timeouts count
 *    as 32 bits);
 *  - once destruction has begun it throws XYLIllegalStateError with the
 *    pool's "...::execute: attempted to execute while shutting down" text.
 *
 * Ownership: runnables are not owned; each must outlive its run. A runnable
 * may be handed over again while it runs (it then runs on two workers).
 * Thread safety: any number of threads may call execute at once. The
 * destructor belongs to one thread; calling execute at the same time from
 * outside the pool's own tasks is a race the caller must avoid (a task of
 * the pool may call execute during destruction and receives the error).
 * Failing tasks: whatever a runnable's run() lets escape (an XYLThrowable,
 * a standard exception or any other C++ exception) is caught by the worker,
 * which reports it and goes on with the next task: the pool never loses a
 * worker to a task. The report is one entry in the mini logger "xyl"
 * (source "XYLThreadPool::runTask", text the throwable's XML, the standard
 * exception's what(), or "unknown exception"), then a call of the error
 * handler set with setErrorHandler, if any, on the worker thread. The
 * handler must not throw (what it throws is dropped).
 * Blocking: the destructor waits for every running task to return.
 * Deadlock hazard: a task that waits for a task queued behind it in a pool
 * without a free worker; destroying a pool from one of its own tasks.
 */
#ifndef XYLCORE_THREADPOOLS_XYLTHREADPOOL_H
#define XYLCORE_THREADPOOLS_XYLTHREADPOOL_H

#include <XYLCore/Threads/XYLThreadCriticalSection.h>
#include <XYLCore/Threads/XYLThreadExecuteRunnable.h>

class XYLThreadPool;

// Told about a task whose run() let an exception escape: the pool, the task
// and the report text (valid during the call only); `context` is the value
// given to setErrorHandler.
typedef void (*XYLThreadPoolErrorHandler)(XYLThreadPool *pool, XYLThreadRunnable *task, const char *report,
                                          void *context);

class XYL_API XYLThreadPool : public XYLThreadExecuteRunnable {
public:
  // Hands `runnable` to the pool, waiting up to `timeout` milliseconds; 1 when
  // taken, 0 when not. Throws XYLIllegalStateError once shutdown has begun.
  virtual int execute(XYLThreadRunnable *runnable, unsigned long timeout) = 0;

  // Stops the pool (see each pool); a pool may be deleted through this class.
  ~XYLThreadPool() override;

  // Sets (or, with null, clears) the handler told about failing tasks. May be
  // called at any time from any thread; a report under way uses the handler
  // it has already read.
  void setErrorHandler(XYLThreadPoolErrorHandler handler, void *context);

protected:
  XYLThreadPool();

  // Runs one task on the calling worker, catching and reporting whatever it
  // lets escape (the thread's forced unwinding is let through).
  void runTask(XYLThreadRunnable *task);

private:
  void reportTaskFailure(XYLThreadRunnable *task, const char *report);

  XYLThreadCriticalSection m_errorLock; // guards the two fields below
  XYLThreadPoolErrorHandler m_errorHandler;
  void *m_pErrorContext;

  XYLThreadPool(const XYLThreadPool &) = delete;
  XYLThreadPool &operator=(const XYLThreadPool &) = delete;
};

#endif // XYLCORE_THREADPOOLS_XYLTHREADPOOL_H
