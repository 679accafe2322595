// SPDX-License-Identifier: Apache-2.0
// One I18NIntervalFormat shared by several threads: its const format must
// give every thread the same text (the unit words are shared strings whose
// lazy forms are filled on first use).
#include <XYLCore/i18n/cpp/i18n_init.h>
#include <XYLCore/i18n/cpp/i18n_intervalformat.h>

#include <gtest/gtest.h>
#include <unicode/unistr.h>

#include <atomic>
#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

namespace {

std::string text(const I18NString &s) {
  std::string out;
  s.getUnicodeString().toUTF8String(out);
  return out;
}

class I18NIntervalFormatConcurrencyTest : public ::testing::TestWithParam<int> {
protected:
  void SetUp() override {
    setenv("QOR_EXEC_PATH", XYL_I18N_RESOURCES, 1);
    ASSERT_NE(0, I18NInitialize());
  }
  void TearDown() override { I18NTerminate(); }
};

} // namespace

TEST_P(I18NIntervalFormatConcurrencyTest, SharedFormatGivesEveryThreadTheSameText) {
  const I18NIntervalFormat format(I18NLocale("ru"), I18N_INTERVAL_FORMAT_LONG);
  const char *const expected[] = {" 21 день 1 час 5 минут 22 секунды 0 миллисекунд",
                                  " 25 дней 2 часа 11 минут 1 секунда 3 миллисекунды"};
  const long values[2][5] = {{21, 1, 5, 22, 0}, {25, 2, 11, 1, 3}};
  std::atomic<int> ready(0), mismatches(0);
  std::vector<std::thread> threads;
  for (int t = 0; t < GetParam(); ++t)
    threads.emplace_back([&, t] {
      ready.fetch_add(1);
      while (ready.load() < GetParam()) {
      }
      I18NString out;
      for (int i = 0; i < 200; ++i) {
        const long *v = values[(t + i) % 2];
        format.format(v[0], v[1], v[2], v[3], v[4], out);
        if (text(out) != expected[(t + i) % 2])
          mismatches.fetch_add(1);
      }
    });
  for (std::thread &thread : threads)
    thread.join();
  EXPECT_EQ(0, mismatches.load());
}

INSTANTIATE_TEST_SUITE_P(Threads, I18NIntervalFormatConcurrencyTest, ::testing::Values(2, 4));
