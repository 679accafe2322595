/* SPDX-License-Identifier: Apache-2.0
 * I18NUnexpectedError.h - unexpected failures in the internationalisation classes.
 *
 * Derives from XYLUnexpectedError; built with a numeric or a text code and a message
 * (copied; null stays null). Severity Fatal. Thrown with XYL_THROW.
 */
#ifndef XYLCORE_EXCEPTIONHIERARCHY_ERRORS_I18NUNEXPECTEDERROR_H
#define XYLCORE_EXCEPTIONHIERARCHY_ERRORS_I18NUNEXPECTEDERROR_H

#include <XYLCore/ExceptionHierarchy/Errors/XYLUnexpectedError.h>

class XYL_API I18NUnexpectedError : public XYLUnexpectedError {
  XYL_DECLARE_THROWABLE(I18NUnexpectedError)

public:
  I18NUnexpectedError(long code, const char *message) : XYLUnexpectedError(code, message) {}
  I18NUnexpectedError(int code, const char *message) : XYLUnexpectedError(static_cast<long>(code), message) {}
  I18NUnexpectedError(const char *codeText, const char *message) : XYLUnexpectedError(codeText, message) {}
};

#endif // XYLCORE_EXCEPTIONHIERARCHY_ERRORS_I18NUNEXPECTEDERROR_H
