// SPDX-License-Identifier: Apache-2.0
// Tokenizer fuzz target. The first byte chooses the delimiters: its low three
// bits give how many of the following bytes form the delimiter set, and its
// top bit selects the default (white-space) set instead. The rest is the text.
// Every token the step function yields must be non-empty, lie inside the
// text, contain no delimiter, and be followed by a delimiter or the end;
// countTokens must equal the number of tokens; the object form must yield the
// same tokens.
#include <XYLCore/Utility/XYLUtStrTok.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

namespace {
void check(bool condition) {
  if (!condition)
    std::abort();
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  if (size == 0)
    return 0;
  size_t delimiterCount = data[0] & 7;
  bool useDefault = (data[0] & 0x80) != 0;
  if (delimiterCount > size - 1)
    delimiterCount = size - 1;
  // C strings: an embedded zero byte ends the delimiter set or the text.
  std::string delimiterBytes(reinterpret_cast<const char *>(data + 1), delimiterCount);
  std::string textBytes(reinterpret_cast<const char *>(data + 1 + delimiterCount), size - 1 - delimiterCount);
  const char *delimiters = useDefault ? nullptr : delimiterBytes.c_str();
  const char *effective = useDefault ? "\t\n\v\f\r " : delimiters;
  const char *text = textBytes.c_str();
  size_t textLength = std::strlen(text);

  std::vector<std::string> tokens;
  const char *position = nullptr;
  long length = 0;
  while (const char *token = XYLUtStrTok::nextToken(text, position, length, delimiters)) {
    check(token == position);
    check(length > 0);
    check(token >= text && token + length <= text + textLength);
    check(std::strcspn(token, effective) == static_cast<size_t>(length));
    tokens.emplace_back(token, static_cast<size_t>(length));
    check(tokens.size() <= textLength);
  }
  check(position == nullptr);
  check(XYLUtStrTok::countTokens(text, delimiters) == static_cast<long>(tokens.size()));

  XYLUtStrTok tokenizer(text, delimiters);
  for (const std::string &expected : tokens) {
    const char *token = tokenizer.next();
    check(token != nullptr && expected == token);
  }
  check(tokenizer.next() == nullptr);
  return 0;
}
