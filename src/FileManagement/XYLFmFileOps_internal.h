/* SPDX-License-Identifier: Apache-2.0 */
// XYLFmFileOps_internal.h - the operations XYLFmFile and XYLFmFile64 share,
// over the state each keeps (descriptor, standard-stream flag, last error).
//
// `log` is the calling object's logLastError() (a lambda over it), so that
// a class derived from either file class still records errors its own way;
// `self` and `other` are called through their virtual functions.
#ifndef XYLCORE_SRC_FILEMANAGEMENT_XYLFMFILEOPS_INTERNAL_H
#define XYLCORE_SRC_FILEMANAGEMENT_XYLFMFILEOPS_INTERNAL_H

#include <XYLCore/FileManagement/XYLFmFile.h>

#include "XYLFmOS_internal.h"
#include "XYLFmText_internal.h"

#include <string>

namespace xyl_fm {

// Bytes read, or -1: not open (nothing recorded) or a failed read (logged).
template <class Log> long long readData(int handle, void *buffer, unsigned long count, Log log) {
  if (handle == xyl_fm_os::kNoHandle)
    return -1;
  const long long n = xyl_fm_os::readFile(handle, buffer, count);
  if (n < 0) {
    log();
    return -1;
  }
  return n;
}

// Bytes written, or -1 when not open; a failure is logged.
template <class Log> long writeData(int handle, const void *buffer, unsigned long count, Log log) {
  if (handle == xyl_fm_os::kNoHandle)
    return -1;
  bool failed = false;
  const long long n = xyl_fm_os::writeFile(handle, buffer, count, failed);
  if (failed)
    log();
  return static_cast<long>(n);
}

// Copies what `other` has left to the end of `self`; 1 on success.
template <class File, class Log>
int appendData(File &self, File &other, int handle, unsigned long &lastError, Log log) {
  if (handle == xyl_fm_os::kNoHandle) {
    lastError = xyl_fm_os::errorBadHandle();
    return 0;
  }
  if (xyl_fm_os::seekFile(handle, 0, XYLFmFileModes::seekEnd) < 0) {
    log();
    return 0;
  }
  char chunk[1024];
  for (;;) {
    const long n = other.read(chunk, sizeof chunk);
    if (n == 0)
      return 1;
    if (n < 0) {
      // A closed source records nothing of its own.
      const unsigned long error = other.getLastErrorNumber();
      lastError = error != 0 ? error : xyl_fm_os::errorBadHandle();
      return 0;
    }
    if (self.write(chunk, static_cast<unsigned long>(n)) != n)
      return 0; // write recorded the error
  }
}

// Takes a standard stream (the file is already closed); 0 for an unknown one.
inline int openStandard(int &handle, int &stdHandle, XYLFmFileModes::stdiotypes stream) {
  switch (stream) {
  case XYLFmFileModes::stdInput:
  case XYLFmFileModes::stdOutput:
  case XYLFmFileModes::stdError:
    handle = xyl_fm_os::standardHandle(stream);
    stdHandle = 1;
    return 1;
  default:
    return 0;
  }
}

// Opens `path` (the file is already closed); a failure is logged.
template <class Log>
int openPath(int &handle, const char *path, XYLFmFileModes::createmode mode, int readOnly, Log log) {
  const int opened = xyl_fm_os::openFile(path, mode, readOnly != 0);
  if (opened == xyl_fm_os::kNoHandle) {
    log();
    return 0;
  }
  handle = opened;
  return 1;
}

// Opens the native form of `path` through self.open(const char *, ...).
template <class File, class Log>
int openI18NPath(File &self, const I18NString &path, XYLFmFileModes::createmode mode, int readOnly, Log log) {
  std::string native;
  if (!toNativePath(path, native)) {
    log();
    return 0;
  }
  return self.open(native.c_str(), mode, readOnly);
}

// Closes the descriptor (a standard stream is only forgotten); 1 when closed
// or never open.
template <class Log> int closeHandle(int &handle, int &stdHandle, Log log) {
  if (handle == xyl_fm_os::kNoHandle)
    return 1;
  const int closing = handle;
  const int standard = stdHandle;
  handle = xyl_fm_os::kNoHandle;
  stdHandle = 0;
  if (standard != 0)
    return 1;
  if (!xyl_fm_os::closeFile(closing)) {
    log();
    return 0;
  }
  return 1;
}

// The size of the file, or -1: not open (nothing recorded) or a failure
// (logged).
template <class Log> long long lengthOf(int handle, Log log) {
  if (handle == xyl_fm_os::kNoHandle)
    return -1;
  const long long size = xyl_fm_os::fileSize(handle);
  if (size < 0) {
    log();
    return -1;
  }
  return size;
}

// Syncs the file to the device; 0 when not open or on failure (logged).
template <class Log> int flushData(int handle, Log log) {
  if (handle == xyl_fm_os::kNoHandle)
    return 0;
  if (!xyl_fm_os::syncFile(handle)) {
    log();
    return 0;
  }
  return 1;
}

// Positions at `length` and makes that the end; 0 when not open (EBADF
// recorded) or on failure (logged).
template <class Log> int truncateAt(int handle, long long length, unsigned long &lastError, Log log) {
  if (handle == xyl_fm_os::kNoHandle) {
    lastError = xyl_fm_os::errorBadHandle();
    return 0;
  }
  if (xyl_fm_os::seekFile(handle, length, XYLFmFileModes::seekBegin) < 0 || !xyl_fm_os::truncateFile(handle, length)) {
    log();
    return 0;
  }
  return 1;
}

} // namespace xyl_fm

#endif // XYLCORE_SRC_FILEMANAGEMENT_XYLFMFILEOPS_INTERNAL_H
