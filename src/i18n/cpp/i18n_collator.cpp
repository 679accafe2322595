// SPDX-License-Identifier: Apache-2.0
// I18NCollator: a thin owner of an ICU collator.
//
// Levels travel as 0..3 and are stored in ICU's strength attribute, where
// the fourth level is UCOL_IDENTICAL (15); the translation happens only in
// getLevel and setLevel. The string forms of collate end in the pointer
// form, so that every comparison is one ucol_strcoll on two NUL-terminated
// UTF-16 buffers.
#include <XYLCore/ExceptionHierarchy/XYLErrors.h>
#include <XYLCore/i18n/cpp/i18n_collator.h>
#include <XYLCore/i18n/cpp/i18n_internalresources.h>
#include <XYLCore/i18n/cpp/i18n_locale.h>
#include <XYLCore/i18n/cpp/i18n_string.h>

#include "i18n_string_internal.h"

#include <string>
#include <unicode/ucol.h>
#include <unicode/unistr.h>

namespace {

const char kCreateFailed[] = "The Collator object could not be created";
const char kAttributeFailed[] = "Setting attribute to Collator object failed";

[[noreturn]] void raiseOutOfMemory() { XYL_THROW(XYLOutOfMemoryError(0L, nullptr)); }

[[noreturn]] void raiseGeneral(const char *message) { XYL_THROW(I18NRuntimeError(I18N_GENERAL_FAILURE, message)); }

// ucol_strcoll answers UCOL_LESS (-1), UCOL_EQUAL (0) or UCOL_GREATER (1):
// already the values collate returns.
static_assert(UCOL_LESS == -1 && UCOL_EQUAL == 0 && UCOL_GREATER == 1, "collation results");

inline int strcoll16(const UCollator *collator, const void *a, const void *b) {
  return static_cast<int>(ucol_strcoll(collator, static_cast<const UChar *>(a), -1, static_cast<const UChar *>(b), -1));
}

// The order of two empty-or-not strings when at least one is empty; 2 when
// both have content and ICU must decide.
inline int emptyOrder(const I18NString &a, const I18NString &b) {
  const bool aEmpty = a.empty();
  const bool bEmpty = b.empty();
  if (aEmpty)
    return bEmpty ? 0 : -1;
  return bEmpty ? 1 : 2;
}

// The UTF-16 of a non-empty string that is in Unicode mode and marked
// normalised, or null when the string needs the general path. In Unicode
// mode the string keeps its form's buffer NUL-terminated (it is what
// getUTF16Buffer hands out), so the buffer can be read here without the
// out-of-line call: this is the whole cost of a comparison beside ICU's.
inline const char16_t *readyUnits(const I18NString &s) {
  if ((s.getFlags() & I18NString::FLAG_NORMALIZED) == 0)
    return nullptr;
  const icu::UnicodeString *form = I18NStringAccess::unicodeForm(s);
  if (form == nullptr || form->isEmpty())
    return nullptr;
  return form->getBuffer();
}

// The general paths, kept out of line so that the fast paths above them
// stay small. The modifiable form normalises in place.
__attribute__((noinline)) int collateSlowly(const UCollator *collator, I18NString &a, I18NString &b) {
  const int order = emptyOrder(a, b);
  if (order != 2)
    return order;
  if (!a.isNormalized())
    a.normalize(I18N_NORMALIZATION_DEFAULT);
  if (!b.isNormalized())
    b.normalize(I18N_NORMALIZATION_DEFAULT);
  return strcoll16(collator, a.getUTF16Buffer(), b.getUTF16Buffer());
}

// The const form normalises copies of the strings that need it.
__attribute__((noinline)) int collateSlowly(const UCollator *collator, const I18NString &a, const I18NString &b) {
  const int order = emptyOrder(a, b);
  if (order != 2)
    return order;
  const bool aReady = a.isNormalized();
  const bool bReady = b.isNormalized();
  if (aReady && bReady)
    return strcoll16(collator, a.getUTF16Buffer(), b.getUTF16Buffer());
  // Normalise copies of the strings that need it; the others are used as
  // they stand.
  I18NString aCopy;
  I18NString bCopy;
  const I18NString *left = &a;
  const I18NString *right = &b;
  if (!aReady) {
    aCopy = a;
    aCopy.normalize(I18N_NORMALIZATION_DEFAULT);
    left = &aCopy;
  }
  if (!bReady) {
    bCopy = b;
    bCopy.normalize(I18N_NORMALIZATION_DEFAULT);
    right = &bCopy;
  }
  return strcoll16(collator, left->getUTF16Buffer(), right->getUTF16Buffer());
}

const I18NString &emptyString() {
  static const I18NString empty;
  return empty;
}

} // namespace

