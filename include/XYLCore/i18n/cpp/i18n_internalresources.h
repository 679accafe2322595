/* SPDX-License-Identifier: Apache-2.0
 * i18n_internalresources.h - the installation root, the resource file and
 * the tables the internationalisation classes read from it.
 *
 * setDataDirectoryPath() finds, once per process, the installation's binary
 * directory (QOR_EXEC_PATH; else QOR_ROOT joined with "./bin"; else the
 * directory of the library's own file; else, when that leaves nothing,
 * "../bin" if "../configuration/qorstartup.xml" is a readable file, or the
 * first line of "./qorroot.link" joined with "./bin"; a static build whose
 * host directory holds no i18n_res.xml takes the installed library directory
 * compiled in from the install prefix instead), points ICU's data
 * directory at it ("." when none was found), makes UTF-8 ICU's default
 * converter and sets the resource file path: the binary directory joined
 * with "./i18n_res.xml". The internationalisation start-up (I18NInitialize)
 * calls it.
 *
 * The resource file (i18n_res.xml) and its companions in the same directory
 * (xyli18nrestp_<locale>.xml time-period words, xyli18nreswd_<locale>.xml
 * words, xyli18nrestz_<locale>.xml time-zone names, xyli18nreslc_<locale>.xml
 * locale settings, xyli18nrescr_<locale>.xml currencies) are XML; the format
 * is described in docs/i18n_resources.md. The tables are read on first use.
 * A missing file, or a missing table, means the built-in defaults; a
 * malformed file is reported once on standard error and ignored (built-in
 * defaults again). Nothing here fails because of a resource file.
 *
 * Texts are UTF-8. Locale names are compared in lower case with '_' read as
 * '-'.
 * Thread safety: every query may run on any thread; the tables are immutable
 * once read. setDataDirectoryPath and __changeResourceFileName are meant for
 * start-up (they run under the start-up lock of I18NInitialize).
 * Throws: setDataDirectoryPath throws XYLOutOfMemoryError when the two paths
 * cannot be allocated (a later call tries again); queries throw only
 * std::bad_alloc-derived XYLOutOfMemoryError.
 */
#ifndef XYLCORE_I18N_CPP_I18N_INTERNALRESOURCES_H
#define XYLCORE_I18N_CPP_I18N_INTERNALRESOURCES_H

#include <XYLCore/XYLExport.h>

#include <unicode/uversion.h>

#include <map>
#include <string>

U_NAMESPACE_BEGIN
class Transliterator;
U_NAMESPACE_END

class XYL_API I18NInternalResources {
public:
  // Finds the binary directory and the resource file path once per process
  // (later calls return at once, whatever the environment says by then).
  static void setDataDirectoryPath();
  // The binary directory ("" until found, or when none was found).
  static const char *getBinaryDirectory();
  // The resource file path ("" before setDataDirectoryPath).
  static const char *getResourceFilePath();

  // Replaces the tables by those read from `path` (null: the resource file
  // path, or "./i18n_res.xml" before setDataDirectoryPath). Returns 1 when a
  // well-formed file was read, 0 when the built-in defaults are in force
  // (file missing or malformed). Queries read the tables on first use
  // without calling this.
  static int load(const char *path);

  // ---- Replacement sequences for unconvertible data ---------------------

  // The code points configured to replace `length` unconvertible bytes of
  // `encoding`: stores at most `capacity` of them and returns their number,
  // or 0 when none is configured.
  static int getReplacementSequence(const char *encoding, const char *bytes, int length, unsigned int *codePoints,
                                    int capacity);
  // The bytes configured to replace a code point that `encoding` cannot
  // represent: stores at most `capacity` bytes and returns their number, or
  // 0 when none is configured.
  static int getReplacementSequence(const char *encoding, unsigned int codePoint, char *bytes, int capacity);

  // ---- Normalisation ----------------------------------------------------

  // Whether normalisation must leave this code point unchanged.
  static bool isNonNormalizable(unsigned int codePoint);
  // Whether any code point is declared non-normalisable (lets callers skip
  // the per-character walk).
  static bool hasNonNormalizableCharacters();
  // A new transliterator for the Japanese compatibility step (the caller
  // deletes it), or null when the resources define none.
  static U_ICU_NAMESPACE::Transliterator *getTransliterator();

  // ---- Locales ----------------------------------------------------------

  // The locale name ("en-us") of a Windows locale identifier: the resource
  // table first, then ICU's own mapping. False when neither knows it.
  static bool getLocaleIdFroLCID(unsigned short lcid, std::string &localeName);
  // The Windows locale identifier of a locale name (the reverse mapping);
  // 0 when unknown.
  static unsigned short getLCIDForLocale(const char *localeName);
  // A bare language ("de") becomes its default full locale ("de-de"): the
  // resource table first, then ICU's likely subtags. Any other name, and a
  // language neither knows, comes back unchanged.
  static void getDefaultLocaleForLanguage(const char *name, std::string &localeName);
  // The encoding configured for a locale (its full name, then its language);
  // false when none is configured.
  static bool getEncodingForLocale(const char *localeName, std::string &encoding);

  // ---- Other settings ---------------------------------------------------

  // The time-period words of a locale (keys such as "DAY_COMPLETE_PLURAL"
  // and "TIME_PERIOD_SYNTAX_SEPARATOR"), from xyli18nrestp_<locale>.xml,
  // trying the full name, then the language. Leaves `words` as it is when
  // no file is found.
  static void getTimePeriodResources(const char *localeName, std::map<std::string, std::string> &words);
  // The UTF-8 bytes-per-code-point setting used to size UTF-8 buffers
  // (1..4; 3 by default, which covers every code point of the BMP).
  static int getUTF8BytesPerCodePoint();
  // Whether strings keep pure-ASCII text in a byte buffer (default true).
  static bool useAsciiFastPath();

private:
  I18NInternalResources() = delete;
  friend class I18NInternalResourcesTestPeer;
  static void lookupRoot();
};

XYL_EXTERN_C_BEGIN
// Replaces "./i18n_res.xml" in the resource file path by `name`; no effect
// before setDataDirectoryPath, when the path does not contain it, or when
// name is null.
XYL_API void __changeResourceFileName(const char *name);
XYL_EXTERN_C_END

#endif // XYLCORE_I18N_CPP_I18N_INTERNALRESOURCES_H
