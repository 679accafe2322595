// SPDX-License-Identifier: Apache-2.0
#include "dumpwriter_report.h"

#include <cstdarg>
#include <cstdio>
#include <sys/ucontext.h>

namespace xyl_dumpwriter {

namespace {

const char kReportFrame[] = "\n=====================================================\n";

void appendf(std::string &out, const char *format, ...) __attribute__((format(printf, 2, 3)));

void appendf(std::string &out, const char *format, ...) {
  va_list ap;
  va_start(ap, format);
  va_list again;
  va_copy(again, ap);
  int n = std::vsnprintf(nullptr, 0, format, ap);
  va_end(ap);
  if (n > 0) {
    std::size_t start = out.size();
    out.resize(start + static_cast<std::size_t>(n) + 1);
    std::vsnprintf(&out[start], static_cast<std::size_t>(n) + 1, format, again);
    out.resize(start + static_cast<std::size_t>(n));
  }
  va_end(again);
}

const char *orUnknown(const std::string &text) { return text.empty() ? "UNKNOWN" : text.c_str(); }

bool endsWith(const std::string &text, std::size_t end, const char *suffix) {
  std::size_t n = std::char_traits<char>::length(suffix);
  return end >= n && text.compare(end - n, n, suffix) == 0;
}

} // namespace

std::string functionWithoutParameters(const std::string &demangled) {
  // Drop trailing qualifiers of a member function, then the balanced
  // parameter list before them.
  std::size_t end = demangled.size();
  static const char *const kQualifiers[] = {" const", " volatile", " &&", " &", " noexcept"};
  for (bool again = true; again;) {
    again = false;
    for (const char *qualifier : kQualifiers)
      if (endsWith(demangled, end, qualifier)) {
        end -= std::char_traits<char>::length(qualifier);
        again = true;
      }
  }
  if (end == 0 || demangled[end - 1] != ')')
    return demangled;
  int depth = 0;
  for (std::size_t i = end; i-- > 0;) {
    if (demangled[i] == ')')
      ++depth;
    else if (demangled[i] == '(' && --depth == 0)
      return i > 0 ? demangled.substr(0, i) : demangled;
  }
  return demangled;
}

std::string composeReport(const xyl_seh::FaultRecord &record, const std::vector<Frame> &frames) {
  std::string out(kReportFrame);
  appendf(out, "Exception code: 0x%x\nException address: 0x%llx\n", record.exceptionCode,
          static_cast<unsigned long long>(record.gregs[REG_RIP]));
  out += record.description;
  out += "\n\nCall stack:\n";
  int number = 0;
  for (const Frame &frame : frames) {
    appendf(out, "%3d 0x%08llx %s!%s( ... )", number++, static_cast<unsigned long long>(frame.pc),
            orUnknown(frame.module), orUnknown(frame.function));
    if (frame.line > 0)
      appendf(out, " Line: %d", frame.line);
    if (!frame.file.empty())
      appendf(out, " File: %s", frame.file.c_str());
    out += '\n';
  }
  out += kReportFrame;
  return out;
}

std::string composeRegisterDump(const xyl_seh::FaultRecord &record, const std::vector<Frame> &frames) {
  // x86-64 saves CS, GS and FS packed in one word; DS and ES are not saved
  // (they are unused in 64-bit mode) and print as 0.
  unsigned long long segments = record.gregs[REG_CSGSFS];
  unsigned cs = static_cast<unsigned>(segments & 0xFFFF);
  unsigned gs = static_cast<unsigned>((segments >> 16) & 0xFFFF);
  unsigned fs = static_cast<unsigned>((segments >> 32) & 0xFFFF);
  std::string out;
  appendf(out, "CS:EIP:%04X:%08llX\n", cs, static_cast<unsigned long long>(record.gregs[REG_RIP]));
  appendf(out, "DS:%04X  ES:%04X  FS:%04X  GS:%04X\n", 0u, 0u, fs, gs);
  out += "Address   Frame     Logical addr  Module\n";
  for (const Frame &frame : frames)
    appendf(out, "%08llX  %08llX  %04X:%08llX %s\n", static_cast<unsigned long long>(frame.pc),
            static_cast<unsigned long long>(frame.cfa), static_cast<unsigned>(frame.section),
            static_cast<unsigned long long>(frame.sectionOffset), orUnknown(frame.module));
  return out;
}

} // namespace xyl_dumpwriter
