// SPDX-License-Identifier: Apache-2.0
#include <XYLCore/ThreadPools/XYLSentinelQueue.h>

#include "XYLTestLatch.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <thread>
#include <vector>

namespace {

const unsigned long kForever = 4294967295ul;

void *item(std::uintptr_t n) { return reinterpret_cast<void *>(n); }

long long millisecondsSince(std::chrono::steady_clock::time_point start) {
  return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - start).count();
}

TEST(XYLSentinelQueueTest, HandsElementsOutInOrder) {
  for (unsigned long capacity : {0ul, 1000ul}) {
    XYLSentinelQueue queue(capacity);
    EXPECT_EQ(capacity, queue.getCapacity());
    for (std::uintptr_t n = 0; n < 1000; ++n)
      ASSERT_EQ(1, queue.put(item(n), 0)) << n;
    EXPECT_EQ(1000ul, queue.size());
    for (std::uintptr_t n = 0; n < 1000; ++n) {
      void *element = item(12345);
      ASSERT_EQ(1, queue.get(element, 0));
      EXPECT_EQ(item(n), element) << "null and every other pointer in put order";
    }
    void *element = item(7);
    EXPECT_EQ(0, queue.get(element, 0));
    EXPECT_EQ(item(7), element) << "left alone when nothing came";
  }
}

TEST(XYLSentinelQueueTest, BoundedQueueRefusesPastCapacity) {
  struct Case {
    unsigned long capacity;
    unsigned long timeout;
  };
  const Case cases[] = {{1, 0}, {2, 0}, {3, 40}};
  for (const Case &c : cases) {
    XYLSentinelQueue queue(c.capacity);
    for (unsigned long i = 0; i < c.capacity; ++i)
      ASSERT_EQ(1, queue.put(item(i), 0));
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(0, queue.put(item(99), c.timeout)) << c.capacity;
    EXPECT_GE(millisecondsSince(start), static_cast<long long>(c.timeout));
    EXPECT_EQ(c.capacity, queue.size()) << "the refused element is not queued";
    // A get frees one slot.
    void *element = nullptr;
    ASSERT_EQ(1, queue.get(element, 0));
    EXPECT_EQ(1, queue.put(item(100), 0));
    EXPECT_EQ(0, queue.put(item(101), 0));
  }
}

TEST(XYLSentinelQueueTest, TimedGetOnEmptyQueueWaitsItsTime) {
  XYLSentinelQueue queue(0);
  void *element = nullptr;
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(0, queue.get(element, 40));
  EXPECT_GE(millisecondsSince(start), 40);
}

TEST(XYLSentinelQueueTest, InterruptAnswersEmptyGetsOnly) {
  XYLSentinelQueue queue(2);
  void *element = item(5);
  queue.interrupt(1);
  EXPECT_EQ(0, queue.get(element, kForever)) << "an interruption ends an unlimited wait";
  EXPECT_EQ(item(5), element);
  EXPECT_EQ(0, queue.get(element, 0)) << "one interruption, one early answer";

  // Elements still go first; the interruption is spent on the empty queue.
  ASSERT_EQ(1, queue.put(item(1), 0));
  queue.interrupt(1);
  ASSERT_EQ(1, queue.put(item(2), 0));
  EXPECT_EQ(1, queue.get(element, 0));
  EXPECT_EQ(item(1), element);
  EXPECT_EQ(1, queue.get(element, 0));
  EXPECT_EQ(item(2), element);
  EXPECT_EQ(0, queue.get(element, kForever));
  // The slots of a bounded queue were all given back.
  EXPECT_EQ(1, queue.put(item(3), 0));
  EXPECT_EQ(1, queue.put(item(4), 0));
  EXPECT_EQ(0, queue.put(item(5), 0));
}

TEST(XYLSentinelQueueTest, BlockedGetReceivesALaterPut) {
  XYLSentinelQueue queue(0);
  void *received = nullptr;
  std::thread consumer([&] { EXPECT_EQ(1, queue.get(received, kForever)); });
  EXPECT_EQ(1, queue.put(item(42), kForever));
  consumer.join();
  EXPECT_EQ(item(42), received);
}

class XYLSentinelQueueThreadsTest : public testing::TestWithParam<int> {};

// Producers and consumers on a small bounded queue: every element arrives
// exactly once and each producer's elements arrive in its order.
TEST_P(XYLSentinelQueueThreadsTest, EveryElementArrivesOnceInProducerOrder) {
  const int threads = GetParam();
  const std::uintptr_t perProducer = 5000;
  XYLSentinelQueue queue(4);
  std::vector<std::vector<std::uintptr_t>> seen(threads);
  std::vector<std::thread> all;
  for (int p = 0; p < threads; ++p)
    all.emplace_back([&queue, p, perProducer] {
      for (std::uintptr_t n = 1; n <= perProducer; ++n)
        ASSERT_EQ(1, queue.put(item((static_cast<std::uintptr_t>(p) << 32) | n), kForever));
    });
  for (int c = 0; c < threads; ++c)
    all.emplace_back([&queue, &seen, c, perProducer] {
      for (std::uintptr_t n = 0; n < perProducer; ++n) {
        void *element = nullptr;
        ASSERT_EQ(1, queue.get(element, kForever));
        seen[c].push_back(reinterpret_cast<std::uintptr_t>(element));
      }
    });
  for (std::thread &t : all)
    t.join();
  std::vector<std::uintptr_t> count(threads, 0);
  for (const std::vector<std::uintptr_t> &consumed : seen) {
    std::vector<std::uintptr_t> last(threads, 0);
    for (std::uintptr_t value : consumed) {
      const std::size_t producer = static_cast<std::size_t>(value >> 32);
      const std::uintptr_t n = value & 0xFFFFFFFFu;
      ASSERT_LT(producer, count.size());
      EXPECT_GT(n, last[producer]) << "one consumer sees a producer's elements in order";
      last[producer] = n;
      ++count[producer];
    }
  }
  for (int p = 0; p < threads; ++p)
    EXPECT_EQ(perProducer, count[p]);
  EXPECT_EQ(0ul, queue.size());
}

INSTANTIATE_TEST_SUITE_P(Threads, XYLSentinelQueueThreadsTest, testing::Values(1, 2, 4));

} // namespace
