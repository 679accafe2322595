/* SPDX-License-Identifier: Apache-2.0
 * XYLIllegalArgumentError.h - a bad argument.
 *
 * Derives from XYLRuntimeError; built with a numeric or a text code and a message
 * (copied; null stays null). Severity Fatal. Thrown with XYL_THROW.
 */
#ifndef XYLCORE_EXCEPTIONHIERARCHY_ERRORS_XYLILLEGALARGUMENTERROR_H
#define XYLCORE_EXCEPTIONHIERARCHY_ERRORS_XYLILLEGALARGUMENTERROR_H

#include <XYLCore/ExceptionHierarchy/Errors/XYLRuntimeError.h>

class XYL_API XYLIllegalArgumentError : public XYLRuntimeError {
  XYL_DECLARE_THROWABLE(XYLIllegalArgumentError)

public:
  XYLIllegalArgumentError(long code, const char *message) : XYLRuntimeError(code, message) {}
  XYLIllegalArgumentError(int code, const char *message) : XYLRuntimeError(static_cast<long>(code), message) {}
  XYLIllegalArgumentError(const char *codeText, const char *message) : XYLRuntimeError(codeText, message) {}
};

#endif // XYLCORE_EXCEPTIONHIERARCHY_ERRORS_XYLILLEGALARGUMENTERROR_H
