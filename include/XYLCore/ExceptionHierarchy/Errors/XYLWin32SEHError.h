/* SPDX-License-Identifier: Apache-2.0
 * XYLWin32SEHError.h - hardware faults (access violation, division by zero) turned into exceptions.
 *
 * Derives from XYLSystemError; built with a numeric or a text code and a message
 * (copied; null stays null). Severity Fatal. Thrown with XYL_THROW.
 */
#ifndef XYLCORE_EXCEPTIONHIERARCHY_ERRORS_XYLWIN32SEHERROR_H
#define XYLCORE_EXCEPTIONHIERARCHY_ERRORS_XYLWIN32SEHERROR_H

#include <XYLCore/ExceptionHierarchy/Errors/XYLSystemError.h>

class XYL_API XYLWin32SEHError : public XYLSystemError {
  XYL_DECLARE_THROWABLE(XYLWin32SEHError)

public:
  XYLWin32SEHError(long code, const char *message) : XYLSystemError(code, message) {}
  XYLWin32SEHError(int code, const char *message) : XYLSystemError(static_cast<long>(code), message) {}
  XYLWin32SEHError(const char *codeText, const char *message) : XYLSystemError(codeText, message) {}
};

#endif // XYLCORE_EXCEPTIONHIERARCHY_ERRORS_XYLWIN32SEHERROR_H
