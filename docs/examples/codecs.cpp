// SPDX-License-Identifier: Apache-2.0
// Byte buffer, Base64, CRC-32 and the squisher token.
#include <XYLCore/Types/XYLByteBuffer.h>
#include <XYLCore/Utility/XYLUtCrc32.h>
#include <XYLCore/Utility/xylbase64.h>
#include <XYLCore/Utility/xylsquish.h>
#include <cstdio>
#include <cstdlib>
#include <cstring>

int main() {
  XYLByteBuffer text(0, 256);
  text << "user="
       << "ada"
       << ";id=" << 42;
  const unsigned char *bytes = reinterpret_cast<const unsigned char *>(text.str());
  char b64[64];
  XYLBase64Encode(bytes, text.pcount(), b64);
  std::printf("%s -> %s, crc %08lx\n", text.str(), b64, XYLUtCrc32::crc32(0, bytes, text.pcount()));

  char *token = static_cast<char *>(std::malloc(XYLsqu_squished_size(text.pcount())));
  XYLsqu_squish(text.str(), token);
  XYLsquState state;
  unsigned int size = 0;
  int rc = XYLsqu_unsquish1(token, &state, &size);
  char *back = rc == 0 ? static_cast<char *>(std::malloc(size)) : nullptr;
  if (back != nullptr && XYLsqu_unsquish2(&state, back) == 0)
    std::printf("token %s -> %s\n", token, back);
  std::free(state.m_pData); // null after a successful unsquish2
  bool same = back != nullptr && std::strcmp(back, text.str()) == 0;
  std::free(back);
  std::free(token);
  return same ? 0 : 1;
}