I18NCollator::I18NCollator() : m_pCollator(nullptr), m_ownsBuffer(false) { open(nullptr); }

I18NCollator::I18NCollator(const I18NString &localeName) : m_pCollator(nullptr), m_ownsBuffer(false) {
  std::string name;
  I18NInternalResources::getDefaultLocaleForLanguage(localeName.c_str(), name);
  open(name.c_str());
}

I18NCollator::I18NCollator(const I18NLocale &locale) : m_pCollator(nullptr), m_ownsBuffer(false) {
  std::string name;
  I18NInternalResources::getDefaultLocaleForLanguage(locale.getName().c_str(), name);
  open(name.c_str());
}

I18NCollator::I18NCollator(const I18NCollator &other) : m_pCollator(nullptr), m_ownsBuffer(true) {
  // ICU allocates the clone itself; m_ownsBuffer records that this object
  // made it by cloning (ucol_close releases it all the same).
  UErrorCode status = U_ZERO_ERROR;
  m_pCollator = ucol_clone(other.m_pCollator, &status);
  if (m_pCollator == nullptr)
    raiseOutOfMemory();
  if (U_FAILURE(status)) {
    ucol_close(m_pCollator);
    m_pCollator = nullptr;
    raiseGeneral(kCreateFailed);
  }
}

I18NCollator::~I18NCollator() {
  if (m_pCollator != nullptr)
    ucol_close(m_pCollator);
}

void I18NCollator::open(const char *localeName) {
  UErrorCode status = U_ZERO_ERROR;
  m_pCollator = ucol_open(localeName, &status);
  if (m_pCollator == nullptr) {
    if (status == U_MEMORY_ALLOCATION_ERROR || U_SUCCESS(status))
      raiseOutOfMemory();
    raiseGeneral(kCreateFailed);
  }
  if (U_FAILURE(status)) {
    ucol_close(m_pCollator);
    m_pCollator = nullptr;
    raiseGeneral(kCreateFailed);
  }
}

I18NCollationLevels I18NCollator::getLevel() const {
  UErrorCode status = U_ZERO_ERROR;
  const UColAttributeValue strength = ucol_getAttribute(m_pCollator, UCOL_STRENGTH, &status);
  if (U_FAILURE(status))
    raiseGeneral(kAttributeFailed);
  switch (strength) {
  case UCOL_PRIMARY:
    return I18N_COLLATION_PRIMARY;
  case UCOL_SECONDARY:
    return I18N_COLLATION_SECONDARY;
  case UCOL_TERTIARY:
    return I18N_COLLATION_TERTIARY;
  case UCOL_IDENTICAL:
    return I18N_COLLATION_IDENTICAL;
  default:
    // A strength without a level of its own (quaternary) answers with the
    // status of the query: 0 unless ICU warned.
    return static_cast<I18NCollationLevels>(status);
  }
}

void I18NCollator::setLevel(I18NCollationLevels level) {
  const UColAttributeValue strength =
      level == I18N_COLLATION_IDENTICAL ? UCOL_IDENTICAL : static_cast<UColAttributeValue>(level);
  UErrorCode status = U_ZERO_ERROR;
  ucol_setAttribute(m_pCollator, UCOL_STRENGTH, strength, &status);
  if (U_FAILURE(status))
    raiseGeneral(kAttributeFailed);
}

int I18NCollator::collate(const void *a, const void *b) const { return strcoll16(m_pCollator, a, b); }

int I18NCollator::collate(I18NString &a, I18NString &b) const {
  // The common case, two strings compared before: nothing but flag and
  // pointer reads before ICU.
  const char16_t *aUnits = readyUnits(a);
  const char16_t *bUnits = readyUnits(b);
  if (aUnits != nullptr && bUnits != nullptr)
    return strcoll16(m_pCollator, aUnits, bUnits);
  return collateSlowly(m_pCollator, a, b);
}

int I18NCollator::collate(I18NString *a, I18NString *b) const {
  if (a == nullptr || b == nullptr)
    return collate(a == nullptr ? emptyString() : *a, b == nullptr ? emptyString() : *b);
  return collate(*a, *b);
}

int I18NCollator::collate(const I18NString &a, const I18NString &b) const {
  const char16_t *aUnits = readyUnits(a);
  const char16_t *bUnits = readyUnits(b);
  if (aUnits != nullptr && bUnits != nullptr)
    return strcoll16(m_pCollator, aUnits, bUnits);
  return collateSlowly(m_pCollator, a, b);
}

int I18NCollator::collate(const I18NString *a, const I18NString *b) const {
  return collate(a == nullptr ? emptyString() : *a, b == nullptr ? emptyString() : *b);
}
