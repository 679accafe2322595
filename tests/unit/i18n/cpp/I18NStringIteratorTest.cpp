// SPDX-License-Identifier: Apache-2.0
// Tests of src/i18n/cpp/i18n_stringiteratorvalue.cpp: walking by code
// points, writing through an iterator value, and the documented assertions.
#include "I18NStringTestSupport.h"

#include <XYLCore/ExceptionHierarchy/XYLErrors.h>
#include <XYLCore/i18n/cpp/i18n_string.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace i18nstringtest;

namespace {
std::string traceOf(const XYLThrowable &e) {
  XYLList<char *> lines(e.getBackTrace());
  std::string all;
  for (auto it = lines.begin(); it != lines.end(); ++it)
    all += *it;
  return all;
}
} // namespace

TEST(I18NStringIteratorTest, WalksByCodePointsBothWays) {
  struct Case {
    std::u16string text;
    std::vector<unsigned int> points;
    std::vector<int> offsets;
  } cases[] = {
      {u"abc", {'a', 'b', 'c'}, {0, 1, 2}},
      {u"a\U0001F600b", {'a', 0x1F600, 'b'}, {0, 1, 3}},
      {std::u16string(1, 0xDC00) + u"\u00e9" + std::u16string(1, 0xD800), {0xDC00, 0xE9, 0xD800}, {0, 1, 2}},
      {u"", {}, {}},
  };
  for (const Case &c : cases) {
    I18NString s = u16s(c.text);
    std::vector<unsigned int> forward;
    std::vector<int> offsets;
    for (I18NStringIterator it = s.begin(); it != s.end(); ++it) {
      forward.push_back(*it);
      offsets.push_back(it.getOffset());
    }
    EXPECT_EQ(c.points, forward);
    EXPECT_EQ(c.offsets, offsets);
    std::vector<unsigned int> backward;
    for (I18NStringIterator it = s.end(); it != s.begin();) {
      --it;
      backward.insert(backward.begin(), static_cast<unsigned int>(*it));
    }
    EXPECT_EQ(c.points, backward);
    EXPECT_EQ(static_cast<int>(c.points.size()), s.end() - s.begin());
    EXPECT_EQ(-static_cast<int>(c.points.size()), s.begin() - s.end());
  }
}

TEST(I18NStringIteratorTest, ArithmeticStopsAtTheEnds) {
  I18NString s = u16s(u"x\U0001F600yz");
  I18NStringIterator it = s.begin();
  EXPECT_EQ(3, (it + 2).getOffset());
  EXPECT_EQ(5, (it + 99).getOffset()); // stays at the end
  it += 2;
  I18NStringIterator old = it++;
  EXPECT_EQ(3, old.getOffset());
  EXPECT_EQ(4, it.getOffset());
  old = it--;
  EXPECT_EQ(4, old.getOffset());
  EXPECT_EQ(3, it.getOffset());
  it += -10;
  EXPECT_EQ(0, it.getOffset());
  EXPECT_TRUE(*(s.begin() + 1) == 0x1F600u);
  EXPECT_TRUE(*s.begin() != 0x1F600u);
  EXPECT_EQ(I18NStringIterator(), I18NStringIterator());
}

TEST(I18NStringIteratorTest, AssigningThroughAValueReplacesOneCharacter) {
  struct Case {
    std::u16string text;
    int step;
    unsigned int cp;
    std::u16string expected;
  } cases[] = {
      {u"abc", 1, 'X', u"aXc"},
      {u"abc", 1, 0x1F600, u"a\U0001F600c"},
      {u"a\U0001F600c", 1, 'Y', u"aYc"}, // the pair goes as a whole
      {u"abc", 3, '!', u"abc!"},         // at the end: appended
  };
  for (const Case &c : cases) {
    I18NString s = u16s(c.text);
    I18NStringIterator it = s.begin() + c.step;
    *it = c.cp;
    EXPECT_EQ(c.expected, unitsOf(s));
  }
  I18NString s("ab", "UTF-8");
  I18NStringIteratorValue first = *s.begin();
  first = *(s.begin() + 1);
  EXPECT_EQ(u"bb", unitsOf(s));
}

TEST(I18NStringIteratorTest, DocumentedAssertions) {
  try {
    I18NStringIteratorValue value(static_cast<icu::UnicodeString *>(nullptr), 0);
    FAIL() << "the deprecated constructor did not assert";
  } catch (XYLAssertError &e) {
    EXPECT_STREQ("XYL_ASSERT_NAMED(FALSE, \"The I18NStringIteratorValue (I18N_ICU_NAMESPACE::UnicodeString *pString, "
                 "I18NStringOffset offset) constructor is deprecated.  Please use the alternate constructor.\");",
                 e.getMessage());
    EXPECT_NE(std::string::npos, traceOf(e).find("i18n/cpp/i18n_stringiteratorvalue("));
  }
  I18NString ascii("abc", "UTF-8");
  try {
    unsigned int c = *ascii.end();
    FAIL() << "read past the end: " << c;
  } catch (XYLAssertError &e) {
    EXPECT_STREQ("XYL_ASSERT(m_offset < m_pI18NString->m_asciiBufLength);", e.getMessage());
  }
  try {
    I18NStringIterator it(ascii, 4);
    FAIL() << "positioned past the end";
  } catch (XYLAssertError &e) {
    EXPECT_STREQ("XYL_ASSERT(m_offset <= m_pI18NString->m_asciiBufLength);", e.getMessage());
  }
  I18NString wide = u16s(u"\u00e9");
  EXPECT_EQ(0xFFFFu, static_cast<unsigned int>(*wide.end())); // Unicode mode: no assertion
}
