// SPDX-License-Identifier: Apache-2.0
// XYLWriteDump: the external dump writer that libXYLCore's fault handler
// starts when a thread faults.
//
//   XYLWriteDump <process id> <thread id> <record address> <dump type>
//
// The faulting thread waits in its signal handler while this program
//   1. reads the fault record at <record address> in the process
//      (process_vm_readv; the handler allowed us to trace it);
//   2. symbolises the captured frames with elfutils' libdwfl over the
//      process's own maps: module, function, source file and line;
//   3. writes the report back into the record (the text of
//      XYLWin32SEHError) and appends it, with the register dump, to the log
//      named in the record ("<dir>/<program>_seh_<pid>.log");
//   4. writes the dump named in the record ("..._seh_<pid>_<tid>.dmp") as a
//      core file with gdb's gcore, the faulting thread first so that
//      `gdb <program> <dump>` starts on it. Dump type 2 (bit 0x2) dumps all
//      memory the process wrote (file mappings that were only read stay
//      out: gdb reads them from the files); other types dump what the
//      process's coredump_filter names (by default anonymous memory and ELF
//      headers); 0xFFFF writes no dump.
//
// Exit codes: 0 report and dump written; 1 report written, dump not;
// 2 the record could not be read; 3 bad usage.
//
// This program does not link libXYLCore: a fault in it must not start
// another writer.
#include "dumpwriter_report.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <cxxabi.h>
#include <elfutils/libdwfl.h>
#include <fcntl.h>
#include <memory>
#include <string>
#include <sys/stat.h>
#include <sys/uio.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace {

using xyl_dumpwriter::Frame;
using xyl_seh::FaultRecord;

constexpr int kExitDone = 0;
constexpr int kExitNoDump = 1;
constexpr int kExitNoRecord = 2;
constexpr int kExitUsage = 3;

bool parseNumber(const char *text, unsigned long long *value) {
  if (text == nullptr || *text == '\0')
    return false;
  char *end = nullptr;
  errno = 0;
  *value = std::strtoull(text, &end, 10);
  return errno == 0 && end != nullptr && *end == '\0';
}

bool readRemote(pid_t pid, std::uint64_t address, void *target, std::size_t size) {
  iovec local = {target, size};
  iovec remote = {reinterpret_cast<void *>(address), size};
  return process_vm_readv(pid, &local, 1, &remote, 1, 0) == static_cast<ssize_t>(size);
}

bool writeRemote(pid_t pid, std::uint64_t address, const void *source, std::size_t size) {
  iovec local = {const_cast<void *>(source), size};
  iovec remote = {reinterpret_cast<void *>(address), size};
  return process_vm_writev(pid, &local, 1, &remote, 1, 0) == static_cast<ssize_t>(size);
}

std::string baseName(const char *path) {
  if (path == nullptr)
    return std::string();
  const char *slash = std::strrchr(path, '/');
  return slash != nullptr ? slash + 1 : path;
}

std::string demangle(const char *symbol) {
  // "__libc_start_main@@GLIBC_2.34": the version is not part of the name.
  std::string name(symbol);
  std::string::size_type at = name.find('@');
  if (at != std::string::npos && at > 0)
    name.erase(at);
  int status = 0;
  char *plain = abi::__cxa_demangle(name.c_str(), nullptr, nullptr, &status);
  std::string result = status == 0 && plain != nullptr ? plain : name;
  std::free(plain);
  return xyl_dumpwriter::functionWithoutParameters(result);
}

// Module, function, file and line of addresses in a live process.
class Symbolizer {
public:
  explicit Symbolizer(pid_t pid) : m_dwfl(dwfl_begin(&callbacks())) {
    if (m_dwfl == nullptr)
      return;
    dwfl_report_begin(m_dwfl);
    int rc = dwfl_linux_proc_report(m_dwfl, pid);
    dwfl_report_end(m_dwfl, nullptr, nullptr);
    if (rc != 0) {
      std::fprintf(stderr, "XYLWriteDump: cannot read the modules of process %d: %s\n", static_cast<int>(pid),
                   rc > 0 ? std::strerror(rc) : dwfl_errmsg(-1));
      dwfl_end(m_dwfl);
      m_dwfl = nullptr;
    }
  }
  ~Symbolizer() {
    if (m_dwfl != nullptr)
      dwfl_end(m_dwfl);
  }
  Symbolizer(const Symbolizer &) = delete;
  Symbolizer &operator=(const Symbolizer &) = delete;

