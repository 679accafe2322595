// SPDX-License-Identifier: Apache-2.0
#include <XYLCore/Types/XYLDBTypes.h>

#include <XYLCore/ExceptionHierarchy/XYLErrors.h>
#include <XYLCore/Threads/XYLThreadCriticalSection.h>
#include <XYLCore/Threads/XYLThreadGuard.h>

#include <atomic>
#include <cstring>
#include <map>
#include <new>

namespace {

struct NameRow {
  int code;
  const char *name;
};

// A key of one family and its counterparts in the two others, in the order
// the translation functions of that family name them.
struct TranslationRow {
  int key;
  int first;
  int second;
};

// Code 15 appears twice: first as "xylDTypeDateTime", then after "xylDTypeTimeTZ" as "xylDTypeTimestamp",
// which therefore is the name getName(15) returns.
const NameRow kXYLDBDatatypeNames[] = {
    {0, "xylDTypeUnknown"},
    {1, "xylDTypeString"},
    {2, "xylDTypeInt8"},
    {3, "xylDTypeUInt8"},
    {4, "xylDTypeInt16"},
    {5, "xylDTypeUInt16"},
    {6, "xylDTypeInt32"},
    {7, "xylDTypeUInt32"},
    {8, "xylDTypeInt64"},
    {9, "xylDTypeUInt64"},
    {10, "xylDTypeFloat"},
    {11, "xylDTypeDouble"},
    {12, "xylDTypeDecimal"},
    {13, "xylDTypeDate"},
    {14, "xylDTypeTime"},
    {15, "xylDTypeDateTime"},
    {16, "xylDTypeDTInterval"},
    {17, "xylDTypeYMInterval"},
    {18, "xylDTypeBlob"},
    {19, "xylDTypeRowIterator"},
    {20, "xylDTypeDimIterator"},
    {21, "xylDTypeMasterDataset"},
    {22, "xylDTypeVariant"},
    {23, "xylDTypeBinary"},
    {24, "xylDTypeVarBinary"},
    {25, "xylDTypeMemberUniqueName"},
    {26, "xylDTypeMemberCaption"},
    {27, "xylDTypeDimensionUniqueName"},
    {28, "xylDTypeParentUniqueName"},
    {29, "xylDTypeDescription"},
    {30, "xylDTypeHierarchyUniqueName"},
    {31, "xylDTypeParentLevel"},
    {32, "xylDTypeLevelUniqueName"},
    {33, "xylDTypeLevelNumber"},
    {34, "xylDTypeLevelLabel"},
    {35, "xylDTypeFormattedValue"},
    {36, "xylDTypeFont"},
    {37, "xylDTypeForeColor"},
    {38, "xylDTypeBackColor"},
    {39, "xylDTypeFontFlags"},
    {40, "xylDTypeOrdinal"},
    {41, "xylDTypeNestedDim"},
    {42, "xylDTypeNumberOfParents"},
    {43, "xylDTypeMemberType"},
    {44, "xylDTypeHasChildren"},
    {45, "xylDTypeExternalBuffer"},
    {46, "xylDTypeTextBlob"},
    {47, "xylDTypeMIME"},
    {48, "xylDTypeURL"},
    {49, "xylDTypeCurrency"},
    {50, "xylDTypeMeasureItem"},
    {51, "xylDTypeBoolean"},
    {52, "xylDTypeTimeTZ"},
    {15, "xylDTypeTimestamp"},
    {53, "xylDTypeTimestampTZ"},
    {54, "xylDTypeNumeric"},
    {55, "xylDTypeNChar"},
    {56, "xylDTypeNVarChar"},
    {57, "xylDTypeDate2"},
    {58, "xylDTypeTime2"},
    {59, "xylDTypeTimestamp2"},
    {60, "xylDTypeInterval2"},
};
const NameRow kSqlColTypeNames[] = {
    {0, "sqlUnknownType"}, {1, "sqlChar"},       {2, "sqlVarChar"},  {3, "sqlLongVarChar"},  {4, "sqlSmallInt"},
    {5, "sqlInteger"},     {6, "sqlDecimal"},    {7, "sqlFloat"},    {8, "sqlDouble"},       {9, "sqlBinary"},
    {10, "sqlVarBinary"},  {11, "sqlQuad"},      {12, "sqlDate"},    {13, "sqlTime"},        {14, "sqlDateTime"},
    {15, "sqlInterval"},   {16, "sqlDbKey"},     {17, "sqlBlob"},    {18, "sqlText"},        {19, "sqlBlobArray"},
    {20, "sqlChapter"},    {21, "sqlBoolean"},   {22, "sqlTimeTZ"},  {23, "sqlTimestampTZ"}, {24, "sqlIntervalYM"},
    {25, "sqlNChar"},      {26, "sqlNVarChar"},  {27, "sqlNumeric"}, {28, "sqlDate2"},       {29, "sqlTime2"},
    {30, "sqlTimestamp2"}, {31, "sqlInterval2"},
};
const NameRow kXSTypeNames[] = {
    {0, "xs:anyType"},
    {1, "xs:string"},
    {2, "xs:boolean"},
    {3, "xs:decimal"},
    {4, "xs:float"},
    {5, "xs:double"},
    {6, "xs:duration"},
    {7, "xs:dateTime"},
    {8, "xs:time"},
    {9, "xs:date"},
    {10, "xs:gYearMonth"},
    {11, "xs:gYear"},
    {12, "xs:gMonthDay"},
    {13, "xs:gDay"},
    {14, "xs:gMonth"},
    {15, "xs:hexBinary"},
    {16, "xs:base64Binary"},
    {17, "xs:anyURI"},
    {18, "xs:QName"},
    {19, "xs:NOTATION"},
    {20, "xs:normalizedString"},
    {21, "xs:token"},
    {22, "xs:language"},
    {23, "xs:NMTOKEN"},
    {24, "xs:NMTOKENS"},
    {25, "xs:Name"},
    {26, "xs:NCName"},
    {27, "xs:ID"},
    {28, "xs:IDREF"},
    {29, "xs:IDREFS"},
    {30, "xs:ENTITY"},
    {31, "xs:ENTITIES"},
    {32, "xs:integer"},
    {33, "xs:nonPositiveInteger"},
    {34, "xs:negativeInteger"},
    {35, "xs:long"},
    {36, "xs:int"},
    {37, "xs:short"},
    {38, "xs:byte"},
    {39, "xs:nonNegativeInteger"},
    {40, "xs:unsignedLong"},
    {41, "xs:unsignedInt"},
    {42, "xs:unsignedShort"},
    {43, "xs:unsignedByte"},
    {44, "xs:positiveInteger"},
};
// XYLDBDatatype -> SqlColType, XSType.
const TranslationRow kXYLDBDatatypeTranslations[] = {
    {xylDTypeUnknown, sqlUnknownType, xsAnyType},
    {xylDTypeString, sqlVarChar, xsString},
    {xylDTypeInt8, sqlSmallInt, xsByte},
    {xylDTypeUInt8, sqlSmallInt, xsUnsignedByte},
    {xylDTypeInt16, sqlSmallInt, xsShort},
    {xylDTypeUInt16, sqlInteger, xsUnsignedShort},
    {xylDTypeInt32, sqlInteger, xsInt},
    {xylDTypeUInt32, sqlQuad, xsUnsignedInt},
    {xylDTypeInt64, sqlQuad, xsLong},
    {xylDTypeUInt64, sqlDecimal, xsUnsignedLong},
    {xylDTypeFloat, sqlFloat, xsFloat},
    {xylDTypeDouble, sqlDouble, xsDouble},
    {xylDTypeDecimal, sqlDecimal, xsDecimal},
    {xylDTypeDate, sqlDate, xsDate},
    {xylDTypeTime, sqlTime, xsTime},
    {xylDTypeTimestamp, sqlDateTime, xsDateTime},
    {xylDTypeDTInterval, sqlInterval, xsDuration},
    {xylDTypeYMInterval, sqlIntervalYM, xsDuration},
    {xylDTypeBlob, sqlBlob, xsBase64Binary},
    {xylDTypeRowIterator, sqlInteger, xsInt},
    {xylDTypeDimIterator, sqlInteger, xsInt},
    {xylDTypeMasterDataset, sqlInteger, xsInt},
    {xylDTypeVariant, sqlUnknownType, xsAnyType},
    {xylDTypeBinary, sqlBinary, xsBase64Binary},
    {xylDTypeVarBinary, sqlVarBinary, xsBase64Binary},
    {xylDTypeMemberUniqueName, sqlChar, xsNormalizedString},
    {xylDTypeMemberCaption, sqlChar, xsNormalizedString},
    {xylDTypeDimensionUniqueName, sqlChar, xsNormalizedString},
    {xylDTypeParentUniqueName, sqlChar, xsNormalizedString},
    {xylDTypeDescription, sqlChar, xsNormalizedString},
    {xylDTypeHierarchyUniqueName, sqlChar, xsNormalizedString},
    {xylDTypeParentLevel, sqlChar, xsNormalizedString},
    {xylDTypeLevelUniqueName, sqlChar, xsNormalizedString},
    {xylDTypeLevelNumber, sqlInteger, xsInt},
    {xylDTypeLevelLabel, sqlChar, xsNormalizedString},
    {xylDTypeFormattedValue, sqlChar, xsNormalizedString},
    {xylDTypeFont, sqlChar, xsNormalizedString},
    {xylDTypeForeColor, sqlInteger, xsUnsignedInt},
    {xylDTypeBackColor, sqlInteger, xsUnsignedInt},
    {xylDTypeFontFlags, sqlInteger, xsUnsignedInt},
    {xylDTypeOrdinal, sqlQuad, xsUnsignedLong},
    {xylDTypeNestedDim, sqlInteger, xsInt},
    {xylDTypeNumberOfParents, sqlInteger, xsInt},
    {xylDTypeMemberType, sqlChar, xsNormalizedString},
    {xylDTypeHasChildren, sqlSmallInt, xsBoolean},
    {xylDTypeExternalBuffer, sqlVarChar, xsString},
    {xylDTypeTextBlob, sqlText, xsString},
    {xylDTypeMIME, sqlBlob, xsBase64Binary},
    {xylDTypeURL, sqlChar, xsAnyURI},
    {xylDTypeCurrency, sqlChar, xsNormalizedString},
    {xylDTypeMeasureItem, sqlChar, xsNormalizedString},
    {xylDTypeBoolean, sqlBoolean, xsBoolean},
    {xylDTypeTimeTZ, sqlTimeTZ, xsTime},
    {xylDTypeTimestampTZ, sqlTimestampTZ, xsDateTime},
    {xylDTypeNumeric, sqlNumeric, xsDecimal},
    {xylDTypeNChar, sqlNChar, xsString},
    {xylDTypeNVarChar, sqlNVarChar, xsString},
    {xylDTypeDate2, sqlDate2, xsDate},
    {xylDTypeTime2, sqlTime2, xsTime},
    {xylDTypeTimestamp2, sqlTimestamp2, xsDateTime},
    {xylDTypeInterval2, sqlInterval2, xsDuration},
};
// SqlColType -> XSType, XYLDBDatatype.
const TranslationRow kSqlColTypeTranslations[] = {
    {sqlUnknownType, xsAnyType, xylDTypeUnknown},
    {sqlChar, xsString, xylDTypeString},
    {sqlVarChar, xsString, xylDTypeString},
    {sqlLongVarChar, xsString, xylDTypeString},
    {sqlSmallInt, xsShort, xylDTypeInt16},
    {sqlInteger, xsInt, xylDTypeInt32},
    {sqlDecimal, xsDecimal, xylDTypeDecimal},
    {sqlFloat, xsFloat, xylDTypeFloat},
    {sqlDouble, xsDouble, xylDTypeDouble},
    {sqlBinary, xsBase64Binary, xylDTypeBinary},
    {sqlVarBinary, xsBase64Binary, xylDTypeVarBinary},
    {sqlQuad, xsLong, xylDTypeInt64},
    {sqlDate, xsDate, xylDTypeDate},
    {sqlTime, xsTime, xylDTypeTime},
    {sqlDateTime, xsDateTime, xylDTypeTimestamp},
    {sqlInterval, xsDuration, xylDTypeDTInterval},
    {sqlDbKey, xsBase64Binary, xylDTypeBinary},
    {sqlBlob, xsBase64Binary, xylDTypeBlob},
    {sqlText, xsString, xylDTypeTextBlob},
    {sqlBlobArray, xsBase64Binary, xylDTypeBlob},
    {sqlChapter, xsBase64Binary, xylDTypeBlob},
    {sqlBoolean, xsBoolean, xylDTypeBoolean},
    {sqlTimeTZ, xsTime, xylDTypeTimeTZ},
    {sqlTimestampTZ, xsDateTime, xylDTypeTimestampTZ},
    {sqlIntervalYM, xsDuration, xylDTypeYMInterval},
    {sqlNChar, xsString, xylDTypeNChar},
    {sqlNVarChar, xsString, xylDTypeNVarChar},
    {sqlNumeric, xsDecimal, xylDTypeNumeric},
    {sqlDate2, xsDate, xylDTypeDate2},
    {sqlTime2, xsTime, xylDTypeTime2},
    {sqlTimestamp2, xsDateTime, xylDTypeTimestamp2},
    {sqlInterval2, xsDuration, xylDTypeInterval2},
};
// XSType -> SqlColType, XYLDBDatatype.
const TranslationRow kXSTypeTranslations[] = {
    {xsAnyType, sqlUnknownType, xylDTypeUnknown},
    {xsString, sqlVarChar, xylDTypeString},
    {xsBoolean, sqlSmallInt, xylDTypeUInt16},
    {xsDecimal, sqlDecimal, xylDTypeDecimal},
    {xsFloat, sqlFloat, xylDTypeFloat},
    {xsDouble, sqlDouble, xylDTypeDouble},
    {xsDuration, sqlInterval, xylDTypeDTInterval},
    {xsDateTime, sqlDateTime, xylDTypeTimestamp},
    {xsTime, sqlTime, xylDTypeTime},
    {xsDate, sqlDate, xylDTypeDate},
    {xsGYearMonth, sqlUnknownType, xylDTypeUnknown},
    {xsGYear, sqlUnknownType, xylDTypeUnknown},
    {xsGMonthDay, sqlUnknownType, xylDTypeUnknown},
    {xsGDay, sqlUnknownType, xylDTypeUnknown},
    {xsGMonth, sqlUnknownType, xylDTypeUnknown},
    {xsHexBinary, sqlBlob, xylDTypeBlob},
    {xsBase64Binary, sqlBlob, xylDTypeBlob},
    {xsAnyURI, sqlVarChar, xylDTypeString},
    {xsQName, sqlVarChar, xylDTypeString},
    {xsNOTATION, sqlVarChar, xylDTypeString},
    {xsNormalizedString, sqlVarChar, xylDTypeString},
    {xsToken, sqlVarChar, xylDTypeString},
    {xsLanguage, sqlVarChar, xylDTypeString},
    {xsNMTOKEN, sqlVarChar, xylDTypeString},
    {xsNMTOKENS, sqlVarChar, xylDTypeString},
    {xsName, sqlVarChar, xylDTypeString},
    {xsNCName, sqlVarChar, xylDTypeString},
    {xsID, sqlVarChar, xylDTypeString},
    {xsIDREF, sqlVarChar, xylDTypeString},
    {xsIDREFS, sqlVarChar, xylDTypeString},
    {xsENTITY, sqlVarChar, xylDTypeString},
    {xsENTITIES, sqlVarChar, xylDTypeString},
    {xsInteger, sqlInteger, xylDTypeInt32},
    {xsNonPositiveInteger, sqlInteger, xylDTypeInt32},
    {xsNegativeInteger, sqlInteger, xylDTypeInt32},
    {xsLong, sqlQuad, xylDTypeInt64},
    {xsInt, sqlInteger, xylDTypeInt32},
    {xsShort, sqlSmallInt, xylDTypeInt16},
    {xsByte, sqlSmallInt, xylDTypeInt8},
    {xsNonNegativeInteger, sqlInteger, xylDTypeUInt32},
    {xsUnsignedLong, sqlDecimal, xylDTypeUInt64},
    {xsUnsignedInt, sqlQuad, xylDTypeUInt32},
    {xsUnsignedShort, sqlInteger, xylDTypeUInt16},
    {xsUnsignedByte, sqlSmallInt, xylDTypeUInt8},
    {xsPositiveInteger, sqlQuad, xylDTypeUInt32},
};

// Names are compared as exact byte strings.
struct NameLess {
  bool operator()(const char *a, const char *b) const { return std::strcmp(a, b) < 0; }
};

typedef std::map<int, const char *> CodeToName;
typedef std::map<const char *, int, NameLess> NameToCode;
typedef std::map<int, int> CodeToCode;

// Read-only lookups: a missing key yields 0 (or null) and leaves the map as
// it is, so any number of threads may look up at once.
const char *findName(const CodeToName &map, int code) {
  CodeToName::const_iterator found = map.find(code);
  return found == map.end() ? nullptr : found->second;
}

int findCode(const NameToCode &map, const char *name) {
  if (name == nullptr)
    return 0;
  NameToCode::const_iterator found = map.find(name);
  return found == map.end() ? 0 : found->second;
}

int findTarget(const CodeToCode &map, int code) {
  CodeToCode::const_iterator found = map.find(code);
  return found == map.end() ? 0 : found->second;
}

// Later rows overwrite earlier ones, which is what gives code 15 its second
// name.
template <std::size_t N> void fillNames(const NameRow (&rows)[N], CodeToName &byCode, NameToCode &byName) {
  for (const NameRow &row : rows) {
    byCode[row.code] = row.name;
    byName[row.name] = row.code;
  }
}

template <std::size_t N>
void fillTranslations(const TranslationRow (&rows)[N], CodeToCode &toFirst, CodeToCode &toSecond) {
  for (const TranslationRow &row : rows) {
    toFirst[row.key] = row.first;
    toSecond[row.key] = row.second;
  }
}

// The singleton, and the lock that serialises its creation (made on first
// use, so that it exists whatever the order of static construction).
std::atomic<XYLDBTypes *> g_instance{nullptr};

XYLThreadCriticalSection &creationLock() {
  static XYLThreadCriticalSection lock(0);
  return lock;
}

} // namespace

