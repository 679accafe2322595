// SPDX-License-Identifier: Apache-2.0
#include "Resources/XYLCatalogReader.h"

#include <XYLCore/ExceptionHierarchy/XYLErrors.h>
#include <XYLCore/FileManagement/XYLFmFile64.h>
#include <XYLCore/Utility/XYLUtMemory.h>

#include <cstring>

namespace {

const char kMagic[] = "BMF1";

// A big-endian 32-bit word of the file.
inline unsigned int wordAt(const unsigned char *bytes) {
  return (static_cast<unsigned int>(bytes[0]) << 24) | (static_cast<unsigned int>(bytes[1]) << 16) |
         (static_cast<unsigned int>(bytes[2]) << 8) | static_cast<unsigned int>(bytes[3]);
}

// The index buffer holds 144 bytes per entry although an entry takes 12; the
// count it is sized by has been checked against the file size first.
const std::size_t kIndexBytesPerEntry = 144;

} // namespace

XYLCatalogReader::XYLCatalogReader(bool wholeFile)
    : m_wholeFile(wholeFile), m_open(false), m_status(NotOpened), m_errorNumber(0), m_count(0), m_textSize(0),
      m_index(nullptr), m_text(nullptr), m_buffer(nullptr), m_capacity(0) {}

XYLCatalogReader::~XYLCatalogReader() { close(); }

const char *XYLCatalogReader::describe(Status status) {
  switch (status) {
  case Ok:
    return "valid catalog";
  case NotOpened:
    return "cannot open the file";
  case ReadFailed:
    return "cannot read the file";
  case BadMagic:
    return "not a catalog (bad magic)";
  case Truncated:
    return "truncated (the file is shorter than its header, index and text area)";
  case UnsortedIndex:
    return "index not in strictly ascending order";
  }
  return "unknown";
}

void XYLCatalogReader::close() {
  m_file.close();
  XYLUtMemory::free(m_index);
  XYLUtMemory::free(m_text);
  XYLUtMemory::free(m_buffer);
  m_index = nullptr;
  m_text = nullptr;
  m_buffer = nullptr;
  m_capacity = 0;
  m_count = 0;
  m_textSize = 0;
  m_open = false;
}

bool XYLCatalogReader::open(const char *path) {
  close();
  m_errorNumber = 0;
  m_status = NotOpened;
  if (path == nullptr)
    return false;
  if (!load(path)) {
    close();
    return false;
  }
  m_status = Ok;
  m_open = true;
  return true;
}

bool XYLCatalogReader::readAt(unsigned long long position, void *target, std::size_t count) {
  if (m_file.seek(static_cast<long long>(position), XYLFmFileModes::seekBegin) < 0) {
    m_errorNumber = m_file.getLastErrorNumber();
    return false;
  }
  char *next = static_cast<char *>(target);
  while (count > 0) {
    const unsigned long piece = count > 0x40000000u ? 0x40000000ul : static_cast<unsigned long>(count);
    const long got = m_file.read(next, piece);
    if (got <= 0) {
      m_errorNumber = got < 0 ? m_file.getLastErrorNumber() : 0;
      return false;
    }
    next += got;
    count -= static_cast<std::size_t>(got);
  }
  return true;
}

