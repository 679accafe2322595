/* SPDX-License-Identifier: Apache-2.0
 * XYLUnknownError.h - an unidentified failure.
 *
 * Derives from XYLUnexpectedError; built with a numeric or a text code and a message
 * (copied; null stays null). Severity Fatal. Thrown with XYL_THROW.
 */
#ifndef XYLCORE_EXCEPTIONHIERARCHY_ERRORS_XYLUNKNOWNERROR_H
#define XYLCORE_EXCEPTIONHIERARCHY_ERRORS_XYLUNKNOWNERROR_H

#include <XYLCore/ExceptionHierarchy/Errors/XYLUnexpectedError.h>

class XYL_API XYLUnknownError : public XYLUnexpectedError {
  XYL_DECLARE_THROWABLE(XYLUnknownError)

public:
  XYLUnknownError(long code, const char *message) : XYLUnexpectedError(code, message) {}
  XYLUnknownError(int code, const char *message) : XYLUnexpectedError(static_cast<long>(code), message) {}
  XYLUnknownError(const char *codeText, const char *message) : XYLUnexpectedError(codeText, message) {}
};

#endif // XYLCORE_EXCEPTIONHIERARCHY_ERRORS_XYLUNKNOWNERROR_H
