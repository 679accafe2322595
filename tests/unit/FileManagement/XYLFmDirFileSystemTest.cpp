// SPDX-License-Identifier: Apache-2.0
// XYLFmDir's file-system and temporary-file operations on real directories.
#include <XYLCore/FileManagement/XYLFmDir.h>

#include "XYLChildProcess.h"
#include "XYLFmDirTestAccess.h"

#include <XYLCore/i18n/cpp/i18n_converter.h>
#include <XYLCore/i18n/cpp/i18n_string.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <ctime>
#include <fstream>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace {

const int kDir = XYLFmDir::EXISTS_DIRECTORY;
const int kFile = XYLFmDir::EXISTS_FILE;
const int kReadWriteDir = XYLFmDir::EXISTS_READ_WRITE_DIRECTORY;

void touch(const std::string &path, const std::string &content = "") {
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  out << content;
}

bool isDirectory(const std::string &path) {
  struct stat info;
  return ::lstat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode);
}

bool isRegular(const std::string &path) {
  struct stat info;
  return ::lstat(path.c_str(), &info) == 0 && S_ISREG(info.st_mode);
}

bool present(const std::string &path) {
  struct stat info;
  return ::lstat(path.c_str(), &info) == 0;
}

std::vector<std::string> sorted(std::vector<std::string> names) {
  std::sort(names.begin(), names.end());
  return names;
}

std::string utf8(const I18NString &text) { return text.c_str("UTF-8"); }

I18NString text(const std::string &bytes) { return I18NString(bytes.c_str(), "UTF-8"); }

bool utf8Platform() { return I18NConverter::isUTF8(I18NGetPlatformDefaultEncoding()); }

class XYLFmDirFileSystemTest : public ::testing::Test {
protected:
  xyltest::ScratchDirectory m_scratch;
};

TEST_F(XYLFmDirFileSystemTest, ExistsComparesTypeAndPermissions) {
  const std::string dir = m_scratch / "dir";
  const std::string file = m_scratch / "file";
  const std::string link = m_scratch / "link";
  ASSERT_EQ(0, ::mkdir(dir.c_str(), 0755));
  touch(file);
  ASSERT_EQ(0, ::symlink(dir.c_str(), link.c_str()));
  struct Case {
    std::string path;
    int mode;
    int expected;
  };
  const Case cases[] = {
      {dir, kDir, 1},
      {dir, kReadWriteDir, 1},
      {dir, kFile, 0},
      {file, kFile, 1},
      {file, kFile | 0600, 1},
      {file, kDir, 0},
      {link, kDir, 1}, // links are followed
      {m_scratch / "missing", kDir, 0},
      {m_scratch / "missing", kFile, 0},
      {"", kDir, 0},
      {dir, 0, 0},               // no type asked for: nothing has none
      {dir, kDir | 01000, 0},    // sticky bit asked, not set
      {"/tmp", kDir | 01000, 1}, // /tmp carries the sticky bit
      {m_scratch / std::string(300, 'x'), kDir, 0},
  };
  for (const Case &c : cases)
    EXPECT_EQ(c.expected, XYLFmDir::exists(c.path.c_str(), c.mode))
        << c.path.substr(0, 80) << " " << std::hex << c.mode;
  EXPECT_EQ(0, XYLFmDir::exists(static_cast<const char *>(nullptr), kDir));
  EXPECT_EQ(1, XYLFmDir::exists(text(dir), kDir));
  EXPECT_EQ(0, XYLFmDir::exists(text(file), kDir));
}

TEST_F(XYLFmDirFileSystemTest, PermissionBitsAreThisProcessesAccess) {
  const std::string dir = m_scratch / "shared";
  ASSERT_EQ(0, ::mkdir(dir.c_str(), 0777));
  ASSERT_EQ(0, ::chmod(dir.c_str(), 0777));
  const std::string root = m_scratch.path();
  // As nobody, the 0700 scratch directory of the test's user can be
  // examined but not read or written, and nothing inside can be reached.
  const std::string report = xyltest::runInChild(
      [&]() -> std::string {
        if (::access(root.c_str(), W_OK) == 0)
          return "skip";
        std::string failures;
        if (XYLFmDir::exists(root.c_str(), kDir) != 1)
          failures += " type";
        if (XYLFmDir::exists(root.c_str(), kReadWriteDir) != 0)
          failures += " read-write";
        if (XYLFmDir::exists(dir.c_str(), kDir) != 0)
          failures += " inside";
        if (XYLFmDir::createDir((root + "/new").c_str()) != 0 || errno != EACCES)
          failures += " createDir";
        std::string made;
        if (XYLFmDir::createTempFile(root.c_str(), "t", made) != 0 || !made.empty())
          failures += " createTempFile";
        return failures;
      },
      true);
  if (report == "skip")
    GTEST_SKIP() << "the test runs without a second user to check permissions with";
  EXPECT_EQ("", report);
}

