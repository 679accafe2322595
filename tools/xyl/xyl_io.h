/* SPDX-License-Identifier: Apache-2.0 */
// Shared plumbing of the `xyl` tool's commands: options, inputs, output,
// the progress line and the internationalisation session.
//
// Every command parses its options with parseValueOptions: long options
// ("--locale L", "--ym") and single-letter ones ("-o OUT", "-d"; switches may
// be clustered, "-du"). An unknown option prints the command's usage to
// standard error and exits 2; "-h"/"--help" is answered by main() before any
// command runs. Bad data (unreadable input, undecodable text) exits 1.
//
// Commands that read text take FILE operands; no operand, or "-", means
// standard input (forEachInput / readInputs). A read error names the file.
//
// Standard output has one policy for every command: a write that fails ends
// the process with exit code 1, after "xyl <command>: standard output:
// <reason>" on standard error; a closed pipe ends it quietly, as SIGPIPE
// does for other tools (the same exit code 1 when SIGPIPE is ignored).
// Commands write through writeOut, or through stdio, which main() checks
// with finishOutput before it exits.
#ifndef XYL_TOOL_IO_H
#define XYL_TOOL_IO_H

#include <chrono>
#include <cstdio>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace xyltool {

// A single updating "xyl <cmd>: N MiB" line on standard error while a large
// input is read. It shows only when standard error is a terminal (or the
// environment variable XYL_PROGRESS is "always") and the input is larger than
// 4 MiB: known from the file size of a regular file, otherwise from the bytes
// read so far. It redraws at most every 0.25 s and is cleared at the end.
class Progress {
public:
  explicit Progress(const char *command);
  ~Progress();
  // Takes note of the size of one more input, when the stream knows it.
  void expect(std::FILE *in);
  // Counts bytes read and redraws the line when due.
  void add(std::size_t bytes);
  // Clears the line, if it was drawn.
  void finish();

private:
  Progress(const Progress &) = delete;
  Progress &operator=(const Progress &) = delete;
  const char *m_command;
  bool m_enabled;
  bool m_drawn;
  unsigned long long m_known; // bytes announced by regular files
  unsigned long long m_read;
  std::chrono::steady_clock::time_point m_last;
};

// Names the command in the messages of the output policy.
void setOutputCommand(const char *command);
// Writes all bytes to standard output, or ends the process (see above).
void writeOut(const void *data, std::size_t size);
inline void writeOut(const std::string &text) { writeOut(text.data(), text.size()); }
// Ends the process now if standard output has failed so far.
void checkOut();
// Flushes standard output; ends the process if that fails.
void finishOutput();

// Reads the whole stream in binary; false on a read error.
bool readAll(std::FILE *in, std::string &out, Progress *progress = nullptr);
// Writes all bytes to a file; false on a write error.
bool writeAll(std::FILE *out, const void *data, std::size_t size);
// True when argv holds -h or --help before a "--".
bool wantsHelp(int argc, char **argv);

// One "--name VALUE" option of a command; `value` receives the text and
// `seen` (when given) is set when the option appears. With a null `value`
// the option is a switch that takes no value and only sets `seen`.
struct ValueOption {
  const char *name;
  std::string *value;
  bool *seen;
};
// Takes the options of argv[1..] (each once more replaces the value); every
// other argument goes to `operands`, as does everything after "--". An
// argument of a dash and a letter is an option ("-" and "-5" are operands);
// one that names no option is a single-letter option with its value
// attached ("-oOUT") or a cluster of single-letter switches ("-du"). False,
// after a message on standard error, for an unknown option or one without
// its value.
bool parseValueOptions(int argc, char **argv, const ValueOption *options, int count,
                       std::vector<std::string> &operands);

// Opens each of `files` in turn (standard input for "-" or when the list is
// empty) and hands it to `each` with its name. A file that does not open or
// has a read error after `each` is reported and makes the result kBadData,
// and the next file follows; `each` returning false (it reports itself)
// stops with kBadData. Returns kSuccess otherwise.
int forEachInput(const char *command, const std::vector<std::string> &files,
                 const std::function<bool(std::FILE *, const std::string &)> &each);
// Reads each line of the inputs (without its line feed) and hands it to
// `each` with its number, counted over all inputs; `each` returning false
// (it reports itself) stops with kBadData. Only one line is held at a time.
int forEachLine(const char *command, const std::vector<std::string> &files,
                const std::function<bool(std::string_view, long long)> &each, Progress *progress = nullptr);
// Reads every input into `text`, one after the other. With `endLines`, an
// input that does not end with a line feed gets one, so that its last line
// stays a line of its own. Returns kSuccess or kBadData.
int readInputs(const char *command, const std::vector<std::string> &files, std::string &text, bool endLines,
               Progress *progress = nullptr);

// Starts the internationalisation layer for one command and stops it again;
// reports on standard error when it does not start.
class I18NSession {
public:
  explicit I18NSession(const char *command);
  ~I18NSession();
  bool started() const { return m_started; }

private:
  I18NSession(const I18NSession &) = delete;
  I18NSession &operator=(const I18NSession &) = delete;
  bool m_started;
};

} // namespace xyltool

#endif
