// SPDX-License-Identifier: Apache-2.0
// xyl base64 | squish | unsquish | crc32: files (or standard input) to
// standard output through the library's codecs.
//
// base64 and crc32 stream: they read and write in fixed chunks, so their
// memory does not grow with the input. squish and unsquish need the whole
// text (the token's header carries its length and checksum), which the
// token format bounds at 10000000 bytes.
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

// The most text a token carries (the limit of the squisher's header check).
const std::size_t kSquishLimit = 10000000;
// Input bytes per Base64 encoding step: whole 3-byte groups.
const std::size_t kEncodeChunk = 3 * 65536;
// Input bytes per read of the decoder, crc32 and squish.
const std::size_t kReadChunk = 256 * 1024;

// Takes the switches of `letters` ("du": -d and -u) into `seen`, the long
// switches of `longNames` too, and the FILE operands into `files`; false on
// an unknown option.
bool parseFlags(int argc, char **argv, const char *letters, std::string &seen, std::vector<std::string> &files,
                const std::vector<std::pair<std::string, bool *>> &longNames = {}) {
  std::vector<std::string> names;
  const std::size_t count = std::strlen(letters);
  std::unique_ptr<bool[]> set(new bool[count]());
  for (const char *letter = letters; *letter != '\0'; ++letter)
    names.push_back(std::string("-") + *letter);
  std::vector<ValueOption> options;
  for (std::size_t k = 0; k < names.size(); ++k)
    options.push_back({names[k].c_str(), nullptr, &set[k]});
  for (const auto &name : longNames)
    options.push_back({name.first.c_str(), nullptr, name.second});
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

// How the decoder's first pass sees each byte.
enum ByteClass : unsigned char { kLetter, kSkip, kPad, kForeign, kZero };

// Base64 decoding in chunks. The first pass drops the bytes the decoder
// skips (and, when strict, checks every byte and the padding); whole
// 4-character groups then go to the library's decoder and partial ones wait
// for the next chunk, so the result equals decoding the whole input at once.
class ChunkDecoder {
public:
  ChunkDecoder(const char *command, bool url, bool strict)
      : m_command(command), m_url(url), m_strict(strict), m_text(kReadChunk + 4), m_bytes(kReadChunk + 4) {
    for (int c = 0; c < 256; ++c)
      m_class[c] = strict ? kForeign : kLetter;
    // The lax decoder skips all of C's white space; strict input may only be
    // broken into lines.
    for (const char *blank = strict ? "\n" : " \t\n\v\f\r"; *blank != '\0'; ++blank)
      m_class[static_cast<unsigned char>(*blank)] = kSkip;
    m_class[0] = kZero;
    if (strict) {
      const char *alphabet = url ? "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_~"
                                 : "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
      for (const char *letter = alphabet; *letter != '\0'; ++letter)
        m_class[static_cast<unsigned char>(*letter)] = kLetter;
      m_class[static_cast<unsigned char>('=')] = kPad;
    }
  }

  // Decodes one chunk of input and writes the whole groups; false after a
  // message on standard error.
  bool add(const char *data, std::size_t size) {
    std::size_t held = m_held;
    char *text = m_text.data();
    for (std::size_t i = 0; i < size; ++i) {
      const unsigned char c = static_cast<unsigned char>(data[i]);
      switch (m_class[c]) {
      case kLetter:
        if (m_strict && (m_padAt >= 0 || m_ended))
          return misplacedPadding();
        text[held++] = static_cast<char>(c);
        break;
      case kSkip:
        break;
      case kPad:
        if (!takePad(held, m_offset + i))
          return false;
        text[held++] = static_cast<char>(c);
        break;
      case kForeign:
        std::fprintf(stderr, "%s: offset %llu: byte 0x%02x is outside the %s alphabet\n", m_command,
                     static_cast<unsigned long long>(m_offset + i), c, m_url ? "URL-safe" : "standard");
        return false;
      default:
        std::fprintf(stderr, "%s: offset %llu: the input holds a zero byte\n", m_command,
                     static_cast<unsigned long long>(m_offset + i));
        return false;
      }
    }
    m_offset += size;
    const std::size_t whole = held - held % 4;
    m_held = held - whole;
    if (!decode(text, whole))
      return false;
    std::memmove(text, text + whole, m_held);
    return true;
  }

  // After the last chunk: false, after a message, for a partial group.
  bool finish() {
    if (m_held == 0 && (!m_strict || m_padAt < 0 || m_ended))
      return true;
    std::fprintf(stderr, "%s: the input is not a whole number of 4-character groups\n", m_command);
    return false;
  }

private:
  // Strict padding: "=" only as the third and fourth or as the fourth
  // character of a group, which is then the last group.
  bool takePad(std::size_t held, unsigned long long offset) {
    const std::size_t position = held % 4;
    if (m_ended || position < 2) {
      if (m_padAt < 0)
        m_padAt = static_cast<long long>(offset);
      return misplacedPadding();
    }
    if (m_padAt < 0)
      m_padAt = static_cast<long long>(offset);
    if (position == 3)
      m_ended = true;
    return true;
  }

  bool misplacedPadding() {
    std::fprintf(stderr, "%s: offset %lld: misplaced padding '='\n", m_command, m_padAt);
    return false;
  }

  bool decode(char *text, std::size_t size) {
    if (size == 0)
      return true;
    const char kept = text[size];
    text[size] = '\0';
    unsigned int length = 0;
    const int rc = (m_url ? XYLBase64URLDecode : XYLBase64Decode)(text, m_bytes.data(), &length);
    text[size] = kept;
    if (rc != 0) {
      std::fprintf(stderr, "%s: the input holds a character outside the alphabet\n", m_command);
      return false;
    }
    writeOut(m_bytes.data(), length);
    return true;
  }

  const char *m_command;
  bool m_url;
  bool m_strict;
  unsigned char m_class[256];
  std::vector<char> m_text;           // characters waiting for the decoder
  std::vector<unsigned char> m_bytes; // the decoder's output
  std::size_t m_held = 0;             // characters in m_text
  unsigned long long m_offset = 0;    // input bytes before this chunk
  long long m_padAt = -1;             // offset of the first '=' (strict)
  bool m_ended = false;               // a padded group was completed (strict)
};

int encodeBase64(const char *command, const std::vector<std::string> &files, bool url, Progress &progress) {
  std::vector<unsigned char> in(kEncodeChunk);
  std::vector<char> out(XYLBase64EncodedSize(kEncodeChunk));
  void (*encode)(const unsigned char *, unsigned int, char *) = url ? XYLBase64URLEncode : XYLBase64Encode;
  auto flush = [&](std::size_t size) {
    encode(in.data(), static_cast<unsigned int>(size), out.data());
    writeOut(out.data(), XYLBase64EncodedSize(static_cast<unsigned int>(size)) - 1);
  };
  std::size_t held = 0;
  const int result = forEachInput(command, files, [&](std::FILE *in_, const std::string &) {
    progress.expect(in_);
    std::size_t got;
    while ((got = std::fread(in.data() + held, 1, in.size() - held, in_)) > 0) {
      progress.add(got);
      held += got;
      if (held == in.size()) {
        flush(held);
        held = 0;
      }
    }
    return true;
  });
  progress.finish();
  flush(held);
  writeOut("\n", 1);
  return result;
}

int decodeBase64(const char *command, const std::vector<std::string> &files, bool url, bool strict,
                 Progress &progress) {
  std::unique_ptr<ChunkDecoder> decoder(new ChunkDecoder(command, url, strict));
  std::vector<char> chunk(kReadChunk);
  int result = forEachInput(command, files, [&](std::FILE *in, const std::string &) {
    progress.expect(in);
    std::size_t got;
    while ((got = std::fread(chunk.data(), 1, chunk.size(), in)) > 0) {
      progress.add(got);
      if (!decoder->add(chunk.data(), got))
        return false;
    }
    return true;
  });
  progress.finish();
  if (result == kSuccess && !decoder->finish())
    result = kBadData;
  return result;
}

// Reads the inputs as one text of at most `limit` bytes; reports and fails
// on a read error, a longer input or a zero byte (the codecs take C
// strings).
bool readText(const char *command, const std::vector<std::string> &files, std::size_t limit, std::string &text,
              Progress &progress) {
  std::vector<char> chunk(kReadChunk);
  const int result = forEachInput(command, files, [&](std::FILE *in, const std::string &) {
    progress.expect(in);
    std::size_t got;
    while ((got = std::fread(chunk.data(), 1, chunk.size(), in)) > 0) {
      progress.add(got);
      if (text.size() + got > limit) {
        progress.finish();
        std::fprintf(stderr, "%s: the input is over %zu bytes, more than a token can carry\n", command, limit);
        return false;
      }
      text.append(chunk.data(), got);
    }
    return true;
  });
  progress.finish();
  if (result != kSuccess)
    return false;
  if (text.find('\0') != std::string::npos) {
    std::fprintf(stderr, "%s: the input holds a zero byte\n", command);
    return false;
  }
  return true;
}

} // namespace

