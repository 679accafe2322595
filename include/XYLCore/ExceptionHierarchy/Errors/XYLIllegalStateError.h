/* SPDX-License-Identifier: Apache-2.0
 * XYLIllegalStateError.h - an operation in the wrong state.
 *
 * Derives from XYLRuntimeError; built with a numeric or a text code and a message
 * (copied; null stays null). Severity Fatal. Thrown with XYL_THROW.
 */
#ifndef XYLCORE_EXCEPTIONHIERARCHY_ERRORS_XYLILLEGALSTATEERROR_H
#define XYLCORE_EXCEPTIONHIERARCHY_ERRORS_XYLILLEGALSTATEERROR_H

#include <XYLCore/ExceptionHierarchy/Errors/XYLRuntimeError.h>

class XYL_API XYLIllegalStateError : public XYLRuntimeError {
  XYL_DECLARE_THROWABLE(XYLIllegalStateError)

public:
  XYLIllegalStateError(long code, const char *message) : XYLRuntimeError(code, message) {}
  XYLIllegalStateError(int code, const char *message) : XYLRuntimeError(static_cast<long>(code), message) {}
  XYLIllegalStateError(const char *codeText, const char *message) : XYLRuntimeError(codeText, message) {}
};

#endif // XYLCORE_EXCEPTIONHIERARCHY_ERRORS_XYLILLEGALSTATEERROR_H
