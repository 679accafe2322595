// SPDX-License-Identifier: Apache-2.0
// xyl: the command-line front end of libXYLCore.
//
//   xyl <command> [options] [arguments]
//
// Exit codes: 0 success, 1 bad data (undecodable input, unreadable file),
// 2 bad usage.
#include "xyl_commands.h"
#include "xyl_io.h"

#include <XYLCore/Core/xylcore.h>

#include <cstdio>
#include <cstring>
#include <string>

#ifndef XYL_TOOL_VERSION
#error "the build defines XYL_TOOL_VERSION"
#endif

namespace xyltool {

namespace {
const Command kCommands[] = {
    {"base64", "base64 [-d] [-u] [--strict] [FILE...]", "encode the input as Base64 (-d decode, -u URL-safe alphabet)",
     "  -d        decode instead of encode\n"
     "  -u        the URL-safe alphabet of this library: '_' for 62 and '~' for 63\n"
     "            (default: the standard alphabet, '+' and '/'); '=' pads either way\n"
     "  --strict  with -d: accept only the alphabet, '=' as the last one or two\n"
     "            characters of the last group, and line feeds; anything else is\n"
     "            an error that names its byte offset (default: lax decoding)\n"
     "Lax decoding (the default) skips white space anywhere, takes most ASCII\n"
     "punctuation as some value, reads '=' as zero and rejects only '@' and bytes\n"
     "from 0x7B up; the input must still be whole 4-character groups.\n"
     "Reads the FILEs (or standard input) as one stream, in fixed chunks; writes\n"
     "one line of Base64 without breaks (encoding) or the bytes (decoding).\n"
     "example: xyl base64 photo.jpg | xyl base64 -d --strict >copy.jpg\n",
     runBase64},
    {"squish", "squish [FILE...]", "turn the input text into a compact checksummed token",
     "Reads the FILEs (or standard input) as one text of at most 10000000 bytes\n"
     "without zero bytes; writes one line: the length, CRC-32 and zlib stream of\n"
     "the text in URL-safe Base64. A longer input is refused before anything is\n"
     "written. No options.\n"
     "example: xyl squish notes.txt >notes.tok\n",
     runSquish},
    {"unsquish", "unsquish [FILE...]", "turn a token back into its text",
     "Reads one token made by squish (white space is skipped); writes its text\n"
     "once the checksum and length are verified. No options.\n"
     "example: xyl unsquish notes.tok >notes.txt\n",
     runUnsquish},
    {"crc32", "crc32 [FILE...]", "print the CRC-32 of each file (standard input when none)",
     "Reads each FILE in fixed chunks (\"-\" or none: standard input); writes one\n"
     "line per input: the CRC-32 (zlib's) in 8 hex digits, two spaces, the name.\n"
     "No options.\n"
     "example: xyl crc32 a.bin b.bin\n",
     runCrc32},
    {"crash", "crash --mode 1|2|Y --kind segv|fpe|overflow [--dump-type T]",
     "make a real fault under the fault handler's mode",
     "  --mode M       the fault handler mode, as XYL_HWE_ABORT takes it (required)\n"
     "  --kind K       segv (null read), fpe (division by zero) or overflow\n"
     "                 (endless recursion) (required)\n"
     "  --dump-type T  the crash dump type joined to modes 1 and 2 (default 2)\n"
     "Reads nothing; writes what the handler caught to standard output, or dies\n"
     "as the mode says.\n"
     "example: xyl crash --mode 1 --kind segv\n",
     runCrash},
    {"msgc", "msgc [-o OUT.bmf] SOURCE", "compile a message catalog source (- for standard input) into a .bmf file",
     "  -o OUT  the catalog to write (default: SOURCE with .bmf for its extension;\n"
     "          \"-\" is standard output, which is also the default for SOURCE \"-\")\n"
     "Reads lines \"NUMBER text\" (text quoted or bare, C escapes, # comments).\n"
     "example: xyl msgc -o app.bmf app.msg\n",
     runMsgc},
    {"msgdump", "msgdump FILE.bmf", "print a message catalog in the source format msgc reads",
     "Reads a compiled catalog; writes its messages in the source format msgc\n"
     "reads, in number order. No options.\n"
     "example: xyl msgdump app.bmf >app.msg\n",
     runMsgdump},
    {"interval", "interval [--locale L] [--style short|long] [--ym] [NUMBER...]",
     "format a duration for a locale (default en-us, long style)",
     "  --locale L   the locale (default en-us)\n"
     "  --style S    long (words, the default) or short (digits)\n"
     "  --ym         the numbers are YEARS MONTHS (default: DAYS HOURS MINUTES\n"
     "               SECONDS MILLIS)\n"
     "Takes the numbers from the command line, or, with none, from each line of\n"
     "standard input; writes one formatted duration per line.\n"
     "example: xyl interval --locale ru 22 1 5 21 0\n",
     runInterval},
    {"format-number", "format-number [--locale L] [--pattern P] [VALUE...]",
     "format decimal numbers for a locale (ICU pattern, OLAP format string or named format)",
     "  --locale L   the locale (default en-us)\n"
     "  --pattern P  an ICU pattern, an OLAP format string or a named format\n"
     "               (default: the locale's decimal format)\n"
     "Takes the values from the command line, or, with none, one per line from\n"
     "standard input; writes each formatted value on a line, digit for digit.\n"
     "example: xyl format-number --locale de-de 1234567.891\n",
     runFormatNumber},
    {"sort", "sort --locale L [--level 0|1|2|3] [FILE...]",
     "sort the input lines by a locale's collation (level 0 primary .. 3 identical)",
     "  --locale L  the locale whose collation orders the lines (required)\n"
     "  --level N   0 primary (base letters), 1 secondary (accents), 2 tertiary\n"
     "              (case), 3 identical (default: the locale's, usually 2)\n"
     "Reads the UTF-8 lines of the FILEs (or standard input); writes them\n"
     "unchanged in collation order, equal lines in input order. Holds the lines\n"
     "and one sort key per line.\n"
     "example: xyl sort --locale de names.txt\n",
     runSort},
    {"bidi", "bidi [FILE...]", "print each input line in visual (display) order",
     "Reads UTF-8 lines from the FILEs (or standard input), one at a time;\n"
     "writes each in visual order (characters moved, not mirrored). No options.\n"
     "example: xyl bidi hebrew.txt\n",
     runBidi},
    {"format-date", "format-date [--locale L] [--pattern P] [--zone Z] [EPOCH_MS...]",
     "format times given in milliseconds since 1970 for a locale (default zone UTC)",
     "  --locale L   the locale (default en-us)\n"
     "  --pattern P  an ICU date pattern (default: the locale's medium format)\n"
     "  --zone Z     a time zone name (default UTC)\n"
     "Takes the times from the command line, or, with none, one per line from\n"
     "standard input; writes each formatted time on a line.\n"
     "example: xyl format-date --zone Europe/Paris --pattern 'yyyy-MM-dd HH:mm' 0\n",
     runFormatDate},
    {"convert", "convert --from ENC --to ENC [--mode escape|replace|substitute|stop] [FILE...]",
     "convert the input from one encoding to another, streaming",
     "  --from ENC  the encoding of the input (required)\n"
     "  --to ENC    the encoding of the output (required)\n"
     "  --mode M    what happens to a character that cannot be converted: escape\n"
     "              (%UXXXX), replace (the default), substitute, or stop (exit 1)\n"
     "Reads the FILEs (or standard input) as one stream, in fixed chunks.\n"
     "example: xyl convert --from ISO-8859-1 --to UTF-8 old.txt >new.txt\n",
     runConvert},
    {"normalize", "normalize --form NFC|NFD|NFKC|NFKD [FILE...]", "bring the UTF-8 input text into a normal form",
     "  --form F  the normal form (required)\n"
     "Reads the FILEs (or standard input) in fixed chunks cut where the form\n"
     "allows; writes the normalised UTF-8.\n"
     "example: xyl normalize --form NFC decomposed.txt\n",
     runNormalize},
    {"demo", "demo", "a short tour of the library",
     "Reads nothing; writes what each part of the library does. No options.\n"
     "example: xyl demo\n",
     runDemo},
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
             "exit codes: 0 success, 1 bad data or failed output, 2 bad usage\n"
             "'xyl --version' prints the versions of the tool and the library.\n"
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
  if (std::strcmp(argv[1], "--version") == 0) {
    int major = 0, minor = 0;
    xylGetApiVersion(&major, &minor);
    std::printf("xyl %s\nlibXYLCore API %d.%d\n", XYL_TOOL_VERSION, major, minor);
    finishOutput();
    return kSuccess;
  }
  if (std::strcmp(argv[1], "--help") == 0 || std::strcmp(argv[1], "-h") == 0 || std::strcmp(argv[1], "help") == 0) {
    listCommands(stdout);
    finishOutput();
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
  setOutputCommand(argv[1]);
  if (wantsHelp(argc - 1, argv + 1)) {
    std::printf("usage: xyl %s\n  %s\n\n%s", command->synopsis, command->summary, command->details);
    finishOutput();
    return kSuccess;
  }
  const int result = command->run(argc - 1, argv + 1);
  finishOutput();
  return result;
}
