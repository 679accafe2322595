// SPDX-License-Identifier: Apache-2.0
// XYLThreadPoolFixed: idle workers wait in a queue; execute takes one and
// hands it the task through the worker's private queue.
#include <XYLCore/ThreadPools/XYLThreadPoolFixed.h>

#include "XYLThreadPool_internal.h"

#include <XYLCore/ExceptionHierarchy/XYLErrors.h>
#include <XYLCore/Threads/XYLThread.h>

namespace {
const unsigned long kForever = 0xFFFFFFFFul;
}

// A worker: an XYLThread running the pool's loop, with a private queue for
// the one task it is handed at a time (null wakes it up to stop).
class XYLThreadPoolFixed::WorkerThread : public XYLThread {
public:
  explicit WorkerThread(XYLThreadPoolFixed *pool) : XYLThread(nullptr), m_pPool(pool), m_tasks(0) {}

  // Waits for the thread before the private queue goes away.
  ~WorkerThread() override { xyl_pool::joinWorker(*this); }

  void run() override { m_pPool->processTasks(this); }

  // Hands over one task (or null), without a time limit.
  void process(XYLThreadRunnable *task) { m_tasks.put(task, kForever); }

  // The next task handed over, waiting without a limit.
  XYLThreadRunnable *nextTask() {
    void *task = nullptr;
    m_tasks.get(task, kForever);
    return static_cast<XYLThreadRunnable *>(task);
  }

private:
  XYLThreadPoolFixed *m_pPool;
  XYLSentinelQueue m_tasks;
};

XYLThreadPoolFixed::XYLThreadPoolFixed(unsigned long count)
    : m_workerCount(count), m_stopWork(0), m_workers(), m_idleWorkers(0) {
  try {
    xyl_pool::startWorkers<WorkerThread>(this, count, m_workers, m_stopWork);
  } catch (...) {
    shutdown();
    throw;
  }
}

XYLThreadPoolFixed::~XYLThreadPoolFixed() { shutdown(); }

void XYLThreadPoolFixed::shutdown() {
  m_stopWork.store(1);
  // Wake every idle worker; each sees the flag and ends.
  void *idle = nullptr;
  while (m_idleWorkers.get(idle, 0) != 0)
    static_cast<WorkerThread *>(idle)->process(nullptr);
  // Deleting a worker waits for its thread.
  while (!m_workers.empty()) {
    WorkerThread *worker = m_workers.back();
    m_workers.pop_back();
    delete worker;
  }
}

int XYLThreadPoolFixed::execute(XYLThreadRunnable *runnable, unsigned long timeout) {
  if (m_stopWork.load() != 0)
    XYL_THROW(XYLIllegalStateError(0L, "XYLThreadPoolFixed::execute: attempted to execute while shutting down"));
  void *idle = nullptr;
  if (m_idleWorkers.get(idle, timeout) == 0)
    return 0;
  static_cast<WorkerThread *>(idle)->process(runnable);
  return 1;
}

void XYLThreadPoolFixed::processTasks(WorkerThread *worker) {
  while (m_stopWork.load() == 0) {
    m_idleWorkers.put(worker, kForever);
    if (m_stopWork.load() == 0) {
      XYLThreadRunnable *task = worker->nextTask();
      if (task != nullptr)
        runTask(task);
    }
  }
}
