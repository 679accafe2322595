// SPDX-License-Identifier: Apache-2.0
#include <XYLCore/ExceptionHierarchy/XYLErrors.h>
#include <XYLCore/XYLCustodian/XYLCustodian.h>

#include "XYLCustodianTestSupport.h"
#include "XYLFmDirTestAccess.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <new>
#include <sstream>
#include <stdexcept>
#include <string>
#include <sys/stat.h>
#include <thread>

namespace {

using xyltest::Task;

// The custodian calls _exit(327); a Linux parent sees the low 8 bits.
const int kExitStatus = 327 & 0xFF;

// A period of 0 or all bits set can never be changed again: checked in a
// child process, since the period is process-wide.
TEST(XYLCustodianDeathTest, FrozenPeriodsStayFrozen) {
  for (unsigned long frozen : {0ul, 4294967295ul}) {
    EXPECT_EXIT(
        {
          const bool ok = XYLCustodianTestAccess::setSchedule(frozen) == 60000 &&
                          XYLCustodianTestAccess::setSchedule(5000) == frozen && XYLCustodian::getSchedule() == frozen;
          std::_Exit(ok ? 0 : 1);
        },
        testing::ExitedWithCode(0), "")
        << frozen;
  }
}

std::string readFile(const std::string &path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream text;
  text << in.rdbuf();
  return text.str();
}

// Written by an atexit handler: its absence shows that no clean-up ran.
std::string g_atExitMarker;
void writeAtExitMarker() { std::ofstream(g_atExitMarker) << "ran"; }

// A task that throws ends the process with 327 after one log entry.
TEST(XYLCustodianDeathTest, ThrowingTaskEndsTheProcessWith327) {
  struct Case {
    const char *kind;
    std::function<void()> raise;
    const char *entryStart;
    const char *entryText;
  };
  const Case cases[] = {
      {"throwable", [] { XYL_THROW(XYLRuntimeError(42L, "the task broke")); },
       "XYLCustodian Caught XYLThrowable Error\n<-\n", nullptr},
      {"bad_alloc", [] { throw std::bad_alloc(); },
       "XYLCustodian Caught CSTD_STD_NAME::bad_alloc Exception Error\n<-\n", ""},
      {"std", [] { throw std::runtime_error("standard failure"); }, "XYLCustodian Caught C++ Exception Error\n<-\n",
       "standard failure"},
      {"unknown", [] { throw 42; }, "XYLCustodian Caught Unknown Error\n<-\n", "XYLCustodian catch (...)"},
  };
  for (const Case &c : cases) {
    xyltest::ScratchDirectory scratch;
    ASSERT_EQ(0, ::mkdir((scratch / "bin").c_str(), 0700));
    ASSERT_EQ(0, ::mkdir((scratch / "logs").c_str(), 0700));
    xyltest::ScopedEffectiveWorkingDir effective(scratch / "bin");
    g_atExitMarker = scratch / "atexit-ran";
    EXPECT_EXIT(
        {
          std::atexit(writeAtExitMarker);
          XYLCustodianTestAccess::setSchedule(10);
          XYLCustodianTestAccess::initialize();
          Task thrower([&](int) -> int {
            c.raise();
            return 0;
          });
          XYLCustodian::registerTask(&thrower);
          for (;;)
            std::this_thread::sleep_for(std::chrono::seconds(1));
        },
        testing::ExitedWithCode(kExitStatus), "")
        << c.kind;
    const std::string log = readFile(scratch / "logs/XYLCustodian.log");
    const std::size_t tab = log.find('\t');
    ASSERT_NE(std::string::npos, tab) << c.kind << ": " << log;
    const std::string entry = log.substr(tab + 1);
    EXPECT_EQ(0u, entry.find(c.entryStart)) << entry;
    if (c.entryText != nullptr) {
      EXPECT_EQ(std::string(c.entryStart) + c.entryText + "\n->\n\n", entry);
    } else {
      EXPECT_NE(std::string::npos, entry.find("the task broke")) << entry;
      EXPECT_NE(std::string::npos, entry.find("XYLRuntimeError")) << entry;
      EXPECT_EQ(entry.size() - 5, entry.find("\n->\n\n")) << "one entry only";
    }
    EXPECT_EQ("", readFile(g_atExitMarker)) << c.kind << ": clean-up ran";
  }
}

} // namespace
