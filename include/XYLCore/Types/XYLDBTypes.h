/* SPDX-License-Identifier: Apache-2.0
 * XYLDBTypes.h - names and translations of the three families of column type
 * codes used by the data-access layers.
 *
 * The families are the library's own XYLDBDatatype (61 codes, 0..60), the
 * SQL-level SqlColType (32 codes, 0..31) and the XML Schema built-in types
 * XSType (45 codes, 0..44, named with their "xs:" prefix). For each family the
 * singleton names a code, finds the code of a name and translates a code into
 * each of the two other families. Code 0 of every family is "unknown"
 * (xylDTypeUnknown, sqlUnknownType, xs:anyType).
 *
 * Two quirks are part of the contract:
 *  - XYLDBDatatype 15 has two names. Both "xylDTypeDateTime" and
 *    "xylDTypeTimestamp" give 15; getName(15) gives "xylDTypeTimestamp".
 *  - The translations are not inverses of one another ("xs:boolean" goes to
 *    sqlSmallInt and xylDTypeUInt16; xylDTypeBoolean to sqlBoolean and
 *    "xs:boolean").
 *
 * Names are matched exactly, byte for byte and case-sensitively
 * ("SQLCHAR" is unknown). An unknown code yields a null name or the code 0;
 * an unknown or null name yields 0. Lookups never change the tables.
 *
 * Ownership: names returned are static literals that live as long as the
 * process; callers must not free them.
 *
 * Thread safety: get() may be called from any number of threads; the first
 * call creates the singleton under a lock, later calls take no lock. Every
 * lookup is read-only and may run concurrently with any other.
 *
 * Throws: get() throws XYLOutOfMemoryError when the singleton cannot be
 * created; a later call tries again. Lookups never throw.
 */
#ifndef XYLCORE_TYPES_XYLDBTYPES_H
#define XYLCORE_TYPES_XYLDBTYPES_H

#include <XYLCore/XYLExport.h>

// The library's own column types. Code 15 has two names.
enum XYLDBDatatype : int {
  xylDTypeUnknown = 0,
  xylDTypeString = 1,
  xylDTypeInt8 = 2,
  xylDTypeUInt8 = 3,
  xylDTypeInt16 = 4,
  xylDTypeUInt16 = 5,
  xylDTypeInt32 = 6,
  xylDTypeUInt32 = 7,
  xylDTypeInt64 = 8,
  xylDTypeUInt64 = 9,
  xylDTypeFloat = 10,
  xylDTypeDouble = 11,
  xylDTypeDecimal = 12,
  xylDTypeDate = 13,
  xylDTypeTime = 14,
  xylDTypeDateTime = 15,
  xylDTypeTimestamp = 15,
  xylDTypeDTInterval = 16,
  xylDTypeYMInterval = 17,
  xylDTypeBlob = 18,
  xylDTypeRowIterator = 19,
  xylDTypeDimIterator = 20,
  xylDTypeMasterDataset = 21,
  xylDTypeVariant = 22,
  xylDTypeBinary = 23,
  xylDTypeVarBinary = 24,
  xylDTypeMemberUniqueName = 25,
  xylDTypeMemberCaption = 26,
  xylDTypeDimensionUniqueName = 27,
  xylDTypeParentUniqueName = 28,
  xylDTypeDescription = 29,
  xylDTypeHierarchyUniqueName = 30,
  xylDTypeParentLevel = 31,
  xylDTypeLevelUniqueName = 32,
  xylDTypeLevelNumber = 33,
  xylDTypeLevelLabel = 34,
  xylDTypeFormattedValue = 35,
  xylDTypeFont = 36,
  xylDTypeForeColor = 37,
  xylDTypeBackColor = 38,
  xylDTypeFontFlags = 39,
  xylDTypeOrdinal = 40,
  xylDTypeNestedDim = 41,
  xylDTypeNumberOfParents = 42,
  xylDTypeMemberType = 43,
  xylDTypeHasChildren = 44,
  xylDTypeExternalBuffer = 45,
  xylDTypeTextBlob = 46,
  xylDTypeMIME = 47,
  xylDTypeURL = 48,
  xylDTypeCurrency = 49,
  xylDTypeMeasureItem = 50,
  xylDTypeBoolean = 51,
  xylDTypeTimeTZ = 52,
  xylDTypeTimestampTZ = 53,
  xylDTypeNumeric = 54,
  xylDTypeNChar = 55,
  xylDTypeNVarChar = 56,
  xylDTypeDate2 = 57,
  xylDTypeTime2 = 58,
  xylDTypeTimestamp2 = 59,
  xylDTypeInterval2 = 60
};

