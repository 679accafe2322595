// SPDX-License-Identifier: Apache-2.0
// The C interface where C++ makes the test easier: every allocation of a
// call failing in turn (no leak, no escaping exception, a failure code and
// a null result each time), and the locale name buffers.
#include <XYLCore/i18n/c/i18n_c.h>

#include "XYLFaultInjection.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <functional>
#include <string>

namespace {

class I18NCInterfaceTest : public ::testing::Test {
protected:
  void SetUp() override { ASSERT_NE(0, I18NInitialize()); }
  void TearDown() override { I18NTerminate(); }
};

// Runs `call` with the n-th C-heap allocation failing, for n = 1, 2, ...
// until a run needs no more than n - 1 allocations (the call succeeds).
// Each failing run must leave a failure code and report no result.
void everyAllocationFails(const std::function<bool(I18NErrorCodes &)> &call, int expectedCode) {
  int n = 1;
  for (; n < 200; ++n) {
    I18NErrorCodes error = I18N_SUCCESS;
    bool produced;
    {
      xyltest::AllocationFailure failure(n);
      produced = call(error);
    }
    if (error == I18N_SUCCESS) {
      EXPECT_TRUE(produced) << "allocation " << n;
      break;
    }
    EXPECT_FALSE(produced) << "allocation " << n;
    EXPECT_TRUE(error == expectedCode || error == I18N_GENERAL_FAILURE) << "allocation " << n << ": " << error;
  }
  EXPECT_GT(n, 1) << "the call allocated nothing from the C heap";
  EXPECT_LT(n, 200);
}

TEST_F(I18NCInterfaceTest, StringCreationSurvivesEachAllocationFailing) {
  everyAllocationFails(
      [](I18NErrorCodes &error) {
        I18NStringHandle s = nullptr;
        i18nStringNtBytesToString(&s, "caf\xc3\xa9 with a tail longer than the inline buffer", "UTF-8", &error);
        bool made = s != nullptr;
        I18NErrorCodes ignored;
        i18nStringFree(&s, &ignored);
        return made;
      },
      I18N_ALLOCATION_FAILURE);
}

TEST_F(I18NCInterfaceTest, ByteOutputReportsAllocationFailure) {
  I18NErrorCodes error;
  I18NStringHandle s = nullptr;
  i18nStringNtBytesToString(&s, "na\xc3\xafve text that is long enough to need the heap", "UTF-8", &error);
  ASSERT_EQ(I18N_SUCCESS, error);
  everyAllocationFails(
      [s](I18NErrorCodes &e) {
        char *bytes = reinterpret_cast<char *>(&e);
        int length = i18nStringStringToBytes(s, "ISO-8859-1", &bytes, &e);
        bool produced = bytes != nullptr && length == 47;
        EXPECT_EQ(bytes == nullptr, length == -1);
        std::free(bytes);
        return produced;
      },
      I18N_ALLOCATION_FAILURE);
  i18nStringFree(&s, &error);
}

TEST_F(I18NCInterfaceTest, ConverterAllocatingFormsReportMinusOne) {
  I18NErrorCodes error;
  I18NConverterHandle converter = nullptr;
  i18nConverterCreate(&converter, "ISO-8859-1", &error);
  ASSERT_EQ(I18N_SUCCESS, error);
  std::string text(300, '\xe9');
  {
    xyltest::AllocationFailure failure(1, true);
    unsigned short *units = reinterpret_cast<unsigned short *>(&error);
    EXPECT_EQ(-1, i18nConverterToUnicode(converter, text.data(), static_cast<int>(text.size()), &units, &error));
    EXPECT_EQ(I18N_ALLOCATION_FAILURE, error);
    EXPECT_EQ(nullptr, units);
  }
  unsigned short *units = nullptr;
  EXPECT_EQ(600, i18nConverterToUnicode(converter, text.data(), static_cast<int>(text.size()), &units, &error));
  std::free(units);
  i18nConverterFree(&converter, &error);
}

// A buffer of size 0 is too small; a null buffer is a general failure.
TEST_F(I18NCInterfaceTest, LocaleNameBufferSizes) {
  I18NErrorCodes error;
  I18NLocaleHandle locale = nullptr;
  i18nLocaleCreate(&locale, "de-de", &error);
  char small[2];
  EXPECT_EQ(-1, i18nLocaleGetName(locale, small, 0, &error));
  EXPECT_EQ(I18N_BUFFER_TOO_SMALL, error);
  EXPECT_EQ(-1, i18nLocaleGetName(locale, nullptr, 8, &error));
  EXPECT_EQ(I18N_GENERAL_FAILURE, error);
  i18nLocaleFree(&locale, &error);
}

} // namespace
