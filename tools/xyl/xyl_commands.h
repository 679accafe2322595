/* SPDX-License-Identifier: Apache-2.0 */
// The commands of the `xyl` tool. Each takes its own argument vector
// (argv[0] is "xyl <command>") and returns the process exit code.
#ifndef XYL_TOOL_COMMANDS_H
#define XYL_TOOL_COMMANDS_H

namespace xyltool {

enum ExitCode { kSuccess = 0, kBadData = 1, kBadUsage = 2 };

struct Command {
  const char *name;
  const char *synopsis; // the usage line after "xyl "
  const char *summary;  // one line for the command list
  const char *details;  // --help: options and defaults, input and output, an example
  int (*run)(int argc, char **argv);
};

int runBase64(int argc, char **argv);
int runSquish(int argc, char **argv);
int runUnsquish(int argc, char **argv);
int runCrc32(int argc, char **argv);
int runDemo(int argc, char **argv);
int runConvert(int argc, char **argv);
int runNormalize(int argc, char **argv);
int runCrash(int argc, char **argv);
int runMsgc(int argc, char **argv);
int runMsgdump(int argc, char **argv);
int runInterval(int argc, char **argv);
int runFormatNumber(int argc, char **argv);
int runFormatDate(int argc, char **argv);
int runSort(int argc, char **argv);
int runBidi(int argc, char **argv);

// Every command, in the order `xyl --help` lists them.
const Command *commands(int *count);
const Command *findCommand(const char *name);
// Prints "usage: xyl <synopsis>" and the summary to standard error; returns kBadUsage.
int usage(const Command &command);

} // namespace xyltool

#endif
