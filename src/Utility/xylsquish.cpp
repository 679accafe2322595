// SPDX-License-Identifier: Apache-2.0
// The squisher's C functions: header, checksum, zlib stream, Base64URL.
#include <XYLCore/Utility/xylsquish.h>

#include <XYLCore/Core/xylcore.h>
#include <XYLCore/Utility/XYLUtCrc32.h>
#include <XYLCore/Utility/XYLUtMemory.h>
#include <XYLCore/Utility/xylbase64.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <zlib.h>

namespace {

constexpr std::size_t kHeaderSize = 8;
constexpr std::uint32_t kMaxOriginalLength = 10000000;
// The checksum register starts from all ones: the token's checksum is zlib's
// crc32 called with 0xFFFFFFFF, not 0.
constexpr unsigned long kChecksumStart = 0xFFFFFFFFUL;
constexpr std::uint64_t kMaxSize = 0xFFFFFFFFU;

std::uint64_t encodedSize64(std::uint64_t n) { return (((n * 8) / 6 + 3) & ~std::uint64_t(3)) + 1; }

// Bytes a token of a text of `length` bytes may need, terminator included:
// the documented L + L / 1000 + 16, or the header plus zlib's worst case when
// that is larger (incompressible text). Computed wide so it cannot wrap.
std::uint64_t tokenSize(std::uint64_t length) {
  std::uint64_t documented = length + length / 1000 + 16;
  std::uint64_t worstCase = kHeaderSize + compressBound(static_cast<uLong>(length));
  return encodedSize64(std::max(documented, worstCase));
}

std::uint32_t checksum(const unsigned char *bytes, std::size_t count) {
  return static_cast<std::uint32_t>(XYLUtCrc32::crc32(kChecksumStart, bytes, static_cast<unsigned int>(count)));
}

void putBigEndian(unsigned char *at, std::uint32_t value) {
  unsigned int network = xylh2nl(value);
  std::memcpy(at, &network, 4);
}

std::uint32_t getBigEndian(const unsigned char *at) {
  unsigned int network;
  std::memcpy(&network, at, 4);
  return xyln2hl(network);
}

} // namespace

unsigned int XYLsqu_squished_size(unsigned int textLength) {
  return static_cast<unsigned int>(std::min(tokenSize(textLength), kMaxSize));
}

void XYLsqu_squish(const char *text, char *out) {
  std::size_t length = text != nullptr ? std::strlen(text) : 0;
  out[0] = '\0';
  if (tokenSize(length) > kMaxSize)
    return;
  uLong capacity = compressBound(static_cast<uLong>(length));
  unsigned char *block = static_cast<unsigned char *>(XYLUtMemory::malloc(kHeaderSize + capacity));
  if (block == nullptr)
    return;
  uLongf compressed = capacity;
  int rc = compress2(block + kHeaderSize, &compressed, reinterpret_cast<const Bytef *>(text != nullptr ? text : ""),
                     static_cast<uLong>(length), 9);
  // With a compressBound-sized destination only zlib's own allocations can
  // fail; the output then stays empty, which never unsquishes.
  if (rc == Z_OK) {
    putBigEndian(block, static_cast<std::uint32_t>(length));
    putBigEndian(block + 4, checksum(block + kHeaderSize, compressed));
    XYLBase64URLEncode(block, static_cast<unsigned int>(kHeaderSize + compressed), out);
  }
  XYLUtMemory::free(block);
}

int XYLsqu_unsquish1(const char *token, XYLsquState *state, unsigned int *size) {
  if (state == nullptr)
    return 1;
  state->m_pData = nullptr;
  state->m_originalLength = 0;
  state->m_decodedLength = 0;
  if (token == nullptr)
    return 1;
  // Base64 never decodes to more bytes than it has characters.
  unsigned char *block = static_cast<unsigned char *>(XYLUtMemory::malloc(std::strlen(token) + 1));
  if (block == nullptr)
    return 1;
  state->m_pData = block;
  unsigned int decoded = 0;
  if (XYLBase64URLDecode(token, block, &decoded) != 0)
    return 1;
  state->m_decodedLength = decoded;
  if (decoded < kHeaderSize)
    return 3;
  if (getBigEndian(block + 4) != checksum(block + kHeaderSize, decoded - kHeaderSize))
    return 3;
  state->m_originalLength = getBigEndian(block);
  if (state->m_originalLength > kMaxOriginalLength)
    return 2;
  if (size != nullptr)
    *size = state->m_originalLength + 1;
  return 0;
}

int XYLsqu_unsquish2(XYLsquState *state, char *out) {
  if (state == nullptr || state->m_pData == nullptr || state->m_decodedLength < kHeaderSize ||
      state->m_originalLength > kMaxOriginalLength || out == nullptr)
    return Z_STREAM_ERROR;
  uLongf inflated = state->m_originalLength;
  int rc;
  if (inflated == 0) {
    // Zlib treats a destination of length 0 as room for one scratch byte
    // (and then calls an overflow a data error): inflate into a byte of our
    // own, so that any text at all is the stream being longer than its header.
    Bytef scratch;
    inflated = 1;
    rc = uncompress(&scratch, &inflated, state->m_pData + kHeaderSize, state->m_decodedLength - kHeaderSize);
    if (rc == Z_OK && inflated != 0)
      rc = Z_BUF_ERROR;
    inflated = 0;
  } else {
    rc = uncompress(reinterpret_cast<Bytef *>(out), &inflated, state->m_pData + kHeaderSize,
                    state->m_decodedLength - kHeaderSize);
  }
  if (rc == Z_OK) {
    // A stream shorter than its header claims ends the text where it ends.
    out[inflated] = '\0';
    out[state->m_originalLength] = '\0';
    XYLUtMemory::free(state->m_pData);
    state->m_pData = nullptr;
  }
  return rc;
}