TEST_F(XYLFmDirFileSystemTest, CreateDirAndCreateRecursiveDir) {
  const std::string one = m_scratch / "one";
  EXPECT_EQ(1, XYLFmDir::createDir(one.c_str()));
  EXPECT_TRUE(isDirectory(one));
  EXPECT_EQ(0, XYLFmDir::createDir(one.c_str())) << "exists already";
  EXPECT_EQ(EEXIST, errno);
  EXPECT_EQ(0, XYLFmDir::createDir((m_scratch / "no/parent").c_str()));
  EXPECT_EQ(0, XYLFmDir::createDir(""));
  EXPECT_EQ(0, XYLFmDir::createDir(static_cast<const char *>(nullptr)));

  touch(m_scratch / "plainfile");
  struct Case {
    std::string path;
    int expected;
    std::string mustExist;
  };
  const Case cases[] = {
      {m_scratch / "a/b/c", 1, m_scratch / "a/b/c"},
      {m_scratch / "a/b/c", 0, m_scratch / "a/b/c"}, // the whole path exists
      {m_scratch / "a/b/d", 1, m_scratch / "a/b/d"}, // one level missing
      {m_scratch / "t/u/", 1, m_scratch / "t/u"},    // trailing separator
      {m_scratch / "p//q///r", 1, m_scratch / "p/q/r"},
      {m_scratch / "plainfile/sub/dir", 0, ""},
      {m_scratch / (std::string(300, 'l') + "/x"), 0, ""},
  };
  for (const Case &c : cases) {
    EXPECT_EQ(c.expected, XYLFmDir::createRecursiveDir(c.path.c_str())) << c.path.substr(0, 80);
    if (!c.mustExist.empty()) {
      EXPECT_TRUE(isDirectory(c.mustExist)) << c.mustExist;
    }
  }
  EXPECT_EQ(0, XYLFmDir::createRecursiveDir(""));

  // A relative path, against the process's current directory.
  char previous[PATH_MAX];
  ASSERT_NE(nullptr, ::getcwd(previous, sizeof previous));
  ASSERT_EQ(0, ::chdir(m_scratch.path().c_str()));
  const int relative = XYLFmDir::createRecursiveDir("rel/ative/path");
  ASSERT_EQ(0, ::chdir(previous));
  EXPECT_EQ(1, relative);
  EXPECT_TRUE(isDirectory(m_scratch / "rel/ative/path"));

  EXPECT_EQ(1, XYLFmDir::createRecursiveDir(text(m_scratch / "i18n/deep")));
  EXPECT_TRUE(isDirectory(m_scratch / "i18n/deep"));
  EXPECT_EQ(1, XYLFmDir::createDir(text(m_scratch / "i18n/deep/er")));
}

TEST_F(XYLFmDirFileSystemTest, RemoveFileAndRenameFile) {
  const std::string file = m_scratch / "file";
  const std::string dir = m_scratch / "dir";
  touch(file, "1");
  ASSERT_EQ(0, ::mkdir(dir.c_str(), 0755));
  EXPECT_EQ(0, XYLFmDir::removeFile(dir.c_str())) << "a directory is not a file";
  EXPECT_TRUE(isDirectory(dir));
  EXPECT_EQ(0, XYLFmDir::removeFile((m_scratch / "missing").c_str()));

  const std::string other = m_scratch / "other";
  touch(other, "2");
  EXPECT_EQ(0, XYLFmDir::renameFile(file.c_str(), other.c_str())) << "the target exists";
  EXPECT_EQ(EEXIST, errno);
  EXPECT_TRUE(isRegular(file));
  EXPECT_TRUE(isRegular(other));
  const std::string moved = m_scratch / "moved";
  EXPECT_EQ(1, XYLFmDir::renameFile(file.c_str(), moved.c_str()));
  EXPECT_FALSE(present(file));
  EXPECT_TRUE(isRegular(moved));
  EXPECT_EQ(0, XYLFmDir::renameFile(file.c_str(), moved.c_str())) << "the source is gone";
  EXPECT_EQ(1, XYLFmDir::renameFile(text(moved), text(file)));
  EXPECT_EQ(1, XYLFmDir::removeFile(text(file)));
  EXPECT_FALSE(present(file));
  EXPECT_EQ(1, XYLFmDir::removeFile(other.c_str()));
}

