// SPDX-License-Identifier: Apache-2.0
// The installation root, the resource file path, and the tables read from
// the resource files. OS services come from posix/ (included at the end).
#include "ExceptionHierarchy/XYLStdMemory_internal.h"
#include "i18n/cpp/i18n_os.h"
#include "i18n/cpp/i18n_resourcetables.h"
#include "i18n/cpp/i18n_testpeer.h"
#include <XYLCore/FileManagement/XYLFmDir.h>
#include <XYLCore/Utility/XYLUtMemory.h>
#include <XYLCore/i18n/cpp/i18n_converter.h>
#include <XYLCore/i18n/cpp/i18n_internalresources.h>

#include <unicode/putil.h>
#include <unicode/uclean.h>
#include <unicode/ucnv.h>

#include <atomic>
#include <new>
#include <string>

namespace {

// A process-wide text on the C heap (so the allocation seam reaches it).
std::string *newText() {
  void *memory = XYLUtMemory::malloc(sizeof(std::string));
  return memory == nullptr ? nullptr : new (memory) std::string();
}

void deleteText(std::string *text) {
  if (text != nullptr) {
    text->~basic_string();
    XYLUtMemory::free(text);
  }
}

std::string *gBinaryDirectory = nullptr;
std::string *gResourceFilePath = nullptr;
std::atomic<unsigned char> gPathsDone{0};
const char *gLibraryFileNameForTesting = nullptr; // see I18NInternalResourcesTestPeer

const char kResourceFileName[] = "./i18n_res.xml";
} // namespace

const char *I18NInternalResources::getBinaryDirectory() {
  return gPathsDone.load(std::memory_order_acquire) != 0 ? gBinaryDirectory->c_str() : "";
}

const char *I18NInternalResources::getResourceFilePath() {
  return gPathsDone.load(std::memory_order_acquire) != 0 ? gResourceFilePath->c_str() : "";
}

void I18NInternalResources::lookupRoot() {
  std::string &directory = *gBinaryDirectory;
  if (!directory.empty())
    return;
  if (const char *execPath = i18n_os::getEnvironment("QOR_EXEC_PATH")) {
    directory = execPath;
    return;
  }
  if (const char *root = i18n_os::getEnvironment("QOR_ROOT")) {
    directory = root;
    XYLFmDir::joinPath(directory, "./bin");
    return;
  }
  // The library's own file; a name without a separator ends the lookup.
  std::string fileName;
  if (gLibraryFileNameForTesting != nullptr)
    fileName = gLibraryFileNameForTesting;
  else if (!i18n_os::getLibraryFileName(fileName))
    return;
  const std::string::size_type cut = fileName.find_last_of(i18n_os::kSeparator);
  if (cut == std::string::npos)
    return;
  directory.assign(fileName, 0, cut);
  u_setDataDirectory(directory.c_str());
  if (!directory.empty())
    return;
  // Only a name whose one separator is its first character gets here.
  if (i18n_os::isReadableRegularFile("../configuration/qorstartup.xml")) {
    directory = "../bin";
    return;
  }
  std::string line;
  if (i18n_os::readFirstLine("./qorroot.link", line, 259) && !line.empty()) {
    directory = line;
    XYLFmDir::joinPath(directory, "./bin");
  }
}

// The two out-of-memory raise sites below stay on lines 101 and 102.
void I18NInternalResources::setDataDirectoryPath() {
  if (gPathsDone.load(std::memory_order_acquire) != 0)
    return;
  std::string *directory = newText();
  std::string *path = newText();
  if (directory == nullptr || path == nullptr) {
    const bool noDirectory = directory == nullptr;
    deleteText(directory);
    deleteText(path);
    if (noDirectory)
      XYL_THROW(XYLOutOfMemoryError(0L, nullptr));
    XYL_THROW(XYLOutOfMemoryError(0L, nullptr));
  }
  deleteText(gBinaryDirectory);
  deleteText(gResourceFilePath);
  gBinaryDirectory = directory;
  gResourceFilePath = path;

  UErrorCode status = U_ZERO_ERROR;
  u_init(&status); // its status is not examined
  I18NGetPlatformDefaultEncoding();
  ucnv_setDefaultName("UTF8");

  lookupRoot();

  u_setDataDirectory(gBinaryDirectory->empty() ? "." : gBinaryDirectory->c_str());
  *gResourceFilePath = *gBinaryDirectory;
  XYLFmDir::joinPath(*gResourceFilePath, kResourceFileName);
  gPathsDone.store(1, std::memory_order_release);
}

