/* SPDX-License-Identifier: Apache-2.0
 * i18n_string.h - I18NString, the library's Unicode string, with an ASCII
 * fast path.
 *
 * A string whose content is pure 7-bit ASCII is kept as a plain
 * NUL-terminated byte buffer (ASCII mode) and only turned into an ICU
 * UnicodeString (Unicode mode) when an operation needs full Unicode: a
 * non-ASCII input, normalisation, an external buffer, a needle that cannot
 * occur in ASCII text. Keys, identifiers and English text therefore never
 * pay for UTF-16 storage or ICU calls; a default-constructed string
 * allocates nothing. While the process-wide force-Unicode flag is set
 * (setForceUnicodeString) every ASCII test answers false and every string
 * with content goes straight to Unicode mode.
 *
 * Offsets (I18NStringOffset) are signed UTF-16 code-unit offsets of the
 * Unicode form (in ASCII mode byte, unit and code point offsets coincide);
 * -1 means "not found". Lengths (length, nCodePoints) count code points: a
 * lead surrogate followed by a trail surrogate counts once, an unpaired
 * surrogate counts once. size() is the byte size of the NUL-terminated UTF-16
 * form (0 for an empty string). Code points travel as unsigned int (UTF-32),
 * arrays of them NUL-terminated; UTF-16 as unsigned short in platform byte
 * order; bytes as const char* with an encoding name or an I18NConverter (a
 * null or empty name means "UTF8"; plain const char* arguments are in the
 * platform default encoding).
 *
 * Ownership: the string owns its ASCII buffer, its Unicode form and the byte
 * forms cached by c_str (valid until the next change or the destruction of
 * the string; never free them). Buffers returned by toBytes belong to the
 * caller: free them with freeBuffer (or I18NFreeBuffer) given the same
 * allocator callback. A buffer given to attach/_attach stays the caller's.
 * When an allocator callback is given to a constructor, the ASCII buffer,
 * the Unicode form object and the cached byte forms are obtained through it.
 *
 * Thread safety: distinct strings are independent. Several threads may call
 * const operations on one string at the same time: the lazy work done inside
 * them (creating the Unicode form, caching byte forms) is serialised by a
 * table of 64 critical sections shared by all strings, chosen by the
 * object's address (getIndexFromPtr). Writers need external
 * synchronisation. The force-Unicode flag is process-wide and meant to be
 * set once at start-up.
 *
 * Throws: XYLOutOfMemoryError "The specified allocator callback failed to
 * allocate memory." (a callback returned null or reported an error; code
 * -10 when it reported a negative size, else -1) or
 * "malloc failed to allocate memory." (C heap); I18NRuntimeError -2
 * "An error occured during string normalization." (normalisation), -7
 * "Cannot resize a static external buffer.", -7 "Resources access error,
 * could not find the alias for the platform default encoding name.", -3
 * "The specified encoding is not valid: ..." for an unknown encoding name
 * (from I18NConverter), the converter's code (-7) with "The text could not
 * be converted." when the converter's unconvertible-sequence mode rejects a
 * sequence, -7 when ICU cannot compile or run a LIKE pattern;
 * XYLAssertError for the documented assertions. Raise sites record the file
 * "i18n/cpp/i18n_string" (the iterator value's: "i18n/cpp/i18n_stringiteratorvalue").
 *
 * Complexity: ASCII construction is one pass that copies and checks; length,
 * empty, size are O(1) in ASCII mode and O(n) in Unicode mode (code points
 * are counted); LIKE matching is bounded by (text length) x (pattern length).
 */
#ifndef XYLCORE_I18N_CPP_I18N_STRING_H
#define XYLCORE_I18N_CPP_I18N_STRING_H

#include <XYLCore/XYLExport.h>
#include <XYLCore/i18n/cpp/i18n_types.h>

#include <cstdint>
#include <iosfwd>
#include <unicode/uversion.h>

U_NAMESPACE_BEGIN
class UnicodeString;
class RegexPattern;
U_NAMESPACE_END

// The ICU namespace as the library's interfaces name it.
#define I18N_ICU_NAMESPACE icu

class I18NConverter;
class I18NString;
class I18NStringIterator;
class I18NStringIteratorValue;
class XYLThreadCriticalSection;

