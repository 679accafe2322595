// SPDX-License-Identifier: Apache-2.0
// xyl crash: makes a real fault under the fault handler, to show what each
// XYL_HWE_ABORT mode does with it.
//
//   xyl crash --mode 1|2|Y --kind segv|fpe|overflow [--dump-type T]
//
// Mode 1 catches the fault as XYLWin32SEHError, prints its code and report
// and how many destructors ran on the way, and exits 0 (an overflow cannot
// be caught: the process ends as in mode 2). Mode 2 writes the dump and the
// message and exits with 128 + the signal. Y prints the debugging banner and
// dies of the signal. The dump writer is looked up as the library does (next
// to libXYLCore, or XYL_DUMP_WRITER); files go to XYL_DUMP_DIR or the working
// directory. This file is built with -fnon-call-exceptions.
#include "xyl_commands.h"
#include "xyl_io.h"

#include <XYLCore/ExceptionHierarchy/XYLErrors.h>
#include <XYLCore/QorThread/XYLWin32SEHHandler.h>

#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

// The faults below are meant to reach the hardware: no sanitizer check may
// catch them first.
#define XYL_REAL_FAULT __attribute__((noinline, no_sanitize("address", "undefined")))

namespace xyltool {

namespace {

int g_destructorsRun = 0;

// Counts its destruction, so that the tool can show the unwinding.
struct Witness {
  ~Witness() { ++g_destructorsRun; }
};

XYL_REAL_FAULT int readThroughNull(volatile int *pointer) {
  Witness witness;
  return *pointer;
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

int fault(const std::string &kind) {
  Witness outer;
  if (kind == "segv") {
    volatile int *volatile nowhere = nullptr;
    return readThroughNull(nowhere);
  }
  if (kind == "fpe") {
    volatile int zero = 0;
    return divideByZero(1, &zero);
  }
  return recurseForever(0);
}

} // namespace

int runCrash(int argc, char **argv) {
  std::string mode;
  std::string kind;
  std::string dumpType = "2";
  const ValueOption options[] = {
      {"--mode", &mode, nullptr}, {"--kind", &kind, nullptr}, {"--dump-type", &dumpType, nullptr}};
  std::vector<std::string> operands;
  if (!parseValueOptions(argc, argv, options, 3, operands) || !operands.empty() ||
      (mode != "1" && mode != "2" && mode != "Y" && mode != "y") ||
      (kind != "segv" && kind != "fpe" && kind != "overflow"))
    return usage(*findCommand("crash"));

  std::string value = mode == "Y" || mode == "y" ? mode : mode + ":" + dumpType;
  if (!XYLWin32SEHHandler::configure(value.c_str())) {
    std::fprintf(stderr, "xyl crash: XYL_HWE_ABORT=%s enables nothing\n", value.c_str());
    return kBadUsage;
  }
  std::printf("xyl crash: XYL_HWE_ABORT=%s, fault: %s\n", value.c_str(), kind.c_str());
  std::fflush(stdout);
  try {
    int result = fault(kind);
    std::printf("xyl crash: no fault happened (%d)\n", result);
    return kBadData;
  } catch (XYLWin32SEHError &error) {
    std::printf("caught %s %s (destructors run: %d)\n%s\n", error.getThrowableName(), error.getErrorCodeString(),
                g_destructorsRun, error.getMessage() != nullptr ? error.getMessage() : "(no report)");
    return kSuccess;
  }
}

} // namespace xyltool
