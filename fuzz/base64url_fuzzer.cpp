// SPDX-License-Identifier: Apache-2.0
// Fuzz target: URL-alphabet Base64 decoding of arbitrary text, and round trips.
#include <XYLCore/Utility/xylbase64.h>

#include "base64_fuzz_common.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  xylfuzz::fuzzBase64(XYLBase64URLEncodedSize, XYLBase64URLEncode, XYLBase64URLDecode, data, size);
  return 0;
}
