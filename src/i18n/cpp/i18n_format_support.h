/* SPDX-License-Identifier: Apache-2.0 */
// Private to the number and date-time formats: the failures they raise, the
// text conversions they share and the copy of their ICU state.
//
// Everything here sits in an unnamed namespace and is inline on purpose:
// each including source gets its own copy, so a raise site records that
// source's own back-trace file name.
#ifndef XYLCORE_SRC_I18N_CPP_I18N_FORMAT_SUPPORT_H
#define XYLCORE_SRC_I18N_CPP_I18N_FORMAT_SUPPORT_H

#include <XYLCore/ExceptionHierarchy/XYLErrors.h>
#include <XYLCore/i18n/cpp/i18n_string.h>

#include <unicode/unistr.h>

#include <new>
#include <string>

namespace {

[[noreturn]] inline void raiseFailure(const std::string &message) {
  XYL_THROW(I18NRuntimeError(static_cast<long>(I18N_GENERAL_FAILURE), message.c_str()));
}

[[noreturn]] inline void raiseOutOfMemory() {
  XYL_THROW(XYLOutOfMemoryError(-1L, "malloc failed to allocate memory."));
}

inline std::string utf8(const icu::UnicodeString &text) {
  std::string out;
  text.toUTF8String(out);
  return out;
}

// Appends ICU's result: ASCII text through the string's byte path (no
// Unicode form is made), anything else through a Unicode copy.
inline void appendResult(I18NString &out, const icu::UnicodeString &text) {
  int32_t n = text.length();
  if (n < 64) {
    char bytes[64];
    const UChar *units = text.getBuffer();
    int32_t i = 0;
    for (; i < n && units[i] < 0x80; ++i)
      bytes[i] = static_cast<char>(units[i]);
    if (i == n) {
      bytes[n] = '\0';
      out.append(bytes);
      return;
    }
  }
  out.append(I18NString(text));
}

// A new copy of a format's private state; out of memory raises.
template <class Impl> Impl *copyImpl(const Impl &other) {
  Impl *copy = new (std::nothrow) Impl(other);
  if (copy == nullptr)
    raiseOutOfMemory();
  return copy;
}

// Replaces `impl` by a copy of `other`; a failed copy leaves `impl` as it was.
template <class Impl> void assignImpl(Impl *&impl, const Impl &other) {
  if (impl == &other)
    return;
  Impl *copy = copyImpl(other);
  delete impl;
  impl = copy;
}

} // namespace

#endif
