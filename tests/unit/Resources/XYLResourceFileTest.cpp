// SPDX-License-Identifier: Apache-2.0
#include <XYLCore/ExceptionHierarchy/XYLErrors.h>
#include <XYLCore/Resources/XYLResourceFile.h>

#include "Resources/XYLCatalogReader.h"
#include "XYLFaultInjection.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace {

typedef std::vector<unsigned char> Bytes;

void putWord(Bytes &bytes, unsigned int word) {
  for (int shift = 24; shift >= 0; shift -= 8)
    bytes.push_back(static_cast<unsigned char>(word >> shift));
}

struct Entry {
  unsigned int number, offset, length;
};

// A catalog image written by hand, so that malformed ones can be made.
Bytes image(unsigned int count, unsigned int textSize, const std::vector<Entry> &entries, const std::string &text,
            const char *magic = "BMF1\0\0\0\0") {
  Bytes bytes(magic, magic + 8);
  putWord(bytes, count);
  putWord(bytes, textSize);
  for (const Entry &e : entries) {
    putWord(bytes, e.number);
    putWord(bytes, e.offset);
    putWord(bytes, e.length);
  }
  bytes.insert(bytes.end(), text.begin(), text.end());
  return bytes;
}

// A well-formed catalog of (number, text) pairs given in ascending order.
Bytes catalog(const std::vector<std::pair<unsigned int, std::string>> &texts) {
  std::vector<Entry> entries;
  std::string area;
  for (const auto &t : texts) {
    entries.push_back(
        {t.first, static_cast<unsigned int>(area.size()), static_cast<unsigned int>(t.second.size() + 1)});
    area += t.second;
    area.push_back('\0');
  }
  return image(static_cast<unsigned int>(texts.size()), static_cast<unsigned int>(area.size()), entries, area);
}

class TempDir {
public:
  TempDir() {
    char pattern[] = "/tmp/xyl_catalogs_XXXXXX";
    m_path = ::mkdtemp(pattern);
  }
  ~TempDir() { std::system(("rm -rf '" + m_path + "'").c_str()); }
  const std::string &path() const { return m_path; }
  std::string write(const std::string &relative, const Bytes &bytes) const {
    const std::string full = m_path + "/" + relative;
    const std::string::size_type slash = full.find_last_of('/');
    std::system(("mkdir -p '" + full.substr(0, slash) + "'").c_str());
    std::FILE *file = std::fopen(full.c_str(), "wb");
    if (!bytes.empty())
      std::fwrite(bytes.data(), 1, bytes.size(), file);
    std::fclose(file);
    return full;
  }

private:
  std::string m_path;
};

const char *lookup(XYLCatalogReader &reader, unsigned int number) {
  std::size_t length = 0;
  return reader.lookup(number, &length);
}

struct MalformedCase {
  const char *name;
  Bytes bytes;
  XYLCatalogReader::Status status;
  unsigned int probe;   // a number looked up when the catalog opens
  const char *expected; // its text, or null when it must be missing
};

