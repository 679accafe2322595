// SPDX-License-Identifier: Apache-2.0
// xyl base64 | squish | unsquish | crc32: files (or standard input) to
// standard output through the library's codecs.
#include "xyl_commands.h"
#include "xyl_io.h"

#include <XYLCore/Utility/XYLUtCrc32.h>
#include <XYLCore/Utility/xylbase64.h>
#include <XYLCore/Utility/xylsquish.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

namespace xyltool {

namespace {

// Reads the inputs as one NUL-terminated text; reports and fails on a
// read error or an embedded zero byte (the codecs take C strings).
bool readText(const char *command, const std::vector<std::string> &files, std::string &text, Progress &progress) {
  if (readInputs(command, files, text, false, &progress) != kSuccess)
    return false;
  progress.finish();
  if (text.find('\0') != std::string::npos) {
    std::fprintf(stderr, "%s: the input holds a zero byte\n", command);
    return false;
  }
  return true;
}

// Takes the switches of `letters` ("du": -d and -u) into `seen` and the FILE
// operands into `files`; false on an unknown option.
bool parseFlags(int argc, char **argv, const char *letters, std::string &seen, std::vector<std::string> &files) {
  std::vector<std::string> names;
  const std::size_t count = std::strlen(letters);
  std::unique_ptr<bool[]> set(new bool[count]());
  for (const char *letter = letters; *letter != '\0'; ++letter)
    names.push_back(std::string("-") + *letter);
  std::vector<ValueOption> options;
  for (std::size_t k = 0; k < names.size(); ++k)
    options.push_back({names[k].c_str(), nullptr, &set[k]});
  if (!parseValueOptions(argc, argv, options.data(), static_cast<int>(options.size()), files))
    return false;
  for (std::size_t k = 0; k < count; ++k)
    if (set[k])
      seen.push_back(letters[k]);
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
  std::vector<std::string> files;
  if (!parseFlags(argc, argv, "du", flags, files))
    return usage(*findCommand("base64"));
  Progress progress(argv[0]);
  bool decode = flags.find('d') != std::string::npos;
  bool url = flags.find('u') != std::string::npos;

  if (!decode) {
    std::string input;
    if (readInputs(argv[0], files, input, false, &progress) != kSuccess)
      return kBadData;
    progress.finish();
    unsigned int length = static_cast<unsigned int>(input.size());
    std::vector<char> out(XYLBase64EncodedSize(length));
    const unsigned char *bytes = reinterpret_cast<const unsigned char *>(input.data());
    (url ? XYLBase64URLEncode : XYLBase64Encode)(bytes, length, out.data());
    out.back() = '\n';
    return writeAll(stdout, out.data(), out.size()) ? kSuccess : kBadData;
  }

  std::string text;
  if (!readText(argv[0], files, text, progress))
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
  std::vector<std::string> files;
  if (!parseFlags(argc, argv, "", flags, files))
    return usage(*findCommand("squish"));
  Progress progress(argv[0]);
  std::string text;
  if (!readText(argv[0], files, text, progress))
    return kBadData;
  std::vector<char> token(XYLsqu_squished_size(static_cast<unsigned int>(text.size())));
  XYLsqu_squish(text.c_str(), token.data());
  std::size_t length = std::strlen(token.data());
  token[length] = '\n';
  return writeAll(stdout, token.data(), length + 1) ? kSuccess : kBadData;
}

int runUnsquish(int argc, char **argv) {
  std::string flags;
  std::vector<std::string> files;
  if (!parseFlags(argc, argv, "", flags, files))
    return usage(*findCommand("unsquish"));
  Progress progress(argv[0]);
  std::string token;
  if (!readText(argv[0], files, token, progress))
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
  std::vector<std::string> files;
  if (!parseFlags(argc, argv, "", flags, files))
    return usage(*findCommand("crc32"));
  Progress progress(argv[0]);
  std::vector<unsigned char> chunk(1 << 16);
  return forEachInput(argv[0], files, [&](std::FILE *in, const std::string &name) {
    progress.expect(in);
    unsigned long crc = 0;
    std::size_t got;
    while ((got = std::fread(chunk.data(), 1, chunk.size(), in)) > 0) {
      crc = XYLUtCrc32::crc32(crc, chunk.data(), static_cast<unsigned int>(got));
      progress.add(got);
    }
    progress.finish();
    if (std::ferror(in) == 0) // a read error is reported by forEachInput
      std::printf("%08lx  %s\n", crc & 0xFFFFFFFFUL, name.c_str());
    return true;
  });
}

} // namespace xyltool
