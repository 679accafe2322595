/* SPDX-License-Identifier: Apache-2.0
 * XYLUnsupportedOperationError.h - an operation the platform does not offer.
 *
 * Derives from XYLSystemError; built with a numeric or a text code and a message
 * (copied; null stays null). Severity Fatal. Thrown with XYL_THROW.
 */
#ifndef XYLCORE_EXCEPTIONHIERARCHY_ERRORS_XYLUNSUPPORTEDOPERATIONERROR_H
#define XYLCORE_EXCEPTIONHIERARCHY_ERRORS_XYLUNSUPPORTEDOPERATIONERROR_H

#include <XYLCore/ExceptionHierarchy/Errors/XYLSystemError.h>

class XYL_API XYLUnsupportedOperationError : public XYLSystemError {
  XYL_DECLARE_THROWABLE(XYLUnsupportedOperationError)

public:
  XYLUnsupportedOperationError(long code, const char *message) : XYLSystemError(code, message) {}
  XYLUnsupportedOperationError(int code, const char *message) : XYLSystemError(static_cast<long>(code), message) {}
  XYLUnsupportedOperationError(const char *codeText, const char *message) : XYLSystemError(codeText, message) {}
};

#endif // XYLCORE_EXCEPTIONHIERARCHY_ERRORS_XYLUNSUPPORTEDOPERATIONERROR_H
