// SPDX-License-Identifier: Apache-2.0
// Tests of src/i18n/cpp/i18n_numericformat.cpp and i18n_olapformat.cpp:
// locale defaults, exact integer and digit-buffer formatting, the OLAP
// format strings (conversion and output in two locales), named formats,
// symbols and the currency switch.
#include "I18NTestSupport.h"
#include "i18n/cpp/i18n_olapformat.h"

#include <XYLCore/ExceptionHierarchy/XYLErrors.h>
#include <XYLCore/i18n/cpp/i18n_init.h>
#include <XYLCore/i18n/cpp/i18n_numericformat.h>

#include <gtest/gtest.h>

#include <string>

namespace {

using i18ntest::make;
using i18ntest::raisedCode;
using i18ntest::text;

std::string fmt(const I18NNumericFormat &format, double value) {
  I18NString out;
  return text(format.format(value, out));
}

class I18NNumericFormatTest : public i18ntest::InitializedTest {};

} // namespace

TEST_F(I18NNumericFormatTest, LocaleDefaultsAndExactIntegers) {
  I18NNumericFormat en(I18NLocale("en-us"));
  I18NNumericFormat de(I18NLocale("de-de"));
  I18NNumericFormat fr(I18NLocale("fr-fr"));
  EXPECT_EQ("1,234,567.891", fmt(en, 1234567.891));
  EXPECT_EQ("1.234.567,891", fmt(de, 1234567.891));
  EXPECT_EQ("1\u202F234,5", fmt(fr, 1234.5)); // non-ASCII result
  I18NString out("n=", "UTF-8");
  en.format(-1234567L, out);
  EXPECT_EQ("n=-1,234,567", text(out)); // appends
  out = "";
  EXPECT_EQ("9,007,199,254,740,993", text(en.format(9007199254740993LL, out))); // not through a double
  I18NString pattern;
  en.getPattern(pattern);
  EXPECT_EQ("#,##0.###", text(pattern));
}

TEST_F(I18NNumericFormatTest, DigitBuffers) {
  I18NNumericFormat en(I18NLocale("en-us"));
  const struct {
    const char *digits;
    const char *expected;
  } good[] = {
      {"-1234.5678", "-1,234.568"},
      {"1e10", "10,000,000,000"},
      {"+.5", "0.5"},
      {"123456789012345678901234.5", "123,456,789,012,345,678,901,234.5"},
      {"12.5E-1", "1.25"},
  };
  for (const auto &c : good) {
    I18NString out;
    EXPECT_EQ(c.expected, text(en.formatDigitBuffer(c.digits, out))) << c.digits;
  }
  for (const char *bad :
       {"", "-", ".", "abc", "1.2.3", "1e", "1e+", " 1", "1 ", "NaN", "0x10", "1e1234567890", "1e1001", "1e-1001"}) {
    I18NString out;
    EXPECT_EQ(-7, raisedCode([&] { en.formatDigitBuffer(bad, out); })) << bad;
  }
  I18NString out;
  EXPECT_EQ(-7, raisedCode([&] { en.formatDigitBuffer(nullptr, out); }));
}

