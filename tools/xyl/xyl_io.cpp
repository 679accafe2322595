#include "xyl_io.h"

#include <XYLCore/i18n/cpp/i18n_init.h>

#include <cstring>

namespace xyltool {

bool readAll(std::FILE *in, std::string &out) {
  char chunk[65536];
  std::size_t got;
  while ((got = std::fread(chunk, 1, sizeof chunk, in)) > 0)
    out.append(chunk, got);
  return !std::ferror(in);
}

bool writeAll(std::FILE *out, const void *data, std::size_t size) {
  return std::fwrite(data, 1, size, out) == size && std::fflush(out) == 0;
}

bool wantsHelp(int argc, char **argv) {
  for (int i = 1; i < argc; ++i) {
    if (std::strcmp(argv[i], "--") == 0)
      return false;
    if (std::strcmp(argv[i], "-h") == 0 || std::strcmp(argv[i], "--help") == 0)
      return true;
  }
  return false;
}

bool parseValueOptions(int argc, char **argv, const ValueOption *options, int count,
                       std::vector<std::string> &operands) {
  for (int i = 1; i < argc; ++i) {
    const char *argument = argv[i];
    if (std::strcmp(argument, "--") == 0) {
      operands.insert(operands.end(), argv + i + 1, argv + argc);
      return true;
    }
    if (std::strncmp(argument, "--", 2) != 0) {
      operands.push_back(argument);
      continue;
    }
    const ValueOption *option = nullptr;
    for (int k = 0; k < count && option == nullptr; ++k)
      if (std::strcmp(argument, options[k].name) == 0)
        option = &options[k];
    if (option == nullptr) {
      std::fprintf(stderr, "%s: unknown option '%s'\n", argv[0], argument);
      return false;
    }
    if (i + 1 >= argc) {
      std::fprintf(stderr, "%s: option '%s' needs a value\n", argv[0], argument);
      return false;
    }
    *option->value = argv[++i];
    if (option->seen != nullptr)
      *option->seen = true;
  }
  return true;
}

I18NSession::I18NSession(const char *command) : m_started(I18NInitialize() != 0) {
  if (!m_started)
    std::fprintf(stderr, "%s: the internationalisation layer did not start\n", command);
}

I18NSession::~I18NSession() {
  if (m_started)
    I18NTerminate();
}

} // namespace xyltool
