/* SPDX-License-Identifier: Apache-2.0 */
// Private: the tables behind I18NInternalResources, built from the built-in
// defaults and then from the resource file, and the reader of the per-locale
// companion files.
#ifndef XYLCORE_SRC_I18N_CPP_I18N_RESOURCETABLES_H
#define XYLCORE_SRC_I18N_CPP_I18N_RESOURCETABLES_H

#include <unicode/uversion.h>

#include <map>
#include <string>
#include <utility>
#include <vector>

U_NAMESPACE_BEGIN
class Transliterator;
U_NAMESPACE_END

namespace i18n_res {

// One set of tables; immutable once published.
class Tables {
public:
  // The built-in defaults.
  Tables();

  int inputReplacement(const char *encoding, const char *bytes, int length, unsigned int *codePoints,
                       int capacity) const;
  int outputReplacement(const char *encoding, unsigned int codePoint, char *bytes, int capacity) const;
  bool isNonNormalizable(unsigned int codePoint) const;
  bool hasNonNormalizable() const { return !m_nonNormalizable.empty(); }
  U_ICU_NAMESPACE::Transliterator *newTransliterator() const;
  bool localeForLCID(unsigned short lcid, std::string &localeName) const;
  unsigned short lcidForLocale(const char *localeName) const;
  void defaultLocaleForLanguage(const char *name, std::string &localeName) const;
  bool encodingForLocale(const char *localeName, std::string &encoding) const;
  int utf8BytesPerCodePoint() const { return m_utf8BytesPerCodePoint; }
  bool asciiFastPath() const { return m_asciiFastPath; }

  // Fills the tables from a resource file. Returns 1 when the file was read;
  // 0 when it is missing (nothing changes) or malformed (reported on
  // standard error; nothing changes).
  int read(const char *path);

private:
  struct Locale {
    unsigned short lcid = 0;
    std::string encoding;
    std::string csvEncoding;
  };
  // Keyed by ICU's canonical converter name ("*" for every encoding); the
  // input key is the offending bytes ("*" for any), the output key the code
  // point (0xFFFFFFFF for any).
  std::map<std::string, std::map<std::string, std::vector<unsigned int>>> m_input;
  std::map<std::string, std::map<unsigned int, std::string>> m_output;
  std::vector<std::pair<unsigned int, unsigned int>> m_nonNormalizable; // sorted, disjoint ranges
  std::vector<std::pair<std::string, std::string>> m_jaSubstitution;    // UTF-8 from -> to
  std::map<std::string, Locale> m_locales;                              // by normalised name
  std::map<unsigned short, std::string> m_lcidToLocale;
  std::map<std::string, std::string> m_languageDefaults; // "de" -> "de-de"
  int m_utf8BytesPerCodePoint;
  bool m_asciiFastPath;

  friend class Reader;
};

// The tables in force: read on first use from the resource file path (or
// "./i18n_res.xml" before the paths are known).
const Tables &current();
// Replaces the tables by the built-in defaults overlaid by `path` (null:
// the resource file path). Returns Tables::read's result.
int reload(const char *path);

// Lower case, '_' read as '-', cut at the first whitespace or '.'.
std::string normalizeLocaleKey(const char *name);

// Reads "<directory>/<prefix><locale>.xml" (the full normalised locale
// name, then its language) and merges its <text key="..."> entries into
// `texts`. Returns true when a file was read.
bool readCompanionTexts(const char *prefix, const char *directory, const char *localeName,
                        std::map<std::string, std::string> &texts);

} // namespace i18n_res

#endif
