// SPDX-License-Identifier: Apache-2.0
#include <XYLCore/PlugIns/XYLPluginLibraryLoader.h>

#include "XYLFmDirTestAccess.h"
#include "XYLTraceLines.h"

#include <XYLCore/ExceptionHierarchy/XYLErrors.h>

#include <gtest/gtest.h>

#include <dlfcn.h>
#include <fstream>
#include <string>

namespace {

const std::string kPlugin = XYLTEST_PLUGIN_PATH;
const std::string kUnresolved = XYLTEST_UNRESOLVED_PLUGIN_PATH;

// The system loader's own text for a path that fails to load.
std::string systemText(const std::string &path) {
  void *handle = ::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (handle != nullptr) {
    ::dlclose(handle);
    return "(loaded)";
  }
  return ::dlerror();
}

std::string directoryOf(const std::string &path) { return path.substr(0, path.rfind('/')); }
std::string nameOf(const std::string &path) { return path.substr(path.rfind('/') + 1); }

// Loads `path`, which must fail; returns the exception.
XYLPluginException loadFailure(const std::string &path) {
  try {
    void *handle = XYLPluginLibraryLoader::load(path);
    XYLPluginLibraryLoader::unload(handle);
  } catch (XYLPluginException &e) {
    return e;
  }
  ADD_FAILURE() << "loaded " << path;
  return XYLPluginException(XYLSeverityError, 0);
}

TEST(XYLPluginLibraryLoaderTest, LoadResolveRunAndUnload) {
  void *handle = XYLPluginLibraryLoader::load(kPlugin);
  ASSERT_NE(nullptr, handle);
  auto state = reinterpret_cast<int (*)()>(XYLPluginLibraryLoader::findSymbol(handle, "xyltestPluginState"));
  auto start =
      reinterpret_cast<XYLPluginRoutine>(XYLPluginLibraryLoader::findSymbol(handle, "xyltestPluginInitialize"));
  auto stop = reinterpret_cast<XYLPluginRoutine>(XYLPluginLibraryLoader::findSymbol(handle, "xyltestPluginTerminate"));
  ASSERT_NE(nullptr, state);
  ASSERT_NE(nullptr, start);
  ASSERT_NE(nullptr, stop);
  EXPECT_EQ(0, state());
  XYLPluginLibraryLoader::initialize(handle, start);
  EXPECT_EQ(1, state());
  XYLPluginLibraryLoader::terminate(nullptr, stop); // the handle is not used
  EXPECT_EQ(2, state());
  XYLPluginLibraryLoader::initialize(handle, nullptr);
  XYLPluginLibraryLoader::terminate(handle, nullptr);
  EXPECT_EQ(2, state());

  EXPECT_EQ(nullptr, XYLPluginLibraryLoader::findSymbol(handle, "xyltestNoSuchSymbol"));
  EXPECT_EQ(nullptr, XYLPluginLibraryLoader::findSymbol(handle, nullptr));
  EXPECT_EQ(nullptr, XYLPluginLibraryLoader::findSymbol(nullptr, "xyltestPluginState"));
  EXPECT_EQ(nullptr, ::dlerror()) << "a failed lookup leaves no loader text behind";

  // Loads are counted: a second load gives the same handle, and the library
  // stays until the last unload.
  void *again = XYLPluginLibraryLoader::load(kPlugin);
  EXPECT_EQ(handle, again);
  XYLPluginLibraryLoader::unload(again);
  EXPECT_EQ(2, state()) << "still loaded after one of two unloads";
  XYLPluginLibraryLoader::unload(handle);
  void *fresh = XYLPluginLibraryLoader::load(kPlugin);
  auto freshState = reinterpret_cast<int (*)()>(XYLPluginLibraryLoader::findSymbol(fresh, "xyltestPluginState"));
  EXPECT_EQ(0, freshState()) << "the last unload unloaded it";
  XYLPluginLibraryLoader::unload(fresh);
}

TEST(XYLPluginLibraryLoaderTest, LoadFailuresCarryTheSystemTextAndThePath) {
  xyltest::ScratchDirectory scratch;
  const std::string notALibrary = scratch / "text.so";
  std::ofstream(notALibrary) << std::string(256, 'x'); // long enough to be read as a header
  struct Case {
    const char *what;
    std::string path;
    const char *mustContain;
  };
  const Case cases[] = {
      {"missing file", scratch / "libmissing.so", "No such file"},
      {"not a library", notALibrary, "ELF"},
      {"unresolved symbol", kUnresolved, "xyltestSymbolNobodyDefines"},
      {"a directory", scratch.path(), nullptr},
  };
  for (const Case &c : cases) {
    XYLPluginException e = loadFailure(c.path);
    const std::string expected = systemText(c.path) + " (" + c.path + ")";
    EXPECT_EQ(expected, e.getMessage() ? e.getMessage() : "(null)") << c.what;
    if (c.mustContain != nullptr) {
      EXPECT_NE(std::string::npos, expected.find(c.mustContain)) << c.what << ": " << expected;
    }
    EXPECT_EQ(1, e.getErrorCode()) << c.what;
    EXPECT_EQ(XYLSeverityError, e.getSeverity()) << c.what;
    EXPECT_STREQ("XYLPluginException", e.getThrowableName());
    const std::vector<std::string> lines = xyltest::traceLines(e);
    ASSERT_EQ(1u, lines.size()) << c.what;
    EXPECT_EQ(0u, lines[0].find("PlugIns/XYLPluginLibraryLoader(")) << lines[0];
    EXPECT_NE(std::string::npos, lines[0].find("):XYLPluginException: XYL_THROW: XYLPluginLibraryLoader::load"))
        << lines[0];
    const std::string xml = e.toString();
    EXPECT_NE(std::string::npos, xml.find("<MessageText>" + expected + "</MessageText>")) << xml;
    EXPECT_NE(std::string::npos, xml.find("Error=\"1\" Severity=\"Error\"")) << xml;
  }
  XYLPluginException empty = loadFailure("");
  EXPECT_EQ(std::string(strerror(ENOENT)) + " ()", empty.getMessage() ? empty.getMessage() : "(null)")
      << "an empty path is not the program itself";
}

TEST(XYLPluginLibraryLoaderTest, RelativePathsFollowTheEffectiveWorkingDirectory) {
  const std::string directory = directoryOf(kPlugin);
  xyltest::ScopedEffectiveWorkingDir effective(directory);
  void *handle = XYLPluginLibraryLoader::load(nameOf(kPlugin));
  ASSERT_NE(nullptr, handle);
  EXPECT_NE(nullptr, XYLPluginLibraryLoader::findSymbol(handle, "xyltestPluginState"));
  XYLPluginLibraryLoader::unload(handle);

  XYLPluginException e = loadFailure("libxyltest_absent.so");
  const std::string resolved = directory + "/libxyltest_absent.so";
  EXPECT_EQ(systemText(resolved) + " (" + resolved + ")", e.getMessage() ? e.getMessage() : "(null)");
}

TEST(XYLPluginLibraryLoaderTest, UnloadFailures) {
  try {
    XYLPluginLibraryLoader::unload(nullptr);
    ADD_FAILURE() << "unloaded a null handle";
  } catch (XYLPluginException &e) {
    EXPECT_EQ(2, e.getErrorCode());
    EXPECT_EQ(XYLSeverityError, e.getSeverity());
    EXPECT_STREQ("", e.getMessage()) << "the system was not asked: no text";
    const std::vector<std::string> lines = xyltest::traceLines(e);
    ASSERT_EQ(1u, lines.size());
    EXPECT_NE(std::string::npos, lines[0].find("XYL_THROW: XYLPluginLibraryLoader::unload")) << lines[0];
  }
}

} // namespace
