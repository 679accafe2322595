// SPDX-License-Identifier: Apache-2.0
// The tables of the internal resources: built-in defaults, the reader of the
// resource file (libxml2) and the per-locale companion files.
#include "i18n/cpp/i18n_resourcetables.h"

#include <XYLCore/FileManagement/XYLFmDir.h>
#include <XYLCore/Threads/XYLThreadCriticalSection.h>
#include <XYLCore/Threads/XYLThreadGuard.h>
#include <XYLCore/i18n/cpp/i18n_internalresources.h>
#include <XYLCore/i18n/cpp/i18n_types.h>

#include <libxml/parser.h>
#include <libxml/tree.h>
#include <libxml/xmlerror.h>

#include <unicode/translit.h>
#include <unicode/ucnv.h>
#include <unicode/uloc.h>
#include <unicode/unistr.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <mutex>
#include <set>

namespace i18n_res {

namespace {

const char kAnyEncoding[] = "*";
const char kAnySequence[] = "*";
const unsigned int kAnyCodePoint = 0xFFFFFFFFu;

// ICU's canonical converter name, so that every alias of an encoding finds
// the same table; the name itself when ICU does not know it.
std::string canonicalEncoding(const char *encoding) {
  if (encoding == nullptr || *encoding == '\0')
    encoding = "UTF8";
  if (std::strcmp(encoding, kAnyEncoding) == 0)
    return kAnyEncoding;
  UErrorCode status = U_ZERO_ERROR;
  const char *alias = ucnv_getAlias(encoding, 0, &status);
  if (U_FAILURE(status) || alias == nullptr)
    return encoding;
  return alias;
}

std::string bytesKey(const char *bytes, int length) {
  std::string key;
  char hex[4];
  for (int i = 0; i < length; ++i) {
    std::snprintf(hex, sizeof hex, "%02X", static_cast<unsigned char>(bytes[i]));
    key += hex;
  }
  return key;
}

bool isSpace(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\v' || c == '\f'; }

// Parses whitespace-separated hexadecimal numbers (an optional "U+" or "0x"
// prefix each) no larger than `max`. False on anything else or on none.
bool parseHexList(const char *text, unsigned int max, std::vector<unsigned int> &values) {
  values.clear();
  const char *p = text;
  for (;;) {
    while (isSpace(*p))
      ++p;
    if (*p == '\0')
      break;
    if ((p[0] == 'U' || p[0] == 'u') && p[1] == '+')
      p += 2;
    else if (p[0] == '0' && (p[1] == 'x' || p[1] == 'X'))
      p += 2;
    char *end = nullptr;
    unsigned long value = std::strtoul(p, &end, 16);
    if (end == p || (*end != '\0' && !isSpace(*end)) || value > max || end - p > 8)
      return false;
    values.push_back(static_cast<unsigned int>(value));
    p = end;
  }
  return !values.empty();
}

bool parseNumber(const char *text, unsigned long max, unsigned long &value) {
  while (isSpace(*text))
    ++text;
  char *end = nullptr;
  value = std::strtoul(text, &end, 0);
  if (end == text || *text == '-')
    return false;
  while (isSpace(*end))
    ++end;
  return *end == '\0' && value <= max;
}

std::string toUTF8(unsigned int codePoint) {
  std::string out;
  icu::UnicodeString(static_cast<UChar32>(codePoint)).toUTF8String(out);
  return out;
}

// Reports a malformed resource file once per path and process.
void reportMalformed(const char *path, int line, const char *what) {
  static XYLThreadCriticalSection *lock = new XYLThreadCriticalSection(0);
  static std::set<std::string> *reported = new std::set<std::string>();
  XYLThreadGuard guard(*lock);
  if (!reported->insert(path).second)
    return;
  std::string text = what;
  while (!text.empty() && isSpace(text.back()))
    text.pop_back();
  std::fprintf(stderr,
               "XYLCore: the resource file \"%s\" is malformed (line %d: %s); it is ignored and the built-in "
               "defaults are used.\n",
               path, line, text.c_str());
}

// An XML attribute as a std::string; false when absent.
bool attribute(xmlNodePtr node, const char *name, std::string &value) {
  xmlChar *text = xmlGetProp(node, reinterpret_cast<const xmlChar *>(name));
  if (text == nullptr)
    return false;
  value = reinterpret_cast<const char *>(text);
  xmlFree(text);
  return true;
}

std::string content(xmlNodePtr node) {
  xmlChar *text = xmlNodeGetContent(node);
  std::string value = text != nullptr ? reinterpret_cast<const char *>(text) : "";
  xmlFree(text);
  return value;
}

bool named(xmlNodePtr node, const char *name) {
  return node->type == XML_ELEMENT_NODE && xmlStrcmp(node->name, reinterpret_cast<const xmlChar *>(name)) == 0;
}

// A parse result: the document, or why there is none.
struct Document {
  xmlDocPtr doc = nullptr;
  bool missing = false;
  int line = 0;
  std::string error;
  ~Document() {
    if (doc != nullptr)
      xmlFreeDoc(doc);
  }
};

void parse(const char *path, Document &out) {
  std::FILE *probe = std::fopen(path, "rb");
  if (probe == nullptr) {
    out.missing = true;
    return;
  }
  std::fclose(probe);
  static std::once_flag once;
  std::call_once(once, [] { xmlInitParser(); });
  xmlParserCtxtPtr context = xmlNewParserCtxt();
  if (context == nullptr)
    throw std::bad_alloc();
  out.doc = xmlCtxtReadFile(context, path, nullptr, XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING);
  if (out.doc == nullptr) {
    const xmlError *error = xmlCtxtGetLastError(context);
    out.line = error != nullptr ? error->line : 0;
    out.error = (error != nullptr && error->message != nullptr) ? error->message : "not well-formed XML";
  }
  xmlFreeParserCtxt(context);
}

} // namespace

// Turns one document into table entries; any invalid entry makes the whole
// file invalid (reported with its line).
class Reader {
public:
  explicit Reader(Tables &tables) : m_tables(tables) {}

