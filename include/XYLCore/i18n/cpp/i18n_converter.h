/* SPDX-License-Identifier: Apache-2.0
 * i18n_converter.h - code page converters: bytes in a named encoding to and
 * from UTF-16, with a choice of what happens to unconvertible sequences.
 *
 * I18NConverter wraps one ICU converter. It is opened by encoding name (a
 * null or empty name means the toolkit default "UTF8"); "UTF-16" and
 * "UTF-32" without a stated byte order mean the machine's own order and no
 * byte order mark. Once the layer is initialised (I18NInitialize), a
 * converter made by name takes a ready ICU converter from a pool kept per
 * encoding (a prototype and a few idle clones for each of the most recently
 * used encodings; aliases share one) and its destructor gives it back with
 * the default modes, so making and destroying one per request opens nothing
 * and allocates nothing in the steady state. I18NConverterUTF8,
 * I18NConverterUTF16 and I18NConverterPlatformDefault lend ready converters
 * from last-in-first-out pools of their own. UTF-8 converters decode and
 * encode through ICU's direct UTF-8 functions where the mode allows it,
 * with results identical to the general path.
 *
 * Unconvertible sequences. Each direction (input: bytes to Unicode; output:
 * Unicode to bytes) has a mode:
 *   0  escape: the data is written as an escape sequence (%XNN for bytes,
 *      %UXXXX for code points);
 *   1  replacement from the library's resources (the default): the
 *      replacement configured for this encoding and sequence is written; when
 *      none is configured the conversion fails;
 *   2  substitute: the encoding's substitution character (U+FFFD, or the
 *      code page's substitution byte);
 *   3  user-defined: the user callback of that direction supplies the
 *      replacement; without a callback, or when it reports an error or
 *      nothing, the conversion fails;
 *   4  stop: the conversion fails at the first unconvertible sequence.
 * A failed conversion is reported as -7 through the I18NErrorCodes argument.
 *
 * Lengths. The byte side is counted in bytes, the Unicode side in bytes of
 * UTF-16 (two per code unit). A source length of -1 means terminated by the
 * encoding's NUL (one unit of the minimum character size) or, for UTF-16,
 * by a NUL unit. Caller-buffer forms return the length of the whole result in
 * bytes without terminator and add a terminator when room remains; when the
 * result does not fit they fill what fits and report -9. Allocating forms
 * return a terminated buffer obtained through the allocator callback (null:
 * the C heap; free it with I18NConverter::freeBuffer) and its length.
 *
 * Ownership: the encoding name is copied. A converter owns its ICU
 * converter (and the clone memory it allocated).
 * Thread safety: an I18NConverter holds conversion state and belongs to one
 * thread at a time. The pools and the name tests may be used from any
 * thread. The prototypes and pools live from I18NInitialize to the last
 * I18NTerminate; converters lent by the helpers must be returned (their
 * helper destroyed) before that. A converter made by name may outlive
 * I18NTerminate (its ICU converter is closed when it is destroyed).
 * Throws: I18NRuntimeError -3 "The specified encoding is not valid: \"name\"."
 * (at most 60 bytes of the name) for an unknown encoding; I18NRuntimeError -7
 * when ICU fails to measure a clone or install a callback; I18NRuntimeError
 * "An error occured while allocating the converter object. ICU error code N"
 * when cloning fails; XYLOutOfMemoryError when memory runs out;
 * I18NRuntimeError -1 "Memory allocation failed." when an allocating form's
 * allocator fails. Conversion failures are not thrown: they are reported
 * through the I18NErrorCodes argument.
 */
#ifndef XYLCORE_I18N_CPP_I18N_CONVERTER_H
#define XYLCORE_I18N_CPP_I18N_CONVERTER_H

#include <XYLCore/XYLExport.h>
#include <XYLCore/i18n/cpp/i18n_types.h>

struct UConverter;
class I18NString;
class I18NLocale;

