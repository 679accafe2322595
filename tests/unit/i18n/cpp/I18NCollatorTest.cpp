// SPDX-License-Identifier: Apache-2.0
// Tests of src/i18n/cpp/i18n_collator.cpp: locale tailorings and levels,
// the empty-string rules, normalisation of the string forms, copies, the
// documented errors, and agreement with ICU's own sort keys on random text.
#include "I18NTestSupport.h"

#include <XYLCore/ExceptionHierarchy/XYLErrors.h>
#include <XYLCore/i18n/cpp/i18n_collator.h>
#include <XYLCore/i18n/cpp/i18n_init.h>
#include <XYLCore/i18n/cpp/i18n_locale.h>
#include <XYLCore/i18n/cpp/i18n_string.h>

#include <gtest/gtest.h>

#include <unicode/normalizer2.h>
#include <unicode/ucol.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace {

I18NString make(const char *utf8) { return I18NString(utf8, "UTF-8"); }

int sign(int v) { return (v > 0) - (v < 0); }

class I18NCollatorTest : public ::testing::Test {
protected:
  void SetUp() override { ASSERT_NE(0, I18NInitialize()); }
  void TearDown() override { I18NTerminate(); }
};

} // namespace

// Tailorings reach ICU through the name (a bare language included) and the
// level decides which differences count.
TEST_F(I18NCollatorTest, LocaleAndLevelDecideTheOrder) {
  struct Case {
    const char *locale;
    int level;
    const char *a;
    const char *b;
    int expected;
  };
  // clang-format off
  const Case cases[] = {
      {"de-de", 0, "a", "A", 0}, {"de-de", 1, "a", "A", 0}, {"de-de", 2, "a", "A", -1},
      {"de-de", 0, "\xC3\xA4", "a", 0}, {"de-de", 1, "\xC3\xA4", "a", 1}, {"de-de", 2, "\xC3\xA4", "z", -1},
      {"sv", 2, "\xC3\xA4", "z", 1}, {"sv-se", 0, "\xC3\xA4", "z", 1}, {"de", 2, "\xC3\xA4", "z", -1},
      {"cs", 2, "ch", "h", 1}, {"cs", 2, "ch", "i", -1}, {"en-us", 2, "ch", "h", -1},
      // Hiragana and katakana differ only at the identical level.
      {"ja", 3, "\xE3\x81\x82", "\xE3\x82\xA2", -1}, {"ja", 2, "\xE3\x81\x82", "\xE3\x82\xA2", 0},
      // Full-width letters differ at the third level.
      {"en-us", 2, "\xEF\xBC\xA1", "A", 1}, {"en-us", 1, "\xEF\xBC\xA1", "A", 0}, {"en-us", 0, "abc", "abd", -1},
  };
  // clang-format on
  for (const Case &c : cases) {
    I18NCollator collator(make(c.locale));
    collator.setLevel(static_cast<I18NCollationLevels>(c.level));
    const I18NString a = make(c.a);
    const I18NString b = make(c.b);
    EXPECT_EQ(c.expected, collator.collate(a, b)) << c.locale << " level " << c.level << ": " << c.a << " / " << c.b;
    EXPECT_EQ(-c.expected, collator.collate(&b, &a)) << c.locale << " level " << c.level;
    EXPECT_EQ(c.expected, collator.collate(a.getUTF16Buffer(), b.getUTF16Buffer())) << c.locale;
  }
  // The I18NLocale constructor uses the locale's name.
  I18NCollator swedish{I18NLocale("sv")};
  EXPECT_EQ(1, swedish.collate(make("\xC3\xA4"), make("z")));
  I18NCollator byDefault;
  EXPECT_EQ(-1, byDefault.collate(make("a"), make("b")));
}

TEST_F(I18NCollatorTest, EmptyStringsOrderFirst) {
  I18NCollator collator(make("de-de"));
  I18NString empty;
  I18NString text = make("\xC3\xA4");
  I18NString other = make("a");
  EXPECT_EQ(0, collator.collate(empty, I18NString()));
  EXPECT_EQ(-1, collator.collate(empty, text));
  EXPECT_EQ(1, collator.collate(text, empty));
  EXPECT_EQ(-1, collator.collate(nullptr, &text));
  EXPECT_EQ(1, collator.collate(&text, static_cast<I18NString *>(nullptr)));
  // A null UTF-16 pointer is ICU's to reject; it must not crash.
  const int nullOrder = collator.collate(static_cast<const void *>(nullptr), text.getUTF16Buffer());
  EXPECT_TRUE(nullOrder >= -1 && nullOrder <= 1);
  // Nothing was normalised on the way: ICU was not involved.
  EXPECT_FALSE(text.isNormalized());
  EXPECT_EQ(1, collator.collate(text, other));
  EXPECT_TRUE(text.isNormalized());
  EXPECT_TRUE(other.isNormalized());
}

