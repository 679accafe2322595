// SPDX-License-Identifier: Apache-2.0
// XYLFileLockRW: whole-file reader/writer locks. Only OS-independent code
// lives here; the services of posix/XYLFileLockRW_posix.inc are included at
// the end.
#include <XYLCore/FileLock/XYLFileLockRW.h>

#include "FileLock/XYLFileLockOS_internal.h"
#include "FileManagement/XYLFmOS_internal.h"

#include <XYLCore/ExceptionHierarchy/XYLErrors.h>

#include <string>

namespace {

const char kObtainText[] = "Error obtaining a file lock. The error message retrieved from underlining system is ";
const char kReleaseText[] = "Error releasing a file lock. The error message retrieved from underlining system is ";

// Raises the lock error for the calling thread's last system error, with
// the operation's name as the text of the trace line.
[[noreturn]] void raiseLockError(const char *text, const char *operation, int line) {
  const std::string message = text + xyl_fm_os::errorText(xyl_fm_os::lastError()) + ".";
  XYLRuntimeError error(0L, message.c_str());
  error.hurl(XYLFileLocation(XYL_SOURCE_FILE, line), operation, "XYL_THROW");
}

} // namespace

XYLFileLockRW::XYLFileLockRW(XYLFmFile &file) : m_file(&file) {}

XYLFileLockRW::XYLFileLockRW() : m_file(nullptr) {}

XYLFileLockRW::~XYLFileLockRW() {}

int XYLFileLockRW::handle() const { return m_file->m_hFile; }

void XYLFileLockRW::lock() {
  XYL_ASSERT(m_file);
  if (!xyl_lock_os::lockFile(handle(), true, true))
    raiseLockError(kObtainText, "XYLFileLockRW::lock", __LINE__);
}

void XYLFileLockRW::unlock() {
  XYL_ASSERT(m_file);
  if (!xyl_lock_os::unlockFile(handle()))
    raiseLockError(kReleaseText, "XYLFileLockRW::unlock", __LINE__);
}

int XYLFileLockRW::tryLock() {
  XYL_ASSERT(m_file);
  return xyl_lock_os::lockFile(handle(), true, false) ? 1 : 0;
}

void XYLFileLockRW::readLock() {
  XYL_ASSERT(m_file);
  if (!xyl_lock_os::lockFile(handle(), false, true))
    raiseLockError(kObtainText, "XYLFileLockRW::readLock", __LINE__);
}

int XYLFileLockRW::tryReadLock() {
  XYL_ASSERT(m_file);
  return xyl_lock_os::lockFile(handle(), false, false) ? 1 : 0;
}

#include "posix/XYLFileLockRW_posix.inc"
