// SPDX-License-Identifier: Apache-2.0
#include <XYLCore/FileManagement/XYLFmFile.h>
#include <XYLCore/FileManagement/XYLFmFile64.h>

#include "XYLChildProcess.h"
#include "XYLFmDirTestAccess.h"

#include <XYLCore/i18n/cpp/i18n_converter.h>

#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <iterator>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace {

std::string readAll(const std::string &path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

void writeAll(const std::string &path, const std::string &content) {
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  out << content;
}

bool pathPresent(const std::string &path) {
  struct stat info;
  return ::lstat(path.c_str(), &info) == 0;
}

std::string utf8(const I18NString &text) { return text.c_str("UTF-8"); }

// The operations both file classes share, run against each.
template <class File> class XYLFmFileCommonTest : public ::testing::Test {
protected:
  xyltest::ScratchDirectory m_scratch;
};

using FileClasses = ::testing::Types<XYLFmFile, XYLFmFile64>;
TYPED_TEST_SUITE(XYLFmFileCommonTest, FileClasses);

TYPED_TEST(XYLFmFileCommonTest, CreateModesOnMissingAndExistingFiles) {
  struct Case {
    int mode;
    bool exists;
    int readOnly;
    int result;
    unsigned long error;
    const char *contentAfter; // null: the file must not exist afterwards
  };
  const Case cases[] = {
      {1, false, 0, 1, 0, ""},
      {1, true, 0, 0, EEXIST, "abc"},
      {2, false, 0, 1, 0, ""},
      {2, true, 0, 1, 0, ""},
      {3, false, 0, 0, ENOENT, nullptr},
      {3, true, 0, 1, 0, "abc"},
      {3, true, 1, 1, 0, "abc"},
      {4, false, 0, 1, 0, ""},
      {4, true, 0, 1, 0, "abc"},
      {5, false, 0, 0, ENOENT, nullptr},
      {5, true, 0, 1, 0, ""},
      {5, true, 1, 0, EINVAL, "abc"},
      {0, true, 0, 0, EINVAL, "abc"},
      {6, false, 0, 0, EINVAL, nullptr},
  };
  int index = 0;
  for (const Case &c : cases) {
    const std::string path = this->m_scratch / ("mode" + std::to_string(index++));
    if (c.exists)
      writeAll(path, "abc");
    TypeParam file;
    const int result = file.open(path.c_str(), static_cast<XYLFmFileModes::createmode>(c.mode), c.readOnly);
    EXPECT_EQ(c.result, result) << "mode " << c.mode << " exists " << c.exists << " readOnly " << c.readOnly;
    EXPECT_EQ(c.error, file.getLastErrorNumber()) << "mode " << c.mode << " exists " << c.exists;
    EXPECT_EQ(1, file.close());
    if (c.contentAfter == nullptr) {
      EXPECT_FALSE(pathPresent(path)) << "mode " << c.mode;
    } else {
      EXPECT_EQ(c.contentAfter, readAll(path)) << "mode " << c.mode << " exists " << c.exists;
    }
  }
}

TYPED_TEST(XYLFmFileCommonTest, WriteSeekReadRoundTrip) {
  const std::string path = this->m_scratch / "data";
  TypeParam file;
  ASSERT_EQ(1, file.open(path.c_str(), XYLFmFileModes::createNew, 0));
  EXPECT_EQ(11, file.write("hello world", 11));
  EXPECT_EQ(11, file.getLength());
  EXPECT_EQ(0, file.seek(0, XYLFmFileModes::seekBegin));
  char buffer[16] = {0};
  EXPECT_EQ(5, file.read(buffer, 5));
  EXPECT_EQ(std::string("hello"), std::string(buffer, 5));
  EXPECT_EQ(7, file.seek(2, XYLFmFileModes::seekCurrent));
  EXPECT_EQ(6, file.seek(-5, XYLFmFileModes::seekEnd));
  EXPECT_EQ(5, file.read(buffer, sizeof buffer));
  EXPECT_EQ(std::string("world"), std::string(buffer, 5));
  // Seeking past the end is allowed; writing there fills the gap with zeros.
  EXPECT_EQ(13, file.seek(2, XYLFmFileModes::seekEnd));
  EXPECT_EQ(1, file.write("!", 1));
  EXPECT_EQ(14, file.getLength());
  EXPECT_EQ(1, file.flush());
  // Bad moves fail and leave the position where it was.
  EXPECT_EQ(-1, file.seek(-1, XYLFmFileModes::seekBegin));
  EXPECT_EQ(-1, file.seek(-15, XYLFmFileModes::seekEnd));
  EXPECT_EQ(-1, file.seek(0, static_cast<XYLFmFileModes::seekorigin>(3)));
  EXPECT_EQ(14, file.seek(0, XYLFmFileModes::seekCurrent));
  EXPECT_EQ(1, file.close());
  EXPECT_EQ(std::string("hello world\0\0!", 14), readAll(path));
}

TYPED_TEST(XYLFmFileCommonTest, TruncateSetsTheEndAndThePosition) {
  const std::string path = this->m_scratch / "truncate";
  TypeParam file;
  ASSERT_EQ(1, file.open(path.c_str(), XYLFmFileModes::createNew, 0));
  ASSERT_EQ(10, file.write("0123456789", 10));
  EXPECT_EQ(1, file.truncate(4));
  EXPECT_EQ(4, file.getLength());
  EXPECT_EQ(1, file.write("X", 1)); // lands at the new end
  EXPECT_EQ(1, file.truncate(8));   // growing pads with zeros
  EXPECT_EQ(1, file.close());
  EXPECT_EQ(std::string("0123X\0\0\0", 8), readAll(path));

  EXPECT_EQ(0, file.truncate(1)) << "closed";
  EXPECT_EQ(static_cast<unsigned long>(EBADF), file.getLastErrorNumber());
}

TYPED_TEST(XYLFmFileCommonTest, ClosedFileOperations) {
  TypeParam file;
  char byte = 0;
  EXPECT_EQ(-1, file.read(&byte, 1));
  EXPECT_EQ(-1, file.write(&byte, 1));
  EXPECT_EQ(-1, file.seek(0, XYLFmFileModes::seekBegin));
  EXPECT_EQ(-1, file.getLength());
  EXPECT_EQ(0, file.flush());
  EXPECT_EQ(1, file.close());
  EXPECT_EQ(1, file.close());
  EXPECT_EQ(0ul, file.getLastErrorNumber()) << "none of these records an error";
}

TYPED_TEST(XYLFmFileCommonTest, AppendCopiesFromTheCurrentPositionInChunks) {
  std::string source;
  for (int i = 0; i < 3000; ++i)
    source.push_back(static_cast<char>('a' + i % 26));
  const std::string targetPath = this->m_scratch / "target";
  const std::string sourcePath = this->m_scratch / "source";
  writeAll(targetPath, "head");
  writeAll(sourcePath, source);
  TypeParam target, other;
  ASSERT_EQ(1, target.open(targetPath.c_str(), XYLFmFileModes::openExisting, 0));
  ASSERT_EQ(1, other.open(sourcePath.c_str(), XYLFmFileModes::openExisting, 1));
  ASSERT_EQ(5, other.seek(5, XYLFmFileModes::seekBegin));
  ASSERT_EQ(0, target.seek(0, XYLFmFileModes::seekBegin)) << "append must go to the end itself";
  EXPECT_EQ(1, target.append(other));
  EXPECT_EQ(1, target.close());
  EXPECT_EQ("head" + source.substr(5), readAll(targetPath));
}

TYPED_TEST(XYLFmFileCommonTest, AppendFailures) {
  const std::string path = this->m_scratch / "append";
  writeAll(path, "data");
  TypeParam target, other;
  // A closed target, a closed source, a target that cannot be written.
  ASSERT_EQ(1, other.open(path.c_str(), XYLFmFileModes::openExisting, 1));
  EXPECT_EQ(0, target.append(other));
  EXPECT_EQ(static_cast<unsigned long>(EBADF), target.getLastErrorNumber());

  TypeParam closedSource;
  ASSERT_EQ(1, target.open(path.c_str(), XYLFmFileModes::openExisting, 0));
  EXPECT_EQ(0, target.append(closedSource));
  EXPECT_EQ(static_cast<unsigned long>(EBADF), target.getLastErrorNumber());

  ASSERT_EQ(1, target.open(path.c_str(), XYLFmFileModes::openExisting, 1));
  EXPECT_EQ(0, target.append(other)) << "a short write fails the append";
  EXPECT_EQ(static_cast<unsigned long>(EBADF), target.getLastErrorNumber());
  EXPECT_EQ("data", readAll(path));
}

TYPED_TEST(XYLFmFileCommonTest, StandardStreamsAreNeverClosed) {
  int fds[2];
  ASSERT_EQ(0, ::pipe(fds));
  const int savedError = ::dup(STDERR_FILENO);
  ASSERT_GE(savedError, 0);
  ASSERT_EQ(STDERR_FILENO, ::dup2(fds[1], STDERR_FILENO));
  ::close(fds[1]);
  {
    TypeParam file;
    EXPECT_EQ(1, file.open(XYLFmFileModes::stdError));
    EXPECT_EQ(3, file.write("abc", 3));
    EXPECT_EQ(1, file.close());
    EXPECT_NE(-1, ::fcntl(STDERR_FILENO, F_GETFD)) << "close() closed standard error";
    EXPECT_EQ(1, file.open(XYLFmFileModes::stdError));
    // The destructor forgets it as well.
  }
  EXPECT_NE(-1, ::fcntl(STDERR_FILENO, F_GETFD)) << "the destructor closed standard error";
  ASSERT_EQ(STDERR_FILENO, ::dup2(savedError, STDERR_FILENO));
  ::close(savedError);
  char buffer[8] = {0};
  EXPECT_EQ(3, ::read(fds[0], buffer, sizeof buffer)) << "the pipe's write end is still open elsewhere";
  EXPECT_EQ(std::string("abc"), std::string(buffer, 3));
  ::close(fds[0]);

  TypeParam file;
  EXPECT_EQ(0, file.open(static_cast<XYLFmFileModes::stdiotypes>(3)));
  EXPECT_EQ(0, file.open(static_cast<XYLFmFileModes::stdiotypes>(-1)));
}

TYPED_TEST(XYLFmFileCommonTest, OpeningAgainClosesTheFirstFile) {
  TypeParam file;
  ASSERT_EQ(1, file.open((this->m_scratch / "first").c_str(), XYLFmFileModes::createNew, 0));
  EXPECT_EQ(0, file.open((this->m_scratch / "missing").c_str(), XYLFmFileModes::openExisting, 0));
  EXPECT_EQ(-1, file.write("3", 1)) << "a failed open leaves the object closed";
}

TYPED_TEST(XYLFmFileCommonTest, BadPathsGiveTheSystemErrors) {
  const std::string regular = this->m_scratch / "regular";
  writeAll(regular, "x");
  struct Case {
    std::string path;
    bool nullPath;
    unsigned long error;
  };
  const Case cases[] = {
      {"", true, EINVAL},
      {"", false, ENOENT},
      {this->m_scratch / "missing", false, ENOENT},
      {this->m_scratch.path(), false, EISDIR},
      {regular + "/below", false, ENOTDIR},
      {this->m_scratch / std::string(300, 'n'), false, ENAMETOOLONG},
      {this->m_scratch.path() + std::string(5000, '/') + "x", false, ENAMETOOLONG},
  };
  for (const Case &c : cases) {
    TypeParam file;
    EXPECT_EQ(0, file.open(c.nullPath ? nullptr : c.path.c_str(), XYLFmFileModes::openExisting, 1))
        << c.path.substr(0, 80);
    EXPECT_EQ(c.error, file.getLastErrorNumber()) << c.path.substr(0, 80);
    EXPECT_EQ(strerror(static_cast<int>(c.error)), utf8(file.getLastErrorMessage())) << c.path.substr(0, 80);
  }
  // Bytes that are not valid UTF-8 still make a Linux file name.
  TypeParam file;
  EXPECT_EQ(1, file.open((this->m_scratch / "bad\xff\xfe").c_str(), XYLFmFileModes::createNew, 0));
  EXPECT_TRUE(pathPresent(this->m_scratch / "bad\xff\xfe"));
}

TYPED_TEST(XYLFmFileCommonTest, I18NStringPaths) {
  const bool utf8Platform = I18NConverter::isUTF8(I18NGetPlatformDefaultEncoding());
  // U+4E2D exists in UTF-8 but in no single-byte encoding.
  const std::string wide = this->m_scratch / "\xe4\xb8\xad.txt";
  TypeParam file;
  const I18NString widePath(wide.c_str(), "UTF-8");
  if (utf8Platform) {
    EXPECT_EQ(1, file.open(widePath, XYLFmFileModes::createNew, 0));
    EXPECT_TRUE(pathPresent(wide));
  } else {
    EXPECT_EQ(0, file.open(widePath, XYLFmFileModes::createNew, 0));
    EXPECT_EQ(static_cast<unsigned long>(EILSEQ), file.getLastErrorNumber());
    EXPECT_FALSE(pathPresent(wide));
  }
  EXPECT_EQ(1, file.close());

  const std::string plain = this->m_scratch / "plain.txt";
  EXPECT_EQ(1, file.open(I18NString(plain.c_str(), "UTF-8"), XYLFmFileModes::createNew, 0));
  EXPECT_EQ(1, file.write("p", 1));
  EXPECT_EQ(1, file.close());
  EXPECT_EQ("p", readAll(plain));

  // A NUL character inside the path would silently name another file.
  I18NString nulPath("a", "UTF-8");
  nulPath.append(0u).append(static_cast<unsigned int>('b'));
  ASSERT_EQ(3, nulPath.length());
  ASSERT_EQ(1, file.open(plain.c_str(), XYLFmFileModes::openExisting, 1));
  EXPECT_EQ(0, file.open(nulPath, XYLFmFileModes::openAlways, 0));
  EXPECT_EQ(static_cast<unsigned long>(EINVAL), file.getLastErrorNumber());
  char byte = 0;
  EXPECT_EQ(1, file.read(&byte, 1)) << "an unconvertible path leaves the open file alone";
}

TYPED_TEST(XYLFmFileCommonTest, PermissionDeniedForAnUnprivilegedUser) {
  const std::string path = this->m_scratch / "private";
  writeAll(path, "secret");
  ASSERT_EQ(0, ::chmod(path.c_str(), 0));
  // Root passes every permission check, so a root test runs the check in a
  // child that has become nobody (the 0700 scratch directory then stops it);
  // another user is stopped by the file's mode 0.
  const std::string report = xyltest::runInChild(
      [&path]() -> std::string {
        if (::access(path.c_str(), R_OK) == 0)
          return "skip";
        TypeParam file;
        if (file.open(path.c_str(), XYLFmFileModes::openExisting, 1) != 0)
          return "open succeeded";
        if (file.getLastErrorNumber() != static_cast<unsigned long>(EACCES))
          return "error " + std::to_string(file.getLastErrorNumber());
        if (utf8(file.getLastErrorMessage()) != strerror(EACCES))
          return "message " + utf8(file.getLastErrorMessage());
        return "";
      },
      true);
  if (report == "skip")
    GTEST_SKIP() << "this process may read a file of mode 0 (a capability): no permission error to test";
  EXPECT_EQ("", report);
}

// ---- What only one of the classes does ---------------------------------------

class XYLFmFileTest : public ::testing::Test {
protected:
  xyltest::ScratchDirectory m_scratch;
};

// Records chosen system errors through the protected logLastError.
class RecordingFile : public XYLFmFile {
public:
  void record(int number) {
    errno = number;
    logLastError();
  }
};

TEST_F(XYLFmFileTest, EndOfFileRecords38OnlyInThe32BitClass) {
  const std::string path = m_scratch / "eof";
  writeAll(path, "ab");
  char buffer[4];
  XYLFmFile file;
  ASSERT_EQ(1, file.open(path.c_str(), XYLFmFileModes::openExisting, 1));
  EXPECT_EQ(2, file.read(buffer, sizeof buffer));
  EXPECT_EQ(0ul, file.getLastErrorNumber());
  EXPECT_EQ(0, file.read(buffer, sizeof buffer));
  EXPECT_EQ(38ul, file.getLastErrorNumber());
  EXPECT_EQ(XYLFmFile::END_OF_FILE_ERROR, file.getLastErrorNumber());
  EXPECT_EQ("Reached the end of the file.", utf8(file.getLastErrorMessage()));

  XYLFmFile64 file64;
  ASSERT_EQ(1, file64.open(path.c_str(), XYLFmFileModes::openExisting, 1));
  EXPECT_EQ(2, file64.read(buffer, sizeof buffer));
  EXPECT_EQ(0, file64.read(buffer, sizeof buffer));
  EXPECT_EQ(0ul, file64.getLastErrorNumber());
}

TEST_F(XYLFmFileTest, RecordedErrorsAndTheirTexts) {
  struct Case {
    int systemError;
    unsigned long recorded;
    std::string text;
  };
  const Case cases[] = {
      {ENOENT, ENOENT, strerror(ENOENT)},
      {EACCES, EACCES, strerror(EACCES)},
      // The system's 38 must not read as end of file.
      {ENOSYS, ENOTSUP, strerror(ENOTSUP)},
      {4000, 4000, ""},
  };
  for (const Case &c : cases) {
    RecordingFile file;
    file.record(c.systemError);
    EXPECT_EQ(c.recorded, file.getLastErrorNumber()) << c.systemError;
    EXPECT_EQ(c.text, utf8(file.getLastErrorMessage())) << c.systemError;
  }
}

TEST_F(XYLFmFileTest, OffsetsAreLimitedTo32Bits) {
  const std::string path = m_scratch / "big";
  XYLFmFile64 file64;
  ASSERT_EQ(1, file64.open(path.c_str(), XYLFmFileModes::createNew, 0));
  const long long fiveGiB = 5LL << 30;
  ASSERT_EQ(fiveGiB, file64.seek(fiveGiB, XYLFmFileModes::seekBegin));
  ASSERT_EQ(1, file64.write("z", 1)); // a sparse file of 5 GiB + 1
  EXPECT_EQ(fiveGiB + 1, file64.getLength());
  EXPECT_EQ(-1, file64.seek(-1, XYLFmFileModes::seekBegin));
  EXPECT_EQ(static_cast<unsigned long>(EINVAL), file64.getLastErrorNumber()) << "the 64-bit seek records";

  XYLFmFile file;
  ASSERT_EQ(1, file.open(path.c_str(), XYLFmFileModes::openExisting, 1));
  EXPECT_EQ((fiveGiB + 1) & 0xFFFFFFFFLL, file.getLength()) << "low 32 bits only";
  EXPECT_EQ(-1, file.seek(0, XYLFmFileModes::seekEnd)) << "beyond a 32-bit position";
  EXPECT_EQ(0x7FFFFFFFL, file.seek(0x7FFFFFFFL, XYLFmFileModes::seekBegin));
  EXPECT_EQ(-1, file.seek(0x80000000L, XYLFmFileModes::seekBegin)) << "the offset is a signed 32-bit value";
  EXPECT_EQ(0xFFFFFFFEL, file.seek(0x7FFFFFFFL, XYLFmFileModes::seekCurrent)) << "the highest 32-bit position";
  EXPECT_EQ(-1, file.seek(1, XYLFmFileModes::seekCurrent));
  EXPECT_EQ(0xFFFFFFFEL, file.seek(0, XYLFmFileModes::seekCurrent)) << "failed seeks do not move";
  EXPECT_EQ(0, file.truncate(0x100000000L));
  EXPECT_EQ(static_cast<unsigned long>(EINVAL), file.getLastErrorNumber());
}

} // namespace
