// SPDX-License-Identifier: Apache-2.0
// Bytes-to-string fuzz target. The first byte chooses the encoding (low
// four bits) and the converter's unconvertible-input mode (next three bits,
// taken modulo 5); the rest is the text. A documented I18NRuntimeError is an
// accepted outcome. Checks on every string that is built:
//  - valid UTF-8 read as UTF-8 decodes exactly as ICU's u_strFromUTF8 does,
//    whatever the mode, and pure ASCII stays in ASCII mode;
//  - length() counts code points as ICU does, size() is units * 2 + 2;
//  - stepping with incrementOffset reaches the end in length() steps;
//  - the text written back as UTF-8 (substitute mode) and read again gives
//    the same string when it held no unpaired surrogate.
#include <XYLCore/ExceptionHierarchy/XYLErrors.h>
#include <XYLCore/i18n/cpp/i18n_converter.h>
#include <XYLCore/i18n/cpp/i18n_string.h>

#include <unicode/unistr.h>
#include <unicode/ustring.h>

#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

namespace {
void check(bool condition) {
  if (!condition)
    std::abort();
}

const char *const kEncodings[] = {"UTF-8",     "UTF-16LE", "UTF-16BE", "UTF-32LE",    "windows-1252", "ISO-8859-1",
                                  "Shift_JIS", "EUC-JP",   "UTF-16",   "utf8",        "ascii",        "ISO-8859-7",
                                  "UTF-8",     "UTF-8",    "UTF-8",    "windows-1251"};

void checkString(const I18NString &s) {
  const icu::UnicodeString &units = s.getUnicodeString();
  check(s.length() == units.countChar32());
  check(s.size() == (units.length() == 0 ? 0 : units.length() * 2 + 2));
  int steps = 0;
  for (int offset = 0; offset < units.length(); ++steps) {
    int next = s.incrementOffset(offset);
    check(next > offset && next <= units.length());
    offset = next;
  }
  check(steps == s.length());
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  if (size == 0)
    return 0;
  const char *encoding = kEncodings[data[0] & 15];
  int mode = ((data[0] >> 4) & 7) % 5;
  const char *bytes = reinterpret_cast<const char *>(data + 1);
  int length = static_cast<int>(size - 1);
  try {
    I18NConverter converter(encoding);
    converter.setBuiltInUnconvertibleInputSequenceCallback(mode);
    I18NString s(bytes, converter, length);
    bool pureAscii = true;
    for (int i = 0; i < length; ++i)
      pureAscii = pureAscii && (static_cast<unsigned char>(bytes[i]) < 0x80);

    if (I18NConverter::isUTF8(encoding) && std::string(encoding) != "ascii") {
      std::vector<UChar> expected(static_cast<size_t>(length) + 1);
      UErrorCode status = U_ZERO_ERROR;
      int32_t units = 0;
      u_strFromUTF8(expected.data(), static_cast<int32_t>(expected.size()), &units, bytes, length, &status);
      if (U_SUCCESS(status)) {
        // Valid input: exactly ICU's decoding (a terminator the caller
        // counted is not part of the text).
        if (units > 0 && expected[static_cast<size_t>(units) - 1] == 0 && bytes[length - 1] == 0)
          --units;
        I18NString byName(bytes, encoding, length);
        check(pureAscii == !byName.isUnicodeMode());
        check(byName == s);
        check(s.getUnicodeString() == icu::UnicodeString(expected.data(), units));
      }
    }
    checkString(s);

    I18NConverter out("UTF-8");
    out.setBuiltInUnconvertibleOutputSequenceCallback(2);
    int written = 0;
    char *utf8 = s.toBytes(out, &written);
    I18NString back(utf8, "UTF-8", written);
    I18NString::freeBuffer(utf8);
    bool lone = false;
    const icu::UnicodeString &units = s.getUnicodeString();
    for (int i = 0; i < units.length(); ++i)
      lone = lone || (U16_IS_SURROGATE(units.charAt(i)) &&
                      !(U16_IS_LEAD(units.charAt(i)) && i + 1 < units.length() && U16_IS_TRAIL(units.charAt(i + 1))) &&
                      !(U16_IS_TRAIL(units.charAt(i)) && i > 0 && U16_IS_LEAD(units.charAt(i - 1))));
    if (!lone && units.indexOf(static_cast<UChar>(0)) < 0)
      check(back == s);
  } catch (I18NRuntimeError &) {
    // A documented outcome: an unconvertible sequence under a failing mode.
  }
  return 0;
}
