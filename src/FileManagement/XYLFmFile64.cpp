// XYLFmFile64: file access with 64-bit offsets over the services of
// XYLFmOS_internal.h (implemented with XYLFmFile).
#include <XYLCore/FileManagement/XYLFmFile64.h>

#include "XYLFmOS_internal.h"
#include "XYLFmText_internal.h"

XYLFmFile64::XYLFmFile64() : m_hFile(xyl_fm_os::kNoHandle), m_iStdHandle(0), m_ulLastError(0) {}

XYLFmFile64::~XYLFmFile64() { XYLFmFile64::close(); }

long XYLFmFile64::read(void *buffer, unsigned long count) {
  if (m_hFile == xyl_fm_os::kNoHandle)
    return -1;
  const long long n = xyl_fm_os::readFile(m_hFile, buffer, count);
  if (n < 0) {
    logLastError();
    return -1;
  }
  // Unlike XYLFmFile, the end of the file records nothing.
  return static_cast<long>(n);
}

long XYLFmFile64::write(const void *buffer, unsigned long count) {
  if (m_hFile == xyl_fm_os::kNoHandle)
    return -1;
  bool failed = false;
  const long long n = xyl_fm_os::writeFile(m_hFile, buffer, count, failed);
  if (failed)
    logLastError();
  return static_cast<long>(n);
}

long long XYLFmFile64::seek(long long offset, seekorigin origin) {
  if (m_hFile == xyl_fm_os::kNoHandle)
    return -1;
  const long long position = xyl_fm_os::seekFile(m_hFile, offset, origin);
  if (position < 0) {
    logLastError();
    return -1;
  }
  return position;
}

int XYLFmFile64::append(XYLFmFile64 &other) {
  if (m_hFile == xyl_fm_os::kNoHandle) {
    m_ulLastError = xyl_fm_os::errorBadHandle();
    return 0;
  }
  if (xyl_fm_os::seekFile(m_hFile, 0, seekEnd) < 0) {
    logLastError();
    return 0;
  }
  char chunk[1024];
  for (;;) {
    const long n = other.read(chunk, sizeof chunk);
    if (n == 0)
      return 1;
    if (n < 0) {
      const unsigned long error = other.getLastErrorNumber();
      m_ulLastError = error != 0 ? error : xyl_fm_os::errorBadHandle();
      return 0;
    }
    if (write(chunk, static_cast<unsigned long>(n)) != n)
      return 0; // write recorded the error
  }
}

int XYLFmFile64::open(stdiotypes stream) {
  if (close() == 0)
    return 0;
  switch (stream) {
  case stdInput:
  case stdOutput:
  case stdError:
    m_hFile = xyl_fm_os::standardHandle(stream);
    m_iStdHandle = 1;
    return 1;
  default:
    return 0;
  }
}

int XYLFmFile64::open(const char *path, createmode mode, int readOnly) {
  if (close() == 0)
    return 0;
  const int handle = xyl_fm_os::openFile(path, mode, readOnly != 0);
  if (handle == xyl_fm_os::kNoHandle) {
    logLastError();
    return 0;
  }
  m_hFile = handle;
  return 1;
}

int XYLFmFile64::open(const I18NString &path, createmode mode, int readOnly) {
  std::string native;
  if (!xyl_fm::toNativePath(path, native)) {
    logLastError();
    return 0;
  }
  return open(native.c_str(), mode, readOnly);
}

int XYLFmFile64::close() {
  if (m_hFile == xyl_fm_os::kNoHandle)
    return 1;
  const int handle = m_hFile;
  const int standard = m_iStdHandle;
  m_hFile = xyl_fm_os::kNoHandle;
  m_iStdHandle = 0;
  if (standard != 0)
    return 1;
  if (!xyl_fm_os::closeFile(handle)) {
    logLastError();
    return 0;
  }
  return 1;
}

long long XYLFmFile64::getLength() {
  if (m_hFile == xyl_fm_os::kNoHandle)
    return -1;
  const long long size = xyl_fm_os::fileSize(m_hFile);
  if (size < 0)
    logLastError();
  return size;
}

int XYLFmFile64::flush() {
  if (m_hFile == xyl_fm_os::kNoHandle)
    return 0;
  if (!xyl_fm_os::syncFile(m_hFile)) {
    logLastError();
    return 0;
  }
  return 1;
}

int XYLFmFile64::truncate(long long length) {
  if (m_hFile == xyl_fm_os::kNoHandle) {
    m_ulLastError = xyl_fm_os::errorBadHandle();
    return 0;
  }
  if (xyl_fm_os::seekFile(m_hFile, length, seekBegin) < 0 || !xyl_fm_os::truncateFile(m_hFile, length)) {
    logLastError();
    return 0;
  }
  return 1;
}

unsigned long XYLFmFile64::getLastErrorNumber() const { return m_ulLastError; }

I18NString XYLFmFile64::getLastErrorMessage() const { return xyl_fm::errorMessage(m_ulLastError); }

void XYLFmFile64::logLastError() { m_ulLastError = xyl_fm_os::lastError(); }
