// SPDX-License-Identifier: Apache-2.0
#include <XYLCore/Utility/XYLUtTimer.h>

#include <gtest/gtest.h>

#include <cctype>
#include <chrono>
#include <cstdint>
#include <ctime>
#include <string>
#include <thread>

extern "C" int xylTimerCApiUse(void);

namespace {

const std::int64_t kTicksPerMs = 10000; // 100-ns units

// A timer whose snapshots a test can set.
class SettableTimer : public XYLUtTimer {
public:
  void setMilliseconds(std::int64_t system, std::int64_t user, std::int64_t elapsed) {
    // Non-zero bases show that only differences count.
    m_start.set(130000000000000000LL, 777 * kTicksPerMs, 555 * kTicksPerMs);
    m_end.set(130000000000000000LL + elapsed * kTicksPerMs, (777 + system) * kTicksPerMs, (555 + user) * kTicksPerMs);
  }
  const XYLTimeSnapShot &startSnapshot() const { return m_start; }
  const XYLTimeSnapShot &endSnapshot() const { return m_end; }
};

TEST(XYLUtTimerTest, SnapshotDifferencesAreTruncatedMilliseconds) {
  struct Case {
    std::int64_t later, earlier;
    unsigned long milliseconds;
  } cases[] = {{15000000, 0, 1500},
               {49999, 0, 4},
               {50000, 0, 5},
               {200, 100, 0},
               {0, 10000, 0xFFFFFFFFul},                  // negative before truncation
               {(4294967296LL + 5) * kTicksPerMs, 0, 5}}; // about 49.7 days later wraps
  for (const Case &c : cases) {
    XYLTimeSnapShot later, earlier;
    // Each field is computed from its own pair.
    later.set(c.later, c.later + 3 * kTicksPerMs, c.later + 7 * kTicksPerMs);
    earlier.set(c.earlier, c.earlier, c.earlier);
    EXPECT_EQ(later.getElapsed(earlier), c.milliseconds) << c.later;
    EXPECT_EQ(later.getSystem(earlier), static_cast<std::uint32_t>(c.milliseconds + 3));
    EXPECT_EQ(later.getUser(earlier), static_cast<std::uint32_t>(c.milliseconds + 7));
  }
}

TEST(XYLUtTimerTest, TimesLineFormatsEveryFigureWithThreeDecimals) {
  struct Case {
    std::int64_t system, user, elapsed;
    const char *line;
  } cases[] = {{15, 31, 1204, "0.015s 0.031u 0.046t 1.204e(passive)"},
               {0, 0, 1500, "0.000s 0.000u 0.000t 1.500e(passive)"},
               {5, 50, 500, "0.005s 0.050u 0.055t 0.500e(passive)"},
               {999, 1, 86400000, "0.999s 0.001u 1.000t 86400.000e(passive)"},
               {4294967295LL, 1, 0, "4294967.295s 0.001u 0.000t 0.000e(passive)"}}; // a 32-bit total
  for (const Case &c : cases) {
    SettableTimer timer;
    timer.setMilliseconds(c.system, c.user, c.elapsed);
    EXPECT_STREQ(timer.getTimes(0), c.line);
    EXPECT_EQ(timer.getElapsed(0), static_cast<unsigned long>(c.elapsed));
    EXPECT_EQ(timer.getCPU(0), static_cast<std::uint32_t>(c.system + c.user));
  }
}

TEST(XYLUtTimerTest, StartClearsTheEndAndUsesTheWindowsEpoch) {
  SettableTimer timer;
  timer.setMilliseconds(1, 2, 3);
  std::int64_t before = static_cast<std::int64_t>(std::time(nullptr));
  timer.start();
  std::int64_t after = static_cast<std::int64_t>(std::time(nullptr));
  const XYLTimeSnapShot &end = timer.endSnapshot();
  EXPECT_EQ(end.getWallClockTime() | end.getKernelTime() | end.getUserTime(), 0);
  std::int64_t seconds = timer.startSnapshot().getWallClockTime() / 10000000 - 11644473600LL; // since 1601
  EXPECT_GE(seconds, before);
  EXPECT_LE(seconds, after);
}

// "S.sssS U.uuuu T.tttt E.eeee" with any number of whole seconds, each
// figure followed by its letter s, u, t, e.
bool isFiguresLine(const std::string &line, const std::string &suffix) {
  size_t at = 0;
  for (char letter : {'s', 'u', 't', 'e'}) {
    size_t start = at;
    while (at < line.size() && std::isdigit(static_cast<unsigned char>(line[at])))
      ++at;
    if (at == start || line.compare(at, 1, ".") != 0)
      return false;
    for (int i = 1; i <= 3; ++i)
      if (at + i >= line.size() || !std::isdigit(static_cast<unsigned char>(line[at + i])))
        return false;
    at += 4;
    if (line.compare(at, 1, std::string(1, letter)) != 0)
      return false;
    at += 1;
    if (letter != 'e' && line.compare(at++, 1, " ") != 0)
      return false;
  }
  return line.substr(at) == suffix;
}

TEST(XYLUtTimerTest, MeasuresWallClockAndProcessorTime) {
  XYLUtTimer timer;
  timer.start();
  std::this_thread::sleep_for(std::chrono::milliseconds(60));
  volatile std::uint64_t sink = 0;
  auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
  while (timer.getCPU(1) < 30 && std::chrono::steady_clock::now() < deadline)
    for (int i = 0; i < 100000; ++i)
      sink = sink + static_cast<std::uint64_t>(i) * 2654435761u;
  unsigned long cpu = timer.getCPU(0), elapsed = timer.getElapsed(0);
  EXPECT_GE(cpu, 30u);
  EXPECT_EQ(cpu, timer.getUser(0) + timer.getSystem(0));
  EXPECT_GE(elapsed, 59u + timer.getUser(0) - 20); // the sleep plus the work, one thread
  EXPECT_LT(elapsed, 20000u);
  std::string passive = timer.getTimes(0), active = timer.getTimes(1);
  EXPECT_TRUE(isFiguresLine(passive, "(passive)")) << passive;
  EXPECT_TRUE(isFiguresLine(active, "")) << active;
  EXPECT_FALSE(isFiguresLine("0.015s 0.031u 0.046t 1.24e", ""));
  EXPECT_EQ(xylTimerCApiUse(), 0);
}

} // namespace
