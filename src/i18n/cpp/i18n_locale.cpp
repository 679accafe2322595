// SPDX-License-Identifier: Apache-2.0
// I18NLocale and its cache of shared, immutable xI18NLocale entries.
#include "i18n/cpp/i18n_internal.h"
#include "i18n/cpp/i18n_resourcetables.h"

#include <XYLCore/ExceptionHierarchy/XYLErrors.h>
#include <XYLCore/Threads/XYLThreadGuard.h>
#include <XYLCore/Utility/XYLUtMemory.h>
#include <XYLCore/i18n/cpp/i18n_internalresources.h>
#include <XYLCore/i18n/cpp/i18n_locale.h>
#include <XYLCore/i18n/cpp/i18n_string.h>

#include <unicode/coll.h>
#include <unicode/locid.h>
#include <unicode/unistr.h>

#include <atomic>
#include <cstring>
#include <map>
#include <memory>
#include <string>
#include <vector>

// One distinct locale name, parsed. Owned by the cache; immutable once
// entered, except for the collators, which are made on first use and
// published atomically.
class xI18NLocale {
public:
  xI18NLocale()
      : m_pCountry(nullptr), m_pSpare(nullptr), m_pLanguage(nullptr), m_pLocale(nullptr), m_pVariant(nullptr),
        m_pFullName(nullptr) {
    m_collators[0] = nullptr;
    m_collators[1] = nullptr;
  }
  ~xI18NLocale() {
    delete m_pCountry;
    delete m_pSpare;
    delete m_pLanguage;
    delete m_pLocale;
    delete m_pVariant;
    delete m_pFullName;
    delete m_collators[0].load();
    delete m_collators[1].load();
  }

  I18NString *m_pCountry;
  I18NString *m_pSpare; // the script, when the name has one ("hant")
  I18NString *m_pLanguage;
  icu::Locale *m_pLocale;
  I18NString *m_pVariant;
  I18NString *m_pFullName;
  std::atomic<icu::Collator *> m_collators[2]; // 0: case-sensitive, 1: ignoring case
  std::string m_normalized;                    // lower case with hyphens, for comparisons

private:
  xI18NLocale(const xI18NLocale &) = delete;
  xI18NLocale &operator=(const xI18NLocale &) = delete;
};

