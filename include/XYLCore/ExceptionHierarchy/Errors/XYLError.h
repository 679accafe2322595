/* SPDX-License-Identifier: Apache-2.0
 * XYLError.h - all errors: programming faults and system failures; severity Fatal.
 *
 * Derives from XYLThrowable; built with a numeric or a text code and a message
 * (copied; null stays null). Severity Fatal. Thrown with XYL_THROW.
 */
#ifndef XYLCORE_EXCEPTIONHIERARCHY_ERRORS_XYLERROR_H
#define XYLCORE_EXCEPTIONHIERARCHY_ERRORS_XYLERROR_H

#include <XYLCore/ExceptionHierarchy/XYLThrowable.h>

class XYL_API XYLError : public XYLThrowable {
  XYL_DECLARE_THROWABLE(XYLError)

public:
  XYLError(long code, const char *message) : XYLThrowable(code, message) {}
  XYLError(int code, const char *message) : XYLThrowable(static_cast<long>(code), message) {}
  XYLError(const char *codeText, const char *message) : XYLThrowable(codeText, message) {}
};

#endif // XYLCORE_EXCEPTIONHIERARCHY_ERRORS_XYLERROR_H
