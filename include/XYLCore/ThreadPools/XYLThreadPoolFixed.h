/* SPDX-License-Identifier: Apache-2.0
 * XYLThreadPoolFixed.h - a pool that hands each task straight to an idle
 * worker.
 *
 * Contract (see XYLThreadPool.h for execute's common rules):
 *  - The constructor starts `count` workers at once; each waits in the pool's
 *    queue of idle workers.
 *  - execute takes an idle worker, waiting up to the timeout; with none it
 *    answers 0 (the runnable is not run). Otherwise the worker runs the
 *    runnable and then becomes idle again. There is no queue of tasks: at
 *    most `count` runnables run at once and none waits.
 *  - The destructor stops the pool: idle workers are woken and end, busy
 *    workers end after their current task, and the destructor returns when
 *    every worker thread has ended. execute during destruction throws
 *    XYLIllegalStateError "XYLThreadPoolFixed::execute: attempted to execute
 *    while shutting down".
 *
 * Throws: the constructor throws XYLOutOfMemoryError (no message) when a
 * worker cannot be allocated, and what XYLThread::start throws (workers
 * already started are stopped again first).
 * Thread safety and failing tasks: as XYLThreadPool (a task's exception is
 * reported and the worker goes on).
 */
#ifndef XYLCORE_THREADPOOLS_XYLTHREADPOOLFIXED_H
#define XYLCORE_THREADPOOLS_XYLTHREADPOOLFIXED_H

#include <XYLCore/ThreadPools/XYLList.h>
#include <XYLCore/ThreadPools/XYLSentinelQueue.h>
#include <XYLCore/ThreadPools/XYLThreadPool.h>

#include <atomic>

class XYL_API XYLThreadPoolFixed : public XYLThreadPool {
public:
  // Starts `count` workers.
  explicit XYLThreadPoolFixed(unsigned long count);
  // Stops every worker; waits for running tasks to return.
  ~XYLThreadPoolFixed() override;

  int execute(XYLThreadRunnable *runnable, unsigned long timeout) override;

  unsigned long getWorkerCount() const { return m_workerCount; }

private:
  class WorkerThread;
  friend class WorkerThread;

  // The worker's loop: become idle, take one task, run it, until stopped.
  void processTasks(WorkerThread *worker);
  // Stops and deletes every worker (destructor and failed constructor).
  void shutdown();

  unsigned long m_workerCount;
  // 0 while running; set once, when shutdown begins.
  std::atomic<int> m_stopWork;
  XYLList<WorkerThread *> m_workers;
  XYLSentinelQueue m_idleWorkers;
};

#endif // XYLCORE_THREADPOOLS_XYLTHREADPOOLFIXED_H
