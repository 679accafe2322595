/* SPDX-License-Identifier: Apache-2.0
 * XYLVariant.h - a tagged value holding one of five scalar kinds.
 *
 * A variant holds nothing (type 0), a signed or unsigned 32-bit integer, a
 * double, a string it owns, or a pointer it does not own. Every setValue
 * releases the previous value first. getValue of a typed reference succeeds
 * only when the variant holds exactly that kind; getValue into a caller's
 * buffer renders any kind as text:
 *
 *   type  kind            value size        text form
 *   0     varTypeUnknown  0                 "<unknown>"
 *   1     varTypeLong     4                 decimal ("%d")
 *   2     varTypeULong    4                 unsigned decimal ("%u")
 *   3     varTypeDouble   8                 "%e" ("1.500000e+00")
 *   4     varTypeString   string length     the string itself
 *   5     varTypePointer  4                 lower-case hex, no prefix
 *   other                                   "<invalid>"
 *
 * Integers are 32 bits wide whatever the width of `long` on the platform:
 * setValue(long) keeps the low 32 bits, getValue(long&) returns them sign
 * extended, getValue(unsigned long&) zero extended, and the value size of
 * both kinds is 4. Pointers are kept whole and printed whole.
 *
 * Strings: setValue(text, length) copies at most `length` bytes, stopping at
 * a zero byte (`length` 0 means the whole text). An empty text is never
 * stored: the call returns 0 and leaves a string-typed variant with a null
 * value. The copy is allocated with operator new; if that fails the variant
 * becomes type 0. getValue(char*&) hands out the variant's own buffer, which
 * stays valid until the next setValue, assignment or destruction.
 *
 * Results: 1 for success, 0 for a kind mismatch, an empty string or a
 * truncated text. Nothing throws.
 *
 * Ownership: setVarType changes the tag only. Changing the tag of a variant
 * that holds a string (or giving a non-string the string tag) makes the
 * variant leak or free the wrong value; only code that knows the value is
 * compatible may use it.
 *
 * Thread safety: none inside; a variant shared between threads needs the
 * caller's lock. Distinct variants are independent.
 */
#ifndef XYLCORE_TYPES_XYLVARIANT_H
#define XYLCORE_TYPES_XYLVARIANT_H

#include <XYLCore/XYLExport.h>
#include <cstdint>

class XYL_API XYLVariant {
public:
  // The kind held. Values outside 0..5 can only be set through setVarType.
  enum XYLVariantType : int {
    varTypeUnknown = 0,
    varTypeLong = 1,
    varTypeULong = 2,
    varTypeDouble = 3,
    varTypeString = 4,
    varTypePointer = 5
  };

  // The value size of each kind, indexed by type; a string's size is its
  // length instead of its entry here.
  static const unsigned long valueSizes[6];

  // Type 0, value cleared, size 0.
  XYLVariant();
  // Starts empty, then assigns; a string is copied into a buffer of its own.
  XYLVariant(const XYLVariant &other);
  virtual ~XYLVariant();

  // Copies kind, size and value; a string gets its own copy. If that copy
  // cannot be allocated this variant becomes type 0 with size 0. No-op on
  // self-assignment.
  virtual XYLVariant &operator=(const XYLVariant &other);
  // Equal when the same object, or same type and value size and then: type 0
  // always; integers by their 32-bit values; doubles by value (NaN never
  // equal); pointers by address; strings by address, else unequal if either
  // is null, else byte for byte up to the terminator. Any other type tag is
  // unequal.
  virtual bool operator==(const XYLVariant &other) const;
  virtual bool operator!=(const XYLVariant &other) const;

  // Release the previous value, store the new one with its kind and size.
  // Always 1.
  int setValue(long value);
  int setValue(unsigned long value);
  int setValue(double value);
  int setValue(void *value);
  // Stores a copy of `text` (see the banner). Null text: 1, string type, null
  // value. Empty text: 0, string type, null value. Allocation failure: 0,
  // type 0.
  int setValue(const char *text, unsigned long length = 0);

  // 1 and the value when the kind matches; else 0 and the argument is left
  // untouched.
  int getValue(long &value) const;
  int getValue(unsigned long &value) const;
  int getValue(double &value) const;
  int getValue(void *&value) const;
  // For a string: the variant's own buffer (possibly null) and 1. Otherwise
  // null and 0.
  int getValue(char *&value) const;
  // Writes the text form into `buffer` of `capacity` bytes with strncpy
  // semantics (the rest of the buffer is zero filled). Returns 1 when the
  // whole text and its terminator fit; 0 when truncated, in which case the
  // last byte of the buffer is the terminator. A null or empty string writes
  // an empty string and returns 1. A null buffer or a capacity of 0 writes
  // nothing and returns 0.
  int getValue(char *buffer, unsigned long capacity) const;

  // The value size: see the banner.
  unsigned long valueSize() const { return m_ulValueSize; }
  XYLVariantType getVarType() const { return m_type; }
  // Sets the tag only; see Ownership in the banner.
  void setVarType(XYLVariantType type) { m_type = type; }

private:
  unsigned long getValueSize() const { return m_ulValueSize; }
  void setValueSize(unsigned long size) { m_ulValueSize = size; }
  // Deletes an owned string and zeroes the value; the type is kept.
  void clear();

  unsigned long m_ulValueSize;
  XYLVariantType m_type;
  union {
    std::int32_t m_lValue;
    std::uint32_t m_ulValue;
    double m_dValue;
    char *m_pszValue;
    void *m_pValue;
  } m_value;
};

#endif // XYLCORE_TYPES_XYLVARIANT_H