// SQL-level column types.
enum SqlColType : int {
  sqlUnknownType = 0,
  sqlChar = 1,
  sqlVarChar = 2,
  sqlLongVarChar = 3,
  sqlSmallInt = 4,
  sqlInteger = 5,
  sqlDecimal = 6,
  sqlFloat = 7,
  sqlDouble = 8,
  sqlBinary = 9,
  sqlVarBinary = 10,
  sqlQuad = 11,
  sqlDate = 12,
  sqlTime = 13,
  sqlDateTime = 14,
  sqlInterval = 15,
  sqlDbKey = 16,
  sqlBlob = 17,
  sqlText = 18,
  sqlBlobArray = 19,
  sqlChapter = 20,
  sqlBoolean = 21,
  sqlTimeTZ = 22,
  sqlTimestampTZ = 23,
  sqlIntervalYM = 24,
  sqlNChar = 25,
  sqlNVarChar = 26,
  sqlNumeric = 27,
  sqlDate2 = 28,
  sqlTime2 = 29,
  sqlTimestamp2 = 30,
  sqlInterval2 = 31
};

// XML Schema built-in types; the comment gives each one's name.
enum XSType : int {
  xsAnyType = 0,             // "xs:anyType"
  xsString = 1,              // "xs:string"
  xsBoolean = 2,             // "xs:boolean"
  xsDecimal = 3,             // "xs:decimal"
  xsFloat = 4,               // "xs:float"
  xsDouble = 5,              // "xs:double"
  xsDuration = 6,            // "xs:duration"
  xsDateTime = 7,            // "xs:dateTime"
  xsTime = 8,                // "xs:time"
  xsDate = 9,                // "xs:date"
  xsGYearMonth = 10,         // "xs:gYearMonth"
  xsGYear = 11,              // "xs:gYear"
  xsGMonthDay = 12,          // "xs:gMonthDay"
  xsGDay = 13,               // "xs:gDay"
  xsGMonth = 14,             // "xs:gMonth"
  xsHexBinary = 15,          // "xs:hexBinary"
  xsBase64Binary = 16,       // "xs:base64Binary"
  xsAnyURI = 17,             // "xs:anyURI"
  xsQName = 18,              // "xs:QName"
  xsNOTATION = 19,           // "xs:NOTATION"
  xsNormalizedString = 20,   // "xs:normalizedString"
  xsToken = 21,              // "xs:token"
  xsLanguage = 22,           // "xs:language"
  xsNMTOKEN = 23,            // "xs:NMTOKEN"
  xsNMTOKENS = 24,           // "xs:NMTOKENS"
  xsName = 25,               // "xs:Name"
  xsNCName = 26,             // "xs:NCName"
  xsID = 27,                 // "xs:ID"
  xsIDREF = 28,              // "xs:IDREF"
  xsIDREFS = 29,             // "xs:IDREFS"
  xsENTITY = 30,             // "xs:ENTITY"
  xsENTITIES = 31,           // "xs:ENTITIES"
  xsInteger = 32,            // "xs:integer"
  xsNonPositiveInteger = 33, // "xs:nonPositiveInteger"
  xsNegativeInteger = 34,    // "xs:negativeInteger"
  xsLong = 35,               // "xs:long"
  xsInt = 36,                // "xs:int"
  xsShort = 37,              // "xs:short"
  xsByte = 38,               // "xs:byte"
  xsNonNegativeInteger = 39, // "xs:nonNegativeInteger"
  xsUnsignedLong = 40,       // "xs:unsignedLong"
  xsUnsignedInt = 41,        // "xs:unsignedInt"
  xsUnsignedShort = 42,      // "xs:unsignedShort"
  xsUnsignedByte = 43,       // "xs:unsignedByte"
  xsPositiveInteger = 44     // "xs:positiveInteger"
};

class XYL_API XYLDBTypes {
public:
  // The process-wide instance, created on first use and never destroyed;
  // never null. Throws XYLOutOfMemoryError if it cannot be created.
  static XYLDBTypes *get();

  // The name of a code; null for an unknown code.
  const char *getName(XYLDBDatatype code) const;
  const char *getName(SqlColType code) const;
  const char *getName(XSType code) const;

  // The code of a name (exact, case-sensitive); 0 for an unknown or null name.
  XYLDBDatatype getXYLDBDatatypeCode(const char *name) const;
  SqlColType getSqlColTypeCode(const char *name) const;
  XSType getXSTypeCode(const char *name) const;

  // Translations between the families; 0 for an unknown code.
  SqlColType XYLDBDatatype2SqlColType(XYLDBDatatype code) const;
  XSType XYLDBDatatype2XSType(XYLDBDatatype code) const;
  XSType SqlColType2XSType(SqlColType code) const;
  XYLDBDatatype SqlColType2XYLDBDatatype(SqlColType code) const;
  SqlColType XSType2SqlColType(XSType code) const;
  XYLDBDatatype XSType2XYLDBDatatype(XSType code) const;

private:
  struct Maps;

  XYLDBTypes();
  ~XYLDBTypes();
  XYLDBTypes(const XYLDBTypes &) = delete;
  XYLDBTypes &operator=(const XYLDBTypes &) = delete;

  // Fills the twelve maps from the name and translation tables; throws
  // std::bad_alloc when memory runs out.
  void init();

  Maps *m_pMaps;
};

#endif // XYLCORE_TYPES_XYLDBTYPES_H
