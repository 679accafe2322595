// SPDX-License-Identifier: Apache-2.0
// Tests of src/i18n/cpp/i18n_init.cpp and i18n_locale.cpp: counted start-up,
// the default locale name, the locale cache and parsing, and the locale's
// operations; also the converter's I18NString forms.
#include "I18NTestSupport.h"

#include <XYLCore/ExceptionHierarchy/XYLErrors.h>
#include <XYLCore/i18n/cpp/i18n_converter.h>
#include <XYLCore/i18n/cpp/i18n_init.h>
#include <XYLCore/i18n/cpp/i18n_locale.h>
#include <XYLCore/i18n/cpp/i18n_string.h>

#include <XYLFaultInjection.h>
#include <gtest/gtest.h>

#include <unicode/locid.h>

#include <string>

namespace {

using i18ntest::make;
using i18ntest::text;

class I18NLocaleTest : public i18ntest::InitializedTest {};

} // namespace

// ---- Start-up ----------------------------------------------------------------------------

TEST(I18NInitTest, CountedInitialisationAndTermination) {
  EXPECT_EQ(nullptr, I18NLocale::gI18NDefaultLocaleName);
  ASSERT_NE(0, I18NInitialize());
  ASSERT_NE(0, I18NInitialize());
  I18NTerminate();
  // Still usable after one of two terminations.
  EXPECT_NE(nullptr, I18NGetDefaultLocaleName());
  {
    I18NConverterUTF8 pooled;
    const long clones = I18NConverter::getCloneCount();
    I18NConverter cloned("UTF-8");
    EXPECT_EQ(clones + 1, I18NConverter::getCloneCount()); // prototypes still there
  }
  I18NTerminate();
  EXPECT_EQ(nullptr, I18NLocale::gI18NDefaultLocaleName);
  const long opens = I18NConverter::getOpenCount();
  I18NConverter opened("UTF-8");
  EXPECT_EQ(opens + 1, I18NConverter::getOpenCount()); // no prototypes any more
  I18NTerminate();                                     // an extra termination does nothing
  ASSERT_NE(0, I18NInitialize());
  EXPECT_NE(nullptr, I18NGetDefaultLocaleName()); // a new cycle computes it again
  I18NTerminate();
}

TEST(I18NInitTest, DefaultLocaleNameBeforeInitialisationAsserts) {
  try {
    I18NGetDefaultLocaleName();
    ADD_FAILURE() << "no assertion";
  } catch (XYLAssertError &e) {
    EXPECT_STREQ("XYL_ASSERT(I18NLocale::gI18NDefaultLocaleName);", e.getMessage());
  }
}

TEST(I18NInitTest, DefaultLocaleNameFromIcuDefault) {
  struct Case {
    const char *icuDefault;
    const char *expected;
  } cases[] = {
      {"de_DE", "de-de"}, {"en_US_POSIX", "en-us"}, {"fr", "fr"}, {"ja_JP_TRADITIONAL", "ja-jp_traditional"},
      {"pt_BR", "pt-br"},
  };
  const icu::Locale saved = icu::Locale::getDefault();
  for (const Case &c : cases) {
    UErrorCode status = U_ZERO_ERROR;
    icu::Locale::setDefault(icu::Locale(c.icuDefault), status);
    ASSERT_NE(0, I18NInitialize());
    EXPECT_STREQ(c.expected, I18NGetDefaultLocaleName()) << c.icuDefault;
    I18NTerminate();
  }
  UErrorCode status = U_ZERO_ERROR;
  icu::Locale::setDefault(saved, status);
}

TEST(I18NInitTest, AllocationFailureAtEveryStepLeavesNothingBehind) {
  // Fail the Nth C-heap allocation of the start-up, N = 1, 2, ... until it
  // completes; after each failure the layer must be cleanly uninitialised.
  int completedAt = 0;
  for (long n = 1; n <= 200 && completedAt == 0; ++n) {
    int result = -1;
    {
      xyltest::AllocationFailure failure(n);
      try {
        result = I18NInitialize();
      } catch (XYLOutOfMemoryError &) {
        result = -1;
      }
    }
    if (result == 1) {
      completedAt = static_cast<int>(n);
      EXPECT_NE(nullptr, I18NGetDefaultLocaleName());
      I18NTerminate();
    } else {
      EXPECT_EQ(-1, result) << "failure " << n << " reported as 0 instead of thrown";
      EXPECT_EQ(nullptr, I18NLocale::gI18NDefaultLocaleName) << n;
      EXPECT_THROW(I18NGetDefaultLocaleName(), XYLAssertError) << n;
    }
  }
  EXPECT_GT(completedAt, 1); // at least one allocation was failed on the way
  ASSERT_NE(0, I18NInitialize());
  I18NTerminate();
}