TEST(XYLCatalogReaderTest, ValidatesCatalogsInBothModes) {
  const std::string ab("alpha\0beta\0", 11);
  const std::vector<MalformedCase> cases = {
      {"empty file", Bytes(), XYLCatalogReader::Truncated, 0, nullptr},
      {"magic only", Bytes{'B', 'M', 'F', '1'}, XYLCatalogReader::Truncated, 0, nullptr},
      {"fifth byte not zero", image(0, 0, {}, "", "BMF10\0\0\0"), XYLCatalogReader::BadMagic, 0, nullptr},
      {"other magic", image(0, 0, {}, "", "BMF2\0\0\0\0"), XYLCatalogReader::BadMagic, 0, nullptr},
      {"free bytes after the zero", image(1, 3, {{7, 0, 3}}, std::string("hi\0", 3), "BMF1\0XYZ"), XYLCatalogReader::Ok,
       7, "hi"},
      {"no entries", image(0, 0, {}, ""), XYLCatalogReader::Ok, 0, nullptr},
      {"count beyond the file", image(0xFFFFFFFFu, 0, {}, ""), XYLCatalogReader::Truncated, 0, nullptr},
      {"index cut short", image(2, 11, {{1, 0, 6}}, ab), XYLCatalogReader::Truncated, 0, nullptr},
      {"text area beyond the file", image(1, 0x7FFFFFFFu, {{1, 0, 6}}, ab), XYLCatalogReader::Truncated, 0, nullptr},
      {"unsorted", image(2, 11, {{2, 0, 6}, {1, 6, 5}}, ab), XYLCatalogReader::UnsortedIndex, 0, nullptr},
      {"duplicate", image(2, 11, {{1, 0, 6}, {1, 6, 5}}, ab), XYLCatalogReader::UnsortedIndex, 0, nullptr},
      {"sorted as signed", image(2, 11, {{0x80000000u, 0, 6}, {0x7FFFFFFFu, 6, 5}}, ab),
       XYLCatalogReader::UnsortedIndex, 0, nullptr},
      {"unsigned order", image(2, 11, {{0x7FFFFFFFu, 0, 6}, {0x80000000u, 6, 5}}, ab), XYLCatalogReader::Ok,
       0x80000000u, "beta"},
      {"offset outside the text", image(2, 11, {{1, 0, 6}, {2, 11, 1}}, ab), XYLCatalogReader::Ok, 2, nullptr},
      {"length outside the text", image(2, 11, {{1, 0, 6}, {2, 6, 6}}, ab), XYLCatalogReader::Ok, 2, nullptr},
      {"offset and length wrap", image(2, 11, {{1, 0, 6}, {2, 0xFFFFFFF8u, 0x10}}, ab), XYLCatalogReader::Ok, 2,
       nullptr},
      {"zero length", image(2, 11, {{1, 0, 6}, {2, 6, 0}}, ab), XYLCatalogReader::Ok, 2, nullptr},
      {"no terminator inside", image(2, 11, {{1, 0, 6}, {2, 6, 4}}, ab), XYLCatalogReader::Ok, 2, nullptr},
      {"terminator early", image(1, 11, {{1, 0, 11}}, ab), XYLCatalogReader::Ok, 1, "alpha"},
      {"bytes after the text area",
       [&] {
         Bytes b = image(1, 11, {{1, 6, 5}}, ab);
         b.push_back('x');
         return b;
       }(),
       XYLCatalogReader::Ok, 1, "beta"},
  };
  TempDir dir;
  for (const bool wholeFile : {true, false}) {
    for (const MalformedCase &c : cases) {
      SCOPED_TRACE(std::string(c.name) + (wholeFile ? " (whole file)" : " (on demand)"));
      XYLCatalogReader reader(wholeFile);
      const std::string path = dir.write("case.bmf", c.bytes);
      EXPECT_EQ(reader.open(path.c_str()), c.status == XYLCatalogReader::Ok);
      EXPECT_EQ(reader.getStatus(), c.status);
      const char *text = lookup(reader, c.probe);
      if (c.expected == nullptr)
        EXPECT_EQ(text, nullptr);
      else
        EXPECT_STREQ(text, c.expected);
    }
  }
}

TEST(XYLCatalogReaderTest, FindsEveryNumberAndOnlyThose) {
  std::vector<std::pair<unsigned int, std::string>> texts = {
      {0, "zero"}, {1, "one"}, {0x7FFFFFFFu, "max signed"}, {0x80000000u, "min signed"}, {0xFFFFFFFFu, "last"}};
  TempDir dir;
  const std::string path = dir.write("c.bmf", catalog(texts));
  for (const bool wholeFile : {true, false}) {
    XYLCatalogReader reader(wholeFile);
    ASSERT_TRUE(reader.open(path.c_str()));
    for (const auto &t : texts) {
      std::size_t length = 0;
      EXPECT_STREQ(reader.lookup(t.first, &length), t.second.c_str());
      EXPECT_EQ(length, t.second.size());
    }
    for (unsigned int absent : {2u, 0x7FFFFFFEu, 0x80000001u, 0xFFFFFFFEu})
      EXPECT_EQ(lookup(reader, absent), nullptr) << absent;
  }
}

