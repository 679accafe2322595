// SPDX-License-Identifier: Apache-2.0
#include <XYLCore/FileManagement/XYLFmDir.h>

#include "XYLFmDirTestAccess.h"

#include <gtest/gtest.h>

#include <clocale>
#include <string>
#include <unistd.h>

namespace {

const XYLFmPathStyle W = XYLFmPathStyleWindows;
const XYLFmPathStyle P = XYLFmPathStylePosix;

const char *styleName(XYLFmPathStyle style) { return style == W ? "windows" : "posix"; }

// Switches LC_CTYPE for one scope.
class ScopedCType {
public:
  explicit ScopedCType(const char *name) : m_previous(std::setlocale(LC_CTYPE, nullptr)) {
    m_ok = std::setlocale(LC_CTYPE, name) != nullptr;
  }
  ~ScopedCType() { std::setlocale(LC_CTYPE, m_previous.c_str()); }
  bool ok() const { return m_ok; }

private:
  std::string m_previous;
  bool m_ok;
};

TEST(XYLFmDirTest, RootPrefixLength) {
  struct Case {
    XYLFmPathStyle style;
    const char *path;
    std::size_t expected;
  };
  const Case cases[] = {
      {W, "", 0},
      {W, "\\", 1},
      {W, "/", 1},
      {W, "\\x", 1},
      {W, "/x/y", 1},
      {W, "\\\\srv\\shr\\d\\f", 10},
      {W, "\\\\srv\\shr", 9},
      {W, "//srv/shr/", 10},
      {W, "\\/srv\\\\shr\\\\x", 12},
      {W, "\\\\srv", 5},
      {W, "\\\\", 2},
      {W, "C:", 2},
      {W, "C:x", 2},
      {W, "c:\\x", 3},
      {W, "Z:/x", 3},
      {W, "C:\\\\x", 3},
      {W, "1:\\x", 0},
      {W, ":x", 0},
      {W, "x", 0},
      {W, "x\\y", 0},
      {W, "CC:\\x", 0},
      {P, "", 0},
      {P, "/", 1},
      {P, "/usr/lib", 1},
      {P, "//x", 2},
      {P, "///", 3},
      {P, "x/y", 0},
      {P, "C:\\x", 0},
      {P, "\\x", 0},
      {P, "\\\\srv\\shr", 0},
  };
  for (const Case &c : cases)
    EXPECT_EQ(c.expected, XYLFmDir::getRootPrefixLength(c.path, c.style)) << styleName(c.style) << " " << c.path;
  EXPECT_EQ(0u, XYLFmDir::getRootPrefixLength(nullptr, W));
  EXPECT_EQ(0u, XYLFmDir::getRootPrefixLength(nullptr, P));
  EXPECT_EQ(XYLFmDir::getRootPrefixLength("/x", P), XYLFmDir::getRootPrefixLength("/x"));
  EXPECT_EQ(0u, XYLFmDir::getRootPrefixLength("C:\\x")) << "the native style is Posix";
}

TEST(XYLFmDirTest, JoinPath) {
  struct Case {
    XYLFmPathStyle style;
    const char *base;
    const char *part;
    const char *expected;
  };
  const Case cases[] = {
      {W, "dir", "x", "dir\\x"},
      {W, "dir\\", "x", "dir\\x"},
      {W, "dir/", "x", "dir/x"},
      {W, "any\\thing", "C:\\x", "C:\\x"},
      {W, "dir", "C:x", "C:x"},
      {W, "dir", "\\x", "\\x"},
      {W, "dir", "/x", "/x"},
      {W, "dir", "\\\\srv\\shr", "\\\\srv\\shr"},
      {W, "", "x", "x"},
      {W, "", "x\\y", "x\\y"},
      {W, "dir", "", "dir"},
      {W, "dir", nullptr, "dir"},
      {W, "", nullptr, ""},
      {W, "C:", "x", "C:\\x"},
      {W, "C:\\", "x", "C:\\x"},
      {W, "a\\b", "c\\d", "a\\b\\c\\d"},
      {P, "dir", "x", "dir/x"},
      {P, "dir/", "x", "dir/x"},
      {P, "dir\\", "x", "dir\\/x"},
      {P, "/a", "/b", "/b"},
      {P, "a", "C:\\x", "a/C:\\x"},
      {P, "a", "\\x", "a/\\x"},
      {P, "", "x", "x"},
      {P, "/", "x", "/x"},
      {P, "/a/b", "c/d", "/a/b/c/d"},
      {P, "/a", nullptr, "/a"},
  };
  for (const Case &c : cases) {
    std::string base(c.base);
    EXPECT_EQ(1, XYLFmDir::joinPath(base, c.part, c.style));
    EXPECT_EQ(c.expected, base) << styleName(c.style) << " " << c.base << " + " << (c.part ? c.part : "(null)");
  }
}

TEST(XYLFmDirTest, SplitPath) {
  struct Case {
    XYLFmPathStyle style;
    const char *path;
    const char *directory;
    const char *name;
  };
  const Case cases[] = {
      {W, "a\\b\\c.txt", "a\\b", "c.txt"},
      {W, "C:\\x", "C:\\", "x"},
      {W, "C:x", "C:", "x"},
      {W, "C:\\a\\b", "C:\\a", "b"},
      {W, "x", "", "x"},
      {W, "\\x", "\\", "x"},
      {W, "\\", "\\", ""},
      {W, "\\\\srv\\shr\\f", "\\\\srv\\shr\\", "f"},
      {W, "\\\\srv\\shr\\d\\f", "\\\\srv\\shr\\d", "f"},
      {W, "a/b\\c", "a/b", "c"},
      {W, "a\\b/c", "a\\b", "c"},
      {W, "dir\\", "dir", ""},
      {W, "a\\\\b", "a\\", "b"},
      {W, "", "", ""},
      {P, "/usr/lib/x.so", "/usr/lib", "x.so"},
      {P, "/x", "/", "x"},
      {P, "/", "/", ""},
      {P, "x", "", "x"},
      {P, "a\\b", "", "a\\b"},
      {P, "C:\\x", "", "C:\\x"},
      {P, "//a/b", "//a", "b"},
      {P, "a/b/", "a/b", ""},
  };
  for (const Case &c : cases) {
    std::string directory("stale"), name("stale");
    EXPECT_EQ(1, XYLFmDir::splitPath(c.path, &directory, &name, c.style));
    EXPECT_EQ(c.directory, directory) << styleName(c.style) << " " << c.path;
    EXPECT_EQ(c.name, name) << styleName(c.style) << " " << c.path;
    // Either output may be left out.
    std::string only("stale");
    EXPECT_EQ(1, XYLFmDir::splitPath(c.path, &only, nullptr, c.style));
    EXPECT_EQ(c.directory, only);
    EXPECT_EQ(1, XYLFmDir::splitPath(c.path, nullptr, &only, c.style));
    EXPECT_EQ(c.name, only);
  }
}

TEST(XYLFmDirTest, SplitOfNullPathEmptiesBothOutputs) {
  std::string directory("stale"), name("stale");
  EXPECT_EQ(0, XYLFmDir::splitPath(nullptr, &directory, &name));
  EXPECT_EQ("", directory);
  EXPECT_EQ("", name);
  EXPECT_EQ(0, XYLFmDir::splitPath(nullptr, nullptr, nullptr));
}

TEST(XYLFmDirTest, WindowsStyleReadsMultibyteCharacters) {
  ScopedCType utf8("C.UTF-8");
  ASSERT_TRUE(utf8.ok());
  const char invalid[] = "\xff\\x";
  const char truncated[] = "C:\\a\xc3";
  EXPECT_EQ(XYLFmDir::INVALID_ROOT_PREFIX, XYLFmDir::getRootPrefixLength(invalid, W));
  EXPECT_EQ(XYLFmDir::INVALID_ROOT_PREFIX, XYLFmDir::getRootPrefixLength(truncated, W));

  std::string directory("stale"), name("stale");
  EXPECT_EQ(0, XYLFmDir::splitPath(invalid, &directory, &name, W));
  EXPECT_EQ("", directory);
  EXPECT_EQ("", name);

  std::string base("dir");
  EXPECT_EQ(0, XYLFmDir::joinPath(base, invalid, W));
  EXPECT_EQ("dir", base);
  base = "d\xff";
  EXPECT_EQ(0, XYLFmDir::joinPath(base, "x", W));
  EXPECT_EQ("d\xff", base);

  // Valid multibyte characters are names like any other.
  EXPECT_EQ(1, XYLFmDir::splitPath("C:\\d\xc3\xa9\\f\xc3\xa9", &directory, &name, W));
  EXPECT_EQ("C:\\d\xc3\xa9", directory);
  EXPECT_EQ("f\xc3\xa9", name);
  base = "\xc3\xa9";
  EXPECT_EQ(1, XYLFmDir::joinPath(base, "x", W));
  EXPECT_EQ("\xc3\xa9\\x", base);

  // Posix paths are byte strings: nothing is invalid.
  EXPECT_EQ(1, XYLFmDir::splitPath("/\xff/x\xff", &directory, &name, P));
  EXPECT_EQ("/\xff", directory);
  EXPECT_EQ("x\xff", name);
}

TEST(XYLFmDirTest, SingleByteLocaleTakesEveryByteAsACharacter) {
  ScopedCType c("C");
  ASSERT_TRUE(c.ok());
  std::string directory, name;
  EXPECT_EQ(1u, XYLFmDir::getRootPrefixLength("\\\xff", W));
  EXPECT_EQ(1, XYLFmDir::splitPath("\xff\\x\xfe", &directory, &name, W));
  EXPECT_EQ("\xff", directory);
  EXPECT_EQ("x\xfe", name);
}

class XYLFmDirEffectiveTest : public testing::Test {
protected:
  void TearDown() override { XYLFmDirTestAccess::setEffectiveWorkingDir(nullptr); }
};

TEST_F(XYLFmDirEffectiveTest, UnsetLeavesPathsAlone) {
  std::string dir("stale");
  EXPECT_EQ(0, XYLFmDir::getEffectiveWorkingDir(dir));
  EXPECT_EQ("", dir);
  std::string path("../logs/x.log");
  EXPECT_EQ("../logs/x.log", XYLFmDir::resolveEffectivePath(path));
  EXPECT_EQ(&path, &XYLFmDir::resolveEffectivePath(path)) << "resolved in place";
}

TEST_F(XYLFmDirEffectiveTest, ResolvesRelativePathsOnly) {
  struct Case {
    const char *setTo;
    const char *stored;
    const char *path;
    const char *resolved;
  };
  const Case cases[] = {
      {"/srv/app/bin", "/srv/app/bin", "../logs/x.log", "/srv/app/bin/../logs/x.log"},
      {"/srv/app/bin//", "/srv/app/bin", "a/b", "/srv/app/bin/a/b"},
      {"/srv/app", "/srv/app", "/abs/path", "/abs/path"},
      {"/srv/app", "/srv/app", "C:\\x", "/srv/app/C:\\x"},
      {"/srv/app", "/srv/app", "", "/srv/app"},
      {"/", "/", "a", "/a"},
      {"//", "//", "a", "//a"},
  };
  for (const Case &c : cases) {
    ASSERT_EQ(1, XYLFmDirTestAccess::setEffectiveWorkingDir(c.setTo));
    std::string dir;
    EXPECT_EQ(1, XYLFmDir::getEffectiveWorkingDir(dir));
    EXPECT_EQ(c.stored, dir) << c.setTo;
    std::string path(c.path);
    EXPECT_EQ(c.resolved, XYLFmDir::resolveEffectivePath(path)) << c.setTo << " + " << c.path;
  }
}

TEST_F(XYLFmDirEffectiveTest, RelativeDirectoryIsTakenFromTheCurrentDirectory) {
  char cwd[4096];
  ASSERT_NE(nullptr, ::getcwd(cwd, sizeof cwd));
  ASSERT_EQ(1, XYLFmDirTestAccess::setEffectiveWorkingDir("sub/dir/"));
  std::string dir;
  EXPECT_EQ(1, XYLFmDir::getEffectiveWorkingDir(dir));
  std::string expected(cwd);
  XYLFmDir::joinPath(expected, "sub/dir");
  EXPECT_EQ(expected, dir);
}

TEST_F(XYLFmDirEffectiveTest, NullOrEmptyClears) {
  for (const char *clear : {static_cast<const char *>(nullptr), ""}) {
    ASSERT_EQ(1, XYLFmDirTestAccess::setEffectiveWorkingDir("/srv"));
    EXPECT_EQ(0, XYLFmDirTestAccess::setEffectiveWorkingDir(clear));
    std::string dir;
    EXPECT_EQ(0, XYLFmDir::getEffectiveWorkingDir(dir));
    std::string path("x");
    EXPECT_EQ("x", XYLFmDir::resolveEffectivePath(path));
  }
}

} // namespace