// ---- The cache -----------------------------------------------------------------------------

TEST_F(I18NLocaleTest, NullAndEmptyNamesMeanEnUsAndEqualNamesShareOneEntry) {
  I18NLocale fromNull(static_cast<const char *>(nullptr));
  I18NLocale fromEmpty("");
  EXPECT_EQ("en-us", text(fromNull.getName()));
  EXPECT_EQ(&fromNull.getName(), &fromEmpty.getName());
  I18NLocale a("fr-fr"), b("fr-fr");
  EXPECT_EQ(&a.getName(), &b.getName());
  I18NLocale copy(a);
  EXPECT_EQ(&a.getName(), &copy.getName());
  // The key is the caller's text: another spelling is another entry, but
  // the locales still compare equal.
  I18NLocale upper("EN-US"), lower("en-us");
  EXPECT_NE(&upper.getName(), &lower.getName());
  EXPECT_TRUE(upper == lower);
}

TEST_F(I18NLocaleTest, NameEndsAtWhitespaceButTheKeyIsTheWholeText) {
  I18NLocale tabbed("ja-jp\tand more"), plain("ja-jp");
  EXPECT_EQ("ja-jp", text(tabbed.getName()));
  EXPECT_EQ("ja", text(tabbed.getLanguage()));
  EXPECT_EQ("jp", text(tabbed.getCountry()));
  EXPECT_NE(&tabbed.getName(), &plain.getName());
  EXPECT_TRUE(tabbed == plain);
}

TEST_F(I18NLocaleTest, Parsing) {
  struct Case {
    std::string name;
    const char *fullName, *language, *country, *variant, *normalized, *icuName;
  } cases[] = {
      {"en_US.UTF-8", "en_US", "en", "US", "", "en-us", "en_US"},
      {"de-DE-1996", "de-DE-1996", "de", "DE", "1996", "de-de-1996", "de_DE_1996"},
      {"en--posix", "en--posix", "en", "", "posix", "en--posix", "en__POSIX"},
      {"zh-hant-tw", "zh-hant-tw", "zh", "tw", "", "zh-hant-tw", "zh_Hant_TW"},
      {"sr_Latn_RS", "sr_Latn_RS", "sr", "RS", "", "sr-latn-rs", "sr_Latn_RS"},
      {"fr", "fr", "fr", "", "", "fr", "fr"},
      {"x-y_z", "x-y_z", "x", "y_z", "", "x-y-z", nullptr},
      {" \t", "", "", "", "", "", ""},
      {"---", "---", "", "", "-", "---", nullptr},
      {"__", "__", "", "", "", "--", ""},
      {".UTF-8", "", "", "", "", "", ""},
  };
  for (const Case &c : cases) {
    I18NLocale locale(c.name.c_str());
    EXPECT_EQ(c.fullName, text(locale.getName())) << c.name;
    EXPECT_EQ(c.language, text(locale.getLanguage())) << c.name;
    EXPECT_EQ(c.country, text(locale.getCountry())) << c.name;
    EXPECT_EQ(c.variant, text(locale.getVariant())) << c.name;
    I18NString normalized;
    locale.getNormalizedName(normalized);
    EXPECT_EQ(c.normalized, text(normalized)) << c.name;
    if (c.icuName != nullptr) { // odd names: only the parts are promised
      EXPECT_STREQ(c.icuName, locale.getLocale().getName()) << c.name;
    }
  }
}

TEST_F(I18NLocaleTest, VeryLongAndNonAsciiNamesNeverFail) {
  const std::string longName = "en-us-" + std::string(5000, 'v');
  I18NLocale locale(longName.c_str());
  EXPECT_EQ(longName, text(locale.getName()));
  EXPECT_EQ(std::string(5000, 'v'), text(locale.getVariant()));
  I18NLocale odd("\xFF\xFE-\xC3");
  EXPECT_EQ("\xEF\xBF\xBD\xEF\xBF\xBD", text(odd.getLanguage())); // substituted, not thrown
}

