/* SPDX-License-Identifier: Apache-2.0 */
// Test-only access to a throwable's back-trace lines as strings.
#ifndef XYLCORE_TESTS_SUPPORT_XYLTRACELINES_H
#define XYLCORE_TESTS_SUPPORT_XYLTRACELINES_H

#include <XYLCore/ExceptionHierarchy/XYLThrowable.h>

#include <string>
#include <vector>

namespace xyltest {

// Every back-trace line of `throwable`, oldest first.
inline std::vector<std::string> traceLines(const XYLThrowable &throwable) {
  std::vector<std::string> lines;
  // The list offers no const iteration; reading does not change it.
  XYLList<char *> &trace = const_cast<XYLList<char *> &>(throwable.getBackTrace());
  for (XYLList<char *>::iterator it = trace.begin(); it != trace.end(); ++it)
    lines.push_back(*it);
  return lines;
}

} // namespace xyltest

#endif
