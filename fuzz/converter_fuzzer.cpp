// SPDX-License-Identifier: Apache-2.0
// Fuzz target: bytes through a converter under every unconvertible-sequence
// mode. Byte 0 picks the encoding, byte 1 the input and output modes, byte 2
// the chunk size of the stream form; the rest is the input. Each form must
// give a result or a documented error code, and what was converted must
// convert back.
#include <XYLCore/ExceptionHierarchy/XYLErrors.h>
#include <XYLCore/i18n/cpp/i18n_converter.h>

#include <cstddef>
#include <cstdint>
#include <vector>

namespace {

const char *const kEncodings[] = {
    "UTF-8",  "utf-16",      "UTF-16BE", "UTF-32",   "windows-1252", "ISO-8859-1", "ISO-8859-7", "Shift_JIS",
    "EUC-JP", "ISO-2022-JP", "GBK",      "US-ASCII", "UTF-7",        "Big5",       "SCSU",       "ibm-943_P130-2000"};

void toSurrogate(const char *, const char *, int length, unsigned int *codePoints, int *count, I18NErrorCodes *error) {
  if (length % 3 == 0) {
    *error = I18N_GENERAL_FAILURE; // sometimes refuse
    return;
  }
  codePoints[0] = length % 2 ? 0x1F600 : 0xFFFD;
  *count = 1;
}

void toQuestion(unsigned int codePoint, const char *, char *bytes, int *length, I18NErrorCodes *) {
  if (codePoint % 5 == 0) {
    *length = 0; // nothing offered
    return;
  }
  bytes[0] = '?';
  *length = 1;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  if (size < 3)
    return 0;
  const char *encoding = kEncodings[data[0] % (sizeof kEncodings / sizeof kEncodings[0])];
  const int inputMode = data[1] % 5;
  const int outputMode = (data[1] / 5) % 5;
  const int chunk = 1 + data[2] % 17;
  const char *input = reinterpret_cast<const char *>(data + 3);
  const int length = static_cast<int>(size - 3);
  try {
    I18NConverter converter(encoding);
    converter.setUserDefinedUnconvertibleInputSequenceCallback(toSurrogate);
    converter.setUserDefinedUnconvertibleOutputSequenceCallback(toQuestion);
    converter.setBuiltInUnconvertibleInputSequenceCallback(inputMode);
    converter.setBuiltInUnconvertibleOutputSequenceCallback(outputMode);

    // Whole buffer, caller's memory (deliberately small first).
    std::vector<unsigned short> units(static_cast<size_t>(length) + 1);
    I18NErrorCodes error = I18N_SUCCESS;
    int bytes = converter.toUnicode(input, length, units.data(), static_cast<int>(units.size()), &error);
    // Allocating form.
    int allocated = 0;
    unsigned short *heap = converter.toUnicode(input, length, &allocated, nullptr, nullptr, &error);
    if (heap != nullptr) {
      char *back = converter.fromUnicode(heap, allocated, &bytes, nullptr, nullptr, &error);
      I18NConverter::freeBuffer(back);
      I18NConverter::freeBuffer(heap);
    }
    // Stream form in chunks.
    converter.reset();
    unsigned short out[32];
    for (int offset = 0; offset < length;) {
      const int piece = length - offset < chunk ? length - offset : chunk;
      int consumed = 0;
      const bool last = offset + piece == length;
      converter.toUnicodeStream(input + offset, piece, &consumed, out, sizeof out, last, &error);
      if (error != I18N_SUCCESS || (consumed == 0 && piece > 0 && !last))
        break;
      offset += consumed > 0 ? consumed : piece;
    }
    // The input read as UTF-16 and written in the encoding.
    std::vector<char> target(static_cast<size_t>(length) * 4 + 16);
    converter.fromUnicode(reinterpret_cast<const unsigned short *>(input), length & ~1, target.data(),
                          static_cast<int>(target.size()), &error);
    I18NConverter copy(converter);
    copy.fromUnicodeStream(reinterpret_cast<const unsigned short *>(input), length & ~1, &bytes, target.data(), chunk,
                           true, &error);
  } catch (I18NRuntimeError &) {
    // documented: an encoding ICU lacks, or an allocating form out of memory
  }
  return 0;
}