bool XYLCatalogReader::load(const char *path) {
  if (!m_file.open(path, XYLFmFileModes::openExisting, 1)) {
    m_errorNumber = m_file.getLastErrorNumber();
    m_status = NotOpened;
    return false;
  }
  const long long fileSize = m_file.getLength();
  if (fileSize < 0) {
    m_errorNumber = m_file.getLastErrorNumber();
    m_status = ReadFailed;
    return false;
  }
  unsigned char header[HeaderSize];
  if (fileSize < HeaderSize) {
    // Too short for a header: a bad magic when the start already differs.
    const std::size_t have = static_cast<std::size_t>(fileSize);
    if (have > 0 && !readAt(0, header, have)) {
      m_status = ReadFailed;
      return false;
    }
    const std::size_t compare = have < 5 ? have : 5;
    m_status = std::memcmp(header, kMagic, compare) == 0 ? Truncated : BadMagic;
    return false;
  }
  if (!readAt(0, header, HeaderSize)) {
    m_status = ReadFailed;
    return false;
  }
  // "BMF1" as a zero-terminated text of at most 8 characters: the fifth
  // byte must be the zero, the three after it are free.
  if (std::strncmp(reinterpret_cast<const char *>(header), kMagic, 8) != 0) {
    m_status = BadMagic;
    return false;
  }
  const unsigned int count = wordAt(header + 8);
  const unsigned int textSize = wordAt(header + 12);
  const unsigned long long needed = HeaderSize + static_cast<unsigned long long>(count) * EntrySize + textSize;
  if (static_cast<unsigned long long>(fileSize) < needed) {
    m_status = Truncated;
    return false;
  }
  if (count > 0) {
    m_index = static_cast<unsigned char *>(XYLUtMemory::malloc(static_cast<std::size_t>(count) * kIndexBytesPerEntry));
    if (m_index == nullptr) {
      close();
      XYL_THROW(XYLOutOfMemoryError(0L, nullptr));
    }
    if (!readAt(HeaderSize, m_index, static_cast<std::size_t>(count) * EntrySize)) {
      m_status = ReadFailed;
      return false;
    }
    for (unsigned int i = 1; i < count; ++i) {
      if (wordAt(m_index + i * static_cast<std::size_t>(EntrySize)) <=
          wordAt(m_index + (i - 1) * static_cast<std::size_t>(EntrySize))) {
        m_status = UnsortedIndex;
        return false;
      }
    }
  }
  m_count = count;
  m_textSize = textSize;
  if (m_wholeFile) {
    if (textSize > 0) {
      m_text = static_cast<char *>(XYLUtMemory::malloc(textSize));
      if (m_text == nullptr) {
        close();
        XYL_THROW(XYLOutOfMemoryError(0L, nullptr));
      }
      if (!readAt(HeaderSize + static_cast<unsigned long long>(count) * EntrySize, m_text, textSize)) {
        m_status = ReadFailed;
        return false;
      }
    }
    m_file.close();
  }
  return true;
}

const char *XYLCatalogReader::textOf(const unsigned char *entry, std::size_t *length) {
  const unsigned int offset = wordAt(entry + 4);
  const unsigned int size = wordAt(entry + 8);
  // The text and its zero must lie inside the text area.
  if (size == 0 || offset > m_textSize || size > m_textSize - offset)
    return nullptr;
  const char *text;
  if (m_wholeFile) {
    text = m_text + offset;
  } else {
    if (m_capacity < size) {
      XYLUtMemory::free(m_buffer);
      m_buffer = nullptr;
      m_capacity = 0;
    }
    if (m_buffer == nullptr) {
      m_buffer = static_cast<char *>(XYLUtMemory::malloc(size));
      if (m_buffer == nullptr)
        XYL_THROW(XYLOutOfMemoryError(0L, nullptr));
      m_capacity = size;
    }
    if (!readAt(HeaderSize + static_cast<unsigned long long>(m_count) * EntrySize + offset, m_buffer, size))
      return nullptr;
    text = m_buffer;
  }
  const void *zero = std::memchr(text, 0, size);
  if (zero == nullptr)
    return nullptr;
  if (length != nullptr)
    *length = static_cast<std::size_t>(static_cast<const char *>(zero) - text);
  return text;
}

const char *XYLCatalogReader::lookup(unsigned int number, std::size_t *length) {
  if (!m_open)
    return nullptr;
  // Binary search over the entries, comparing numbers as unsigned values.
  unsigned int low = 0;
  unsigned int high = m_count;
  while (low < high) {
    const unsigned int middle = low + (high - low) / 2;
    const unsigned char *entry = m_index + static_cast<std::size_t>(middle) * EntrySize;
    const unsigned int found = wordAt(entry);
    if (found == number)
      return textOf(entry, length);
    if (found < number)
      low = middle + 1;
    else
      high = middle;
  }
  return nullptr;
}

const char *XYLCatalogReader::getEntry(unsigned int index, unsigned int *number, std::size_t *length) {
  if (!m_open || index >= m_count)
    return nullptr;
  const unsigned char *entry = m_index + static_cast<std::size_t>(index) * EntrySize;
  if (number != nullptr)
    *number = wordAt(entry);
  return textOf(entry, length);
}