TEST_F(XYLFmDirFileSystemTest, ReadDirSeparatesFilesAndDirectories) {
  const std::string dir = m_scratch / "list";
  ASSERT_EQ(0, ::mkdir(dir.c_str(), 0755));
  touch(dir + "/f1");
  touch(dir + "/f2");
  ASSERT_EQ(0, ::mkdir((dir + "/d1").c_str(), 0755));
  ASSERT_EQ(0, ::symlink((dir + "/d1").c_str(), (dir + "/linkToDir").c_str()));

  std::vector<std::string> files, directories;
  EXPECT_EQ(1, XYLFmDir::readDir(dir.c_str(), &files, "ignored", &directories, nullptr));
  EXPECT_EQ((std::vector<std::string>{"f1", "f2", "linkToDir"}), sorted(files));
  EXPECT_EQ((std::vector<std::string>{"d1"}), directories);

  // Lists are appended to; either may be left out.
  EXPECT_EQ(1, XYLFmDir::readDir(dir.c_str(), &files, nullptr, nullptr, nullptr));
  EXPECT_EQ(6u, files.size());
  std::vector<std::string> onlyDirectories;
  EXPECT_EQ(1, XYLFmDir::readDir(dir.c_str(), nullptr, nullptr, &onlyDirectories, nullptr));
  EXPECT_EQ((std::vector<std::string>{"d1"}), onlyDirectories);

  EXPECT_EQ(0, XYLFmDir::readDir(dir.c_str(), nullptr, nullptr, nullptr, nullptr)) << "no list at all";
  std::vector<std::string> none;
  EXPECT_EQ(0, XYLFmDir::readDir((m_scratch / "missing").c_str(), &none, nullptr, &none, nullptr));
  EXPECT_EQ(0, XYLFmDir::readDir((dir + "/f1").c_str(), &none, nullptr, &none, nullptr)) << "not a directory";
  EXPECT_EQ(0, XYLFmDir::readDir("", &none, nullptr, &none, nullptr));
  EXPECT_TRUE(none.empty());
  ASSERT_EQ(0, ::mkdir((m_scratch / "empty").c_str(), 0755));
  EXPECT_EQ(1, XYLFmDir::readDir((m_scratch / "empty").c_str(), &none, nullptr, &none, nullptr));
  EXPECT_TRUE(none.empty());
}

TEST_F(XYLFmDirFileSystemTest, ReadDirI18NFormSkipsNamesTheEncodingCannotHold) {
  const std::string dir = m_scratch / "names";
  ASSERT_EQ(0, ::mkdir(dir.c_str(), 0755));
  touch(dir + "/plain");
  touch(dir + "/bad\xff");
  std::vector<std::string> bytes;
  EXPECT_EQ(1, XYLFmDir::readDir(dir.c_str(), &bytes, nullptr, nullptr, nullptr));
  EXPECT_EQ((std::vector<std::string>{"bad\xff", "plain"}), sorted(bytes));

  std::vector<I18NString> files, directories;
  EXPECT_EQ(0, XYLFmDir::readDir(text(dir), &files, nullptr, &directories, nullptr))
      << "0xFF is valid in no multibyte encoding and means y-umlaut in Latin-1";
  if (utf8Platform()) {
    ASSERT_EQ(1u, files.size());
    EXPECT_EQ("plain", utf8(files[0]));
  }
  EXPECT_TRUE(directories.empty());
  ::unlink((dir + "/bad\xff").c_str());
  files.clear();
  EXPECT_EQ(1, XYLFmDir::readDir(text(dir), &files, nullptr, &directories, nullptr));
  EXPECT_EQ(1u, files.size());
}

