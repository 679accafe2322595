// SPDX-License-Identifier: Apache-2.0
// XYLThreadPoolQueued: workers take tasks from one shared sentinel queue,
// looking at it at least every POLL_INTERVAL milliseconds.
#include <XYLCore/ThreadPools/XYLThreadPoolQueued.h>

#include "XYLThreadPool_internal.h"

#include <XYLCore/ExceptionHierarchy/XYLErrors.h>
#include <XYLCore/Threads/XYLThread.h>

const unsigned long XYLThreadPoolQueued::POLL_INTERVAL;

class XYLThreadPoolQueued::WorkerThread : public XYLThread {
public:
  explicit WorkerThread(XYLThreadPoolQueued *pool) : XYLThread(nullptr), m_pPool(pool) {}

  ~WorkerThread() override { xyl_pool::joinWorker(*this); }

  void run() override { m_pPool->processTasks(); }

private:
  XYLThreadPoolQueued *m_pPool;
};

XYLThreadPoolQueued::XYLThreadPoolQueued(unsigned long count, unsigned long capacity, int drain)
    : m_workerCount(count), m_stopWork(0), m_capacity(capacity), m_drain(drain), m_workers(), m_tasks(capacity) {
  try {
    xyl_pool::startWorkers<WorkerThread>(this, count, m_workers, m_stopWork);
  } catch (...) {
    shutdown();
    throw;
  }
}

XYLThreadPoolQueued::~XYLThreadPoolQueued() { shutdown(); }

void XYLThreadPoolQueued::shutdown() {
  m_stopWork.store(1);
  // Idle workers would see the flag at their next poll; wake them now. With
  // drain, a woken worker still takes every queued task first.
  m_tasks.interrupt(static_cast<unsigned long>(m_workers.size()));
  while (!m_workers.empty()) {
    WorkerThread *worker = m_workers.front();
    m_workers.pop_front();
    delete worker;
  }
}

int XYLThreadPoolQueued::execute(XYLThreadRunnable *runnable, unsigned long timeout) {
  if (m_stopWork.load() != 0)
    XYL_THROW(XYLIllegalStateError(0L, "XYLThreadPoolQueued::execute: attempted to execute while shutting down"));
  return m_tasks.put(runnable, timeout);
}

void XYLThreadPoolQueued::processTasks() {
  for (;;) {
    void *task = nullptr;
    const int taken = m_tasks.get(task, POLL_INTERVAL);
    if (m_stopWork.load() != 0 && (taken == 0 || m_drain == 0))
      break; // a task taken now without drain is dropped
    if (taken != 0 && task != nullptr)
      runTask(static_cast<XYLThreadRunnable *>(task));
  }
}
