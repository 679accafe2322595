// SPDX-License-Identifier: Apache-2.0
// Raise, trace, rethrow and render the library's throwables and messages.
#include <XYLCore/ExceptionHierarchy/XYLErrors.h>
#include <XYLCore/ExceptionHierarchy/XYLException.h>
#include <XYLCore/Messages/XYLMessageString.h>
#include <cstdio>

static void parse(const char *text) {
  if (text[0] != '{')
    XYL_THROW(XYLIllegalArgumentError(22, "parse: expected '{'"));
}

int main() {
  try {
    try {
      parse("[]");
    } catch (XYLThrowable &e) {
      XYL_RETHROW(e); // adds a second back-trace line
    }
  } catch (XYLIllegalArgumentError &e) {
    std::printf("%s\n", e.toString()); // XML with code, message and trace
  }
  XYLException failure(XYLSeverityWarning, 7L);
  failure << XYLMessageString("disk almost full");
  std::printf("%s: %s\n", XYLThrowable::getSeverityName(failure.getSeverity()), failure.getMessage());
  return 0;
}
