// SPDX-License-Identifier: Apache-2.0
// The dump writer's texts: the stack report (also the message of
// XYLWin32SEHError) and the register dump, from a record made up here.
#include "dumpwriter_report.h"

#include <gtest/gtest.h>

#include <cstring>
#include <sys/ucontext.h>

namespace {

using xyl_dumpwriter::Frame;

TEST(XYLWriteDumpReportTest, FunctionNamesLoseTheirParameterLists) {
  const struct {
    const char *demangled;
    const char *expected;
  } cases[] = {
      {"storeThroughNull(int volatile*)", "storeThroughNull"},
      {"(anonymous namespace)::g(int)", "(anonymous namespace)::g"},
      {"ns::Box<std::pair<int, int> >::get(std::vector<int, std::allocator<int> > const&) const",
       "ns::Box<std::pair<int, int> >::get"},
      {"X::operator()(int) const &&", "X::operator()"},
      {"X::operator()()", "X::operator()"},
      {"f(void (*)(int))", "f"},
      {"std::__cxx11::to_string[abi:cxx11](int)", "std::__cxx11::to_string[abi:cxx11]"},
      {"main", "main"},
      {"__libc_start_main", "__libc_start_main"},
      {"", ""},
      {"unbalanced)", "unbalanced)"},
  };
  for (const auto &c : cases)
    EXPECT_EQ(c.expected, xyl_dumpwriter::functionWithoutParameters(c.demangled)) << c.demangled;
}

class XYLWriteDumpReportFixture : public testing::Test {
protected:
  void SetUp() override {
    std::memset(&m_record, 0, sizeof m_record);
    m_record.exceptionCode = 0xC0000005u;
    m_record.gregs[REG_RIP] = 0x55d0c0a0b1c2ull;
    // CS 0x33, GS 0, FS 0x2b packed as the kernel saves them.
    m_record.gregs[REG_CSGSFS] = 0x33ull | (0x0ull << 16) | (0x2bull << 32);
    std::strcpy(m_record.description, "Exception: ACCESS_VIOLATION (SIGSEGV, si_code 1, fault address 0x0)");
    Frame known;
    known.pc = 0x55d0c0a0b1c2ull;
    known.cfa = 0x7ffd0010;
    known.module = "server";
    known.function = "Worker::run";
    known.file = "/src/worker.cpp";
    known.line = 42;
    known.section = 15;
    known.sectionOffset = 0x1c2;
    Frame unknown;
    unknown.pc = 0x1234;
    m_frames = {known, unknown};
  }

  xyl_seh::FaultRecord m_record;
  std::vector<Frame> m_frames;
};

TEST_F(XYLWriteDumpReportFixture, ReportHasItsLinesInOrder) {
  EXPECT_EQ("\n=====================================================\n"
            "Exception code: 0xc0000005\n"
            "Exception address: 0x55d0c0a0b1c2\n"
            "Exception: ACCESS_VIOLATION (SIGSEGV, si_code 1, fault address 0x0)\n"
            "\nCall stack:\n"
            "  0 0x55d0c0a0b1c2 server!Worker::run( ... ) Line: 42 File: /src/worker.cpp\n"
            "  1 0x00001234 UNKNOWN!UNKNOWN( ... )\n"
            "\n=====================================================\n",
            xyl_dumpwriter::composeReport(m_record, m_frames));
}

TEST_F(XYLWriteDumpReportFixture, RegisterDumpHasItsLinesInOrder) {
  EXPECT_EQ("CS:EIP:0033:55D0C0A0B1C2\n"
            "DS:0000  ES:0000  FS:002B  GS:0000\n"
            "Address   Frame     Logical addr  Module\n"
            "55D0C0A0B1C2  7FFD0010  000F:000001C2 server\n"
            "00001234  00000000  0000:00000000 UNKNOWN\n",
            xyl_dumpwriter::composeRegisterDump(m_record, m_frames));
}

} // namespace
