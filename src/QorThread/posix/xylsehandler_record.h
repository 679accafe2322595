/* SPDX-License-Identifier: Apache-2.0 */
// xylsehandler_record.h - the fault record: what the signal handler leaves
// in a record reserved in advance (never on the signal stack, which may be
// small) for the dump writer (tools/xyldumpwriter), which finds it
// through the address on its command line and reads it, and writes the
// report back into it, with process_vm_readv/process_vm_writev.
//
// Both sides are built from this one definition; the magic and the version
// catch a writer that does not match the library. Plain data only.
#ifndef XYLCORE_SRC_QORTHREAD_POSIX_XYLSEHANDLER_RECORD_H
#define XYLCORE_SRC_QORTHREAD_POSIX_XYLSEHANDLER_RECORD_H

#include <cstddef>
#include <cstdint>

namespace xyl_seh {

constexpr std::uint32_t kRecordMagic = 0x48455358u; // "XSEH"
constexpr std::uint32_t kRecordVersion = 2;
constexpr int kMaxFrames = 64;
constexpr int kGeneralRegisters = 23; // x86-64 mcontext_t gregs, in REG_ order
constexpr std::size_t kPathCapacity = 1024;
constexpr std::size_t kDescriptionCapacity = 2048;
constexpr std::size_t kReportCapacity = 16384;

// Dump types the writer knows besides the full-memory bit.
constexpr std::uint32_t kFullMemoryBit = 0x2;
constexpr std::uint32_t kReportOnly = 0xFFFF;

struct FaultRecord {
  std::uint32_t magic;
  std::uint32_t version;
  std::int32_t processId;
  std::int32_t threadId;
  std::int32_t signalNumber;
  std::int32_t signalCode;
  std::uint32_t exceptionCode; // the 32-bit code of the exception table
  std::uint32_t dumpType;
  std::uint64_t faultAddress; // si_addr
  std::uint64_t gregs[kGeneralRegisters];
  std::uint32_t stackOverflow;
  std::uint32_t frameCount;
  // frames[0] is the faulting instruction, later entries are return
  // addresses; frameCfa holds each frame's canonical frame address.
  std::uint64_t frames[kMaxFrames];
  std::uint64_t frameCfa[kMaxFrames];
  // "Exception: ACCESS_VIOLATION (...)", or what ended the process when
  // std::terminate was called (the uncaught exception, a pure virtual call).
  char description[kDescriptionCapacity];
  char logPath[kPathCapacity];
  char dumpPath[kPathCapacity];
  // Written by the dump writer.
  std::uint32_t reportLength;
  std::uint32_t reserved;
  char report[kReportCapacity];
};

} // namespace xyl_seh

#endif // XYLCORE_SRC_QORTHREAD_POSIX_XYLSEHANDLER_RECORD_H
