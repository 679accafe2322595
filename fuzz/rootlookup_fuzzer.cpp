// SPDX-License-Identifier: Apache-2.0
// Fuzz target: the values the installation-root lookup reads from outside:
// QOR_EXEC_PATH / QOR_ROOT and the first line of ./qorroot.link. Byte 0
// picks the source; the rest is the value. The lookup must always end with
// a directory and a resource file path, and __changeResourceFileName must
// keep the path well-formed.
#include "i18n/cpp/i18n_testpeer.h"

#include <XYLCore/i18n/cpp/i18n_internalresources.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <unistd.h>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  if (size < 1)
    return 0;
  static const std::string dir = [] {
    char pattern[] = "/tmp/xylrootfuzzXXXXXX";
    const char *made = mkdtemp(pattern);
    return std::string(made != nullptr ? made : "/tmp");
  }();
  const std::string value(reinterpret_cast<const char *>(data + 1), size - 1);
  unsetenv("QOR_EXEC_PATH");
  unsetenv("QOR_ROOT");
  I18NInternalResourcesTestPeer::setLibraryFileName(nullptr);
  const std::string link = dir + "/qorroot.link";
  std::remove(link.c_str());
  switch (data[0] % 3) {
  case 0:
    setenv("QOR_EXEC_PATH", value.c_str(), 1);
    break;
  case 1:
    setenv("QOR_ROOT", value.c_str(), 1);
    break;
  default: {
    std::FILE *file = std::fopen(link.c_str(), "wb");
    if (file != nullptr) {
      std::fwrite(value.data(), 1, value.size(), file);
      std::fclose(file);
    }
    I18NInternalResourcesTestPeer::setLibraryFileName("/libXYLCore.so.1");
    break;
  }
  }
  char previous[4096];
  const bool haveCwd = getcwd(previous, sizeof previous) != nullptr;
  if (chdir(dir.c_str()) != 0)
    return 0;
  I18NInternalResourcesTestPeer::resetPaths();
  I18NInternalResources::setDataDirectoryPath();
  const std::string path = I18NInternalResources::getResourceFilePath();
  if (path.find("i18n_res.xml") == std::string::npos)
    std::abort(); // the file name is always joined on
  __changeResourceFileName(value.c_str());
  I18NInternalResourcesTestPeer::resetPaths();
  I18NInternalResourcesTestPeer::setLibraryFileName(nullptr);
  if (haveCwd && chdir(previous) != 0)
    return 0;
  return 0;
}
