/* SPDX-License-Identifier: Apache-2.0 */
// Private to the C interface: the one frame every wrapper runs in, and the
// mapping between handles and the objects behind them.
//
// A wrapper stores I18N_SUCCESS into the caller's error argument, runs its
// class operation inside guard(), and on a throw leaves the code of the
// failure there: an I18NRuntimeError's or I18NUnexpectedError's own code,
// I18N_GENERAL_FAILURE for anything else. Nothing escapes. The happy path
// costs one store and the null checks of the handles; the lambdas inline.
#ifndef XYLCORE_SRC_I18N_C_I18N_C_FRAME_H
#define XYLCORE_SRC_I18N_C_I18N_C_FRAME_H

#include <XYLCore/i18n/c/i18n_c.h>

#include <utility>

class I18NString;
class I18NStringIterator;
class I18NConverter;
class I18NLocale;
class I18NNumericFormat;
class I18NDateTimeFormat;
class I18NCollator;
class I18NBidi;

namespace i18n_c {

// Called from inside a catch handler: classifies the exception in flight
// and stores its code (when `error` is not null).
void storeCurrentException(I18NErrorCodes *error) noexcept;

// Raises I18NRuntimeError -7 "The handle is NULL." (recorded from this
// layer's source file).
[[noreturn]] void raiseNullHandle();
// Raises I18NRuntimeError with `code` (a code a class operation reported
// through its own error argument, or -9 for a caller's short buffer).
[[noreturn]] void raiseCode(I18NErrorCodes code, const char *message = nullptr);

// Runs `body`; returns its value, or `onFailure` when it threw.
template <typename R, typename F> inline R guard(I18NErrorCodes *error, R onFailure, F &&body) noexcept {
  if (error != nullptr)
    *error = I18N_SUCCESS;
  try {
    return body();
  } catch (...) {
    storeCurrentException(error);
    return onFailure;
  }
}

// The same for operations without a result.
template <typename F> inline void guard(I18NErrorCodes *error, F &&body) noexcept {
  guard(error, 0, [&body]() {
    body();
    return 0;
  });
}

// A buffer-producing operation: its length, or -1 when the error is set
// afterwards (the operation may report through `error` without throwing).
template <typename F> inline int guardLength(I18NErrorCodes *error, F &&body) noexcept {
  int length = guard(error, -1, std::forward<F>(body));
  return (error != nullptr && *error != I18N_SUCCESS) ? -1 : length;
}

// Handle <-> object. deref raises on a null handle.
template <typename T, typename H> inline T &deref(H handle) {
  if (handle == nullptr)
    raiseNullHandle();
  return *reinterpret_cast<T *>(handle);
}

#define I18N_C_HANDLE_TYPE(Handle, Type)                                                                               \
  inline Type &obj(Handle handle) { return deref<Type>(handle); }                                                      \
  inline Handle handleOf(Type *object) { return reinterpret_cast<Handle>(object); }

I18N_C_HANDLE_TYPE(I18NStringHandle, I18NString)
I18N_C_HANDLE_TYPE(I18NStringIteratorHandle, I18NStringIterator)
I18N_C_HANDLE_TYPE(I18NConverterHandle, I18NConverter)
I18N_C_HANDLE_TYPE(I18NLocaleHandle, I18NLocale)
I18N_C_HANDLE_TYPE(I18NNumericFormatHandle, I18NNumericFormat)
I18N_C_HANDLE_TYPE(I18NDateTimeFormatHandle, I18NDateTimeFormat)
I18N_C_HANDLE_TYPE(I18NCollatorHandle, I18NCollator)
I18N_C_HANDLE_TYPE(I18NBidiHandle, I18NBidi)

#undef I18N_C_HANDLE_TYPE

// A creating function: nulls the caller's handle, then stores what `make`
// returns (a new object) into it.
template <typename H, typename F> inline void create(H *handle, I18NErrorCodes *error, F &&make) noexcept {
  if (handle != nullptr)
    *handle = nullptr;
  guard(error, [&]() {
    if (handle == nullptr)
      raiseNullHandle();
    *handle = handleOf(make());
  });
}

// A freeing function: deletes the object behind a non-null handle and nulls
// the caller's variable.
template <typename T, typename H> inline void destroy(H *handle, I18NErrorCodes *error) noexcept {
  guard(error, [&]() {
    if (handle != nullptr && *handle != nullptr) {
      T *object = &obj(*handle);
      *handle = nullptr;
      delete object;
    }
  });
}

// A null-checked pointer argument (code point arrays and the like).
template <typename P> inline P *need(P *pointer) {
  if (pointer == nullptr)
    raiseNullHandle();
  return pointer;
}

} // namespace i18n_c

#endif
