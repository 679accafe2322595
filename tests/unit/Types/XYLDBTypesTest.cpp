// SPDX-License-Identifier: Apache-2.0
// Every row of the three name tables and three translation tables, typed
// from the published tables in string form, so that a wrong enumerator, name
// or target in the library shows up as a mismatch of texts.
#include <XYLCore/ExceptionHierarchy/XYLErrors.h>
#include <XYLCore/Types/XYLDBTypes.h>

#include "XYLOperatorNewFailure.h"

#include <gtest/gtest.h>

#include <atomic>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace {

struct DatatypeRow {
  XYLDBDatatype value;
  int code;
  const char *name;
  const char *sql;
  const char *xs;
};

struct SqlRow {
  SqlColType value;
  int code;
  const char *name;
  const char *xs;
  const char *xyl;
};

struct XsRow {
  XSType value;
  int code;
  const char *name;
  const char *sql;
  const char *xyl;
};

// XYLDBDatatype: enumerator, code, the name getName gives, then its SqlColType and XSType names.
const DatatypeRow kDatatypeRows[] = {
    {xylDTypeUnknown, 0, "xylDTypeUnknown", "sqlUnknownType", "xs:anyType"},
    {xylDTypeString, 1, "xylDTypeString", "sqlVarChar", "xs:string"},
    {xylDTypeInt8, 2, "xylDTypeInt8", "sqlSmallInt", "xs:byte"},
    {xylDTypeUInt8, 3, "xylDTypeUInt8", "sqlSmallInt", "xs:unsignedByte"},
    {xylDTypeInt16, 4, "xylDTypeInt16", "sqlSmallInt", "xs:short"},
    {xylDTypeUInt16, 5, "xylDTypeUInt16", "sqlInteger", "xs:unsignedShort"},
    {xylDTypeInt32, 6, "xylDTypeInt32", "sqlInteger", "xs:int"},
    {xylDTypeUInt32, 7, "xylDTypeUInt32", "sqlQuad", "xs:unsignedInt"},
    {xylDTypeInt64, 8, "xylDTypeInt64", "sqlQuad", "xs:long"},
    {xylDTypeUInt64, 9, "xylDTypeUInt64", "sqlDecimal", "xs:unsignedLong"},
    {xylDTypeFloat, 10, "xylDTypeFloat", "sqlFloat", "xs:float"},
    {xylDTypeDouble, 11, "xylDTypeDouble", "sqlDouble", "xs:double"},
    {xylDTypeDecimal, 12, "xylDTypeDecimal", "sqlDecimal", "xs:decimal"},
    {xylDTypeDate, 13, "xylDTypeDate", "sqlDate", "xs:date"},
    {xylDTypeTime, 14, "xylDTypeTime", "sqlTime", "xs:time"},
    {xylDTypeTimestamp, 15, "xylDTypeTimestamp", "sqlDateTime", "xs:dateTime"},
    {xylDTypeDTInterval, 16, "xylDTypeDTInterval", "sqlInterval", "xs:duration"},
    {xylDTypeYMInterval, 17, "xylDTypeYMInterval", "sqlIntervalYM", "xs:duration"},
    {xylDTypeBlob, 18, "xylDTypeBlob", "sqlBlob", "xs:base64Binary"},
    {xylDTypeRowIterator, 19, "xylDTypeRowIterator", "sqlInteger", "xs:int"},
    {xylDTypeDimIterator, 20, "xylDTypeDimIterator", "sqlInteger", "xs:int"},
    {xylDTypeMasterDataset, 21, "xylDTypeMasterDataset", "sqlInteger", "xs:int"},
    {xylDTypeVariant, 22, "xylDTypeVariant", "sqlUnknownType", "xs:anyType"},
    {xylDTypeBinary, 23, "xylDTypeBinary", "sqlBinary", "xs:base64Binary"},
    {xylDTypeVarBinary, 24, "xylDTypeVarBinary", "sqlVarBinary", "xs:base64Binary"},
    {xylDTypeMemberUniqueName, 25, "xylDTypeMemberUniqueName", "sqlChar", "xs:normalizedString"},
    {xylDTypeMemberCaption, 26, "xylDTypeMemberCaption", "sqlChar", "xs:normalizedString"},
    {xylDTypeDimensionUniqueName, 27, "xylDTypeDimensionUniqueName", "sqlChar", "xs:normalizedString"},
    {xylDTypeParentUniqueName, 28, "xylDTypeParentUniqueName", "sqlChar", "xs:normalizedString"},
    {xylDTypeDescription, 29, "xylDTypeDescription", "sqlChar", "xs:normalizedString"},
    {xylDTypeHierarchyUniqueName, 30, "xylDTypeHierarchyUniqueName", "sqlChar", "xs:normalizedString"},
    {xylDTypeParentLevel, 31, "xylDTypeParentLevel", "sqlChar", "xs:normalizedString"},
    {xylDTypeLevelUniqueName, 32, "xylDTypeLevelUniqueName", "sqlChar", "xs:normalizedString"},
    {xylDTypeLevelNumber, 33, "xylDTypeLevelNumber", "sqlInteger", "xs:int"},
    {xylDTypeLevelLabel, 34, "xylDTypeLevelLabel", "sqlChar", "xs:normalizedString"},
    {xylDTypeFormattedValue, 35, "xylDTypeFormattedValue", "sqlChar", "xs:normalizedString"},
    {xylDTypeFont, 36, "xylDTypeFont", "sqlChar", "xs:normalizedString"},
    {xylDTypeForeColor, 37, "xylDTypeForeColor", "sqlInteger", "xs:unsignedInt"},
    {xylDTypeBackColor, 38, "xylDTypeBackColor", "sqlInteger", "xs:unsignedInt"},
    {xylDTypeFontFlags, 39, "xylDTypeFontFlags", "sqlInteger", "xs:unsignedInt"},
    {xylDTypeOrdinal, 40, "xylDTypeOrdinal", "sqlQuad", "xs:unsignedLong"},
    {xylDTypeNestedDim, 41, "xylDTypeNestedDim", "sqlInteger", "xs:int"},
    {xylDTypeNumberOfParents, 42, "xylDTypeNumberOfParents", "sqlInteger", "xs:int"},
    {xylDTypeMemberType, 43, "xylDTypeMemberType", "sqlChar", "xs:normalizedString"},
    {xylDTypeHasChildren, 44, "xylDTypeHasChildren", "sqlSmallInt", "xs:boolean"},
    {xylDTypeExternalBuffer, 45, "xylDTypeExternalBuffer", "sqlVarChar", "xs:string"},
    {xylDTypeTextBlob, 46, "xylDTypeTextBlob", "sqlText", "xs:string"},
    {xylDTypeMIME, 47, "xylDTypeMIME", "sqlBlob", "xs:base64Binary"},
    {xylDTypeURL, 48, "xylDTypeURL", "sqlChar", "xs:anyURI"},
    {xylDTypeCurrency, 49, "xylDTypeCurrency", "sqlChar", "xs:normalizedString"},
    {xylDTypeMeasureItem, 50, "xylDTypeMeasureItem", "sqlChar", "xs:normalizedString"},
    {xylDTypeBoolean, 51, "xylDTypeBoolean", "sqlBoolean", "xs:boolean"},
    {xylDTypeTimeTZ, 52, "xylDTypeTimeTZ", "sqlTimeTZ", "xs:time"},
    {xylDTypeTimestampTZ, 53, "xylDTypeTimestampTZ", "sqlTimestampTZ", "xs:dateTime"},
    {xylDTypeNumeric, 54, "xylDTypeNumeric", "sqlNumeric", "xs:decimal"},
    {xylDTypeNChar, 55, "xylDTypeNChar", "sqlNChar", "xs:string"},
    {xylDTypeNVarChar, 56, "xylDTypeNVarChar", "sqlNVarChar", "xs:string"},
    {xylDTypeDate2, 57, "xylDTypeDate2", "sqlDate2", "xs:date"},
    {xylDTypeTime2, 58, "xylDTypeTime2", "sqlTime2", "xs:time"},
    {xylDTypeTimestamp2, 59, "xylDTypeTimestamp2", "sqlTimestamp2", "xs:dateTime"},
    {xylDTypeInterval2, 60, "xylDTypeInterval2", "sqlInterval2", "xs:duration"},
};
const SqlRow kSqlRows[] = {
    {sqlUnknownType, 0, "sqlUnknownType", "xs:anyType", "xylDTypeUnknown"},
    {sqlChar, 1, "sqlChar", "xs:string", "xylDTypeString"},
    {sqlVarChar, 2, "sqlVarChar", "xs:string", "xylDTypeString"},
    {sqlLongVarChar, 3, "sqlLongVarChar", "xs:string", "xylDTypeString"},
    {sqlSmallInt, 4, "sqlSmallInt", "xs:short", "xylDTypeInt16"},
    {sqlInteger, 5, "sqlInteger", "xs:int", "xylDTypeInt32"},
    {sqlDecimal, 6, "sqlDecimal", "xs:decimal", "xylDTypeDecimal"},
    {sqlFloat, 7, "sqlFloat", "xs:float", "xylDTypeFloat"},
    {sqlDouble, 8, "sqlDouble", "xs:double", "xylDTypeDouble"},
    {sqlBinary, 9, "sqlBinary", "xs:base64Binary", "xylDTypeBinary"},
    {sqlVarBinary, 10, "sqlVarBinary", "xs:base64Binary", "xylDTypeVarBinary"},
    {sqlQuad, 11, "sqlQuad", "xs:long", "xylDTypeInt64"},
    {sqlDate, 12, "sqlDate", "xs:date", "xylDTypeDate"},
    {sqlTime, 13, "sqlTime", "xs:time", "xylDTypeTime"},
    {sqlDateTime, 14, "sqlDateTime", "xs:dateTime", "xylDTypeTimestamp"},
    {sqlInterval, 15, "sqlInterval", "xs:duration", "xylDTypeDTInterval"},
    {sqlDbKey, 16, "sqlDbKey", "xs:base64Binary", "xylDTypeBinary"},
    {sqlBlob, 17, "sqlBlob", "xs:base64Binary", "xylDTypeBlob"},
    {sqlText, 18, "sqlText", "xs:string", "xylDTypeTextBlob"},
    {sqlBlobArray, 19, "sqlBlobArray", "xs:base64Binary", "xylDTypeBlob"},
    {sqlChapter, 20, "sqlChapter", "xs:base64Binary", "xylDTypeBlob"},
    {sqlBoolean, 21, "sqlBoolean", "xs:boolean", "xylDTypeBoolean"},
    {sqlTimeTZ, 22, "sqlTimeTZ", "xs:time", "xylDTypeTimeTZ"},
    {sqlTimestampTZ, 23, "sqlTimestampTZ", "xs:dateTime", "xylDTypeTimestampTZ"},
    {sqlIntervalYM, 24, "sqlIntervalYM", "xs:duration", "xylDTypeYMInterval"},
    {sqlNChar, 25, "sqlNChar", "xs:string", "xylDTypeNChar"},
    {sqlNVarChar, 26, "sqlNVarChar", "xs:string", "xylDTypeNVarChar"},
    {sqlNumeric, 27, "sqlNumeric", "xs:decimal", "xylDTypeNumeric"},
    {sqlDate2, 28, "sqlDate2", "xs:date", "xylDTypeDate2"},
    {sqlTime2, 29, "sqlTime2", "xs:time", "xylDTypeTime2"},
    {sqlTimestamp2, 30, "sqlTimestamp2", "xs:dateTime", "xylDTypeTimestamp2"},
    {sqlInterval2, 31, "sqlInterval2", "xs:duration", "xylDTypeInterval2"},
};
const XsRow kXsRows[] = {
    {xsAnyType, 0, "xs:anyType", "sqlUnknownType", "xylDTypeUnknown"},
    {xsString, 1, "xs:string", "sqlVarChar", "xylDTypeString"},
    {xsBoolean, 2, "xs:boolean", "sqlSmallInt", "xylDTypeUInt16"},
    {xsDecimal, 3, "xs:decimal", "sqlDecimal", "xylDTypeDecimal"},
    {xsFloat, 4, "xs:float", "sqlFloat", "xylDTypeFloat"},
    {xsDouble, 5, "xs:double", "sqlDouble", "xylDTypeDouble"},
    {xsDuration, 6, "xs:duration", "sqlInterval", "xylDTypeDTInterval"},
    {xsDateTime, 7, "xs:dateTime", "sqlDateTime", "xylDTypeTimestamp"},
    {xsTime, 8, "xs:time", "sqlTime", "xylDTypeTime"},
    {xsDate, 9, "xs:date", "sqlDate", "xylDTypeDate"},
    {xsGYearMonth, 10, "xs:gYearMonth", "sqlUnknownType", "xylDTypeUnknown"},
    {xsGYear, 11, "xs:gYear", "sqlUnknownType", "xylDTypeUnknown"},
    {xsGMonthDay, 12, "xs:gMonthDay", "sqlUnknownType", "xylDTypeUnknown"},
    {xsGDay, 13, "xs:gDay", "sqlUnknownType", "xylDTypeUnknown"},
    {xsGMonth, 14, "xs:gMonth", "sqlUnknownType", "xylDTypeUnknown"},
    {xsHexBinary, 15, "xs:hexBinary", "sqlBlob", "xylDTypeBlob"},
    {xsBase64Binary, 16, "xs:base64Binary", "sqlBlob", "xylDTypeBlob"},
    {xsAnyURI, 17, "xs:anyURI", "sqlVarChar", "xylDTypeString"},
    {xsQName, 18, "xs:QName", "sqlVarChar", "xylDTypeString"},
    {xsNOTATION, 19, "xs:NOTATION", "sqlVarChar", "xylDTypeString"},
    {xsNormalizedString, 20, "xs:normalizedString", "sqlVarChar", "xylDTypeString"},
    {xsToken, 21, "xs:token", "sqlVarChar", "xylDTypeString"},
    {xsLanguage, 22, "xs:language", "sqlVarChar", "xylDTypeString"},
    {xsNMTOKEN, 23, "xs:NMTOKEN", "sqlVarChar", "xylDTypeString"},
    {xsNMTOKENS, 24, "xs:NMTOKENS", "sqlVarChar", "xylDTypeString"},
    {xsName, 25, "xs:Name", "sqlVarChar", "xylDTypeString"},
    {xsNCName, 26, "xs:NCName", "sqlVarChar", "xylDTypeString"},
    {xsID, 27, "xs:ID", "sqlVarChar", "xylDTypeString"},
    {xsIDREF, 28, "xs:IDREF", "sqlVarChar", "xylDTypeString"},
    {xsIDREFS, 29, "xs:IDREFS", "sqlVarChar", "xylDTypeString"},
    {xsENTITY, 30, "xs:ENTITY", "sqlVarChar", "xylDTypeString"},
    {xsENTITIES, 31, "xs:ENTITIES", "sqlVarChar", "xylDTypeString"},
    {xsInteger, 32, "xs:integer", "sqlInteger", "xylDTypeInt32"},
    {xsNonPositiveInteger, 33, "xs:nonPositiveInteger", "sqlInteger", "xylDTypeInt32"},
    {xsNegativeInteger, 34, "xs:negativeInteger", "sqlInteger", "xylDTypeInt32"},
    {xsLong, 35, "xs:long", "sqlQuad", "xylDTypeInt64"},
    {xsInt, 36, "xs:int", "sqlInteger", "xylDTypeInt32"},
    {xsShort, 37, "xs:short", "sqlSmallInt", "xylDTypeInt16"},
    {xsByte, 38, "xs:byte", "sqlSmallInt", "xylDTypeInt8"},
    {xsNonNegativeInteger, 39, "xs:nonNegativeInteger", "sqlInteger", "xylDTypeUInt32"},
    {xsUnsignedLong, 40, "xs:unsignedLong", "sqlDecimal", "xylDTypeUInt64"},
    {xsUnsignedInt, 41, "xs:unsignedInt", "sqlQuad", "xylDTypeUInt32"},
    {xsUnsignedShort, 42, "xs:unsignedShort", "sqlInteger", "xylDTypeUInt16"},
    {xsUnsignedByte, 43, "xs:unsignedByte", "sqlSmallInt", "xylDTypeUInt8"},
    {xsPositiveInteger, 44, "xs:positiveInteger", "sqlQuad", "xylDTypeUInt32"},
};

