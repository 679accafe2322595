// SPDX-License-Identifier: Apache-2.0
// The squisher for C++ callers: operator new[] results over the C functions.
#include <XYLCore/Utility/XYLSquisher.h>

#include <XYLCore/Utility/XYLUtMemory.h>
#include <XYLCore/Utility/xylsquish.h>

#include <cstring>
#include <new>

char *XYLSquisher::squish(const char *text) {
  unsigned int size = XYLsqu_squished_size(static_cast<unsigned int>(text != nullptr ? std::strlen(text) : 0));
  char *token = new (std::nothrow) char[size];
  if (token == nullptr)
    return nullptr;
  std::memset(token, 0, size);
  XYLsqu_squish(text, token);
  // Every real token holds at least the header; empty output means failure.
  if (token[0] == '\0') {
    delete[] token;
    return nullptr;
  }
  return token;
}

char *XYLSquisher::unSquish(const char *token) {
  XYLsquState state;
  unsigned int size = 0;
  if (XYLsqu_unsquish1(token, &state, &size) != 0) {
    XYLUtMemory::free(state.m_pData);
    return nullptr;
  }
  char *text = new (std::nothrow) char[size + 1];
  if (text == nullptr) {
    XYLUtMemory::free(state.m_pData);
    return nullptr;
  }
  std::memset(text, 0, size + 1);
  if (XYLsqu_unsquish2(&state, text) != 0) {
    XYLUtMemory::free(state.m_pData);
    delete[] text;
    return nullptr;
  }
  return text;
}