TEST_F(I18NLocaleTest, LongNameCopyFailureThrowsOutOfMemory) {
  const std::string name = "de-de-" + std::string(60, 'v'); // longer than the 47-character scratch
  {
    xyltest::AllocationFailure failure(1);
    EXPECT_THROW(I18NLocale locale(name.c_str()), XYLOutOfMemoryError);
  }
  I18NLocale locale(name.c_str()); // nothing was cached by the failed attempt
  EXPECT_EQ(name, text(locale.getName()));
}

TEST_F(I18NLocaleTest, SystemMeansIcuDefault) {
  I18NLocale system("SYSTEM");
  EXPECT_STREQ(icu::Locale::getDefault().getName(), system.getLocale().getName());
  EXPECT_EQ(icu::Locale::getDefault().getLanguage(), text(system.getLanguage()));
  EXPECT_EQ(icu::Locale::getDefault().getName(), text(system.getName()));
}

TEST_F(I18NLocaleTest, WindowsLocaleIdentifiers) {
  struct Case {
    unsigned short lcid;
    const char *name;
  } cases[] = {{1033, "en-us"}, {1041, "ja-jp"}, {1031, "de-de"}, {0, "en-us"}};
  for (const Case &c : cases) {
    I18NLocale locale(c.lcid);
    EXPECT_EQ(c.name, text(locale.getName())) << c.lcid;
  }
  EXPECT_EQ(1033, I18NLocale("en-us").getLCID());
  EXPECT_EQ(1036, I18NLocale("fr_FR").getLCID());
  EXPECT_EQ(0, I18NLocale("qq-qq").getLCID());
}

TEST_F(I18NLocaleTest, NormalizeLocaleName) {
  struct Case {
    const char *in, *out;
  } cases[] = {{"EN_us.UTF-8", "en-us"}, {"de-DE", "de-de"}, {"", ""}, {"ja\tx", "ja"}};
  for (const Case &c : cases) {
    I18NString normalized;
    I18NLocale::normalizeLocaleName(make(c.in), normalized);
    EXPECT_EQ(c.out, text(normalized)) << c.in;
  }
}

// ---- Operations ----------------------------------------------------------------------------

TEST_F(I18NLocaleTest, ComparisonFollowsTheLocale) {
  I18NLocale english("en-us"), swedish("sv-se"), german("de-de");
  // "B" < "a" by code units, but not in a dictionary.
  EXPECT_LT(english.compare(make("a"), make("B")), 0);
  EXPECT_GT(english.compare(make("B"), make("a")), 0);
  EXPECT_EQ(0, english.compare(make("abc"), make("abc")));
  EXPECT_NE(0, english.compare(make("abc"), make("ABC")));
  EXPECT_EQ(0, english.compareIgnoreCase(make("abc"), make("ABC")));
  EXPECT_NE(0, english.compareIgnoreCase(make("abc"), make("abd")));
  // Swedish sorts o-umlaut after z; German sorts it with o.
  EXPECT_LT(swedish.compare(make("z"), make("\xC3\xB6")), 0);
  EXPECT_LT(german.compare(make("\xC3\xB6"), make("z")), 0);
}

TEST_F(I18NLocaleTest, CaseMappingFollowsTheLocale) {
  struct Case {
    const char *locale, *in, *upper, *lower;
  } cases[] = {
      {"en-us", "iI", "II", "ii"},
      {"tr-tr", "iI", "\xC4\xB0I", "i\xC4\xB1"},
      {"de-de",
       "stra\xC3\x9F"
       "e",
       "STRASSE",
       "stra\xC3\x9F"
       "e"},
      {"en-us", "", "", ""},
  };
  for (const Case &c : cases) {
    I18NLocale locale(c.locale);
    I18NString upper = make(c.in), lower = make(c.in);
    locale.toUpper(upper);
    locale.toLower(lower);
    EXPECT_EQ(c.upper, text(upper)) << c.locale << " " << c.in;
    EXPECT_EQ(c.lower, text(lower)) << c.locale << " " << c.in;
  }
}

TEST_F(I18NLocaleTest, DisplayNames) {
  I18NString name;
  I18NLocale("fr-fr").getDisplayName(I18NLocale("en-us"), name);
  EXPECT_EQ("French (France)", text(name));
  I18NLocale("fr-fr").getDisplayName(I18NLocale("de-de"), name);
  EXPECT_EQ("Franz\xC3\xB6sisch (Frankreich)", text(name));
  I18NLocale("fr-fr").getDisplayName(name);
  EXPECT_FALSE(name.empty());
}