// Null-safe text for failure messages.
std::string text(const char *name) { return name == nullptr ? std::string("(null)") : std::string("\"") + name + "\""; }

XYLDBTypes &types() { return *XYLDBTypes::get(); }

TEST(XYLDBTypesTest, TablesCoverEveryCodeOnce) {
  // The rows above are complete and in code order; a row dropped or doubled
  // while editing them would silently weaken the row tests below.
  ASSERT_EQ(61u, sizeof kDatatypeRows / sizeof kDatatypeRows[0]);
  ASSERT_EQ(32u, sizeof kSqlRows / sizeof kSqlRows[0]);
  ASSERT_EQ(45u, sizeof kXsRows / sizeof kXsRows[0]);
  for (int i = 0; i < 61; ++i)
    EXPECT_EQ(i, kDatatypeRows[i].code);
  for (int i = 0; i < 32; ++i)
    EXPECT_EQ(i, kSqlRows[i].code);
  for (int i = 0; i < 45; ++i)
    EXPECT_EQ(i, kXsRows[i].code);
}

TEST(XYLDBTypesTest, EveryXYLDBDatatypeRow) {
  XYLDBTypes &t = types();
  for (const DatatypeRow &row : kDatatypeRows) {
    SCOPED_TRACE(row.name);
    XYLDBDatatype code = static_cast<XYLDBDatatype>(row.code);
    EXPECT_EQ(row.code, static_cast<int>(row.value)) << "enumerator value";
    EXPECT_STREQ(row.name, t.getName(code));
    EXPECT_EQ(row.code, static_cast<int>(t.getXYLDBDatatypeCode(row.name)));
    EXPECT_STREQ(row.sql, t.getName(t.XYLDBDatatype2SqlColType(code)));
    EXPECT_STREQ(row.xs, t.getName(t.XYLDBDatatype2XSType(code)));
  }
}