struct XYLDBTypes::Maps {
  CodeToName xylName;
  NameToCode xylCode;
  CodeToName sqlName;
  NameToCode sqlCode;
  CodeToName xsName;
  NameToCode xsCode;
  CodeToCode xyl2Sql;
  CodeToCode xyl2Xs;
  CodeToCode sql2Xs;
  CodeToCode sql2Xyl;
  CodeToCode xs2Sql;
  CodeToCode xs2Xyl;
};

XYLDBTypes::XYLDBTypes() : m_pMaps(nullptr) {}

XYLDBTypes::~XYLDBTypes() { delete m_pMaps; }

void XYLDBTypes::init() {
  m_pMaps = new Maps;
  fillNames(kXYLDBDatatypeNames, m_pMaps->xylName, m_pMaps->xylCode);
  fillNames(kSqlColTypeNames, m_pMaps->sqlName, m_pMaps->sqlCode);
  fillNames(kXSTypeNames, m_pMaps->xsName, m_pMaps->xsCode);
  fillTranslations(kXYLDBDatatypeTranslations, m_pMaps->xyl2Sql, m_pMaps->xyl2Xs);
  fillTranslations(kSqlColTypeTranslations, m_pMaps->sql2Xs, m_pMaps->sql2Xyl);
  fillTranslations(kXSTypeTranslations, m_pMaps->xs2Sql, m_pMaps->xs2Xyl);
}

