// SPDX-License-Identifier: Apache-2.0
// OS-independent part of the system queries; the services are in
// posix/XYLUtSystemInfo_posix.inc.
#include "ExceptionHierarchy/XYLStdMemory_internal.h"
#include "XYLUtOS_internal.h"

#include <XYLCore/Utility/XYLUtConvert.h>
#include <XYLCore/Utility/XYLUtSystemInfo.h>

#include <cstdio>

std::string XYLUtSystemInfo::getMachine() {
  // Host names are at most 255 bytes on every system we run on.
  char name[256];
  if (!xyl_ut_os::readMachineName(name, sizeof name))
    name[0] = '\0';
  return xyl_std_memory::guarded([&] { return std::string(name); });
}

unsigned long XYLUtSystemInfo::getProcessId() { return xyl_ut_os::readProcessId(); }

std::string &XYLUtSystemInfo::getProcessId(std::string &text) {
  std::string number;
  XYLUtConvert::ulongCvt(number, xyl_ut_os::readProcessId(), 1, '0', 0, '+');
  text.swap(number);
  return text;
}

std::string XYLUtSystemInfo::getTimeStamp(int extended) {
  xyl_ut_os::LocalTime now;
  xyl_ut_os::readLocalTime(now);
  char stamp[64];
  std::snprintf(stamp, sizeof stamp,
                extended != 0 ? "%04d-%02d-%02dT%02d:%02d:%02d.%03d" : "%04d%02d%02d%02d%02d%02d%03d", now.year,
                now.month, now.day, now.hour, now.minute, now.second, now.millisecond);
  return xyl_std_memory::guarded([&] { return std::string(stamp); });
}

#include "posix/XYLUtSystemInfo_posix.inc"
