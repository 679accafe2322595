/* SPDX-License-Identifier: Apache-2.0
 * XYLThreadExecuteRunnable.h - the base of objects that execute runnables
 * (the thread pools).
 *
 * Contract: an executor is itself a runnable whose own run() does nothing;
 * it is only ever used through a derived class (protected constructor and
 * destructor), so it cannot be made or deleted as a bare executor.
 * Thread safety: none of its own. Throws nothing.
 */
#ifndef XYLCORE_THREADS_XYLTHREADEXECUTERUNNABLE_H
#define XYLCORE_THREADS_XYLTHREADEXECUTERUNNABLE_H

#include <XYLCore/Threads/XYLThreadRunnable.h>

class XYL_API XYLThreadExecuteRunnable : public XYLThreadRunnable {
public:
  // Does nothing: an executor hands work to others instead of doing it.
  void run() override;

protected:
  XYLThreadExecuteRunnable();
  ~XYLThreadExecuteRunnable() override;
};

#endif // XYLCORE_THREADS_XYLTHREADEXECUTERUNNABLE_H
