/* SPDX-License-Identifier: Apache-2.0 */
// Helpers shared by the thread layer's tests: layer set-up, a trace
// collector, a watchdog for calls that must not block, and a polling wait on
// an observable condition (never a sleep for ordering).
#ifndef XYLCORE_TESTS_UNIT_QORTHREAD_QORTHREADTESTSUPPORT_H
#define XYLCORE_TESTS_UNIT_QORTHREAD_QORTHREADTESTSUPPORT_H

#include <XYLCore/QorThread/qorthread.h>

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <future>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace qortest {

using namespace std::chrono_literals;

class QorThreadFixture : public ::testing::Test {
protected:
  void SetUp() override {
    static const int rc = xylThreadProcessInitialize("XYLThreads"); // counted; once per program
    ASSERT_EQ(QORTHREAD_OK, rc);
  }
};

// Collects trace statements (without the identity prefix) while alive.
class TraceCapture {
public:
  TraceCapture() { qorThreadSetTraceSink(&TraceCapture::sink, this); }
  ~TraceCapture() { qorThreadSetTraceSink(nullptr, nullptr); }
  std::vector<std::string> lines() {
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_lines;
  }
  std::vector<std::string> statements() {
    std::vector<std::string> result;
    for (const std::string &line : lines())
      result.push_back(line.substr(line.find(") ") + 2));
    return result;
  }
  void clear() {
    std::lock_guard<std::mutex> lock(m_mutex);
    m_lines.clear();
  }

private:
  static void sink(const char *line, void *ctx) {
    TraceCapture *self = static_cast<TraceCapture *>(ctx);
    std::lock_guard<std::mutex> lock(self->m_mutex);
    self->m_lines.emplace_back(line);
  }
  std::mutex m_mutex;
  std::vector<std::string> m_lines;
};

// A pointer as trace lines print it (its low 32 bits in hex).
inline std::string hex32(const void *p) {
  char text[16];
  std::snprintf(text, sizeof text, "%x", static_cast<unsigned int>(reinterpret_cast<std::uintptr_t>(p)));
  return text;
}

// Runs fn on a helper thread; false (instead of a hang) when it has not
// finished within `limit`, the stuck helper being left behind.
inline bool finishesWithin(std::chrono::milliseconds limit, std::function<void()> fn) {
  auto task = std::make_shared<std::packaged_task<void()>>(std::move(fn));
  std::future<void> done = task->get_future();
  std::thread runner([task] { (*task)(); });
  bool finished = done.wait_for(limit) == std::future_status::ready;
  finished ? runner.join() : runner.detach();
  return finished;
}

// Polls an observable condition, yielding, for at most `limit`.
inline bool eventually(std::function<bool()> condition, std::chrono::milliseconds limit = 10000ms) {
  auto end = std::chrono::steady_clock::now() + limit;
  while (!condition())
    if (std::chrono::steady_clock::now() > end)
      return false;
    else
      std::this_thread::yield();
  return true;
}

// A wait limited to `limit` ms took at least about that long (1 ms of clock
// rounding) and not more than a generous slack for a loaded machine.
inline void expectAboutMs(long long limit, const std::function<void()> &fn) {
  auto start = std::chrono::steady_clock::now();
  fn();
  auto took = std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - start).count();
  EXPECT_GE(took, limit - 1);
  EXPECT_LT(took, limit + 2000);
}

} // namespace qortest

#endif
