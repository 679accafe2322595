// SPDX-License-Identifier: Apache-2.0
// The toolkit and platform default encodings.
#include "i18n/cpp/i18n_internal.h"
#include "i18n/cpp/i18n_os.h"

#include <XYLCore/Utility/XYLUtMemory.h>

#include <unicode/ucnv.h>

#include <atomic>

using i18n_detail::kToolkitDefault;

namespace {

// The platform default name, computed once (see I18NGetPlatformDefaultEncoding).
std::atomic<char *> gPlatformDefault{nullptr};

bool icuFailed(UErrorCode status) { return U_FAILURE(status) != 0; }

} // namespace

// ---- Default encodings ------------------------------------------------------------

const char *I18NGetToolkitDefaultEncoding() { return kToolkitDefault; }

const char *I18NGetPlatformDefaultEncoding() {
  char *name = gPlatformDefault.load(std::memory_order_acquire);
  if (name != nullptr)
    return name;
  // The locale's code set as the OS spells it ("ISO-8859-1",
  // "ANSI_X3.4-1968"), turned into ICU's own name for that converter.
  char codeSet[128];
  i18n_os::getLocaleCodeSet(codeSet, sizeof codeSet);
  const char *chosen = kToolkitDefault;
  if (codeSet[0] != '\0') {
    UErrorCode status = U_ZERO_ERROR;
    const char *alias = ucnv_getAlias(codeSet, 0, &status);
    if (!icuFailed(status) && alias != nullptr && *alias != '\0')
      chosen = alias;
  }
  char *copy = XYLUtMemory::strdup(chosen);
  if (copy == nullptr)
    i18n_detail::raiseConverterOutOfMemory();
  char *expected = nullptr;
  if (!gPlatformDefault.compare_exchange_strong(expected, copy, std::memory_order_acq_rel)) {
    XYLUtMemory::free(copy); // another thread was first
    return expected;
  }
  return copy;
}

void I18NConverterPools::releasePlatformDefaultName() {
  char *name = gPlatformDefault.exchange(nullptr, std::memory_order_acq_rel);
  XYLUtMemory::free(name);
}

const char *I18NGetNormalizedPlatformDefaultEncoding() {
  const char *name = I18NGetPlatformDefaultEncoding();
  UErrorCode status = U_ZERO_ERROR;
  const char *standard = ucnv_getStandardName(name, "IANA", &status);
  if (icuFailed(status) || standard == nullptr)
    return name;
  return standard;
}
