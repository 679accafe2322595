// SPDX-License-Identifier: Apache-2.0
// Tests of src/i18n/cpp/i18n_internalresources.cpp and i18n_resourcetables.cpp:
// the installation-root lookup, the resource file path, and the tables
// read from present, missing, partial and malformed resource files.
#include "I18NTestSupport.h"
#include "i18n/cpp/i18n_testpeer.h"

#include <XYLCore/ExceptionHierarchy/XYLErrors.h>
#include <XYLCore/i18n/cpp/i18n_converter.h>
#include <XYLCore/i18n/cpp/i18n_init.h>
#include <XYLCore/i18n/cpp/i18n_internalresources.h>
#include <XYLCore/i18n/cpp/i18n_string.h>

#include <XYLFaultInjection.h>
#include <gtest/gtest.h>

#include <unicode/putil.h>
#include <unicode/translit.h>

#include <dlfcn.h>

#include <cstring>
#include <memory>
#include <string>

using i18ntest::CwdGuard;
using i18ntest::EnvGuard;
using i18ntest::ScratchDir;

namespace {

const char kMissing[] = "/nonexistent/xyl/i18n_res.xml";

std::string libraryDirectory() {
  Dl_info info;
  if (dladdr(reinterpret_cast<void *>(&I18NGetToolkitDefaultEncoding), &info) == 0 || info.dli_fname == nullptr)
    return "";
  std::string name = info.dli_fname;
  return name.substr(0, name.find_last_of('/'));
}

// Every root-lookup test starts from "not looked up yet" and leaves it so.
class I18NRootLookupTest : public ::testing::Test {
protected:
  void SetUp() override {
    I18NInternalResourcesTestPeer::setLibraryFileName(nullptr);
    I18NInternalResourcesTestPeer::resetPaths();
  }
  void TearDown() override {
    I18NInternalResourcesTestPeer::setLibraryFileName(nullptr);
    I18NInternalResourcesTestPeer::resetPaths();
  }
};

} // namespace

TEST_F(I18NRootLookupTest, EnvironmentVariablesInOrder) {
  struct Case {
    const char *execPath;
    const char *root;
    std::string directory;
  } cases[] = {
      {"/opt/app/bin", "/opt/other", "/opt/app/bin"}, // QOR_EXEC_PATH wins, as it stands
      {"relative/bin/", nullptr, "relative/bin/"},
      {nullptr, "/opt/app", "/opt/app/./bin"}, // joined, not normalised
      {"", "/opt/app/", "/opt/app/./bin"},     // empty counts as unset; no doubled separator
      {"", "", libraryDirectory()},
      {nullptr, nullptr, libraryDirectory()},
  };
  for (const Case &c : cases) {
    EnvGuard execPath("QOR_EXEC_PATH", c.execPath);
    EnvGuard root("QOR_ROOT", c.root);
    I18NInternalResourcesTestPeer::resetPaths();
    I18NInternalResources::setDataDirectoryPath();
    EXPECT_EQ(c.directory, I18NInternalResources::getBinaryDirectory());
    EXPECT_EQ(c.directory + (c.directory.back() == '/' ? "" : "/") + "./i18n_res.xml",
              I18NInternalResources::getResourceFilePath());
    EXPECT_EQ(c.directory, u_getDataDirectory());
  }
}

TEST_F(I18NRootLookupTest, ASecondCallChangesNothing) {
  {
    EnvGuard execPath("QOR_EXEC_PATH", "/first/bin");
    I18NInternalResources::setDataDirectoryPath();
  }
  EnvGuard execPath("QOR_EXEC_PATH", "/second/bin");
  I18NInternalResources::setDataDirectoryPath();
  EXPECT_STREQ("/first/bin", I18NInternalResources::getBinaryDirectory());
  EXPECT_STREQ("/first/bin/./i18n_res.xml", I18NInternalResources::getResourceFilePath());
}

