/* SPDX-License-Identifier: Apache-2.0
 * XYLSystemError.h - failures of the operating system.
 *
 * Derives from XYLUnexpectedError; built with a numeric or a text code and a message
 * (copied; null stays null). Severity Fatal. Thrown with XYL_THROW.
 */
#ifndef XYLCORE_EXCEPTIONHIERARCHY_ERRORS_XYLSYSTEMERROR_H
#define XYLCORE_EXCEPTIONHIERARCHY_ERRORS_XYLSYSTEMERROR_H

#include <XYLCore/ExceptionHierarchy/Errors/XYLUnexpectedError.h>

class XYL_API XYLSystemError : public XYLUnexpectedError {
  XYL_DECLARE_THROWABLE(XYLSystemError)

public:
  XYLSystemError(long code, const char *message) : XYLUnexpectedError(code, message) {}
  XYLSystemError(int code, const char *message) : XYLUnexpectedError(static_cast<long>(code), message) {}
  XYLSystemError(const char *codeText, const char *message) : XYLUnexpectedError(codeText, message) {}
};

#endif // XYLCORE_EXCEPTIONHIERARCHY_ERRORS_XYLSYSTEMERROR_H