  bool readRoot(xmlNodePtr root) {
    if (root == nullptr || !named(root, "i18nResources"))
      return fail(root, "the root element is not <i18nResources>");
    for (xmlNodePtr node = root->children; node != nullptr; node = node->next) {
      if (node->type != XML_ELEMENT_NODE)
        continue;
      bool ok = true;
      if (named(node, "UTF8BytesPerCodePoint"))
        ok = readUTF8BytesPerCodePoint(node);
      else if (named(node, "memoryManagement"))
        ok = readMemoryManagement(node);
      else if (named(node, "langLocMappingTable"))
        ok = readLanguageTable(node);
      else if (named(node, "localeTable"))
        ok = readLocaleTable(node);
      else if (named(node, "replacementTable"))
        ok = readReplacementTable(node);
      else if (named(node, "nonNormalizableCharacters"))
        ok = readNonNormalizable(node);
      else if (named(node, "ja_substitution"))
        ok = readJapanese(node);
      // Other tables (currencies, time zones) belong to the formatting
      // classes and are skipped here.
      if (!ok)
        return false;
    }
    return true;
  }

  int line() const { return m_line; }
  const std::string &error() const { return m_error; }

private:
  bool fail(xmlNodePtr node, const std::string &why) {
    m_line = node != nullptr ? static_cast<int>(xmlGetLineNo(node)) : 0;
    m_error = why;
    return false;
  }

  bool readUTF8BytesPerCodePoint(xmlNodePtr node) {
    std::string text;
    if (!attribute(node, "value", text))
      text = content(node);
    unsigned long value = 0;
    if (!parseNumber(text.c_str(), 4, value) || value < 1)
      return fail(node, "UTF8BytesPerCodePoint must be 1, 2, 3 or 4");
    m_tables.m_utf8BytesPerCodePoint = static_cast<int>(value);
    return true;
  }

  bool readMemoryManagement(xmlNodePtr node) {
    std::string value;
    if (!attribute(node, "asciiFastPath", value))
      return true;
    if (value == "true" || value == "1")
      m_tables.m_asciiFastPath = true;
    else if (value == "false" || value == "0")
      m_tables.m_asciiFastPath = false;
    else
      return fail(node, "asciiFastPath must be true or false");
    return true;
  }

