// SPDX-License-Identifier: Apache-2.0
// URI decoding fuzz target. The first byte chooses the encoding (low two
// bits) and the converter's unconvertible-input mode (next three bits, modulo
// 5); the rest, up to its first zero byte, is the escaped text. A documented
// I18NRuntimeError is an accepted outcome. Checks: printable ASCII text
// without any escape character ('%', '\\', '&', '+') comes back unchanged
// (IBM's Shift_JIS table swaps some control codes); the result of the by-name form equals the converter form when
// the converter is in the default mode.
#include <XYLCore/ExceptionHierarchy/XYLErrors.h>
#include <XYLCore/i18n/cpp/i18n_converter.h>
#include <XYLCore/i18n/cpp/i18n_string.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

namespace {
void check(bool condition) {
  if (!condition)
    std::abort();
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  if (size == 0)
    return 0;
  static const char *const kEncodings[] = {"UTF-8", "windows-1252", "ISO-8859-1", "Shift_JIS"};
  const char *encoding = kEncodings[data[0] & 3];
  int mode = ((data[0] >> 2) & 7) % 5;
  std::string text(reinterpret_cast<const char *>(data + 1), size - 1);
  text.resize(std::strlen(text.c_str()));
  bool plain = true;
  for (unsigned char c : text)
    plain = plain && c >= 0x20 && c < 0x7F && c != '%' && c != '\\' && c != '&' && c != '+';
  try {
    I18NConverter converter(encoding);
    converter.setBuiltInUnconvertibleInputSequenceCallback(mode);
    I18NString decoded = I18NUriDecode(text.c_str(), converter);
    if (plain)
      check(decoded == I18NString(text.data(), "UTF-8", static_cast<int>(text.size())));
    if (mode == 1)
      check(decoded == I18NUriDecode(text.c_str(), encoding));
    // The result is an ordinary string: it can be written out again.
    I18NConverter out("UTF-8");
    out.setBuiltInUnconvertibleOutputSequenceCallback(2);
    char *bytes = decoded.toBytes(out);
    I18NString::freeBuffer(bytes);
  } catch (I18NRuntimeError &) {
    // A documented outcome: bytes the encoding cannot convert under this mode.
  }
  return 0;
}
