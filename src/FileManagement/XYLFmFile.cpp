// XYLFmFile: file access with 32-bit offsets, and the error texts both file
// classes share. Only OS-independent code lives here; the services of
// posix/XYLFmFile_posix.inc are included at the end.
#include <XYLCore/FileManagement/XYLFmFile.h>

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
  if (m_hFile == xyl_fm_os::kNoHandle)
    return -1;
  const long long n = xyl_fm_os::readFile(m_hFile, buffer, count);
  if (n < 0) {
    logLastError();
    return -1;
  }
  if (n == 0)
    m_ulLastError = END_OF_FILE_ERROR;
  return static_cast<long>(n);
}

long XYLFmFile::write(const void *buffer, unsigned long count) {
  if (m_hFile == xyl_fm_os::kNoHandle)
    return -1;
  bool failed = false;
  const long long n = xyl_fm_os::writeFile(m_hFile, buffer, count, failed);
  if (failed)
    logLastError();
  return static_cast<long>(n);
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
      // A closed source records nothing of its own.
      const unsigned long error = other.getLastErrorNumber();
      m_ulLastError = error != 0 ? error : xyl_fm_os::errorBadHandle();
      return 0;
    }
    if (write(chunk, static_cast<unsigned long>(n)) != n)
      return 0; // write recorded the error
  }
}

int XYLFmFile::open(stdiotypes stream) {
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

int XYLFmFile::open(const char *path, createmode mode, int readOnly) {
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

int XYLFmFile::open(const I18NString &path, createmode mode, int readOnly) {
  std::string native;
  if (!xyl_fm::toNativePath(path, native)) {
    logLastError();
    return 0;
  }
  return open(native.c_str(), mode, readOnly);
}

int XYLFmFile::close() {
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

long XYLFmFile::getLength() {
  if (m_hFile == xyl_fm_os::kNoHandle)
    return -1;
  const long long size = xyl_fm_os::fileSize(m_hFile);
  if (size < 0) {
    logLastError();
    return -1;
  }
  return static_cast<long>(size & 0xFFFFFFFFLL);
}

int XYLFmFile::flush() {
  if (m_hFile == xyl_fm_os::kNoHandle)
    return 0;
  if (!xyl_fm_os::syncFile(m_hFile)) {
    logLastError();
    return 0;
  }
  return 1;
}

int XYLFmFile::truncate(long length) {
  if (m_hFile == xyl_fm_os::kNoHandle) {
    m_ulLastError = xyl_fm_os::errorBadHandle();
    return 0;
  }
  if (length < 0 || length > kMaxPosition32) {
    m_ulLastError = xyl_fm_os::errorInvalidArgument();
    return 0;
  }
  if (xyl_fm_os::seekFile(m_hFile, length, seekBegin) < 0 || !xyl_fm_os::truncateFile(m_hFile, length)) {
    logLastError();
    return 0;
  }
  return 1;
}

unsigned long XYLFmFile::getLastErrorNumber() const { return m_ulLastError; }

I18NString XYLFmFile::getLastErrorMessage() const { return xyl_fm::errorMessage(m_ulLastError); }

void XYLFmFile::logLastError() { m_ulLastError = xyl_fm_os::lastError(); }

#include "posix/XYLFmFile_posix.inc"
