// SPDX-License-Identifier: Apache-2.0
// C interface fuzz target: the input is a program of calls on four string
// slots, one iterator and one UTF-16 buffer, with arbitrary handles (a slot
// may be empty, and slot 4 is always null), lengths, offsets and counts.
// Every call must come back with a documented code, never crash or throw;
// a buffer-producing call returns -1 exactly when it reports a failure.
// Repeat counts are kept small (a huge count is a legitimate request for a
// huge string, not a fault); offsets, lengths and modes are not limited.
#include <XYLCore/i18n/c/i18n_c.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

namespace {

void check(bool condition) {
  if (!condition)
    std::abort();
}

void checkCode(I18NErrorCodes code) {
  check(code == 0 || code == -1 || code == -2 || code == -3 || code == -7 || code == -9 || code == -10);
}

struct Reader {
  const uint8_t *data;
  size_t size;
  uint8_t byte() {
    if (size == 0)
      return 0;
    --size;
    return *data++;
  }
  int32_t word() {
    uint32_t v = 0;
    for (int i = 0; i < 4; ++i)
      v = (v << 8) | byte();
    // Mostly small values near the strings' lengths, sometimes anything.
    uint8_t shape = byte();
    if (shape < 200)
      return static_cast<int32_t>(v % 40) - 8;
    return static_cast<int32_t>(v);
  }
  unsigned int codePoint() {
    uint32_t v = 0;
    for (int i = 0; i < 3; ++i)
      v = (v << 8) | byte();
    return byte() < 128 ? v % 0x80 : v;
  }
};

const char *const kEncodings[] = {"UTF-8", "ISO-8859-1", "US-ASCII", "UTF-16LE", "no-such-encoding",
                                  "",      nullptr,      "Shift_JIS"};

// An allocator that fails on request, honouring the contract otherwise.
char *flakyAllocator(void *context, char *buffer, int newSize, int *error) {
  int mode = *static_cast<int *>(context);
  *error = 0;
  if (newSize < 0 || mode == 1) {
    *error = -10;
    return nullptr;
  }
  if (newSize == 0) {
    std::free(buffer);
    return nullptr;
  }
  if (mode == 2) {
    *error = -1;
    return nullptr;
  }
  char *block = static_cast<char *>(std::realloc(buffer, static_cast<size_t>(newSize)));
  if (block == nullptr)
    *error = -1;
  return block;
}

struct Machine {
  I18NStringHandle slots[5] = {nullptr, nullptr, nullptr, nullptr, nullptr};
  I18NStringIteratorHandle iterator = nullptr;
  int iteratorSlot = -1;
  // Each row's last unit stays 0 and is never offered to attach, so a row
  // is always terminated whatever a string writes into it.
  unsigned short attached[4][17] = {};
  unsigned short *units = nullptr;
  int allocatorMode = 0;

  I18NStringHandle &slot(Reader &in) { return slots[in.byte() % 5]; }

  // Below 16 KiB of UTF-16 (a null handle counts as small).
  static bool small(I18NStringHandle s) {
    I18NErrorCodes ignored;
    return i18nStringStringSize(s, &ignored) < 16384;
  }

  void freeSlot(int index) {
    I18NErrorCodes error;
    if (index == iteratorSlot) {
      i18nStringIteratorFree(&iterator, &error);
      iteratorSlot = -1;
    }
    if (index < 4) {
      i18nStringFree(&slots[index], &error);
      check(error == 0 && slots[index] == nullptr);
    }
  }