// Normalisation forms; entry 0 is the default form (canonical composition).
enum I18NNormalizationForms {
  I18N_NORMALIZATION_DEFAULT = 0,
  I18N_NORMALIZATION_NFC = 1,
  I18N_NORMALIZATION_NFD = 2,
  I18N_NORMALIZATION_NFKC = 3,
  I18N_NORMALIZATION_NFKD = 4
};

// Result of moving between plain UTF-16 and the external-buffer form (on this
// platform both are NUL-terminated UTF-16 in platform byte order).
enum I18NTransformationResult {
  I18N_TRANSFORMATION_FAILED = -1, // no memory for the copy; the out pointer is null
  I18N_TRANSFORMATION_ALIASED = 0, // the out pointer is the input pointer
  I18N_TRANSFORMATION_COPIED = 1   // the out pointer is a C-heap copy: free with I18NFreeBuffer
};

// A compiled SQL LIKE pattern (an ICU regular expression); made by
// I18NString::getPatternCode, freed by I18NString::deletePatternCode.
typedef I18N_ICU_NAMESPACE::RegexPattern *I18NPatternCode;

// A sink for toBytes: receives the converted bytes in one or more pieces.
class XYL_API I18NByteWriter {
public:
  virtual ~I18NByteWriter();
  // Takes `length` bytes; returns 0 to go on, any other value to stop (the
  // toBytes call then reports -7).
  virtual int write(const char *bytes, int length) = 0;
};

class XYL_API I18NString {
public:
  // ---- Construction -------------------------------------------------------
  // Every constructor takes, last, an optional allocator callback and its
  // context (null: the C heap).

  // Empty, ASCII mode, nothing allocated.
  I18NString();
  // Copies whichever form is authoritative, the flags and the allocator (the
  // given allocator instead, when one is given). An attached external buffer
  // is not shared: the copy keeps its UTF-16 in its own Unicode form.
  I18NString(const I18NString &other, I18N_STRINGBUFFER_ALLOCATOR_CALLBACK allocator = nullptr,
             void *context = nullptr);
  // Takes the other's buffers; the other is left empty.
  I18NString(I18NString &&other) noexcept;
  // Empty; buffers are obtained through the allocator.
  explicit I18NString(I18N_STRINGBUFFER_ALLOCATOR_CALLBACK allocator, void *context = nullptr);
  // Empty with room reserved for `capacity` characters (negative: none).
  explicit I18NString(int capacity, I18N_STRINGBUFFER_ALLOCATOR_CALLBACK allocator = nullptr, void *context = nullptr);
  // `count` copies of one code point (count < 1: empty).
  I18NString(unsigned int codePoint, int count, I18N_STRINGBUFFER_ALLOCATOR_CALLBACK allocator = nullptr,
             void *context = nullptr);
  // The same with room reserved for `initialSize` characters.
  I18NString(int initialSize, unsigned int codePoint, int count,
             I18N_STRINGBUFFER_ALLOCATOR_CALLBACK allocator = nullptr, void *context = nullptr);
  // From a NUL-terminated UTF-32 array (null: empty). Values above 0x10FFFF
  // are skipped; surrogate values are kept as unpaired surrogates.
  explicit I18NString(const unsigned int *codePoints, I18N_STRINGBUFFER_ALLOCATOR_CALLBACK allocator = nullptr,
                      void *context = nullptr);
  // From bytes in the named encoding; length -1 means NUL-terminated (a
  // length below -1 fails the assertion of createAsciiBuffer). ASCII bytes in
  // an ASCII-compatible encoding are copied without any converter; other
  // bytes go through I18NConverter (valid UTF-8 directly through ICU's
  // UTF-8 decoder), so that its unconvertible-sequence modes apply.
  I18NString(const char *bytes, const char *encoding, int length = -1,
             I18N_STRINGBUFFER_ALLOCATOR_CALLBACK allocator = nullptr, void *context = nullptr);
  // The same through an existing converter (its modes apply; its state is
  // reset first).
  I18NString(const char *bytes, const I18NConverter &converter, int length = -1,
             I18N_STRINGBUFFER_ALLOCATOR_CALLBACK allocator = nullptr, void *context = nullptr);
  // From UTF-16 in platform byte order; byteLength -1 means NUL-terminated.
  I18NString(const void *utf16, int byteLength, I18N_STRINGBUFFER_ALLOCATOR_CALLBACK allocator = nullptr,
             void *context = nullptr);
  // From an ICU string (copied).
  explicit I18NString(const I18N_ICU_NAMESPACE::UnicodeString &text,
                      I18N_STRINGBUFFER_ALLOCATOR_CALLBACK allocator = nullptr, void *context = nullptr);
  // Frees both forms and the cached byte forms; an attached external buffer
  // is the caller's and is left alone. Not virtual: the class is not meant
  // to be derived from, and a vtable would cost every string a pointer.
  ~I18NString();

