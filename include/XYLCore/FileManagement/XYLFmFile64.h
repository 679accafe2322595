/* SPDX-License-Identifier: Apache-2.0
 * XYLFmFile64.h - handle-based file access with 64-bit offsets.
 *
 * The same operations, modes and error reporting as XYLFmFile (see
 * XYLFmFile.h), with 64-bit positions and sizes, and two deliberate
 * differences:
 *   - read() returns 0 at the end of the file without recording anything;
 *   - seek() records the error of a failed move.
 * The destructor is deliberately not virtual: the class is not meant to be
 * used as a polymorphic base (do not delete a derived object through an
 * XYLFmFile64 pointer).
 *
 * Ownership: the object owns its descriptor (not a standard stream's). Not
 * copyable. Thread safety: none; an object belongs to one thread at a time.
 */
#ifndef XYLCORE_FILEMANAGEMENT_XYLFMFILE64_H
#define XYLCORE_FILEMANAGEMENT_XYLFMFILE64_H

#include <XYLCore/FileManagement/XYLFmFile.h>

class XYL_API XYLFmFile64 : public XYLFmFileModes {
public:
  XYLFmFile64();
  // Closes the file (a standard stream is only forgotten). Not virtual.
  ~XYLFmFile64();

  // Bytes read (0 at the end of the file, nothing recorded), or -1 when not
  // open (nothing recorded) or on failure (error recorded).
  virtual long read(void *buffer, unsigned long count);
  // As XYLFmFile::write.
  virtual long write(const void *buffer, unsigned long count);
  // The new position, or -1: not open (nothing recorded), or a failed move
  // (bad origin, negative position; error recorded).
  virtual long long seek(long long offset, seekorigin origin);
  // As XYLFmFile::append.
  virtual int append(XYLFmFile64 &other);
  virtual int open(stdiotypes stream);
  virtual int open(const char *path, createmode mode, int readOnly);
  virtual int open(const I18NString &path, createmode mode, int readOnly);
  virtual int close();
  // The size of the file; -1 when not open or on failure (error recorded).
  virtual long long getLength();
  virtual int flush();
  // Positions at `length` and makes that the end; 0 with the error recorded
  // on failure.
  virtual int truncate(long long length);
  virtual unsigned long getLastErrorNumber() const;
  virtual I18NString getLastErrorMessage() const;

protected:
  virtual void logLastError();

private:
  XYLFmFile64(const XYLFmFile64 &) = delete;
  XYLFmFile64 &operator=(const XYLFmFile64 &) = delete;

  int m_hFile;                 // descriptor, -1 when closed
  int m_iStdHandle;            // 1 when m_hFile is a standard stream
  unsigned long m_ulLastError; // last recorded error number
};

#endif // XYLCORE_FILEMANAGEMENT_XYLFMFILE64_H