// Each OLAP string: the ICU pattern it becomes (empty: applied by ICU
// as it stands), and two values in en-us and de-de.
TEST_F(I18NNumericFormatTest, OlapFormatStrings) {
  const struct {
    const char *olap;
    const char *icu;
    double v1;
    const char *en1;
    const char *de1;
    double v2;
    const char *en2;
    const char *de2;
  } cases[] = {
      {"#,##0.00", "", 1234.5, "1,234.50", "1.234,50", -0.125, "-0.12", "-0,12"},
      {"0.00E+00", "", 12345, "1.23E+04", "1,23E+04", 0.00012, "1.20E-04", "1,20E-04"},
      {"0.00E-00", "0.00E00", 12345, "1.23E04", "1,23E04", 0.00012, "1.20E-04", "1,20E-04"},
      {"0.0e+00", "0.0E+00", 12345, "1.2e+04", "1,2e+04", -0.5, "-5.0e-01", "-5,0e-01"},
      {"##0.0E+0", "##0.0E+0", 12345, "12E+3", "12E+3", 0.5, "500E-3", "500E-3"}, // ICU: 2 significant digits
      {"#,##0,", "#,##0", 1234567, "1,235", "1.235", 999, "1", "1"},
      {"#,##0.0,,\"M\"", "#,##0.0M", 1234567, "1.2M", "1,2M", 25e6, "25.0M", "25,0M"},
      {"#,0.0,", "#,##0.0", 1234567, "1,234.6", "1.234,6", 5, "0.0", "0,0"},
      {"0,000.0?", "0,000.0#", 12.345, "0,012.35", "0.012,35", 0.125, "0,000.13", "0.000,13"}, // half up
      {"\\$#,##0.00;(\\$#,##0.00)", "$#,##0.00;($#,##0.00)", 1234.5, "$1,234.50", "$1.234,50", -1234.5, "($1,234.50)",
       "($1.234,50)"},
      {"0%;\\-0%;\"zero\"", "0%;'-'0%", 0.256, "26%", "26%", 0, "zero", "zero"},
      {"\"Total: \"0.0", "Total: 0.0", 3.14159, "Total: 3.1", "Total: 3,1", -2, "-Total: 2.0", "-Total: 2,0"},
      {"0.00 \"km\";;\"-\"", "0.00 km", 12.5, "12.50 km", "12,50 km", 0, "-", "-"},
      {"#,##0;(#,##0);\"n/a\"", "#,##0;(#,##0)", -1500, "(1,500)", "(1.500)", 0, "n/a", "n/a"},
      {"#,##0.00;;0.0", "#,##0.00", -2, "-2.00", "-2,00", 0, "0.0", "0,0"},
      {"\\#0 \\%", "'#'0' %'", 5, "#5 %", "#5 %", 0.5, "#1 %", "#1 %"},
      {"\"E\"0\"E\"", "'E'0'E'", 7, "E7E", "E7E", 12, "E12E", "E12E"},
      {"0\" it's\"", "0 it''s", 7, "7 it's", "7 it's", 1, "1 it's", "1 it's"},
      {"00.??\"-\"", "00.##'-'", 5.1, "05.1-", "05,1-", 123.456, "123.46-", "123,46-"},
  };
  for (const auto &c : cases) {
    if (c.icu[0] != '\0') {
      i18n_olap::OlapFormat olap;
      const char *error = nullptr;
      ASSERT_TRUE(i18n_olap::convertOlap(icu::UnicodeString::fromUTF8(c.olap), olap, error)) << c.olap;
      std::string icuPattern;
      olap.pattern.toUTF8String(icuPattern);
      EXPECT_EQ(c.icu, icuPattern) << c.olap;
    }
    EXPECT_TRUE(I18NNumericFormat::validate(make(c.olap))) << c.olap;
    I18NNumericFormat en(I18NLocale("en-us"));
    I18NNumericFormat de(I18NLocale("de-de"));
    en.setPattern(make(c.olap));
    de.setPattern(make(c.olap));
    EXPECT_EQ(c.en1, fmt(en, c.v1)) << c.olap;
    EXPECT_EQ(c.de1, fmt(de, c.v1)) << c.olap;
    EXPECT_EQ(c.en2, fmt(en, c.v2)) << c.olap;
    EXPECT_EQ(c.de2, fmt(de, c.v2)) << c.olap;
  }
}

TEST_F(I18NNumericFormatTest, NamedFormats) {
  const struct {
    const char *name;
    const char *en;
    const char *de;
  } cases[] = {
      {"General Number", "-1234.5", "-1234,5"},  {"Currency", "-$1,234.50", "-1.234,50\u00A0\u20AC"},
      {"fixed", "-1234.50", "-1234,50"},         {"STANDARD", "-1,234.50", "-1.234,50"},
      {"Percent", "-123450.00%", "-123450,00%"}, {"Scientific", "-1.23E+03", "-1,23E+03"},
  };
  for (const auto &c : cases) {
    I18NNumericFormat en(I18NLocale("en-us"));
    I18NNumericFormat de(I18NLocale("de-de"));
    en.setPattern(make(c.name));
    de.setPattern(make(c.name));
    EXPECT_EQ(c.en, fmt(en, -1234.5)) << c.name;
    EXPECT_EQ(c.de, fmt(de, -1234.5)) << c.name;
  }
}