  bool readLanguageTable(xmlNodePtr table) {
    for (xmlNodePtr node = table->children; node != nullptr; node = node->next) {
      if (!named(node, "locale"))
        continue;
      std::string language, variant;
      if (!attribute(node, "language", language) || !attribute(node, "defaultVariant", variant) || language.empty() ||
          variant.empty())
        return fail(node, "<locale> in langLocMappingTable needs language and defaultVariant");
      m_tables.m_languageDefaults[normalizeLocaleKey(language.c_str())] = normalizeLocaleKey(variant.c_str());
    }
    return true;
  }

  bool readLocaleTable(xmlNodePtr table) {
    for (xmlNodePtr node = table->children; node != nullptr; node = node->next) {
      if (!named(node, "locale"))
        continue;
      std::string name, lcidText;
      if (!attribute(node, "name", name) || name.empty())
        return fail(node, "<locale> in localeTable needs a name");
      const std::string key = normalizeLocaleKey(name.c_str());
      Tables::Locale &locale = m_tables.m_locales[key];
      if (attribute(node, "lcid", lcidText)) {
        unsigned long lcid = 0;
        if (!parseNumber(lcidText.c_str(), 0xFFFF, lcid) || lcid == 0)
          return fail(node, "lcid must be a number from 1 to 65535");
        locale.lcid = static_cast<unsigned short>(lcid);
        m_tables.m_lcidToLocale[locale.lcid] = key;
      }
      attribute(node, "encoding", locale.encoding);
      attribute(node, "csvEncoding", locale.csvEncoding);
    }
    return true;
  }

  bool readReplacementTable(xmlNodePtr table) {
    for (xmlNodePtr node = table->children; node != nullptr; node = node->next) {
      if (!named(node, "replacement"))
        continue;
      std::string encoding, direction, sequence, output;
      if (!attribute(node, "encoding", encoding) || !attribute(node, "sequence", sequence) ||
          !attribute(node, "output", output))
        return fail(node, "<replacement> needs encoding, sequence and output");
      if (!attribute(node, "direction", direction))
        direction = "input";
      const std::string canonical = canonicalEncoding(encoding.c_str());
      std::vector<unsigned int> values;
      if (direction == "input") {
        std::string key = kAnySequence;
        if (sequence != kAnySequence) {
          if (!parseHexList(sequence.c_str(), 0xFF, values))
            return fail(node, "an input sequence is a list of hexadecimal bytes or *");
          key.clear();
          for (unsigned int byte : values) {
            const char c = static_cast<char>(byte);
            key += bytesKey(&c, 1);
          }
        }
        if (!parseHexList(output.c_str(), 0x10FFFF, values) ||
            values.size() > static_cast<std::size_t>(I18N_CONVERTER_CALLBACK_CAPACITY))
          return fail(node, "an input replacement is a list of hexadecimal code points");
        m_tables.m_input[canonical][key] = values;
      } else if (direction == "output") {
        unsigned int key = kAnyCodePoint;
        if (sequence != kAnySequence) {
          if (!parseHexList(sequence.c_str(), 0x10FFFF, values) || values.size() != 1)
            return fail(node, "an output sequence is one hexadecimal code point or *");
          key = values[0];
        }
        if (!parseHexList(output.c_str(), 0xFF, values) ||
            values.size() > static_cast<std::size_t>(I18N_CONVERTER_CALLBACK_CAPACITY))
          return fail(node, "an output replacement is a list of hexadecimal bytes");
        std::string bytes;
        for (unsigned int byte : values)
          bytes.push_back(static_cast<char>(byte));
        m_tables.m_output[canonical][key] = bytes;
      } else {
        return fail(node, "direction must be input or output");
      }
    }
    return true;
  }

