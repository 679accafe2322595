/* SPDX-License-Identifier: Apache-2.0
 * XYLFmDir.h - static path, directory and temporary-file operations.
 *
 * XYLFmDir is a set of static operations: the root prefix of a path, joining
 * and splitting paths, resolving a relative path against the process's
 * effective working directory, testing, creating, listing, renaming and
 * removing files and directories, and finding the temporary directory and
 * making unique temporary files and directories in it. Each operation takes
 * `char` paths in the platform default encoding and has an I18NString twin
 * that converts its arguments to that encoding (no replacement characters:
 * a path the encoding cannot hold, or one with a NUL character, fails),
 * calls the `char` form and converts the results back.
 *
 * Path styles
 *   The pure path functions take an XYLFmPathStyle; the default is the
 *   native style of the build (Posix on Linux). The file-system operations
 *   always use the native style.
 *   - Windows style: both '/' and '\' separate, and a joined path gets a
 *     backslash. Paths are read as multibyte characters of the current
 *     locale (LC_CTYPE); a byte counts as a separator only when it is a
 *     whole character, so a double-byte character whose second byte is 0x5C
 *     does not split. In a single-byte locale (MB_CUR_MAX == 1, the "C"
 *     locale) every byte is one character. An invalid multibyte sequence
 *     anywhere in the path makes it unusable (see getRootPrefixLength).
 *   - Posix style: only '/' separates, and paths are plain byte strings
 *     (a file name may hold any byte but '/' and NUL); nothing is invalid.
 *
 * The root prefix
 *   Windows style, by the first characters of the path:
 *     ""                       0
 *     "\x"  (separator, then anything but a separator, or the end)   1
 *     "\\server\share\..."     the two separators, the server name, the
 *                              separators after it, the share name and the
 *                              separators after it ("\\srv\shr\" is 10)
 *     "C:x"                    2 (a letter and a colon)
 *     "C:\x"                   3 (a letter, a colon and one separator)
 *     anything else            0
 *   Posix style: the run of leading slashes ("/usr" 1, "//x" 2, "x" 0).
 *   A path "has a root prefix" when this length is not 0.
 *
 * The temporary directory (getTempPath), first that applies:
 *   1. the directory the process set explicitly;
 *   2. the first of the variables "TMP", "tmp", "TEMP", "temp" that is set:
 *      its value if it names a directory this process may read and write;
 *      when it does not, the other three are not tried;
 *   3. the Linux conventions: $TMPDIR (when set and not empty), then
 *      P_tmpdir ("/tmp"), each if this process may read and write it;
 *   4. "." if the current directory is such a directory;
 *   otherwise there is none.
 *
 * Results 1 (success) and 0 (failure); the system's error number of a
 * failure stays in errno. Nothing here throws except std::bad_alloc, the
 * lock errors of the thread classes and, from the I18NString twins,
 * XYLOutOfMemoryError.
 *
 * Ownership: results are written into caller-owned objects; input pointers
 * are only read during the call.
 * Thread safety: every operation may run on any thread at once (the path
 * functions read the locale, so do not change LC_CTYPE while they run). The
 * explicit temporary directory and the effective working directory are
 * process-wide, each guarded by its own lock. Concurrent changes to the
 * same files are the file system's to order.
 */
#ifndef XYLCORE_FILEMANAGEMENT_XYLFMDIR_H
#define XYLCORE_FILEMANAGEMENT_XYLFMDIR_H

#include <XYLCore/XYLExport.h>

#include <cstddef>
#include <string>
#include <vector>

class I18NString;

// How a path is read: which characters separate, which prefixes are roots.
enum XYLFmPathStyle {
  XYLFmPathStyleWindows = 0,
  XYLFmPathStylePosix = 1,
#if defined(_WIN32)
  XYLFmPathStyleNative = XYLFmPathStyleWindows
#else
  XYLFmPathStyleNative = XYLFmPathStylePosix
#endif
};

class XYL_API XYLFmDir {
public:
  // The root prefix length of an unusable path (invalid multibyte sequence).
  static const std::size_t INVALID_ROOT_PREFIX = static_cast<std::size_t>(-1);

  // The length in bytes of the root prefix of `path` (see the table above);
  // 0 for a null path; INVALID_ROOT_PREFIX when the path holds an invalid
  // multibyte sequence.
  static std::size_t getRootPrefixLength(const char *path, XYLFmPathStyle style = XYLFmPathStyleNative);

  // Appends `part` to `base`. A null or empty part leaves base; an empty base,
  // or a part that has a root prefix, makes base a copy of part; otherwise
  // part is appended after one separator ('\' in Windows style, '/' in Posix
  // style), which is left out when base already ends in a separator.
  // Returns 1; 0 when base or part is unusable (base is then unchanged).
  static int joinPath(std::string &base, const char *part, XYLFmPathStyle style = XYLFmPathStyleNative);

  // Splits `path` at its last separator after the root prefix: `directory`
  // receives the text before that separator (the root prefix itself when
  // there is none after it), `name` the text after it (the whole rest when
  // there is none). Either output may be null. "a\b\c.txt" gives "a\b" and
  // "c.txt"; "C:\x" gives "C:\" and "x". A null or unusable path empties both
  // outputs and returns 0; otherwise returns 1.
  static int splitPath(const char *path, std::string *directory, std::string *name,
                       XYLFmPathStyle style = XYLFmPathStyleNative);

  // When an effective working directory is set and `path` has no root
  // prefix, replaces path by the effective directory joined with it (native
  // style). Returns path.
  static std::string &resolveEffectivePath(std::string &path);

