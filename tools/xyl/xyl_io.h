// Standard input and output helpers of the `xyl` tool.
#ifndef XYL_TOOL_IO_H
#define XYL_TOOL_IO_H

#include <cstdio>
#include <string>

namespace xyltool {

// Reads the whole stream in binary; false on a read error.
bool readAll(std::FILE *in, std::string &out);
// Writes all bytes; false on a write error.
bool writeAll(std::FILE *out, const void *data, std::size_t size);
// True when argv holds -h or --help before a "--".
bool wantsHelp(int argc, char **argv);

} // namespace xyltool

#endif