// A decomposed and a precomposed spelling collate equal at every level; the
// const forms leave the arguments alone, the modifiable ones normalise them.
TEST_F(I18NCollatorTest, StringsAreNormalisedBeforeComparison) {
  I18NCollator collator(make("fr-fr"));
  for (int level = 0; level <= 3; ++level) {
    collator.setLevel(static_cast<I18NCollationLevels>(level));
    const I18NString decomposed = make("e\xCC\x81t\xC3\xA9");
    const I18NString composed = make("\xC3\xA9t\xC3\xA9");
    EXPECT_EQ(0, collator.collate(decomposed, composed)) << level;
    EXPECT_FALSE(decomposed.isNormalized());
    I18NString a(decomposed);
    I18NString b(composed);
    EXPECT_EQ(0, collator.collate(&a, &b)) << level;
    EXPECT_TRUE(a.isNormalized());
    EXPECT_EQ(composed, a);
  }
  // A string already marked normalised is taken as it stands.
  I18NString marked = make("e\xCC\x81");
  marked.useNormalization(false);
  marked.normalize();
  ASSERT_TRUE(marked.isNormalized());
  I18NString plain = make("\xC3\xA9");
  EXPECT_EQ(0, collator.collate(marked, plain));
  EXPECT_EQ(6, marked.size()); // still two units
}

// Strings changed after they were normalised (and compared) must compare
// by their current text, exactly as their UTF-16 buffers do.
TEST_F(I18NCollatorTest, ChangedStringsCompareByTheirCurrentText) {
  I18NCollator collator(make("de-de"));
  const std::string longWord(40, 'b');
  struct Change {
    const char *name;
    void (*apply)(I18NString &);
  };
  const Change changes[] = {
      {"append", [](I18NString &s) { s.append(make("z\xC3\xA4")); }},
      {"erase to one", [](I18NString &s) { s.erase(1); }},
      {"replace head", [](I18NString &s) { s.replace(0, 1, make("\xC3\x84")); }},
      {"trim", [](I18NString &s) { s.trim(0x62); }},
      {"clear", [](I18NString &s) { s.remove(); }},
  };
  for (const Change &change : changes) {
    for (const std::string &start : {std::string("b\xC3\xA4r"), longWord, std::string("bar")}) {
      I18NString text = make(start.c_str());
      I18NString other = make("b\xC3\xA4rz");
      collator.collate(text, other); // both normalised in place now
      change.apply(text);
      text.normalize();
      const int expected = text.empty() ? -1 : collator.collate(text.getUTF16Buffer(), other.getUTF16Buffer());
      EXPECT_EQ(expected, collator.collate(text, other)) << change.name << " on " << start;
      EXPECT_EQ(-expected, collator.collate(other, text)) << change.name << " on " << start;
    }
  }
}

TEST_F(I18NCollatorTest, LevelsRoundTripAndBadLevelsFail) {
  I18NCollator collator(make("en-us"));
  EXPECT_EQ(I18N_COLLATION_TERTIARY, collator.getLevel());
  for (int level : {3, 0, 1, 2, 3}) {
    collator.setLevel(static_cast<I18NCollationLevels>(level));
    EXPECT_EQ(level, collator.getLevel());
  }
  // 15 is ICU's own value for the identical strength and passes unchanged.
  collator.setLevel(static_cast<I18NCollationLevels>(15));
  EXPECT_EQ(I18N_COLLATION_IDENTICAL, collator.getLevel());
  for (int bad : {7, 99, -5}) {
    try {
      collator.setLevel(static_cast<I18NCollationLevels>(bad));
      ADD_FAILURE() << "level " << bad << " accepted";
    } catch (I18NRuntimeError &e) {
      EXPECT_EQ(I18N_GENERAL_FAILURE, e.getErrorCode());
      EXPECT_STREQ("Setting attribute to Collator object failed", e.getMessage());
    }
  }
  EXPECT_EQ(I18N_COLLATION_IDENTICAL, collator.getLevel());
  // ICU's quaternary strength has no level: the answer is the query's
  // status, 0.
  I18NCollator quaternary(make("en_US@colStrength=quaternary"));
  EXPECT_EQ(0, quaternary.getLevel());
  EXPECT_EQ(-1, quaternary.collate(make("a"), make("A")));
}

TEST_F(I18NCollatorTest, RejectedLocaleNamesRaiseTheDocumentedError) {
  const std::string tooLong(300, 'a');
  for (const char *name : {"en_US@colCaseFirst=what", "de_DE@colStrength=7", tooLong.c_str()}) {
    try {
      I18NCollator collator{make(name)};
      ADD_FAILURE() << name << " accepted";
    } catch (I18NRuntimeError &e) {
      EXPECT_EQ(I18N_GENERAL_FAILURE, e.getErrorCode()) << name;
      EXPECT_STREQ("The Collator object could not be created", e.getMessage()) << name;
      EXPECT_NE(nullptr, std::strstr(e.toString(), "i18n/cpp/i18n_collator")) << e.toString();
    }
  }
  // Names ICU does not know fall back to the root order.
  I18NCollator unknown(make("xx-yy"));
  EXPECT_EQ(-1, unknown.collate(make("a"), make("b")));
}

