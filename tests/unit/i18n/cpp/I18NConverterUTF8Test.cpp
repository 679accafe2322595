// SPDX-License-Identifier: Apache-2.0
// UTF-8 converters decode and encode through ICU's direct UTF-8 functions
// where the mode allows it: every mode, on valid, ill-formed and truncated
// input and at every target capacity, must give exactly what a plain ICU
// converter with the same callback gives.
#include <XYLCore/i18n/cpp/i18n_converter.h>

#include <gtest/gtest.h>
#include <unicode/ucnv.h>
#include <unicode/ucnv_cb.h>

#include <string>
#include <vector>

namespace {

void snowman(const char *, const char *, int, unsigned int *codePoints, int *count, I18NErrorCodes *) {
  codePoints[0] = 0x2603;
  *count = 1;
}

void bang(unsigned int, const char *, char *bytes, int *length, I18NErrorCodes *) {
  bytes[0] = '!';
  *length = 1;
}

// What the converter answers for ICU's status. A result that fills a
// caller's buffer exactly, without room for the terminator, is complete.
I18NErrorCodes codeOf(UErrorCode status) {
  if (status == U_BUFFER_OVERFLOW_ERROR)
    return I18N_BUFFER_TOO_SMALL;
  return U_FAILURE(status) ? I18N_GENERAL_FAILURE : I18N_SUCCESS;
}

// What the library's user-defined mode does with snowman and bang, as plain
// ICU callbacks.
void snowmanToU(const void *, UConverterToUnicodeArgs *args, const char *, int32_t, UConverterCallbackReason reason,
                UErrorCode *err) {
  if (reason > UCNV_IRREGULAR)
    return;
  const UChar unit = 0x2603;
  *err = U_ZERO_ERROR;
  ucnv_cbToUWriteUChars(args, &unit, 1, 0, err);
}

void bangFromU(const void *, UConverterFromUnicodeArgs *args, const UChar *, int32_t, UChar32,
               UConverterCallbackReason reason, UErrorCode *err) {
  if (reason > UCNV_IRREGULAR)
    return;
  *err = U_ZERO_ERROR;
  ucnv_cbFromUWriteBytes(args, "!", 1, 0, err);
}

// A plain ICU UTF-8 converter behaving as I18NConverter in mode `mode`. The
// resources configure no replacement for UTF-8, so mode 1 stops.
struct Reference {
  UConverter *cnv;
  explicit Reference(int mode) {
    UErrorCode status = U_ZERO_ERROR;
    cnv = ucnv_open("UTF-8", &status);
    ucnv_setFallback(cnv, true);
    const UConverterToUCallback toU[] = {UCNV_TO_U_CALLBACK_ESCAPE, UCNV_TO_U_CALLBACK_STOP,
                                         UCNV_TO_U_CALLBACK_SUBSTITUTE, snowmanToU, UCNV_TO_U_CALLBACK_STOP};
    const UConverterFromUCallback fromU[] = {UCNV_FROM_U_CALLBACK_ESCAPE, UCNV_FROM_U_CALLBACK_STOP,
                                             UCNV_FROM_U_CALLBACK_SUBSTITUTE, bangFromU, UCNV_FROM_U_CALLBACK_STOP};
    UConverterToUCallback oldToU;
    UConverterFromUCallback oldFromU;
    const void *oldContext;
    ucnv_setToUCallBack(cnv, toU[mode], nullptr, &oldToU, &oldContext, &status);
    ucnv_setFromUCallBack(cnv, fromU[mode], nullptr, &oldFromU, &oldContext, &status);
    EXPECT_TRUE(U_SUCCESS(status));
  }
  ~Reference() { ucnv_close(cnv); }
};

I18NConverter converterFor(int mode) {
  I18NConverter converter("UTF-8");
  converter.setUserDefinedUnconvertibleInputSequenceCallback(snowman);
  converter.setUserDefinedUnconvertibleOutputSequenceCallback(bang);
  converter.setBuiltInUnconvertibleInputSequenceCallback(mode);
  converter.setBuiltInUnconvertibleOutputSequenceCallback(mode);
  return converter;
}

TEST(I18NConverterUTF8Test, DecodingMatchesICUInEveryModeAndCapacity) {
  const std::string inputs[] = {
      "caf\xC3\xA9 \xE6\xBC\xA2 \xF0\x9F\x98\x80", // valid
      std::string("a\0\xC3\xA9z", 5),
      "\xEF\xBB\xBFx",
      "", // embedded NUL, BOM, empty
      "a\xFF"
      "b",
      "\xC0\x80",
      "\xED\xA0\x80x",
      "\xF4\x90\x80\x80", // ill-formed
      "\x80\x80y",
      "\xE6\xBCz",
      "\xF0\x9F\x98",
      "x\xE6\xBC", // stray and truncated
  };
  for (int mode = 0; mode <= 4; ++mode) {
    I18NConverter converter = converterFor(mode);
    Reference ref(mode);
    for (const std::string &in : inputs) {
      const int n = static_cast<int>(in.size());
      for (int capacity : {4 * n + 4, n, 1, 0}) {
        std::vector<UChar> want(static_cast<size_t>(capacity) + 1, 0x5555), got(want);
        UErrorCode status = U_ZERO_ERROR;
        int32_t units = ucnv_toUChars(ref.cnv, want.data(), capacity, in.data(), n, &status);
        I18NErrorCodes error = I18N_SUCCESS;
        int bytes =
            converter.toUnicode(in.data(), n, reinterpret_cast<unsigned short *>(got.data()), capacity * 2, &error);
        SCOPED_TRACE("mode " + std::to_string(mode) + " input #" + std::to_string(&in - inputs) + " capacity " +
                     std::to_string(capacity));
        ASSERT_EQ(codeOf(status), error);
        if (error != I18N_GENERAL_FAILURE) {
          ASSERT_EQ(units * 2, bytes);
          ASSERT_EQ(want, got);
        }
      }
      if (n > 0 && in.back() == 0)
        continue;
      int allocated = -1;
      I18NErrorCodes error = I18N_SUCCESS;
      unsigned short *block = converter.toUnicode(in.data(), n, &allocated, nullptr, nullptr, &error);
      UErrorCode status = U_ZERO_ERROR;
      std::vector<UChar> want(static_cast<size_t>(4 * n + 4));
      int32_t units = ucnv_toUChars(ref.cnv, want.data(), 4 * n + 4, in.data(), n, &status);
      EXPECT_EQ(codeOf(status), error) << "mode " << mode << " allocating, input #" << (&in - inputs);
      if (block != nullptr) {
        EXPECT_EQ(std::u16string(want.data(), static_cast<size_t>(units)),
                  std::u16string(reinterpret_cast<char16_t *>(block), static_cast<size_t>(allocated / 2)));
        I18NConverter::freeBuffer(block);
      }
    }
  }
}

TEST(I18NConverterUTF8Test, EncodingMatchesICUInEveryModeAndCapacity) {
  const std::u16string inputs[] = {
      u"caf\u00E9 \u6F22 \U0001F600",
      u"", // valid, empty
      u"a\xD800",
      u"\xDC00z",
      u"\xD83D"
      "a\xDE00",
      u"x\xDBFF\xDBFF", // unpaired surrogates
  };
  for (int mode = 0; mode <= 4; ++mode) {
    I18NConverter converter = converterFor(mode);
    Reference ref(mode);
    for (const std::u16string &in : inputs) {
      const int n = static_cast<int>(in.size());
      for (int capacity : {12 * n + 4, 3 * n, 2, 0}) {
        std::vector<char> want(static_cast<size_t>(capacity) + 1, 'U'), got(want);
        UErrorCode status = U_ZERO_ERROR;
        int32_t bytes = ucnv_fromUChars(ref.cnv, want.data(), capacity, in.data(), n, &status);
        I18NErrorCodes error = I18N_SUCCESS;
        int written = converter.fromUnicode(reinterpret_cast<const unsigned short *>(in.data()), n * 2, got.data(),
                                            capacity, &error);
        SCOPED_TRACE("mode " + std::to_string(mode) + " input #" + std::to_string(&in - inputs) + " capacity " +
                     std::to_string(capacity));
        ASSERT_EQ(codeOf(status), error);
        if (error != I18N_GENERAL_FAILURE) {
          ASSERT_EQ(bytes, written);
          ASSERT_EQ(want, got);
        }
      }
    }
  }
}

} // namespace
