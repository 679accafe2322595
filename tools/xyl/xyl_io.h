// Standard input and output helpers of the `xyl` tool.
#ifndef XYL_TOOL_IO_H
#define XYL_TOOL_IO_H

#include <cstdio>
#include <string>
#include <vector>

namespace xyltool {

// Reads the whole stream in binary; false on a read error.
bool readAll(std::FILE *in, std::string &out);
// Writes all bytes; false on a write error.
bool writeAll(std::FILE *out, const void *data, std::size_t size);
// True when argv holds -h or --help before a "--".
bool wantsHelp(int argc, char **argv);

// One "--name VALUE" option of a command; `value` receives the text and
// `seen` (when given) is set when the option appears.
struct ValueOption {
  const char *name;
  std::string *value;
  bool *seen;
};
// Takes the options of argv[1..] (each once more replaces the value); every
// other argument goes to `operands`, as does everything after "--". False,
// after a message on standard error, for an unknown option or one without
// its value.
bool parseValueOptions(int argc, char **argv, const ValueOption *options, int count,
                       std::vector<std::string> &operands);

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
