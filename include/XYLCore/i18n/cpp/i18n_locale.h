/* SPDX-License-Identifier: Apache-2.0
 * i18n_locale.h - I18NLocale, the light handle by which the formatters,
 * collators and case operations name a locale.
 *
 * An I18NLocale points to a shared, immutable entry of the locale cache,
 * created once per distinct name text and kept until the last
 * I18NTerminate; copying a locale copies a pointer. The cache key is the
 * caller's text exactly as given, so "EN-US" and "en-us" are two entries
 * (which still compare equal: locales compare by normalised name).
 *
 * Names. A null or empty name means "en-us". A name ends at its first
 * whitespace character; a full stop ends the part that is parsed (".UTF-8"
 * is ignored). "SYSTEM" means ICU's default locale. Any other name is split
 * at hyphens (or, when it has none, at underscores) into language, country
 * and variant; a four-letter second part is a script ("zh-hant-tw") and
 * is kept as the spare part; a doubled separator leaves the country empty
 * and makes the rest the variant ("en--posix").
 *
 * Ownership: every I18NString returned by reference belongs to the cache
 * entry and lives until the last I18NTerminate.
 * Thread safety: constructing locales from any number of threads is safe
 * (double-checked lookup under the cache's own lock); a locale and its
 * entry are immutable. compare, compareIgnoreCase, toLower and toUpper may
 * run concurrently on one locale.
 * Throws: XYLOutOfMemoryError when memory runs out; I18NRuntimeError -7 when
 * ICU cannot build a collator for compare/compareIgnoreCase.
 */
#ifndef XYLCORE_I18N_CPP_I18N_LOCALE_H
#define XYLCORE_I18N_CPP_I18N_LOCALE_H

#include <XYLCore/XYLExport.h>
#include <XYLCore/i18n/cpp/i18n_init.h>

#include <unicode/uversion.h>

U_NAMESPACE_BEGIN
class Locale;
U_NAMESPACE_END

class I18NString;
class xI18NLocale;

class XYL_API I18NLocale {
public:
  // The locale of that name through the cache (null or empty: "en-us").
  I18NLocale(const char *name);
  // A Windows locale identifier (1033 is "en-us"), mapped by the internal
  // resources; an identifier nobody knows gives "en-us".
  I18NLocale(unsigned short lcid);
  I18NLocale(const I18NLocale &other) : m_pLocale(other.m_pLocale), m_reserved(nullptr) {}
  I18NLocale &operator=(const I18NLocale &other) {
    m_pLocale = other.m_pLocale;
    return *this;
  }
  ~I18NLocale() {}

  // The name as parsed (cut at whitespace and at '.', spelling kept), and
  // its parts. "SYSTEM" gives ICU's default locale's name and parts.
  const I18NString &getName() const;
  const I18NString &getLanguage() const;
  const I18NString &getCountry() const;
  const I18NString &getVariant() const;
  // Lower case, parts joined by hyphens: "EN_us.UTF-8" gives "en-us".
  void getNormalizedName(I18NString &name) const;
  static void normalizeLocaleName(const I18NString &name, I18NString &normalized);
  // The Windows locale identifier (internal resources, then ICU); 0 when
  // unknown.
  unsigned short getLCID() const;
  // The locale's display name in the default locale's language, or in
  // `inLocale`'s.
  void getDisplayName(I18NString &displayName) const;
  void getDisplayName(const I18NLocale &inLocale, I18NString &displayName) const;
  // The ICU locale, for the formatting classes.
  const U_ICU_NAMESPACE::Locale &getLocale() const;

  // Locale-sensitive order of two strings (below, equal to or above 0).
  int compare(const I18NString &a, const I18NString &b) const;
  // The same, ignoring case differences.
  int compareIgnoreCase(const I18NString &a, const I18NString &b) const;
  // Case mapping under this locale's rules, in place.
  void toLower(I18NString &text) const;
  void toUpper(I18NString &text) const;

  // The locales ICU knows (ICU's own array; do not free).
  static const U_ICU_NAMESPACE::Locale *getAvailableLocales(int &count);
  // Whether the language is Chinese, Japanese or Korean ("zh", "ja", "ko",
  // and "zho", "chi", "jpn", "kor", "yue", "cmn").
  static bool isCJK(const char *name);
  static bool isCJK(const I18NLocale &locale);

  // Compare normalised names.
  bool operator==(const I18NLocale &other) const;
  bool operator!=(const I18NLocale &other) const { return !(*this == other); }
  bool operator<(const I18NLocale &other) const;
  bool operator<=(const I18NLocale &other) const { return !(other < *this); }
  bool operator>(const I18NLocale &other) const { return other < *this; }
  bool operator>=(const I18NLocale &other) const { return !(*this < other); }

  // The default locale name (heap copy), set by I18NInitialize; null while
  // the layer is not initialised.
  static char *gI18NDefaultLocaleName;

private:
  void lookup(const char *name);

  xI18NLocale *m_pLocale; // shared cache entry, not owned
  [[maybe_unused]] void *m_reserved;
};

#endif // XYLCORE_I18N_CPP_I18N_LOCALE_H