XYLDBTypes *XYLDBTypes::get() {
  XYLDBTypes *instance = g_instance.load(std::memory_order_acquire);
  if (instance != nullptr)
    return instance;
  XYLThreadGuard guard(creationLock());
  instance = g_instance.load(std::memory_order_relaxed);
  if (instance == nullptr) {
    // Nothing is published unless every table is complete; a failed creation
    // leaves the next call free to try again.
    XYLDBTypes *created = new (std::nothrow) XYLDBTypes;
    if (created != nullptr) {
      try {
        created->init();
      } catch (const std::bad_alloc &) {
        delete created;
        created = nullptr;
      }
    }
    if (created == nullptr)
      XYL_THROW(XYLOutOfMemoryError(0, nullptr));
    g_instance.store(created, std::memory_order_release);
    instance = created;
  }
  return instance;
}

const char *XYLDBTypes::getName(XYLDBDatatype code) const { return findName(m_pMaps->xylName, code); }

const char *XYLDBTypes::getName(SqlColType code) const { return findName(m_pMaps->sqlName, code); }

const char *XYLDBTypes::getName(XSType code) const { return findName(m_pMaps->xsName, code); }

XYLDBDatatype XYLDBTypes::getXYLDBDatatypeCode(const char *name) const {
  return static_cast<XYLDBDatatype>(findCode(m_pMaps->xylCode, name));
}

