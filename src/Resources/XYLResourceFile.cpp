// SPDX-License-Identifier: Apache-2.0
#include <XYLCore/ExceptionHierarchy/XYLErrors.h>
#include <XYLCore/Resources/XYLResourceFile.h>

#include "ExceptionHierarchy/XYLStdMemory_internal.h"
#include "Resources/XYLCatalogReader.h"
#include "Resources/XYLResourceOs.h"
#include "i18n/cpp/i18n_os.h"
#include "i18n/cpp/i18n_resourcetables.h"

#include <cstddef>
#include <cstdlib>
#include <cstring>

namespace {

const char kExtension[] = ".bmf";
const char kDefaultLocale[] = "en-us";
const char kPathVariable[] = "XYL_MSG_PATH";

bool endsWith(const std::string &text, const char *suffix) {
  const std::size_t length = std::strlen(suffix);
  return text.size() >= length && text.compare(text.size() - length, length, suffix) == 0;
}

std::string join(const std::string &directory, const std::string &name) {
  if (directory.empty())
    return name;
  if (directory.back() == xyl_resource_os::kSeparator)
    return directory + name;
  return directory + xyl_resource_os::kSeparator + name;
}

// A locale that can serve as a folder name: no separators, not "." or "..".
bool isPlainFolderName(const std::string &name) {
  return !name.empty() && name != "." && name != ".." && name.find('/') == std::string::npos &&
         name.find('\\') == std::string::npos;
}

// The bodies of the factory's operations, which only wrap them.
std::string defaultLocation();
std::vector<std::string> candidatesFor(const char *name, const char *location, const char *locale, bool useLocale);

} // namespace

// ---- XYLResourceFactory --------------------------------------------------------------

std::string XYLResourceFactory::getDefaultLocation() {
  return xyl_std_memory::guarded([]() -> std::string { return defaultLocation(); });
}

namespace {
std::string defaultLocation() {
  const char *variable = std::getenv(kPathVariable);
  if (variable != nullptr && *variable != '\0')
    return variable;
  std::string fileName;
  if (!i18n_os::getLibraryFileName(fileName))
    return ".";
  const std::string::size_type cut = fileName.find_last_of(xyl_resource_os::kSeparator);
  if (cut == std::string::npos)
    return ".";
  if (cut == 0)
    return "/";
  return fileName.substr(0, cut);
}
} // namespace

std::vector<std::string> XYLResourceFactory::getCandidates(const char *name, const char *location, const char *locale,
                                                           bool useLocale) {
  return xyl_std_memory::guarded([&] { return candidatesFor(name, location, locale, useLocale); });
}

namespace {
std::vector<std::string> candidatesFor(const char *name, const char *location, const char *locale, bool useLocale) {
  std::vector<std::string> candidates;
  if (name == nullptr || *name == '\0')
    return candidates;
  std::string file(name);
  if (!endsWith(file, kExtension))
    file += kExtension;
  // A name with a separator is a path of its own.
  if (file.find(xyl_resource_os::kSeparator) != std::string::npos) {
    candidates.push_back(file);
    return candidates;
  }
  const std::string directory = (location == nullptr || *location == '\0') ? defaultLocation() : location;
  if (useLocale) {
    std::string normalized = i18n_res::normalizeLocaleKey(locale);
    if (normalized.empty())
      normalized = kDefaultLocale;
    if (isPlainFolderName(normalized)) {
      candidates.push_back(join(join(directory, normalized), file));
      const std::string language = normalized.substr(0, normalized.find('-'));
      if (language != normalized && isPlainFolderName(language))
        candidates.push_back(join(join(directory, language), file));
    }
  }
  candidates.push_back(join(directory, file));
  // A static build looks in its installed data directory last, unless the
  // caller named a location.
  const char *installed = i18n_os::getStaticDataDirectory();
  if (installed != nullptr && (location == nullptr || *location == '\0') && directory != installed)
    candidates.push_back(join(installed, file));
  return candidates;
}
} // namespace

std::string XYLResourceFactory::resolve(const char *name, const char *location, const char *locale, bool useLocale) {
  return xyl_std_memory::guarded([&]() -> std::string {
    for (const std::string &candidate : candidatesFor(name, location, locale, useLocale)) {
      if (xyl_resource_os::isRegularFile(candidate.c_str()))
        return candidate;
    }
    return std::string();
  });
}

// ---- XYLResourceFile -----------------------------------------------------------------

XYLResourceFile::XYLResourceFile(int option) : m_option(option), m_resource(nullptr) {}

XYLResourceFile::XYLResourceFile(const char *name, const char *text, int option)
    : m_option(option), m_resource(nullptr) {
  open(name, text);
}

XYLResourceFile::~XYLResourceFile() { delete m_resource; }

int XYLResourceFile::openPath(const std::string &path) {
  return xyl_std_memory::guarded([&] {
    // Everything that can run out of memory comes before the handle changes.
    std::string kept(path);
    if (m_resource == nullptr)
      m_resource = new XYLCatalogReader(m_option != XYLResourceOnDemand);
    m_path.clear();
    if (kept.empty()) {
      m_resource->close();
      return 0;
    }
    if (!m_resource->open(kept.c_str()))
      return 0;
    m_path.swap(kept);
    return 1;
  });
}

int XYLResourceFile::open(const char *name, const char *text) {
  return openPath(XYLResourceFactory::resolve(name, text, nullptr, false));
}

int XYLResourceFile::open(const char *name, const char *location, const char *locale) {
  return openPath(XYLResourceFactory::resolve(name, location, locale, true));
}

int XYLResourceFile::isOpen() const { return (m_resource != nullptr && m_resource->isOpen()) ? 1 : 0; }

std::string XYLResourceFile::getResource(unsigned int messageNumber, const char **text) {
  if (text != nullptr)
    *text = nullptr;
  // clang-format off
  XYL_ASSERT(m_resource != NULL);
  // clang-format on
  std::size_t length = 0;
  const char *found = m_resource->lookup(messageNumber, &length);
  if (found == nullptr)
    return std::string();
  std::string result = xyl_std_memory::guarded([&] { return std::string(found, length); });
  if (text != nullptr)
    *text = found;
  return result;
}

void XYLResourceFile::close() {
  if (m_resource != nullptr)
    m_resource->close();
  m_path.clear();
}
