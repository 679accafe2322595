// SPDX-License-Identifier: Apache-2.0
#include <XYLCore/Logging/XYLMiniLogger.h>
#include <XYLCore/Utility/XYLUtSystemInfo.h>

#include "XYLFmDirTestAccess.h"

#include <gtest/gtest.h>

#include <cctype>
#include <fstream>
#include <sstream>
#include <string>
#include <sys/stat.h>
#include <thread>
#include <vector>

namespace {

std::string readFile(const std::string &path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream text;
  text << in.rdbuf();
  return text.str();
}

bool fileExists(const std::string &path) {
  struct stat info;
  return ::stat(path.c_str(), &info) == 0;
}

// Same length as a fresh stamp, digits where it has digits, the same
// punctuation elsewhere.
bool looksLikeTimeStamp(const std::string &stamp) {
  const std::string model = XYLUtSystemInfo::getTimeStamp(1);
  if (stamp.size() != model.size() || stamp.empty())
    return false;
  for (std::size_t i = 0; i < stamp.size(); ++i) {
    const bool digit = std::isdigit(static_cast<unsigned char>(model[i])) != 0;
    if (digit ? !std::isdigit(static_cast<unsigned char>(stamp[i])) : stamp[i] != model[i])
      return false;
  }
  return true;
}

// Splits a log into its entries: each is "<stamp>\t<rest up to ->\n\n>".
// Returns false when the text does not consist of whole entries.
bool splitEntries(const std::string &log, std::vector<std::string> &stamps, std::vector<std::string> &bodies) {
  std::size_t pos = 0;
  while (pos < log.size()) {
    const std::size_t tab = log.find('\t', pos);
    const std::size_t end = log.find("\n->\n\n", pos);
    if (tab == std::string::npos || end == std::string::npos || tab > end)
      return false;
    stamps.push_back(log.substr(pos, tab - pos));
    bodies.push_back(log.substr(tab + 1, end + 5 - tab - 1));
    pos = end + 5;
  }
  return true;
}

// A process layout <scratch>/bin (the effective working directory) and
// <scratch>/logs, so "../logs/" lands in the scratch directory.
class XYLMiniLoggerTest : public testing::Test {
protected:
  XYLMiniLoggerTest() : m_effective(m_scratch / "bin") {}
  void SetUp() override {
    ASSERT_EQ(0, ::mkdir((m_scratch / "bin").c_str(), 0700));
    ASSERT_EQ(0, ::mkdir((m_scratch / "logs").c_str(), 0700));
  }
  std::string logPath(const std::string &name) const { return m_scratch / ("logs/" + name + ".log"); }