TEST(XYLDBTypesTest, EverySqlColTypeRow) {
  XYLDBTypes &t = types();
  for (const SqlRow &row : kSqlRows) {
    SCOPED_TRACE(row.name);
    SqlColType code = static_cast<SqlColType>(row.code);
    EXPECT_EQ(row.code, static_cast<int>(row.value)) << "enumerator value";
    EXPECT_STREQ(row.name, t.getName(code));
    EXPECT_EQ(row.code, static_cast<int>(t.getSqlColTypeCode(row.name)));
    EXPECT_STREQ(row.xs, t.getName(t.SqlColType2XSType(code)));
    EXPECT_STREQ(row.xyl, t.getName(t.SqlColType2XYLDBDatatype(code)));
  }
}

TEST(XYLDBTypesTest, EveryXSTypeRow) {
  XYLDBTypes &t = types();
  for (const XsRow &row : kXsRows) {
    SCOPED_TRACE(row.name);
    XSType code = static_cast<XSType>(row.code);
    EXPECT_EQ(row.code, static_cast<int>(row.value)) << "enumerator value";
    EXPECT_STREQ(row.name, t.getName(code));
    EXPECT_EQ(row.code, static_cast<int>(t.getXSTypeCode(row.name)));
    EXPECT_STREQ(row.sql, t.getName(t.XSType2SqlColType(code)));
    EXPECT_STREQ(row.xyl, t.getName(t.XSType2XYLDBDatatype(code)));
  }
}

