// SPDX-License-Identifier: Apache-2.0
// Start and stop of the internationalisation layer: the counter, the
// prototypes, the shared object maps and the default locale name.
#include "i18n/cpp/i18n_internal.h"

#include <XYLCore/ExceptionHierarchy/XYLErrors.h>
#include <XYLCore/Threads/XYLThreadGuard.h>
#include <XYLCore/Utility/XYLUtMemory.h>
#include <XYLCore/i18n/cpp/i18n_init.h>
#include <XYLCore/i18n/cpp/i18n_internalresources.h>
#include <XYLCore/i18n/cpp/i18n_locale.h>
#include <XYLCore/i18n/cpp/i18n_string.h>

#include <unicode/uloc.h>

#include <cstring>
#include <map>
#include <string>
#include <strings.h>

char *I18NLocale::gI18NDefaultLocaleName = nullptr;
void (*i18n_detail::releaseLocaleCacheHook)() = nullptr;

namespace {

struct SharedObject {
  void *object;
  void (*destroy)(void *);
};
typedef std::map<std::string, SharedObject> SharedObjectMap;

SharedObjectMap *gSharedObjects[2] = {nullptr, nullptr};

void releaseSharedObjects() {
  for (SharedObjectMap *&map : gSharedObjects) {
    if (map == nullptr)
      continue;
    for (auto &entry : *map)
      if (entry.second.destroy != nullptr)
        entry.second.destroy(entry.second.object);
    delete map;
    map = nullptr;
  }
}

// The default locale name from ICU's default locale: the first underscore
// becomes a hyphen, a trailing "_POSIX" (any case) goes, letters are lower
// case. "en_US" and "en_US_POSIX" both give "en-us".
void computeDefaultLocaleName() {
  // clang-format off
  XYL_ASSERT(!(I18NLocale::gI18NDefaultLocaleName));
  // clang-format on
  const char *icuDefault = uloc_getDefault();
  char *name = XYLUtMemory::strdup(icuDefault != nullptr ? icuDefault : "");
  if (name == nullptr)
    XYL_THROW(XYLOutOfMemoryError(0L, nullptr));
  char *underscore = std::strchr(name, '_');
  if (underscore != nullptr) {
    *underscore = '-';
    char *further = std::strchr(underscore + 1, '_');
    if (further != nullptr && strcasecmp(further, "_posix") == 0)
      *further = '\0';
  }
  for (char *p = name; *p != '\0'; ++p)
    if (*p >= 'A' && *p <= 'Z')
      *p = static_cast<char>(*p - 'A' + 'a');
  I18NLocale::gI18NDefaultLocaleName = name;
}

// Releases everything the first I18NInitialize made; caller holds the lock.
void releaseAllLocked() {
  I18NConverterPools::initCount.store(0, std::memory_order_release);
  I18NConverterPools::releasePlatformDefaultName();
  I18NConverterPools::releaseAll();
  releaseSharedObjects();
  XYLUtMemory::free(I18NLocale::gI18NDefaultLocaleName);
  I18NLocale::gI18NDefaultLocaleName = nullptr;
  if (i18n_detail::releaseLocaleCacheHook != nullptr)
    i18n_detail::releaseLocaleCacheHook();
}

} // namespace

int I18NInitialize(void) {
  XYLThreadGuard guard(I18NConverterPools::startLock());
  if (I18NConverterPools::initCount.load(std::memory_order_relaxed) == 0) {
    try {
      I18NInternalResources::setDataDirectoryPath();
      const int prototypesMade = I18NConverterPools::createPrototypes();
      for (SharedObjectMap *&map : gSharedObjects) {
        if (map == nullptr)
          map = new SharedObjectMap();
      }
      if (prototypesMade && I18NLocale::gI18NDefaultLocaleName == nullptr)
        computeDefaultLocaleName();
      if (!prototypesMade || I18NLocale::gI18NDefaultLocaleName == nullptr) {
        releaseAllLocked();
        return 0;
      }
      // An installation that turns the ASCII fast path off gets strings
      // that always hold UTF-16; a host's own choice to force that stays.
      if (!I18NInternalResources::useAsciiFastPath())
        I18NString::setForceUnicodeString(true);
    } catch (std::bad_alloc &) {
      releaseAllLocked();
      XYL_THROW(XYLOutOfMemoryError(0L, nullptr));
    } catch (...) {
      releaseAllLocked();
      throw;
    }
  }
  I18NConverterPools::initCount.fetch_add(1, std::memory_order_acq_rel);
  return 1;
}

void I18NTerminate(void) {
  XYLThreadGuard guard(I18NConverterPools::startLock());
  const int count = I18NConverterPools::initCount.load(std::memory_order_relaxed);
  if (count <= 0)
    return;
  if (count > 1) {
    I18NConverterPools::initCount.store(count - 1, std::memory_order_release);
    return;
  }
  releaseAllLocked();
}

const char *I18NGetDefaultLocaleName(void) {
  // clang-format off
  XYL_ASSERT(I18NLocale::gI18NDefaultLocaleName);
  // clang-format on
  return I18NLocale::gI18NDefaultLocaleName;
}

bool i18n_detail::registerSharedObject(int which, const char *key, void *object, void (*destroy)(void *)) {
  if (which < 0 || which > 1 || key == nullptr)
    return false;
  XYLThreadGuard guard(I18NConverterPools::startLock());
  SharedObjectMap *map = gSharedObjects[which];
  if (map == nullptr)
    return false;
  return map->emplace(key, SharedObject{object, destroy}).second;
}

void *i18n_detail::findSharedObject(int which, const char *key) {
  if (which < 0 || which > 1 || key == nullptr)
    return nullptr;
  XYLThreadGuard guard(I18NConverterPools::startLock());
  SharedObjectMap *map = gSharedObjects[which];
  if (map == nullptr)
    return nullptr;
  auto it = map->find(key);
  return it == map->end() ? nullptr : it->second.object;
}
