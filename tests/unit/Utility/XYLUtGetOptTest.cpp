// SPDX-License-Identifier: Apache-2.0
#include <XYLCore/Utility/XYLUtGetOpt.h>

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace {

// Owns writable copies of the arguments. The pointer array has exactly argc
// entries and no closing null, so the sanitizer build catches any read at or
// past argc.
class Arguments {
public:
  Arguments(std::initializer_list<const char *> args) {
    for (const char *arg : args)
      m_storage.emplace_back(arg);
    m_argv.reset(new char *[m_storage.size()]);
    for (size_t i = 0; i < m_storage.size(); ++i)
      m_argv[i] = &m_storage[i][0];
  }
  int argc() const { return static_cast<int>(m_storage.size()); }
  char **argv() { return m_argv.get(); }

private:
  std::vector<std::string> m_storage;
  std::unique_ptr<char *[]> m_argv;
};

struct Step {
  int result;
  const char *argument; // expected option argument after the step, null for "not checked"
  int index;            // expected next index after the step
};

struct Scenario {
  const char *name;
  std::initializer_list<const char *> args;
  const char *options;
  std::vector<Step> steps;
  const char *lastError;
};

TEST(XYLUtGetOptTest, ScansOptionsByTheIndexRules) {
  const Scenario scenarios[] = {
      {"separate options", {"prog", "-a", "-b", "x"}, "ab:", {{'a', nullptr, 2}, {'b', "x", 4}, {-1, "x", 4}}, ""},
      {"missing argument names the first option letter",
       {"prog", "-a", "-b"},
       "ab:",
       {{'a', nullptr, 2}, {0, nullptr, 3}, {-1, nullptr, 3}},
       "\nprog : 'a' option requires an argument\n"},
      {"attached argument", {"prog", "-bvalue", "rest"}, "b:", {{'b', "value", 2}, {-1, "value", 2}}, ""},
      {"argument may look like an option", {"prog", "-b", "-a"}, "ab:", {{'b', "-a", 3}, {-1, "-a", 3}}, ""},
      // The index advances once per letter, also inside a cluster.
      {"cluster", {"prog", "-ab", "c"}, "ab", {{'a', nullptr, 2}, {'b', nullptr, 3}, {-1, nullptr, 3}}, ""},
      {"cluster past argc",
       {"prog", "-abc"},
       "abc",
       {{'a', nullptr, 2}, {'b', nullptr, 3}, {'c', nullptr, 4}, {-1, nullptr, 4}},
       ""},
      {"cluster skips an argument",
       {"prog", "-ab", "-c", "-d"},
       "abcd",
       {{'a', nullptr, 2}, {'b', nullptr, 3}, {'d', nullptr, 4}, {-1, nullptr, 4}},
       ""},
      {"cluster ending in an argument option",
       {"prog", "-ab", "val"},
       "ab:",
       {{'a', nullptr, 2}, {0, nullptr, 3}, {-1, nullptr, 3}},
       "\nprog : 'a' option requires an argument\n"},
      {"cluster with attached argument",
       {"prog", "-abxyz"},
       "ab:",
       {{'a', nullptr, 2}, {'b', "xyz", 3}, {-1, "xyz", 3}},
       ""},
      {"double dash is consumed", {"prog", "--", "-a"}, "a", {{-1, nullptr, 2}}, ""},
      {"double dash with text is consumed", {"prog", "--long", "-a"}, "a", {{-1, nullptr, 2}}, ""},
      {"lone dash is not consumed", {"prog", "-", "-a"}, "a", {{-1, nullptr, 1}, {-1, nullptr, 1}}, ""},
      {"operand ends the scan", {"prog", "file", "-a"}, "a", {{-1, nullptr, 1}}, ""},
      {"empty argument ends the scan", {"prog", "", "-a"}, "a", {{-1, nullptr, 1}}, ""},
      {"no arguments", {"prog"}, "a", {{-1, nullptr, 1}, {-1, nullptr, 1}}, ""},
      {"unknown letter",
       {"prog", "-x"},
       "ab",
       {{0, nullptr, 2}, {-1, nullptr, 2}},
       "\nprog : 'x' not a valid option\n"},
      {"unknown letter inside a cluster",
       {"prog", "-xa"},
       "a",
       {{0, nullptr, 2}, {'a', nullptr, 3}, {-1, nullptr, 3}},
       "\nprog : 'x' not a valid option\n"},
      {"options after the scan ended stay unread",
       {"prog", "-a", "op", "-b"},
       "ab",
       {{'a', nullptr, 2}, {-1, nullptr, 2}},
       ""},
      {"high byte letter", {"prog", "-\xE9"}, "\xE9", {{0xE9, nullptr, 2}, {-1, nullptr, 2}}, ""},
  };
  for (const Scenario &s : scenarios) {
    SCOPED_TRACE(s.name);
    Arguments args(s.args);
    XYLUtGetOpt scanner;
    scanner.setOptErr(0);
    EXPECT_EQ(scanner.getOptInd(), 1);
    EXPECT_EQ(scanner.getOptArg(), nullptr);
    for (size_t i = 0; i < s.steps.size(); ++i) {
      SCOPED_TRACE(i);
      const Step &step = s.steps[i];
      EXPECT_EQ(scanner.getOpt(args.argc(), args.argv(), s.options), step.result);
      EXPECT_EQ(scanner.getOptInd(), step.index);
      if (step.argument != nullptr) {
        ASSERT_NE(scanner.getOptArg(), nullptr);
        EXPECT_STREQ(scanner.getOptArg(), step.argument);
      }
    }
    EXPECT_STREQ(scanner.getErrorMsg(), s.lastError);
  }
}

TEST(XYLUtGetOptTest, ErrorsArePrintedUnlessSwitchedOff) {
  Arguments args({"tool", "-q", "-z"});
  XYLUtGetOpt scanner;
  EXPECT_EQ(scanner.getOptErr(), 1);
  EXPECT_STREQ(scanner.getErrorMsg(), "");
  testing::internal::CaptureStderr();
  EXPECT_EQ(scanner.getOpt(args.argc(), args.argv(), "a"), 0);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "\ntool : 'q' not a valid option\n");
  scanner.setOptErr(0);
  testing::internal::CaptureStderr();
  EXPECT_EQ(scanner.getOpt(args.argc(), args.argv(), "a"), 0);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
  EXPECT_STREQ(scanner.getErrorMsg(), "\ntool : 'z' not a valid option\n");
  // A long program name is cut to the 1024-character message buffer.
  std::string program(3000, 'p');
  Arguments longName({program.c_str(), "-x"});
  XYLUtGetOpt other;
  other.setOptErr(0);
  EXPECT_EQ(other.getOpt(longName.argc(), longName.argv(), "a"), 0);
  EXPECT_EQ(std::string(other.getErrorMsg()), "\n" + std::string(1022, 'p'));
}

} // namespace
