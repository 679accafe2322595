// SPDX-License-Identifier: Apache-2.0
// Base64 codecs of both alphabets. Every table is built at compile time from
// the alphabet, so the two families cannot drift apart.
#include <XYLCore/Utility/xylbase64.h>

#include <cstdint>
#include <cstring>

namespace {

constexpr char kStandardAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr char kUrlAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_~";

// Marks a byte that the fast decoding path does not handle itself.
constexpr std::uint32_t kNotStrict = 0x01000000;
// The lax value -1 as a byte: the only value that is rejected.
constexpr std::uint8_t kRejected = 0xFF;

struct Codec {
  const char *alphabet;
  // Two output characters for every 12-bit value: one lookup per 12 bits.
  char pairs[4096][2];
  // The lax 6-bit value of every byte as its low 8 bits (negative values keep
  // their two's complement byte, which is all the byte arithmetic below uses).
  std::uint8_t lax[256];
  // Fast path: for each of the four positions of a group, the 6-bit value of
  // an alphabet character already placed in the three output bytes (byte 0
  // in bits 0-7); every other byte has kNotStrict set.
  std::uint32_t place[4][256];
};

constexpr Codec makeCodec(const char *alphabet) {
  Codec codec{};
  codec.alphabet = alphabet;
  for (int i = 0; i < 4096; ++i) {
    codec.pairs[i][0] = alphabet[i >> 6];
    codec.pairs[i][1] = alphabet[i & 63];
  }
  for (int c = 0; c < 256; ++c) {
    int value = -1;
    if (c == '=')
      value = 0;
    else if (c == static_cast<unsigned char>(alphabet[62]))
      value = 62;
    else if (c == static_cast<unsigned char>(alphabet[63]))
      value = 63;
    else if (c < 0x3A)
      value = c + 4;
    else if (c < 0x5B)
      value = c - 0x41;
    else if (c < 0x7B)
      value = c - 0x47;
    codec.lax[c] = static_cast<std::uint8_t>(value & 0xFF);
    for (auto &position : codec.place)
      position[c] = kNotStrict;
  }
  for (std::uint32_t v = 0; v < 64; ++v) {
    auto c = static_cast<unsigned char>(alphabet[v]);
    codec.place[0][c] = v << 2;
    codec.place[1][c] = v >> 4 | (v & 0x0F) << 12;
    codec.place[2][c] = (v >> 2) << 8 | (v & 0x03) << 22;
    codec.place[3][c] = v << 16;
  }
  return codec;
}

constexpr Codec kStandard = makeCodec(kStandardAlphabet);
constexpr Codec kUrl = makeCodec(kUrlAlphabet);

// The white space of the C locale, whatever locale the process runs in.
inline bool isBlank(unsigned char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

inline std::uint64_t toBigEndian(std::uint64_t w) {
#if defined(__BYTE_ORDER__) && __BYTE_ORDER__ == __ORDER_BIG_ENDIAN__
  return w;
#else
  return __builtin_bswap64(w);
#endif
}

constexpr unsigned int encodedSize(unsigned int n) { return (((n * 8U) / 6U + 3U) & ~3U) + 1U; }

void encode(const Codec &codec, const unsigned char *in, unsigned int n, char *out) {
  std::size_t i = 0;
  // Six bytes per round, read as one 8-byte word while 8 remain.
  for (; n - i >= 8; i += 6) {
    std::uint64_t w;
    std::memcpy(&w, in + i, 8);
    w = toBigEndian(w);
    std::memcpy(out, codec.pairs[(w >> 52) & 0xFFF], 2);
    std::memcpy(out + 2, codec.pairs[(w >> 40) & 0xFFF], 2);
    std::memcpy(out + 4, codec.pairs[(w >> 28) & 0xFFF], 2);
    std::memcpy(out + 6, codec.pairs[(w >> 16) & 0xFFF], 2);
    out += 8;
  }
  for (; n - i >= 3; i += 3) {
    std::uint32_t v = static_cast<std::uint32_t>(in[i]) << 16 | static_cast<std::uint32_t>(in[i + 1]) << 8 | in[i + 2];
    std::memcpy(out, codec.pairs[v >> 12], 2);
    std::memcpy(out + 2, codec.pairs[v & 0xFFF], 2);
    out += 4;
  }
  std::size_t rest = n - i;
  if (rest != 0) {
    std::uint32_t v = static_cast<std::uint32_t>(in[i]) << 16;
    if (rest == 2)
      v |= static_cast<std::uint32_t>(in[i + 1]) << 8;
    out[0] = codec.alphabet[v >> 18];
    out[1] = codec.alphabet[(v >> 12) & 63];
    out[2] = rest == 2 ? codec.alphabet[(v >> 6) & 63] : '=';
    out[3] = '=';
    out += 4;
  }
  *out = '\0';
}

int decode(const Codec &codec, const char *text, unsigned char *out, unsigned int *outLength) {
  const unsigned char *p = reinterpret_cast<const unsigned char *>(text);
  const unsigned char *end = p + std::strlen(text);
  unsigned char *o = out;
  for (;;) {
    // Fast path: whole groups of alphabet characters, no blanks, no padding.
    while (end - p >= 4) {
      std::uint32_t v = codec.place[0][p[0]] | codec.place[1][p[1]] | codec.place[2][p[2]] | codec.place[3][p[3]];
      if (v & kNotStrict)
        break;
      o[0] = static_cast<unsigned char>(v);
      o[1] = static_cast<unsigned char>(v >> 8);
      o[2] = static_cast<unsigned char>(v >> 16);
      o += 3;
      p += 4;
    }
    // General path: one group of four non-blank characters with the lax table.
    unsigned char group[4];
    int count = 0;
    while (count < 4 && p < end) {
      unsigned char ch = *p++;
      if (!isBlank(ch))
        group[count++] = ch;
    }
    if (count == 0)
      break;
    if (count < 4)
      return 1;
    std::uint32_t v1 = codec.lax[group[0]], v2 = codec.lax[group[1]], v3 = codec.lax[group[2]],
                  v4 = codec.lax[group[3]];
    if (v1 == kRejected || v2 == kRejected || v3 == kRejected || v4 == kRejected)
      return 2;
    *o++ = static_cast<unsigned char>(v1 << 2 | ((v2 >> 4) & 3));
    if (group[2] != '=')
      *o++ = static_cast<unsigned char>(v2 << 4 | ((v3 >> 2) & 15));
    if (group[3] != '=')
      *o++ = static_cast<unsigned char>(v3 << 6 | v4);
  }
  *o = 0;
  *outLength = static_cast<unsigned int>(o - out);
  return 0;
}

} // namespace

unsigned int XYLBase64EncodedSize(unsigned int n) { return encodedSize(n); }
unsigned int XYLBase64URLEncodedSize(unsigned int n) { return encodedSize(n); }

void XYLBase64Encode(const unsigned char *in, unsigned int n, char *out) { encode(kStandard, in, n, out); }
void XYLBase64URLEncode(const unsigned char *in, unsigned int n, char *out) { encode(kUrl, in, n, out); }

int XYLBase64Decode(const char *in, unsigned char *out, unsigned int *outLength) {
  return decode(kStandard, in, out, outLength);
}
int XYLBase64URLDecode(const char *in, unsigned char *out, unsigned int *outLength) {
  return decode(kUrl, in, out, outLength);
}
