// SPDX-License-Identifier: Apache-2.0
// Operations that build a standard string or container must not let
// std::bad_alloc past a caller who catches XYLThrowable: memory running out
// raises XYLOutOfMemoryError and leaves the caller's objects as they were.
// This program replaces operator new to fail on a countdown, and also runs
// a child under an address-space limit where the system itself says no.
#include <XYLCore/ExceptionHierarchy/XYLErrors.h>
#include <XYLCore/FileManagement/XYLFmDir.h>
#include <XYLCore/PlugIns/XYLPluginLibraryLoader.h>
#include <XYLCore/Resources/XYLResourceFile.h>
#include <XYLCore/Utility/XYLUtConvert.h>
#include <XYLCore/Utility/XYLUtSystemInfo.h>
#include <XYLCore/i18n/cpp/i18n_init.h>
#include <XYLCore/i18n/cpp/i18n_internalresources.h>

#include <gtest/gtest.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <map>
#include <new>
#include <string>
#include <sys/resource.h>
#include <unistd.h>
#include <vector>

namespace {
std::atomic<long> g_newCountdown{0};
} // namespace

// Every operator new of the process (the library's included) comes here.
void *operator new(std::size_t size) {
  long left = g_newCountdown.load(std::memory_order_relaxed);
  if (left > 0 && g_newCountdown.fetch_sub(1, std::memory_order_relaxed) == 1)
    throw std::bad_alloc();
  if (void *block = std::malloc(size != 0 ? size : 1))
    return block;
  throw std::bad_alloc();
}
// The other forms share the same heap, so that every delete matches its new
// (AddressSanitizer checks that it does).
void *operator new(std::size_t size, const std::nothrow_t &) noexcept {
  try {
    return operator new(size);
  } catch (std::bad_alloc &) {
    return nullptr;
  }
}
void *operator new[](std::size_t size) { return operator new(size); }
void *operator new[](std::size_t size, const std::nothrow_t &tag) noexcept { return operator new(size, tag); }
void operator delete(void *block) noexcept { std::free(block); }
void operator delete(void *block, std::size_t) noexcept { std::free(block); }
void operator delete(void *block, const std::nothrow_t &) noexcept { std::free(block); }
void operator delete[](void *block) noexcept { std::free(block); }
void operator delete[](void *block, std::size_t) noexcept { std::free(block); }
void operator delete[](void *block, const std::nothrow_t &) noexcept { std::free(block); }

