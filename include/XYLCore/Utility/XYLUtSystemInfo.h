/* SPDX-License-Identifier: Apache-2.0
 * XYLUtSystemInfo.h - the machine name, the process id and a local time stamp.
 *
 * Thread safety: all functions may be called from any thread.
 * Failure: nothing throws except std::bad_alloc from the strings; a machine
 * name the system cannot give is returned as "".
 */
#ifndef XYLCORE_UTILITY_XYLUTSYSTEMINFO_H
#define XYLCORE_UTILITY_XYLUTSYSTEMINFO_H

#include <XYLCore/XYLExport.h>
#include <string>

class XYL_API XYLUtSystemInfo {
public:
  // The host name as the system reports it.
  static std::string getMachine();
  static unsigned long getProcessId();
  // Replaces `text` by the process id in decimal and returns it.
  static std::string &getProcessId(std::string &text);
  // The local time with milliseconds: extended "2024-01-31T23:59:58.123",
  // otherwise the 17 digits "20240131235958123".
  static std::string getTimeStamp(int extended);
};

#endif // XYLCORE_UTILITY_XYLUTSYSTEMINFO_H
