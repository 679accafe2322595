/* SPDX-License-Identifier: Apache-2.0
 * XYLFmFile.h - handle-based file access with 32-bit offsets.
 *
 * XYLFmFile opens a file by path (or takes one of the process's standard
 * streams) and reads, writes, seeks, truncates and flushes it. Every
 * operation reports through its result (1 success, 0 failure; byte counts
 * and positions, -1 failure) and keeps the system's error number of the
 * last failure for getLastErrorNumber() and getLastErrorMessage(). Nothing
 * here throws except std::bad_alloc and the I18NString errors named below.
 *
 * Modes (values are part of the contract; XYLFmFile64 uses the same ones):
 *   createmode   1 create new (fail if it exists), 2 create always (truncate),
 *                3 open existing, 4 open always (create if missing),
 *                5 truncate existing (needs write access: read-only fails)
 *   seekorigin   0 from the beginning, 1 from the current position, 2 from
 *                the end
 *   stdiotypes   0 standard input, 1 standard output, 2 standard error
 *
 * Files are opened for reading, or for reading and writing; others may open
 * the same file at the same time (no sharing restriction). A new file gets
 * read and write permission for everyone the process's umask allows. The
 * descriptor is not inherited by programs the process starts. A directory
 * cannot be opened (EISDIR).
 *
 * Errors: numbers are the system's errno values (ENOENT 2, EACCES 13, ...),
 * with one library constant: END_OF_FILE_ERROR (38), which read() records at
 * the end of the file; the system's own 38 ("not implemented") is recorded
 * as ENOTSUP (95) so that 38 always means end of file. A null path fails
 * with EINVAL (22), a path an I18NString cannot give in the platform default
 * encoding (or that holds a NUL character) with EILSEQ (84) or EINVAL.
 *
 * Standard streams taken with open(stdiotypes) are never closed by the
 * object: close() and the destructor only forget them.
 *
 * 32-bit offsets: seek() takes an offset that fits in 32 signed bits and
 * refuses a position outside 0..0xFFFFFFFE; getLength() gives the low 32
 * bits of the size. Use XYLFmFile64 for larger files.
 *
 * Ownership: the object owns its descriptor (not a standard stream's). Not
 * copyable. Thread safety: none; an object belongs to one thread at a time.
 * Distinct objects may be used on the same file from many threads.
 */
#ifndef XYLCORE_FILEMANAGEMENT_XYLFMFILE_H
#define XYLCORE_FILEMANAGEMENT_XYLFMFILE_H

#include <XYLCore/XYLExport.h>
#include <XYLCore/i18n/cpp/i18n_string.h>

// The mode enumerations shared by XYLFmFile and XYLFmFile64.
class XYL_API XYLFmFileModes {
public:
  enum createmode { createNew = 1, createAlways = 2, openExisting = 3, openAlways = 4, truncateExisting = 5 };
  enum seekorigin { seekBegin = 0, seekCurrent = 1, seekEnd = 2 };
  enum stdiotypes { stdInput = 0, stdOutput = 1, stdError = 2 };

  // The last error XYLFmFile::read records at the end of the file.
  static const unsigned long END_OF_FILE_ERROR = 38;

protected:
  XYLFmFileModes() = default;
  ~XYLFmFileModes() = default;
};

class XYLFileLockRW;

class XYL_API XYLFmFile : public XYLFmFileModes {
public:
  XYLFmFile();
  // Closes the file (a standard stream is only forgotten).
  virtual ~XYLFmFile();

  // Reads up to `count` bytes; returns the bytes read, or -1 when the file is
  // not open (nothing recorded) or the read fails (error recorded). A read
  // that succeeds with 0 bytes (end of file, or a count of 0) records
  // END_OF_FILE_ERROR and returns 0.
  virtual long read(void *buffer, unsigned long count);
  // Writes `count` bytes; returns the bytes written, or -1 when the file is
  // not open (nothing recorded) or nothing could be written (error
  // recorded). An error after part of the data was written records the
  // error and returns the part's length.
  virtual long write(const void *buffer, unsigned long count);
  // Moves the position; returns the new position, or -1 when the file is
  // not open, the origin is not 0..2, the offset does not fit in 32 signed
  // bits or the new position would lie outside 0..0xFFFFFFFE. Nothing is
  // recorded.
  virtual long seek(long offset, seekorigin origin);
  // Moves this file to its end and copies `other` from its current position
  // in 1024-byte pieces until other's read() returns 0 or less. Returns 1;
  // 0 when this file cannot be positioned, other's read fails or a write is
  // short (error recorded here).
  virtual int append(XYLFmFile &other);
  // Closes, then takes standard input, output or error; 0 for any other
  // value or when the close fails.
  virtual int open(stdiotypes stream);
  // Closes (0 when that fails), then opens `path` with `mode`, for reading
  // only when readOnly is non-zero. 1 on success; 0 with the error recorded
  // on failure (the object is then closed).
  virtual int open(const char *path, createmode mode, int readOnly);
  // The same with the path converted to the platform default encoding; a
  // path that cannot be converted records EILSEQ (EINVAL when it holds a NUL
  // character), returns 0 and leaves the object as it was.
  virtual int open(const I18NString &path, createmode mode, int readOnly);
  // Closes the file: 1, also when it was not open; 0 with the error recorded
  // when the system reports a failure (the descriptor is released anyway).
  virtual int close();
  // The size of the file, low 32 bits; -1 when not open or on failure.
  virtual long getLength();
  // Writes the file's data and metadata through to the device; 0 when not
  // open or on failure (error recorded).
  virtual int flush();
  // Positions the file at `length` from the beginning and makes that its
  // end. 0 with the error recorded on failure (EBADF when not open, EINVAL
  // for a length outside 0..0xFFFFFFFE).
  virtual int truncate(long length);
  // The error number recorded by the last failure (0 before any).
  virtual unsigned long getLastErrorNumber() const;
  // The system's text for getLastErrorNumber() in the platform default
  // encoding ("Reached the end of the file." for END_OF_FILE_ERROR); empty
  // when the system has none.
  virtual I18NString getLastErrorMessage() const;

protected:
  // Records the calling thread's last system error.
  virtual void logLastError();

private:
  XYLFmFile(const XYLFmFile &) = delete;
  XYLFmFile &operator=(const XYLFmFile &) = delete;

  // The lock class works on the descriptor.
  friend class XYLFileLockRW;

  int m_hFile;                 // descriptor, -1 when closed
  int m_iStdHandle;            // 1 when m_hFile is a standard stream
  unsigned long m_ulLastError; // last recorded error number
};

#endif // XYLCORE_FILEMANAGEMENT_XYLFMFILE_H