TEST(XYLDBTypesTest, DatatypeFifteenHasTwoNamesAndReportsTheLater) {
  XYLDBTypes &t = types();
  EXPECT_EQ(15, static_cast<int>(t.getXYLDBDatatypeCode("xylDTypeDateTime")));
  EXPECT_EQ(15, static_cast<int>(t.getXYLDBDatatypeCode("xylDTypeTimestamp")));
  EXPECT_STREQ("xylDTypeTimestamp", t.getName(static_cast<XYLDBDatatype>(15)));
  EXPECT_EQ(xylDTypeDateTime, xylDTypeTimestamp);
  // Both names translate alike.
  EXPECT_EQ(sqlDateTime, t.XYLDBDatatype2SqlColType(t.getXYLDBDatatypeCode("xylDTypeDateTime")));
  EXPECT_EQ(xsDateTime, t.XYLDBDatatype2XSType(t.getXYLDBDatatypeCode("xylDTypeDateTime")));
}

TEST(XYLDBTypesTest, TranslationsAreNotInverses) {
  XYLDBTypes &t = types();
  EXPECT_EQ(sqlSmallInt, t.XSType2SqlColType(xsBoolean));
  EXPECT_EQ(xylDTypeUInt16, t.XSType2XYLDBDatatype(xsBoolean));
  EXPECT_EQ(sqlBoolean, t.XYLDBDatatype2SqlColType(xylDTypeBoolean));
  EXPECT_EQ(xsBoolean, t.XYLDBDatatype2XSType(xylDTypeBoolean));
  EXPECT_EQ(sqlQuad, t.XSType2SqlColType(xsUnsignedInt));
  EXPECT_EQ(sqlInteger, t.XSType2SqlColType(xsNonNegativeInteger));
}