TEST_F(I18NRootLookupTest, LibraryNameWithoutSeparatorEndsTheLookup) {
  ScratchDir dir;
  dir.mkdir("work");
  dir.mkdir("configuration");
  dir.write("configuration/qorstartup.xml", "<x/>");
  dir.write("work/qorroot.link", "/srv/root\n");
  CwdGuard cwd(dir.file("work"));
  ASSERT_TRUE(cwd.ok());
  EnvGuard execPath("QOR_EXEC_PATH", nullptr);
  EnvGuard root("QOR_ROOT", nullptr);
  I18NInternalResourcesTestPeer::setLibraryFileName("libXYLCore.so.1");
  I18NInternalResources::setDataDirectoryPath();
  EXPECT_STREQ("", I18NInternalResources::getBinaryDirectory());
  EXPECT_STREQ("./i18n_res.xml", I18NInternalResources::getResourceFilePath());
  EXPECT_STREQ(".", u_getDataDirectory());
}

TEST_F(I18NRootLookupTest, StartupFileAndLinkFileWhenTheLibraryLivesAtTheRoot) {
  struct Case {
    bool startupFile;      // ../configuration/qorstartup.xml as a readable file
    bool startupDirectory; // ... as a directory instead
    const char *link;      // content of ./qorroot.link (null: no file)
    std::string directory;
  } cases[] = {
      {true, false, "/srv/root\n", "../bin"},
      {false, false, "/srv/root\nsecond line\n", "/srv/root/./bin"},
      {false, false, "/srv/root/\r\n", "/srv/root/./bin"},
      {false, true, "/srv/root", "/srv/root/./bin"},
      {false, false, "\n/srv/root\n", ""},
      {false, false, "", ""},
      {false, false, nullptr, ""},
      {false, false, nullptr, ""},
  };
  EnvGuard execPath("QOR_EXEC_PATH", nullptr);
  EnvGuard root("QOR_ROOT", nullptr);
  for (const Case &c : cases) {
    ScratchDir dir;
    dir.mkdir("work");
    dir.mkdir("configuration");
    if (c.startupFile)
      dir.write("configuration/qorstartup.xml", "<x/>");
    if (c.startupDirectory)
      dir.mkdir("configuration/qorstartup.xml");
    if (c.link != nullptr)
      dir.write("work/qorroot.link", c.link);
    CwdGuard cwd(dir.file("work"));
    ASSERT_TRUE(cwd.ok());
    I18NInternalResourcesTestPeer::setLibraryFileName("/libXYLCore.so.1");
    I18NInternalResourcesTestPeer::resetPaths();
    I18NInternalResources::setDataDirectoryPath();
    EXPECT_EQ(c.directory, I18NInternalResources::getBinaryDirectory()) << (c.link ? c.link : "(no link)");
    EXPECT_EQ(c.directory.empty() ? "." : c.directory, u_getDataDirectory());
  }
}

TEST_F(I18NRootLookupTest, LinkFileLineIsLimitedTo259Characters) {
  ScratchDir dir;
  const std::string longLine(300, 'r');
  dir.write("qorroot.link", "/" + longLine + "\n");
  CwdGuard cwd(dir.path());
  EnvGuard execPath("QOR_EXEC_PATH", nullptr);
  EnvGuard root("QOR_ROOT", nullptr);
  I18NInternalResourcesTestPeer::setLibraryFileName("/libXYLCore.so.1");
  I18NInternalResources::setDataDirectoryPath();
  EXPECT_EQ("/" + std::string(258, 'r') + "/./bin", I18NInternalResources::getBinaryDirectory());
}

TEST_F(I18NRootLookupTest, OutOfMemoryIsRaisedFromLines101And102AndRetried) {
  EnvGuard execPath("QOR_EXEC_PATH", "/opt/app/bin");
  for (long countdown : {1L, 2L}) {
    xyltest::AllocationFailure failure(countdown);
    try {
      I18NInternalResources::setDataDirectoryPath();
      ADD_FAILURE() << "no exception at allocation " << countdown;
    } catch (XYLOutOfMemoryError &e) {
      XYLList<char *> &trace = const_cast<XYLList<char *> &>(e.getBackTrace());
      ASSERT_FALSE(trace.empty());
      const std::string expected =
          std::string("i18n/cpp/i18n_internalresources(") + (countdown == 1 ? "101" : "102") + ")";
      EXPECT_EQ(0u, std::string(trace.front()).rfind(expected, 0)) << trace.front();
    }
    EXPECT_STREQ("", I18NInternalResources::getResourceFilePath()); // the flag stayed clear
  }
  I18NInternalResources::setDataDirectoryPath();
  EXPECT_STREQ("/opt/app/bin", I18NInternalResources::getBinaryDirectory());
}

