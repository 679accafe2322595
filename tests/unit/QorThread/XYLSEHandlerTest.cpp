// SPDX-License-Identifier: Apache-2.0
// The fault handler: XYL_HWE_ABORT, the exception table, the signal
// mapping, the debugging banner, and real faults in child processes.
//
// The death tests run "threadsafe": the child re-executes this binary, so
// the variables each test sets before EXPECT_EXIT are what the child's
// library reads while it loads. This file is built with
// -fnon-call-exceptions, so that its faults can be thrown.
#include "XYLSEHandlerTestCode.h"

#include <XYLCore/ExceptionHierarchy/XYLErrors.h>
#include <XYLCore/QorThread/XYLWin32SEHHandler.h>
#include <XYLCore/Threads/XYLThread.h>
#include <XYLFaultInjection.h>

#include <gtest/gtest.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <dirent.h>
#include <fstream>
#include <sstream>
#include <string>
#include <sys/stat.h>
#include <ucontext.h>
#include <unistd.h>
#include <vector>

#ifndef XYL_TEST_DUMP_WRITER
#define XYL_TEST_DUMP_WRITER ""
#endif

// The faults below are meant to reach the hardware: no sanitizer check may
// catch them first.
#define XYL_REAL_FAULT __attribute__((noinline, no_sanitize("address", "undefined")))