  // ---- Assignment and append ----------------------------------------------
  I18NString &operator=(const I18NString &other);
  I18NString &operator=(I18NString &&other);
  I18NString &operator=(const char *bytes); // platform default encoding
  I18NString &operator=(const unsigned int *codePoints);
  I18NString &operator=(unsigned int codePoint);
  I18NString &operator=(const void *utf16); // NUL-terminated UTF-16
  // Replaces the content by UTF-16 (byteLength -1: NUL-terminated).
  I18NString &setTo(const void *utf16, int byteLength);
  I18NString &setTo(const I18N_ICU_NAMESPACE::UnicodeString &text);
  I18NString &operator+=(const I18NString &other);
  I18NString &operator+=(const char *bytes); // platform default encoding
  I18NString &operator+=(const unsigned int *codePoints);
  I18NString &operator+=(unsigned int codePoint);

  // ---- Comparison (code-unit order; linguistic order is the collator's) ---
  bool operator==(const I18NString &other) const { return compare(other) == 0; }
  bool operator!=(const I18NString &other) const { return compare(other) != 0; }
  bool operator==(const char *bytes) const; // platform default encoding
  bool operator!=(const char *bytes) const { return !(*this == bytes); }
  bool operator<(const I18NString &other) const { return compare(other) < 0; }
  bool operator<=(const I18NString &other) const { return compare(other) <= 0; }
  bool operator>(const I18NString &other) const { return compare(other) > 0; }
  bool operator>=(const I18NString &other) const { return compare(other) >= 0; }
  // Below, equal to or above 0 as this string orders before, with or after
  // the other by UTF-16 code units.
  int compare(const I18NString &other) const;

  // ---- Queries -------------------------------------------------------------
  bool empty() const {
    const I18N_ICU_NAMESPACE::UnicodeString *form = __atomic_load_n(&m_pUnicodeString, __ATOMIC_ACQUIRE);
    return form == nullptr ? m_pAsciiBuffer[0] == '\0' : unicodeEmpty();
  }
  // Code points (see the banner).
  int length() const {
    const I18N_ICU_NAMESPACE::UnicodeString *form = __atomic_load_n(&m_pUnicodeString, __ATOMIC_ACQUIRE);
    return form == nullptr ? m_asciiBufLength : unicodeLength();
  }
  int nCodePoints() const { return length(); }
  static int length(const I18NString &text) { return text.length(); }
  static int length(const unsigned int *codePoints);
  static int length(unsigned int codePoint);
  // Bytes of the NUL-terminated UTF-16 form: 0 when empty, else units*2+2.
  int size() const;
  static int size(const I18NString &text) { return text.size(); }
  static int size(const unsigned int *codePoints);
  static int size(unsigned int codePoint);
  // Always 0: display width is not computed by this class.
  int displaySize() const { return 0; }
  // UTF-16 code units of the content (the offset space).
  int unitLength() const {
    const I18N_ICU_NAMESPACE::UnicodeString *form = __atomic_load_n(&m_pUnicodeString, __ATOMIC_ACQUIRE);
    return form == nullptr ? m_asciiBufLength : unicodeUnits();
  }

  // ASCII test of bytes: false while the force-Unicode flag is set or when
  // the encoding is not one where 0x00..0x7F mean ASCII (UTF-8 and "ascii",
  // ISO-8859-x, windows-1252); a null pointer or a length below 1 is ASCII;
  // length -1 scans to the NUL.
  static bool isASCII(const char *bytes, const char *encoding, int length);
  // ASCII test of UTF-16: units are read to a NUL or byteLength/2 units;
  // `count` receives the number read, or -1 when a unit above 127 was found.
  static bool isASCII(const void *utf16, int byteLength, int &count);
  static void setForceUnicodeString(bool force);
  static bool isForceUnicodeString();
  // True while the Unicode form is authoritative (introspection for tests
  // and callers that want to know whether ICU is involved).
  bool isUnicodeMode() const;
  // True while the content is known to be in the default normalisation form.
  bool isNormalized() const;