namespace {

class XYLStdAllocationTest : public ::testing::Test {
protected:
  void SetUp() override {
    ASSERT_NE(0, I18NInitialize());
    char pattern[] = "/tmp/xyl_stdalloc_XXXXXX";
    ASSERT_NE(nullptr, mkdtemp(pattern));
    dir = pattern;
    // A catalog: "BMF1", count, text size, one index entry, the text.
    const std::string text = "a message text longer than any short-string buffer";
    std::string bytes("BMF1\0\0\0\0", 8);
    for (unsigned word : {1u, static_cast<unsigned>(text.size() + 1), 7u, 0u, static_cast<unsigned>(text.size() + 1)})
      for (int shift = 24; shift >= 0; shift -= 8)
        bytes.push_back(static_cast<char>(word >> shift));
    bytes += text;
    bytes.push_back('\0');
    std::ofstream(dir + "/m.bmf", std::ios::binary) << bytes;
    std::ofstream(dir + "/a-file-with-a-long-enough-name") << "x";
  }
  void TearDown() override {
    std::remove((dir + "/m.bmf").c_str());
    std::remove((dir + "/a-file-with-a-long-enough-name").c_str());
    rmdir(dir.c_str());
    I18NTerminate();
  }
  std::string dir;
};

// Runs `call` with the n-th operator new failing, for n = 1, 2, ... until a
// run completes. Each failing run must raise XYLOutOfMemoryError, nothing
// else, and leave `unchanged()` true.
void everyNewFails(const char *what, const std::function<void()> &call, const std::function<bool()> &unchanged) {
  for (long n = 1; n < 2000; ++n) {
    const char *outcome = "completed";
    g_newCountdown = n;
    try {
      call();
    } catch (XYLOutOfMemoryError &) {
      outcome = nullptr;
    } catch (std::bad_alloc &) {
      outcome = "std::bad_alloc escaped";
    } catch (...) {
      outcome = "another exception escaped";
    }
    g_newCountdown = 0;
    if (outcome != nullptr && std::string(outcome) == "completed")
      return;
    if (outcome != nullptr) {
      ADD_FAILURE() << what << ": " << outcome << " at allocation " << n;
      return;
    }
    EXPECT_TRUE(unchanged()) << what << ": the object changed at allocation " << n;
  }
  ADD_FAILURE() << what << ": never completed";
}

TEST_F(XYLStdAllocationTest, OutOfMemoryIsALibraryErrorAndChangesNothing) {
  const std::string longText(40, 'k');
  XYLResourceFile file;
  ASSERT_NE(0, file.open("m", dir.c_str()));
  std::string result;
  everyNewFails(
      "getResource", [&] { result = file.getResource(7, nullptr); },
      [&] { return file.isOpen() != 0 && file.getPath() == dir + "/m.bmf"; });
  EXPECT_EQ("a message text longer than any short-string buffer", result);

  everyNewFails(
      "resolve", [&] { XYLResourceFactory::resolve("m", dir.c_str(), "de-de", true); }, [] { return true; });

  std::string text = longText, expected = longText;
  XYLUtConvert::longCvt(expected, -1234567, 30, '0', 1, '+', '-');
  everyNewFails(
      "longCvt", [&] { XYLUtConvert::longCvt(text, -1234567, 30, '0', 1, '+', '-'); },
      [&] { return text == longText; });
  EXPECT_EQ(expected, text);

  std::string pid = longText;
  everyNewFails(
      "getProcessId", [&] { XYLUtSystemInfo::getProcessId(pid); }, [&] { return pid == longText; });

  std::string base = "/a/base/directory/of/some/length/";
  everyNewFails(
      "joinPath", [&] { XYLFmDir::joinPath(base, "and-a-part-long-enough-to-grow-it"); },
      [&] { return base == "/a/base/directory/of/some/length/"; });

  std::string directory = longText, name = longText;
  everyNewFails(
      "splitPath", [&] { XYLFmDir::splitPath("/some/directory/name/with-a-long-file-name", &directory, &name); },
      [&] { return directory == longText && name == longText; });

  std::vector<std::string> files(1, longText), directories;
  everyNewFails(
      "readDir", [&] { XYLFmDir::readDir(dir.c_str(), &files, nullptr, &directories, nullptr); },
      [&] { return files.size() == 1 && directories.empty(); });
  EXPECT_EQ(3u, files.size());

  std::map<std::string, std::string> words = {{"KEPT", "as it was"}};
  const std::map<std::string, std::string> before = words;
  everyNewFails(
      "getTimePeriodResources", [&] { I18NInternalResources::getTimePeriodResources("de-de", words); },
      [&] { return words == before; });

  const std::string library = dir + "/no-such-library-with-a-long-name.so";
  everyNewFails(
      "load",
      [&] {
        try {
          XYLPluginLibraryLoader::load(library);
        } catch (XYLPluginException &) {
        }
      },
      [] { return true; });
}

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define XYL_SANITIZED 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define XYL_SANITIZED 1
#endif
#endif

#ifndef XYL_SANITIZED
// The child of the limit test: a 64 MiB string at full capacity, an address
// space capped 16 MiB above what is mapped, and appends that need twice that.
[[noreturn]] void appendUnderAddressSpaceLimit() {
  std::string text(64u << 20, 'x');
  text.shrink_to_fit();
  const std::size_t size = text.size();
  long pages = 0;
  std::FILE *statm = std::fopen("/proc/self/statm", "r");
  if (statm == nullptr || std::fscanf(statm, "%ld", &pages) != 1)
    std::_Exit(5);
  std::fclose(statm);
  struct rlimit cap;
  cap.rlim_cur = cap.rlim_max = static_cast<rlim_t>(pages) * static_cast<rlim_t>(sysconf(_SC_PAGESIZE)) + (16u << 20);
  if (setrlimit(RLIMIT_AS, &cap) != 0)
    std::_Exit(6);
  try {
    for (int i = 0; i < 64; ++i)
      XYLUtConvert::longCvt(text, 42, 20, ' ', 0, '+', '-');
  } catch (XYLOutOfMemoryError &) {
    std::_Exit(text.size() == size ? 0 : 2);
  } catch (...) {
    std::_Exit(3);
  }
  std::_Exit(4);
}
#endif

// The same through the system's own refusal.
TEST(XYLStdAllocationLimitTest, AddressSpaceLimitGivesOutOfMemoryError) {
#ifdef XYL_SANITIZED
  GTEST_SKIP() << "sanitizers reserve their own address space";
#else
  ::testing::FLAGS_gtest_death_test_style = "threadsafe";
  EXPECT_EXIT(appendUnderAddressSpaceLimit(), ::testing::ExitedWithCode(0), "");
#endif
}

} // namespace
