// SPDX-License-Identifier: Apache-2.0
// A queued pool runs tasks; a custodian task does periodic housekeeping.
#include <XYLCore/Core/xylcore.h>
#include <XYLCore/ThreadPools/XYLThreadPoolQueued.h>
#include <XYLCore/XYLCustodian/XYLCustodian.h>
#include <XYLCore/XYLCustodian/XYLCustodianTask.h>
#include <atomic>
#include <cstdio>

struct Job : XYLThreadRunnable {
  std::atomic<int> runs{0};
  void run() override { ++runs; }
};

struct Sweep : XYLCustodianTask {
  int doTask(int terminating) override { return terminating; } // 0: keep me
};

int main() {
  xylCoreInitialize("XYL 1.0");
  Job job;
  {
    XYLThreadPoolQueued pool(2, 16, 1); // 2 workers, 16 slots, drain on stop
    for (int i = 0; i < 10; ++i)
      pool.execute(&job, 4294967295UL); // waits for a free slot
  }                                     // the destructor runs what is queued, then ends the workers
  std::printf("runs = %d\n", job.runs.load());
  Sweep sweep;
  XYLCustodian::registerTask(&sweep); // called every 60 s on the custodian thread
  XYLCustodian::deRegisterTask(&sweep);
  xylCoreTerminate("XYL 1.0");
  return job.runs == 10 ? 0 : 1;
}