TEST(XYLDBTypesTest, UnknownCodesGiveNullOrZero) {
  XYLDBTypes &t = types();
  const int codes[] = {-1, 61, 62, 100, 1000, -2147483647 - 1, 2147483647};
  for (int raw : codes) {
    SCOPED_TRACE(raw);
    // Asked twice: the second answer must not differ from the first.
    for (int round = 0; round < 2; ++round) {
      EXPECT_EQ(nullptr, t.getName(static_cast<XYLDBDatatype>(raw)));
      EXPECT_EQ(sqlUnknownType, t.XYLDBDatatype2SqlColType(static_cast<XYLDBDatatype>(raw)));
      EXPECT_EQ(xsAnyType, t.XYLDBDatatype2XSType(static_cast<XYLDBDatatype>(raw)));
    }
  }
  for (int raw : {-1, 32, 45, 99}) {
    SCOPED_TRACE(raw);
    EXPECT_EQ(nullptr, t.getName(static_cast<SqlColType>(raw)));
    EXPECT_EQ(xsAnyType, t.SqlColType2XSType(static_cast<SqlColType>(raw)));
    EXPECT_EQ(xylDTypeUnknown, t.SqlColType2XYLDBDatatype(static_cast<SqlColType>(raw)));
  }
  for (int raw : {-1, 45, 61, 99}) {
    SCOPED_TRACE(raw);
    EXPECT_EQ(nullptr, t.getName(static_cast<XSType>(raw)));
    EXPECT_EQ(sqlUnknownType, t.XSType2SqlColType(static_cast<XSType>(raw)));
    EXPECT_EQ(xylDTypeUnknown, t.XSType2XYLDBDatatype(static_cast<XSType>(raw)));
  }
  // A code that exists in one family only: 40 is a datatype and an XSType,
  // but no SqlColType.
  EXPECT_EQ(nullptr, t.getName(static_cast<SqlColType>(40)));
  EXPECT_STREQ("xylDTypeOrdinal", t.getName(static_cast<XYLDBDatatype>(40)));
}