// The unconvertible-sequence modes (the same numbers for both directions).
enum I18NUnconvertibleSequenceMode {
  I18N_UNCONVERTIBLE_ESCAPE = 0,
  I18N_UNCONVERTIBLE_REPLACE = 1,
  I18N_UNCONVERTIBLE_SUBSTITUTE = 2,
  I18N_UNCONVERTIBLE_USER_DEFINED = 3,
  I18N_UNCONVERTIBLE_STOP = 4
};

namespace i18n_detail {
struct ConverterCallbackContext;
}

class XYL_API I18NConverter {
public:
  // Opens the converter for `encoding` (null or empty: "UTF8"). Clones a
  // prototype for UTF-8, UTF-16 and the platform default encoding while the
  // layer is initialised. Throws I18NRuntimeError -3 for an unknown name.
  explicit I18NConverter(const char *encoding);
  // Clones the other's ICU converter and copies its modes, callbacks, sizes
  // and name. The conversion state (a half-read sequence) is copied too.
  I18NConverter(const I18NConverter &other);
  I18NConverter &operator=(const I18NConverter &other);
  ~I18NConverter();

  // The encoding name as asked for ("UTF8" for a null or empty name).
  const char *getEncoding() const;
  // Clears the shift and partial-sequence state between unrelated
  // conversions.
  void reset();

  // ---- Bytes to Unicode -------------------------------------------------

  // Converts `source` (sourceLength bytes, -1: terminated) into `target`
  // (targetBytes bytes of UTF-16). Returns the bytes of the whole result
  // without terminator; a NUL unit follows when room remains. -9 when the
  // result does not fit, -7 when the conversion fails.
  int toUnicode(const char *source, int sourceLength, unsigned short *target, int targetBytes, I18NErrorCodes *error);
  // Stream form for chunked input: converts as much as fits, stores the
  // number of source bytes consumed and returns the bytes written (no
  // terminator). A full target is not an error: call again with the rest.
  // A sequence cut at the end of a chunk is kept in the converter until the
  // next call; pass flush = true with the last chunk. -7 on a conversion
  // failure (`consumed` then stops before the offending sequence's end).
  int toUnicodeStream(const char *source, int sourceLength, int *consumed, unsigned short *target, int targetBytes,
                      bool flush, I18NErrorCodes *error);
  // Allocating form: returns a NUL-terminated UTF-16 buffer from `allocator`
  // (null: the C heap) and its length in bytes (without terminator) in
  // *targetBytes; null when the conversion fails (error set).
  unsigned short *toUnicode(const char *source, int sourceLength, int *targetBytes,
                            I18N_STRINGBUFFER_ALLOCATOR_CALLBACK allocator, void *context, I18NErrorCodes *error);
  // Converts into an I18NString (its content is replaced).
  void toUnicode(const char *source, int sourceLength, I18NString &target, I18NErrorCodes *error);

  // ---- Unicode to bytes -------------------------------------------------

  // Converts `source` (sourceBytes bytes of UTF-16, -1: NUL-terminated) into
  // `target` (targetBytes bytes). Returns the bytes of the whole result
  // without terminator; the encoding's NUL follows when room remains.
  int fromUnicode(const unsigned short *source, int sourceBytes, char *target, int targetBytes, I18NErrorCodes *error);
  // Stream form; see toUnicodeStream. `consumed` counts source bytes.
  int fromUnicodeStream(const unsigned short *source, int sourceBytes, int *consumed, char *target, int targetBytes,
                        bool flush, I18NErrorCodes *error);
  // Allocating form: a buffer terminated with the encoding's NUL.
  char *fromUnicode(const unsigned short *source, int sourceBytes, int *targetBytes,
                    I18N_STRINGBUFFER_ALLOCATOR_CALLBACK allocator, void *context, I18NErrorCodes *error);
  // The text of an I18NString, into a caller buffer or an allocated one.
  int fromUnicode(const I18NString &source, char *target, int targetBytes, I18NErrorCodes *error);
  char *fromUnicode(const I18NString &source, int *targetBytes, I18N_STRINGBUFFER_ALLOCATOR_CALLBACK allocator,
                    void *context, I18NErrorCodes *error);