int runBase64(int argc, char **argv) {
  std::string flags;
  std::vector<std::string> files;
  bool strict = false;
  if (!parseFlags(argc, argv, "du", flags, files, {{"--strict", &strict}}))
    return usage(*findCommand("base64"));
  const bool decode = flags.find('d') != std::string::npos;
  const bool url = flags.find('u') != std::string::npos;
  if (strict && !decode) {
    std::fprintf(stderr, "%s: --strict applies to decoding (-d)\n", argv[0]);
    return usage(*findCommand("base64"));
  }
  Progress progress(argv[0]);
  return decode ? decodeBase64(argv[0], files, url, strict, progress) : encodeBase64(argv[0], files, url, progress);
}

int runSquish(int argc, char **argv) {
  std::string flags;
  std::vector<std::string> files;
  if (!parseFlags(argc, argv, "", flags, files))
    return usage(*findCommand("squish"));
  Progress progress(argv[0]);
  std::string text;
  if (!readText(argv[0], files, kSquishLimit, text, progress))
    return kBadData;
  std::vector<char> token(XYLsqu_squished_size(static_cast<unsigned int>(text.size())));
  XYLsqu_squish(text.c_str(), token.data());
  std::size_t length = std::strlen(token.data());
  if (length == 0) {
    std::fprintf(stderr, "%s: out of memory\n", argv[0]);
    return kBadData;
  }
  token[length] = '\n';
  writeOut(token.data(), length + 1);
  return kSuccess;
}