TEST(XYLDBTypesTest, UnknownNamesGiveZero) {
  XYLDBTypes &t = types();
  // Names differing in case, spacing or prefix, names of another family, and
  // prefixes and extensions of real names.
  const char *const names[] = {
      "",           "SQLCHAR",          "SqlChar",        "sqlchar",          "sqlChar ",     " sqlChar",
      "sqlCha",     "sqlCharX",         "xs:String",      "XS:string",        "string",       "xs:",
      "xs:anytype", "xylDTypeString\n", "xyldtypestring", "xylDTypeDatetime", "xs:integer\t", "\xff\xfe"};
  for (const char *name : names) {
    SCOPED_TRACE(text(name));
    EXPECT_EQ(xylDTypeUnknown, t.getXYLDBDatatypeCode(name));
    EXPECT_EQ(sqlUnknownType, t.getSqlColTypeCode(name));
    EXPECT_EQ(xsAnyType, t.getXSTypeCode(name));
  }
  EXPECT_EQ(xylDTypeUnknown, t.getXYLDBDatatypeCode(nullptr));
  EXPECT_EQ(sqlUnknownType, t.getSqlColTypeCode(nullptr));
  EXPECT_EQ(xsAnyType, t.getXSTypeCode(nullptr));
}

TEST(XYLDBTypesTest, NamesBelongToOneFamilyOnly) {
  XYLDBTypes &t = types();
  for (const DatatypeRow &row : kDatatypeRows) {
    EXPECT_EQ(sqlUnknownType, t.getSqlColTypeCode(row.name)) << row.name;
    EXPECT_EQ(xsAnyType, t.getXSTypeCode(row.name)) << row.name;
  }
  for (const SqlRow &row : kSqlRows) {
    EXPECT_EQ(xylDTypeUnknown, t.getXYLDBDatatypeCode(row.name)) << row.name;
    EXPECT_EQ(xsAnyType, t.getXSTypeCode(row.name)) << row.name;
  }
  for (const XsRow &row : kXsRows) {
    EXPECT_EQ(xylDTypeUnknown, t.getXYLDBDatatypeCode(row.name)) << row.name;
    EXPECT_EQ(sqlUnknownType, t.getSqlColTypeCode(row.name)) << row.name;
  }
}

