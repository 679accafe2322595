/* SPDX-License-Identifier: Apache-2.0
 * XYLAssertError.h - failed assertions; the message is the assertion's source text.
 *
 * Derives from XYLRuntimeError; built with a numeric or a text code and a message
 * (copied; null stays null). Severity Fatal. Thrown with XYL_THROW.
 */
#ifndef XYLCORE_EXCEPTIONHIERARCHY_ERRORS_XYLASSERTERROR_H
#define XYLCORE_EXCEPTIONHIERARCHY_ERRORS_XYLASSERTERROR_H

#include <XYLCore/ExceptionHierarchy/Errors/XYLRuntimeError.h>

class XYL_API XYLAssertError : public XYLRuntimeError {
  XYL_DECLARE_THROWABLE(XYLAssertError)

public:
  XYLAssertError(long code, const char *message) : XYLRuntimeError(code, message) {}
  XYLAssertError(int code, const char *message) : XYLRuntimeError(static_cast<long>(code), message) {}
  XYLAssertError(const char *codeText, const char *message) : XYLRuntimeError(codeText, message) {}
};

#endif // XYLCORE_EXCEPTIONHIERARCHY_ERRORS_XYLASSERTERROR_H