namespace {

using Handler = XYLWin32SEHHandler::Handler;

// The list has no const access to its elements.
const char *firstTraceLine(const XYLThrowable &e) {
  XYLList<char *> &trace = const_cast<XYLList<char *> &>(e.getBackTrace());
  return trace.size() > 0 ? trace.at(0) : "(none)";
}

// ---- XYL_HWE_ABORT -------------------------------------------------------------------

std::string missingColon(const std::string &value) {
  return "Wrong format: The string " + value + " is missing ':' within it!\n";
}
std::string badFirstPart(const std::string &part) {
  return "\nWrong format: The first string part \"" + part + "\" is an invalid unsigned integer number!\n\n";
}
std::string badSecondPart(const std::string &part) {
  return "\nWrong format: The second string part \"" + part + "\" is an invalid unsigned integer number!\n\n";
}

void collect(void *context, const char *text) { static_cast<std::vector<std::string> *>(context)->push_back(text); }

struct ParseCase {
  const char *value; // null: unset
  int enabled;
  Handler handler;
  unsigned mode;
  unsigned dumpType;
  std::vector<std::string> messages;
};

TEST(XYLSEHandlerParseTest, EveryValueGivesItsSettingsAndMessages) {
  const Handler none = XYLWin32SEHHandler::HandlerNone;
  const Handler debugging = XYLWin32SEHHandler::HandlerDebugging;
  const Handler translating = XYLWin32SEHHandler::HandlerTranslating;
  const Handler dumpAndExit = XYLWin32SEHHandler::HandlerDumpAndExit;
  const ParseCase cases[] = {
      {nullptr, 0, none, 0, 2, {}},
      {"", 0, none, 0, 2, {}},
      {"Y", 1, debugging, 0, 2, {}},
      {"y", 1, debugging, 0, 2, {}},
      {"yes:7", 1, debugging, 0, 2, {}}, // only the first character counts
      {"N", 0, none, 0, 2, {missingColon("N"), badFirstPart("N"), badSecondPart("N")}},
      {"1:2", 1, translating, 1, 2, {}},
      {"2:0", 1, dumpAndExit, 2, 0, {}},
      {"x:5", 0, none, 0, 2, {badFirstPart("x")}},
      {"3", 0, none, 3, 2, {missingColon("3")}},
      {"1", 1, translating, 1, 1, {missingColon("1")}}, // the whole text is mode and value
      {"2", 1, dumpAndExit, 2, 2, {missingColon("2")}},
      {"256:1", 0, none, 0, 2, {badFirstPart("256")}}, // 8 bits: 0, and reported
      {"257:3", 1, translating, 1, 3, {}},
      {"1:65536", 1, translating, 1, 0, {badSecondPart("65536")}}, // 16 bits: 0, and reported
      {"2:65538", 1, dumpAndExit, 2, 2, {}},
      {"1:abc", 1, translating, 1, 0, {badSecondPart("abc")}},
      {"0:0", 0, none, 0, 2, {}},
      {":", 0, none, 0, 2, {badFirstPart(""), badSecondPart("")}},
      {"1:-1", 1, translating, 1, 0xFFFF, {}},
      {"1:2:3", 1, translating, 1, 2, {}},
      {" 2:7", 1, dumpAndExit, 2, 7, {}},
  };
  for (const ParseCase &c : cases) {
    SCOPED_TRACE(c.value != nullptr ? std::string("\"") + c.value + "\"" : std::string("(unset)"));
    std::vector<std::string> messages;
    XYLWin32SEHHandler::Settings s = XYLWin32SEHHandler::parseAbortValue(c.value, collect, &messages);
    EXPECT_EQ(c.enabled, s.enabled);
    EXPECT_EQ(c.handler, s.handler);
    EXPECT_EQ(c.mode, s.mode);
    EXPECT_EQ(c.dumpType, s.dumpType);
    EXPECT_EQ(c.messages, messages);
    // Without a sink the same value gives the same settings.
    XYLWin32SEHHandler::Settings quiet = XYLWin32SEHHandler::parseAbortValue(c.value, nullptr, nullptr);
    EXPECT_EQ(s.handler, quiet.handler);
    EXPECT_EQ(s.dumpType, quiet.dumpType);
  }
}

// ---- the exception table and the signal mapping --------------------------------------------

TEST(XYLSEHandlerNamesTest, SignalsMapToExceptionCodes) {
  const struct {
    int signal;
    int code;
    int overflow;
    unsigned fpu;
    const char *name; // null: unnamed
    unsigned unnamedCode;
  } cases[] = {
      {SIGSEGV, SEGV_MAPERR, 0, 0, "ACCESS_VIOLATION", 0},
      {SIGSEGV, SEGV_ACCERR, 0, 0, "ACCESS_VIOLATION", 0},
      {SIGSEGV, SI_KERNEL, 0, 0, "ACCESS_VIOLATION", 0}, // general protection: a non-canonical address
      {SIGSEGV, SEGV_MAPERR, 1, 0, "STACK_OVERFLOW", 0},
      {SIGSEGV, SEGV_ACCERR, 1, 0, "STACK_OVERFLOW", 0},
      {SIGSEGV, SEGV_BNDERR, 0, 0, "ARRAY_BOUNDS_EXCEEDED", 0},
      {SIGBUS, BUS_ADRALN, 0, 0, "DATATYPE_MISALIGNMENT", 0},
      {SIGBUS, BUS_ADRERR, 0, 0, "IN_PAGE_ERROR", 0},
      {SIGBUS, BUS_OBJERR, 0, 0, "IN_PAGE_ERROR", 0},
      {SIGFPE, FPE_INTDIV, 0, 0, "INT_DIVIDE_BY_ZERO", 0},
      {SIGFPE, FPE_INTOVF, 0, 0, "INT_OVERFLOW", 0},
      {SIGFPE, FPE_FLTDIV, 0, 0x04, "FLT_DIVIDE_BY_ZERO", 0},
      {SIGFPE, FPE_FLTOVF, 0, 0x08, "FLT_OVERFLOW", 0},
      {SIGFPE, FPE_FLTUND, 0, 0x10, "FLT_UNDERFLOW", 0},
      {SIGFPE, FPE_FLTUND, 0, 0x12, "FLT_UNDERFLOW", 0},
      {SIGFPE, FPE_FLTUND, 0, 0x02, "FLT_DENORMAL_OPERAND", 0},
      {SIGFPE, FPE_FLTRES, 0, 0x20, "FLT_INEXACT_RESULT", 0},
      {SIGFPE, FPE_FLTINV, 0, 0x01, "FLT_INVALID_OPERATION", 0},
      {SIGFPE, FPE_FLTINV, 0, 0x41, "FLT_STACK_CHECK", 0},
      {SIGFPE, FPE_FLTSUB, 0, 0, "ARRAY_BOUNDS_EXCEEDED", 0},
      {SIGILL, ILL_ILLOPN, 0, 0, "ILLEGAL_INSTRUCTION", 0},
      {SIGILL, ILL_ILLOPC, 0, 0, "ILLEGAL_INSTRUCTION", 0},
      {SIGILL, ILL_PRVOPC, 0, 0, "PRIV_INSTRUCTION", 0},
      {SIGILL, ILL_PRVREG, 0, 0, "PRIV_INSTRUCTION", 0},
      {SIGTRAP, TRAP_BRKPT, 0, 0, "BREAKPOINT", 0},
      {SIGTRAP, SI_KERNEL, 0, 0, "BREAKPOINT", 0}, // int3 on x86-64
      {SIGTRAP, TRAP_TRACE, 0, 0, "SINGLE_STEP", 0},
      {SIGTRAP, TRAP_HWBKPT, 0, 0, "SINGLE_STEP", 0},
      // Sent by a process, not raised by the hardware: unnamed.
      {SIGSEGV, SI_USER, 0, 0, nullptr, 0xE0000B00u},
      {SIGSEGV, SI_TKILL, 1, 0, nullptr, 0xE0000BFAu},
      {SIGFPE, SI_QUEUE, 0, 0, nullptr, 0xE00008FFu},
      {SIGABRT, SI_TKILL, 0, 0, nullptr, 0xE00006FAu},
      {SIGTRAP, 5, 0, 0, nullptr, 0xE0000505u},
  };
  for (const auto &c : cases) {
    SCOPED_TRACE(testing::Message() << "signal " << c.signal << " code " << c.code << " overflow " << c.overflow
                                    << " fpu " << std::hex << c.fpu);
    unsigned code = XYLWin32SEHHandler::exceptionCodeFromSignal(c.signal, c.code, c.overflow, c.fpu);
    const char *name = XYLWin32SEHHandler::exceptionName(code);
    if (c.name != nullptr) {
      EXPECT_STREQ(c.name, name) << std::hex << code;
    } else {
      EXPECT_EQ(nullptr, name);
      EXPECT_EQ(c.unnamedCode, code);
    }
  }
}

// ---- the handlers' own checks and the banner ----------------------------------------------

TEST(XYLSEHandlerTest, HandlersAssertTheirExceptionPointers) {
  XYLWin32SEHExceptionPointers empty = {nullptr, nullptr};
  const struct {
    const char *what;
    void (*call)(XYLWin32SEHExceptionPointers *);
    bool nullPointers;
    const char *message;
  } cases[] = {
      {"translator", [](XYLWin32SEHExceptionPointers *p) { XYLWin32SEHHandler::qorThreadWin32SEHTranslator(1, p); },
       true, "XYL_ASSERT(pExp);"},
      {"translate", [](XYLWin32SEHExceptionPointers *p) { XYLWin32SEHHandler::qorThreadWin32SEHTranslateSEtoCE(1, p); },
       true, "XYL_ASSERT(pExp);"},
      {"dump and exit", [](XYLWin32SEHExceptionPointers *p) { XYLWin32SEHHandler::qorThreadWin32SEHDumpAndExit(1, p); },
       true, "XYL_ASSERT(pExp);"},
      {"translate", [](XYLWin32SEHExceptionPointers *p) { XYLWin32SEHHandler::qorThreadWin32SEHTranslateSEtoCE(1, p); },
       false, "XYL_ASSERT(pExp->ExceptionRecord);"},
      {"dump and exit", [](XYLWin32SEHExceptionPointers *p) { XYLWin32SEHHandler::qorThreadWin32SEHDumpAndExit(1, p); },
       false, "XYL_ASSERT(pExp->ExceptionRecord);"},
  };
  for (const auto &c : cases) {
    SCOPED_TRACE(std::string(c.what) + (c.nullPointers ? " without pointers" : " without a signal record"));
    try {
      c.call(c.nullPointers ? nullptr : &empty);
      ADD_FAILURE() << "nothing thrown";
    } catch (XYLAssertError &e) {
      ASSERT_NE(nullptr, e.getMessage());
      EXPECT_STREQ(c.message, e.getMessage());
      ASSERT_EQ(1u, e.getBackTrace().size());
      EXPECT_EQ(0u, std::string(firstTraceLine(e)).rfind("QorThread/xylsehandler(", 0));
    }
  }
}

TEST(XYLSEHandlerTest, DebuggingBannerHasItsExactLines) {
  siginfo_t info{};
  info.si_signo = SIGFPE;
  info.si_code = FPE_INTDIV;
  info.si_addr = reinterpret_cast<void *>(0x1234);
  ucontext_t context{};
  context.uc_mcontext.gregs[REG_RIP] = 0x401000;
  XYLWin32SEHExceptionPointers pointers = {&info, &context};
  testing::internal::CaptureStderr();
  XYLWin32SEHHandler::qorThreadWin32SEHTranslator(0xC0000094u, &pointers);
  std::string banner = testing::internal::GetCapturedStderr();
  EXPECT_EQ("\n========================================================\n"
            "XYL Win32 Hardware Exception Handler Enabled\n"
            "\nXYL caught the following win32 exception using\n"
            "      XYLWin32SEHHandler::qorThreadWin32SEHTranslator\n"
            "Exception code: 0xc0000094\n"
            "Exception address: 0x401000\n"
            "Exception: INT_DIVIDE_BY_ZERO (SIGFPE, si_code 1, fault address 0x1234)\n"
            "\nHint: Place breakpoint in the static method\n"
            "      XYLWin32SEHHandler::qorThreadWin32SEHTranslator\n"
            "      to catch this in Microsoft Developer Studio\n"
            "\n    set XYL_HWE_ABORT=Y\n"
            "\n========================================================\n",
            banner);
}

// ---- real faults -----------------------------------------------------------------------------

int g_destructorsRun = 0;

struct Witness {
  ~Witness() { ++g_destructorsRun; }
};

// The faulting store is three lines below this constant.
constexpr int kNullStoreLine = __LINE__ + 3;
XYL_REAL_FAULT int storeThroughNull(volatile int *pointer) {
  Witness witness;
  *pointer = 7;
  return 0;
}

XYL_REAL_FAULT int divideByZero(int dividend, volatile int *divisor) {
  Witness witness;
  return dividend / *divisor;
}

// Never cleared; it keeps the compiler from treating the recursion as
// unconditional.
volatile bool g_keepRecursing = true;

XYL_REAL_FAULT int recurseForever(int depth) {
  volatile char frame[1024];
  frame[0] = static_cast<char>(depth);
  if (!g_keepRecursing)
    return frame[0];
  return recurseForever(depth + 1) + frame[0];
}

int faultNullStore() {
  volatile int *volatile nowhere = nullptr;
  return storeThroughNull(nowhere);
}

int faultDivideByZero() {
  volatile int zero = 0;
  return divideByZero(1, &zero);
}

int faultOverflow() { return recurseForever(0); }

int faultPlainCode() {
  volatile int *volatile nowhere = nullptr;
  return xylsehtest::readWithCleanup(nowhere);
}

// Child side: runs fault with one more witness around it, catches the
// translated fault and reports on standard error.
[[noreturn]] void catchFault(int (*fault)()) {
  g_destructorsRun = 0;
  try {
    Witness outer;
    fault();
  } catch (XYLWin32SEHError &e) {
    const char *message = e.getMessage();
    std::fprintf(stderr, "caught %ld destructors %d trace %s report:%s\n", e.getErrorCode(), g_destructorsRun,
                 firstTraceLine(e), message != nullptr ? message : "(null)");
    _exit(0);
  }
  std::fprintf(stderr, "no fault\n");
  _exit(1);
}

// Each fault twice: a signal must not stay blocked after it was thrown
// out of its handler.
[[noreturn]] void catchRepeatedFaults() {
  int caught = 0;
  for (int (*fault)() : {faultNullStore, faultNullStore, faultDivideByZero, faultDivideByZero}) {
    try {
      fault();
    } catch (XYLWin32SEHError &e) {
      ++caught;
    }
  }
  std::fprintf(stderr, "caught %d faults\n", caught);
  _exit(0);
}

// A runnable that faults inside its own try block on an XYLThread.
class CatchingRunnable : public XYLThreadRunnable {
public:
  explicit CatchingRunnable(int (*fault)()) : m_fault(fault) {}
  void run() override {
    try {
      Witness outer;
      m_fault();
    } catch (XYLWin32SEHError &e) {
      m_code = e.getErrorCode();
      m_destructors = g_destructorsRun;
    }
  }
  int (*m_fault)();
  long m_code = 0;
  int m_destructors = -1;
};

class FaultingRunnable : public XYLThreadRunnable {
public:
  explicit FaultingRunnable(int (*fault)()) : m_fault(fault) {}
  void run() override { m_fault(); }
  int (*m_fault)();
};

[[noreturn]] void catchFaultOnThread(int (*fault)()) {
  g_destructorsRun = 0;
  CatchingRunnable runnable(fault);
  XYLThread thread(&runnable);
  thread.start();
  thread.join();
  std::fprintf(stderr, "thread caught %ld destructors %d\n", runnable.m_code, runnable.m_destructors);
  _exit(0);
}

[[noreturn]] void faultOnThread(int (*fault)()) {
  FaultingRunnable runnable(fault);
  XYLThread thread(&runnable);
  thread.start();
  try {
    thread.join();
    std::fprintf(stderr, "join returned\n");
  } catch (XYLThreadResourceError &e) {
    std::fprintf(stderr, "join threw %ld %s; plain destructors %d\n", e.getErrorCode(),
                 e.getMessage() != nullptr ? e.getMessage() : "(null)", xylsehtest::g_plainDestructorsRun);
  }
  _exit(0);
}

std::string readText(const std::string &path) {
  std::ifstream in(path);
  std::stringstream text;
  text << in.rdbuf();
  return text.str();
}

std::string selfPath() {
  char path[4096];
  ssize_t n = readlink("/proc/self/exe", path, sizeof path - 1);
  return n > 0 ? std::string(path, static_cast<std::size_t>(n)) : std::string();
}

std::string programName() {
  std::string self = selfPath();
  return self.substr(self.rfind('/') + 1);
}

std::string runCommand(const std::string &command) {
  std::string output;
  if (FILE *pipe = popen(command.c_str(), "r")) {
    char buffer[4096];
    std::size_t n;
    while ((n = std::fread(buffer, 1, sizeof buffer, pipe)) > 0)
      output.append(buffer, n);
    pclose(pipe);
  }
  return output;
}

class XYLSEHandlerDeathTest : public testing::Test {
protected:
  void SetUp() override {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    if (std::string(XYL_TEST_DUMP_WRITER).empty())
      GTEST_SKIP() << "built without the dump writer XYLWriteDump";
    // The re-executed child inherits the parent's directory.
    const char *inherited = std::getenv("XYLSEH_TEST_DIR");
    if (inherited != nullptr) {
      m_dir = inherited;
    } else {
      char pattern[] = "/tmp/xylseh.XXXXXX";
      ASSERT_NE(nullptr, mkdtemp(pattern));
      m_dir = pattern;
      m_owner = true;
      setenv("XYLSEH_TEST_DIR", m_dir.c_str(), 1);
    }
    setenv("XYL_DUMP_DIR", m_dir.c_str(), 1);
    setenv("XYL_DUMP_WRITER", XYL_TEST_DUMP_WRITER, 1);
  }

