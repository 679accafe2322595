/* SPDX-License-Identifier: Apache-2.0 */
// A deliberately simple, bit-at-a-time Base64 used by the codec tests as an
// independent reference: it shares no table or code with the library.
#ifndef XYLCORE_TESTS_UNIT_UTILITY_XYLCODECTESTSUPPORT_H
#define XYLCORE_TESTS_UNIT_UTILITY_XYLCODECTESTSUPPORT_H

#include <cstdint>
#include <random>
#include <string>
#include <vector>

namespace xyltest {

constexpr const char *kStandardAlphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr const char *kUrlAlphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_~";

using Bytes = std::vector<unsigned char>;

inline std::string referenceEncode(const Bytes &in, const char *alphabet) {
  std::string out;
  std::uint32_t bits = 0;
  int count = 0;
  for (unsigned char byte : in) {
    bits = bits << 8 | byte;
    for (count += 8; count >= 6; count -= 6)
      out += alphabet[(bits >> (count - 6)) & 63];
  }
  if (count > 0)
    out += alphabet[(bits << (6 - count)) & 63];
  return out.append((4 - out.size() % 4) % 4, '=');
}

// Strict decoding of canonical text: alphabet characters only, "=" ends it.
inline Bytes referenceDecode(const std::string &in, const char *alphabet) {
  Bytes out;
  std::uint32_t bits = 0;
  int count = 0;
  for (std::size_t i = 0; i < in.size() && in[i] != '='; ++i) {
    bits = bits << 6 | static_cast<std::uint32_t>(std::string(alphabet).find(in[i]));
    if ((count += 6) >= 8) {
      count -= 8;
      out.push_back(static_cast<unsigned char>(bits >> count));
    }
  }
  return out;
}

inline Bytes randomBytes(std::size_t n, std::uint32_t seed, int low = 0, int high = 255) {
  std::mt19937 generator(seed);
  std::uniform_int_distribution<int> byte(low, high);
  Bytes out(n);
  for (auto &b : out)
    b = static_cast<unsigned char>(byte(generator));
  return out;
}

inline Bytes bytesOf(const std::string &text) { return Bytes(text.begin(), text.end()); }

} // namespace xyltest

#endif
