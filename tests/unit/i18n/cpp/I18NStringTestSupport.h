/* SPDX-License-Identifier: Apache-2.0 */
// Helpers shared by the I18NString tests: building strings from UTF-8 and
// UTF-16 literals, reading them back, and counting ICU's heap allocations.
#ifndef XYLCORE_TESTS_UNIT_I18N_CPP_I18NSTRINGTESTSUPPORT_H
#define XYLCORE_TESTS_UNIT_I18N_CPP_I18NSTRINGTESTSUPPORT_H

#include <XYLCore/i18n/cpp/i18n_string.h>

#include <string>

namespace i18nstringtest {

// A string from UTF-8 text.
inline I18NString u8s(const std::string &text) {
  return I18NString(text.data(), "UTF-8", static_cast<int>(text.size()));
}

// A string from UTF-16 units (unpaired surrogates allowed).
inline I18NString u16s(const std::u16string &units) {
  if (units.empty())
    return I18NString();
  return I18NString(static_cast<const void *>(units.data()), static_cast<int>(units.size() * 2));
}

// The content as UTF-16 units, read without changing the string's mode.
std::u16string unitsOf(const I18NString &text);

// The content as UTF-8 (through toBytes).
std::string utf8Of(const I18NString &text);

// Counts ICU's heap allocations (u_setMemoryFunctions is installed once per
// process, before the first test runs).
long icuAllocations();

// Counts calls to an allocator callback and forwards to the default one.
struct CountingAllocator {
  int calls = 0;
  int frees = 0;
  int failAfter = -1; // fail the (failAfter+1)-th request; -1: never
  static char *callback(void *context, char *buffer, int newSize, int *error);
};

} // namespace i18nstringtest

#endif