  bool readNonNormalizable(xmlNodePtr table) {
    std::vector<std::pair<unsigned int, unsigned int>> ranges;
    for (xmlNodePtr node = table->children; node != nullptr; node = node->next) {
      std::vector<unsigned int> first, last;
      std::string a, b;
      if (named(node, "codePoint")) {
        if (!attribute(node, "value", a) || !parseHexList(a.c_str(), 0x10FFFF, first) || first.size() != 1)
          return fail(node, "<codePoint> needs a hexadecimal value");
        ranges.emplace_back(first[0], first[0]);
      } else if (named(node, "range")) {
        if (!attribute(node, "first", a) || !attribute(node, "last", b) || !parseHexList(a.c_str(), 0x10FFFF, first) ||
            !parseHexList(b.c_str(), 0x10FFFF, last) || first.size() != 1 || last.size() != 1 || first[0] > last[0])
          return fail(node, "<range> needs hexadecimal first <= last");
        ranges.emplace_back(first[0], last[0]);
      }
    }
    std::sort(ranges.begin(), ranges.end());
    m_tables.m_nonNormalizable.clear();
    for (const auto &range : ranges) {
      if (!m_tables.m_nonNormalizable.empty() && range.first <= m_tables.m_nonNormalizable.back().second + 1)
        m_tables.m_nonNormalizable.back().second = std::max(m_tables.m_nonNormalizable.back().second, range.second);
      else
        m_tables.m_nonNormalizable.push_back(range);
    }
    return true;
  }

  bool readJapanese(xmlNodePtr table) {
    std::vector<std::pair<std::string, std::string>> rules;
    for (xmlNodePtr node = table->children; node != nullptr; node = node->next) {
      if (!named(node, "replacement"))
        continue;
      std::string sequence, output;
      std::vector<unsigned int> from, to;
      if (!attribute(node, "sequence", sequence) || !attribute(node, "output", output) ||
          !parseHexList(sequence.c_str(), 0x10FFFF, from) || !parseHexList(output.c_str(), 0x10FFFF, to))
        return fail(node, "a ja_substitution <replacement> needs hexadecimal sequence and output code points");
      std::string a, b;
      for (unsigned int c : from)
        a += toUTF8(c);
      for (unsigned int c : to)
        b += toUTF8(c);
      rules.emplace_back(a, b);
    }
    m_tables.m_jaSubstitution = rules; // the file's list replaces the built-in one
    return true;
  }