TEST_F(XYLFmDirFileSystemTest, RemoveDirRemovesTheTreeButNeverFollowsLinks) {
  const std::string outside = m_scratch / "outside";
  ASSERT_EQ(0, ::mkdir(outside.c_str(), 0755));
  touch(outside + "/keep");
  const std::string tree = m_scratch / "tree";
  ASSERT_EQ(1, XYLFmDir::createRecursiveDir((tree + "/a/b/c").c_str()));
  touch(tree + "/top");
  touch(tree + "/a/mid");
  touch(tree + "/a/b/c/leaf");
  ASSERT_EQ(0, ::mkdir((tree + "/emptyDir").c_str(), 0755));
  ASSERT_EQ(0, ::symlink(outside.c_str(), (tree + "/a/linkOut").c_str()));

  EXPECT_EQ(1, XYLFmDir::removeDir(tree.c_str()));
  EXPECT_FALSE(present(tree));
  EXPECT_TRUE(isRegular(outside + "/keep")) << "the link was followed";

  EXPECT_EQ(0, XYLFmDir::removeDir(tree.c_str())) << "gone already";
  EXPECT_EQ(0, XYLFmDir::removeDir(""));
  ASSERT_EQ(1, XYLFmDir::createRecursiveDir((tree + "/x").c_str()));
  EXPECT_EQ(1, XYLFmDir::removeDir(text(tree)));
  EXPECT_FALSE(present(tree));
}

TEST_F(XYLFmDirFileSystemTest, RemoveDirStopsAtTheFirstFailure) {
  // A writable tree whose read-only subdirectory holds a file: as a user
  // who is not root (nobody, when the test runs as root), the tree's own
  // files go, the subdirectory's file cannot, and nothing else is touched.
  ASSERT_EQ(0, ::chmod(m_scratch.path().c_str(), 0755));
  const std::string tree = m_scratch / "guarded";
  ASSERT_EQ(1, XYLFmDir::createRecursiveDir((tree + "/locked").c_str()));
  ASSERT_EQ(0, ::chmod(tree.c_str(), 0777));
  touch(tree + "/top");
  touch(tree + "/locked/inner");
  ASSERT_EQ(0, ::chmod((tree + "/locked").c_str(), 0555));
  const std::string report = xyltest::runInChild(
      [&tree]() -> std::string {
        if (::access((tree + "/locked").c_str(), W_OK) == 0)
          return "skip";
        return XYLFmDir::removeDir(tree.c_str()) == 0 ? "" : "removeDir succeeded";
      },
      true);
  ::chmod((tree + "/locked").c_str(), 0755);
  if (report == "skip")
    GTEST_SKIP() << "this process may write a read-only directory: no failure to provoke";
  EXPECT_EQ("", report);
  EXPECT_FALSE(present(tree + "/top"));
  EXPECT_TRUE(isRegular(tree + "/locked/inner"));
  EXPECT_TRUE(isDirectory(tree));
}

