/* SPDX-License-Identifier: Apache-2.0
 * XYLResourceFile.h - message catalogs: binary ".bmf" files that map a
 * 32-bit message number to a UTF-8 text.
 *
 * File layout (every integer unsigned 32-bit, big-endian):
 *   0   8       magic "BMF1" and a zero byte (the three bytes after the zero
 *               are not checked)
 *   8   4       entry count N
 *   12  4       size of the text area in bytes
 *   16  12*N    index: (message number, text offset from the start of the
 *               text area, text length including its terminating zero),
 *               sorted by message number in ascending unsigned order
 *   16+12*N     text area
 *
 * Opening validates the file before anything sized by it is allocated: a
 * file shorter than 16 + 12*N + text-area size, a bad magic, or an index that
 * is not strictly ascending (duplicates included) leaves the catalog closed.
 * An entry whose text does not lie inside the text area, or is not
 * zero-terminated within its length (the zero may come earlier; the text
 * then ends there), is treated as missing; the other entries stay usable.
 * Bytes after the text area are ignored.
 *
 * Loading modes (the integer option):
 *   XYLResourceWholeFile (1) reads the index and the text area at open and
 *     closes the file; a text pointer stays valid until close().
 *   XYLResourceOnDemand (0) keeps the file open and reads each text on
 *     lookup into one buffer owned by the handle: a longer text reallocates
 *     it, a shorter one reuses it. A text pointer stays valid only until the
 *     next lookup on the same handle.
 * Any other value is taken as XYLResourceWholeFile.
 *
 * Where a catalog is found (XYLResourceFactory), given a catalog name, a
 * location (a directory) and a locale:
 *   - a null or empty location means the library's catalog directory: the
 *     value of the environment variable XYL_MSG_PATH when it is set and not
 *     empty, otherwise the directory that holds the library's own shared
 *     object (the build and the installation put "xylpluginmsgs.bmf" there);
 *     a static build (libXYLCore.a) also tries, last, the installed library
 *     directory compiled in from the install prefix;
 *   - the locale is normalised (lower case, "_" becomes "-"); a null or empty
 *     locale means "en-us"; its language is the part before the first "-";
 *   - the first existing regular file among
 *       <location>/<locale>/<name>.bmf
 *       <location>/<language>/<name>.bmf   (when it differs from the locale)
 *       <location>/<name>.bmf
 *     is opened. The search stops at that file even when it cannot be read
 *     (permission) or is malformed: open() then fails rather than quietly
 *     showing another language's texts.
 *   - a name that already ends in ".bmf" is not given the extension again;
 *     a name holding a "/" is used as a path (relative to the current
 *     directory unless absolute) and no directory is searched.
 * The two-text form open(name, text) takes the text as the location, with
 * no locale folder: it is open(name, text, nullptr) with the locale folders
 * skipped, so <text>/<name>.bmf (or the library's directory when text is
 * null or empty).
 *
 * Results: open() returns nonzero when a catalog is open. A missing file, a
 * file that cannot be read (permission), or a malformed one returns 0 and
 * leaves the handle closed (a catalog open before is closed first).
 * getResource() returns the text and stores a pointer to it (owned by the
 * handle) in *text; an empty string and a null pointer when the handle is
 * closed or the number is missing. The handle creates its reader at the
 * first open() (successful or not) and keeps it until destruction:
 * getResource() on a handle that was never opened raises XYLAssertError
 * "XYL_ASSERT(m_resource != NULL);". Exhausted memory raises
 * XYLOutOfMemoryError; nothing else throws.
 *
 * Ownership: the handle owns its reader, file and buffers. Not copyable.
 * Thread safety: none; one handle serves one thread at a time (the
 * on-demand buffer is shared by every lookup). Distinct handles on the same
 * file are independent.
 */
#ifndef XYLCORE_RESOURCES_XYLRESOURCEFILE_H
#define XYLCORE_RESOURCES_XYLRESOURCEFILE_H

#include <XYLCore/XYLExport.h>

#include <string>
#include <vector>

class XYLCatalogReader;

class XYL_API XYLResourceFile {
public:
  // The integer option: how texts are loaded.
  enum { XYLResourceOnDemand = 0, XYLResourceWholeFile = 1 };

  explicit XYLResourceFile(int option = XYLResourceWholeFile);
  // Opens at once, as open(name, text) does; check isOpen().
  XYLResourceFile(const char *name, const char *text, int option);
  ~XYLResourceFile();

  XYLResourceFile(const XYLResourceFile &) = delete;
  XYLResourceFile &operator=(const XYLResourceFile &) = delete;

  // Opens the catalog `name` in the directory `text` (see above); nonzero
  // on success.
  int open(const char *name, const char *text);
  // Opens the catalog `name` for `locale` under `location`; nonzero on
  // success.
  int open(const char *name, const char *location, const char *locale);
  // Nonzero while a catalog is open.
  int isOpen() const;
  // The text of `messageNumber`; *text receives a pointer to it (null and
  // an empty result when missing). `text` may be null.
  std::string getResource(unsigned int messageNumber, const char **text);
  // Closes the catalog (nothing when none is open).
  void close();

  // The path of the open catalog; empty when closed.
  const std::string &getPath() const { return m_path; }
  // The loading option given at construction.
  int getOption() const { return m_option; }

private:
  int openPath(const std::string &path);

  int m_option;
  XYLCatalogReader *m_resource;
  std::string m_path;
};

// The path resolution behind XYLResourceFile::open.
class XYL_API XYLResourceFactory {
public:
  // The library's catalog directory: XYL_MSG_PATH when set and not empty,
  // otherwise the directory of the library's shared object ("." when that
  // cannot be found). No trailing separator.
  static std::string getDefaultLocation();
  // The candidate paths for (name, location, locale), in search order;
  // with `useLocale` false only the location's own file.
  static std::vector<std::string> getCandidates(const char *name, const char *location, const char *locale,
                                                bool useLocale);
  // The first candidate that exists as a regular file; empty when none.
  static std::string resolve(const char *name, const char *location, const char *locale, bool useLocale);
};

#endif // XYLCORE_RESOURCES_XYLRESOURCEFILE_H
