/* SPDX-License-Identifier: Apache-2.0 */
// XYLUtOS_internal.h - the operating-system services of the small utilities.
//
// Each function is implemented once per OS (posix/*.inc, included at the end
// of the .cpp that uses it). None of them throws or allocates.
#ifndef XYLCORE_SRC_UTILITY_XYLUTOS_INTERNAL_H
#define XYLCORE_SRC_UTILITY_XYLUTOS_INTERNAL_H

#include <cstddef>
#include <cstdint>

namespace xyl_ut_os {

// 100-ns units between 1601-01-01 and 1970-01-01 (both UTC).
constexpr std::int64_t kEpochOffset = 116444736000000000LL;

// The wall-clock time in 100-ns units since 1601-01-01 UTC, and the kernel
// and user processor time of the process in 100-ns units.
void readTimes(std::int64_t &wallClock, std::int64_t &kernelTime, std::int64_t &userTime);

// The host name, terminated, into buffer; false (buffer "") on failure.
bool readMachineName(char *buffer, std::size_t size);

unsigned long readProcessId();

struct LocalTime {
  int year;
  int month; // 1..12
  int day;
  int hour;
  int minute;
  int second;
  int millisecond;
};

// The current local time.
void readLocalTime(LocalTime &time);

} // namespace xyl_ut_os

#endif // XYLCORE_SRC_UTILITY_XYLUTOS_INTERNAL_H