TEST_F(XYLFmDirFileSystemTest, GetTempPathOrder) {
  const std::string a = m_scratch / "a";
  const std::string b = m_scratch / "b";
  const std::string c = m_scratch / "c";
  const std::string d = m_scratch / "d";
  for (const std::string &dir : {a, b, c, d})
    ASSERT_EQ(0, ::mkdir(dir.c_str(), 0755));
  const std::string missing = m_scratch / "missing";
  struct Case {
    const char *name;
    const char *tmp, *lowerTmp, *temp, *lowerTemp, *tmpdir;
    std::string expected;
  };
  const Case cases[] = {
      {"TMP first", a.c_str(), b.c_str(), c.c_str(), d.c_str(), nullptr, a},
      {"then tmp", nullptr, b.c_str(), c.c_str(), d.c_str(), nullptr, b},
      {"then TEMP", nullptr, nullptr, c.c_str(), d.c_str(), nullptr, c},
      {"then temp", nullptr, nullptr, nullptr, d.c_str(), nullptr, d},
      {"unusable TMP skips the others", missing.c_str(), b.c_str(), c.c_str(), d.c_str(), nullptr, P_tmpdir},
      {"unusable TMP, then TMPDIR", missing.c_str(), b.c_str(), nullptr, nullptr, d.c_str(), d},
      {"empty TMP counts as set", "", b.c_str(), nullptr, nullptr, c.c_str(), c},
      {"TMPDIR", nullptr, nullptr, nullptr, nullptr, a.c_str(), a},
      {"unusable TMPDIR", nullptr, nullptr, nullptr, nullptr, missing.c_str(), P_tmpdir},
      {"nothing set", nullptr, nullptr, nullptr, nullptr, nullptr, P_tmpdir},
  };
  for (const Case &testCase : cases) {
    xyltest::ScopedEnvironment tmp("TMP", testCase.tmp), lowerTmp("tmp", testCase.lowerTmp),
        temp("TEMP", testCase.temp), lowerTemp("temp", testCase.lowerTemp), tmpdir("TMPDIR", testCase.tmpdir);
    std::string result = "stale";
    EXPECT_EQ(1, XYLFmDir::getTempPath(result)) << testCase.name;
    EXPECT_EQ(testCase.expected, result) << testCase.name;
  }
  {
    // An explicit directory wins over everything, used as set.
    xyltest::ScopedEnvironment tmp("TMP", a.c_str());
    xyltest::ScopedTempPath explicitPath(missing + "//");
    std::string result;
    EXPECT_EQ(1, XYLFmDir::getTempPath(result));
    EXPECT_EQ(missing, result);
    I18NString wide;
    EXPECT_EQ(1, XYLFmDir::getTempPath(wide));
    EXPECT_EQ(missing, utf8(wide));
  }
  xyltest::ScopedEnvironment tmp("TMP", a.c_str());
  std::string result;
  EXPECT_EQ(1, XYLFmDir::getTempPath(result));
  EXPECT_EQ(a, result) << "clearing the explicit directory";
}

TEST_F(XYLFmDirFileSystemTest, CreateTempFileAndDirNames) {
  const std::string dir = m_scratch.path();
  std::string result;
  const long long before = std::time(nullptr);
  ASSERT_EQ(1, XYLFmDir::createTempFile(dir.c_str(), "pre", result, ".tmp"));
  const long long after = std::time(nullptr);
  EXPECT_TRUE(isRegular(result));
  struct stat info;
  ASSERT_EQ(0, ::stat(result.c_str(), &info));
  EXPECT_EQ(0600u, info.st_mode & 0777u);
  // <dir>/pre<time>0.tmp
  bool matched = false;
  for (long long t = before; t <= after; ++t)
    matched = matched || result == dir + "/pre" + std::to_string(t) + "0.tmp";
  EXPECT_TRUE(matched) << result;

  std::string second;
  ASSERT_EQ(1, XYLFmDir::createTempFile(dir.c_str(), "pre", second, ".tmp"));
  EXPECT_NE(result, second);

  std::string made;
  ASSERT_EQ(1, XYLFmDir::createTempDir(dir.c_str(), nullptr, made));
  EXPECT_TRUE(isDirectory(made));
  EXPECT_EQ(0u, made.find(dir + "/XYLFm")) << made;
  ASSERT_EQ(1, XYLFmDir::createTempDir(dir.c_str(), "", made, "_d"));
  EXPECT_TRUE(isDirectory(made)) << "an empty prefix still names an entry inside the directory";
  EXPECT_EQ(0u, made.find(dir + "/")) << made;
  EXPECT_EQ("_d", made.substr(made.size() - 2));

  // A null directory means the temporary directory.
  xyltest::ScopedTempPath explicitPath(dir);
  ASSERT_EQ(1, XYLFmDir::createTempFile(nullptr, "n", made));
  EXPECT_EQ(0u, made.find(dir + "/n")) << made;
  EXPECT_TRUE(isRegular(made));

  I18NString wideDir = text(dir), prefix = text("wide"), suffix = text(".x"), wide;
  ASSERT_EQ(1, XYLFmDir::createTempFile(&wideDir, &prefix, wide, &suffix));
  EXPECT_TRUE(isRegular(utf8(wide)));
  ASSERT_EQ(1, XYLFmDir::createTempDir(nullptr, nullptr, wide));
  EXPECT_TRUE(isDirectory(utf8(wide)));
}