TEST_F(I18NRootLookupTest, ChangeResourceFileName) {
  __changeResourceFileName("early.xml"); // before the lookup: no effect
  EXPECT_STREQ("", I18NInternalResources::getResourceFilePath());
  EnvGuard execPath("QOR_EXEC_PATH", "/opt/app/bin");
  I18NInternalResources::setDataDirectoryPath();
  __changeResourceFileName(nullptr);
  EXPECT_STREQ("/opt/app/bin/./i18n_res.xml", I18NInternalResources::getResourceFilePath());
  __changeResourceFileName("my_res.xml");
  EXPECT_STREQ("/opt/app/bin/my_res.xml", I18NInternalResources::getResourceFilePath());
  __changeResourceFileName("again.xml"); // the name is gone now
  EXPECT_STREQ("/opt/app/bin/my_res.xml", I18NInternalResources::getResourceFilePath());
}

// ---- Resource files ------------------------------------------------------------------------

namespace {

class I18NResourceFileTest : public ::testing::Test {
protected:
  void TearDown() override { I18NInternalResources::load(kMissing); } // built-in defaults again
};

std::string encodingFor(const char *locale) {
  std::string encoding;
  return I18NInternalResources::getEncodingForLocale(locale, encoding) ? encoding : "(none)";
}

std::string defaultFor(const char *name) {
  std::string locale;
  I18NInternalResources::getDefaultLocaleForLanguage(name, locale);
  return locale;
}

std::string localeFor(unsigned short lcid) {
  std::string locale;
  return I18NInternalResources::getLocaleIdFroLCID(lcid, locale) ? locale : "(none)";
}

void expectBuiltInDefaults() {
  EXPECT_EQ(3, I18NInternalResources::getUTF8BytesPerCodePoint());
  EXPECT_TRUE(I18NInternalResources::useAsciiFastPath());
  EXPECT_EQ("Shift_JIS", encodingFor("ja-jp"));
  EXPECT_EQ("de-de", defaultFor("de"));
  EXPECT_FALSE(I18NInternalResources::hasNonNormalizableCharacters());
  unsigned int codePoints[4];
  EXPECT_EQ(0, I18NInternalResources::getReplacementSequence("UTF-8", "\xFF", 1, codePoints, 4));
}

} // namespace

TEST_F(I18NResourceFileTest, MissingFileMeansBuiltInDefaultsSilently) {
  testing::internal::CaptureStderr();
  EXPECT_EQ(0, I18NInternalResources::load(kMissing));
  EXPECT_EQ("", testing::internal::GetCapturedStderr());
  expectBuiltInDefaults();
}

TEST_F(I18NResourceFileTest, ShippedFileReadsAndMatchesTheBuiltInDefaults) {
  EXPECT_EQ(1, I18NInternalResources::load(XYL_I18N_RESOURCES "/i18n_res.xml"));
  expectBuiltInDefaults();
  std::unique_ptr<icu::Transliterator> transliterator(I18NInternalResources::getTransliterator());
  ASSERT_NE(nullptr, transliterator);
  icu::UnicodeString text(u"\u301c\u2212x");
  transliterator->transliterate(text);
  EXPECT_TRUE(text == icu::UnicodeString(u"\uff5e\uff0dx"));
}