SqlColType XYLDBTypes::getSqlColTypeCode(const char *name) const {
  return static_cast<SqlColType>(findCode(m_pMaps->sqlCode, name));
}

XSType XYLDBTypes::getXSTypeCode(const char *name) const {
  return static_cast<XSType>(findCode(m_pMaps->xsCode, name));
}

SqlColType XYLDBTypes::XYLDBDatatype2SqlColType(XYLDBDatatype code) const {
  return static_cast<SqlColType>(findTarget(m_pMaps->xyl2Sql, code));
}

XSType XYLDBTypes::XYLDBDatatype2XSType(XYLDBDatatype code) const {
  return static_cast<XSType>(findTarget(m_pMaps->xyl2Xs, code));
}

XSType XYLDBTypes::SqlColType2XSType(SqlColType code) const {
  return static_cast<XSType>(findTarget(m_pMaps->sql2Xs, code));
}

XYLDBDatatype XYLDBTypes::SqlColType2XYLDBDatatype(SqlColType code) const {
  return static_cast<XYLDBDatatype>(findTarget(m_pMaps->sql2Xyl, code));
}

SqlColType XYLDBTypes::XSType2SqlColType(XSType code) const {
  return static_cast<SqlColType>(findTarget(m_pMaps->xs2Sql, code));
}

XYLDBDatatype XYLDBTypes::XSType2XYLDBDatatype(XSType code) const {
  return static_cast<XYLDBDatatype>(findTarget(m_pMaps->xs2Xyl, code));
}