  // A return address is looked up one byte back, inside the call.
  Frame lookup(std::uint64_t pc, std::uint64_t cfa, bool returnAddress) {
    Frame frame;
    frame.pc = pc;
    frame.cfa = cfa;
    if (m_dwfl == nullptr)
      return frame;
    Dwarf_Addr address = returnAddress && pc > 0 ? pc - 1 : pc;
    Dwfl_Module *module = dwfl_addrmodule(m_dwfl, address);
    if (module == nullptr)
      return frame;
    const char *mainFile = nullptr;
    const char *name = dwfl_module_info(module, nullptr, nullptr, nullptr, nullptr, nullptr, &mainFile, nullptr);
    frame.module = baseName(mainFile != nullptr ? mainFile : name);
    GElf_Off offset = 0;
    GElf_Sym symbol;
    const char *symbolName = dwfl_module_addrinfo(module, address, &offset, &symbol, nullptr, nullptr, nullptr);
    if (symbolName != nullptr)
      frame.function = demangle(symbolName);
    if (Dwfl_Line *line = dwfl_module_getsrc(module, address)) {
      Dwarf_Addr lineAddress = 0;
      int lineNumber = 0;
      const char *source = dwfl_lineinfo(line, &lineAddress, &lineNumber, nullptr, nullptr, nullptr);
      // The nearest line record may belong to code before the symbol (a
      // function without debug information follows one with it).
      bool ownLine = symbolName == nullptr || lineAddress >= address - offset;
      if (ownLine) {
        frame.line = lineNumber;
        if (source != nullptr)
          frame.file = source;
      }
    }
    Dwarf_Addr relative = pc;
    Dwarf_Addr bias = 0;
    if (Elf_Scn *section = dwfl_module_address_section(module, &relative, &bias)) {
      frame.section = static_cast<int>(elf_ndxscn(section));
      frame.sectionOffset = relative;
    }
    return frame;
  }

private:
  static const Dwfl_Callbacks &callbacks() {
    static char *debugInfoPath = nullptr;
    static const Dwfl_Callbacks value = {dwfl_linux_proc_find_elf, dwfl_standard_find_debuginfo, nullptr,
                                         &debugInfoPath};
    return value;
  }

  Dwfl *m_dwfl;
};

void appendToLog(const char *path, const std::string &text) {
  int fd = open(path, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644);
  if (fd < 0) {
    std::fprintf(stderr, "XYLWriteDump: cannot open the log '%s': %s\n", path, std::strerror(errno));
    return;
  }
  // One write, so that reports of threads that fault together do not mix.
  if (write(fd, text.data(), text.size()) != static_cast<ssize_t>(text.size()))
    std::fprintf(stderr, "XYLWriteDump: cannot write the log '%s': %s\n", path, std::strerror(errno));
  close(fd);
}

bool readFile(const std::string &path, std::string *text) {
  FILE *file = std::fopen(path.c_str(), "re");
  if (file == nullptr)
    return false;
  char buffer[64];
  std::size_t n = std::fread(buffer, 1, sizeof buffer - 1, file);
  std::fclose(file);
  text->assign(buffer, n);
  return true;
}

bool writeFile(const std::string &path, const std::string &text) {
  FILE *file = std::fopen(path.c_str(), "we");
  if (file == nullptr)
    return false;
  bool ok = std::fwrite(text.data(), 1, text.size(), file) == text.size();
  return std::fclose(file) == 0 && ok;
}

// The process's coredump_filter, set for the time of one dump and then put
// back as it was.
class CoreFilter {
public:
  CoreFilter(pid_t pid, const char *value) : m_path("/proc/" + std::to_string(pid) + "/coredump_filter") {
    std::string text;
    if (!readFile(m_path, &text))
      return;
    // The kernel prints the filter in hex without a prefix and reads it
    // back as C does: with its leading zeros it would be taken as octal.
    std::string digits = text.substr(0, text.find_first_not_of("0123456789abcdefABCDEF"));
    if (!digits.empty() && writeFile(m_path, value))
      m_saved = "0x" + digits;
  }
  ~CoreFilter() {
    if (!m_saved.empty() && !writeFile(m_path, m_saved))
      std::fprintf(stderr, "XYLWriteDump: cannot restore '%s' to %s: %s\n", m_path.c_str(), m_saved.c_str(),
                   std::strerror(errno));
  }
  CoreFilter(const CoreFilter &) = delete;
  CoreFilter &operator=(const CoreFilter &) = delete;

private:
  std::string m_path;
  std::string m_saved;
};

