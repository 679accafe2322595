// SPDX-License-Identifier: Apache-2.0
// xylsehandler_context_x86_64.h - the one place where the fault handler
// reads the machine context of a fault (x86-64 ucontext_t). Everything here
// is signal-safe and tolerates a null context.
#ifndef XYLCORE_SRC_QORTHREAD_POSIX_XYLSEHANDLER_CONTEXT_X86_64_H
#define XYLCORE_SRC_QORTHREAD_POSIX_XYLSEHANDLER_CONTEXT_X86_64_H

#include "QorThread/posix/xylsehandler_record.h"

#include <cstdint>
#include <ucontext.h>

#if !defined(__x86_64__)
#error "the fault handler reads x86-64 machine contexts only"
#endif

namespace xyl_seh {

inline std::uint64_t contextPc(const ucontext_t *uc) {
  return uc != nullptr ? static_cast<std::uint64_t>(uc->uc_mcontext.gregs[REG_RIP]) : 0;
}

inline std::uint64_t contextSp(const ucontext_t *uc) {
  return uc != nullptr ? static_cast<std::uint64_t>(uc->uc_mcontext.gregs[REG_RSP]) : 0;
}

// The x87 status word with MXCSR's six exception flags.
inline unsigned int contextFpuStatus(const ucontext_t *uc) {
  if (uc == nullptr || uc->uc_mcontext.fpregs == nullptr)
    return 0;
  return static_cast<unsigned int>(uc->uc_mcontext.fpregs->swd) | (uc->uc_mcontext.fpregs->mxcsr & 0x3Fu);
}

// The general registers in REG_ order, as the dump writer prints them.
inline void copyGeneralRegisters(const ucontext_t *uc, std::uint64_t (&gregs)[kGeneralRegisters]) {
  for (int i = 0; i < kGeneralRegisters; ++i)
    gregs[i] = uc != nullptr && i < NGREG ? static_cast<std::uint64_t>(uc->uc_mcontext.gregs[i]) : 0;
}

inline void setRecordPc(std::uint64_t (&gregs)[kGeneralRegisters], std::uint64_t pc) { gregs[REG_RIP] = pc; }
inline std::uint64_t recordPc(const std::uint64_t (&gregs)[kGeneralRegisters]) { return gregs[REG_RIP]; }

// A breakpoint trap leaves the program counter after the one-byte int3;
// the fault is the instruction itself.
inline std::uint64_t breakpointAddress(std::uint64_t pc) {
  return pc > 0 && *reinterpret_cast<const volatile unsigned char *>(pc - 1) == 0xCC ? pc - 1 : pc;
}

} // namespace xyl_seh

#endif // XYLCORE_SRC_QORTHREAD_POSIX_XYLSEHANDLER_CONTEXT_X86_64_H
