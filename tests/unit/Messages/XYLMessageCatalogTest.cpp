// SPDX-License-Identifier: Apache-2.0
// Catalog messages localised through ICU, the fallback to XML, and the
// renderings of exceptions that carry messages.
#include <XYLCore/ExceptionHierarchy/XYLErrors.h>
#include <XYLCore/Messages/XYLMessage.h>
#include <XYLCore/Messages/XYLMessageString.h>
#include <XYLCore/PlugIns/XYLPluginLibraryLoader.h>

#include "XYLChildProcess.h"
#include "XYLFmDirTestAccess.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <fstream>
#include <initializer_list>
#include <map>
#include <string>
#include <sys/stat.h>

namespace {

std::string bytes(const I18NString &text) { return text.empty() ? std::string() : std::string(text.c_str("UTF8")); }

void putWord(std::string &out, std::uint32_t value) {
  for (int shift = 24; shift >= 0; shift -= 8)
    out.push_back(static_cast<char>((value >> shift) & 0xFF));
}

// Writes a catalog file: big-endian header, index sorted by number, texts.
void writeCatalog(const std::string &path, const std::map<std::uint32_t, std::string> &texts) {
  std::string index, area;
  for (const auto &entry : texts) {
    putWord(index, entry.first);
    putWord(index, static_cast<std::uint32_t>(area.size()));
    putWord(index, static_cast<std::uint32_t>(entry.second.size() + 1));
    area += entry.second;
    area.push_back('\0');
  }
  std::string file("BMF1\0\0\0\0", 8);
  putWord(file, static_cast<std::uint32_t>(texts.size()));
  putWord(file, static_cast<std::uint32_t>(area.size()));
  std::ofstream(path, std::ios::binary) << file << index << area;
}

// 1970-01-12 12:00 UTC: the same calendar day in every time zone.
const long kNoonJan12 = 993600000L;

// A catalog "cat" in English at the top, German and French in language
// folders.
class XYLMessageCatalogTest : public ::testing::Test {
protected:
  void SetUp() override {
    ASSERT_EQ(0, ::mkdir((dir / "de").c_str(), 0700));
    ASSERT_EQ(0, ::mkdir((dir / "fr").c_str(), 0700));
    std::string twelve;
    for (int i = 0; i < 12; ++i)
      twelve += (i ? "|{" : "{") + std::to_string(i) + "}";
    writeCatalog(dir / "cat.bmf", {{1, "{0,plural,one{# file}other{# files}}"},
                                   {2, "Saved on {0,date,long}."},
                                   {3, "Use {braces} and '{1}' as they stand."},
                                   {4, twelve},
                                   {5, "{0} of {1,number}: {2}"},
                                   {6, "broken {0"},
                                   {20, "Cause: {0}"},
                                   {21, "disk full"},
                                   {0x80000000u, "high"}});
    writeCatalog(dir / "de/cat.bmf", {{1, "{0,plural,one{# Datei}other{# Dateien}}"},
                                      {2, "Gespeichert am {0,date,long}."},
                                      {5, "{0} von {1,number}: {2}"}});
    writeCatalog(dir / "fr/cat.bmf",
                 {{1, "{0,plural,one{# fichier}other{# fichiers}}"}, {2, "Enregistr\xC3\xA9 le {0,date,long}."}});
  }

  std::string text(const XYLMessageBase &message, const char *locale) {
    I18NString out;
    message.format(dir.path().c_str(), locale, out);
    return bytes(out);
  }