  xyltest::ScratchDirectory m_scratch;
  xyltest::ScopedEffectiveWorkingDir m_effective;
};

TEST_F(XYLMiniLoggerTest, EntryFormat) {
  struct Case {
    bool trace;
    const char *source;
    const char *text;
    const char *body;
  };
  const Case cases[] = {
      {false, "Module::op", "it failed", "Module::op Error\n<-\nit failed\n->\n\n"},
      {true, "Module::op", "step 1", "Module::op Trace\n<-\nstep 1\n->\n\n"},
      {false, nullptr, "no source", " Error\n<-\nno source\n->\n\n"},
      {true, "src", nullptr, "src Trace\n<-\n\n->\n\n"},
      {false, nullptr, nullptr, " Error\n<-\n\n->\n\n"},
      {false, "multi", "line one\nline two\n", "multi Error\n<-\nline one\nline two\n\n->\n\n"},
      {true, "percent %s %d", "100% %n", "percent %s %d Trace\n<-\n100% %n\n->\n\n"},
  };
  int index = 0;
  for (const Case &c : cases) {
    const std::string name = "format" + std::to_string(index++);
    {
      XYLMiniLogger logger(name.c_str());
      ASSERT_TRUE(logger.isOpen());
      if (c.trace)
        logger.logTrace(c.source, c.text);
      else
        logger.log(c.source, c.text);
      // Flushed at once: the entry is in the file before the logger closes.
      const std::string log = readFile(logPath(name));
      const std::size_t tab = log.find('\t');
      ASSERT_NE(std::string::npos, tab) << log;
      EXPECT_TRUE(looksLikeTimeStamp(log.substr(0, tab))) << log.substr(0, tab);
      EXPECT_EQ(c.body, log.substr(tab + 1));
    }
  }
}

TEST_F(XYLMiniLoggerTest, NullOrEmptyNameWritesXylLog) {
  {
    XYLMiniLogger byDefault;
    byDefault.log("default", "1");
    XYLMiniLogger empty("");
    empty.log("empty", "2");
    XYLMiniLogger null(nullptr);
    null.log("null", "3");
  }
  std::vector<std::string> stamps, bodies;
  ASSERT_TRUE(splitEntries(readFile(logPath("xyl")), stamps, bodies));
  ASSERT_EQ(3u, bodies.size());
  EXPECT_EQ("default Error\n<-\n1\n->\n\n", bodies[0]);
  EXPECT_EQ("empty Error\n<-\n2\n->\n\n", bodies[1]);
  EXPECT_EQ("null Error\n<-\n3\n->\n\n", bodies[2]);
}

TEST_F(XYLMiniLoggerTest, TwoLoggersAppendToOneFile) {
  { std::ofstream(logPath("shared")) << "earlier\t\n->\n\n"; }
  XYLMiniLogger first("shared");
  XYLMiniLogger second("shared");
  first.log("first", "a");
  second.logTrace("second", "b");
  first.log("first", "c");
  std::vector<std::string> stamps, bodies;
  ASSERT_TRUE(splitEntries(readFile(logPath("shared")), stamps, bodies));
  ASSERT_EQ(4u, bodies.size());
  EXPECT_EQ("earlier", stamps[0]) << "the existing content stays";
  EXPECT_EQ("first Error\n<-\na\n->\n\n", bodies[1]);
  EXPECT_EQ("second Trace\n<-\nb\n->\n\n", bodies[2]);
  EXPECT_EQ("first Error\n<-\nc\n->\n\n", bodies[3]);
}

TEST_F(XYLMiniLoggerTest, MissingLogDirectoryMakesTheLoggerInert) {
  ASSERT_EQ(0, ::rmdir((m_scratch / "logs").c_str()));
  XYLMiniLogger logger("nowhere");
  EXPECT_FALSE(logger.isOpen());
  logger.log("source", "text");
  logger.logTrace("source", "text");
  EXPECT_FALSE(fileExists(m_scratch / "logs"));
}

TEST_F(XYLMiniLoggerTest, ConcurrentEntriesStayWhole) {
  const int kThreads = 4;
  const int kEntries = 200;
  const std::string text(300, 'x');
  {
    XYLMiniLogger logger("threads");
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t)
      threads.emplace_back([&logger, &text, t] {
        const std::string source = "thread" + std::to_string(t);
        for (int i = 0; i < kEntries; ++i)
          logger.log(source.c_str(), text.c_str());
      });
    for (std::thread &thread : threads)
      thread.join();
  }
  std::vector<std::string> stamps, bodies;
  ASSERT_TRUE(splitEntries(readFile(logPath("threads")), stamps, bodies));
  ASSERT_EQ(static_cast<std::size_t>(kThreads * kEntries), bodies.size());
  for (std::size_t i = 0; i < bodies.size(); ++i) {
    EXPECT_TRUE(looksLikeTimeStamp(stamps[i])) << i;
    const std::size_t blank = bodies[i].find(' ');
    ASSERT_NE(std::string::npos, blank);
    EXPECT_EQ(" Error\n<-\n" + text + "\n->\n\n", bodies[i].substr(blank)) << i;
  }
}

} // namespace