  // Copies the effective working directory into `directory` and returns 1,
  // or returns 0 (directory emptied) when none is set.
  static int getEffectiveWorkingDir(std::string &directory);

  // ---- I18NString forms of the path functions ----------------------------

  // 0 (base unchanged) also when a path cannot be converted.
  static int joinPath(I18NString &base, const I18NString &part, XYLFmPathStyle style = XYLFmPathStyleNative);
  static int splitPath(const I18NString &path, I18NString *directory, I18NString *name,
                       XYLFmPathStyle style = XYLFmPathStyleNative);
  // The path is unchanged when it cannot be converted.
  static I18NString &resolveEffectivePath(I18NString &path);

  // ---- Files and directories ---------------------------------------------

  // Mode values for exists(): the type bits (mask 0xF000) must equal the
  // object's, and every permission bit (mask 0x0FFF) must be granted.
  static const int EXISTS_DIRECTORY = 0x4000;
  static const int EXISTS_FILE = 0x8000;
  static const int EXISTS_READ_WRITE_DIRECTORY = 0x4180;

  // 1 when `path` names an object of the type in `mode` (0x4000 directory,
  // 0x8000 regular file; symbolic links are followed) that grants every
  // permission bit of `mode`. The read (0444), write (0222) and search or
  // execute (0111) bits of any class ask whether this process may read,
  // write or search the object (as its effective user: root may read and
  // write everything); the set-id and sticky bits (07000) must be set.
  static int exists(const char *path, int mode);
  static int exists(const I18NString &path, int mode);
  // Creates one directory (permissions 0777 less the umask).
  static int createDir(const char *path);
  static int createDir(const I18NString &path);
  // Creates the directory and every missing directory above it: when
  // createDir(path) fails, createDir is called on each prefix of the path
  // that ends just before a separator (after the root prefix; a trailing
  // run of separators is not such a place) and then on the whole path,
  // whose result is returned. Fails when the whole path exists already.
  static int createRecursiveDir(const char *path);
  static int createRecursiveDir(const I18NString &path);
  // Removes a file; a directory is not removed.
  static int removeFile(const char *path);
  static int removeFile(const I18NString &path);
  // Renames `from` to `to`, which must not exist.
  static int renameFile(const char *from, const char *to);
  static int renameFile(const I18NString &from, const I18NString &to);
  // Removes a directory with everything in it: its files first (stopping at
  // the first failure), then each subdirectory in the same way, then the
  // directory itself when everything succeeded. Symbolic links are removed,
  // never followed.
  static int removeDir(const char *path);
  static int removeDir(const I18NString &path);
  // Lists `dir`: names of entries that are not directories (symbolic links
  // included) are appended to `files`, names of directories other than "."
  // and ".." to `directories`, either list may be null; names only, in the
  // order the system gives them. The two texts are accepted for
  // compatibility and ignored. 0 when both lists are null or `dir` cannot be
  // listed; 1 otherwise, also for an empty directory. The I18NString form
  // returns 0 when a name is not valid in the platform default encoding
  // (that name is left out, the others are listed).
  static int readDir(const char *dir, std::vector<std::string> *files, const char *filesText,
                     std::vector<std::string> *directories, const char *directoriesText);
  static int readDir(const I18NString &dir, std::vector<I18NString> *files, const I18NString *filesText,
                     std::vector<I18NString> *directories, const I18NString *directoriesText);

  // ---- Temporary files and directories -----------------------------------

  // The temporary directory (see the banner); 0 (result emptied) when none
  // is usable.
  static int getTempPath(std::string &result);
  static int getTempPath(I18NString &result);
  // Makes a new directory named <directory>/<prefix><time><n><suffix>:
  // `directory` null means getTempPath() (a given one must pass exists()
  // with 0x4180), `prefix` null means "XYLFm", time is the decimal seconds
  // since 1970 at the call, n runs from 0 to 499 and `suffix` may be null.
  // Each candidate is created exclusively; one that exists already moves on
  // to the next. Returns 1 with the path in `result`; 0 (result emptied)
  // when the directory is unusable, all 500 candidates exist or a creation
  // fails for another reason.
  static int createTempDir(const char *directory, const char *prefix, std::string &result);
  static int createTempDir(const char *directory, const char *prefix, std::string &result, const char *suffix);
  static int createTempDir(const I18NString *directory, const I18NString *prefix, I18NString &result,
                           const I18NString *suffix = nullptr);
  // The same for a new empty regular file (permissions 0600), created with
  // O_EXCL so that no other process can have made it.
  static int createTempFile(const char *directory, const char *prefix, std::string &result);
  static int createTempFile(const char *directory, const char *prefix, std::string &result, const char *suffix);
  static int createTempFile(const I18NString *directory, const I18NString *prefix, I18NString &result,
                            const I18NString *suffix = nullptr);

private:
  XYLFmDir() = delete;

  // Sets the directory getTempPath() returns before looking anywhere else,
  // as given with trailing separators after the root prefix dropped. Null
  // or empty clears it. Returns 1 when a directory is now set, 0 when
  // cleared.
  static int setTempPath(const char *directory);

  // Sets the directory that relative paths are resolved against. A relative
  // directory is made absolute against the process's current directory, and
  // trailing separators after the root prefix are dropped. Null or empty
  // clears it. Returns 1 when a directory is now set, 0 when cleared or when
  // the current directory could not be read (the setting is then unchanged).
  static int setEffectiveWorkingDir(const char *directory);

  // Tests set and clear the effective working and temporary directories
  // through this class.
  friend class XYLFmDirTestAccess;
};

#endif // XYLCORE_FILEMANAGEMENT_XYLFMDIR_H