  // Frees a buffer that an allocating form took from the C heap.
  static void freeBuffer(void *buffer);

  // ---- Size arithmetic --------------------------------------------------

  // Room for n characters and the terminator, in bytes of this encoding.
  int numLegacyBytes(int n) const { return m_maxCharSize * n + m_minCharSize; }
  // Characters that surely fit in `bytes` bytes of this encoding.
  int numLegacyCodePoints(int bytes) const { return (bytes - m_minCharSize) / m_maxCharSize; }
  // Room for n UTF-16 units and the terminator, in bytes.
  int numUnicodeBytes(int n) const { return n * 2 + 2; }
  int numUnicodeCodePoints(int bytes) const { return (bytes - 2) / 2; }
  // Width of the encoding's NUL terminator.
  int sizeofLegacyNull() const { return m_minCharSize; }
  int sizeofUnicodeNull() const { return 2; }
  int getMaxCharSize() const { return m_maxCharSize; }
  int getMinCharSize() const { return m_minCharSize; }

  // ---- Unconvertible sequences ------------------------------------------

  // Sets the mode (0..4, see above) of one direction; clears the installed
  // user callback of that direction's context. Other values are ignored.
  void setBuiltInUnconvertibleInputSequenceCallback(int mode);
  void setBuiltInUnconvertibleOutputSequenceCallback(int mode);
  int getBuiltInUnconvertibleInputSequenceCallback() const { return m_inputMode; }
  int getBuiltInUnconvertibleOutputSequenceCallback() const { return m_outputMode; }
  // Stores the user callback of one direction; it is used while that
  // direction's mode is 3 (set the mode to 3 to use it).
  void setUserDefinedUnconvertibleInputSequenceCallback(I18N_UNCONVERTIBLE_INPUT_SEQUENCE_CALLBACK callback);
  void setUserDefinedUnconvertibleOutputSequenceCallback(I18N_UNCONVERTIBLE_OUTPUT_SEQUENCE_CALLBACK callback);
  I18N_UNCONVERTIBLE_INPUT_SEQUENCE_CALLBACK getUserDefinedUnconvertibleInputSequenceCallback() const {
    return m_userInputCallback;
  }
  I18N_UNCONVERTIBLE_OUTPUT_SEQUENCE_CALLBACK getUserDefinedUnconvertibleOutputSequenceCallback() const {
    return m_userOutputCallback;
  }

  // ---- Name tests (letters compared in any case) ------------------------

  // "ascii", "utf8", "utf-8", and a null or empty name (the toolkit default).
  static bool isUTF8(const char *encoding);
  // "ucs2", "ucs-2", "utf16", "utf-16", and names beginning "utf16_p".
  static bool isUTF16(const char *encoding);
  // "ucs4", "ucs-4", "utf32", "utf-32", and names beginning "utf32_p".
  static bool isUTF32(const char *encoding);
  // Names beginning "iso-8859".
  static bool isISO8859(const char *encoding);
  // Exactly "windows-1252".
  static bool isWindows1252(const char *encoding);
  // Exactly the platform default name (byte comparison).
  static bool isPlatformDefault(const char *encoding);
  // True for UTF-16 and UTF-32 in their byte-order forms (ICU's first alias
  // begins "UTF-1" or "UTF-3"); false for the platform-endian forms and for
  // unknown names.
  static bool shouldUseBOM(const char *encoding);
  static bool shouldUseBOM(const I18NString &encoding);
  // The encoding the internal resources configure for a locale (its full
  // name, then its language), else the platform default encoding.
  static void getEncodingForLocale(I18NString &encoding, const I18NLocale &locale);

  // The ICU converter, for callers that drive ICU directly; owned by this
  // object.
  UConverter *getUConverter() const { return m_pConverter; }

  // Instrumentation: ICU converters opened by name (ucnv_open) and cloned
  // since the process started. Lets tests prove that a path touches no
  // converter and that pools recycle instead of cloning.
  static long getOpenCount();
  static long getCloneCount();

private:
  friend class I18NConverterTestPeer;
  friend struct I18NConverterPools;

