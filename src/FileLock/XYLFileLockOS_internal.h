/* SPDX-License-Identifier: Apache-2.0 */
// XYLFileLockOS_internal.h - the operating-system services of the file
// locks: whole-file locks that belong to an open file. Implemented once per
// OS (posix/XYLFileLockRW_posix.inc). A failure returns false and leaves the
// system's error number for xyl_fm_os::lastError().
#ifndef XYLCORE_SRC_FILELOCK_XYLFILELOCKOS_INTERNAL_H
#define XYLCORE_SRC_FILELOCK_XYLFILELOCKOS_INTERNAL_H

namespace xyl_lock_os {

// Takes the whole-file lock of `handle`, exclusive or shared, waiting for
// it or not.
bool lockFile(int handle, bool exclusive, bool wait);
// Releases the whole-file lock of `handle`.
bool unlockFile(int handle);

} // namespace xyl_lock_os

#endif // XYLCORE_SRC_FILELOCK_XYLFILELOCKOS_INTERNAL_H