TEST_F(I18NResourceFileTest, MalformedFilesAreReportedOnceAndIgnored) {
  struct Case {
    const char *name;
    const char *content;
    const char *why; // a piece of the report
  } cases[] = {
      {"truncated.xml", "<i18nResources><UTF8BytesPerCodePoint>2</UTF8", "line 1"},
      {"root.xml", "<resources/>", "not <i18nResources>"},
      {"bytes.xml", "<i18nResources>\n<UTF8BytesPerCodePoint>9</UTF8BytesPerCodePoint></i18nResources>", "line 2"},
      {"hex.xml",
       "<i18nResources><replacementTable><replacement encoding='UTF-8' sequence='GG' output='41'/>"
       "</replacementTable></i18nResources>",
       "hexadecimal"},
      {"direction.xml",
       "<i18nResources><replacementTable><replacement encoding='UTF-8' direction='sideways' sequence='41' "
       "output='41'/></replacementTable></i18nResources>",
       "direction"},
      {"range.xml",
       "<i18nResources><nonNormalizableCharacters><range first='20' last='10'/></nonNormalizableCharacters>"
       "</i18nResources>",
       "first <= last"},
      {"lcid.xml", "<i18nResources><localeTable><locale name='x' lcid='70000'/></localeTable></i18nResources>", "lcid"},
      {"empty.xml", "", "line"},
  };
  ScratchDir dir;
  for (const Case &c : cases) {
    dir.write(c.name, c.content);
    const std::string path = dir.file(c.name);
    testing::internal::CaptureStderr();
    EXPECT_EQ(0, I18NInternalResources::load(path.c_str())) << c.name;
    const std::string report = testing::internal::GetCapturedStderr();
    EXPECT_NE(std::string::npos, report.find("\"" + path + "\" is malformed")) << report;
    EXPECT_NE(std::string::npos, report.find(c.why)) << c.name << ": " << report;
    expectBuiltInDefaults();
    testing::internal::CaptureStderr();
    EXPECT_EQ(0, I18NInternalResources::load(path.c_str()));
    EXPECT_EQ("", testing::internal::GetCapturedStderr()) << c.name << " reported twice";
  }
}

TEST_F(I18NResourceFileTest, PartialFileKeepsTheOtherDefaults) {
  ScratchDir dir;
  dir.write("partial.xml", "<i18nResources><UTF8BytesPerCodePoint value='2'/><unknownTable/></i18nResources>");
  EXPECT_EQ(1, I18NInternalResources::load(dir.file("partial.xml").c_str()));
  EXPECT_EQ(2, I18NInternalResources::getUTF8BytesPerCodePoint());
  EXPECT_EQ("Shift_JIS", encodingFor("ja-jp"));
  EXPECT_EQ("de-de", defaultFor("de"));
  EXPECT_NE(nullptr, std::unique_ptr<icu::Transliterator>(I18NInternalResources::getTransliterator()).get());
}

TEST_F(I18NResourceFileTest, StartUpForcesUnicodeStringsWhenTheFileTurnsTheFastPathOff) {
  ScratchDir dir;
  dir.write("res.xml", "<i18nResources><memoryManagement asciiFastPath='false'/></i18nResources>");
  ASSERT_EQ(1, I18NInternalResources::load(dir.file("res.xml").c_str()));
  ASSERT_FALSE(I18NString::isForceUnicodeString());
  ASSERT_NE(0, I18NInitialize());
  EXPECT_TRUE(I18NString::isForceUnicodeString());
  EXPECT_TRUE(I18NString("plain ascii").isUnicodeMode());
  I18NTerminate();
  I18NString::setForceUnicodeString(false);
  EXPECT_FALSE(I18NString("plain ascii").isUnicodeMode());
}

TEST_F(I18NResourceFileTest, CustomFileSetsEveryTable) {
  ASSERT_EQ(1, I18NInternalResources::load(XYL_I18N_TEST_DATA "/custom_res.xml"));
  EXPECT_EQ(4, I18NInternalResources::getUTF8BytesPerCodePoint());
  EXPECT_FALSE(I18NInternalResources::useAsciiFastPath());
  EXPECT_EQ("sw-ke", defaultFor("sw"));
  EXPECT_EQ("de-ch", defaultFor("de"));
  EXPECT_EQ("ISO-8859-2", encodingFor("XX_yy"));
  EXPECT_EQ("UTF-8", encodingFor("en-us"));
  EXPECT_EQ("windows-1252", encodingFor("en-gb")); // built-in entry for the language
  EXPECT_EQ("xx-yy", localeFor(0x7C01));
  EXPECT_EQ(0x7C01, I18NInternalResources::getLCIDForLocale("xx_YY.UTF-8"));

  struct NonNormalizable {
    unsigned int codePoint;
    bool expected;
  } points[] = {{0x2125, false}, {0x2126, true}, {0x2127, false}, {0xF8FF, false},
                {0xF900, true},  {0xF910, true}, {0xF920, true},  {0xF921, false}};
  EXPECT_TRUE(I18NInternalResources::hasNonNormalizableCharacters());
  for (const NonNormalizable &p : points)
    EXPECT_EQ(p.expected, I18NInternalResources::isNonNormalizable(p.codePoint)) << std::hex << p.codePoint;

  std::unique_ptr<icu::Transliterator> transliterator(I18NInternalResources::getTransliterator());
  ASSERT_NE(nullptr, transliterator);
  icu::UnicodeString text(u"xAy\u301c");
  transliterator->transliterate(text);
  EXPECT_TRUE(text == icu::UnicodeString(u"xBCy\u301c")); // the file's list replaces the built-in one
}

