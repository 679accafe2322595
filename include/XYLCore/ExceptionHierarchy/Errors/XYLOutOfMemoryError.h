/* SPDX-License-Identifier: Apache-2.0
 * XYLOutOfMemoryError.h - allocation failure.
 *
 * Derives from XYLSystemError; built with a numeric or a text code and a message
 * (copied; null stays null). Severity Fatal. Thrown with XYL_THROW.
 */
#ifndef XYLCORE_EXCEPTIONHIERARCHY_ERRORS_XYLOUTOFMEMORYERROR_H
#define XYLCORE_EXCEPTIONHIERARCHY_ERRORS_XYLOUTOFMEMORYERROR_H

#include <XYLCore/ExceptionHierarchy/Errors/XYLSystemError.h>

class XYL_API XYLOutOfMemoryError : public XYLSystemError {
  XYL_DECLARE_THROWABLE(XYLOutOfMemoryError)

public:
  XYLOutOfMemoryError(long code, const char *message) : XYLSystemError(code, message) {}
  XYLOutOfMemoryError(int code, const char *message) : XYLSystemError(static_cast<long>(code), message) {}
  XYLOutOfMemoryError(const char *codeText, const char *message) : XYLSystemError(codeText, message) {}
};

#endif // XYLCORE_EXCEPTIONHIERARCHY_ERRORS_XYLOUTOFMEMORYERROR_H