TEST(XYLCatalogReaderTest, OnDemandBufferGrowsOnlyForLongerTexts) {
  TempDir dir;
  const std::string longText(200, 'L');
  const std::string path = dir.write("c.bmf", catalog({{1, "short"}, {2, longText}, {3, "tiny"}}));
  XYLResourceFile file(path.c_str(), nullptr, XYLResourceFile::XYLResourceOnDemand);
  ASSERT_TRUE(file.isOpen());
  const char *first = nullptr;
  EXPECT_EQ(file.getResource(1, &first), "short");
  const char *second = nullptr;
  EXPECT_EQ(file.getResource(2, &second), longText);
  // A shorter text reuses the grown buffer and overwrites the longer one.
  const char *third = nullptr;
  EXPECT_EQ(file.getResource(3, &third), "tiny");
  EXPECT_EQ(third, second);
  EXPECT_STREQ(second, "tiny");

  XYLCatalogReader reader(false);
  ASSERT_TRUE(reader.open(path.c_str()));
  lookup(reader, 1);
  EXPECT_EQ(reader.getBufferCapacity(), 6u);
  lookup(reader, 2);
  EXPECT_EQ(reader.getBufferCapacity(), longText.size() + 1);
  lookup(reader, 3);
  EXPECT_EQ(reader.getBufferCapacity(), longText.size() + 1);
}

TEST(XYLCatalogReaderTest, WholeFileTextsOutliveTheFileAndOtherLookups) {
  TempDir dir;
  const std::string path = dir.write("c.bmf", catalog({{1, "one"}, {2, "two"}}));
  XYLResourceFile file(path.c_str(), nullptr, XYLResourceFile::XYLResourceWholeFile);
  ASSERT_EQ(::unlink(path.c_str()), 0);
  const char *one = nullptr;
  const char *two = nullptr;
  file.getResource(1, &one);
  file.getResource(2, &two);
  EXPECT_STREQ(one, "one");
  EXPECT_STREQ(two, "two");
}

TEST(XYLCatalogReaderTest, ExhaustedMemoryRaisesAndLeavesTheHandleUsable) {
  TempDir dir;
  const std::string path = dir.write("c.bmf", catalog({{1, "one"}}));
  for (long countdown : {1L, 2L}) { // index, then text area
    XYLResourceFile file;
    {
      xyltest::AllocationFailure failure(countdown);
      EXPECT_THROW(file.open(path.c_str(), nullptr), XYLOutOfMemoryError) << countdown;
    }
    EXPECT_EQ(file.isOpen(), 0);
    EXPECT_EQ(file.open(path.c_str(), nullptr), 1);
    EXPECT_EQ(file.getResource(1, nullptr), "one");
  }
  XYLResourceFile onDemand(path.c_str(), nullptr, XYLResourceFile::XYLResourceOnDemand);
  {
    xyltest::AllocationFailure failure(1);
    EXPECT_THROW(onDemand.getResource(1, nullptr), XYLOutOfMemoryError);
  }
  EXPECT_EQ(onDemand.getResource(1, nullptr), "one");
}

TEST(XYLResourceFileTest, HandleResults) {
  XYLResourceFile never;
  std::string message;
  try {
    never.getResource(1, nullptr);
  } catch (XYLAssertError &e) {
    message = e.getMessage();
  }
  EXPECT_EQ(message, "XYL_ASSERT(m_resource != NULL);");

  TempDir dir;
  dir.write("c.bmf", catalog({{1, "one"}}));
  XYLResourceFile file(XYLResourceFile::XYLResourceOnDemand);
  EXPECT_EQ(file.open("missing", dir.path().c_str()), 0);
  const char *text = "stale";
  EXPECT_EQ(file.getResource(1, &text), "");
  EXPECT_EQ(text, nullptr);
  EXPECT_EQ(file.open("c", dir.path().c_str()), 1);
  EXPECT_EQ(file.getPath(), dir.path() + "/c.bmf");
  EXPECT_EQ(file.getResource(1, &text), "one");
  file.close();
  EXPECT_EQ(file.isOpen(), 0);
  EXPECT_EQ(file.getResource(1, &text), "");
  EXPECT_EQ(text, nullptr);
}

