/* SPDX-License-Identifier: Apache-2.0
 * XYLByteBuffer.h - the library's growable, always NUL-terminated byte buffer.
 *
 * XYLByteBuffer is a string builder (stream-style operator<<, printf) and a
 * raw byte container in one. It may hold embedded zero bytes: the count
 * (pcount()), not the terminator, says how many bytes are in use; the byte
 * just after the content is always 0.
 *
 * Growth: the block is allocated in whole multiples of the block size, so the
 * capacity is always one less than a multiple of it (the last byte is the
 * terminator's). The buffer grows by as little as it needs, rounded up to the
 * block size, and never shrinks by itself; only assignment from a buffer with
 * a smaller capacity shrinks it. A small block size therefore means many
 * reallocations; choose a block size near the expected size of the content.
 *
 * Ownership: the buffer owns its block (C heap, through XYLUtMemory). str()
 * returns a writable pointer into that block, valid until the next operation
 * that may grow it. Arguments are copied; appending the buffer's own content
 * (operator<< of itself, or appendChars of a pointer into it) is safe. The
 * arguments of printf must not point into the buffer.
 *
 * Failure:
 *  - An allocation that fails throws XYLOutOfMemoryError. When reserve (or any
 *    operation growing through it) or assignment fails, the capacity has
 *    already been updated and the block is released and replaced by null: the
 *    old content is gone and every later operation that touches the block
 *    throws XYLAssertError "[XYLByteBuffer::<op>] The internal buffer is
 *    NULL.". Only assignment from a healthy buffer gives the object a block
 *    again; reserve on a lost block does nothing.
 *  - Content that would pass 4294967295 bytes (the count is 32-bit) throws
 *    XYLOutOfMemoryError and leaves the buffer unchanged.
 *
 * Thread safety: none. One buffer belongs to one thread at a time; distinct
 * buffers are independent.
 */
#ifndef XYLCORE_TYPES_XYLBYTEBUFFER_H
#define XYLCORE_TYPES_XYLBYTEBUFFER_H

#include <XYLCore/XYLExport.h>

class XYL_API XYLByteBuffer {
public:
  // The base of integer output.
  enum Radix { Decimal = 10, Hexadecimal = 16 };

  // Capacity is initialSize rounded up to the block size (block size 0 means
  // 8); the buffer starts empty. XYLByteBuffer(0, 0) has capacity 7 in an
  // allocation of 8 bytes. Throws XYLOutOfMemoryError.
  explicit XYLByteBuffer(unsigned initialSize = 0, unsigned blockSize = 1024);
  // Copies content, capacity, block size, printf buffer size and radix.
  // Throws XYLOutOfMemoryError, or XYLAssertError "[XYLByteBuffer copy
  // constructor] Invalid buffer allocation limit." for a corrupt source. A
  // source whose block was lost is copied as an empty buffer.
  XYLByteBuffer(const XYLByteBuffer &other);
  // Takes over the same five values as the copy constructor and reallocates
  // this block to the source's capacity (so it may shrink). Self-assignment
  // does nothing. Throws as the copy constructor ("[XYLByteBuffer assignment
  // operator] Invalid buffer allocation limit.").
  XYLByteBuffer &operator=(const XYLByteBuffer &other);
  virtual ~XYLByteBuffer();

  // Makes the capacity at least n (rounded up to the block size); never
  // shrinks. Throws XYLOutOfMemoryError (the block is then lost, see above).
  void reserve(unsigned n);
  // Sets the count to n if n fits the capacity; a larger n is ignored. In
  // both cases the byte at the count becomes 0.
  void setLength(unsigned n);
  // Empties the buffer.
  void reset();
  // Removes n bytes from the front; n beyond the count empties the buffer.
  // Returns the new count.
  unsigned chop(unsigned n);
  // Remove leading / trailing / both white space (isspace on each byte); an
  // embedded zero byte is not white space and stops the scan. Return the new
  // count.
  unsigned trimFront();
  unsigned trimBack();
  unsigned trim();

  // Appends n bytes from p (zero bytes included); n = 0 does nothing and p
  // is not read.
  void appendChars(const char *p, unsigned n);
  // A null text appends "(null)".
  XYLByteBuffer &operator<<(const char *s);
  // Appends one byte, a zero byte too.
  XYLByteBuffer &operator<<(char c);
  // Integers in the current radix: decimal with a leading '-' for negative
  // values, or lower-case hexadecimal without a prefix. A negative value in
  // hexadecimal is written as its 32-bit two's complement (-1 gives
  // "ffffffff") when it fits 32 bits, as its 64-bit one otherwise.
  XYLByteBuffer &operator<<(int value);
  XYLByteBuffer &operator<<(long value);
  XYLByteBuffer &operator<<(unsigned int value);
  XYLByteBuffer &operator<<(unsigned long value);
  // Appends the other buffer's content, zero bytes included.
  XYLByteBuffer &operator<<(const XYLByteBuffer &other);

  // Formats with the C library's printf rules after the content. The first
  // attempt reserves the printf buffer size; each further attempt reserves
  // one more block, until the output fits. Returns the number of characters
  // added (without the terminator), or -1 (nothing added) when the C library
  // reports a formatting error.
  int printf(const char *format, ...) __attribute__((format(printf, 2, 3)));

  // The block (writable); null only after a lost block.
  char *str() const { return m_pBuffer; }
  // The number of bytes in use.
  unsigned pcount() const { return m_iCount; }

  // Non-zero selects hexadecimal, zero decimal. Returns the previous radix.
  Radix setHexRadix(int flag);
  // The first trial size of printf (default 4096; not validated). Returns
  // the previous size.
  unsigned setPrintfBufferSize(unsigned size);
  unsigned getPrintfBufferSize() const { return m_iPrintfBufferSize; }

protected:
  // ((block + n) / block) * block - 1 in unsigned 32-bit arithmetic: the
  // capacity that holds n bytes. Throws XYLAssertError if the block size is 0.
  unsigned roundUpToBlockSizeMultiple(unsigned n);

  char *m_pBuffer;
  unsigned m_iCount;
  unsigned m_iAllocLimit;
  unsigned m_iBlockSize;
  unsigned m_iPrintfBufferSize;
  Radix m_radix;

private:
  void appendDigits(const char *digits, unsigned n);
  void copyValuesFrom(const XYLByteBuffer &other);
};

#endif // XYLCORE_TYPES_XYLBYTEBUFFER_H