  I18NConverter(); // an empty shell for cloning (pools)
  void create(const char *encoding);
  void create(const I18NConverter &other);
  void release();
  void setName(const char *encoding);
  void installInputCallback();
  void installOutputCallback();
  int getEffectiveBufferSize(const char *buffer, int length) const;

  int m_inputMode;
  int m_outputMode;
  I18N_UNCONVERTIBLE_INPUT_SEQUENCE_CALLBACK m_userInputCallback;
  I18N_UNCONVERTIBLE_OUTPUT_SEQUENCE_CALLBACK m_userOutputCallback;
  bool m_ownsClone;
  I18NConverter *m_pNextInPool; // link while the converter lies in a pool
  void *m_reserved;             // the pool-by-name item lent to this converter, if any
  bool m_stateless;             // no state beyond pending units (cheap pool return)
  int m_maxCharSize;
  int m_minCharSize;
  UConverter *m_pConverter;
  int m_cloneSize;
  const char *m_pEncoding;
  i18n_detail::ConverterCallbackContext *m_pContext; // (name, user callbacks) for the library's ICU callbacks
};

// Pooled converters: each object borrows a converter for its lifetime
// (constructor) and gives it back (destructor); the borrowed converter has
// the default modes (1, 1), no user callbacks and no pending input. Each
// pool is a last-in-first-out stack under the layer's start-up lock, fronted
// by one slot per thread that holds the thread's most recently returned
// converter, so a take-and-return cycle in the steady state takes no lock
// and allocates nothing. The last I18NTerminate empties the stacks and every
// thread's slot; a thread that exits empties its own. Before I18NInitialize,
// or after the last I18NTerminate, each helper opens and deletes a converter
// of its own. Not copyable; an object belongs to the thread that made it.
class XYL_API I18NConverterUTF8 {
public:
  I18NConverterUTF8();
  ~I18NConverterUTF8();
  I18NConverter &getConverter() const { return *m_pConverter; }
  operator I18NConverter &() const { return *m_pConverter; }
  I18NConverter *operator->() const { return m_pConverter; }

private:
  I18NConverterUTF8(const I18NConverterUTF8 &) = delete;
  I18NConverterUTF8 &operator=(const I18NConverterUTF8 &) = delete;
  I18NConverter *m_pConverter;
};

class XYL_API I18NConverterUTF16 {
public:
  I18NConverterUTF16();
  ~I18NConverterUTF16();
  I18NConverter &getConverter() const { return *m_pConverter; }
  operator I18NConverter &() const { return *m_pConverter; }
  I18NConverter *operator->() const { return m_pConverter; }

private:
  I18NConverterUTF16(const I18NConverterUTF16 &) = delete;
  I18NConverterUTF16 &operator=(const I18NConverterUTF16 &) = delete;
  I18NConverter *m_pConverter;
};

class XYL_API I18NConverterPlatformDefault {
public:
  I18NConverterPlatformDefault();
  ~I18NConverterPlatformDefault();
  I18NConverter &getConverter() const { return *m_pConverter; }
  operator I18NConverter &() const { return *m_pConverter; }
  I18NConverter *operator->() const { return m_pConverter; }

private:
  I18NConverterPlatformDefault(const I18NConverterPlatformDefault &) = delete;
  I18NConverterPlatformDefault &operator=(const I18NConverterPlatformDefault &) = delete;
  I18NConverter *m_pConverter;
};

// "UTF8".
XYL_API const char *I18NGetToolkitDefaultEncoding();
// The encoding of the process's locale settings (LC_ALL, LC_CTYPE, LANG) as
// an ICU converter name, computed on first call and kept for the life of the
// process; "UTF8" when it cannot be determined.
XYL_API const char *I18NGetPlatformDefaultEncoding();
// The IANA name of the platform default encoding, or the platform default
// name itself when ICU knows no IANA name for it.
XYL_API const char *I18NGetNormalizedPlatformDefaultEncoding();

#endif // XYLCORE_I18N_CPP_I18N_CONVERTER_H
