/* SPDX-License-Identifier: Apache-2.0 */
// The checks shared by the two Base64 fuzz targets. Any input is accepted:
// codes 0, 1 and 2 are documented outcomes; a write past strlen + 1, a wrong
// terminator or a failed round trip aborts.
#ifndef XYLCORE_FUZZ_BASE64_FUZZ_COMMON_H
#define XYLCORE_FUZZ_BASE64_FUZZ_COMMON_H

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

namespace xylfuzz {

using EncodeFn = void (*)(const unsigned char *, unsigned int, char *);
using DecodeFn = int (*)(const char *, unsigned char *, unsigned int *);
using SizeFn = unsigned int (*)(unsigned int);

inline void check(bool condition) {
  if (!condition)
    std::abort();
}

// Decodes text into an exact strlen + 1 heap block; returns the code.
inline int decodeExact(DecodeFn decode, const char *text, std::string *bytes) {
  std::size_t room = std::strlen(text) + 1;
  std::unique_ptr<unsigned char[]> out(new unsigned char[room]);
  unsigned int length = 0xFFFFFFFFu;
  int code = decode(text, out.get(), &length);
  check(code == 0 || code == 1 || code == 2);
  if (code == 0) {
    check(length < room);
    check(out[length] == 0);
    bytes->assign(reinterpret_cast<const char *>(out.get()), length);
  } else {
    check(length == 0xFFFFFFFFu);
  }
  return code;
}

inline std::string encode(SizeFn size, EncodeFn encode, const std::string &bytes) {
  unsigned int n = static_cast<unsigned int>(bytes.size());
  std::unique_ptr<char[]> out(new char[size(n)]);
  encode(reinterpret_cast<const unsigned char *>(bytes.data()), n, out.get());
  check(std::strlen(out.get()) + 1 == size(n));
  return std::string(out.get());
}

inline void fuzzBase64(SizeFn size, EncodeFn encodeFn, DecodeFn decode, const std::uint8_t *data, std::size_t count) {
  std::string input(reinterpret_cast<const char *>(data), count);
  // The input as text (up to its first NUL): whatever it decodes to must
  // survive a canonical re-encoding.
  std::string bytes;
  if (decodeExact(decode, input.c_str(), &bytes) == 0) {
    std::string again;
    check(decodeExact(decode, encode(size, encodeFn, bytes).c_str(), &again) == 0);
    check(again == bytes);
  }
  // The input as bytes: encoding and decoding gives them back.
  std::string back;
  check(decodeExact(decode, encode(size, encodeFn, input).c_str(), &back) == 0);
  check(back == input);
}

} // namespace xylfuzz

#endif
