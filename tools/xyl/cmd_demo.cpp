// SPDX-License-Identifier: Apache-2.0
// xyl demo: a short tour of what the library offers, each step printing
// what it did.
#include "xyl_commands.h"
#include "xyl_io.h"

#include <XYLCore/Core/xylcore.h>
#include <XYLCore/ExceptionHierarchy/XYLErrors.h>
#include <XYLCore/ThreadPools/XYLThreadPoolQueued.h>
#include <XYLCore/Threads/XYLThread.h>
#include <XYLCore/Threads/XYLThreadRunnable.h>
#include <XYLCore/Types/XYLByteBuffer.h>
#include <XYLCore/Utility/XYLSquisher.h>
#include <XYLCore/Utility/XYLUtCrc32.h>
#include <XYLCore/Utility/XYLUtSystemInfo.h>
#include <XYLCore/Utility/XYLUtTimer.h>
#include <XYLCore/Utility/xylbase64.h>
#include <XYLCore/XYLCustodian/XYLCustodian.h>
#include <XYLCore/XYLCustodian/XYLCustodianTask.h>

#include <cstdio>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

namespace xyltool {

namespace {

void section(const char *title) { std::printf("\n== %s\n", title); }

void showVersion() {
  section("library");
  int major = 0, minor = 0;
  xylGetApiVersion(&major, &minor);
  std::printf("API version %d.%d; compatible with 1.0: %s; with 1.1: %s\n", major, minor,
              xylIsCompatibleWith(1, 0) == 0 ? "yes" : "no", xylIsCompatibleWith(1, 1) == 0 ? "yes" : "no");
  std::printf("host %s, process %lu, local time %s\n", XYLUtSystemInfo::getMachine().c_str(),
              XYLUtSystemInfo::getProcessId(), XYLUtSystemInfo::getTimeStamp(1).c_str());
}

void showByteBuffer() {
  section("byte buffer");
  XYLByteBuffer buffer(0, 16);
  buffer << "  items=" << 42 << ", missing=" << static_cast<const char *>(nullptr) << "  ";
  buffer.trim();
  buffer.setHexRadix(1);
  buffer << ", mask=0x" << 48879;
  buffer.printf(", ratio=%.3f", 2.0 / 3.0);
  std::printf("%s (%u bytes)\n", buffer.str(), buffer.pcount());
}

void showCodecs() {
  section("Base64, squisher, CRC-32");
  const char text[] = "XYLCore turns text into compact, checksummed tokens. XYLCore turns text into tokens.";
  std::vector<char> base64(XYLBase64EncodedSize(sizeof text - 1));
  XYLBase64Encode(reinterpret_cast<const unsigned char *>(text), sizeof text - 1, base64.data());
  std::printf("Base64 (%zu chars): %.40s...\n", std::strlen(base64.data()), base64.data());

  std::unique_ptr<char[]> token(XYLSquisher::squish(text));
  std::unique_ptr<char[]> back(token ? XYLSquisher::unSquish(token.get()) : nullptr);
  std::printf("squished %zu bytes into a %zu-character token: %s\n", sizeof text - 1, std::strlen(token.get()),
              token.get());
  std::printf("unsquished back: %s\n", back && std::strcmp(back.get(), text) == 0 ? "identical" : "DIFFERENT");
  unsigned long crc = XYLUtCrc32::crc32(0, reinterpret_cast<const unsigned char *>("123456789"), 9);
  std::printf("CRC-32 of \"123456789\": %08lx\n", crc);
}

void checkSize(int size) {
  if (size < 0)
    XYL_THROW(XYLIllegalArgumentError(22, "the demo asked for a negative size"));
}

// Two library levels, each passing the failure on with its own trace line.
void reserveItems(int size) {
  try {
    checkSize(size);
  } catch (XYLThrowable &e) {
    XYL_RETHROW(e);
  }
}

void failingOperation() {
  try {
    reserveItems(-1);
  } catch (XYLThrowable &e) {
    XYL_RETHROW(e);
  }
}

void showExceptions() {
  section("exceptions");
  try {
    failingOperation();
  } catch (XYLRuntimeError &e) {
    std::printf("caught %s, severity %s, code %s, %zu trace lines\n", e.getThrowableName(),
                XYLThrowable::getSeverityName(e.getSeverity()), e.getErrorCodeString(), e.getBackTrace().size());
    std::printf("%s\n", e.toString());
  }
}

class PrintTask : public XYLThreadRunnable {
public:
  explicit PrintTask(int number) : m_number(number) {}
  void run() override { std::printf("pool task %d ran on thread %lu\n", m_number, XYLThread::currentThreadId()); }

private:
  int m_number;
};

class Housekeeping : public XYLCustodianTask {
public:
  int doTask(int terminating) override {
    std::printf("the custodian called its task (terminating=%d)\n", terminating);
    return 0;
  }
};

void showPoolAndCustodian() {
  section("thread pool and custodian");
  xylInitialize();
  // The tasks outlive the pool: its destructor still runs what is queued.
  PrintTask tasks[] = {PrintTask(1), PrintTask(2), PrintTask(3), PrintTask(4)};
  {
    XYLThreadPoolQueued pool(2, 8, 1); // 2 workers, 8 queue slots, drain on shutdown
    for (PrintTask &task : tasks)
      pool.execute(&task, 4294967295ul);
  } // the pool runs what is queued, then joins its workers
  Housekeeping housekeeping;
  std::printf("custodian period %lu ms; task registered: %d\n", XYLCustodian::getSchedule(),
              XYLCustodian::registerTask(&housekeeping));
  xylTerminate(); // the custodian's last cycle runs with terminating=1
}

} // namespace

int runDemo(int argc, char **argv) {
  std::vector<std::string> operands;
  if (!parseValueOptions(argc, argv, nullptr, 0, operands))
    return usage(*findCommand("demo"));
  if (!operands.empty()) {
    std::fprintf(stderr, "%s: unexpected argument '%s'\n", argv[0], operands[0].c_str());
    return usage(*findCommand("demo"));
  }
  XYLUtTimer timer;
  timer.start();
  showVersion();
  showByteBuffer();
  showCodecs();
  showExceptions();
  showPoolAndCustodian();
  section("timer");
  std::printf("the tour took %s\n", timer.getTimes(1));
  return kSuccess;
}

} // namespace xyltool
