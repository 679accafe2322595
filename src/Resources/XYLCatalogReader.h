/* SPDX-License-Identifier: Apache-2.0 */
// Private: the reader of one ".bmf" catalog file, apart from the path
// lookup so that tests, the fuzzer and `xyl msgdump` can drive it on any
// file. Exported for them only; not installed.
#ifndef XYLCORE_SRC_RESOURCES_XYLCATALOGREADER_H
#define XYLCORE_SRC_RESOURCES_XYLCATALOGREADER_H

#include <XYLCore/FileManagement/XYLFmFile64.h>
#include <XYLCore/XYLExport.h>

#include <cstddef>

class XYL_API XYLCatalogReader {
public:
  // The fixed part of a catalog: magic, count and text-area size.
  enum { HeaderSize = 16, EntrySize = 12 };
  // Why the last open() failed.
  enum Status {
    Ok = 0,
    NotOpened,    // the file could not be opened for reading (see getErrorNumber)
    ReadFailed,   // a read or seek failed
    BadMagic,     // not "BMF1" and a zero byte
    Truncated,    // shorter than its header, index and text area
    UnsortedIndex // numbers not strictly ascending (duplicates included)
  };

  // `wholeFile` reads every text at open; otherwise texts are read on lookup.
  explicit XYLCatalogReader(bool wholeFile);
  ~XYLCatalogReader();

  XYLCatalogReader(const XYLCatalogReader &) = delete;
  XYLCatalogReader &operator=(const XYLCatalogReader &) = delete;

  // Closes, then opens and validates `path`; false leaves the reader closed
  // with getStatus() saying why. Raises XYLOutOfMemoryError only.
  bool open(const char *path);
  void close();
  bool isOpen() const { return m_open; }

  // The text of `number` (zero-terminated; *length gets its length without
  // the zero when `length` is not null); null when the number is missing or
  // its entry does not lie inside the text area. On demand the text lives in
  // the reader's one buffer until the next lookup.
  const char *lookup(unsigned int number, std::size_t *length);
  // Entry `index` (0..getCount()-1) in file order: its number, and its text
  // as lookup() gives it (null when unavailable).
  const char *getEntry(unsigned int index, unsigned int *number, std::size_t *length);

  unsigned int getCount() const { return m_count; }
  unsigned int getTextSize() const { return m_textSize; }
  Status getStatus() const { return m_status; }
  // The system error of a failed open or read (0 otherwise).
  unsigned long getErrorNumber() const { return m_errorNumber; }
  // A short English description of a status ("bad magic").
  static const char *describe(Status status);
  // The on-demand text buffer and its capacity (null and 0 with whole-file
  // loading or before the first lookup).
  const char *getBuffer() const { return m_buffer; }
  std::size_t getBufferCapacity() const { return m_capacity; }

private:
  bool load(const char *path);
  const char *textOf(const unsigned char *entry, std::size_t *length);
  bool readAt(unsigned long long position, void *target, std::size_t count);

  bool m_wholeFile;
  bool m_open;
  Status m_status;
  unsigned long m_errorNumber;
  XYLFmFile64 m_file;      // stays open only on demand
  unsigned int m_count;    // host order
  unsigned int m_textSize; // host order
  unsigned char *m_index;  // m_count entries, file byte order
  char *m_text;            // whole-file text area
  char *m_buffer;          // on-demand text buffer
  std::size_t m_capacity;
};

#endif