  xyltest::ScratchDirectory dir;
};

// A message of the catalog "cat" with parameters.
XYLMessage message(unsigned int number, std::initializer_list<XYLMessageParm> parms = {}) {
  XYLMessage result("cat", number);
  for (const XYLMessageParm &parm : parms)
    result << parm;
  return result;
}

TEST_F(XYLMessageCatalogTest, LocalisesPluralsDatesAndNumbers) {
  struct Case {
    XYLMessage message;
    const char *locale;
    const char *expected;
  } cases[] = {
      {message(1, {XYLMessageParm(1)}), "en-us", "1 file"},
      {message(1, {XYLMessageParm(2UL)}), "en-us", "2 files"},
      {message(1, {XYLMessageParm(0)}), "en-us", "0 files"},
      {message(1, {XYLMessageParm(1)}), "de-de", "1 Datei"},
      {message(1, {XYLMessageParm(3)}), "de-de", "3 Dateien"},
      {message(1, {XYLMessageParm(0)}), "fr-fr", "0 fichier"}, // French zero takes the singular
      {message(1, {XYLMessageParm(2)}), "fr-fr", "2 fichiers"},
      {message(1, {XYLMessageParm(1)}), nullptr, "1 file"},
      {message(1, {XYLMessageParm(2)}), "it-it", "2 files"}, // no Italian catalog: the top one
      {message(2, {XYLMessageParm(kNoonJan12, XYLMsgParmDate)}), "en-us", "Saved on January 12, 1970."},
      {message(2, {XYLMessageParm(kNoonJan12, XYLMsgParmDate)}), "de-de", "Gespeichert am 12. Januar 1970."},
      {message(2, {XYLMessageParm(kNoonJan12, XYLMsgParmDate)}), "fr-fr", "Enregistr\xC3\xA9 le 12 janvier 1970."},
      {message(5, {XYLMessageParm("a"), XYLMessageParm(1234.5), XYLMessageParm(7L, XYLMsgParmOpaque)}), "en-us",
       "a of 1,234.5: <opaque parm>"},
      {message(5, {XYLMessageParm("a"), XYLMessageParm(1234.5), XYLMessageParm()}), "de-de", "a von 1.234,5: "},
      // Unsigned longs go in as 32-bit integers.
      {message(5, {XYLMessageParm("b"), XYLMessageParm(4294967295UL), XYLMessageParm(1.5)}), "en-us", "b of -1: 1.5"},
      {message(3), "en-us", "Use {braces} and '{1}' as they stand."},
      {message(20, {XYLMessageParm(21UL, 1)}), "en-us", "Cause: disk full"},
      {message(20, {XYLMessageParm(99UL, 1)}), "en-us", "Cause: msgid(0x63)"},
      {message(0x80000000u), "en-us", "high"},
  };
  for (const Case &c : cases)
    EXPECT_EQ(c.expected, text(c.message, c.locale)) << c.message.getMessageID() << " " << (c.locale ? c.locale : "");
}

TEST_F(XYLMessageCatalogTest, OnlyTheFirstTenParametersAreUsed) {
  XYLMessage twelve = message(4);
  for (int i = 0; i < 12; ++i)
    twelve << XYLMessageParm(i * 11);
  EXPECT_EQ(12u, twelve.getParmCount());
  EXPECT_EQ("0|11|22|33|44|55|66|77|88|99|{10}|{11}", text(twelve, "en-us"));
}

TEST_F(XYLMessageCatalogTest, FallsBackToTheXMLWithoutText) {
  const std::string components =
      "<MessageComponents ID=\"0x%s\" ><MessageParms><MessageParm Name=\"XYLMessageParm\" Type=\"long\" "
      "Value=\"%s\" /></MessageParms></MessageComponents></Message>";
  struct Case {
    const char *catalog;
    unsigned int number;
    const char *why;
  } cases[] = {{"absent", 1, "missing catalog"},
               {"cat", 77, "missing number"},
               {"cat", 6, "pattern ICU rejects"},
               {"", 1, "no catalog name"}};
  for (const Case &c : cases) {
    XYLMessage m(c.catalog, c.number);
    m << XYLMessageParm(5);
    I18NString xmlForm;
    m.toString(dir.path().c_str(), "en-us", xmlForm, 0);
    EXPECT_EQ(bytes(xmlForm), text(m, "en-us")) << c.why;
    EXPECT_EQ(std::string::npos, bytes(xmlForm).find("MessageText")) << c.why;
    EXPECT_NE(std::string::npos, bytes(xmlForm).find("Type=\"long\" Value=\"5\" />")) << c.why;
  }
  // The text element of the switch carries the localised text.
  I18NString withText;
  message(1, {XYLMessageParm(2)}).toString(dir.path().c_str(), "de-de", withText, 1);
  EXPECT_EQ("<Message Name=\"XYLMessage\" File=\"cat\" Severity=\"Error\" Nesting=\"0\" ><MessageText>2 "
            "Dateien</MessageText><MessageComponents ID=\"0x01\" ><MessageParms><MessageParm Name=\"XYLMessageParm\" "
            "Type=\"long\" Value=\"2\" /></MessageParms></MessageComponents></Message>",
            bytes(withText));
}

TEST_F(XYLMessageCatalogTest, MessageFileKeepsItsCatalogUntilClosedOrMoved) {
  XYLMessageFile kept("cat", 21);
  EXPECT_EQ("disk full", text(kept, "en-us"));
  writeCatalog(dir / "cat.bmf", {{21, "replaced"}});
  EXPECT_EQ("disk full", text(kept, "en-us")) << "the open catalog is read once";
  XYLMessageFile copy(kept);
  EXPECT_EQ("replaced", text(copy, "en-us")) << "a copy opens its own";
  kept.close();
  EXPECT_EQ("replaced", text(kept, "en-us"));
  EXPECT_EQ("replaced", text(XYLMessage("cat", 21), "en-us"));
  kept.setMessage(1);
  kept << XYLMessageParm(2);
  EXPECT_EQ("2 Dateien", text(kept, "de-de")) << "another locale reopens";
}

TEST_F(XYLMessageCatalogTest, ExceptionRenderingsWithAndWithoutTrace) {
  XYLException e(XYLSeverityWarning, 7);
  e << message(1, {XYLMessageParm(2)}) << XYLMessageString("plain");
  const std::string open = "<Exception Name=\"XYLException\" Error=\"7\" Severity=\"Warning\"><Messages>";
  const std::string catalogOpen = "<Message Name=\"XYLMessage\" File=\"cat\" Severity=\"Error\" Nesting=\"0\" >";
  const std::string catalogBody = "<MessageComponents ID=\"0x01\" ><MessageParms><MessageParm Name=\"XYLMessageParm\" "
                                  "Type=\"long\" Value=\"2\" /></MessageParms></MessageComponents></Message>";
  const std::string plain = "<Message Name=\"XYLMessageString\" File=\"\" Severity=\"Error\" Nesting=\"0\" >"
                            "<MessageText>plain</MessageText></Message></Messages>";
  const std::string trace = "<TraceInfo><Trace Text=\"Messages/Here(3):XYLException: XYL_THROW: \" /></TraceInfo>";
  struct Case {
    bool traced;
    int withText;
    std::string expected;
  } cases[] = {
      {false, 0, open + catalogOpen + catalogBody + plain + "</Exception>"},
      {false, 1, open + catalogOpen + "<MessageText>2 Dateien</MessageText>" + catalogBody + plain + "</Exception>"},
      {true, 0, open + catalogOpen + catalogBody + plain + trace + "</Exception>"},
      {true, 1,
       open + catalogOpen + "<MessageText>2 Dateien</MessageText>" + catalogBody + plain + trace + "</Exception>"},
  };
  for (const Case &c : cases) {
    XYLException copy(e);
    if (c.traced)
      copy.addBackTrace(XYLFileLocation("Messages/Here", 3), nullptr, "XYL_THROW");
    I18NString out("prefix:", "UTF8");
    copy.toString(dir.path().c_str(), "de-de", out, c.withText);
    EXPECT_EQ("prefix:" + c.expected, bytes(out)) << c.traced << " " << c.withText;
  }
}

TEST_F(XYLMessageCatalogTest, RaisedExceptionsKeepTheirMessages) {
  xyltest::ScopedEnvironment catalogs("XYL_MSG_PATH", dir.path().c_str());
  XYLException e(3);
  EXPECT_STREQ("", e.getMessage());
  e << (message(1, {XYLMessageParm(1)}));
  try {
    XYL_THROW(e << (message(20, {XYLMessageParm(21UL, 1)})));
  } catch (XYLException &caught) {
    ASSERT_EQ(2u, caught.getMessageCount());
    EXPECT_STREQ("1 file\nCause: disk full\n", caught.getMessage());
    const XYLException &constant = caught;
    EXPECT_STREQ("1 file\nCause: disk full\n", constant.getMessage());
    const std::string rendering = caught.toString();
    EXPECT_EQ(0u, rendering.find("<Exception Name=\"XYLException\" Error=\"3\" Severity=\"Error\"><Messages>"));
    EXPECT_NE(std::string::npos, rendering.find("<MessageText>1 file</MessageText>"));
    EXPECT_NE(std::string::npos, rendering.find(":XYLException: XYL_THROW: \" /></TraceInfo></Exception>"));
    EXPECT_EQ(rendering, caught.toString()) << "a repeated call renders again in full";
    return;
  }
  ADD_FAILURE() << "not thrown";
}

TEST_F(XYLMessageCatalogTest, FailedPluginLoadCarriesItsCatalogText) {
  writeCatalog(dir / "xylpluginmsgs.bmf",
               {{1, "The plug-in library could not be loaded: {0}"}, {2, "not unloaded: {0}"}});
  xyltest::ScopedEnvironment catalogs("XYL_MSG_PATH", dir.path().c_str());
  const std::string path = dir / "libnothere.so";
  try {
    XYLPluginLibraryLoader::load(path);
    ADD_FAILURE() << "loaded";
  } catch (XYLPluginException &e) {
    ASSERT_NE(nullptr, e.getMessage());
    const std::string plain = e.getMessage();
    EXPECT_NE(std::string::npos, plain.find(" (" + path + ")")) << plain;
    ASSERT_EQ(1u, e.getMessageCount());
    I18NString out;
    e.format(nullptr, "en-us", out);
    EXPECT_EQ("The plug-in library could not be loaded: " + plain + "\n", bytes(out));
    const std::string rendering = e.toString();
    EXPECT_NE(std::string::npos, rendering.find("<Messages><MessageText>" + plain +
                                                "</MessageText><Message Name=\"XYLMessage\" File=\"xylpluginmsgs\" "
                                                "Severity=\"Error\" Nesting=\"0\" ><MessageText>The plug-in library "
                                                "could not be loaded: " +
                                                plain + "</MessageText><MessageComponents ID=\"0x01\" >"))
        << rendering;
  }
  XYLPluginException direct(XYLSeverityWarning, 2);
  direct.addLocalizationMessage("busy");
  I18NString out;
  direct.format(nullptr, "en-us", out);
  EXPECT_EQ("not unloaded: busy\n", bytes(out));
  EXPECT_EQ(XYLSeverityWarning, direct.getMessageN(0)->getSeverity());
}

TEST(XYLPluginExceptionTest, TheLibrarysOwnCatalogHasTheLoaderTexts) {
  xyltest::ScopedEnvironment defaultLocation("XYL_MSG_PATH", nullptr);
  XYLPluginException load(1), unload(2);
  load.addLocalizationMessage("libx.so: gone (/p/libx.so)");
  unload.addLocalizationMessage(static_cast<const char *>(nullptr));
  EXPECT_STREQ("The plug-in library could not be loaded: libx.so: gone (/p/libx.so)\n", load.getMessage());
  EXPECT_STREQ("The plug-in library could not be unloaded: \n", unload.getMessage());
}

} // namespace
