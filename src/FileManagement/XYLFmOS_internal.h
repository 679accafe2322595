/* SPDX-License-Identifier: Apache-2.0 */
// XYLFmOS_internal.h - the operating-system services of the file and
// directory classes.
//
// Each function is implemented once per OS (posix/*.inc, included at the end
// of the .cpp that owns it) and is the only code that touches descriptors,
// errno or directory streams. A function that fails returns false (or -1)
// and leaves the system's error number for lastError(); none of them throws
// except std::bad_alloc.
#ifndef XYLCORE_SRC_FILEMANAGEMENT_XYLFMOS_INTERNAL_H
#define XYLCORE_SRC_FILEMANAGEMENT_XYLFMOS_INTERNAL_H

#include <cstddef>
#include <string>

namespace xyl_fm_os {

// ---- Errors (posix/XYLFmFile_posix.inc) ------------------------------------

// The error number of the last failed call on this thread. The system's own
// code for "not implemented" is reported as "not supported", so that the
// value the file classes keep for end of file (38) never comes from the
// system.
unsigned long lastError();
// Makes `number` the last error of this thread.
void setLastError(unsigned long number);
// The system's text for an error number; empty when the system knows none.
std::string errorText(unsigned long number);
// Common error numbers the portable code reports itself.
unsigned long errorInvalidArgument();
unsigned long errorBadHandle();
unsigned long errorIllegalSequence();
unsigned long errorAlreadyExists();

// ---- Files (posix/XYLFmFile_posix.inc) -------------------------------------

// The handle of a closed file.
const int kNoHandle = -1;

// Opens `path` with a creation mode of 1..5 (create new, create always, open
// existing, open always, truncate existing), for reading only or for reading
// and writing. A directory is refused. Returns the handle or kNoHandle.
int openFile(const char *path, int mode, bool readOnly);
// The handle of standard input, output or error (0, 1, 2).
int standardHandle(int stream);
bool closeFile(int handle);
// Bytes read (0 at the end of the file) or -1.
long long readFile(int handle, void *buffer, std::size_t count);
// Writes everything unless an error stops it; returns the bytes written,
// or -1 when nothing was written. `failed` tells whether an error stopped
// the transfer (the last error is then set).
long long writeFile(int handle, const void *buffer, std::size_t count, bool &failed);
// The new position, or -1. Origins 0, 1, 2: beginning, current, end.
long long seekFile(int handle, long long offset, int origin);
// The current position, or -1.
long long filePosition(int handle);
// The file size, or -1.
long long fileSize(int handle);
// Sets the end of the file at `length`.
bool truncateFile(int handle, long long length);
// Writes the file's data and metadata to the device.
bool syncFile(int handle);

// ---- Directories (posix/XYLFmDir_posix.inc) --------------------------------

// The process's current directory, absolute; false (directory unchanged)
// when the system cannot give it.
bool readCurrentDirectory(std::string &directory);
// Whether `path` names an object whose type bits (0xF000: 0x4000 directory,
// 0x8000 regular file) equal those of `mode` and which grants every
// permission bit of `mode` (0x0FFF): the read, write and search bits of any
// class are checked as this process's access, the set-id and sticky bits
// as stored.
bool pathExists(const char *path, unsigned int mode);
bool makeDirectory(const char *path);
bool removeDirectory(const char *path);
// Removes a file (not a directory).
bool unlinkFile(const char *path);
// Renames; fails when `to` exists.
bool renameNoReplace(const char *from, const char *to);
// Creates `path` as a new regular file readable and writable by its owner;
// fails when anything exists there.
bool createExclusiveFile(const char *path);

// Called once per entry of a directory, "." and ".." excluded. A symbolic
// link counts as a file whatever it points to.
class DirectoryVisitor {
public:
  virtual void visit(const char *name, bool isDirectory) = 0;

protected:
  ~DirectoryVisitor() = default;
};
// Lists `path`; false when it cannot be opened.
bool listDirectory(const char *path, DirectoryVisitor &visitor);

// The value of an environment variable, or null.
const char *environmentValue(const char *name);
// The conventional temporary directories of the system, in the order to try
// after the variables the library reads itself; returns how many were
// stored (unset variables are left out).
std::size_t conventionalTempDirectories(const char *(&candidates)[2]);
// Seconds since 1970.
long long currentTime();

} // namespace xyl_fm_os

#endif // XYLCORE_SRC_FILEMANAGEMENT_XYLFMOS_INTERNAL_H