  void TearDown() override {
    if (!m_owner)
      return;
    for (const std::string &file : files(""))
      unlink((m_dir + "/" + file).c_str());
    rmdir(m_dir.c_str());
    for (const char *name : {"XYLSEH_TEST_DIR", "XYL_DUMP_DIR", "XYL_DUMP_WRITER", "XYL_HWE_ABORT"})
      unsetenv(name);
  }

  static void abortMode(const char *value) { setenv("XYL_HWE_ABORT", value, 1); }

  std::vector<std::string> files(const std::string &suffix) const {
    std::vector<std::string> names;
    if (DIR *dir = opendir(m_dir.c_str())) {
      while (dirent *entry = readdir(dir)) {
        std::string name = entry->d_name;
        if (name != "." && name != ".." && name.size() >= suffix.size() &&
            name.compare(name.size() - suffix.size(), suffix.size(), suffix) == 0)
          names.push_back(name);
      }
      closedir(dir);
    }
    return names;
  }

  // The one log the child left.
  std::string log() const {
    std::vector<std::string> logs = files(".log");
    EXPECT_EQ(1u, logs.size());
    return logs.empty() ? std::string() : readText(m_dir + "/" + logs[0]);
  }

  // gdb's back trace of the dump's selected thread passes through the
  // faulting frame, with its argument read from the dump.
  void expectDumpShowsFault() const {
    std::vector<std::string> dumps = files(".dmp");
    ASSERT_EQ(1u, dumps.size());
    std::string command = "gdb -nx -batch -ex bt '" + selfPath() + "' '" + m_dir + "/" + dumps[0] + "' 2>&1";
    std::string backTrace = runCommand(command);
    EXPECT_NE(std::string::npos, backTrace.find("<signal handler called>")) << backTrace;
    EXPECT_NE(std::string::npos, backTrace.find("storeThroughNull (pointer=0x0)")) << backTrace;
  }

