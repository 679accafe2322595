// SPDX-License-Identifier: Apache-2.0
// Two threads count under one lock; an event tells main when both are done.
#include <XYLCore/Core/xylcore.h>
#include <XYLCore/Threads/XYLThread.h>
#include <XYLCore/Threads/XYLThreadCriticalSection.h>
#include <XYLCore/Threads/XYLThreadGuard.h>
#include <cstdio>

class Counter : public XYLThreadRunnable {
public:
  void run() override {
    for (int i = 0; i < 100000; ++i) {
      XYLThreadGuard guard(m_lock); // unlocked at the end of the scope
      ++m_count;
    }
  }
  XYLThreadCriticalSection m_lock;
  long m_count = 0;
};

int main() {
  xylCoreInitialize("XYL 1.0");
  {
    Counter counter;
    XYLThread a(&counter), b(&counter);
    a.start();
    b.start();
    a.join(); // join throws when run() ended by an exception
    b.join();
    std::printf("count = %ld\n", counter.m_count);
  }
  xylCoreTerminate("XYL 1.0");
  return 0;
}