  void step(Reader &in) {
    I18NErrorCodes error = I18N_SUCCESS;
    uint8_t op = in.byte() % 20;
    int index = in.byte() % 5;
    I18NStringHandle s = slots[index];
    switch (op) {
    case 0: { // a new string from bytes of the input
      freeSlot(index);
      size_t n = in.byte() % 24;
      n = n < in.size ? n : in.size;
      std::string bytes(reinterpret_cast<const char *>(in.data), n);
      in.data += n;
      in.size -= n;
      // Length -1 means terminated by the encoding's NUL, which is up to 4
      // bytes wide (UTF-32): the caller provides that much.
      bytes.append(4, '\0');
      int length = in.byte() % 4 == 0 ? in.word() : static_cast<int>(n);
      if (length > static_cast<int>(n))
        length = static_cast<int>(n);
      // Slot 4 stands for a null handle pointer: the call must refuse it.
      I18NStringHandle *out = index == 4 ? nullptr : &slots[index];
      i18nStringBytesToString(out, bytes.c_str(), length, kEncodings[in.byte() % 8], &error);
      check(index == 4 ? error == -7 : (error == 0) == (slots[index] != nullptr));
      break;
    }
    case 1:
      freeSlot(index);
      return;
    case 2: { // appending a string to itself doubles it: keep strings small
      I18NStringHandle source = slot(in);
      if (small(s) && small(source))
        i18nStringAppendString(s, source, &error);
      else
        error = I18N_GENERAL_FAILURE;
      break;
    }
    case 3:
      i18nStringAppendRepeatingCodePoint(s, in.codePoint(), in.word() % 16, &error);
      break;
    case 4:
      i18nStringInsertRepeatingCodePoint(s, in.word(), in.codePoint(), in.word() % 16, &error);
      break;
    case 5: {
      int offset = in.word();
      int count = in.word();
      if (in.byte() & 1) {
        I18NStringHandle source = slot(in);
        if (small(s) && small(source))
          i18nStringReplaceString(s, offset, count, source, &error);
        else
          error = I18N_GENERAL_FAILURE;
      } else
        i18nStringReplaceRepeatingCodePoint(s, offset, count, in.codePoint(), in.word() % 16, &error);
      break;
    }
    case 6: {
      int offset = in.word();
      i18nStringErase(s, offset, in.word(), &error);
      break;
    }
    case 7: {
      int offset = in.word();
      int count = in.word();
      i18nStringSubstr(s, offset, count, slot(in), &error);
      break;
    }
    case 8: {
      I18NStringHandle needle = slot(in);
      int start = in.word();
      int found;
      switch (in.byte() % 6) {
      case 0:
        found = i18nStringFindString(s, needle, start, &error);
        break;
      case 1:
        found = i18nStringRfindString(s, needle, start, &error);
        break;
      case 2:
        found = i18nStringFindFirstOfString(s, needle, start, &error);
        break;
      case 3:
        found = i18nStringFindLastNotOfString(s, needle, start, &error);
        break;
      case 4:
        found = i18nStringFindCodePoint(s, in.codePoint(), start, &error);
        break;
      default:
        found = i18nStringFindLastOfCodePoint(s, in.codePoint(), start, &error);
        break;
      }
      check(found >= -1);
      if (error == 0 && found >= 0)
        check(found < i18nStringStringSize(s, &error) / 2);
      break;
    }
    case 9: {
      int offset = in.word();
      int next =
          (in.byte() & 1) ? i18nStringIncrementOffset(s, offset, &error) : i18nStringDecrementOffset(s, offset, &error);
      check(next >= -1);
      break;
    }
    case 10: // iterators follow one string
      if (iteratorSlot != index) {
        i18nStringIteratorFree(&iterator, &error);
        iteratorSlot = -1;
      }
      if (in.byte() & 1)
        i18nStringBegin(s, &iterator, &error);
      else
        i18nStringEnd(s, &iterator, &error);
      if (error == 0)
        iteratorSlot = index;
      break;
    case 11:
      switch (in.byte() % 3) {
      case 0:
        i18nStringIteratorNext(iterator, &error);
        break;
      case 1:
        i18nStringIteratorPrevious(iterator, &error);
        break;
      default:
        i18nStringIteratorAt(iterator, &error);
        break;
      }
      break;
    case 12:
      i18nStringNormalize(s, in.word(), &error);
      break;
    case 13: {
      char *bytes = reinterpret_cast<char *>(&error);
      allocatorMode = in.byte() % 4;
      int length = i18nStringStringToBytesWithAllocator(s, kEncodings[in.byte() % 8], &bytes, flakyAllocator,
                                                        &allocatorMode, &error);
      check((length == -1) == (error != 0));
      check((bytes == nullptr) == (error != 0));
      if (bytes != nullptr) {
        check(length >= 0);
        std::free(bytes);
      }
      break;
    }
    case 14:
      i18nStringCompare(s, slot(in), &error);
      break;
    case 15: { // code unit buffers through a flaky allocator
      allocatorMode = in.byte() % 4;
      const unsigned short *source = s != nullptr ? attached[in.byte() % 4] : nullptr;
      int bytes = (in.byte() & 1) ? i18nCodeUnitsConcat(&units, source, flakyAllocator, &allocatorMode, &error)
                                  : i18nCodeUnitsCopy(&units, source, flakyAllocator, &allocatorMode, &error);
      check((bytes == -1) == (error != 0));
      if (bytes > 512) { // keep the buffer small
        allocatorMode = 0;
        flakyAllocator(&allocatorMode, reinterpret_cast<char *>(units), 0, reinterpret_cast<int *>(&error));
        units = nullptr;
      }
      break;
    }
    case 16: { // attach one of the machine's buffers, of any claimed size
      unsigned short *buffer = attached[index % 4];
      for (int i = 0; i < 16; ++i)
        buffer[i] = static_cast<unsigned short>(in.byte() < 200 ? 'a' + i : 0xD800 + i);
      buffer[in.byte() % 16] = 0;
      int byteSize = in.word();
      if (byteSize > 32)
        byteSize = 32;
      i18nStringAttach(s, buffer, byteSize, &error);
      break;
    }
    case 17: {
      int length = i18nStringStringLength(s, &error);
      int size = i18nStringStringSize(s, &error);
      check(length >= 0 && size >= 0 && (size == 0 || size >= 2 * length));
      break;
    }
    case 18: {
      I18NStringHandle copy = nullptr;
      i18nStringStringToString(&copy, s, &error);
      check((copy != nullptr) == (error == 0));
      if (copy != nullptr) {
        I18NErrorCodes ignored;
        check(i18nStringCompare(copy, s, &ignored) == 0 && ignored == 0);
        i18nStringFree(&copy, &ignored);
      }
      break;
    }
    default: {
      unsigned int set[4] = {in.codePoint(), in.codePoint(), in.codePoint(), 0};
      int start = in.word();
      i18nStringFindFirstNotOfCodePoints(s, set, start, &error);
      break;
    }
    }
    checkCode(error);
    if (s == nullptr && op != 0 && op != 10 && op != 11 && op != 15)
      check(error == -7); // a null handle is always reported
  }

  ~Machine() {
    I18NErrorCodes error;
    i18nStringIteratorFree(&iterator, &error);
    for (int i = 0; i < 4; ++i)
      i18nStringFree(&slots[i], &error);
    std::free(units);
  }
};

struct Setup {
  Setup() { I18NInitialize(); }
} gSetup;

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  Reader in{data, size};
  Machine machine;
  for (int steps = 0; in.size > 0 && steps < 200; ++steps)
    machine.step(in);
  return 0;
}
