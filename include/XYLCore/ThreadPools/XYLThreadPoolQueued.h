/* SPDX-License-Identifier: Apache-2.0
 * XYLThreadPoolQueued.h - a pool whose workers share one task queue.
 *
 * Contract (see XYLThreadPool.h for execute's common rules):
 *  - The constructor makes the task queue with `capacity` slots (0 makes it
 *    unbounded) and starts `count` workers.
 *  - execute queues the runnable, waiting up to the timeout for a free slot;
 *    it answers 0 when the queue stayed full. Queued runnables are run in
 *    the order they were queued, each by the first free worker.
 *  - An idle worker looks at the queue at least every 10000 ms.
 *  - The destructor stops the pool: execute then throws XYLIllegalStateError
 *    "XYLThreadPoolQueued::execute: attempted to execute while shutting
 *    down". With `drain` non-zero the workers go on running every task still
 *    queued and end when the queue is empty; with `drain` 0 each worker ends
 *    at its next look at the queue, and a task it takes then is dropped
 *    without being run (deliberately; tasks left in the queue are dropped
 *    too). Idle workers are woken at once; the destructor returns when every
 *    worker thread has ended.
 *
 * Throws: the constructor throws XYLOutOfMemoryError (no message) when a
 * worker or the queue's slot semaphore cannot be allocated, and what
 * XYLThread::start throws (workers already started are stopped first).
 * Thread safety and failing tasks: as XYLThreadPool (a task's exception is
 * reported and the worker goes on).
 */
#ifndef XYLCORE_THREADPOOLS_XYLTHREADPOOLQUEUED_H
#define XYLCORE_THREADPOOLS_XYLTHREADPOOLQUEUED_H

#include <XYLCore/ThreadPools/XYLList.h>
#include <XYLCore/ThreadPools/XYLSentinelQueue.h>
#include <XYLCore/ThreadPools/XYLThreadPool.h>

#include <atomic>

class XYL_API XYLThreadPoolQueued : public XYLThreadPool {
public:
  // The interval at which an idle worker looks at the queue, milliseconds.
  static const unsigned long POLL_INTERVAL = 10000;

  // Starts `count` workers on a queue of `capacity` slots (0 = unbounded);
  // `drain` non-zero runs the tasks still queued when shutdown begins.
  XYLThreadPoolQueued(unsigned long count, unsigned long capacity, int drain);
  // Stops every worker; waits for running (and, with drain, queued) tasks.
  ~XYLThreadPoolQueued() override;

  int execute(XYLThreadRunnable *runnable, unsigned long timeout) override;

  unsigned long getWorkerCount() const { return m_workerCount; }
  unsigned long getCapacity() const { return m_capacity; }
  int getDrain() const { return m_drain; }

private:
  class WorkerThread;
  friend class WorkerThread;

  // The worker's loop over the task queue.
  void processTasks();
  // Stops and deletes every worker (destructor and failed constructor).
  void shutdown();

  unsigned long m_workerCount;
  // 0 while running; set once, when shutdown begins.
  std::atomic<int> m_stopWork;
  unsigned long m_capacity;
  int m_drain;
  XYLList<WorkerThread *> m_workers;
  XYLSentinelQueue m_tasks;
};

#endif // XYLCORE_THREADPOOLS_XYLTHREADPOOLQUEUED_H
