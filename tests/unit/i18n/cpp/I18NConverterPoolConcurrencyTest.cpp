// SPDX-License-Identifier: Apache-2.0
// Concurrency tests of the converter pools and the locale cache (run under
// ThreadSanitizer too): many threads borrowing, converting and returning;
// termination emptying the per-thread slots of live threads; concurrent
// creation of the same locales.
#include <XYLCore/i18n/cpp/i18n_converter.h>
#include <XYLCore/i18n/cpp/i18n_init.h>
#include <XYLCore/i18n/cpp/i18n_locale.h>
#include <XYLCore/i18n/cpp/i18n_string.h>

#include <XYLTestLatch.h>
#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

namespace {

class I18NPoolThreadsTest : public ::testing::TestWithParam<int> {
protected:
  void SetUp() override { ASSERT_NE(0, I18NInitialize()); }
  void TearDown() override { I18NTerminate(); }
};

} // namespace

TEST_P(I18NPoolThreadsTest, BorrowConvertReturnFromManyThreads) {
  const int threads = GetParam();
  const int iterations = 2000;
  xyltest::Latch start(threads);
  std::atomic<int> failures{0};
  const long clonesBefore = I18NConverter::getCloneCount();
  std::vector<std::thread> workers;
  for (int t = 0; t < threads; ++t) {
    workers.emplace_back([&, t] {
      start.countDown();
      start.wait();
      for (int i = 0; i < iterations; ++i) {
        I18NConverterUTF8 outer;
        unsigned short units[8];
        I18NErrorCodes error;
        int n = outer->toUnicode("\xC3\xA9t\xC3\xA9", 5, units, sizeof units, &error);
        if (n != 6 || error != I18N_SUCCESS || units[0] != 0xE9)
          failures.fetch_add(1);
        if ((i + t) % 3 == 0) { // a second one while holding the first
          I18NConverterUTF8 inner;
          if (&inner.getConverter() == &outer.getConverter())
            failures.fetch_add(1);
          inner->setBuiltInUnconvertibleInputSequenceCallback(I18N_UNCONVERTIBLE_SUBSTITUTE);
        }
        I18NConverterUTF16 wide;
        char bytes[8];
        n = wide->fromUnicode(units, 6, bytes, sizeof bytes, &error);
        if (n != 6 || error != I18N_SUCCESS)
          failures.fetch_add(1);
      }
    });
  }
  for (std::thread &w : workers)
    w.join();
  EXPECT_EQ(0, failures.load());
  // Recycled, not cloned per use: at most two UTF-8 and one UTF-16 converter
  // per thread (one more of each kind for the shared stacks).
  EXPECT_LE(I18NConverter::getCloneCount() - clonesBefore, static_cast<long>(threads * 3 + 3));
}

// More encodings than the named pool keeps, so that encodings leave it while
// other threads still hold converters of theirs.
TEST_P(I18NPoolThreadsTest, NamedConvertersFromManyThreadsWhileEncodingsLeave) {
  const int threads = GetParam();
  const struct {
    const char *name;
    char byte;
    unsigned short unit;
  } encodings[] = {{"ISO-8859-2", '\xA1', 0x104},    {"ISO-8859-5", '\xB0', 0x410},   {"ISO-8859-7", '\xC1', 0x391},
                   {"KOI8-R", '\xE1', 0x410},        {"windows-1250", '\x8A', 0x160}, {"windows-1251", '\xC0', 0x410},
                   {"windows-1252", '\x80', 0x20AC}, {"windows-1253", '\xC1', 0x391}, {"windows-1254", '\xD0', 0x11E},
                   {"windows-1257", '\xC0', 0x104},  {"cp1252", '\x80', 0x20AC}};
  const int count = static_cast<int>(sizeof encodings / sizeof encodings[0]);
  xyltest::Latch start(threads);
  std::atomic<int> failures{0};
  std::vector<std::thread> workers;
  for (int t = 0; t < threads; ++t) {
    workers.emplace_back([&, t] {
      start.countDown();
      start.wait();
      for (int i = 0; i < 300; ++i) {
        const auto &held = encodings[(i + t) % count];
        I18NConverter outer(held.name);
        const auto &e = encodings[(i * 7 + t * 3) % count];
        I18NConverter inner(e.name);
        for (const auto *c : {&held, &e}) {
          I18NConverter &converter = c == &held ? outer : inner;
          unsigned short unit[2];
          I18NErrorCodes error;
          if (converter.toUnicode(&c->byte, 1, unit, sizeof unit, &error) != 2 || unit[0] != c->unit ||
              std::string(c->name) != converter.getEncoding())
            failures.fetch_add(1);
        }
        if (i % 5 == 0)
          inner.setBuiltInUnconvertibleInputSequenceCallback(I18N_UNCONVERTIBLE_STOP);
      }
    });
  }
  for (std::thread &w : workers)
    w.join();
  EXPECT_EQ(0, failures.load());
}

TEST_P(I18NPoolThreadsTest, SameLocalesFromManyThreadsShareEntries) {
  const int threads = GetParam();
  const char *names[] = {"fr-fr", "de-de", "ja-jp", "zh-hant-tw", "en-gb"};
  xyltest::Latch start(threads);
  std::vector<std::vector<const I18NString *>> seen(static_cast<size_t>(threads));
  std::vector<std::thread> workers;
  for (int t = 0; t < threads; ++t) {
    workers.emplace_back([&, t] {
      start.countDown();
      start.wait();
      for (int round = 0; round < 50; ++round)
        for (const char *name : names) {
          I18NLocale locale(name);
          if (round == 0)
            seen[static_cast<size_t>(t)].push_back(&locale.getName());
          I18NString upper("abc", "UTF-8");
          locale.toUpper(upper);
          EXPECT_EQ(0, locale.compareIgnoreCase(upper, I18NString("abc", "UTF-8")));
        }
    });
  }
  for (std::thread &w : workers)
    w.join();
  for (int t = 1; t < threads; ++t)
    EXPECT_EQ(seen[0], seen[static_cast<size_t>(t)]);
}

INSTANTIATE_TEST_SUITE_P(Threads, I18NPoolThreadsTest, ::testing::Values(2, 4, 8));

TEST(I18NPoolTerminationTest, TerminationEmptiesTheSlotsOfLiveThreads) {
  ASSERT_NE(0, I18NInitialize());
  xyltest::Latch returned(1);
  xyltest::Latch terminated(1);
  long opensAfter = -1;
  std::thread worker([&] {
    { I18NConverterUTF8 borrowed; } // returned into this thread's slot
    returned.countDown();
    terminated.wait();
    const long opens = I18NConverter::getOpenCount();
    { I18NConverterUTF8 again; } // must not get the released converter back
    opensAfter = I18NConverter::getOpenCount() - opens;
  });
  returned.wait();
  I18NTerminate();
  terminated.countDown();
  worker.join();
  EXPECT_EQ(1, opensAfter); // opened afresh: the layer is not initialised
}

TEST(I18NPoolTerminationTest, ThreadsExitingWhileTheLayerTerminates) {
  for (int round = 0; round < 20; ++round) {
    ASSERT_NE(0, I18NInitialize());
    xyltest::Latch ready(4);
    std::vector<std::thread> workers;
    for (int t = 0; t < 4; ++t)
      workers.emplace_back([&] {
        { I18NConverterUTF8 a; }
        { I18NConverterPlatformDefault b; }
        ready.countDown();
      });
    ready.wait();
    I18NTerminate(); // races with the workers' exit clean-up
    for (std::thread &w : workers)
      w.join();
  }
}