TEST(XYLResourceFileTest, SearchesLocaleThenLanguageThenLocation) {
  TempDir dir;
  const std::string &root = dir.path();
  dir.write("en-us/m.bmf", catalog({{1, "en-us"}}));
  dir.write("en/m.bmf", catalog({{1, "en"}}));
  dir.write("m.bmf", catalog({{1, "root"}}));
  dir.write("de-de/m.bmf", Bytes{'j', 'u', 'n', 'k'});
  struct {
    const char *locale;
    const char *expected; // null: open fails
  } cases[] = {{"EN_us.UTF-8", "en-us"}, {"en-gb", "en"},     {"fr", "root"},
               {nullptr, "en-us"},       {"en/../x", "root"}, {"de-de", nullptr}};
  for (const auto &c : cases) {
    SCOPED_TRACE(c.locale != nullptr ? c.locale : "(null)");
    XYLResourceFile file;
    EXPECT_EQ(file.open("m", root.c_str(), c.locale), c.expected != nullptr ? 1 : 0);
    if (c.expected != nullptr) {
      EXPECT_EQ(file.getResource(1, nullptr), c.expected);
    }
  }
  XYLResourceFile file;
  EXPECT_EQ(file.open("m.bmf", root.c_str()), 1); // the two-text form skips locale folders
  EXPECT_EQ(file.getResource(1, nullptr), "root");
  EXPECT_EQ(file.open((root + "/en/m").c_str(), "/nonexistent"), 1); // a path of its own
  EXPECT_EQ(file.getResource(1, nullptr), "en");

  ::setenv("XYL_MSG_PATH", root.c_str(), 1);
  EXPECT_EQ(file.open("m", nullptr, "en-au"), 1);
  EXPECT_EQ(file.getResource(1, nullptr), "en");
  ::unsetenv("XYL_MSG_PATH");

  // An unreadable locale file stops the search: open fails with EACCES
  // instead of falling back to the language's texts. Checked in a child
  // that is not root, since root reads any file.
  ::chmod(root.c_str(), 0755);
  ::chmod((root + "/en-us").c_str(), 0755);
  ::chmod((root + "/en-us/m.bmf").c_str(), 0);
  const pid_t child = ::fork();
  ASSERT_GE(child, 0);
  if (child == 0) {
    if (::geteuid() == 0 && (::setgid(65534) != 0 || ::setuid(65534) != 0))
      ::_exit(3);
    XYLCatalogReader reader(true);
    const bool refused = !reader.open((root + "/en-us/m.bmf").c_str()) &&
                         reader.getStatus() == XYLCatalogReader::NotOpened && reader.getErrorNumber() == EACCES;
    XYLResourceFile denied;
    ::_exit(refused && denied.open("m", root.c_str(), "en-us") == 0 && denied.isOpen() == 0 ? 0 : 1);
  }
  int status = 0;
  ASSERT_EQ(::waitpid(child, &status, 0), child);
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status;
}

TEST(XYLResourceFileTest, FindsTheLibraryCatalogBesideTheLibrary) {
  ::unsetenv("XYL_MSG_PATH");
  for (int option : {XYLResourceFile::XYLResourceWholeFile, XYLResourceFile::XYLResourceOnDemand}) {
    XYLResourceFile file(option);
    ASSERT_EQ(file.open("xylpluginmsgs", nullptr, "en-us"), 1);
    EXPECT_EQ(file.getPath(), XYLResourceFactory::getDefaultLocation() + "/xylpluginmsgs.bmf");
    EXPECT_EQ(file.getResource(1, nullptr), "The plug-in library could not be loaded: {0}");
    EXPECT_NE(file.getResource(2, nullptr).find("could not be unloaded"), std::string::npos);
  }
}

} // namespace
