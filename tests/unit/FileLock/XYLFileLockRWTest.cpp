// SPDX-License-Identifier: Apache-2.0
#include <XYLCore/FileLock/XYLFileLockRW.h>

#include "XYLChildProcess.h"
#include "XYLFmDirTestAccess.h"
#include "XYLTestLatch.h"
#include "XYLTraceLines.h"

#include <XYLCore/ExceptionHierarchy/XYLErrors.h>

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstring>
#include <fstream>
#include <functional>
#include <poll.h>
#include <string>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace {

// Whether some process or thread waits for a lock on the file `path`: the
// kernel lists blocked requests in /proc/locks with "->" and the file's
// device and inode ("fd:00:1234 "). Polled for at most 10 s.
bool someoneWaitsForALock(const std::string &path) {
  struct stat info;
  if (::stat(path.c_str(), &info) != 0)
    return false;
  const std::string inode = ":" + std::to_string(info.st_ino) + " ";
  for (int i = 0; i < 1000; ++i) {
    std::ifstream locks("/proc/locks");
    std::string line;
    while (std::getline(locks, line))
      if (line.find("->") != std::string::npos && line.find(inode) != std::string::npos)
        return true;
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  return false;
}

class XYLFileLockRWTest : public ::testing::Test {
protected:
  void SetUp() override {
    m_path = m_scratch / "locked";
    std::ofstream(m_path) << "content";
  }
  // Opens a new XYLFmFile on the test file.
  void openFile(XYLFmFile &file, int readOnly = 0) {
    ASSERT_EQ(1, file.open(m_path.c_str(), XYLFmFileModes::openExisting, readOnly));
  }

  xyltest::ScratchDirectory m_scratch;
  std::string m_path;
};

enum Held { None, Shared, Exclusive };

TEST_F(XYLFileLockRWTest, TwoFileObjectsInOneThreadExcludeEachOther) {
  struct Case {
    Held held;
    int tryLock;
    int tryReadLock;
  };
  const Case cases[] = {
      {None, 1, 1},
      {Shared, 0, 1},
      {Exclusive, 0, 0},
  };
  for (const Case &c : cases) {
    XYLFmFile first, second;
    openFile(first);
    openFile(second);
    XYLFileLockRW holder(first), other(second);
    if (c.held == Shared)
      holder.readLock();
    if (c.held == Exclusive)
      holder.lock();
    EXPECT_EQ(c.tryLock, other.tryLock()) << "held " << c.held;
    if (c.tryLock == 1)
      other.unlock();
    EXPECT_EQ(c.tryReadLock, other.tryReadLock()) << "held " << c.held;
    if (c.tryReadLock == 1)
      other.unlock();
    holder.unlock();
    EXPECT_EQ(1, other.tryLock()) << "released after held " << c.held;
    other.unlock();
  }
}

TEST_F(XYLFileLockRWTest, OneFileObjectConvertsItsOwnLock) {
  XYLFmFile first, second;
  openFile(first);
  openFile(second);
  XYLFileLockRW holder(first), other(second);
  holder.readLock();
  EXPECT_EQ(1, holder.tryLock()) << "upgrading one's own lock does not wait for oneself";
  EXPECT_EQ(0, other.tryReadLock());
  holder.readLock(); // and back down
  EXPECT_EQ(1, other.tryReadLock());
  other.unlock();
  holder.unlock(); // one unlock releases it
  EXPECT_EQ(1, other.tryLock());
  other.unlock();
  other.unlock(); // unlocking an unlocked file succeeds
}

TEST_F(XYLFileLockRWTest, ReadOnlyFilesTakeOnlySharedLocks) {
  XYLFmFile readOnly;
  openFile(readOnly, 1);
  XYLFileLockRW lock(readOnly);
  EXPECT_EQ(1, lock.tryReadLock());
  EXPECT_EQ(0, lock.tryLock());
  EXPECT_THROW(lock.lock(), XYLRuntimeError);
  lock.readLock();
  lock.unlock();
}

TEST_F(XYLFileLockRWTest, ClosingTheFileReleasesItsLock) {
  XYLFmFile first, second;
  openFile(first);
  openFile(second);
  XYLFileLockRW holder(first), other(second);
  holder.lock();
  EXPECT_EQ(0, other.tryLock());
  EXPECT_EQ(1, first.close());
  EXPECT_EQ(1, other.tryLock());
  other.unlock();
}

TEST_F(XYLFileLockRWTest, LockWaitsForAnotherThreadsRelease) {
  for (const bool exclusiveWaiter : {true, false}) {
    XYLFmFile first, second;
    openFile(first);
    openFile(second);
    XYLFileLockRW holder(first), waiter(second);
    holder.lock();
    std::atomic<bool> acquired(false);
    xyltest::Latch started(1);
    std::thread thread([&]() {
      started.countDown();
      if (exclusiveWaiter)
        waiter.lock();
      else
        waiter.readLock();
      acquired = true;
      waiter.unlock();
    });
    ASSERT_TRUE(started.wait());
    EXPECT_TRUE(someoneWaitsForALock(m_path));
    EXPECT_FALSE(acquired.load()) << "the lock was granted while held";
    holder.unlock();
    thread.join();
    EXPECT_TRUE(acquired.load());
  }
}

TEST_F(XYLFileLockRWTest, LocksCrossProcesses) {
  XYLFmFile file;
  openFile(file);
  XYLFileLockRW lock(file);
  const std::string path = m_path;

  // What a child process may take while the parent holds a shared, then an
  // exclusive lock.
  const auto childTries = [&path]() {
    return xyltest::runInChild([&path]() {
      XYLFmFile own;
      own.open(path.c_str(), XYLFmFileModes::openExisting, 0);
      XYLFileLockRW childLock(own);
      const int shared = childLock.tryReadLock();
      childLock.unlock();
      return std::to_string(shared) + std::to_string(childLock.tryLock());
    });
  };
  lock.readLock();
  EXPECT_EQ("10", childTries());
  lock.lock();
  EXPECT_EQ("00", childTries());
  lock.unlock();

  // A child that blocks in lock() until the parent lets go, and whose lock
  // ends with it.
  lock.lock();
  int toParent[2];
  ASSERT_EQ(0, ::pipe(toParent));
  const pid_t pid = ::fork();
  ASSERT_GE(pid, 0);
  if (pid == 0) {
    ::close(toParent[0]);
    XYLFmFile own;
    own.open(path.c_str(), XYLFmFileModes::openExisting, 0);
    XYLFileLockRW childLock(own);
    try {
      childLock.lock();
    } catch (...) {
      ::_exit(1);
    }
    const char got = 'L';
    ::_exit(::write(toParent[1], &got, 1) == 1 ? 0 : 2); // ends holding the lock
  }
  ::close(toParent[1]);
  EXPECT_TRUE(someoneWaitsForALock(m_path));
  struct pollfd ready = {toParent[0], POLLIN, 0};
  EXPECT_EQ(0, ::poll(&ready, 1, 0)) << "the child got the lock while the parent held it";
  lock.unlock();
  char got = 0;
  EXPECT_EQ(1, ::read(toParent[0], &got, 1));
  EXPECT_EQ('L', got);
  ::close(toParent[0]);
  int status = -1;
  ASSERT_EQ(pid, ::waitpid(pid, &status, 0));
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status;
  EXPECT_EQ(1, lock.tryLock()) << "the lock of an ended process is released";
  lock.unlock();
}

TEST_F(XYLFileLockRWTest, SystemFailuresThrowTheExactTexts) {
  XYLFmFile closed;
  XYLFileLockRW lock(closed);
  struct Case {
    const char *operation;
    void (XYLFileLockRW::*call)();
    const char *text;
  };
  const std::string systemText = std::string(strerror(EBADF)) + ".";
  const Case cases[] = {
      {"XYLFileLockRW::lock", &XYLFileLockRW::lock,
       "Error obtaining a file lock. The error message retrieved from underlining system is "},
      {"XYLFileLockRW::readLock", &XYLFileLockRW::readLock,
       "Error obtaining a file lock. The error message retrieved from underlining system is "},
      {"XYLFileLockRW::unlock", &XYLFileLockRW::unlock,
       "Error releasing a file lock. The error message retrieved from underlining system is "},
  };
  for (const Case &c : cases) {
    try {
      (lock.*c.call)();
      ADD_FAILURE() << c.operation << " did not throw";
    } catch (XYLRuntimeError &e) {
      EXPECT_STREQ("XYLRuntimeError", e.getThrowableName());
      EXPECT_EQ(std::string(c.text) + systemText, e.getMessage()) << c.operation;
      const std::vector<std::string> lines = xyltest::traceLines(e);
      ASSERT_EQ(1u, lines.size());
      const std::string &line = lines[0];
      EXPECT_EQ(0u, line.find("FileLock/XYLFileLockRW(")) << line;
      EXPECT_NE(std::string::npos, line.find(std::string(": XYL_THROW: ") + c.operation)) << line;
    }
  }
  EXPECT_EQ(0, lock.tryLock());
  EXPECT_EQ(0, lock.tryReadLock());
}

// A derived lock made without a file.
class UnsetLock : public XYLFileLockRW {
public:
  UnsetLock() = default;
  void attach(XYLFmFile &file) { setFile(&file); }
  XYLFmFile *file() const { return getFile(); }
};

TEST_F(XYLFileLockRWTest, EveryOperationAssertsAFile) {
  UnsetLock lock;
  EXPECT_EQ(nullptr, lock.file());
  const std::function<void()> calls[] = {
      [&] { lock.lock(); },     [&] { lock.unlock(); },      [&] { lock.tryLock(); },
      [&] { lock.readLock(); }, [&] { lock.tryReadLock(); },
  };
  for (const auto &call : calls) {
    try {
      call();
      ADD_FAILURE() << "no assertion";
    } catch (XYLAssertError &e) {
      EXPECT_STREQ("XYL_ASSERT(m_file);", e.getMessage());
    }
  }
  XYLFmFile file;
  openFile(file);
  lock.attach(file);
  EXPECT_EQ(1, lock.tryLock());
  lock.unlock();
}

} // namespace