TEST_F(I18NResourceFileTest, ConfiguredReplacementsDriveMode1) {
  ASSERT_EQ(1, I18NInternalResources::load(XYL_I18N_TEST_DATA "/custom_res.xml"));
  struct InputCase {
    const char *encoding;
    std::string bytes;
    std::u16string expected;
    I18NErrorCodes error;
  } inputs[] = {
      {"UTF-8",
       "a\xFF"
       "b",
       u"a\u2603b", I18N_SUCCESS},
      {"UTF-8", "a\xC3", u"a\ufffd\ufffd", I18N_SUCCESS}, // any other sequence
      {"ISO-8859-1", "a\xFF", u"a\u00ff", I18N_SUCCESS},
      {"US-ASCII", "a\xFF", u"", I18N_GENERAL_FAILURE}, // nothing configured for ASCII input
  };
  for (const InputCase &c : inputs) {
    I18NConverter converter(c.encoding);
    unsigned short buffer[16];
    I18NErrorCodes error = I18N_SUCCESS;
    int n = converter.toUnicode(c.bytes.data(), static_cast<int>(c.bytes.size()), buffer, sizeof buffer, &error);
    EXPECT_EQ(c.error, error) << c.encoding;
    if (c.error == I18N_SUCCESS) {
      EXPECT_EQ(c.expected, std::u16string(reinterpret_cast<char16_t *>(buffer), static_cast<size_t>(n / 2)))
          << c.encoding;
    }
  }
  struct OutputCase {
    const char *encoding;
    std::u16string text;
    std::string expected;
  } outputs[] = {
      {"ISO-8859-1", u"1\u20ac", "1EUR"},
      {"ISO-8859-1", u"\u4e00", "?"}, // the wildcard entry for every encoding
      {"US-ASCII", u"\u20ac", "?"},
      {"windows-1252", u"\u4e00", "?"},
  };
  for (const OutputCase &c : outputs) {
    I18NConverter converter(c.encoding);
    char buffer[16];
    I18NErrorCodes error = I18N_GENERAL_FAILURE;
    int n = converter.fromUnicode(reinterpret_cast<const unsigned short *>(c.text.c_str()), -1, buffer, sizeof buffer,
                                  &error);
    EXPECT_EQ(I18N_SUCCESS, error) << c.encoding;
    EXPECT_EQ(c.expected, std::string(buffer, static_cast<size_t>(n))) << c.encoding;
  }
}

TEST_F(I18NResourceFileTest, ReplacementQueriesRespectTheCapacity) {
  ASSERT_EQ(1, I18NInternalResources::load(XYL_I18N_TEST_DATA "/custom_res.xml"));
  unsigned int codePoints[2];
  EXPECT_EQ(2, I18NInternalResources::getReplacementSequence("UTF-8", "\xC3", 1, codePoints, 2));
  EXPECT_EQ(0, I18NInternalResources::getReplacementSequence("UTF-8", "\xC3", 1, codePoints, 1));
  EXPECT_EQ(0, I18NInternalResources::getReplacementSequence("UTF-8", nullptr, 1, codePoints, 2));
  char bytes[3];
  EXPECT_EQ(3, I18NInternalResources::getReplacementSequence("ISO-8859-1", 0x20AC, bytes, 3));
  EXPECT_EQ(0, I18NInternalResources::getReplacementSequence("ISO-8859-1", 0x20AC, bytes, 2));
  EXPECT_EQ(0, I18NInternalResources::getReplacementSequence("ISO-8859-1", 0x20AC, nullptr, 3));
}

// ---- Built-in tables ----------------------------------------------------------------------------

