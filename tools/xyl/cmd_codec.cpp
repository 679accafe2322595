// xyl base64 | squish | unsquish | crc32: standard input (or files) to
// standard output through the library's codecs.
#include "xyl_commands.h"
#include "xyl_io.h"

#include <XYLCore/Utility/XYLUtCrc32.h>
#include <XYLCore/Utility/XYLUtGetOpt.h>
#include <XYLCore/Utility/xylbase64.h>
#include <XYLCore/Utility/xylsquish.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

namespace xyltool {

namespace {

// Reads standard input as one NUL-terminated text; reports and fails on a
// read error or an embedded zero byte (the codecs take C strings).
bool readText(const char *command, std::string &text) {
  if (!readAll(stdin, text)) {
    std::fprintf(stderr, "%s: cannot read standard input: %s\n", command, std::strerror(errno));
    return false;
  }
  if (text.find('\0') != std::string::npos) {
    std::fprintf(stderr, "%s: the input holds a zero byte\n", command);
    return false;
  }
  return true;
}

// Takes the options of `optionLetters`; false (after printing usage) on a bad option
// or on operands the command does not take.
bool parseFlags(int argc, char **argv, const char *optionLetters, bool takesOperands, std::string &seen,
                int &firstOperand) {
  XYLUtGetOpt options;
  int c;
  while ((c = options.getOpt(argc, argv, optionLetters)) > 0)
    seen.push_back(static_cast<char>(c));
  firstOperand = options.getOptInd();
  if (c == 0 || (!takesOperands && firstOperand < argc)) {
    if (c != 0)
      std::fprintf(stderr, "%s: unexpected argument '%s'\n", argv[0], argv[firstOperand]);
    return false;
  }
  return true;
}

const char *unsquishReason(int code) {
  switch (code) {
  case 1:
    return "not a token (bad Base64)";
  case 2:
    return "the token claims a text longer than 10000000 bytes";
  case 3:
    return "checksum mismatch";
  default:
    return "corrupt compressed data";
  }
}

} // namespace

int runBase64(int argc, char **argv) {
  std::string flags;
  int operand;
  if (!parseFlags(argc, argv, "du", false, flags, operand))
    return usage(*findCommand("base64"));
  bool decode = flags.find('d') != std::string::npos;
  bool url = flags.find('u') != std::string::npos;

  if (!decode) {
    std::string input;
    if (!readAll(stdin, input)) {
      std::fprintf(stderr, "%s: cannot read standard input\n", argv[0]);
      return kBadData;
    }
    unsigned int length = static_cast<unsigned int>(input.size());
    std::vector<char> out(XYLBase64EncodedSize(length));
    const unsigned char *bytes = reinterpret_cast<const unsigned char *>(input.data());
    (url ? XYLBase64URLEncode : XYLBase64Encode)(bytes, length, out.data());
    out.back() = '\n';
    return writeAll(stdout, out.data(), out.size()) ? kSuccess : kBadData;
  }

  std::string text;
  if (!readText(argv[0], text))
    return kBadData;
  std::vector<unsigned char> out(text.size() + 1);
  unsigned int length = 0;
  int rc = (url ? XYLBase64URLDecode : XYLBase64Decode)(text.c_str(), out.data(), &length);
  if (rc != 0) {
    std::fprintf(stderr, "%s: %s\n", argv[0],
                 rc == 1 ? "the input is not a whole number of 4-character groups"
                         : "the input holds a character outside the alphabet");
    return kBadData;
  }
  return writeAll(stdout, out.data(), length) ? kSuccess : kBadData;
}

int runSquish(int argc, char **argv) {
  std::string flags;
  int operand;
  if (!parseFlags(argc, argv, "", false, flags, operand))
    return usage(*findCommand("squish"));
  std::string text;
  if (!readText(argv[0], text))
    return kBadData;
  std::vector<char> token(XYLsqu_squished_size(static_cast<unsigned int>(text.size())));
  XYLsqu_squish(text.c_str(), token.data());
  std::size_t length = std::strlen(token.data());
  token[length] = '\n';
  return writeAll(stdout, token.data(), length + 1) ? kSuccess : kBadData;
}

int runUnsquish(int argc, char **argv) {
  std::string flags;
  int operand;
  if (!parseFlags(argc, argv, "", false, flags, operand))
    return usage(*findCommand("unsquish"));
  std::string token;
  if (!readText(argv[0], token))
    return kBadData;
  XYLsquState state = {nullptr, 0, 0};
  unsigned int size = 0;
  int rc = XYLsqu_unsquish1(token.c_str(), &state, &size);
  std::vector<char> text;
  if (rc == 0) {
    text.resize(size);
    rc = XYLsqu_unsquish2(&state, text.data()) == 0 ? 0 : 4;
  }
  std::free(state.m_pData);
  if (rc != 0) {
    std::fprintf(stderr, "%s: %s\n", argv[0], unsquishReason(rc));
    return kBadData;
  }
  return writeAll(stdout, text.data(), size - 1) ? kSuccess : kBadData;
}

int runCrc32(int argc, char **argv) {
  std::string flags;
  int operand;
  if (!parseFlags(argc, argv, "", true, flags, operand))
    return usage(*findCommand("crc32"));
  std::vector<const char *> files(argv + operand, argv + argc);
  if (files.empty())
    files.push_back("-");
  int result = kSuccess;
  std::vector<unsigned char> chunk(1 << 16);
  for (const char *name : files) {
    bool useStdin = std::strcmp(name, "-") == 0;
    std::FILE *in = useStdin ? stdin : std::fopen(name, "rb");
    if (in == nullptr) {
      std::fprintf(stderr, "%s: %s: %s\n", argv[0], name, std::strerror(errno));
      result = kBadData;
      continue;
    }
    unsigned long crc = 0;
    std::size_t got;
    while ((got = std::fread(chunk.data(), 1, chunk.size(), in)) > 0)
      crc = XYLUtCrc32::crc32(crc, chunk.data(), static_cast<unsigned int>(got));
    bool failed = std::ferror(in) != 0;
    if (!useStdin)
      std::fclose(in);
    if (failed) {
      std::fprintf(stderr, "%s: %s: read error\n", argv[0], name);
      result = kBadData;
      continue;
    }
    std::printf("%08lx  %s\n", crc & 0xFFFFFFFFUL, name);
  }
  return result;
}

} // namespace xyltool
