/* SPDX-License-Identifier: Apache-2.0 */
// XYLThreadPool_internal.h - what the fixed and queued pools share: starting
// their workers and waiting for one before it goes away.
//
// startWorkers is a template in a header so that its raise sites record the
// back-trace name of the pool that starts the workers.
#ifndef XYLCORE_SRC_THREADPOOLS_XYLTHREADPOOL_INTERNAL_H
#define XYLCORE_SRC_THREADPOOLS_XYLTHREADPOOL_INTERNAL_H

#include <XYLCore/ExceptionHierarchy/XYLErrors.h>
#include <XYLCore/Threads/XYLThread.h>

#include <atomic>
#include <new>

namespace xyl_pool {

// Creates `count` workers of `pool`, listing each in `workers` (front first)
// before starting it; none is started once `stopWork` is set. Raises
// XYLOutOfMemoryError; the workers listed so far stay for the pool's
// shutdown to stop and delete.
template <class Worker, class Pool, class List>
void startWorkers(Pool *pool, unsigned long count, List &workers, const std::atomic<int> &stopWork) {
  for (unsigned long i = 0; i < count; ++i) {
    Worker *worker = new (std::nothrow) Worker(pool);
    if (worker == nullptr)
      XYL_THROW(XYLOutOfMemoryError(0L, nullptr));
    try {
      workers.push_front(worker);
    } catch (std::bad_alloc &) {
      delete worker;
      XYL_THROW(XYLOutOfMemoryError(0L, nullptr));
    }
    if (stopWork.load() == 0)
      worker->start();
  }
}

// Waits for a worker's thread, from the worker's own destructor (before its
// members go away). A thread ended by an exception of its task is not
// reported here: the base destructor releases what is left of it.
inline void joinWorker(XYLThread &worker) {
  try {
    worker.join();
  } catch (...) {
  }
}

} // namespace xyl_pool

#endif // XYLCORE_SRC_THREADPOOLS_XYLTHREADPOOL_INTERNAL_H
