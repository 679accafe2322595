// SPDX-License-Identifier: Apache-2.0
// Concurrent const operations on one string: the lazy creation of the
// Unicode form and of cached byte forms must be serialised by the stripe
// locks, so every thread sees the same answers and ThreadSanitizer sees no
// race. Threads start together from a latch; parameterised over thread
// counts.
#include "I18NStringTestSupport.h"

#include <XYLCore/i18n/cpp/i18n_string.h>

#include <gtest/gtest.h>

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

using namespace i18nstringtest;

namespace {

// Releases all waiting threads at once.
class StartLatch {
public:
  explicit StartLatch(int count) : m_count(count) {}
  void arriveAndWait() {
    std::unique_lock<std::mutex> lock(m_mutex);
    if (--m_count == 0)
      m_released.notify_all();
    else
      m_released.wait(lock, [this] { return m_count <= 0; });
  }

private:
  std::mutex m_mutex;
  std::condition_variable m_released;
  int m_count;
};

struct Answers {
  int findSnowman = -2, findWord = -2, length = -2, lastOf = -2;
  std::string utf16, latin, utf8;
  std::u16string units;
  bool like = false;
  bool operator==(const Answers &o) const {
    return findSnowman == o.findSnowman && findWord == o.findWord && length == o.length && lastOf == o.lastOf &&
           utf16 == o.utf16 && latin == o.latin && utf8 == o.utf8 && units == o.units && like == o.like;
  }
};

Answers readAll(const I18NString &s) {
  Answers a;
  a.findWord = s.find(I18NString("shared", "UTF-8"));
  a.findSnowman = s.find(0x2603u); // moves the string to Unicode mode, lazily
  a.length = s.length();
  a.lastOf = s.findLastOf(0xE9u);
  int n = 0;
  const char *bytes = s.c_str("UTF-16LE", &n); // cached byte forms
  a.utf16.assign(bytes, static_cast<size_t>(n));
  bytes = s.c_str("ISO-8859-1", &n);
  a.latin.assign(bytes, static_cast<size_t>(n));
  a.utf8 = utf8Of(s);
  const unsigned short *units = s.getUTF16Buffer();
  a.units.assign(reinterpret_cast<const char16_t *>(units), static_cast<size_t>(s.unitLength()));
  a.like = s.matchLike(I18NString("%shared%", "UTF-8"));
  return a;
}

class I18NStringConcurrencyTest : public ::testing::TestWithParam<int> {};

} // namespace

TEST_P(I18NStringConcurrencyTest, ConstReadsOfOneStringAgree) {
  const int threads = GetParam();
  for (const char *text : {"a shared ascii string", "a shared caf\xC3\xA9 string"}) {
    for (int round = 0; round < 20; ++round) {
      const I18NString s(text, "UTF-8");
      Answers expected = readAll(I18NString(text, "UTF-8"));
      std::vector<Answers> seen(static_cast<size_t>(threads));
      StartLatch latch(threads);
      std::vector<std::thread> pool;
      for (int t = 0; t < threads; ++t)
        pool.emplace_back([&, t] {
          latch.arriveAndWait();
          seen[static_cast<size_t>(t)] = readAll(s);
        });
      for (std::thread &th : pool)
        th.join();
      for (int t = 0; t < threads; ++t)
        EXPECT_TRUE(expected == seen[static_cast<size_t>(t)]) << text << " thread " << t << " round " << round;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Threads, I18NStringConcurrencyTest, ::testing::Values(2, 4, 8));