// Runs gdb to write the core file; its output is shown only when no dump
// came out of it.
bool writeDump(pid_t pid, pid_t tid, const char *path, unsigned dumpType) {
  unlink(path);
  std::unique_ptr<CoreFilter> filter;
  // Memory the process wrote: anonymous mappings, private and shared, the
  // written pages of private file mappings and huge pages. Mappings of
  // files that were only read (code, ICU's data) stay out: a debugger reads
  // them from the files.
  if ((dumpType & xyl_seh::kFullMemoryBit) != 0)
    filter.reset(new CoreFilter(pid, "0x63"));

  std::string attach = "attach " + std::to_string(pid);
  std::string selectThread = "python import gdb; [t.switch() for t in gdb.selected_inferior().threads() if "
                             "t.ptid[1] == " +
                             std::to_string(tid) + "]";
  std::string gcore = std::string("gcore ") + path;
  // The libraries' symbols are not needed to write the core, and loading
  // them takes most of gdb's time: whoever opens the dump loads them.
  const char *argv[] = {"gdb",    "-nx",
                        "-batch", "-q",
                        "-iex",   "set auto-solib-add off",
                        "-ex",    "set pagination off",
                        "-ex",    "set use-coredump-filter on",
                        "-ex",    attach.c_str(),
                        "-ex",    selectThread.c_str(),
                        "-ex",    gcore.c_str(),
                        "-ex",    "detach",
                        nullptr};
  int output[2];
  if (pipe2(output, O_CLOEXEC) != 0)
    return false;
  pid_t child = fork();
  if (child < 0) {
    close(output[0]);
    close(output[1]);
    return false;
  }
  if (child == 0) {
    int nullFd = open("/dev/null", O_RDONLY);
    if (nullFd >= 0)
      dup2(nullFd, STDIN_FILENO);
    dup2(output[1], STDOUT_FILENO);
    dup2(output[1], STDERR_FILENO);
    execvp(argv[0], const_cast<char *const *>(argv));
    std::fprintf(stderr, "cannot start gdb: %s\n", std::strerror(errno));
    _exit(127);
  }
  close(output[1]);
  std::string gdbOutput;
  char buffer[4096];
  for (;;) {
    ssize_t n = read(output[0], buffer, sizeof buffer);
    if (n > 0)
      gdbOutput.append(buffer, static_cast<std::size_t>(n));
    else if (n == 0 || errno != EINTR)
      break;
  }
  close(output[0]);
  int status = 0;
  while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
  }
  filter.reset();
  struct stat info;
  bool written = stat(path, &info) == 0 && info.st_size > 0;
  if (!written)
    std::fprintf(stderr, "XYLWriteDump: gdb did not write the dump '%s':\n%s\n", path, gdbOutput.c_str());
  return written;
}

} // namespace

int main(int argc, char **argv) {
  unsigned long long pidValue = 0, tidValue = 0, address = 0, dumpType = 0;
  if (argc != 5 || !parseNumber(argv[1], &pidValue) || !parseNumber(argv[2], &tidValue) ||
      !parseNumber(argv[3], &address) || !parseNumber(argv[4], &dumpType)) {
    std::fprintf(stderr, "usage: XYLWriteDump <process id> <thread id> <record address> <dump type>\n");
    return kExitUsage;
  }
  pid_t pid = static_cast<pid_t>(pidValue);
  pid_t tid = static_cast<pid_t>(tidValue);

  static FaultRecord record;
  if (!readRemote(pid, address, &record, sizeof record)) {
    std::fprintf(stderr, "XYLWriteDump: cannot read the fault record of process %d: %s\n", static_cast<int>(pid),
                 std::strerror(errno));
    return kExitNoRecord;
  }
  if (record.magic != xyl_seh::kRecordMagic || record.version != xyl_seh::kRecordVersion || record.processId != pid ||
      record.threadId != tid) {
    std::fprintf(stderr, "XYLWriteDump: no fault record of process %d thread %d at that address\n",
                 static_cast<int>(pid), static_cast<int>(tid));
    return kExitNoRecord;
  }
  record.logPath[sizeof record.logPath - 1] = '\0';
  record.dumpPath[sizeof record.dumpPath - 1] = '\0';
  record.description[sizeof record.description - 1] = '\0';

  std::vector<Frame> frames;
  {
    Symbolizer symbolizer(pid);
    std::uint32_t count = record.frameCount <= static_cast<std::uint32_t>(xyl_seh::kMaxFrames)
                              ? record.frameCount
                              : static_cast<std::uint32_t>(xyl_seh::kMaxFrames);
    for (std::uint32_t i = 0; i < count; ++i)
      frames.push_back(symbolizer.lookup(record.frames[i], record.frameCfa[i], i > 0));
  }

  std::string report = xyl_dumpwriter::composeReport(record, frames);
  std::string text = report.substr(0, xyl_seh::kReportCapacity - 1);
  std::uint32_t length = static_cast<std::uint32_t>(text.size());
  if (!writeRemote(pid, address + offsetof(FaultRecord, report), text.c_str(), text.size() + 1) ||
      !writeRemote(pid, address + offsetof(FaultRecord, reportLength), &length, sizeof length))
    std::fprintf(stderr, "XYLWriteDump: cannot hand the report back to process %d: %s\n", static_cast<int>(pid),
                 std::strerror(errno));
  appendToLog(record.logPath, report + "\n" + xyl_dumpwriter::composeRegisterDump(record, frames));

  if (dumpType == xyl_seh::kReportOnly)
    return kExitDone;
  return writeDump(pid, tid, record.dumpPath, static_cast<unsigned>(dumpType)) ? kExitDone : kExitNoDump;
}