TEST(XYLDBTypesTest, GetReturnsOneInstance) {
  XYLDBTypes *first = XYLDBTypes::get();
  ASSERT_NE(nullptr, first);
  EXPECT_EQ(first, XYLDBTypes::get());
}

// Releases all workers at once, so that first calls and lookups overlap.
class StartLine {
public:
  void wait() {
    std::unique_lock<std::mutex> lock(m_mutex);
    m_cv.wait(lock, [this] { return m_open; });
  }
  void open() {
    {
      std::lock_guard<std::mutex> lock(m_mutex);
      m_open = true;
    }
    m_cv.notify_all();
  }

private:
  std::mutex m_mutex;
  std::condition_variable m_cv;
  bool m_open = false;
};

// Joins the workers even when an assertion ends the test body early.
class Workers {
public:
  ~Workers() {
    m_start.open();
    for (std::thread &thread : m_threads)
      thread.join();
  }
  template <class F> void spawn(F f) {
    m_threads.emplace_back([this, f] {
      m_start.wait();
      f();
    });
  }
  void go() { m_start.open(); }
  void join() {
    m_start.open();
    for (std::thread &thread : m_threads)
      thread.join();
    m_threads.clear();
  }

private:
  StartLine m_start;
  std::vector<std::thread> m_threads;
};

class XYLDBTypesConcurrentTest : public ::testing::TestWithParam<int> {};