  I18NStringIterator begin() const;
  I18NStringIterator end() const;

  // One code point forward or backward: -1 when there is none (stepping
  // from the last character gives the length itself).
  I18NStringOffset incrementOffset(I18NStringOffset offset) const;
  I18NStringOffset decrementOffset(I18NStringOffset offset) const;
  // The code point at a code-unit offset (a lone surrogate as itself), or
  // 0xFFFF when the offset is outside the string.
  unsigned int codePointAt(I18NStringOffset offset) const;

  // ---- Modification --------------------------------------------------------
  I18NString &append(const I18NString &text);
  I18NString &append(const unsigned int *codePoints);
  I18NString &append(unsigned int codePoint, int count = 1);
  I18NString &append(const char *bytes); // platform default encoding
  I18NString &insert(I18NStringOffset offset, const I18NString &text);
  I18NString &insert(I18NStringOffset offset, const unsigned int *codePoints);
  I18NString &insert(I18NStringOffset offset, unsigned int codePoint, int count = 1);
  // Replaces `count` code units at `offset` (-1: to the end).
  I18NString &replace(I18NStringOffset offset, int count, const I18NString &text);
  I18NString &replace(I18NStringOffset offset, int count, const unsigned int *codePoints);
  I18NString &replace(I18NStringOffset offset, int count, unsigned int codePoint, int repeat = 1);
  // Removes `count` code units at `offset`. Unicode mode: count -1 means to
  // the end. ASCII mode: an offset beyond the length does nothing, a negative
  // offset counts as 0, a negative count truncates at the offset, a count
  // beyond the end is clamped.
  I18NString &erase(I18NStringOffset offset = 0, int count = -1);
  // Clears the content (the string returns to ASCII mode unless an external
  // buffer is attached).
  void remove();
  // Releases both forms and the cached byte forms; the string is empty.
  void destroy();
  // Strip repetitions of one code point at both ends / the start / the end.
  I18NString &trim(unsigned int codePoint = 0x20);
  I18NString &trimLeading(unsigned int codePoint = 0x20);
  I18NString &trimTrailing(unsigned int codePoint = 0x20);
  // Makes the string `newLength` code points long: cuts after that many, or
  // pads with `codePoint`. A negative length empties it.
  I18NString &resize(int newLength, unsigned int codePoint);
  // Brings the content into `form`; see the class documentation in the
  // source. Throws I18NRuntimeError -2 on an ICU failure.
  void normalize(I18NNormalizationForms form = I18N_NORMALIZATION_DEFAULT);
  // false: normalize only marks the string as normalised (flag 0x10).
  void useNormalization(bool on);
  // true: normalize skips the Japanese compatibility transliteration.
  void skipCompatibilityTransliteration(bool skip);
  // `count` code units from `offset` (count -1: to the end), clamped to the
  // string; a new string with this one's allocator.
  I18NString substring(I18NStringOffset offset, int count = -1) const;
  I18NString substr(I18NStringOffset offset, int count = -1) const { return substring(offset, count); }

