/* SPDX-License-Identifier: Apache-2.0 */
// Test-only helpers of the custodian tests: the befriended access class and
// two tasks.
#ifndef XYLCORE_TESTS_UNIT_XYLCUSTODIAN_XYLCUSTODIANTESTSUPPORT_H
#define XYLCORE_TESTS_UNIT_XYLCUSTODIAN_XYLCUSTODIANTESTSUPPORT_H

#include <XYLCore/XYLCustodian/XYLCustodian.h>

#include "XYLTestLatch.h"

#include <atomic>
#include <functional>
#include <mutex>
#include <vector>

// Befriended by XYLCustodian: runs it without the library's lifecycle.
class XYLCustodianTestAccess {
public:
  static int initialize() { return XYLCustodian::initialize(); }
  static void terminate() { XYLCustodian::terminate(); }
  static unsigned long setSchedule(unsigned long schedule) { return XYLCustodian::setSchedule(schedule); }
};

namespace xyltest {

// A task made of a function of (terminating) returning the answer; counts
// its calls and keeps the terminating flags it was given.
class Task : public XYLCustodianTask {
public:
  explicit Task(std::function<int(int)> body = [](int) { return 0; }) : m_body(std::move(body)) {}
  int doTask(int terminating) override {
    {
      std::lock_guard<std::mutex> lock(m_mutex);
      m_flags.push_back(terminating);
    }
    m_calls.fetch_add(1);
    return m_body(terminating);
  }
  int calls() const { return m_calls.load(); }
  std::vector<int> flags() {
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_flags;
  }

private:
  std::function<int(int)> m_body;
  std::atomic<int> m_calls{0};
  std::mutex m_mutex;
  std::vector<int> m_flags;
};

// Opens a latch on each call: a way to wait for a number of cycles.
class CycleCounter : public XYLCustodianTask {
public:
  explicit CycleCounter(int cycles) : m_latch(cycles) {}
  int doTask(int) override {
    m_latch.countDown();
    return 0;
  }
  bool waitForCycles() { return m_latch.wait(); }

private:
  xyltest::Latch m_latch;
};

// Runs a custodian with the given period for one scope, then terminates it
// (its last cycle calls the tasks still registered: declare tasks before it).
class RunningCustodian {
public:
  explicit RunningCustodian(unsigned long period) {
    XYLCustodianTestAccess::setSchedule(period);
    m_ok = XYLCustodianTestAccess::initialize() == 1;
  }
  ~RunningCustodian() { stop(); }
  void stop() {
    XYLCustodianTestAccess::terminate();
    XYLCustodianTestAccess::setSchedule(60000);
  }
  bool ok() const { return m_ok; }

private:
  RunningCustodian(const RunningCustodian &) = delete;
  RunningCustodian &operator=(const RunningCustodian &) = delete;
  bool m_ok;
};

} // namespace xyltest

#endif
