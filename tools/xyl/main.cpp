// SPDX-License-Identifier: Apache-2.0
// xyl: the command-line front end of libXYLCore.
//
//   xyl <command> [options] [arguments]
//
// Exit codes: 0 success, 1 bad data (undecodable input, unreadable file),
// 2 bad usage.
#include "xyl_commands.h"
#include "xyl_io.h"

#include <cstdio>
#include <cstring>
#include <string>

namespace xyltool {

namespace {
const Command kCommands[] = {
    {"base64", "base64 [-d] [-u] [FILE...]", "encode the input as Base64 (-d decode, -u URL-safe alphabet)", runBase64},
    {"squish", "squish [FILE...]", "turn the input text into a compact checksummed token", runSquish},
    {"unsquish", "unsquish [FILE...]", "turn a token back into its text", runUnsquish},
    {"crc32", "crc32 [FILE...]", "print the CRC-32 of each file (standard input when none)", runCrc32},
    {"crash", "crash --mode 1|2|Y --kind segv|fpe|overflow [--dump-type T]",
     "make a real fault under the fault handler's mode", runCrash},
    {"msgc", "msgc [-o OUT.bmf] SOURCE", "compile a message catalog source (- for standard input) into a .bmf file",
     runMsgc},
    {"msgdump", "msgdump FILE.bmf", "print a message catalog in the source format msgc reads", runMsgdump},
    {"interval", "interval [--locale L] [--style short|long] [--ym YEARS MONTHS | DAYS HOURS MINUTES SECONDS MILLIS]",
     "format a duration for a locale (default en-us, long style)", runInterval},
    {"format-number", "format-number [--locale L] [--pattern P] VALUE...",
     "format decimal numbers for a locale (ICU pattern, OLAP format string or named format)", runFormatNumber},
    {"sort", "sort --locale L [--level 0|1|2|3] [FILE...]",
     "sort the input lines by a locale's collation (level 0 primary .. 3 identical)", runSort},
    {"bidi", "bidi [FILE...]", "print each input line in visual (display) order", runBidi},
    {"format-date", "format-date [--locale L] [--pattern P] [--zone Z] EPOCH_MS...",
     "format times given in milliseconds since 1970 for a locale (default zone UTC)", runFormatDate},
    {"convert", "convert --from ENC --to ENC [--mode escape|replace|substitute|stop] [FILE...]",
     "convert the input from one encoding to another, streaming", runConvert},
    {"normalize", "normalize --form NFC|NFD|NFKC|NFKD [FILE...]", "bring the UTF-8 input text into a normal form",
     runNormalize},
    {"demo", "demo", "a short tour of the library", runDemo},
};

void listCommands(std::FILE *to) {
  std::fputs("usage: xyl <command> [options] [arguments]\n\ncommands:\n", to);
  for (const Command &c : kCommands) {
    if (std::strlen(c.synopsis) <= 22)
      std::fprintf(to, "  %-22s %s\n", c.synopsis, c.summary);
    else // a long synopsis takes a line of its own
      std::fprintf(to, "  %s\n  %-22s %s\n", c.synopsis, "", c.summary);
  }
  std::fputs("\n'xyl <command> --help' describes one command.\n"
             "FILE operands: none or \"-\" reads standard input; output goes to standard output.\n"
             "exit codes: 0 success, 1 bad data, 2 bad usage\n"
             "A progress line shows on standard error (when it is a terminal, or\n"
             "XYL_PROGRESS=always) while an input over 4 MiB is read.\n",
             to);
}
} // namespace

const Command *commands(int *count) {
  *count = static_cast<int>(sizeof kCommands / sizeof kCommands[0]);
  return kCommands;
}

const Command *findCommand(const char *name) {
  for (const Command &c : kCommands)
    if (std::strcmp(c.name, name) == 0)
      return &c;
  return nullptr;
}

int usage(const Command &command) {
  std::fprintf(stderr, "usage: xyl %s\n  %s\n", command.synopsis, command.summary);
  return kBadUsage;
}

} // namespace xyltool

int main(int argc, char **argv) {
  using namespace xyltool;
  if (argc < 2) {
    listCommands(stderr);
    return kBadUsage;
  }
  if (std::strcmp(argv[1], "--help") == 0 || std::strcmp(argv[1], "-h") == 0 || std::strcmp(argv[1], "help") == 0) {
    listCommands(stdout);
    return kSuccess;
  }
  const Command *command = findCommand(argv[1]);
  if (command == nullptr) {
    std::fprintf(stderr, "xyl: unknown command '%s'\n", argv[1]);
    listCommands(stderr);
    return kBadUsage;
  }
  std::string name = std::string("xyl ") + command->name;
  argv[1] = &name[0];
  if (wantsHelp(argc - 1, argv + 1)) {
    std::printf("usage: xyl %s\n  %s\n", command->synopsis, command->summary);
    return kSuccess;
  }
  return command->run(argc - 1, argv + 1);
}
