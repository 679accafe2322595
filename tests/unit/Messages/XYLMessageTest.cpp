// SPDX-License-Identifier: Apache-2.0
// The XML and text renderings of messages, parameters and sets, without
// catalogs.
#include <XYLCore/Messages/XYLMessage.h>
#include <XYLCore/Messages/XYLMessageSet.h>
#include <XYLCore/Messages/XYLMessageString.h>

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace {

std::string bytes(const I18NString &text) { return text.empty() ? std::string() : std::string(text.c_str("UTF8")); }

std::string xml(const XYLMessageBase &message, int withText) {
  I18NString out;
  message.toString("/nonexistent", "en-us", out, withText);
  return bytes(out);
}

std::string text(const XYLMessageBase &message) {
  I18NString out;
  message.format("/nonexistent", "en-us", out);
  return bytes(out);
}

std::string parmXML(const XYLMessageParm &parm, int textOnly) {
  I18NString out;
  parm.toString(out, textOnly);
  return bytes(out);
}

TEST(XYLMessageParmTest, RendersEachTagAsXMLAndText) {
  struct Case {
    XYLMessageParm parm;
    const char *xml;
    const char *text;
  } cases[] = {
      {XYLMessageParm(), "Type=\"unknown\" Value=\" />", ""},
      {XYLMessageParm(7UL), "Type=\"ulong\" Value=\"7\" />", "7"},
      // Values keep the 32 bits of the reference platform's long.
      {XYLMessageParm(0x1FFFFFFFFUL), "Type=\"ulong\" Value=\"4294967295\" />", "4294967295"},
      {XYLMessageParm(-12L), "Type=\"long\" Value=\"-12\" />", "-12"},
      {XYLMessageParm(0x100000005L), "Type=\"long\" Value=\"5\" />", "5"},
      {XYLMessageParm(1.5), "Type=\"double\" Value=\"1.500000\" />", "1.500000"},
      {XYLMessageParm("a \"q\" <b>"), "Type=\"string\" Value=\"a \"q\" <b>\" />", "a \"q\" <b>"},
      {XYLMessageParm(42UL, 1), "Type=\"msgid\" Value=\"0x2a\" />", "msgid(0x2a)"},
      {XYLMessageParm(0UL, 1), "Type=\"msgid\" Value=\"0000\" />", "msgid(0000)"},
      {XYLMessageParm(993600000L, XYLMsgParmDate), "Type=\"long\" Value=\"993600000\" />", "993600000"},
      {XYLMessageParm(255L, XYLMsgParmOpaque), "Type=\"opaque\" Value=\"0xff\" />", "<opaque parm>"},
      {XYLMessageParm(3L, static_cast<XYLMsgParm>(9)), "Type=\"illegal\" Value=\" />", ""},
  };
  for (const Case &c : cases) {
    EXPECT_EQ(std::string("<MessageParm Name=\"XYLMessageParm\" ") + c.xml, parmXML(c.parm, 0));
    EXPECT_EQ(std::string("<MessageParm Text=\"") + c.text + "\" />", parmXML(c.parm, 1));
  }
}

TEST(XYLMessageTest, XMLOfEachClass) {
  XYLMessageComponents components(XYLSeverityWarning, 42);
  components << XYLMessageParm(3) << XYLMessageParm("file.txt");
  XYLMessage catalogMessage("nocatalog", 7);
  XYLMessageFile fileMessage("nocatalog");
  const std::string componentsBody = "<MessageComponents ID=\"0x2a\" ><MessageParms>"
                                     "<MessageParm Name=\"XYLMessageParm\" Type=\"long\" Value=\"3\" />"
                                     "<MessageParm Name=\"XYLMessageParm\" Type=\"string\" Value=\"file.txt\" />"
                                     "</MessageParms></MessageComponents></Message>";
  const std::string componentsOpen =
      "<Message Name=\"XYLMessageComponents\" File=\"\" Severity=\"Warning\" Nesting=\"0\" >";
  const std::string catalogXML = "<Message Name=\"XYLMessage\" File=\"nocatalog\" Severity=\"Error\" Nesting=\"0\" >"
                                 "<MessageComponents ID=\"0x07\" ></MessageComponents></Message>";
  const std::string fileXML = "<Message Name=\"XYLMessageFile\" File=\"nocatalog\" Severity=\"Error\" Nesting=\"0\" >"
                              "<MessageComponents ID=\"0000\" ></MessageComponents></Message>";
  const std::string stringXML = "<Message Name=\"XYLMessageString\" File=\"\" Severity=\"Information\" Nesting=\"0\" >"
                                "<MessageText>disk \"C\" <full></MessageText></Message>";
  struct Case {
    const XYLMessageBase *message;
    int withText;
    std::string expected;
  };
  XYLMessageString plain(XYLSeverityInformation, "disk \"C\" <full>");
  XYLErrnoMessage errnoMessage(2);
  XYLWin32Message systemMessage(XYLSeverityFatal, 5L);
  const Case cases[] = {
      {&components, 0, componentsOpen + componentsBody},
      // A components message's text is its own XML without the text.
      {&components, 1,
       componentsOpen + "<MessageText>" + componentsOpen + componentsBody + "</MessageText>" + componentsBody},
      {&catalogMessage, 0, catalogXML},
      // No catalog: the text falls back to the XML without text element.
      {&catalogMessage, 1,
       catalogXML.substr(0, catalogXML.find("<MessageComponents")) + "<MessageText>" + catalogXML +
           "</MessageText><MessageComponents ID=\"0x07\" ></MessageComponents></Message>"},
      {&fileMessage, 0, fileXML},
      {&plain, 0, stringXML},
      {&plain, 1, stringXML},
      {&errnoMessage, 1, ""},
      {&systemMessage, 1, ""},
  };
  for (const Case &c : cases) {
    EXPECT_EQ(c.expected, xml(*c.message, c.withText)) << c.message->getClassName() << " switch " << c.withText;
    std::unique_ptr<XYLMessageBase> copy(c.message->clone());
    EXPECT_EQ(c.expected, xml(*copy, c.withText)) << "clone of " << c.message->getClassName();
  }
  EXPECT_EQ("disk \"C\" <full>", text(plain));
  EXPECT_EQ("", text(errnoMessage));
  EXPECT_EQ(catalogXML, text(catalogMessage));
  EXPECT_EQ(nullptr, components.getParmN(2));
  EXPECT_EQ(XYLMsgParmString, components.getParmN(1)->getType());
}

TEST(XYLMessageSetTest, NestingOrderAndOwnership) {
  XYLMessageSet set;
  XYLMessageString inner("inner");
  set << inner;
  inner.setText(I18NString("changed", "UTF8")); // the set holds a copy
  set.increaseNesting();
  set.addMessage(XYLMessageString(XYLSeverityWarning, "outer"));
  set.addMessageFront(XYLMessageString(XYLSeverityInformation, "first"));
  ASSERT_EQ(3u, set.getMessageCount());
  EXPECT_EQ(nullptr, set.getMessageN(3));
  const unsigned int nesting[] = {1, 0, 1};
  const char *texts[] = {"first", "inner", "outer"};
  for (unsigned int i = 0; i < 3; ++i) {
    EXPECT_EQ(nesting[i], set.getMessageN(i)->getNesting()) << i;
    EXPECT_EQ(texts[i], text(*set.getMessageN(i))) << i;
  }
  EXPECT_EQ(XYLSeverityError, set.getSeverity()); // "inner" has the default, Error
  EXPECT_EQ("first\ninner\nouter\n", [&] {
    I18NString out;
    set.format(nullptr, nullptr, out);
    return bytes(out);
  }());

  I18NString rendering;
  set.toString(nullptr, nullptr, rendering, 0);
  const std::string xmlText = bytes(rendering);
  EXPECT_EQ(0u, xmlText.find("<Messages><Message Name=\"XYLMessageString\" File=\"\" Severity=\"Information\" "
                             "Nesting=\"1\" ><MessageText>first</MessageText></Message>"))
      << xmlText;
  EXPECT_NE(std::string::npos, xmlText.find("Nesting=\"0\" ><MessageText>inner</MessageText></Message>"));
  EXPECT_EQ(xmlText.size() - 11, xmlText.find("</Messages>"));

  // Copies are deep; a transfer moves the messages with their levels.
  XYLMessageSet copy(set);
  XYLMessageSet target;
  target.transferMessages(copy);
  EXPECT_EQ(0u, copy.getMessageCount());
  ASSERT_EQ(3u, target.getMessageCount());
  EXPECT_EQ(1u, target.getMessageN(2)->getNesting());
  EXPECT_EQ(0u, target.getNesting());
  target = set;
  EXPECT_EQ(3u, target.getMessageCount());
  EXPECT_EQ(1u, target.getNesting());
}

TEST(XYLMessageSetTest, EmptySetRendersNothing) {
  XYLMessageSet set;
  I18NString out;
  set.toString(nullptr, "en-us", out, 1);
  set.format(nullptr, "en-us", out);
  EXPECT_TRUE(out.empty());
  EXPECT_EQ(XYLSeverityInformation, set.getSeverity());
  // Messages that render nothing still count.
  set << XYLErrnoMessage(2);
  set.toString(nullptr, "en-us", out, 1);
  EXPECT_EQ("<Messages></Messages>", bytes(out));
}

} // namespace
