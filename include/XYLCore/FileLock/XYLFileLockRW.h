/* SPDX-License-Identifier: Apache-2.0
 * XYLFileLockRW.h - whole-file reader/writer locks on an open XYLFmFile.
 *
 * Contract: every operation locks or unlocks the whole file (from offset 0
 * to any length the file may reach). lock() and readLock() wait until the
 * exclusive or shared lock is granted; tryLock() and tryReadLock() answer 1
 * (granted) or 0 (held elsewhere, or any other failure) at once. Taking a
 * lock while holding one on the same XYLFmFile converts it (shared to
 * exclusive or back) instead of waiting for oneself; one unlock() releases
 * it. Unlocking a file that holds no lock succeeds. An exclusive lock needs
 * a file opened for reading and writing: on a read-only XYLFmFile, lock()
 * throws ("Bad file descriptor") and tryLock() returns 0.
 *
 * The locks belong to the open file (the XYLFmFile object), not to the
 * process or the thread: two XYLFmFile objects on one file exclude each
 * other even inside one process and on one thread, so a thread that locks
 * the same file through two objects deadlocks. Closing the XYLFmFile
 * releases its lock. The locks are advisory: they bind only code that asks
 * for them; reads and writes are never refused. They work across processes
 * on local file systems (and on NFS where the server supports them).
 *
 * Throws: every operation first asserts that a file is set (XYLAssertError
 * "XYL_ASSERT(m_file);"). lock() and readLock() throw XYLRuntimeError (code
 * 0) "Error obtaining a file lock. The error message retrieved from
 * underlining system is <system text>." and unlock() "Error releasing a file
 * lock. The error message retrieved from underlining system is <system
 * text>." when the system refuses (a closed file gives "Bad file
 * descriptor"); the back trace names the operation ("XYLFileLockRW::lock",
 * "XYLFileLockRW::readLock", "XYLFileLockRW::unlock").
 *
 * Ownership: the object does not own the file, which must outlive it while
 * it is set. Destroying the object does not unlock. Thread safety: as the
 * XYLFmFile it works on (one thread at a time per file object).
 */
#ifndef XYLCORE_FILELOCK_XYLFILELOCKRW_H
#define XYLCORE_FILELOCK_XYLFILELOCKRW_H

#include <XYLCore/FileManagement/XYLFmFile.h>
#include <XYLCore/XYLExport.h>

class XYL_API XYLFileLockRW {
public:
  explicit XYLFileLockRW(XYLFmFile &file);
  virtual ~XYLFileLockRW();

  // Exclusive lock; waits. Throws on failure.
  virtual void lock();
  // Releases the lock. Throws on failure.
  virtual void unlock();
  // Exclusive lock without waiting: 1 granted, 0 not.
  virtual int tryLock();
  // Shared lock; waits. Throws on failure.
  virtual void readLock();
  // Shared lock without waiting: 1 granted, 0 not.
  virtual int tryReadLock();

protected:
  XYLFileLockRW();
  XYLFmFile *getFile() const { return m_file; }
  void setFile(XYLFmFile *file) { m_file = file; }

private:
  XYLFileLockRW(const XYLFileLockRW &) = delete;
  XYLFileLockRW &operator=(const XYLFileLockRW &) = delete;

  // The descriptor of the locked file.
  int handle() const;

  XYLFmFile *m_file; // not owned
};

#endif // XYLCORE_FILELOCK_XYLFILELOCKRW_H