  // ---- Search ----------------------------------------------------------------
  // All return a code-unit offset or -1. Rules shared by the families: an
  // empty string, an empty needle or the code point 0 gives -1; a negative
  // start counts as 0; a start at or beyond the length (in code units) gives
  // -1. A needle holding a code point of 0x80 or more moves an ASCII-mode
  // string to Unicode mode first (a const operation; see Thread safety). In
  // Unicode mode find and rfind bring the needle into the string's
  // normalisation form first; the -Of families treat the needle as a set of
  // code points. The backward families without a start search from the end.
  I18NStringOffset find(const I18NString &needle, I18NStringOffset start = 0) const;
  I18NStringOffset find(const unsigned int *needle, I18NStringOffset start = 0) const;
  I18NStringOffset find(unsigned int codePoint, I18NStringOffset start = 0) const;
  // Last occurrence beginning at or before `start`.
  I18NStringOffset rfind(const I18NString &needle) const;
  I18NStringOffset rfind(const unsigned int *needle) const;
  I18NStringOffset rfind(unsigned int codePoint) const;
  I18NStringOffset rfind(const I18NString &needle, I18NStringOffset start) const;
  I18NStringOffset rfind(const unsigned int *needle, I18NStringOffset start) const;
  I18NStringOffset rfind(unsigned int codePoint, I18NStringOffset start) const;
  I18NStringOffset findFirstOf(const I18NString &set, I18NStringOffset start = 0) const;
  I18NStringOffset findFirstOf(const unsigned int *set, I18NStringOffset start = 0) const;
  I18NStringOffset findFirstOf(unsigned int codePoint, I18NStringOffset start = 0) const;
  I18NStringOffset findFirstNotOf(const I18NString &set, I18NStringOffset start = 0) const;
  I18NStringOffset findFirstNotOf(const unsigned int *set, I18NStringOffset start = 0) const;
  I18NStringOffset findFirstNotOf(unsigned int codePoint, I18NStringOffset start = 0) const;
  I18NStringOffset findLastOf(const I18NString &set) const;
  I18NStringOffset findLastOf(const unsigned int *set) const;
  I18NStringOffset findLastOf(unsigned int codePoint) const;
  I18NStringOffset findLastOf(const I18NString &set, I18NStringOffset start) const;
  I18NStringOffset findLastOf(const unsigned int *set, I18NStringOffset start) const;
  I18NStringOffset findLastOf(unsigned int codePoint, I18NStringOffset start) const;
  I18NStringOffset findLastNotOf(const I18NString &set) const;
  I18NStringOffset findLastNotOf(const unsigned int *set) const;
  I18NStringOffset findLastNotOf(unsigned int codePoint) const;
  I18NStringOffset findLastNotOf(const I18NString &set, I18NStringOffset start) const;
  I18NStringOffset findLastNotOf(const unsigned int *set, I18NStringOffset start) const;
  I18NStringOffset findLastNotOf(unsigned int codePoint, I18NStringOffset start) const;

  // ---- SQL LIKE patterns --------------------------------------------------
  // '%' matches any run of characters (also none), '_' exactly one code
  // point; a character preceded by the escape code point (0: none) is taken
  // literally, and an escape at the very end stands for itself. Matching is
  // case-sensitive and code point by code point. Throws I18NRuntimeError -7
  // when ICU cannot compile or run the expression.
  static I18NPatternCode getPatternCode(const I18NString &pattern, unsigned int escape = 0);
  // Frees a compiled pattern and nulls the handle (null: nothing happens).
  static void deletePatternCode(I18NPatternCode &code);
  // Whether the whole string matches.
  bool matchLike(const I18NString &pattern, unsigned int escape = 0) const;
  bool matchLike(I18NPatternCode code) const;
  // The first (leftmost) substring that matches the pattern, or an empty
  // string when none does.
  I18NString substringLike(const I18NString &pattern, unsigned int escape = 0) const;
  I18NString substringLike(I18NPatternCode code) const;

  // ---- Byte output ---------------------------------------------------------
  // The content as NUL-terminated bytes in `encoding` (null or empty:
  // "UTF8"), cached in the string until the next change; the caller does not
  // free it. `length` (optional) receives the byte count without terminator.
  // Throws I18NRuntimeError -3 (unknown encoding) or -7 (conversion failed).
  const char *c_str(const char *encoding = nullptr, int *length = nullptr,
                    I18N_STRINGBUFFER_ALLOCATOR_CALLBACK allocator = nullptr, void *context = nullptr) const;
  const char *c_str(const I18NConverter &converter, int *length = nullptr,
                    I18N_STRINGBUFFER_ALLOCATOR_CALLBACK allocator = nullptr, void *context = nullptr) const;
  // A new NUL-terminated buffer (through the allocator, else the C heap)
  // holding the content in the encoding; its byte count without terminator
  // goes to `length` (optional). Free it with freeBuffer and the same
  // allocator. Throws as c_str.
  char *toBytes(const char *encoding, int *length = nullptr, I18N_STRINGBUFFER_ALLOCATOR_CALLBACK allocator = nullptr,
                void *context = nullptr) const;
  char *toBytes(const I18NConverter &converter, int *length = nullptr,
                I18N_STRINGBUFFER_ALLOCATOR_CALLBACK allocator = nullptr, void *context = nullptr) const;
  // The same, storing the buffer into `buffer` and returning the length.
  int toBytes(char *&buffer, const char *encoding, I18N_STRINGBUFFER_ALLOCATOR_CALLBACK allocator = nullptr,
              void *context = nullptr) const;
  int toBytes(char *&buffer, const I18NConverter &converter, I18N_STRINGBUFFER_ALLOCATOR_CALLBACK allocator = nullptr,
              void *context = nullptr) const;
  // The bytes (without terminator) handed to a writer in pieces; returns the
  // byte count, or -7 when the writer stops.
  int toBytes(I18NByteWriter &writer, const char *encoding) const;
  int toBytes(I18NByteWriter &writer, const I18NConverter &converter) const;
  // Frees a toBytes buffer (through the allocator with size 0, else the C
  // heap) and nulls the pointer.
  static void freeBuffer(char *&buffer, I18N_STRINGBUFFER_ALLOCATOR_CALLBACK allocator = nullptr,
                         void *context = nullptr);