TEST_F(I18NNumericFormatTest, RejectedPatternsLeaveTheFormatUnchanged) {
  I18NNumericFormat en(I18NLocale("en-us"));
  en.setPattern(make("0.00"));
  for (const char *bad :
       {"", "0\"abc", "0\\", "0 \"x\" 0", "0;0;0;0", "\"abc\"", "0;\"neg\"", "0.0,0", "0%0", "0e+000000000"}) {
    EXPECT_FALSE(I18NNumericFormat::validate(make(bad))) << bad;
    EXPECT_EQ(-7, raisedCode([&] { en.setPattern(make(bad)); })) << bad;
    EXPECT_EQ("1.50", fmt(en, 1.5)) << bad;
  }
  // Where both syntaxes read a text, ICU's reading wins: "#,0" groups by one.
  en.setPattern(make("#,0"));
  EXPECT_EQ("1,2,3,4", fmt(en, 1234));
  // ICU's own quotes hide OLAP characters: applied by ICU as it stands.
  en.setPattern(make("'\\'0"));
  EXPECT_EQ("\\5", fmt(en, 5));
}

TEST_F(I18NNumericFormatTest, ZeroSectionCoversEveryEntryPoint) {
  I18NNumericFormat en(I18NLocale("en-us"));
  en.setPattern(make("0.0;(0.0);\"none\""));
  I18NString out;
  en.format(0L, out);
  en.format(0LL, out);
  en.format(-0.0, out);
  en.formatDigitBuffer("-0.000e5", out);
  en.formatDigitBuffer("0.001", out);
  EXPECT_EQ("nonenonenonenone0.0", text(out));
  en.setPattern(make("0.0")); // a plain pattern drops the zero section
  EXPECT_EQ("0.0", fmt(en, 0));
}

TEST_F(I18NNumericFormatTest, Symbols) {
  const struct {
    const char *locale;
    const char *decimal, *monetary, *grouping, *minus, *plus, *zero, *currency;
  } cases[] = {
      {"en-us", ".", ".", ",", "-", "+", "0", "$"},
      {"de-de", ",", ",", ".", "-", "+", "0", "\u20AC"},
      {"de-ch", ".", ".", "\u2019", "-", "+", "0", "CHF"},
      {"ar-eg", "\u066B", "\u066B", "\u066C", "\u061C-", "\u061C+", "\u0660", "\u062C.\u0645.\u200F"},
  };
  for (const auto &c : cases) {
    I18NNumericFormat format{I18NLocale(c.locale)};
    I18NString s("stale", "UTF-8");
    format.getDecimalSeparator(s);
    EXPECT_EQ(c.decimal, text(s)) << c.locale;
    format.getMonetaryDecimalSeparator(s);
    EXPECT_EQ(c.monetary, text(s)) << c.locale;
    format.getGroupingSeparator(s);
    EXPECT_EQ(c.grouping, text(s)) << c.locale;
    format.getMinusSign(s);
    EXPECT_EQ(c.minus, text(s)) << c.locale;
    format.getPlusSign(s);
    EXPECT_EQ(c.plus, text(s)) << c.locale;
    format.getZeroDigit(s);
    EXPECT_EQ(c.zero, text(s)) << c.locale;
    format.getCurrencySymbol(s);
    EXPECT_EQ(c.currency, text(s)) << c.locale;
  }
}

TEST_F(I18NNumericFormatTest, CurrencySymbolAndCopies) {
  I18NNumericFormat en(I18NLocale("en-us"));
  en.setCurrencySymbol(make("\u00A3"));
  I18NString s;
  en.getCurrencySymbol(s);
  EXPECT_EQ("\u00A3", text(s));
  en.useCurrencySymbol(true);
  EXPECT_EQ("\u00A31,234.50", fmt(en, 1234.5));
  en.setPattern(make("\u00A4 0.00")); // the custom symbol survives a new pattern
  EXPECT_EQ("\u00A3 2.50", fmt(en, 2.5));

  I18NNumericFormat copy(en);
  copy.setPattern(make("0"));
  EXPECT_EQ("\u00A3 2.50", fmt(en, 2.5));
  EXPECT_EQ("2", fmt(copy, 2.5)); // half-even
  copy = en;
  EXPECT_EQ("\u00A3 2.50", fmt(copy, 2.5));
  en.useCurrencySymbol(false);
  EXPECT_EQ("1,234.5", fmt(en, 1234.5));
  EXPECT_EQ("\u00A3 2.50", fmt(copy, 2.5));
}
