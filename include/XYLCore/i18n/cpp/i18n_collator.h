/* SPDX-License-Identifier: Apache-2.0
 * i18n_collator.h - I18NCollator, locale-sensitive string comparison over
 * an ICU collator.
 *
 * A collator is opened for ICU's default locale, for a locale name or for an
 * I18NLocale. A bare language name ("de") is first widened to its default
 * full locale ("de-de") through I18NInternalResources; the result is handed
 * to ICU as it stands, so a name ICU does not know falls back to ICU's root
 * order (ICU reports that as a warning, which is accepted).
 *
 * Levels: 0 primary (base letters), 1 secondary (accents), 2 tertiary (case
 * and variants), 3 identical (every code point counts). ICU's quaternary
 * strength has no level here.
 *
 * collate returns -1, 0 or 1 as the first text orders before, with or after
 * the second. An empty string orders before any non-empty one without ICU
 * being asked. Strings not yet marked normalised are brought into the
 * default normalisation form first: a modifiable string is normalised in
 * place (and so marked, which makes its next comparison cheap), a const one
 * through a temporary copy. Strings already marked normalised are compared
 * straight from their UTF-16 buffers, without any copy.
 *
 * Ownership: the collator owns its ICU handle and closes it on destruction.
 * A copy clones the other's handle and is fully independent of it.
 * Thread safety: collate, getLevel and the copy constructor may run on one
 * collator from several threads at once (ICU's comparison is const);
 * setLevel needs external synchronisation. collate of modifiable strings
 * changes them (see above), so those must not be shared between threads.
 * Throws: XYLOutOfMemoryError when ICU cannot allocate the collator;
 * I18NRuntimeError -7 "The Collator object could not be created" when ICU
 * rejects the locale, -7 "Setting attribute to Collator object failed" when
 * the level cannot be read or set; what I18NString::normalize and
 * getUTF16Buffer throw while collating strings. Raise sites record
 * "i18n/cpp/i18n_collator".
 */
#ifndef XYLCORE_I18N_CPP_I18N_COLLATOR_H
#define XYLCORE_I18N_CPP_I18N_COLLATOR_H

#include <XYLCore/XYLExport.h>

struct UCollator;

class I18NLocale;
class I18NString;

// Comparison strength.
enum I18NCollationLevels {
  I18N_COLLATION_PRIMARY = 0,
  I18N_COLLATION_SECONDARY = 1,
  I18N_COLLATION_TERTIARY = 2,
  I18N_COLLATION_IDENTICAL = 3
};

class XYL_API I18NCollator {
public:
  // ICU's default locale.
  I18NCollator();
  // The named locale ("de-de", "ja"; a bare language is widened first).
  explicit I18NCollator(const I18NString &localeName);
  // The locale's name, as for the constructor above.
  explicit I18NCollator(const I18NLocale &locale);
  // An independent clone of the other's collator (its level included).
  I18NCollator(const I18NCollator &other);
  I18NCollator &operator=(const I18NCollator &) = delete;
  virtual ~I18NCollator();

  // The current level. A strength that is none of the four levels (ICU's
  // quaternary) comes back as the ICU status of the query, which is 0 when
  // ICU reports neither error nor warning.
  I18NCollationLevels getLevel() const;
  // Sets the level; values other than 0..3 are handed to ICU unchanged.
  void setLevel(I18NCollationLevels level);

  // Two NUL-terminated UTF-16 texts (platform byte order): -1, 0 or 1.
  int collate(const void *a, const void *b) const;
  // Two strings (see the banner): -1, 0 or 1. The modifiable forms
  // normalise their arguments in place; the const forms leave them alone.
  // A null pointer counts as an empty string.
  int collate(I18NString &a, I18NString &b) const;
  int collate(I18NString *a, I18NString *b) const;
  int collate(const I18NString &a, const I18NString &b) const;
  int collate(const I18NString *a, const I18NString *b) const;

private:
  void open(const char *localeName);

  UCollator *m_pCollator;
  // True only when m_pCollator was made by cloning another collator.
  [[maybe_unused]] bool m_ownsBuffer;
};

#endif // XYLCORE_I18N_CPP_I18N_COLLATOR_H