  std::string m_dir;
  bool m_owner = false;
};

TEST_F(XYLSEHandlerDeathTest, AbortValuesAreReadWhileTheLibraryLoads) {
  const struct {
    const char *value;
    const char *expected; // regular expression over the child's standard error
  } cases[] = {
      {"y", "^settings handler 1 mode 0 dump 2\n$"},
      {"", "^settings handler 0 mode 0 dump 2\n$"},
      {"N", "^Wrong format: The string N is missing ':' within it!\n\nWrong format: The first string part \"N\".*"
            "settings handler 0 mode 0 dump 2\n$"},
      {"1:2", "^settings handler 2 mode 1 dump 2\n$"},
      {"2:0", "^settings handler 3 mode 2 dump 0\n$"},
      {"x:5", "^\nWrong format: The first string part \"x\" is an invalid unsigned integer number!\n\n"
              "settings handler 0 mode 0 dump 2\n$"},
      {"3", "^Wrong format: The string 3 is missing ':' within it!\nsettings handler 0 mode 3 dump 2\n$"},
      {"256:1", "^\nWrong format: The first string part \"256\" is an invalid unsigned integer number!\n\n"
                "settings handler 0 mode 0 dump 2\n$"},
  };
  for (const auto &c : cases) {
    SCOPED_TRACE(c.value);
    abortMode(c.value);
    EXPECT_EXIT(
        {
          XYLWin32SEHHandler::Settings s = XYLWin32SEHHandler::getSettings();
          std::fprintf(stderr, "settings handler %d mode %d dump %d\n", static_cast<int>(s.handler), s.mode,
                       s.dumpType);
          _exit(0);
        },
        testing::ExitedWithCode(0), c.expected);
  }
}

TEST_F(XYLSEHandlerDeathTest, TranslatedFaultIsCaughtAfterTheDestructorsBetweenRan) {
  const struct {
    int (*fault)();
    const char *expected;
  } cases[] = {
      {faultNullStore,
       "caught -1073741819 destructors 2 trace QorThread/xylsehandler\\([0-9]+\\):XYLWin32SEHError: "
       "XYL_THROW: +report:.*Exception code: 0xc0000005.*ACCESS_VIOLATION \\(SIGSEGV.*storeThroughNull"},
      {faultDivideByZero, "caught -1073741676 destructors 2 .*Exception code: 0xc0000094.*INT_DIVIDE_BY_ZERO "
                          "\\(SIGFPE.*divideByZero"},
  };
  abortMode("1:65535");
  for (const auto &c : cases)
    EXPECT_EXIT(catchFault(c.fault), testing::ExitedWithCode(0), c.expected);
  EXPECT_EXIT(catchRepeatedFaults(), testing::ExitedWithCode(0), "caught 4 faults");
}

TEST_F(XYLSEHandlerDeathTest, TranslatedFaultIsCaughtInsideAnXYLThread) {
  abortMode("1:65535");
  EXPECT_EXIT(catchFaultOnThread(faultNullStore), testing::ExitedWithCode(0),
              "thread caught -1073741819 destructors 2");
  EXPECT_EXIT(catchFaultOnThread(faultDivideByZero), testing::ExitedWithCode(0),
              "thread caught -1073741676 destructors 2");
}

TEST_F(XYLSEHandlerDeathTest, UncaughtFaultEndsOnlyItsXYLThread) {
  abortMode("1:65535");
  // Thrown through its frames up to the thread's entry routine.
  EXPECT_EXIT(faultOnThread(faultNullStore), testing::ExitedWithCode(0),
              "join threw -1 QorThread caught a hardware exception");
  // Code that cannot be unwound: the thread guard's fallback ends the
  // thread without running the destructor of the faulting frame.
  EXPECT_EXIT(faultOnThread(faultPlainCode), testing::ExitedWithCode(0),
              "fallback guard ends the thread.*join threw -1 QorThread caught a hardware exception; plain "
              "destructors 0");
}

TEST_F(XYLSEHandlerDeathTest, StackOverflowIsReportedAndEndsTheProcess) {
  abortMode("1:65535");
  EXPECT_EXIT(faultOverflow(), testing::ExitedWithCode(128 + SIGSEGV),
              "Please consult the generated dump file '.*_seh_[0-9]+_[0-9]+\\.dmp' for details\\.");
  EXPECT_NE(std::string::npos, log().find("Exception code: 0xc00000fd")) << log();
  EXPECT_NE(std::string::npos, log().find("STACK_OVERFLOW")) << log();
  EXPECT_NE(std::string::npos, log().find("recurseForever")) << log();
}

TEST_F(XYLSEHandlerDeathTest, StackOverflowOnAnXYLThreadIsReported) {
  abortMode("1:65535");
  EXPECT_EXIT(faultOnThread(faultOverflow), testing::ExitedWithCode(128 + SIGSEGV),
              "Please consult the generated dump file");
  EXPECT_NE(std::string::npos, log().find("STACK_OVERFLOW")) << log();
}

TEST_F(XYLSEHandlerDeathTest, DumpAndExitWritesTheMessageAndAReportNamingFunctionAndLine) {
  abortMode("2:65535");
  std::string dump = m_dir + "/" + programName() + "_seh_[0-9]+_[0-9]+\\.dmp";
  EXPECT_EXIT(faultNullStore(), testing::ExitedWithCode(128 + SIGSEGV),
              "^A win32 structured exception has been generated by a component inside Qorvane 8 Server\\.  Please "
              "consult the generated dump file '" +
                  dump + "' for details\\.\n$");
  std::string report = log();
  std::string frame = programName() +
                      "!(anonymous namespace)::storeThroughNull( ... ) Line: " + std::to_string(kNullStoreLine) +
                      " File: ";
  EXPECT_NE(std::string::npos, report.find(frame)) << report;
  EXPECT_NE(std::string::npos, report.find("\nCall stack:\n  0 0x")) << report;
  EXPECT_NE(std::string::npos, report.find("CS:EIP:0033:")) << report;
  EXPECT_NE(std::string::npos, report.find("Address   Frame     Logical addr  Module\n")) << report;
}

// Why dumps cannot be checked in this build, or null.
const char *dumpSkipReason() {
#if defined(__SANITIZE_ADDRESS__)
  return "AddressSanitizer reserves terabytes of shadow and allocator space: a core of this process is a "
         "multi-terabyte sparse file that takes minutes to write";
#else
  return runCommand("command -v gdb").empty() ? "gdb is not installed" : nullptr;
#endif
}

// One fault per test: the re-executed child replays the test body up to
// its death statement, so nothing may run between two of them.
TEST_F(XYLSEHandlerDeathTest, FullMemoryDumpOpensInGdbAtTheFaultingFrame) {
  if (const char *reason = dumpSkipReason())
    GTEST_SKIP() << reason;
  abortMode("2:2");
  EXPECT_EXIT(faultNullStore(), testing::ExitedWithCode(128 + SIGSEGV), "dump file");
  expectDumpShowsFault();
}

TEST_F(XYLSEHandlerDeathTest, DumpOfAnXYLThreadOpensInGdbAtTheFaultingThread) {
  if (const char *reason = dumpSkipReason())
    GTEST_SKIP() << reason;
  abortMode("2:0");
  EXPECT_EXIT(faultOnThread(faultNullStore), testing::ExitedWithCode(128 + SIGSEGV), "dump file");
  expectDumpShowsFault();
}

TEST_F(XYLSEHandlerDeathTest, DebuggingModeWritesTheBannerAndDiesOfTheSignal) {
  abortMode("Y");
  EXPECT_EXIT(faultDivideByZero(), testing::KilledBySignal(SIGFPE),
              "\n========================================================\n"
              "XYL Win32 Hardware Exception Handler Enabled\n\nXYL caught the following win32 exception using\n"
              "      XYLWin32SEHHandler::qorThreadWin32SEHTranslator\nException code: 0xc0000094\n"
              ".*INT_DIVIDE_BY_ZERO.*\n    set XYL_HWE_ABORT=Y\n");
  EXPECT_TRUE(files(".log").empty());
}

TEST_F(XYLSEHandlerDeathTest, ReportWithoutHeapMemoryIsAnnouncedAndTheFaultStillThrown) {
  abortMode("1:65535");
  EXPECT_EXIT(
      {
        xyltest::AllocationFailure noHeap(1, true);
        catchFault(faultNullStore);
      },
      testing::ExitedWithCode(0),
      "XYLWin32SEHHandler::XYLWin32SEHHandler\\(LPEXCEPTION_POINTERS lpep\\) failed when allocating some heap "
      "memory for reporting!\ncaught -1073741819 destructors 2 trace \\(none\\) report:\\(null\\)");
}

TEST_F(XYLSEHandlerDeathTest, MissingWriterIsReportedAndTheHandlerReportsRawAddresses) {
  setenv("XYL_DUMP_WRITER", "/nonexistent/XYLWriteDump", 1);
  abortMode("1:0");
  EXPECT_EXIT(
      catchFault(faultNullStore), testing::ExitedWithCode(0),
      "could not start the dump writer '/nonexistent/XYLWriteDump': No such file or directory\n"
      "caught -1073741819 destructors 2 .*ACCESS_VIOLATION.*  0 0x[0-9a-f]{8,} UNKNOWN!UNKNOWN\\( \\.\\.\\. \\)");
  EXPECT_NE(std::string::npos, log().find("UNKNOWN!UNKNOWN( ... )")) << log();
  EXPECT_TRUE(files(".dmp").empty());
}

} // namespace
