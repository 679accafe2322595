// SPDX-License-Identifier: Apache-2.0
// The fault handler under harder faults: several threads faulting at once,
// a fault inside malloc, a host thread with a small alternate signal stack,
// faults inside the handler, breakpoints, uncaught exceptions and pure
// virtual calls, and the coredump_filter around a dump.
//
// Each case runs in a forked child in its own process group; a child that
// outlives its deadline is killed with its dump writers and fails the test.
// This file is built with -fnon-call-exceptions, so that its faults can be
// thrown.
#include <XYLCore/ExceptionHierarchy/XYLErrors.h>
#include <XYLCore/QorThread/XYLWin32SEHHandler.h>

#include <gtest/gtest.h>

#include <atomic>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <dirent.h>
#include <fcntl.h>
#include <fstream>
#include <functional>
#include <pthread.h>
#include <sstream>
#include <stdexcept>
#include <string>
#include <sys/mman.h>
#include <sys/wait.h>
#include <thread>
#include <time.h>
#include <unistd.h>
#include <vector>

#ifndef XYL_TEST_DUMP_WRITER
#define XYL_TEST_DUMP_WRITER ""
#endif

#define XYL_REAL_FAULT __attribute__((noinline, no_sanitize("address", "undefined")))

// The int3 of breakAtLabel; its address is what a report must name.
extern "C" const char xylTestBreakpoint[];

namespace xylsehcrashtest {

// Calls its pure hook while it is being constructed, through a pointer the
// compiler cannot see through. Outside the anonymous namespace: there the
// compiler knows every override and drops the call.
struct PureBase {
  PureBase() {
    PureBase *volatile self = this;
    self->hook();
  }
  virtual ~PureBase() = default;
  virtual void hook() = 0;
};

struct PureDerived : PureBase {
  void hook() override {}
};

} // namespace xylsehcrashtest

namespace {

using xylsehcrashtest::PureDerived;

XYL_REAL_FAULT void storeThroughNull() {
  volatile int *volatile nowhere = nullptr;
  *nowhere = 7;
}

// clang-format off
constexpr int kBreakpointLine = __LINE__ + 2;
XYL_REAL_FAULT void breakAtLabel() {
  asm volatile(".globl xylTestBreakpoint\nxylTestBreakpoint: int3\nnop");
}
// clang-format on

std::string readText(const std::string &path) {
  std::ifstream in(path);
  std::stringstream text;
  text << in.rdbuf();
  return text.str();
}

std::size_t countOf(const std::string &text, const std::string &what) {
  std::size_t n = 0;
  for (std::size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + 1))
    ++n;
  return n;
}

int openDescriptors() {
  int n = 0;
  if (DIR *dir = opendir("/proc/self/fd")) {
    while (readdir(dir) != nullptr)
      ++n;
    closedir(dir);
  }
  return n;
}

bool dumpsCannotBeChecked() {
#if defined(__SANITIZE_ADDRESS__)
  return true; // a core of an AddressSanitizer process is terabytes of sparse shadow
#else
  return std::system("command -v gdb >/dev/null 2>&1") != 0;
#endif
}

struct ChildResult {
  bool timedOut = false;
  int status = 0;
  std::string err; // the child's standard error
  std::string log; // its "_seh_<pid>.log"
  int dumps = 0;   // its ".dmp" files
};

class XYLSEHandlerCrashTest : public testing::Test {
protected:
  void SetUp() override {
    if (std::string(XYL_TEST_DUMP_WRITER).empty())
      GTEST_SKIP() << "built without the dump writer XYLWriteDump";
    // A re-executed death-test child works in its parent's directory.
    if (const char *inherited = std::getenv("XYLSEHCRASH_DIR")) {
      m_dir = inherited;
      return;
    }
    char pattern[] = "/tmp/xylsehcrash.XXXXXX";
    ASSERT_NE(nullptr, mkdtemp(pattern));
    m_dir = pattern;
    m_owner = true;
    setenv("XYLSEHCRASH_DIR", m_dir.c_str(), 1);
  }

  void TearDown() override {
    if (!m_owner)
      return;
    std::system(("rm -rf '" + m_dir + "'").c_str());
    unsetenv("XYLSEHCRASH_DIR");
  }

  // The logs and dumps the child left.
  void collect(ChildResult &result) const {
    if (DIR *dir = opendir(m_dir.c_str())) {
      while (dirent *entry = readdir(dir)) {
        std::string name = entry->d_name;
        if (name.size() > 4 && name.compare(name.size() - 4, 4, ".log") == 0)
          result.log += readText(m_dir + "/" + name);
        if (name.size() > 4 && name.compare(name.size() - 4, 4, ".dmp") == 0)
          ++result.dumps;
      }
      closedir(dir);
    }
  }