  // ---- UTF-16 access and external buffers ----------------------------------
  // The NUL-terminated UTF-16 form (moves the string to Unicode mode); valid
  // until the next change.
  const unsigned short *getUTF16Buffer() const;
  // The Unicode form itself (moves the string to Unicode mode).
  const I18N_ICU_NAMESPACE::UnicodeString &getUnicodeString() const;
  // Makes the string's UTF-16 live in the caller's buffer of `byteSize`
  // bytes, adopting the NUL-terminated UTF-16 text it holds. Without an
  // allocator the buffer is static (flag 0x04): a change that does not fit
  // throws I18NRuntimeError -7 "Cannot resize a static external buffer.";
  // with one, the buffer is regrown through it (the new block is then the
  // external buffer).
  void attach(void *buffer, int byteSize);
  // The same for a UTF-16 buffer of `capacity` units already holding
  // `length` units (length -1: NUL-terminated).
  void _attach(unsigned short *buffer, int capacity, int length);
  // The attached buffer (NUL-terminated UTF-16), or null when none is.
  void *getExternalBuffer() const;
  // Copies the content as NUL-terminated UTF-16: 0 when it all fitted, -9
  // when the buffer was too small (the copy is truncated but terminated; a
  // buffer of 1 to 3 bytes is zero-filled, one of 0 bytes untouched).
  int copyToExternalBuffer(void *buffer, int byteSize) const;
  // Re-synchronises an attached buffer after a change (see attach).
  void resizeExternalBuffer();

  // ---- The lock table --------------------------------------------------------
  // (address >> 3) & 63: the index of the critical section guarding the lazy
  // work of const operations on the object at `p`.
  static int getIndexFromPtr(const void *p) {
    return static_cast<int>((reinterpret_cast<std::uintptr_t>(p) >> 3) & 63);
  }
  static XYLThreadCriticalSection &getLockFromPtr(const void *p);

  // Flag bits.
  enum {
    FLAG_CHANGED = 0x01,
    FLAG_NORMALIZED = 0x02,
    FLAG_STATIC_EXTERNAL_BUFFER = 0x04,
    FLAG_SKIP_COMPATIBILITY = 0x08,
    FLAG_NORMALIZATION_OFF = 0x10
  };
  unsigned char getFlags() const { return m_flags; }
  // Bytes of the inline ASCII buffer (terminator included).
  enum { INLINE_ASCII_SIZE = 23 };
  void setChangedFlag(bool changed);

private:
  friend class I18NStringIterator;
  friend class I18NStringIteratorValue;
  friend struct I18NStringAccess;

  struct ByteForm;

  // The Unicode-mode halves of the inline queries.
  bool unicodeEmpty() const;
  int unicodeLength() const;
  int unicodeUnits() const;

