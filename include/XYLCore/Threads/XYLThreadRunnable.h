/* SPDX-License-Identifier: Apache-2.0
 * XYLThreadRunnable.h - a unit of work that a thread or a pool runs.
 *
 * Contract: run() is called once per hand-over, on the thread that runs the
 * work; the runnable is not owned by whoever runs it and must outlive the
 * run. What run() throws is the runner's business (an XYLThread lets it end
 * the thread; join then reports it).
 * Thread safety: whatever the implementation gives; the runner adds none.
 */
#ifndef XYLCORE_THREADS_XYLTHREADRUNNABLE_H
#define XYLCORE_THREADS_XYLTHREADRUNNABLE_H

#include <XYLCore/XYLExport.h>

class XYL_API XYLThreadRunnable {
public:
  virtual ~XYLThreadRunnable();
  // The work itself.
  virtual void run() = 0;
};

#endif // XYLCORE_THREADS_XYLTHREADRUNNABLE_H