  // Runs body in a child with the handler configured by abortValue; the
  // child exits 0 when body returns.
  ChildResult run(const char *abortValue, const std::function<void()> &body, int seconds = 20) {
    ChildResult result;
    std::system(("rm -f '" + m_dir + "'/*").c_str());
    std::string errPath = m_dir + "/stderr.txt";
    pid_t child = fork();
    if (child == 0) {
      setpgid(0, 0);
      int fd = open(errPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
      dup2(fd, STDERR_FILENO);
      close(fd);
      setenv("XYL_DUMP_DIR", m_dir.c_str(), 1);
      setenv("XYL_DUMP_WRITER", XYL_TEST_DUMP_WRITER, 1);
      XYLWin32SEHHandler::configure(abortValue);
      body();
      std::fflush(stderr);
      _exit(0);
    }
    timespec start;
    clock_gettime(CLOCK_MONOTONIC, &start);
    for (;;) {
      if (waitpid(child, &result.status, WNOHANG) == child)
        break;
      timespec now;
      clock_gettime(CLOCK_MONOTONIC, &now);
      if (now.tv_sec - start.tv_sec >= seconds) {
        kill(-child, SIGKILL);
        waitpid(child, &result.status, 0);
        result.timedOut = true;
        break;
      }
      usleep(10000);
    }
    result.err = readText(errPath);
    collect(result);
    return result;
  }

  static int exitCode(const ChildResult &r) { return WIFEXITED(r.status) ? WEXITSTATUS(r.status) : -1; }

  std::string m_dir;
  bool m_owner = false;
};

// Faults `faults` times in each of `threads` host threads released
// together; mode 1 catches each.
void faultTogether(int threads, int faults) {
  int before = openDescriptors();
  std::atomic<int> ready{0};
  std::atomic<int> caught{0};
  std::vector<std::thread> pool;
  for (int i = 0; i < threads; ++i)
    pool.emplace_back([&] {
      ++ready;
      while (ready.load() < threads) {
      }
      for (int i = 0; i < faults; ++i)
        try {
          storeThroughNull();
        } catch (XYLWin32SEHError &) {
          ++caught;
        }
    });
  for (std::thread &t : pool)
    t.join();
  std::fprintf(stderr, "caught %d of %d, descriptors %d more\n", caught.load(), threads * faults,
               openDescriptors() - before);
}

TEST_F(XYLSEHandlerCrashTest, ThreadsFaultingTogetherEachGetTheirReport) {
  const bool noDumps = dumpsCannotBeChecked();
  const struct {
    int mode;
    int threads;
    int faults; // each
    bool dump;
  } cases[] = {{1, 2, 1, true}, {1, 4, 2, false}, {1, 8, 2, false}, {2, 2, 1, true}, {2, 4, 1, false}, {2, 8, 1, true}};
  for (const auto &c : cases) {
    SCOPED_TRACE(testing::Message() << "mode " << c.mode << ", " << c.threads << " threads");
    bool dump = c.dump && !noDumps;
    std::string value = std::to_string(c.mode) + (dump ? ":0" : ":65535");
    ChildResult r = run(value.c_str(), [&] { faultTogether(c.threads, c.faults); });
    ASSERT_FALSE(r.timedOut) << r.err;
    std::size_t reports = countOf(r.log, "Exception code: 0xc0000005");
    if (c.mode == 1) {
      EXPECT_EQ(0, exitCode(r)) << r.err;
      int faults = c.threads * c.faults;
      EXPECT_NE(std::string::npos, r.err.find("caught " + std::to_string(faults) + " of")) << r.err;
      EXPECT_NE(std::string::npos, r.err.find("descriptors 0 more")) << r.err;
      EXPECT_EQ(static_cast<std::size_t>(faults), reports) << r.log;
      EXPECT_EQ(dump ? c.threads : 0, r.dumps);
    } else {
      EXPECT_EQ(128 + SIGSEGV, exitCode(r)) << r.err;
      EXPECT_EQ(1u, countOf(r.err, "Please consult the generated dump file")) << r.err;
      EXPECT_EQ(1u, reports) << r.log;
      EXPECT_EQ(dump ? 1 : 0, r.dumps);
    }
  }
}

// A host thread with an alternate signal stack of its own of 8 KiB (the
// classic SIGSTKSZ), a guard page below it so that overrunning it faults.
void faultOnSmallSignalStack() {
  std::thread thread([] {
    const std::size_t page = 4096, size = 8192;
    void *mapping = mmap(nullptr, page + size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    mprotect(mapping, page, PROT_NONE);
    stack_t stack = {};
    stack.ss_sp = static_cast<char *>(mapping) + page;
    stack.ss_size = size;
    sigaltstack(&stack, nullptr);
    try {
      storeThroughNull();
    } catch (XYLWin32SEHError &e) {
      std::fprintf(stderr, "caught %ld\n", e.getErrorCode());
    }
    stack.ss_flags = SS_DISABLE;
    sigaltstack(&stack, nullptr);
    munmap(mapping, page + size);
  });
  thread.join();
}

// Mode 1 may not allocate while malloc holds its arena lock. With no
// tcache, a freed chunk goes to a fastbin; its link is overwritten so that
// the second malloc follows it into unmapped memory, inside malloc, with
// the lock held (taken since the process has had a second thread).
XYL_REAL_FAULT void faultInsideMalloc() {
  std::thread([] {}).join();
  char *volatile chunk = static_cast<char *>(std::malloc(24));
  std::free(chunk);
  std::uintptr_t target = 0x1000; // chunk header; its link lies at 0x1010
  *reinterpret_cast<volatile std::uintptr_t *>(chunk) = (reinterpret_cast<std::uintptr_t>(chunk) >> 12) ^ target;
  void *volatile first = std::malloc(24);
  void *volatile second = std::malloc(24);
  std::fprintf(stderr, "malloc returned %p %p\n", first, second);
}

TEST_F(XYLSEHandlerCrashTest, FaultsThatCannotBeThrownEndTheProcessWithAReport) {
  XYLWin32SEHExceptionPointers bad = {reinterpret_cast<const void *>(0x10), nullptr};
  const struct {
    const char *what;
    const char *value;
    std::function<void()> body;
    int exitCode;
    const char *err; // expected in standard error
  } cases[] = {
      {"small signal stack, mode 1", "1:65535", faultOnSmallSignalStack, 0, "caught -1073741819"},
      {"small signal stack, mode 2", "2:65535", faultOnSmallSignalStack, 128 + SIGSEGV, "Please consult"},
      {"fault inside the translating handler", "1:65535",
       [&] { XYLWin32SEHHandler::qorThreadWin32SEHTranslateSEtoCE(0xC0000005u, &bad); }, 128 + SIGSEGV,
       "a fault occurred while handling a fault"},
      {"fault inside the dump-and-exit handler", "2:65535",
       [&] { XYLWin32SEHHandler::qorThreadWin32SEHDumpAndExit(0xC0000005u, &bad); }, 128 + SIGSEGV,
       "a fault occurred while handling a fault"},
  };
  for (const auto &c : cases) {
    SCOPED_TRACE(c.what);
    ChildResult r = run(c.value, [&] {
      try {
        c.body();
      } catch (XYLWin32SEHError &e) {
        std::fprintf(stderr, "thrown out of the handler: %ld\n", e.getErrorCode());
      }
    });
    ASSERT_FALSE(r.timedOut) << r.err;
    EXPECT_EQ(c.exitCode, exitCode(r)) << r.err;
    EXPECT_NE(std::string::npos, r.err.find(c.err)) << r.err;
    EXPECT_EQ(std::string::npos, r.err.find("thrown out of the handler")) << r.err;
    EXPECT_EQ(1u, countOf(r.log, "Exception code: 0xc0000005")) << r.log;
    EXPECT_NE(std::string::npos, r.log.find("Call stack:\n  0 0x")) << r.log;
  }
}

// GLIBC_TUNABLES is read when a process starts: this case re-executes the
// test binary as a death test.
TEST_F(XYLSEHandlerCrashTest, FaultInsideMallocEndsTheProcessInsteadOfHanging) {
#if defined(__SANITIZE_ADDRESS__)
  GTEST_SKIP() << "AddressSanitizer replaces malloc";
#endif
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  setenv("GLIBC_TUNABLES", "glibc.malloc.tcache_count=0", 1);
  setenv("XYL_DUMP_DIR", m_dir.c_str(), 1);
  setenv("XYL_DUMP_WRITER", XYL_TEST_DUMP_WRITER, 1);
  EXPECT_EXIT(
      {
        alarm(20); // a hang ends in SIGALRM, not in the expected exit
        XYLWin32SEHHandler::configure("1:65535");
        faultInsideMalloc();
      },
      testing::ExitedWithCode(128 + SIGSEGV), "inside the memory allocator.*Please consult the generated dump");
  unsetenv("GLIBC_TUNABLES");
  ChildResult r;
  collect(r);
  EXPECT_EQ(1u, countOf(r.log, "Exception code: 0xc0000005")) << r.log;
}

__attribute__((noinline)) void throwUncaught() { throw std::runtime_error("disk on fire"); }
__attribute__((noinline)) void throwUncaughtThrowable() { XYL_THROW(XYLRuntimeError(42, "tape jammed")); }

// Runs body on a raw pthread: no frame above it catches anything, so an
// exception it throws is uncaught, with the throwing frames still there.
void runUncaught(void (*body)()) {
  pthread_t thread;
  pthread_create(
      &thread, nullptr,
      [](void *argument) -> void * {
        reinterpret_cast<void (*)()>(argument)();
        return nullptr;
      },
      reinterpret_cast<void *>(body));
  pthread_join(thread, nullptr);
}

TEST_F(XYLSEHandlerCrashTest, TerminationIsReportedAndEndsAsModeTwo) {
  const bool noDumps = dumpsCannotBeChecked();
  const struct {
    const char *value;
    void (*body)();
    const char *cause;    // expected in the log
    const char *function; // expected in the log's call stack
  } cases[] = {
      {"1:65535", throwUncaught, "uncaught C++ exception of type std::runtime_error: disk on fire", "throwUncaught"},
      {"2:0", throwUncaught, "uncaught C++ exception of type std::runtime_error: disk on fire", "throwUncaught"},
      {"1:65535", throwUncaughtThrowable, "uncaught C++ exception of type XYLRuntimeError:\n<",
       "throwUncaughtThrowable"},
      {"1:65535", [] { PureDerived object; }, "pure virtual call", "__cxa_pure_virtual"},
      {"2:65535", [] { PureDerived object; }, "pure virtual call", "__cxa_pure_virtual"},
  };
  for (const auto &c : cases) {
    SCOPED_TRACE(testing::Message() << c.value << " " << c.cause);
    bool dumps = std::string(c.value) == "2:0";
    ChildResult r = run(dumps && noDumps ? "2:65535" : c.value, [&] { runUncaught(c.body); });
    ASSERT_FALSE(r.timedOut) << r.err;
    EXPECT_EQ(128 + SIGABRT, exitCode(r)) << r.err;
    EXPECT_NE(std::string::npos, r.err.find("Please consult the generated dump file")) << r.err;
    EXPECT_NE(std::string::npos, r.log.find(c.cause)) << r.log;
    EXPECT_NE(std::string::npos, r.log.find(c.function)) << r.log;
    EXPECT_EQ(dumps && !noDumps ? 1 : 0, r.dumps);
  }
}

TEST_F(XYLSEHandlerCrashTest, BreakpointIsReportedAtTheInstruction) {
  ChildResult r = run("1:65535", [] {
    try {
      breakAtLabel();
    } catch (XYLWin32SEHError &e) {
      std::fprintf(stderr, "caught %s\n", e.getMessage());
    }
  });
  ASSERT_FALSE(r.timedOut) << r.err;
  char address[32];
  std::snprintf(address, sizeof address, "0x%lx", reinterpret_cast<unsigned long>(xylTestBreakpoint));
  EXPECT_NE(std::string::npos, r.err.find(std::string("Exception address: ") + address + "\n")) << r.err;
  // The innermost frame is the int3 and its source line.
  std::string::size_type frame = r.err.find(std::string("\n  0 ") + address + " ");
  ASSERT_NE(std::string::npos, frame) << r.err;
  std::string line = r.err.substr(frame + 1, r.err.find('\n', frame + 1) - frame - 1);
  EXPECT_NE(std::string::npos, line.find(" Line: " + std::to_string(kBreakpointLine) + " ")) << line;
}

TEST_F(XYLSEHandlerCrashTest, FullMemoryDumpLeavesTheCoreDumpFilterAsItWas) {
  if (dumpsCannotBeChecked())
    GTEST_SKIP() << "dumps cannot be written or read in this build";
  ChildResult r = run("1:2", [] {
    std::ofstream("/proc/self/coredump_filter") << "0x37";
    std::string before = readText("/proc/self/coredump_filter");
    try {
      storeThroughNull();
    } catch (XYLWin32SEHError &) {
    }
    std::fprintf(stderr, "filter %s then %s", before.c_str(), readText("/proc/self/coredump_filter").c_str());
  });
  ASSERT_FALSE(r.timedOut) << r.err;
  EXPECT_NE(std::string::npos, r.err.find("filter 00000037\n then 00000037\n")) << r.err;
  EXPECT_EQ(1, r.dumps);
}

} // namespace
