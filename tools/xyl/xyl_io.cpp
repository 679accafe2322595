// SPDX-License-Identifier: Apache-2.0
#include "xyl_io.h"
#include "xyl_commands.h"

#include <XYLCore/i18n/cpp/i18n_init.h>

#include <cctype>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <sys/stat.h>
#include <unistd.h>

namespace xyltool {

namespace {
const unsigned long long kMiB = 1024ULL * 1024ULL;
const unsigned long long kProgressThreshold = 4 * kMiB;
const std::chrono::milliseconds kProgressInterval(250);

bool progressWanted() {
  const char *forced = std::getenv("XYL_PROGRESS");
  if (forced != nullptr && std::strcmp(forced, "always") == 0)
    return true;
  return isatty(STDERR_FILENO) != 0;
}
// A cluster of single-letter switches ("-du"): true, with every switch
// set, when each letter is a switch of `options`.
bool takeSwitches(const char *cluster, const ValueOption *options, int count) {
  std::vector<const ValueOption *> found;
  for (const char *letter = cluster + 1; *letter != '\0'; ++letter) {
    const ValueOption *option = nullptr;
    for (int k = 0; k < count && option == nullptr; ++k)
      if (options[k].value == nullptr && options[k].name[0] == '-' && options[k].name[1] == *letter &&
          options[k].name[2] == '\0')
        option = &options[k];
    if (option == nullptr)
      return false;
    found.push_back(option);
  }
  for (const ValueOption *option : found)
    if (option->seen != nullptr)
      *option->seen = true;
  return true;
}
} // namespace

Progress::Progress(const char *command)
    : m_command(command), m_enabled(progressWanted()), m_drawn(false), m_known(0), m_read(0), m_last() {}

Progress::~Progress() { finish(); }

void Progress::expect(std::FILE *in) {
  struct stat status;
  if (m_enabled && fstat(fileno(in), &status) == 0 && S_ISREG(status.st_mode))
    m_known += static_cast<unsigned long long>(status.st_size);
}

void Progress::add(std::size_t bytes) {
  m_read += bytes;
  if (!m_enabled || (m_known <= kProgressThreshold && m_read <= kProgressThreshold))
    return;
  const std::chrono::steady_clock::time_point now = std::chrono::steady_clock::now();
  if (m_drawn && now - m_last < kProgressInterval)
    return;
  m_last = now;
  m_drawn = true;
  std::fprintf(stderr, "\r%s: %llu MiB", m_command, m_read / kMiB);
  std::fflush(stderr);
}

void Progress::finish() {
  if (!m_drawn)
    return;
  m_drawn = false;
  // Blank out the longest line drawn: the name and up to 20 digits.
  std::fprintf(stderr, "\r%*s\r", static_cast<int>(std::strlen(m_command) + 26), "");
  std::fflush(stderr);
}

namespace {
const char *g_outputCommand = "xyl";

[[noreturn]] void outputFailed(int error) {
  if (error != EPIPE)
    std::fprintf(stderr, "%s: standard output: %s\n", g_outputCommand,
                 error != 0 ? std::strerror(error) : "write error");
  // Nothing more can reach the output; flushing it again at exit would only
  // fail once more.
  _exit(kBadData);
}
} // namespace

void setOutputCommand(const char *command) { g_outputCommand = command; }

void writeOut(const void *data, std::size_t size) {
  if (size != 0 && std::fwrite(data, 1, size, stdout) != size)
    outputFailed(errno);
}

void checkOut() {
  if (std::ferror(stdout) != 0)
    outputFailed(errno);
}

void finishOutput() {
  if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0)
    outputFailed(errno);
}

bool readAll(std::FILE *in, std::string &out, Progress *progress) {
  char chunk[65536];
  std::size_t got;
  while ((got = std::fread(chunk, 1, sizeof chunk, in)) > 0) {
    out.append(chunk, got);
    if (progress != nullptr)
      progress->add(got);
  }
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
    const bool isOption = std::strncmp(argument, "--", 2) == 0 ||
                          (argument[0] == '-' && std::isalpha(static_cast<unsigned char>(argument[1])) != 0);
    if (!isOption) {
      operands.push_back(argument);
      continue;
    }
    const ValueOption *option = nullptr;
    for (int k = 0; k < count && option == nullptr; ++k)
      if (std::strcmp(argument, options[k].name) == 0)
        option = &options[k];
    if (option == nullptr && argument[1] != '-') {
      // "-oVALUE": a single-letter option with its value attached.
      for (int k = 0; k < count && option == nullptr; ++k)
        if (options[k].value != nullptr && std::strncmp(argument, options[k].name, 2) == 0 &&
            options[k].name[2] == '\0')
          option = &options[k];
      if (option != nullptr) {
        *option->value = argument + 2;
        if (option->seen != nullptr)
          *option->seen = true;
        continue;
      }
      if (takeSwitches(argument, options, count))
        continue;
    }
    if (option == nullptr) {
      std::fprintf(stderr, "%s: unknown option '%s'\n", argv[0], argument);
      return false;
    }
    if (option->value != nullptr) {
      if (i + 1 >= argc) {
        std::fprintf(stderr, "%s: option '%s' needs a value\n", argv[0], argument);
        return false;
      }
      *option->value = argv[++i];
    }
    if (option->seen != nullptr)
      *option->seen = true;
  }
  return true;
}

int forEachInput(const char *command, const std::vector<std::string> &files,
                 const std::function<bool(std::FILE *, const std::string &)> &each) {
  static const std::vector<std::string> standardInput(1, "-");
  int result = kSuccess;
  for (const std::string &name : files.empty() ? standardInput : files) {
    const bool useStdin = name == "-";
    std::FILE *in = useStdin ? stdin : std::fopen(name.c_str(), "rb");
    if (in == nullptr) {
      std::fprintf(stderr, "%s: %s: %s\n", command, name.c_str(), std::strerror(errno));
      result = kBadData;
      continue;
    }
    const bool ok = each(in, name);
    const bool readError = std::ferror(in) != 0;
    const int error = errno;
    if (useStdin)
      std::clearerr(stdin);
    else
      std::fclose(in);
    if (!ok)
      return kBadData;
    if (readError) {
      std::fprintf(stderr, "%s: %s: %s\n", command, useStdin ? "standard input" : name.c_str(),
                   error != 0 ? std::strerror(error) : "read error");
      result = kBadData;
    }
  }
  return result;
}

int forEachLine(const char *command, const std::vector<std::string> &files,
                const std::function<bool(std::string_view, long long)> &each, Progress *progress) {
  long long number = 0;
  return forEachInput(command, files, [&](std::FILE *in, const std::string &) {
    if (progress != nullptr)
      progress->expect(in);
    char *buffer = nullptr;
    std::size_t capacity = 0;
    ssize_t got;
    bool ok = true;
    while (ok && (got = getline(&buffer, &capacity, in)) > 0) {
      if (progress != nullptr)
        progress->add(static_cast<std::size_t>(got));
      const std::size_t length = static_cast<std::size_t>(got) - (buffer[got - 1] == '\n' ? 1 : 0);
      ok = each(std::string_view(buffer, length), ++number);
    }
    std::free(buffer);
    return ok;
  });
}

int readInputs(const char *command, const std::vector<std::string> &files, std::string &text, bool endLines,
               Progress *progress) {
  return forEachInput(command, files, [&](std::FILE *in, const std::string &) {
    if (progress != nullptr)
      progress->expect(in);
    const std::size_t start = text.size();
    readAll(in, text, progress);
    if (endLines && text.size() > start && text.back() != '\n')
      text.push_back('\n');
    return true;
  });
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