// Many threads look up known and unknown names and codes at the same time.
// With insert-on-miss lookups the unknown keys would be written into the
// shared maps while others read them; ThreadSanitizer reports that and the
// maps can be corrupted. Every answer is checked against the rows.
TEST_P(XYLDBTypesConcurrentTest, KnownAndUnknownLookupsFromManyThreads) {
  const int threads = GetParam();
  std::atomic<long> mismatches{0};
  std::vector<XYLDBTypes *> seen(threads, nullptr);
  Workers workers;
  for (int w = 0; w < threads; ++w) {
    workers.spawn([w, &mismatches, &seen] {
      XYLDBTypes *t = XYLDBTypes::get();
      seen[w] = t;
      long bad = 0;
      char unknown[32];
      for (int round = 0; round < 200; ++round) {
        // Unknown names differ per thread and round, so each would be a new
        // key for an inserting lookup.
        std::snprintf(unknown, sizeof unknown, "xs:unknown%d_%d", w, round);
        bad += t->getXSTypeCode(unknown) != xsAnyType;
        bad += t->getSqlColTypeCode(unknown) != sqlUnknownType;
        bad += t->getXYLDBDatatypeCode(unknown) != xylDTypeUnknown;
        int code = 1000 + w * 1000 + round;
        bad += t->getName(static_cast<XYLDBDatatype>(code)) != nullptr;
        bad += t->getName(static_cast<SqlColType>(-code)) != nullptr;
        bad += t->XSType2SqlColType(static_cast<XSType>(code)) != sqlUnknownType;
        bad += t->SqlColType2XYLDBDatatype(static_cast<SqlColType>(code)) != xylDTypeUnknown;

        const DatatypeRow &d = kDatatypeRows[(w + round) % 61];
        bad += std::strcmp(d.name, t->getName(static_cast<XYLDBDatatype>(d.code))) != 0;
        bad += t->getXYLDBDatatypeCode(d.name) != d.code;
        bad += std::strcmp(d.xs, t->getName(t->XYLDBDatatype2XSType(d.value))) != 0;
        const SqlRow &s = kSqlRows[(w * 7 + round) % 32];
        bad += t->getSqlColTypeCode(s.name) != s.code;
        bad += std::strcmp(s.xyl, t->getName(t->SqlColType2XYLDBDatatype(s.value))) != 0;
        const XsRow &x = kXsRows[(w * 3 + round) % 45];
        bad += t->getXSTypeCode(x.name) != x.code;
        bad += std::strcmp(x.sql, t->getName(t->XSType2SqlColType(x.value))) != 0;
      }
      mismatches.fetch_add(bad);
    });
  }
  workers.join();
  EXPECT_EQ(0, mismatches.load());
  for (int w = 0; w < threads; ++w)
    EXPECT_EQ(XYLDBTypes::get(), seen[w]) << "thread " << w;
}

INSTANTIATE_TEST_SUITE_P(ThreadCounts, XYLDBTypesConcurrentTest, ::testing::Values(2, 4, 8, 16));

// Runs in a fresh process (the singleton of this one may exist already):
// fails the 1st, 2nd, ... allocation of the first get() until creation
// succeeds. Every failed run must throw XYLOutOfMemoryError and publish
// nothing; the run that succeeds must give complete tables.
int createUnderAllocationFailures() {
  for (long n = 1; n < 100000; ++n) {
    XYLDBTypes *created = nullptr;
    bool threw = false;
    bool fired = false;
    {
      xyltest::OperatorNewFailure failure(n);
      try {
        created = XYLDBTypes::get();
      } catch (XYLOutOfMemoryError &) {
        threw = true;
      } catch (...) {
        std::fprintf(stderr, "run %ld: unexpected exception\n", n);
        return 2;
      }
      fired = failure.fired();
    }
    if (threw != fired) {
      std::fprintf(stderr, "run %ld: failure injected %d, thrown %d\n", n, fired, threw);
      return 3;
    }
    if (threw)
      continue;
    if (n == 1 || created == nullptr || created != XYLDBTypes::get()) {
      std::fprintf(stderr, "run %ld: no failure path was exercised or no instance\n", n);
      return 4;
    }
    int bad = 0;
    for (const DatatypeRow &row : kDatatypeRows)
      bad += std::strcmp(row.sql, created->getName(created->XYLDBDatatype2SqlColType(row.value))) != 0;
    for (const SqlRow &row : kSqlRows)
      bad += std::strcmp(row.xyl, created->getName(created->SqlColType2XYLDBDatatype(row.value))) != 0;
    for (const XsRow &row : kXsRows)
      bad += created->getXSTypeCode(row.name) != row.code;
    if (bad != 0) {
      std::fprintf(stderr, "run %ld: %d rows wrong after recovery\n", n, bad);
      return 5;
    }
    std::fprintf(stderr, "created after %ld failed runs\n", n - 1);
    return 0;
  }
  return 6;
}

#if GTEST_HAS_DEATH_TEST
TEST(XYLDBTypesDeathTest, CreationFailureThrowsOutOfMemoryAndIsRetried) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(std::exit(createUnderAllocationFailures()), ::testing::ExitedWithCode(0),
              "created after [1-9][0-9]* failed runs");
}
#endif

} // namespace
