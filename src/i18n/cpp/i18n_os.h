/* SPDX-License-Identifier: Apache-2.0 */
// Private: the few operating-system services the internationalisation layer
// needs. One implementation per OS (posix/i18n_os_posix.inc).
#ifndef XYLCORE_SRC_I18N_CPP_I18N_OS_H
#define XYLCORE_SRC_I18N_CPP_I18N_OS_H

#include <string>

namespace i18n_os {

// The native path separator and whether a byte separates path components.
const char kSeparator = '/';
inline bool isSeparator(char c) { return c == '/'; }

// The value of an environment variable; null when unset or empty.
const char *getEnvironment(const char *name);

// The full file name of the library's own shared object; false when it
// cannot be found. In a static build, whose code lives in the host program,
// a file in the installed data directory when the host's directory holds no
// resource file (i18n_res.xml).
bool getLibraryFileName(std::string &fileName);

// The installed library directory of a static build, where its catalogs,
// resource files and dump writer lie (a static library's own file is the
// host's, which need not hold them); null in a shared build.
const char *getStaticDataDirectory();

// Whether `path` is a regular file this process may read.
bool isReadableRegularFile(const char *path);

// The first line (without its line end, at most `limit` bytes, ending at a
// NUL byte too) of a text file; false when the file cannot be opened.
bool readFirstLine(const char *path, std::string &line, int limit);

// The code set of the process's locale settings (LC_ALL, LC_CTYPE, LANG):
// the one the effective setting names ("UTF-8", "ISO-8859-15", "SJIS"),
// else an installed locale's ("ISO-8859-1"), else "UTF-8".
void getLocaleCodeSet(char *buffer, int capacity);

} // namespace i18n_os

#endif
