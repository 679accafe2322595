// SPDX-License-Identifier: Apache-2.0
#include <XYLCore/Utility/XYLUtSystemInfo.h>

#include <gtest/gtest.h>

#include <cctype>
#include <ctime>
#include <string>
#include <unistd.h>

namespace {

TEST(XYLUtSystemInfoTest, MachineAndProcessId) {
  char name[256] = {};
  ASSERT_EQ(gethostname(name, sizeof name - 1), 0);
  EXPECT_EQ(XYLUtSystemInfo::getMachine(), name);
  EXPECT_EQ(XYLUtSystemInfo::getProcessId(), static_cast<unsigned long>(getpid()));
  std::string text = "old text is replaced";
  EXPECT_EQ(&XYLUtSystemInfo::getProcessId(text), &text);
  EXPECT_EQ(text, std::to_string(getpid()));
}

// Both forms parse back to the local time at the call (to the second).
TEST(XYLUtSystemInfoTest, TimeStampsAreLocalTimeWithMilliseconds) {
  // '9' marks a digit; the fields start at these offsets in each form.
  const char *shapes[] = {"99999999999999999", "9999-99-99T99:99:99.999"};
  const size_t fields[][6] = {{0, 4, 6, 8, 10, 12}, {0, 5, 8, 11, 14, 17}};
  for (int extended : {0, 1}) {
    std::time_t before = std::time(nullptr);
    std::string stamp = XYLUtSystemInfo::getTimeStamp(extended);
    std::time_t after = std::time(nullptr);
    std::string shape = shapes[extended];
    ASSERT_EQ(stamp.size(), shape.size()) << stamp;
    for (size_t i = 0; i < shape.size(); ++i)
      ASSERT_TRUE(shape[i] == '9' ? std::isdigit(static_cast<unsigned char>(stamp[i])) != 0 : stamp[i] == shape[i])
          << stamp;
    const size_t *at = fields[extended];
    std::tm tm{};
    tm.tm_year = std::stoi(stamp.substr(at[0], 4)) - 1900;
    tm.tm_mon = std::stoi(stamp.substr(at[1], 2)) - 1;
    tm.tm_mday = std::stoi(stamp.substr(at[2], 2));
    tm.tm_hour = std::stoi(stamp.substr(at[3], 2));
    tm.tm_min = std::stoi(stamp.substr(at[4], 2));
    tm.tm_sec = std::stoi(stamp.substr(at[5], 2));
    tm.tm_isdst = -1;
    std::time_t when = std::mktime(&tm);
    EXPECT_GE(when, before - 1) << stamp;
    EXPECT_LE(when, after + 1) << stamp;
  }
}

} // namespace