  Tables &m_tables;
  int m_line = 0;
  std::string m_error;
};

// ---- Built-in defaults ----------------------------------------------------------

namespace {

// The encoding of each language's (or locale's) legacy code page.
struct BuiltInEncoding {
  const char *locale;
  const char *encoding;
};
const BuiltInEncoding kBuiltInEncodings[] = {
    {"cs", "windows-1250"}, {"hu", "windows-1250"}, {"pl", "windows-1250"}, {"ro", "windows-1250"},
    {"sk", "windows-1250"}, {"sl", "windows-1250"}, {"hr", "windows-1250"}, {"sq", "windows-1250"},
    {"ru", "windows-1251"}, {"uk", "windows-1251"}, {"be", "windows-1251"}, {"bg", "windows-1251"},
    {"mk", "windows-1251"}, {"sr", "windows-1251"}, {"kk", "windows-1251"}, {"en", "windows-1252"},
    {"de", "windows-1252"}, {"fr", "windows-1252"}, {"es", "windows-1252"}, {"it", "windows-1252"},
    {"pt", "windows-1252"}, {"nl", "windows-1252"}, {"da", "windows-1252"}, {"sv", "windows-1252"},
    {"nb", "windows-1252"}, {"nn", "windows-1252"}, {"no", "windows-1252"}, {"fi", "windows-1252"},
    {"is", "windows-1252"}, {"ca", "windows-1252"}, {"id", "windows-1252"}, {"ms", "windows-1252"},
    {"el", "windows-1253"}, {"tr", "windows-1254"}, {"az", "windows-1254"}, {"he", "windows-1255"},
    {"ar", "windows-1256"}, {"fa", "windows-1256"}, {"ur", "windows-1256"}, {"et", "windows-1257"},
    {"lv", "windows-1257"}, {"lt", "windows-1257"}, {"vi", "windows-1258"}, {"th", "windows-874"},
    {"ja", "Shift_JIS"},    {"zh", "GBK"},          {"zh-cn", "GBK"},       {"zh-sg", "GBK"},
    {"zh-tw", "Big5"},      {"zh-hk", "Big5"},      {"zh-mo", "Big5"},      {"ko", "windows-949"},
};

struct BuiltInLanguage {
  const char *language;
  const char *locale;
};
const BuiltInLanguage kBuiltInLanguages[] = {
    {"en", "en-us"}, {"de", "de-de"}, {"fr", "fr-fr"}, {"es", "es-es"}, {"it", "it-it"}, {"pt", "pt-br"},
    {"ja", "ja-jp"}, {"zh", "zh-cn"}, {"ko", "ko-kr"}, {"ru", "ru-ru"}, {"nl", "nl-nl"}, {"sv", "sv-se"},
    {"da", "da-dk"}, {"nb", "nb-no"}, {"no", "nb-no"}, {"fi", "fi-fi"}, {"pl", "pl-pl"}, {"cs", "cs-cz"},
    {"el", "el-gr"}, {"tr", "tr-tr"}, {"he", "he-il"}, {"ar", "ar-sa"}, {"th", "th-th"}, {"hu", "hu-hu"},
};

// JIS-style code points and the forms the Japanese code pages of the
// Windows family use for the same characters.
const unsigned int kJapaneseSubstitution[][2] = {
    {0x301C, 0xFF5E}, {0x2016, 0x2225}, {0x2212, 0xFF0D}, {0x00A2, 0xFFE0},
    {0x00A3, 0xFFE1}, {0x00AC, 0xFFE2}, {0x2014, 0x2015},
};

} // namespace

Tables::Tables() : m_utf8BytesPerCodePoint(3), m_asciiFastPath(true) {
  for (const BuiltInEncoding &entry : kBuiltInEncodings)
    m_locales[entry.locale].encoding = entry.encoding;
  for (const BuiltInLanguage &entry : kBuiltInLanguages)
    m_languageDefaults[entry.language] = entry.locale;
  for (const auto &pair : kJapaneseSubstitution)
    m_jaSubstitution.emplace_back(toUTF8(pair[0]), toUTF8(pair[1]));
}

int Tables::read(const char *path) {
  Document document;
  parse(path, document);
  if (document.missing)
    return 0;
  if (document.doc == nullptr) {
    reportMalformed(path, document.line, document.error.c_str());
    return 0;
  }
  Tables staged(*this);
  Reader reader(staged);
  if (!reader.readRoot(xmlDocGetRootElement(document.doc))) {
    reportMalformed(path, reader.line(), reader.error().c_str());
    return 0;
  }
  *this = std::move(staged);
  return 1;
}

// ---- Queries ------------------------------------------------------------------------

int Tables::inputReplacement(const char *encoding, const char *bytes, int length, unsigned int *codePoints,
                             int capacity) const {
  if (m_input.empty() || bytes == nullptr || length <= 0 || codePoints == nullptr)
    return 0;
  const std::string key = bytesKey(bytes, length);
  const std::string names[2] = {canonicalEncoding(encoding), kAnyEncoding};
  for (const std::string &name : names) {
    auto table = m_input.find(name);
    if (table == m_input.end())
      continue;
    auto entry = table->second.find(key);
    if (entry == table->second.end())
      entry = table->second.find(kAnySequence);
    if (entry == table->second.end())
      continue;
    const int count = static_cast<int>(entry->second.size());
    if (count > capacity)
      return 0;
    std::copy(entry->second.begin(), entry->second.end(), codePoints);
    return count;
  }
  return 0;
}

int Tables::outputReplacement(const char *encoding, unsigned int codePoint, char *bytes, int capacity) const {
  if (m_output.empty() || bytes == nullptr)
    return 0;
  const std::string names[2] = {canonicalEncoding(encoding), kAnyEncoding};
  for (const std::string &name : names) {
    auto table = m_output.find(name);
    if (table == m_output.end())
      continue;
    auto entry = table->second.find(codePoint);
    if (entry == table->second.end())
      entry = table->second.find(kAnyCodePoint);
    if (entry == table->second.end())
      continue;
    const int count = static_cast<int>(entry->second.size());
    if (count > capacity)
      return 0;
    std::memcpy(bytes, entry->second.data(), entry->second.size());
    return count;
  }
  return 0;
}

bool Tables::isNonNormalizable(unsigned int codePoint) const {
  auto it =
      std::upper_bound(m_nonNormalizable.begin(), m_nonNormalizable.end(), std::make_pair(codePoint, 0xFFFFFFFFu));
  if (it == m_nonNormalizable.begin())
    return false;
  --it;
  return codePoint >= it->first && codePoint <= it->second;
}

U_ICU_NAMESPACE::Transliterator *Tables::newTransliterator() const {
  if (m_jaSubstitution.empty())
    return nullptr;
  icu::UnicodeString rules;
  for (const auto &rule : m_jaSubstitution) {
    // Quoted literals: 'from' > 'to'; (a quote inside is doubled).
    auto quote = [](const std::string &utf8) {
      icu::UnicodeString text = icu::UnicodeString::fromUTF8(utf8);
      icu::UnicodeString quoted("'");
      for (int32_t i = 0; i < text.length(); ++i) {
        if (text[i] == u'\'')
          quoted += u'\'';
        quoted += text[i];
      }
      quoted += u'\'';
      return quoted;
    };
    rules += quote(rule.first);
    rules += " > ";
    rules += quote(rule.second);
    rules += "; ";
  }
  UParseError parseError;
  UErrorCode status = U_ZERO_ERROR;
  icu::Transliterator *transliterator =
      icu::Transliterator::createFromRules("XYLJapaneseCompatibility", rules, UTRANS_FORWARD, parseError, status);
  if (U_FAILURE(status)) {
    delete transliterator;
    return nullptr;
  }
  return transliterator;
}

bool Tables::localeForLCID(unsigned short lcid, std::string &localeName) const {
  auto it = m_lcidToLocale.find(lcid);
  if (it != m_lcidToLocale.end()) {
    localeName = it->second;
    return true;
  }
  char buffer[ULOC_FULLNAME_CAPACITY];
  UErrorCode status = U_ZERO_ERROR;
  int32_t length = uloc_getLocaleForLCID(lcid, buffer, sizeof buffer, &status);
  if (U_FAILURE(status) || length <= 0 || length >= static_cast<int32_t>(sizeof buffer))
    return false;
  buffer[length] = '\0';
  localeName = normalizeLocaleKey(buffer);
  return !localeName.empty() && localeName != "root";
}

unsigned short Tables::lcidForLocale(const char *localeName) const {
  const std::string key = normalizeLocaleKey(localeName);
  auto it = m_locales.find(key);
  if (it != m_locales.end() && it->second.lcid != 0)
    return it->second.lcid;
  if (key.empty())
    return 0;
  // ICU wants its own spelling ("en_US"); a language tag reads that way.
  char icuName[ULOC_FULLNAME_CAPACITY];
  UErrorCode status = U_ZERO_ERROR;
  int32_t parsed = 0;
  uloc_forLanguageTag(key.c_str(), icuName, sizeof icuName, &parsed, &status);
  if (U_FAILURE(status) || status == U_STRING_NOT_TERMINATED_WARNING)
    return 0;
  return static_cast<unsigned short>(uloc_getLCID(icuName));
}

void Tables::defaultLocaleForLanguage(const char *name, std::string &localeName) const {
  localeName = name != nullptr ? name : "";
  const std::string key = normalizeLocaleKey(name);
  if (key.empty() || key.find('-') != std::string::npos)
    return; // not a bare language
  auto it = m_languageDefaults.find(key);
  if (it != m_languageDefaults.end()) {
    localeName = it->second;
    return;
  }
  char maximized[ULOC_FULLNAME_CAPACITY];
  UErrorCode status = U_ZERO_ERROR;
  uloc_addLikelySubtags(key.c_str(), maximized, sizeof maximized, &status);
  if (U_FAILURE(status) || status == U_STRING_NOT_TERMINATED_WARNING)
    return;
  char language[ULOC_LANG_CAPACITY];
  char country[ULOC_COUNTRY_CAPACITY];
  status = U_ZERO_ERROR;
  uloc_getLanguage(maximized, language, sizeof language, &status);
  uloc_getCountry(maximized, country, sizeof country, &status);
  if (U_FAILURE(status) || status == U_STRING_NOT_TERMINATED_WARNING || country[0] == '\0' || language[0] == '\0')
    return;
  localeName = normalizeLocaleKey((std::string(language) + "-" + country).c_str());
}

bool Tables::encodingForLocale(const char *localeName, std::string &encoding) const {
  std::string key = normalizeLocaleKey(localeName);
  for (int round = 0; round < 2 && !key.empty(); ++round) {
    auto it = m_locales.find(key);
    if (it != m_locales.end() && !it->second.encoding.empty()) {
      encoding = it->second.encoding;
      return true;
    }
    key = key.substr(0, key.find('-')); // then the language alone
  }
  return false;
}

// ---- Normalised names ------------------------------------------------------------------

std::string normalizeLocaleKey(const char *name) {
  std::string key;
  if (name == nullptr)
    return key;
  for (const char *p = name; *p != '\0' && !isSpace(*p) && *p != '.'; ++p) {
    char c = *p;
    if (c >= 'A' && c <= 'Z')
      c = static_cast<char>(c - 'A' + 'a');
    else if (c == '_')
      c = '-';
    key.push_back(c);
  }
  return key;
}

// ---- The tables in force ---------------------------------------------------------------

namespace {

std::atomic<const Tables *> gCurrent{nullptr};

XYLThreadCriticalSection &tablesLock() {
  static XYLThreadCriticalSection *lock = new XYLThreadCriticalSection(0);
  return *lock;
}

// Tables replaced by a reload stay alive: a reader on another thread may
// still hold them. Reloads are rare (tests, administration).
std::vector<std::unique_ptr<const Tables>> &retired() {
  static auto *list = new std::vector<std::unique_ptr<const Tables>>();
  return *list;
}

std::string defaultPath() {
  const char *path = I18NInternalResources::getResourceFilePath();
  return (path != nullptr && *path != '\0') ? path : "./i18n_res.xml";
}

int publish(const char *path) {
  std::unique_ptr<Tables> fresh(new Tables());
  const int result = fresh->read(path != nullptr ? path : defaultPath().c_str());
  const Tables *old = gCurrent.exchange(fresh.release(), std::memory_order_acq_rel);
  if (old != nullptr)
    retired().emplace_back(old);
  return result;
}

} // namespace

const Tables &current() {
  const Tables *tables = gCurrent.load(std::memory_order_acquire);
  if (tables != nullptr)
    return *tables;
  XYLThreadGuard guard(tablesLock());
  tables = gCurrent.load(std::memory_order_acquire);
  if (tables == nullptr) {
    publish(nullptr);
    tables = gCurrent.load(std::memory_order_acquire);
  }
  return *tables;
}

int reload(const char *path) {
  XYLThreadGuard guard(tablesLock());
  return publish(path);
}

// ---- Companion files --------------------------------------------------------------------

bool readCompanionTexts(const char *prefix, const char *directory, const char *localeName,
                        std::map<std::string, std::string> &texts) {
  std::string key = normalizeLocaleKey(localeName);
  for (int round = 0; round < 2 && !key.empty(); ++round) {
    std::string path = directory != nullptr ? directory : "";
    XYLFmDir::joinPath(path, (std::string(prefix) + key + ".xml").c_str());
    Document document;
    parse(path.c_str(), document);
    if (!document.missing) {
      if (document.doc == nullptr) {
        reportMalformed(path.c_str(), document.line, document.error.c_str());
        return false;
      }
      xmlNodePtr root = xmlDocGetRootElement(document.doc);
      if (root == nullptr || !named(root, "i18nResources")) {
        reportMalformed(path.c_str(), root != nullptr ? static_cast<int>(xmlGetLineNo(root)) : 0,
                        "the root element is not <i18nResources>");
        return false;
      }
      std::map<std::string, std::string> found;
      for (xmlNodePtr node = root->children; node != nullptr; node = node->next) {
        if (!named(node, "text"))
          continue;
        std::string name;
        if (!attribute(node, "key", name) || name.empty()) {
          reportMalformed(path.c_str(), static_cast<int>(xmlGetLineNo(node)), "<text> needs a key");
          return false;
        }
        found[name] = content(node);
      }
      for (auto &entry : found)
        texts[entry.first] = entry.second;
      return true;
    }
    const std::string::size_type dash = key.find('-');
    if (dash == std::string::npos)
      break;
    key.resize(dash); // then the language alone
  }
  return false;
}

} // namespace i18n_res