  void initMembers(I18N_STRINGBUFFER_ALLOCATOR_CALLBACK allocator, void *context);
  // Memory through the allocator callback or the C heap.
  void *allocateBlock(void *block, int size) const;
  void freeBlock(void *block) const;
  void createAsciiBuffer(int newSize);
  void reserveAscii(int characters);
  void setInternalAsciiBuffer(const unsigned short *units, int count, int bufferSize);
  void assignAscii(const char *bytes, int length);
  void assignBytes(const char *bytes, int length, const char *encoding, I18NConverter *converter);
  void createFromAscii(const char *bytes, int length, const char *encoding, I18NConverter *converter);
  void assignUTF16(const unsigned short *units, int count);
  void assignUnits(const char16_t *units, int count);
  void assignCodePoints(const unsigned int *codePoints);
  void assignRepeat(unsigned int codePoint, int count);
  // Unicode form handling.
  I18N_ICU_NAMESPACE::UnicodeString *unicodeForm() const {
    return __atomic_load_n(&m_pUnicodeString, __ATOMIC_ACQUIRE);
  }
  void create();
  void setFromAscii();
  I18N_ICU_NAMESPACE::UnicodeString &forceUnicode() const;
  I18N_ICU_NAMESPACE::UnicodeString &unicodeForWrite();
  void releaseUnicode();
  void releaseAscii();
  void releaseByteForms() const;
  void afterUnicodeChange();
  void refreshUTF16Buffer();
  void copyFrom(const I18NString &other);
  void moveFrom(I18NString &other) noexcept;
  // Helpers for the search families and byte output.
  I18N_ICU_NAMESPACE::UnicodeString normalizeParameter(const I18N_ICU_NAMESPACE::UnicodeString &needle) const;
  I18NStringOffset findUnits(const unsigned short *needle, int needleLength, bool needleAscii, I18NStringOffset start,
                             bool backward) const;
  I18NStringOffset findSet(const unsigned int *set, int setLength, I18NStringOffset start, bool backward,
                           bool inSet) const;
  char *convertToBytes(const char *encoding, I18NConverter *converter, int *length,
                       I18N_STRINGBUFFER_ALLOCATOR_CALLBACK allocator, void *context) const;
  const char *cachedBytes(const char *encoding, I18NConverter *converter, int *length,
                          I18N_STRINGBUFFER_ALLOCATOR_CALLBACK allocator, void *context) const;
  void attachExternal(unsigned short *buffer, int capacityUnits, int lengthUnits, int byteSize);

  void *m_pExternalBuffer;
  I18N_ICU_NAMESPACE::UnicodeString *m_pUnicodeString;
  I18N_STRINGBUFFER_ALLOCATOR_CALLBACK m_pAllocator;
  void *m_pAllocatorContext;
  mutable ByteForm *m_pByteForms; // byte forms cached by c_str (under the stripe lock)
  int m_externalBufferSize;       // bytes of the attached buffer
  const unsigned short *m_pUTF16Buffer;
  int m_normalizationForm; // last form given to normalize, plus one; 0: none
  unsigned char m_flags;
  // The inline ASCII buffer: empty (a NUL byte) at construction, and home to
  // any ASCII text of up to INLINE_ASCII_SIZE - 1 characters, so that short
  // keys and identifiers need no allocation at all.
  char m_inlineAscii[INLINE_ASCII_SIZE];
  char *m_pAsciiBuffer;
  int m_asciiBufCapacity;
  int m_asciiBufLength;
};

// Concatenation into a new string (the left operand's allocator).
XYL_API I18NString operator+(const I18NString &left, const I18NString &right);
XYL_API I18NString operator+(const I18NString &left, const unsigned int *codePoints);
XYL_API I18NString operator+(const I18NString &left, unsigned int codePoint);
// Writes the string in the platform default encoding.
XYL_API std::ostream &operator<<(std::ostream &out, const I18NString &text);
// Reads one whitespace-delimited word (as for std::string) and converts it
// from the platform default encoding.
XYL_API std::istream &operator>>(std::istream &in, I18NString &text);

// A reference to the code point at an offset of a string.
class XYL_API I18NStringIteratorValue {
public:
  // Deprecated: always fails its named assertion.
  I18NStringIteratorValue(I18N_ICU_NAMESPACE::UnicodeString *pString, I18NStringOffset offset);
  I18NStringIteratorValue(const I18NString *pString, I18NStringOffset offset);
  // The code point. Reading past the end of an ASCII-mode string fails
  // "XYL_ASSERT(m_offset < m_pI18NString->m_asciiBufLength);".
  operator unsigned int() const;
  bool operator==(unsigned int codePoint) const { return static_cast<unsigned int>(*this) == codePoint; }
  bool operator!=(unsigned int codePoint) const { return static_cast<unsigned int>(*this) != codePoint; }
  // Replaces the character at the offset (a surrogate pair as a whole).
  I18NStringIteratorValue &operator=(unsigned int codePoint);
  I18NStringIteratorValue &operator=(const I18NStringIteratorValue &other);
  I18NStringIteratorValue(const I18NStringIteratorValue &other) = default;

private:
  const I18NString *m_pI18NString;
  I18NStringOffset m_offset;
};

// Walks a string by code points. Positioning an ASCII-mode string's iterator
// past its end fails "XYL_ASSERT(m_offset <= m_pI18NString->m_asciiBufLength);".
// Stepping forward from the end stays at the end; stepping back from 0 stays
// at 0. The string must outlive the iterator.
class XYL_API I18NStringIterator {
public:
  I18NStringIterator();
  I18NStringIterator(const I18NString &text, I18NStringOffset offset = 0);
  I18NStringIterator(const I18NStringIterator &other) = default;
  I18NStringIterator &operator=(const I18NStringIterator &other) = default;

