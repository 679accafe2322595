/* SPDX-License-Identifier: Apache-2.0 */
// Private to the internationalisation layer: the process-wide state shared by
// the converters, the start-up and the locales.
#ifndef XYLCORE_SRC_I18N_CPP_I18N_INTERNAL_H
#define XYLCORE_SRC_I18N_CPP_I18N_INTERNAL_H

#include <XYLCore/Threads/XYLThreadCriticalSection.h>
#include <XYLCore/i18n/cpp/i18n_converter.h>

#include <unicode/ucnv_err.h>

#include <atomic>

namespace i18n_detail {

// Encoding names the converters open by; the toolkit default is shared by
// every converter of that name (compared by address when freeing names).
inline constexpr char kToolkitDefault[] = "UTF8";
inline constexpr char kUTF16Platform[] = "UTF16_PlatformEndian";
inline constexpr char kUTF32Platform[] = "UTF32_PlatformEndian";

// The library's ICU callbacks for modes 1 (resources) and 3 (user); their
// context is the converter's ConverterCallbackContext.
void UCNV_TO_U_CALLBACK_RESOURCES(const void *context, UConverterToUnicodeArgs *args, const char *codeUnits,
                                  int32_t length, UConverterCallbackReason reason, UErrorCode *err);
void UCNV_TO_U_CALLBACK_USER(const void *context, UConverterToUnicodeArgs *args, const char *codeUnits, int32_t length,
                             UConverterCallbackReason reason, UErrorCode *err);
void UCNV_FROM_U_CALLBACK_RESOURCES(const void *context, UConverterFromUnicodeArgs *args, const UChar *codeUnits,
                                    int32_t length, UChar32 codePoint, UConverterCallbackReason reason,
                                    UErrorCode *err);
void UCNV_FROM_U_CALLBACK_USER(const void *context, UConverterFromUnicodeArgs *args, const UChar *codeUnits,
                               int32_t length, UChar32 codePoint, UConverterCallbackReason reason, UErrorCode *err);

// What the library's own ICU callbacks (modes 1 and 3) need: the encoding
// name, and the user callback of their direction while mode 3 is installed.
struct ConverterCallbackContext {
  const char *encoding;
  I18N_UNCONVERTIBLE_INPUT_SEQUENCE_CALLBACK inputCallback;
  I18N_UNCONVERTIBLE_OUTPUT_SEQUENCE_CALLBACK outputCallback;
};

// The pooled encodings, in the order of the prototypes.
enum PoolKind { PoolUTF8 = 0, PoolUTF16 = 1, PoolPlatformDefault = 2, PoolCount = 3 };

// Whether a converter keeps no state beyond pending units.
bool isStatelessType(UConverter *converter);

// The encoding each prototype is opened with.
const char *poolEncodingName(PoolKind kind);

} // namespace i18n_detail

// The state behind I18NInitialize/I18NTerminate and the three pools. Every
// member is guarded by startLock(), except `initCount`, which may be read
// without it (a converter constructor asks whether prototypes exist; the
// answer is rechecked under the lock where it matters).
struct I18NConverterPools {
  // The start-up critical section (also guards the pools); created on first
  // use so that it never runs before the thread layer's own start-up.
  static XYLThreadCriticalSection &startLock();

  static std::atomic<int> initCount;
  static I18NConverter *prototypes[i18n_detail::PoolCount];
  static I18NConverter *pools[i18n_detail::PoolCount];

  // A converter of `kind`: from the pool, a clone of the prototype, or (when
  // the layer is not initialised) opened by name.
  static I18NConverter *take(i18n_detail::PoolKind kind);
  // Gives a converter back to its pool (or deletes it when the layer is not
  // initialised).
  static void give(i18n_detail::PoolKind kind, I18NConverter *converter);
  // A new converter cloned from the prototype of `kind`; caller holds the lock.
  static I18NConverter *cloneOf(const I18NConverter &prototype);
  // Creates the prototypes (caller holds the lock); 1 on success.
  static int createPrototypes();
  // Deletes the prototypes and every pooled converter (caller holds the lock).
  static void releaseAll();

  // The pool of converters by encoding name: a prototype and a few idle
  // clones per encoding, for the most recently used encodings. takeNamed
  // fills a fresh converter (default modes) with a pooled ICU converter and
  // returns true, or returns false when the layer is not initialised; an
  // unknown name throws as opening it would. giveNamed takes the ICU
  // converter back and leaves `converter` empty; it accepts converters that
  // outlive I18NTerminate.
  static bool takeNamed(I18NConverter &converter, const char *encoding);
  // A new converter opened by name (the named pool's prototypes).
  static I18NConverter *openByName(const char *encoding);
  static void giveNamed(I18NConverter &converter);
  // Bounds: encodings kept, idle clones kept per encoding.
  static constexpr int kNamedEncodings = 8;
  static constexpr int kNamedIdle = 8;
  // Forgets the cached platform default encoding name (termination).
  static void releasePlatformDefaultName();
};

namespace i18n_detail {

// The two maps of shared library objects that the start-up creates and the
// last termination empties (destroying each value). Other parts of the
// layer register their process-wide objects (formatter caches and the
// like) here. `which` is 0 or 1. Each call takes the start-up lock; the
// registration fails (returns false, nothing kept) while the layer is not
// initialised or when the key is taken.
bool registerSharedObject(int which, const char *key, void *object, void (*destroy)(void *));
// The object registered under `key`, or null.
void *findSharedObject(int which, const char *key);

// Counts a converter cloned (I18NConverter::getCloneCount).
void countClone();

// Raises XYLOutOfMemoryError from the converter's source file.
[[noreturn]] void raiseConverterOutOfMemory();

// The last termination calls this hook (when set) to empty the locale
// cache; the cache sets it when it is first used.
extern void (*releaseLocaleCacheHook)();

} // namespace i18n_detail

#endif