TEST_F(XYLFmDirFileSystemTest, CreateTempRefusesUnusableDirectories) {
  touch(m_scratch / "file");
  const std::string directories[] = {m_scratch / "missing", m_scratch / "file", "", std::string(5000, 'x')};
  for (const std::string &dir : directories) {
    std::string result = "stale";
    EXPECT_EQ(0, XYLFmDir::createTempFile(dir.c_str(), "p", result)) << dir.substr(0, 40);
    EXPECT_EQ("", result);
    result = "stale";
    EXPECT_EQ(0, XYLFmDir::createTempDir(dir.c_str(), "p", result)) << dir.substr(0, 40);
    EXPECT_EQ("", result);
  }
  I18NString wide = text("stale");
  const std::string missing = m_scratch / "missing";
  I18NString wideMissing = text(missing);
  EXPECT_EQ(0, XYLFmDir::createTempDir(&wideMissing, nullptr, wide));
  EXPECT_TRUE(wide.empty());
}

TEST_F(XYLFmDirFileSystemTest, CreateTempGivesUpAfter500Candidates) {
  const std::string dir = m_scratch.path();
  // The names hold the time of the call, so occupy every name of this
  // second and the next, and retry should the clock pass both.
  for (int attempt = 0; attempt < 5; ++attempt) {
    const long long now = std::time(nullptr);
    for (long long t = now; t <= now + 1; ++t)
      for (int n = 0; n < 500; ++n)
        touch(dir + "/full" + std::to_string(t) + std::to_string(n));
    std::string result = "stale";
    const int made = XYLFmDir::createTempFile(dir.c_str(), "full", result);
    if (std::time(nullptr) > now + 1)
      continue;
    EXPECT_EQ(0, made) << result;
    EXPECT_EQ("", result);
    // The 501st name is free but is not tried.
    EXPECT_FALSE(present(dir + "/full" + std::to_string(now) + "500"));
    return;
  }
  FAIL() << "the clock moved too fast to occupy the names";
}

TEST_F(XYLFmDirFileSystemTest, I18NPathFunctions) {
  I18NString base = text("/srv/data");
  EXPECT_EQ(1, XYLFmDir::joinPath(base, text("x")));
  EXPECT_EQ("/srv/data/x", utf8(base));
  EXPECT_EQ(1, XYLFmDir::joinPath(base, text("/abs")));
  EXPECT_EQ("/abs", utf8(base));
  I18NString directory, name;
  EXPECT_EQ(1, XYLFmDir::splitPath(text("a\\b\\c.txt"), &directory, &name, XYLFmPathStyleWindows));
  EXPECT_EQ("a\\b", utf8(directory));
  EXPECT_EQ("c.txt", utf8(name));

  if (utf8Platform()) {
    I18NString wide = text("/d\xc3\xa9j\xc3\xa0");
    EXPECT_EQ(1, XYLFmDir::joinPath(wide, text("\xe4\xb8\xad")));
    EXPECT_EQ("/d\xc3\xa9j\xc3\xa0/\xe4\xb8\xad", utf8(wide));
    EXPECT_EQ(1, XYLFmDir::splitPath(wide, &directory, &name));
    EXPECT_EQ("\xe4\xb8\xad", utf8(name));
  }

  // A NUL character makes the path unusable.
  I18NString nulPath = text("a");
  nulPath.append(0u).append(static_cast<unsigned int>('b'));
  ASSERT_EQ(3, nulPath.length());
  directory = text("stale");
  EXPECT_EQ(0, XYLFmDir::splitPath(nulPath, &directory, &name));
  EXPECT_TRUE(directory.empty());
  I18NString unchanged = text("keep");
  EXPECT_EQ(0, XYLFmDir::joinPath(unchanged, nulPath));
  EXPECT_EQ("keep", utf8(unchanged));
  EXPECT_EQ(0, XYLFmDir::exists(nulPath, kDir));
  EXPECT_EQ(0, XYLFmDir::createDir(nulPath));
  EXPECT_EQ(EINVAL, errno);

  xyltest::ScopedEffectiveWorkingDir effective("/work/dir");
  I18NString relative = text("rel/file");
  EXPECT_EQ("/work/dir/rel/file", utf8(XYLFmDir::resolveEffectivePath(relative)));
  I18NString absolute = text("/abs/file");
  EXPECT_EQ("/abs/file", utf8(XYLFmDir::resolveEffectivePath(absolute)));
}

} // namespace
