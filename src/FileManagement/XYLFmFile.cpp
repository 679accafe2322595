// SPDX-License-Identifier: Apache-2.0
// XYLFmFile: file access with 32-bit offsets, and the error texts both file
// classes share. Only OS-independent code lives here; the services of
// posix/XYLFmFile_posix.inc are included at the end.
#include <XYLCore/FileManagement/XYLFmFile.h>

#include "XYLFmFileOps_internal.h"
#include "XYLFmOS_internal.h"
#include "XYLFmText_internal.h"

#include <cstdint>

namespace {

// The highest position a 32-bit file pointer can hold (all ones is its
// failure value).
const long long kMaxPosition32 = 0xFFFFFFFELL;
const char kEndOfFileText[] = "Reached the end of the file.";

} // namespace

const unsigned long XYLFmFileModes::END_OF_FILE_ERROR;

I18NString xyl_fm::errorMessage(unsigned long number) {
  I18NString text;
  if (number == XYLFmFileModes::END_OF_FILE_ERROR) {
    text = kEndOfFileText;
    return text;
  }
  const std::string systemText = xyl_fm_os::errorText(number);
  if (!systemText.empty())
    fromNativeText(systemText, text);
  return text;
}

XYLFmFile::XYLFmFile() : m_hFile(xyl_fm_os::kNoHandle), m_iStdHandle(0), m_ulLastError(0) {}

XYLFmFile::~XYLFmFile() { XYLFmFile::close(); }

long XYLFmFile::read(void *buffer, unsigned long count) {
  const long long n = xyl_fm::readData(m_hFile, buffer, count, [this] { logLastError(); });
  if (n == 0)
    m_ulLastError = END_OF_FILE_ERROR;
  return static_cast<long>(n);
}

long XYLFmFile::write(const void *buffer, unsigned long count) {
  return xyl_fm::writeData(m_hFile, buffer, count, [this] { logLastError(); });
}

long XYLFmFile::seek(long offset, seekorigin origin) {
  if (m_hFile == xyl_fm_os::kNoHandle || offset < INT32_MIN || offset > INT32_MAX)
    return -1;
  long long base;
  switch (origin) {
  case seekBegin:
    base = 0;
    break;
  case seekCurrent:
    base = xyl_fm_os::filePosition(m_hFile);
    break;
  case seekEnd:
    base = xyl_fm_os::fileSize(m_hFile);
    break;
  default:
    return -1;
  }
  if (base < 0)
    return -1;
  // A 32-bit file pointer refuses a move it could not report, and moves
  // nothing then.
  const long long target = base + offset;
  if (target < 0 || target > kMaxPosition32 || xyl_fm_os::seekFile(m_hFile, target, seekBegin) < 0)
    return -1;
  return static_cast<long>(target);
}

int XYLFmFile::append(XYLFmFile &other) {
  return xyl_fm::appendData(*this, other, m_hFile, m_ulLastError, [this] { logLastError(); });
}

int XYLFmFile::open(stdiotypes stream) {
  return close() != 0 ? xyl_fm::openStandard(m_hFile, m_iStdHandle, stream) : 0;
}

int XYLFmFile::open(const char *path, createmode mode, int readOnly) {
  return close() != 0 ? xyl_fm::openPath(m_hFile, path, mode, readOnly, [this] { logLastError(); }) : 0;
}

int XYLFmFile::open(const I18NString &path, createmode mode, int readOnly) {
  return xyl_fm::openI18NPath(*this, path, mode, readOnly, [this] { logLastError(); });
}

int XYLFmFile::close() {
  return xyl_fm::closeHandle(m_hFile, m_iStdHandle, [this] { logLastError(); });
}

long XYLFmFile::getLength() {
  const long long size = xyl_fm::lengthOf(m_hFile, [this] { logLastError(); });
  return size < 0 ? -1 : static_cast<long>(size & 0xFFFFFFFFLL);
}

int XYLFmFile::flush() {
  return xyl_fm::flushData(m_hFile, [this] { logLastError(); });
}

int XYLFmFile::truncate(long length) {
  if (m_hFile != xyl_fm_os::kNoHandle && (length < 0 || length > kMaxPosition32)) {
    m_ulLastError = xyl_fm_os::errorInvalidArgument();
    return 0;
  }
  return xyl_fm::truncateAt(m_hFile, length, m_ulLastError, [this] { logLastError(); });
}

unsigned long XYLFmFile::getLastErrorNumber() const { return m_ulLastError; }

I18NString XYLFmFile::getLastErrorMessage() const { return xyl_fm::errorMessage(m_ulLastError); }

void XYLFmFile::logLastError() { m_ulLastError = xyl_fm_os::lastError(); }

#include "posix/XYLFmFile_posix.inc"
