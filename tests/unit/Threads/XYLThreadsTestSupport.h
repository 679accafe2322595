/* SPDX-License-Identifier: Apache-2.0 */
// Helpers shared by the Threads tests: checking a thrown XYL error in full,
// and a one-shot gate built on the standard library (so the classes under
// test never order their own test).
#ifndef XYLCORE_TESTS_UNIT_THREADS_XYLTHREADSTESTSUPPORT_H
#define XYLCORE_TESTS_UNIT_THREADS_XYLTHREADSTESTSUPPORT_H

#include <XYLCore/ExceptionHierarchy/XYLErrors.h>

#include <gtest/gtest.h>

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string>

namespace xyltest {

// What a failure must look like: class, code, message (null for none) and
// the source file that the first back-trace line names.
struct ExpectedError {
  const char *throwableName;
  long code;
  const char *message;
  const char *sourceFile;
};

// Runs `operation` and checks that it throws exactly `expected`.
template <class Operation> void expectXylError(const ExpectedError &expected, Operation &&operation) {
  try {
    operation();
    ADD_FAILURE() << "nothing thrown; expected " << expected.throwableName << " "
                  << (expected.message ? expected.message : "(no message)");
  } catch (XYLThrowable &e) {
    EXPECT_STREQ(expected.throwableName, e.getThrowableName());
    EXPECT_EQ(expected.code, e.getErrorCode());
    if (expected.message == nullptr)
      EXPECT_EQ(nullptr, e.getMessage());
    else
      EXPECT_STREQ(expected.message, e.getMessage());
    XYLList<char *> &trace = const_cast<XYLList<char *> &>(e.getBackTrace());
    ASSERT_EQ(1u, trace.size());
    std::string line = trace.front();
    EXPECT_EQ(0u, line.find(std::string(expected.sourceFile) + "(")) << line;
    EXPECT_NE(std::string::npos, line.find(std::string("):") + expected.throwableName + ": XYL_THROW")) << line;
  }
}

// Opened once; every waiter then passes.
class Gate {
public:
  void open() {
    std::lock_guard<std::mutex> hold(m_mutex);
    m_open = true;
    m_changed.notify_all();
  }
  void pass() {
    std::unique_lock<std::mutex> hold(m_mutex);
    m_changed.wait(hold, [this] { return m_open; });
  }
  // True when opened within `ms`.
  bool passWithin(int ms) {
    std::unique_lock<std::mutex> hold(m_mutex);
    return m_changed.wait_for(hold, std::chrono::milliseconds(ms), [this] { return m_open; });
  }
  bool isOpen() {
    std::lock_guard<std::mutex> hold(m_mutex);
    return m_open;
  }

private:
  std::mutex m_mutex;
  std::condition_variable m_changed;
  bool m_open = false;
};

// How long a test gives a thread to prove that it is blocked. A thread that
// is not blocked gets through far sooner; a slow machine can only make such a
// check pass wrongly, never fail wrongly.
const int kBlockedProbeMs = 100;

} // namespace xyltest

#endif
