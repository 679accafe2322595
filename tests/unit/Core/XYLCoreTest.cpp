// SPDX-License-Identifier: Apache-2.0
#include <XYLCore/Core/xylcore.h>

#include <gtest/gtest.h>

#include <dirent.h>
#include <sched.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <limits>
#include <new>
#include <thread>

namespace {

TEST(XYLCoreTest, ApiVersionIsOneZero) {
  int major = -1, minor = -1;
  EXPECT_EQ(0, xylGetApiVersion(&major, &minor));
  EXPECT_EQ(1, major);
  EXPECT_EQ(0, minor);
  major = minor = -1;
  EXPECT_EQ(0, xylCoreGetApiVersion(&major, &minor));
  EXPECT_EQ(1, major);
  EXPECT_EQ(0, minor);
}

TEST(XYLCoreTest, Compatibility) {
  struct Case {
    int major, minor, expected;
  };
  const Case cases[] = {{1, 0, 0}, {1, -5, 0}, {1, 1, -1}, {2, 0, -1}, {0, 0, -1}, {-1, 0, -1}};
  for (const Case &c : cases) {
    EXPECT_EQ(c.expected, xylIsCompatibleWith(c.major, c.minor)) << c.major << "." << c.minor;
    EXPECT_EQ(c.expected, xylCoreIsCompatibleWith(c.major, c.minor)) << c.major << "." << c.minor;
  }
}

TEST(XYLCoreTest, ByteOrderSwapsAndIsItsOwnInverse) {
  EXPECT_EQ(0x44332211u, xylh2nl(0x11223344u));
  EXPECT_EQ(0x44332211u, xyln2hl(0x11223344u));
  EXPECT_EQ(0x2211, xylh2ns(0x1122));
  EXPECT_EQ(0x2211, xyln2hs(0x1122));
  for (unsigned int v : {0u, 1u, 0x80000000u, 0xdeadbeefu, 0xffffffffu})
    EXPECT_EQ(v, xyln2hl(xylh2nl(v)));
  for (unsigned short v : {0, 1, 0x8000, 0xbeef, 0xffff})
    EXPECT_EQ(v, xyln2hs(xylh2ns(v)));
}

TEST(XYLCoreTest, ErrorGetTextPrintsItsLineEveryTime) {
  testing::internal::CaptureStdout();
  EXPECT_EQ(nullptr, xylErrorGetText(0));
  EXPECT_EQ(nullptr, xylErrorGetText(-3, "ignored", 4));
  EXPECT_EQ("xylErrorGetText not yet implemented\nxylErrorGetText not yet implemented\n",
            testing::internal::GetCapturedStdout());
}

// Stores the pointer where the optimiser must assume it is used, so that
// the allocation cannot be elided.
char *volatile g_kept = nullptr;
void keep(char *p) {
  g_kept = p;
  delete[] g_kept;
}

int g_hookCalls = 0;
void countingHook() { ++g_hookCalls; }
void otherHook() {}

// An allocation no heap can satisfy; the size comes from a volatile so the
// compiler cannot see that it fails.
volatile std::size_t g_impossible = std::numeric_limits<std::size_t>::max() / 4;

TEST(XYLCoreTest, NewHandlerIsCalledOncePerFailedAllocation) {
#if defined(__SANITIZE_ADDRESS__)
  GTEST_SKIP() << "AddressSanitizer's operator new never calls the new-handler";
#endif
  EXPECT_EQ(nullptr, xylSetNewHandler(countingHook));
  g_hookCalls = 0;
  char *p = new (std::nothrow) char[g_impossible];
  EXPECT_EQ(nullptr, p);
  EXPECT_EQ(1, g_hookCalls);
  EXPECT_THROW(keep(new char[g_impossible]), std::bad_alloc);
  EXPECT_EQ(2, g_hookCalls);

  EXPECT_EQ(countingHook, xylSetNewHandler(otherHook));
  EXPECT_EQ(otherHook, xylSetNewHandler(nullptr));
  EXPECT_EQ(nullptr, std::get_new_handler()) << "removing the hook removes the runtime handler";
  EXPECT_THROW(keep(new char[g_impossible]), std::bad_alloc);
  EXPECT_EQ(2, g_hookCalls);
}

// Reads nice and policy of every thread of this process; true when all are
// at the lowest priority.
bool everyThreadIsLowered() {
  DIR *tasks = opendir("/proc/self/task");
  if (tasks == nullptr)
    return false;
  bool all = true;
  int seen = 0;
  while (dirent *entry = readdir(tasks)) {
    if (entry->d_name[0] == '.')
      continue;
    pid_t tid = std::atoi(entry->d_name);
    errno = 0;
    int nice = getpriority(PRIO_PROCESS, static_cast<id_t>(tid));
    all = all && nice == 19 && sched_getscheduler(tid) == SCHED_IDLE;
    ++seen;
  }
  closedir(tasks);
  return all && seen >= 2;
}

// Batch mode cannot be undone, so it runs in a child process.
TEST(XYLCoreTest, BatchModeLowersEveryThreadAndLaterOnes) {
  pid_t child = fork();
  ASSERT_NE(-1, child);
  if (child == 0) {
    bool stop = false;
    std::thread existing([&stop] {
      while (!__atomic_load_n(&stop, __ATOMIC_ACQUIRE))
        sched_yield();
    });
    int ok = xylSetBatchMode();
    bool loweredNow = everyThreadIsLowered();
    int laterNice = -100;
    std::thread later([&laterNice] { laterNice = getpriority(PRIO_PROCESS, static_cast<id_t>(syscall(SYS_gettid))); });
    later.join();
    __atomic_store_n(&stop, true, __ATOMIC_RELEASE);
    existing.join();
    _exit(ok != 0 && loweredNow && laterNice == 19 ? 0 : 1);
  }
  int status = 0;
  ASSERT_EQ(child, waitpid(child, &status, 0));
  ASSERT_TRUE(WIFEXITED(status));
  EXPECT_EQ(0, WEXITSTATUS(status));
}

} // namespace