namespace {

const char kDefaultLocale[] = "en-us";

bool isWhitespace(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\v' || c == '\f' || c == '\r'; }

// A string from bytes that are meant to be ASCII; anything else is
// substituted rather than failing, so that no locale name can make the
// constructor throw.
I18NString *newText(const char *bytes, int length) {
  I18NConverterUTF8 converter;
  converter->setBuiltInUnconvertibleInputSequenceCallback(I18N_UNCONVERTIBLE_SUBSTITUTE);
  I18NString *text = new I18NString(length == 0 ? "" : bytes, converter.getConverter(), length);
  return text;
}

I18NString *newText(const std::string &bytes) { return newText(bytes.data(), static_cast<int>(bytes.size())); }

std::string utf8(const I18NString &text) {
  std::string out;
  text.getUnicodeString().toUTF8String(out);
  return out;
}

// The cut name into a scratch copy: up to 47 characters on the stack, a
// longer name on the heap.
class Scratch {
public:
  Scratch(const char *name, std::size_t length) : m_pText(m_stack) {
    if (length >= sizeof m_stack) {
      m_pText = static_cast<char *>(XYLUtMemory::malloc(length + 1));
      if (m_pText == nullptr)
        XYL_THROW(XYLOutOfMemoryError(0L, nullptr));
    }
    std::memcpy(m_pText, name, length);
    m_pText[length] = '\0';
  }
  ~Scratch() {
    if (m_pText != m_stack)
      XYLUtMemory::free(m_pText);
  }
  char *get() { return m_pText; }

private:
  Scratch(const Scratch &) = delete;
  Scratch &operator=(const Scratch &) = delete;
  char m_stack[48];
  char *m_pText;
};

bool isScript(const std::string &part) {
  if (part.size() != 4)
    return false;
  for (char c : part)
    if (!((c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z')))
      return false;
  return true;
}

std::string join(const std::vector<std::string> &parts, std::size_t from, char separator) {
  std::string out;
  for (std::size_t i = from; i < parts.size(); ++i) {
    if (i > from)
      out.push_back(separator);
    out += parts[i];
  }
  return out;
}

xI18NLocale *build(const char *name) {
  std::size_t length = 0;
  while (name[length] != '\0' && !isWhitespace(name[length]))
    ++length;
  Scratch scratch(name, length);
  char *text = scratch.get();
  if (char *stop = std::strchr(text, '.'))
    *stop = '\0';

  std::unique_ptr<xI18NLocale> entry(new xI18NLocale());
  std::string language, spare, country, variant, fullName;
  if (std::strcmp(text, "SYSTEM") == 0) {
    const icu::Locale &system = icu::Locale::getDefault();
    entry->m_pLocale = new icu::Locale(system);
    language = system.getLanguage();
    spare = system.getScript();
    country = system.getCountry();
    variant = system.getVariant();
    fullName = system.getName();
  } else {
    const char separator = std::strchr(text, '-') != nullptr ? '-' : '_';
    std::vector<std::string> parts(1);
    for (const char *p = text; *p != '\0'; ++p) {
      if (*p == separator)
        parts.emplace_back();
      else
        parts.back().push_back(*p);
    }
    language = parts[0];
    std::size_t next = 1;
    if (parts.size() > 1 && isScript(parts[1])) {
      spare = parts[1];
      next = 2;
    }
    if (next < parts.size()) {
      if (parts[next].empty()) {
        variant = join(parts, next + 1, separator); // doubled separator
      } else {
        country = parts[next];
        variant = join(parts, next + 1, separator);
      }
    }
    fullName = text;
    std::string id = language;
    if (!spare.empty())
      id += "_" + spare;
    if (!country.empty() || !variant.empty())
      id += "_" + country;
    if (!variant.empty()) {
      std::string icuVariant = variant;
      for (char &c : icuVariant)
        if (c == '-')
          c = '_';
      id += "_" + icuVariant;
    }
    entry->m_pLocale = new icu::Locale(icu::Locale::createFromName(id.c_str()));
  }
  entry->m_pLanguage = newText(language);
  entry->m_pSpare = newText(spare);
  entry->m_pCountry = newText(country);
  entry->m_pVariant = newText(variant);
  entry->m_pFullName = newText(fullName);
  entry->m_normalized = i18n_res::normalizeLocaleKey(fullName.c_str());
  return entry.release();
}

typedef std::map<std::string, xI18NLocale *> LocaleCache;

XYLThreadCriticalSection &cacheLock() {
  static XYLThreadCriticalSection *lock = new XYLThreadCriticalSection(0);
  return *lock;
}

void releaseLocaleCache();

LocaleCache &cache() {
  static LocaleCache *map = [] {
    i18n_detail::releaseLocaleCacheHook = releaseLocaleCache;
    return new LocaleCache();
  }();
  return *map;
}

icu::Collator *collator(xI18NLocale *entry, int which) {
  icu::Collator *existing = entry->m_collators[which].load(std::memory_order_acquire);
  if (existing != nullptr)
    return existing;
  UErrorCode status = U_ZERO_ERROR;
  icu::Collator *made = icu::Collator::createInstance(*entry->m_pLocale, status);
  if (made == nullptr || U_FAILURE(status)) {
    delete made;
    XYL_THROW(I18NRuntimeError(I18N_GENERAL_FAILURE, nullptr));
  }
  if (which == 1)
    made->setStrength(icu::Collator::SECONDARY);
  if (!entry->m_collators[which].compare_exchange_strong(existing, made, std::memory_order_acq_rel)) {
    delete made; // another thread was first
    return existing;
  }
  return made;
}

int sign(int value) { return value < 0 ? -1 : (value > 0 ? 1 : 0); }

} // namespace

namespace {
void releaseLocaleCache() {
  XYLThreadGuard guard(cacheLock());
  for (auto &entry : cache())
    delete entry.second;
  cache().clear();
}
} // namespace

// ---- I18NLocale ------------------------------------------------------------------------

I18NLocale::I18NLocale(const char *name) : m_pLocale(nullptr), m_reserved(nullptr) { lookup(name); }

I18NLocale::I18NLocale(unsigned short lcid) : m_pLocale(nullptr), m_reserved(nullptr) {
  std::string name;
  if (!I18NInternalResources::getLocaleIdFroLCID(lcid, name) || name.empty())
    name = kDefaultLocale;
  lookup(name.c_str());
}

void I18NLocale::lookup(const char *name) {
  if (name == nullptr || *name == '\0')
    name = kDefaultLocale;
  try {
    const std::string key = name;
    {
      XYLThreadGuard guard(cacheLock());
      auto it = cache().find(key);
      if (it != cache().end()) {
        m_pLocale = it->second;
        return;
      }
    }
    // Built without the lock; a thread that entered the same name meanwhile
    // wins and this copy is dropped.
    std::unique_ptr<xI18NLocale> made(build(name));
    XYLThreadGuard guard(cacheLock());
    auto inserted = cache().emplace(key, made.get());
    if (inserted.second)
      made.release();
    m_pLocale = inserted.first->second;
  } catch (std::bad_alloc &) {
    XYL_THROW(XYLOutOfMemoryError(0L, nullptr));
  }
}

const I18NString &I18NLocale::getName() const { return *m_pLocale->m_pFullName; }
const I18NString &I18NLocale::getLanguage() const { return *m_pLocale->m_pLanguage; }
const I18NString &I18NLocale::getCountry() const { return *m_pLocale->m_pCountry; }
const I18NString &I18NLocale::getVariant() const { return *m_pLocale->m_pVariant; }
const icu::Locale &I18NLocale::getLocale() const { return *m_pLocale->m_pLocale; }

void I18NLocale::getNormalizedName(I18NString &name) const {
  std::unique_ptr<I18NString> text(newText(m_pLocale->m_normalized));
  name = *text;
}

void I18NLocale::normalizeLocaleName(const I18NString &name, I18NString &normalized) {
  const std::string key = i18n_res::normalizeLocaleKey(utf8(name).c_str());
  std::unique_ptr<I18NString> text(newText(key));
  normalized = *text;
}

unsigned short I18NLocale::getLCID() const {
  return I18NInternalResources::getLCIDForLocale(m_pLocale->m_normalized.c_str());
}

void I18NLocale::getDisplayName(I18NString &displayName) const {
  icu::UnicodeString text;
  m_pLocale->m_pLocale->getDisplayName(icu::Locale::getDefault(), text);
  displayName.setTo(text);
}

void I18NLocale::getDisplayName(const I18NLocale &inLocale, I18NString &displayName) const {
  icu::UnicodeString text;
  m_pLocale->m_pLocale->getDisplayName(*inLocale.m_pLocale->m_pLocale, text);
  displayName.setTo(text);
}

int I18NLocale::compare(const I18NString &a, const I18NString &b) const {
  UErrorCode status = U_ZERO_ERROR;
  const int result = collator(m_pLocale, 0)->compare(a.getUnicodeString(), b.getUnicodeString(), status);
  return sign(result);
}

int I18NLocale::compareIgnoreCase(const I18NString &a, const I18NString &b) const {
  UErrorCode status = U_ZERO_ERROR;
  const int result = collator(m_pLocale, 1)->compare(a.getUnicodeString(), b.getUnicodeString(), status);
  return sign(result);
}

void I18NLocale::toLower(I18NString &text) const {
  icu::UnicodeString copy(text.getUnicodeString());
  copy.toLower(*m_pLocale->m_pLocale);
  text.setTo(copy);
}

void I18NLocale::toUpper(I18NString &text) const {
  icu::UnicodeString copy(text.getUnicodeString());
  copy.toUpper(*m_pLocale->m_pLocale);
  text.setTo(copy);
}

const icu::Locale *I18NLocale::getAvailableLocales(int &count) {
  int32_t n = 0;
  const icu::Locale *locales = icu::Locale::getAvailableLocales(n);
  count = static_cast<int>(n);
  return locales;
}

bool I18NLocale::isCJK(const char *name) {
  std::string language = i18n_res::normalizeLocaleKey(name);
  language = language.substr(0, language.find('-'));
  static const char *const kCJK[] = {"zh", "ja", "ko", "zho", "chi", "jpn", "kor", "yue", "cmn"};
  for (const char *code : kCJK)
    if (language == code)
      return true;
  return false;
}

bool I18NLocale::isCJK(const I18NLocale &locale) { return isCJK(locale.m_pLocale->m_normalized.c_str()); }

bool I18NLocale::operator==(const I18NLocale &other) const {
  return m_pLocale == other.m_pLocale || m_pLocale->m_normalized == other.m_pLocale->m_normalized;
}

bool I18NLocale::operator<(const I18NLocale &other) const {
  return m_pLocale->m_normalized < other.m_pLocale->m_normalized;
}
