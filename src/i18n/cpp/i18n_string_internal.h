/* SPDX-License-Identifier: Apache-2.0 */
// i18n_string_internal.h - private helpers shared by the I18NString sources:
// the raise helpers (which keep every raise site in i18n_string.cpp, so that
// traces name "i18n/cpp/i18n_string"), the ASCII scanning and copying
// kernels.
#ifndef XYLCORE_SRC_I18N_CPP_I18N_STRING_INTERNAL_H
#define XYLCORE_SRC_I18N_CPP_I18N_STRING_INTERNAL_H

#include <XYLCore/i18n/cpp/i18n_string.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <emmintrin.h>
#include <immintrin.h>
#include <unicode/unistr.h>

class I18NConverter;

namespace i18n_string_detail {

// ---- Raising ----------------------------------------------------------------
[[noreturn]] void raiseRuntime(long code, const char *message);
// `reported` is what the callback stored into its error argument.
[[noreturn]] void raiseAllocatorFailure(int reported);
[[noreturn]] void raiseHeapFailure();
[[noreturn]] void raiseConversionFailure(int code);

// ---- Test instrumentation --------------------------------------------------
// Unicode forms created since the process started (a relaxed counter).
long unicodeFormsCreated();
void countUnicodeForm();

// ---- ASCII kernels ------------------------------------------------------------

// The AVX2 forms of the kernels below, used for longer texts when the CPU
// has AVX2 (every x86-64 server of the last decade); 128 bytes per step.
__attribute__((target("avx2"))) inline std::size_t asciiPrefixAvx2(const char *p, std::size_t n) {
  std::size_t i = 0;
  for (; i + 128 <= n; i += 128) {
    __m256i a = _mm256_loadu_si256(reinterpret_cast<const __m256i *>(p + i));
    __m256i b = _mm256_loadu_si256(reinterpret_cast<const __m256i *>(p + i + 32));
    __m256i c = _mm256_loadu_si256(reinterpret_cast<const __m256i *>(p + i + 64));
    __m256i d = _mm256_loadu_si256(reinterpret_cast<const __m256i *>(p + i + 96));
    if (_mm256_movemask_epi8(_mm256_or_si256(_mm256_or_si256(a, b), _mm256_or_si256(c, d))) != 0)
      break;
  }
  return i;
}

__attribute__((target("avx2"))) inline std::size_t copyAsciiAvx2(char *dst, const char *src, std::size_t n) {
  std::size_t i = 0;
  for (; i + 128 <= n; i += 128) {
    __m256i a = _mm256_loadu_si256(reinterpret_cast<const __m256i *>(src + i));
    __m256i b = _mm256_loadu_si256(reinterpret_cast<const __m256i *>(src + i + 32));
    __m256i c = _mm256_loadu_si256(reinterpret_cast<const __m256i *>(src + i + 64));
    __m256i d = _mm256_loadu_si256(reinterpret_cast<const __m256i *>(src + i + 96));
    _mm256_storeu_si256(reinterpret_cast<__m256i *>(dst + i), a);
    _mm256_storeu_si256(reinterpret_cast<__m256i *>(dst + i + 32), b);
    _mm256_storeu_si256(reinterpret_cast<__m256i *>(dst + i + 64), c);
    _mm256_storeu_si256(reinterpret_cast<__m256i *>(dst + i + 96), d);
    if (_mm256_movemask_epi8(_mm256_or_si256(_mm256_or_si256(a, b), _mm256_or_si256(c, d))) != 0)
      break;
  }
  return i; // bytes known to be ASCII and copied
}

inline bool haveAvx2() {
  static const bool avx2 = __builtin_cpu_supports("avx2");
  return avx2;
}

// Index of the first byte with its top bit set in p[0..n), or n.
inline std::size_t asciiPrefix(const char *p, std::size_t n) {
  std::size_t i = 0;
  if (n >= 256 && haveAvx2())
    i = asciiPrefixAvx2(p, n);
  // 64 bytes per step: four loads OR-ed together, one movemask.
  for (; i + 64 <= n; i += 64) {
    __m128i a = _mm_loadu_si128(reinterpret_cast<const __m128i *>(p + i));
    __m128i b = _mm_loadu_si128(reinterpret_cast<const __m128i *>(p + i + 16));
    __m128i c = _mm_loadu_si128(reinterpret_cast<const __m128i *>(p + i + 32));
    __m128i d = _mm_loadu_si128(reinterpret_cast<const __m128i *>(p + i + 48));
    if (_mm_movemask_epi8(_mm_or_si128(_mm_or_si128(a, b), _mm_or_si128(c, d))) != 0)
      break;
  }
  for (; i + 16 <= n; i += 16) {
    int mask = _mm_movemask_epi8(_mm_loadu_si128(reinterpret_cast<const __m128i *>(p + i)));
    if (mask != 0)
      return i + static_cast<std::size_t>(__builtin_ctz(static_cast<unsigned>(mask)));
  }
  for (; i < n; ++i)
    if (static_cast<unsigned char>(p[i]) & 0x80)
      return i;
  return n;
}

// from + the index of the first byte with its top bit set in p[from..n), or
// n. Out of line: the slow exit of copyAscii, so that copyAscii itself
// needs no frame.
[[gnu::noinline]] inline std::size_t asciiPrefixFrom(const char *p, std::size_t from, std::size_t n) {
  return from + asciiPrefix(p + from, n - from);
}

// The SSE2 part of copyAscii from offset i on (n >= 16).
__attribute__((always_inline)) inline std::size_t copyAsciiFrom(char *dst, const char *src, std::size_t i,
                                                                std::size_t n) {
  for (; i + 64 <= n; i += 64) {
    __m128i a = _mm_loadu_si128(reinterpret_cast<const __m128i *>(src + i));
    __m128i b = _mm_loadu_si128(reinterpret_cast<const __m128i *>(src + i + 16));
    __m128i c = _mm_loadu_si128(reinterpret_cast<const __m128i *>(src + i + 32));
    __m128i d = _mm_loadu_si128(reinterpret_cast<const __m128i *>(src + i + 48));
    _mm_storeu_si128(reinterpret_cast<__m128i *>(dst + i), a);
    _mm_storeu_si128(reinterpret_cast<__m128i *>(dst + i + 16), b);
    _mm_storeu_si128(reinterpret_cast<__m128i *>(dst + i + 32), c);
    _mm_storeu_si128(reinterpret_cast<__m128i *>(dst + i + 48), d);
    if (_mm_movemask_epi8(_mm_or_si128(_mm_or_si128(a, b), _mm_or_si128(c, d))) != 0)
      return asciiPrefixFrom(src, i, i + 64);
  }
  for (; i + 16 <= n; i += 16) {
    __m128i a = _mm_loadu_si128(reinterpret_cast<const __m128i *>(src + i));
    _mm_storeu_si128(reinterpret_cast<__m128i *>(dst + i), a);
    int mask = _mm_movemask_epi8(a);
    if (mask != 0)
      return i + static_cast<std::size_t>(__builtin_ctz(static_cast<unsigned>(mask)));
  }
  if (i < n) {
    // The last, overlapping 16 bytes.
    std::size_t last = n - 16;
    __m128i a = _mm_loadu_si128(reinterpret_cast<const __m128i *>(src + last));
    _mm_storeu_si128(reinterpret_cast<__m128i *>(dst + last), a);
    int mask = _mm_movemask_epi8(a);
    if (mask != 0)
      return last + static_cast<std::size_t>(__builtin_ctz(static_cast<unsigned>(mask)));
  }
  return n;
}

// copyAscii for long texts (n >= 256): the AVX2 kernel where the CPU has it.
[[gnu::noinline]] inline std::size_t copyAsciiLong(char *dst, const char *src, std::size_t n) {
  std::size_t i = haveAvx2() ? copyAsciiAvx2(dst, src, n) : 0;
  return copyAsciiFrom(dst, src, i, n);
}

// Copies n bytes from src to dst while testing them; returns the number of
// leading ASCII bytes (n when all are). Bytes after the first non-ASCII
// one may or may not have been copied.
inline std::size_t copyAscii(char *dst, const char *src, std::size_t n) {
  if (n >= 256)
    return copyAsciiLong(dst, src, n);
  if (n >= 16)
    return copyAsciiFrom(dst, src, 0, n);
  if (n >= 8) {
    std::uint64_t head, tail;
    std::memcpy(&head, src, 8);
    std::memcpy(&tail, src + n - 8, 8);
    std::memcpy(dst, &head, 8);
    std::memcpy(dst + n - 8, &tail, 8);
    if (((head | tail) & 0x8080808080808080ULL) == 0)
      return n;
    return asciiPrefixFrom(src, 0, n);
  }
  unsigned char high = 0;
  for (std::size_t i = 0; i < n; ++i) {
    dst[i] = src[i];
    high |= static_cast<unsigned char>(src[i]);
  }
  return (high & 0x80) ? asciiPrefixFrom(src, 0, n) : n;
}

// A quick look at the first bytes (16 at most, one vector load): false when
// one of them is not ASCII, so that clearly non-ASCII text skips the ASCII
// buffer altogether.
inline bool asciiHead(const char *p, std::size_t n) {
  if (n >= 16)
    return _mm_movemask_epi8(_mm_loadu_si128(reinterpret_cast<const __m128i *>(p))) == 0;
  if (n >= 8) {
    std::uint64_t head, tail;
    std::memcpy(&head, p, 8);
    std::memcpy(&tail, p + n - 8, 8);
    return ((head | tail) & 0x8080808080808080ULL) == 0;
  }
  unsigned char high = 0;
  for (std::size_t i = 0; i < n; ++i)
    high |= static_cast<unsigned char>(p[i]);
  return (high & 0x80) == 0;
}

// Widens n ASCII bytes to UTF-16 units.
inline void widenAscii(char16_t *dst, const char *src, std::size_t n) {
  std::size_t i = 0;
  const __m128i zero = _mm_setzero_si128();
  for (; i + 16 <= n; i += 16) {
    __m128i a = _mm_loadu_si128(reinterpret_cast<const __m128i *>(src + i));
    _mm_storeu_si128(reinterpret_cast<__m128i *>(dst + i), _mm_unpacklo_epi8(a, zero));
    _mm_storeu_si128(reinterpret_cast<__m128i *>(dst + i + 8), _mm_unpackhi_epi8(a, zero));
  }
  for (; i < n; ++i)
    dst[i] = static_cast<unsigned char>(src[i]);
}

// ---- Encoding names ---------------------------------------------------------------

// Whether 0x00..0x7F mean ASCII in this encoding: exactly the names that pass
// I18NConverter::isUTF8 ("ascii", "utf8", "utf-8", null or empty),
// isWindows1252 ("windows-1252") or isISO8859 (beginning "iso-8859"), letters
// in any case. Inline because every construction from bytes asks.
__attribute__((always_inline)) inline bool asciiCompatibleName(const char *e) {
  if (e == nullptr || e[0] == '\0')
    return true;
  switch (e[0] | 0x20) {
  case 'u':
    return ((e[1] | 0x20) == 't') && ((e[2] | 0x20) == 'f') &&
           ((e[3] == '8' && e[4] == '\0') || (e[3] == '-' && e[4] == '8' && e[5] == '\0'));
  case 'a':
    return ((e[1] | 0x20) == 's') && ((e[2] | 0x20) == 'c') && ((e[3] | 0x20) == 'i') && ((e[4] | 0x20) == 'i') &&
           e[5] == '\0';
  case 'i':
    return ((e[1] | 0x20) == 's') && ((e[2] | 0x20) == 'o') && std::strncmp(e + 3, "-8859", 5) == 0;
  case 'w':
    return ((e[1] | 0x20) == 'i') && ((e[2] | 0x20) == 'n') && ((e[3] | 0x20) == 'd') && ((e[4] | 0x20) == 'o') &&
           ((e[5] | 0x20) == 'w') && ((e[6] | 0x20) == 's') && std::strcmp(e + 7, "-1252") == 0;
  default:
    return false;
  }
}

// The names that pass I18NConverter::isUTF8.
__attribute__((always_inline)) inline bool utf8Name(const char *e) {
  return asciiCompatibleName(e) && (e == nullptr || e[0] == '\0' || (e[0] | 0x20) == 'u' || (e[0] | 0x20) == 'a');
}

} // namespace i18n_string_detail

// Private access for the split sources of I18NString.
struct I18NStringAccess {
  static const char *asciiBuffer(const I18NString &s) { return s.m_pAsciiBuffer; }
  static int asciiLength(const I18NString &s) { return s.m_asciiBufLength; }
  static icu::UnicodeString *unicodeForm(const I18NString &s) { return s.unicodeForm(); }
  static icu::UnicodeString &forceUnicode(const I18NString &s) { return s.forceUnicode(); }
  // The destructor's slow part: byte forms, the Unicode form, and an ASCII
  // buffer from the allocator callback.
  [[gnu::noinline]] static void releaseOwned(I18NString &s);
};

#endif // XYLCORE_SRC_I18N_CPP_I18N_STRING_INTERNAL_H
