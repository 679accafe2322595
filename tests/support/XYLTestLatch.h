/* SPDX-License-Identifier: Apache-2.0 */
// Test-only ordering helpers for concurrency tests: a count-down latch and a
// gate, built on the standard library so that they do not depend on the
// thread classes under test. Waits are bounded so that a broken test fails
// instead of hanging.
#ifndef XYLCORE_TESTS_SUPPORT_XYLTESTLATCH_H
#define XYLCORE_TESTS_SUPPORT_XYLTESTLATCH_H

#include <chrono>
#include <condition_variable>
#include <mutex>

namespace xyltest {

// Opens when count_down has been called `count` times.
class Latch {
public:
  explicit Latch(int count) : m_count(count) {}
  void countDown() {
    std::lock_guard<std::mutex> lock(m_mutex);
    if (m_count > 0 && --m_count == 0)
      m_opened.notify_all();
  }
  // True when the latch opened within `seconds`.
  bool wait(int seconds = 30) {
    std::unique_lock<std::mutex> lock(m_mutex);
    return m_opened.wait_for(lock, std::chrono::seconds(seconds), [this] { return m_count == 0; });
  }
  bool isOpen() {
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_count == 0;
  }

private:
  std::mutex m_mutex;
  std::condition_variable m_opened;
  int m_count;
};

// A gate that blocked threads pass once it is opened. Opens itself in the
// destructor so that a failing test releases its workers.
class Gate {
public:
  ~Gate() { open(); }
  void open() {
    std::lock_guard<std::mutex> lock(m_mutex);
    m_open = true;
    m_opened.notify_all();
  }
  bool pass(int seconds = 30) {
    std::unique_lock<std::mutex> lock(m_mutex);
    return m_opened.wait_for(lock, std::chrono::seconds(seconds), [this] { return m_open; });
  }

private:
  std::mutex m_mutex;
  std::condition_variable m_opened;
  bool m_open = false;
};

} // namespace xyltest

#endif
