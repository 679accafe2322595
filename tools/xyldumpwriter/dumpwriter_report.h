/* SPDX-License-Identifier: Apache-2.0 */
// dumpwriter_report.h - the texts the dump writer produces from a fault
// record: the stack report (also the message of XYLWin32SEHError) and the
// register dump that follows it in the log. Pure functions over the record
// and the symbolised frames, so that they can be tested without a fault.
#ifndef XYLCORE_TOOLS_XYLDUMPWRITER_DUMPWRITER_REPORT_H
#define XYLCORE_TOOLS_XYLDUMPWRITER_DUMPWRITER_REPORT_H

#include "QorThread/posix/xylsehandler_record.h"

#include <cstdint>
#include <string>
#include <vector>

namespace xyl_dumpwriter {

// One frame after symbolisation; empty texts and 0 mean unknown.
struct Frame {
  std::uint64_t pc = 0;  // the faulting instruction or a return address
  std::uint64_t cfa = 0; // the frame's canonical frame address
  std::string module;    // file name of the module, without directory
  std::string function;  // demangled, without its parameter list
  std::string file;      // source file
  int line = 0;
  int section = 0;                 // ELF section index of pc
  std::uint64_t sectionOffset = 0; // pc's offset in that section
};

// "ns::Type<int>::run(int) const" -> "ns::Type<int>::run"; a name without a
// parameter list is returned as it is.
std::string functionWithoutParameters(const std::string &demangled);

// The report: framing line, "Exception code: 0x%x", "Exception address:
// 0x%x", the record's description, "Call stack:" with one line
// "%3d 0x%08x %s!%s( ... )" per frame (" Line: %d File: %s" when known,
// "UNKNOWN" for a missing module or function), framing line.
std::string composeReport(const xyl_seh::FaultRecord &record, const std::vector<Frame> &frames);

// "CS:EIP:%04X:%08X", "DS:%04X  ES:%04X  FS:%04X  GS:%04X", then
// "Address   Frame     Logical addr  Module" and one line per frame.
std::string composeRegisterDump(const xyl_seh::FaultRecord &record, const std::vector<Frame> &frames);

} // namespace xyl_dumpwriter

#endif // XYLCORE_TOOLS_XYLDUMPWRITER_DUMPWRITER_REPORT_H
