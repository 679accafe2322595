/* SPDX-License-Identifier: Apache-2.0
 * XYLRuntimeError.h - faults of the caller.
 *
 * Derives from XYLError; built with a numeric or a text code and a message
 * (copied; null stays null). Severity Fatal. Thrown with XYL_THROW.
 */
#ifndef XYLCORE_EXCEPTIONHIERARCHY_ERRORS_XYLRUNTIMEERROR_H
#define XYLCORE_EXCEPTIONHIERARCHY_ERRORS_XYLRUNTIMEERROR_H

#include <XYLCore/ExceptionHierarchy/Errors/XYLError.h>

class XYL_API XYLRuntimeError : public XYLError {
  XYL_DECLARE_THROWABLE(XYLRuntimeError)

public:
  XYLRuntimeError(long code, const char *message) : XYLError(code, message) {}
  XYLRuntimeError(int code, const char *message) : XYLError(static_cast<long>(code), message) {}
  XYLRuntimeError(const char *codeText, const char *message) : XYLError(codeText, message) {}
};

#endif // XYLCORE_EXCEPTIONHIERARCHY_ERRORS_XYLRUNTIMEERROR_H
