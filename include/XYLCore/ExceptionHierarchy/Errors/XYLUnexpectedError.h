/* SPDX-License-Identifier: Apache-2.0
 * XYLUnexpectedError.h - failures that no caller could prevent.
 *
 * Derives from XYLError; built with a numeric or a text code and a message
 * (copied; null stays null). Severity Fatal. Thrown with XYL_THROW.
 */
#ifndef XYLCORE_EXCEPTIONHIERARCHY_ERRORS_XYLUNEXPECTEDERROR_H
#define XYLCORE_EXCEPTIONHIERARCHY_ERRORS_XYLUNEXPECTEDERROR_H

#include <XYLCore/ExceptionHierarchy/Errors/XYLError.h>

class XYL_API XYLUnexpectedError : public XYLError {
  XYL_DECLARE_THROWABLE(XYLUnexpectedError)

public:
  XYLUnexpectedError(long code, const char *message) : XYLError(code, message) {}
  XYLUnexpectedError(int code, const char *message) : XYLError(static_cast<long>(code), message) {}
  XYLUnexpectedError(const char *codeText, const char *message) : XYLError(codeText, message) {}
};

#endif // XYLCORE_EXCEPTIONHIERARCHY_ERRORS_XYLUNEXPECTEDERROR_H