TEST_F(I18NResourceFileTest, LocaleTablesWithIcuFallbacks) {
  I18NInternalResources::load(kMissing);
  struct Default {
    const char *name;
    const char *expected;
  } defaults[] = {
      {"de", "de-de"},    {"DE", "de-de"},    {"pt", "pt-br"}, {"sw", "sw-tz"}, // ICU's likely subtags
      {"de-at", "de-at"}, {"en_GB", "en_GB"}, {"", ""},        {"xx", "xx"},
  };
  for (const Default &d : defaults)
    EXPECT_EQ(d.expected, defaultFor(d.name)) << d.name;

  EXPECT_EQ("en-us", localeFor(1033));
  EXPECT_EQ("ja-jp", localeFor(1041));
  EXPECT_EQ("de-de", localeFor(1031));
  EXPECT_EQ("(none)", localeFor(0));
  EXPECT_EQ(1033, I18NInternalResources::getLCIDForLocale("en-us"));
  EXPECT_EQ(1041, I18NInternalResources::getLCIDForLocale("ja_JP"));
  EXPECT_EQ(0, I18NInternalResources::getLCIDForLocale("zz-zz"));
  EXPECT_EQ(0, I18NInternalResources::getLCIDForLocale(nullptr));

  struct Encoding {
    const char *locale;
    const char *expected;
  } encodings[] = {{"ja-jp", "Shift_JIS"},    {"zh-tw", "Big5"},
                   {"zh-cn", "GBK"},          {"zh", "GBK"},
                   {"ko-kr", "windows-949"},  {"ru-ru", "windows-1251"},
                   {"en-us", "windows-1252"}, {"th", "windows-874"},
                   {"xx", "(none)"},          {"", "(none)"}};
  for (const Encoding &e : encodings) {
    EXPECT_EQ(e.expected, encodingFor(e.locale)) << e.locale;
    if (std::strcmp(e.expected, "(none)") != 0) {
      EXPECT_NO_THROW(I18NConverter converter(e.expected)) << e.expected;
    }
  }
}

TEST_F(I18NResourceFileTest, TimePeriodWordsFromTheCompanionFile) {
  I18NInternalResourcesTestPeer::resetPaths();
  EnvGuard execPath("QOR_EXEC_PATH", XYL_I18N_RESOURCES);
  I18NInternalResources::setDataDirectoryPath();
  struct Case {
    const char *locale;
    const char *key;
    const char *expected;
  } cases[] = {
      {"de", "DAY_COMPLETE_PLURAL", "Tage"},
      {"de-DE", "HOUR_COMPLETE_SINGULAR", "Stunde"},
      {"fr_FR.UTF-8", "YEAR_COMPLETE_PLURAL", "ans"},
      {"de", "TIME_PERIOD_SYNTAX_SEPARATOR", " <param index=\"1\"/> <param index=\"2\"/>"},
  };
  for (const Case &c : cases) {
    std::map<std::string, std::string> words;
    I18NInternalResources::getTimePeriodResources(c.locale, words);
    EXPECT_EQ(c.expected, words[c.key]) << c.locale << " " << c.key;
  }
  std::map<std::string, std::string> words{{"DAY_COMPLETE_SINGULAR", "day"}};
  I18NInternalResources::getTimePeriodResources("xx-yy", words);
  EXPECT_EQ(1u, words.size());
  EXPECT_EQ("day", words["DAY_COMPLETE_SINGULAR"]);
  I18NInternalResources::getTimePeriodResources(nullptr, words);
  EXPECT_EQ(1u, words.size());
  I18NInternalResourcesTestPeer::resetPaths();
}

TEST_F(I18NResourceFileTest, MalformedCompanionFileIsIgnored) {
  ScratchDir dir;
  dir.write("xyli18nrestp_de.xml", "<i18nResources><text key='A'>x</text>");
  dir.write("xyli18nrestp_fr.xml", "<i18nResources><text>x</text></i18nResources>");
  I18NInternalResourcesTestPeer::resetPaths();
  EnvGuard execPath("QOR_EXEC_PATH", dir.path().c_str());
  I18NInternalResources::setDataDirectoryPath();
  for (const char *locale : {"de", "fr"}) {
    std::map<std::string, std::string> words;
    testing::internal::CaptureStderr();
    I18NInternalResources::getTimePeriodResources(locale, words);
    const std::string report = testing::internal::GetCapturedStderr();
    EXPECT_TRUE(words.empty()) << locale;
    EXPECT_NE(std::string::npos, report.find("is malformed")) << report;
  }
  I18NInternalResourcesTestPeer::resetPaths();
}
