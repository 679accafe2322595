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
 * Exceptions thrown by a runnable's run() are not caught by the worker: they
 * end that worker's thread (the pool then has one worker fewer).
 * Blocking: the destructor waits for every running task to return.
 * Deadlock hazard: a task that waits for a task queued behind it in a pool
 * without a free worker; destroying a pool from one of its own tasks.
 */
#ifndef XYLCORE_THREADPOOLS_XYLTHREADPOOL_H
#define XYLCORE_THREADPOOLS_XYLTHREADPOOL_H

#include <XYLCore/Threads/XYLThreadExecuteRunnable.h>

class XYL_API XYLThreadPool : public XYLThreadExecuteRunnable {
public:
  // Hands `runnable` to the pool, waiting up to `timeout` milliseconds; 1 when
  // taken, 0 when not. Throws XYLIllegalStateError once shutdown has begun.
  virtual int execute(XYLThreadRunnable *runnable, unsigned long timeout) = 0;

  // Stops the pool (see each pool); a pool may be deleted through this class.
  ~XYLThreadPool() override;

protected:
  XYLThreadPool();

private:
  XYLThreadPool(const XYLThreadPool &) = delete;
  XYLThreadPool &operator=(const XYLThreadPool &) = delete;
};

#endif // XYLCORE_THREADPOOLS_XYLTHREADPOOL_H