TEST_F(I18NLocaleTest, IsCJKAndAvailableLocales) {
  struct Case {
    const char *name;
    bool cjk;
  } cases[] = {{"ja-jp", true},  {"zh_TW", true}, {"ko", true}, {"KOR", true},    {"yue-hk", true},
               {"en-us", false}, {"jav", false},  {"", false},  {nullptr, false}, {"zhx", false}};
  for (const Case &c : cases)
    EXPECT_EQ(c.cjk, I18NLocale::isCJK(c.name)) << (c.name ? c.name : "(null)");
  EXPECT_TRUE(I18NLocale::isCJK(I18NLocale("zh-cn")));
  EXPECT_FALSE(I18NLocale::isCJK(I18NLocale("fr")));
  int count = 0;
  const icu::Locale *locales = I18NLocale::getAvailableLocales(count);
  ASSERT_NE(nullptr, locales);
  EXPECT_GT(count, 100);
}

TEST_F(I18NLocaleTest, OrderingOperators) {
  I18NLocale de("de-de"), en("en-us"), en2("en_US");
  EXPECT_TRUE(de < en);
  EXPECT_TRUE(de <= en);
  EXPECT_TRUE(en > de);
  EXPECT_TRUE(en >= de);
  EXPECT_TRUE(en == en2);
  EXPECT_TRUE(en <= en2);
  EXPECT_TRUE(en >= en2);
  EXPECT_FALSE(en != en2);
  EXPECT_TRUE(de != en);
  I18NLocale assigned("fr");
  assigned = de;
  EXPECT_TRUE(assigned == de);
  EXPECT_EQ(&assigned.getName(), &de.getName());
}

// ---- Converter forms that need strings and locales ----------------------------------------------

TEST_F(I18NLocaleTest, EncodingForLocale) {
  struct Case {
    const char *locale;
    std::string expected;
  } cases[] = {
      {"ja-jp", "Shift_JIS"}, {"zh-TW", "Big5"}, {"ru", "windows-1251"}, {"qq-qq", I18NGetPlatformDefaultEncoding()}};
  for (const Case &c : cases) {
    I18NString encoding;
    I18NConverter::getEncodingForLocale(encoding, I18NLocale(c.locale));
    EXPECT_EQ(c.expected, text(encoding)) << c.locale;
  }
  EXPECT_TRUE(I18NConverter::shouldUseBOM(make("UTF-16BE")));
  EXPECT_FALSE(I18NConverter::shouldUseBOM(make("UTF16_PlatformEndian")));
}

TEST_F(I18NLocaleTest, ConverterStringForms) {
  I18NConverter converter("windows-1252");
  I18NString target = make("old");
  I18NErrorCodes error = I18N_GENERAL_FAILURE;
  converter.toUnicode("\x80 caf\xE9", -1, target, &error);
  EXPECT_EQ(I18N_SUCCESS, error);
  EXPECT_EQ("\xE2\x82\xAC caf\xC3\xA9", text(target));

  char buffer[16];
  EXPECT_EQ(6, converter.fromUnicode(target, buffer, sizeof buffer, &error));
  EXPECT_EQ(I18N_SUCCESS, error);
  EXPECT_STREQ("\x80 caf\xE9", buffer);
  int length = 0;
  char *heap = converter.fromUnicode(make("\xC3\xA9t\xC3\xA9"), &length, nullptr, nullptr, &error);
  ASSERT_NE(nullptr, heap);
  EXPECT_EQ(3, length);
  EXPECT_STREQ("\xE9t\xE9", heap);
  I18NConverter::freeBuffer(heap);

  // A failed conversion leaves the target as it was.
  converter.setBuiltInUnconvertibleInputSequenceCallback(I18N_UNCONVERTIBLE_STOP);
  I18NConverter utf8("UTF-8");
  utf8.setBuiltInUnconvertibleInputSequenceCallback(I18N_UNCONVERTIBLE_STOP);
  utf8.toUnicode("ok\xFF", 3, target, &error);
  EXPECT_EQ(I18N_GENERAL_FAILURE, error);
  EXPECT_EQ("\xE2\x82\xAC caf\xC3\xA9", text(target));
  // Escapes make the result longer than the first guess: the retry path.
  const std::string invalid(100, '\xFF');
  utf8.setBuiltInUnconvertibleInputSequenceCallback(I18N_UNCONVERTIBLE_ESCAPE);
  utf8.toUnicode(invalid.data(), static_cast<int>(invalid.size()), target, &error);
  EXPECT_EQ(I18N_SUCCESS, error);
  EXPECT_EQ(400, target.length());
  EXPECT_EQ("%XFF%XFF", text(target).substr(0, 8));
}