  I18NStringIterator &operator++();
  I18NStringIterator operator++(int);
  I18NStringIterator &operator--();
  I18NStringIterator operator--(int);
  // Moves by n code points (negative: backward).
  I18NStringIterator &operator+=(int n);
  I18NStringIterator operator+(int n) const;
  // Code points from `other` to this iterator (negative when this one is
  // before it); both must walk the same string.
  int operator-(const I18NStringIterator &other) const;
  bool operator==(const I18NStringIterator &other) const {
    return m_pI18NString == other.m_pI18NString && m_offset == other.m_offset;
  }
  bool operator!=(const I18NStringIterator &other) const { return !(*this == other); }
  I18NStringIteratorValue operator*() const;
  I18NStringOffset getOffset() const { return m_offset; }

private:
  void checkPosition() const;
  const I18NString *m_pI18NString;
  I18NStringOffset m_offset;
};

// ---- Free functions --------------------------------------------------------

// Character classes by ICU's character properties.
XYL_API bool I18NCodePointIsDigit(unsigned int codePoint);
XYL_API bool I18NCodePointIsLetter(unsigned int codePoint);
XYL_API bool I18NCodePointIsSpace(unsigned int codePoint);
XYL_API bool I18NCodePointIsWhitespace(unsigned int codePoint);
XYL_API bool I18NCodePointIsPunctuation(unsigned int codePoint);
XYL_API bool I18NCodePointIsAlphanumeric(unsigned int codePoint);

// Bytes of a NUL-terminated UTF-16 buffer including the terminator (null: 0).
XYL_API int I18NExternalBufferNumBytes(const void *buffer);
// Code points in it (a surrogate pair counts once; null: 0).
XYL_API int I18NExternalBufferNumCodePoints(const void *buffer);
// Copies `source` into `target`, (re)allocated through the allocator (null:
// the C heap). Returns 0, -1 (no memory; target unchanged) or -10.
XYL_API I18NErrorCodes I18NExternalBufferCopy(void *&target, const void *source,
                                              I18N_STRINGBUFFER_ALLOCATOR_CALLBACK allocator = nullptr,
                                              void *context = nullptr);
// Appends `source` to `target` (null target: a copy), regrowing it through
// the allocator. Returns as I18NExternalBufferCopy.
XYL_API I18NErrorCodes I18NExternalBufferConcat(void *&target, const void *source,
                                                I18N_STRINGBUFFER_ALLOCATOR_CALLBACK allocator = nullptr,
                                                void *context = nullptr);
// Plain UTF-16 to the external-buffer form and back. With `copy` false the
// out pointer aliases the input; with true it is a C-heap copy.
XYL_API I18NTransformationResult I18NUTF16ToExternalBuffer(void *&out, const unsigned short *in, bool copy);
XYL_API I18NTransformationResult I18NExternalBufferToUTF16(unsigned short *&out, const void *in, bool copy);
// Frees a C-heap buffer from toBytes or the functions above and nulls the
// pointer. Always 0.
XYL_API I18NErrorCodes I18NFreeBuffer(char *&buffer);
XYL_API I18NErrorCodes I18NFreeBuffer(void *&buffer);
XYL_API I18NErrorCodes I18NFreeBuffer(unsigned short *&buffer);
// The library's allocator callback (see i18n_types.h for the contract).
XYL_API char *I18NDefaultStringBufferAllocator(void *context, char *buffer, int newSize, int *error);

// Decodes a URI-escaped byte string: %XX escapes become bytes (a '%' not
// followed by two hexadecimal digits stays as it is), the bytes are
// converted from the encoding, and hexadecimal Unicode escapes (\uXXXX,
// U+XXXX, &#xXXXX;) are turned into characters by ICU's "Hex-Any"
// transliterator. Throws I18NRuntimeError "Transliterator creation failed."
// (code: the ICU error) when it cannot be created, and as the converter does.
XYL_API I18NString I18NUriDecode(const char *text, const char *encoding);
XYL_API I18NString I18NUriDecode(const char *text, const I18NConverter &converter);

#endif // XYLCORE_I18N_CPP_I18N_STRING_H
