// SPDX-License-Identifier: Apache-2.0
// XYLFmFile64: file access with 64-bit offsets; the operations it shares
// with XYLFmFile are in XYLFmFileOps_internal.h.
#include <XYLCore/FileManagement/XYLFmFile64.h>

#include "XYLFmFileOps_internal.h"
#include "XYLFmOS_internal.h"
#include "XYLFmText_internal.h"

XYLFmFile64::XYLFmFile64() : m_hFile(xyl_fm_os::kNoHandle), m_iStdHandle(0), m_ulLastError(0) {}

XYLFmFile64::~XYLFmFile64() { XYLFmFile64::close(); }

long XYLFmFile64::read(void *buffer, unsigned long count) {
  // Unlike XYLFmFile, the end of the file records nothing.
  return static_cast<long>(xyl_fm::readData(m_hFile, buffer, count, [this] { logLastError(); }));
}

long XYLFmFile64::write(const void *buffer, unsigned long count) {
  return xyl_fm::writeData(m_hFile, buffer, count, [this] { logLastError(); });
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
  return xyl_fm::appendData(*this, other, m_hFile, m_ulLastError, [this] { logLastError(); });
}

int XYLFmFile64::open(stdiotypes stream) {
  return close() != 0 ? xyl_fm::openStandard(m_hFile, m_iStdHandle, stream) : 0;
}

int XYLFmFile64::open(const char *path, createmode mode, int readOnly) {
  return close() != 0 ? xyl_fm::openPath(m_hFile, path, mode, readOnly, [this] { logLastError(); }) : 0;
}

int XYLFmFile64::open(const I18NString &path, createmode mode, int readOnly) {
  return xyl_fm::openI18NPath(*this, path, mode, readOnly, [this] { logLastError(); });
}

int XYLFmFile64::close() {
  return xyl_fm::closeHandle(m_hFile, m_iStdHandle, [this] { logLastError(); });
}

long long XYLFmFile64::getLength() {
  return xyl_fm::lengthOf(m_hFile, [this] { logLastError(); });
}

int XYLFmFile64::flush() {
  return xyl_fm::flushData(m_hFile, [this] { logLastError(); });
}

int XYLFmFile64::truncate(long long length) {
  return xyl_fm::truncateAt(m_hFile, length, m_ulLastError, [this] { logLastError(); });
}

unsigned long XYLFmFile64::getLastErrorNumber() const { return m_ulLastError; }

I18NString XYLFmFile64::getLastErrorMessage() const { return xyl_fm::errorMessage(m_ulLastError); }

void XYLFmFile64::logLastError() { m_ulLastError = xyl_fm_os::lastError(); }