int runUnsquish(int argc, char **argv) {
  std::string flags;
  std::vector<std::string> files;
  if (!parseFlags(argc, argv, "", flags, files))
    return usage(*findCommand("unsquish"));
  Progress progress(argv[0]);
  // The longest token of a text within the limit, with room for line breaks.
  const std::size_t longest = 2 * static_cast<std::size_t>(XYLsqu_squished_size(kSquishLimit));
  std::string token;
  if (!readText(argv[0], files, longest, token, progress))
    return kBadData;
  if (token.find_first_not_of(" \t\n\v\f\r") == std::string::npos) {
    std::fprintf(stderr, "%s: the token is empty\n", argv[0]);
    return kBadData;
  }
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
  writeOut(text.data(), size - 1);
  return kSuccess;
}

int runCrc32(int argc, char **argv) {
  std::string flags;
  std::vector<std::string> files;
  if (!parseFlags(argc, argv, "", flags, files))
    return usage(*findCommand("crc32"));
  Progress progress(argv[0]);
  std::vector<unsigned char> chunk(kReadChunk);
  return forEachInput(argv[0], files, [&](std::FILE *in, const std::string &name) {
    progress.expect(in);
    unsigned long crc = 0;
    std::size_t got;
    while ((got = std::fread(chunk.data(), 1, chunk.size(), in)) > 0) {
      crc = XYLUtCrc32::crc32(crc, chunk.data(), static_cast<unsigned int>(got));
      progress.add(got);
    }
    progress.finish();
    if (std::ferror(in) == 0) { // a read error is reported by forEachInput
      char line[32];
      const int length = std::snprintf(line, sizeof line, "%08lx  ", crc & 0xFFFFFFFFUL);
      writeOut(line, static_cast<std::size_t>(length));
      writeOut(name + "\n");
    }
    return true;
  });
}

} // namespace xyltool