TEST_F(I18NCollatorTest, CopiesAreIndependent) {
  auto original = std::make_unique<I18NCollator>(make("sv"));
  original->setLevel(I18N_COLLATION_PRIMARY);
  I18NCollator copy(*original);
  EXPECT_EQ(I18N_COLLATION_PRIMARY, copy.getLevel());
  copy.setLevel(I18N_COLLATION_TERTIARY);
  EXPECT_EQ(I18N_COLLATION_PRIMARY, original->getLevel());
  EXPECT_EQ(0, original->collate(make("a"), make("A")));
  original.reset();
  EXPECT_EQ(-1, copy.collate(make("a"), make("A")));
  EXPECT_EQ(1, copy.collate(make("\xC3\xB6"), make("z"))); // still Swedish
}

// Random strings over an alphabet of cased, accented, combining, contracting
// and Japanese characters: the collator's sign must equal the order of ICU's
// sort keys of the NFC text, for every level.
TEST_F(I18NCollatorTest, AgreesWithIcuSortKeysOnRandomText) {
  // Pieces separated by '|'.
  const std::string alphabet =
      "a|A|\xC3\xA4|\xC3\x84|a\xCC\x88|b|c|h|ch|o|\xC3\xB6|z|\xC3\x9F|ss|e|\xC3\xA9|E|\xCC\x81|"
      "\xC3\xA5|\xC3\xB8|\xC3\xA6|\xC4\xB1|i|I| |-|1|\xE3\x81\x82|\xE3\x82\xA2|\xEF\xBD\xB1|"
      "\xE3\x83\xBC|\xE6\xBC\xA2|\xE5\xAD\x97|\xE3\x81\x8B|\xE3\x81\x8C|\xEF\xBC\xA1|\xF0\x9F\x98\x80";
  std::vector<std::string> pieces;
  for (size_t from = 0, bar; from <= alphabet.size(); from = bar + 1) {
    bar = std::min(alphabet.find('|', from), alphabet.size());
    pieces.push_back(alphabet.substr(from, bar - from));
  }
  std::mt19937 random(20261122);
  std::vector<std::string> words;
  for (int i = 0; i < 600; ++i) {
    std::string word;
    const int n = 1 + static_cast<int>(random() % 6);
    for (int k = 0; k < n; ++k)
      word += pieces[random() % pieces.size()];
    words.push_back(word);
  }
  UErrorCode status = U_ZERO_ERROR;
  const icu::Normalizer2 *nfc = icu::Normalizer2::getNFCInstance(status);
  ASSERT_TRUE(U_SUCCESS(status));
  long compared = 0;
  for (const char *locale : {"de-de", "sv-se", "ja-jp", "cs-cz", "fr-ca", "en-us"}) {
    for (int level = 0; level <= 3; ++level) {
      I18NCollator collator(make(locale));
      collator.setLevel(static_cast<I18NCollationLevels>(level));
      status = U_ZERO_ERROR;
      UCollator *reference = ucol_open(locale, &status);
      ASSERT_TRUE(U_SUCCESS(status)) << locale;
      ucol_setStrength(reference, level == 3 ? UCOL_IDENTICAL : static_cast<UCollationStrength>(level));
      std::vector<std::string> keys;
      std::vector<I18NString> texts;
      for (const std::string &word : words) {
        icu::UnicodeString normal = nfc->normalize(icu::UnicodeString::fromUTF8(word), status);
        const int32_t size = ucol_getSortKey(reference, normal.getBuffer(), normal.length(), nullptr, 0);
        std::string key(static_cast<size_t>(size), '\0');
        ucol_getSortKey(reference, normal.getBuffer(), normal.length(), reinterpret_cast<uint8_t *>(&key[0]), size);
        keys.push_back(key);
        texts.push_back(make(word.c_str()));
      }
      ucol_close(reference);
      for (int i = 0; i < 1500; ++i) {
        const size_t x = random() % words.size();
        const size_t y = random() % words.size();
        const int expected = sign(std::strcmp(keys[x].c_str(), keys[y].c_str()));
        const I18NString &a = texts[x];
        const I18NString &b = texts[y];
        ASSERT_EQ(expected, collator.collate(a, b))
            << locale << " level " << level << ": " << words[x] << " / " << words[y];
        ++compared;
      }
      // The modifiable form on the same pairs, after normalising in place.
      for (size_t i = 0; i + 1 < texts.size(); ++i)
        ASSERT_EQ(sign(std::strcmp(keys[i].c_str(), keys[i + 1].c_str())), collator.collate(&texts[i], &texts[i + 1]))
            << locale << " level " << level << ": " << words[i] << " / " << words[i + 1];
    }
  }
  EXPECT_EQ(6 * 4 * 1500, compared);
}