void __changeResourceFileName(const char *name) {
  if (name == nullptr || gPathsDone.load(std::memory_order_acquire) == 0 || gResourceFilePath->empty())
    return;
  const std::string::size_type at = gResourceFilePath->find(kResourceFileName);
  if (at != std::string::npos)
    gResourceFilePath->replace(at, sizeof kResourceFileName - 1, name);
}

// ---- Queries -------------------------------------------------------------------

namespace {

const i18n_res::Tables &tables() { return i18n_res::current(); }

} // namespace

int I18NInternalResources::load(const char *path) { return i18n_res::reload(path); }

int I18NInternalResources::getReplacementSequence(const char *encoding, const char *bytes, int length,
                                                  unsigned int *codePoints, int capacity) {
  return tables().inputReplacement(encoding, bytes, length, codePoints, capacity);
}

int I18NInternalResources::getReplacementSequence(const char *encoding, unsigned int codePoint, char *bytes,
                                                  int capacity) {
  return tables().outputReplacement(encoding, codePoint, bytes, capacity);
}

bool I18NInternalResources::isNonNormalizable(unsigned int codePoint) { return tables().isNonNormalizable(codePoint); }

bool I18NInternalResources::hasNonNormalizableCharacters() { return tables().hasNonNormalizable(); }

U_ICU_NAMESPACE::Transliterator *I18NInternalResources::getTransliterator() { return tables().newTransliterator(); }

bool I18NInternalResources::getLocaleIdFroLCID(unsigned short lcid, std::string &localeName) {
  return xyl_std_memory::onCopy(localeName, [&](std::string &name) { return tables().localeForLCID(lcid, name); });
}

unsigned short I18NInternalResources::getLCIDForLocale(const char *localeName) {
  return tables().lcidForLocale(localeName);
}

void I18NInternalResources::getDefaultLocaleForLanguage(const char *name, std::string &localeName) {
  xyl_std_memory::onCopy(localeName, [&](std::string &locale) {
    tables().defaultLocaleForLanguage(name, locale);
    return 0;
  });
}

bool I18NInternalResources::getEncodingForLocale(const char *localeName, std::string &encoding) {
  return xyl_std_memory::onCopy(encoding,
                                [&](std::string &name) { return tables().encodingForLocale(localeName, name); });
}

void I18NInternalResources::getTimePeriodResources(const char *localeName, std::map<std::string, std::string> &words) {
  const char *directory = getBinaryDirectory();
  xyl_std_memory::onCopy(words, [&](std::map<std::string, std::string> &texts) {
    i18n_res::readCompanionTexts("./xyli18nrestp_", directory, localeName, texts);
    return 0;
  });
}

int I18NInternalResources::getUTF8BytesPerCodePoint() { return tables().utf8BytesPerCodePoint(); }

bool I18NInternalResources::useAsciiFastPath() { return tables().asciiFastPath(); }

// ---- Test access -----------------------------------------------------------------

void I18NInternalResourcesTestPeer::resetPaths() {
  gPathsDone.store(0, std::memory_order_release);
  deleteText(gBinaryDirectory);
  deleteText(gResourceFilePath);
  gBinaryDirectory = nullptr;
  gResourceFilePath = nullptr;
}

void I18NInternalResourcesTestPeer::setLibraryFileName(const char *fileName) { gLibraryFileNameForTesting = fileName; }

#include "i18n/cpp/posix/i18n_os_posix.inc"
