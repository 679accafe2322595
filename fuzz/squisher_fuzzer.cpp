// SPDX-License-Identifier: Apache-2.0
// Fuzz target: squisher tokens. The input is unsquished in the two C steps
// with an output of exactly the reported size, and the state's block is
// released on every path (the first step leaves it to the caller when it
// fails). The input is then squished as a text and must come back unchanged.
#include <XYLCore/Utility/XYLSquisher.h>
#include <XYLCore/Utility/xylsquish.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

namespace {
void check(bool condition) {
  if (!condition)
    std::abort();
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  std::string input(reinterpret_cast<const char *>(data), size);

  XYLsquState state;
  unsigned int length = 0;
  int code = XYLsqu_unsquish1(input.c_str(), &state, &length);
  check(code >= 0 && code <= 3);
  if (code == 0) {
    check(length >= 1 && length <= 10000001u);
    std::unique_ptr<char[]> out(new char[length]);
    if (XYLsqu_unsquish2(&state, out.get()) == 0) {
      check(state.m_pData == nullptr);
      check(std::strlen(out.get()) < length);
    }
  }
  std::free(state.m_pData);

  char *token = XYLSquisher::squish(input.c_str());
  check(token != nullptr);
  char *back = XYLSquisher::unSquish(token);
  check(back != nullptr && std::strcmp(back, input.c_str()) == 0);
  delete[] back;
  delete[] token;
  return 0;
}
