/* SPDX-License-Identifier: Apache-2.0
 * XYLIndexOutOfBoundsError.h - an index beyond a bound.
 *
 * Derives from XYLRuntimeError; built with a numeric or a text code and a message
 * (copied; null stays null). Severity Fatal. Thrown with XYL_THROW.
 */
#ifndef XYLCORE_EXCEPTIONHIERARCHY_ERRORS_XYLINDEXOUTOFBOUNDSERROR_H
#define XYLCORE_EXCEPTIONHIERARCHY_ERRORS_XYLINDEXOUTOFBOUNDSERROR_H

#include <XYLCore/ExceptionHierarchy/Errors/XYLRuntimeError.h>

class XYL_API XYLIndexOutOfBoundsError : public XYLRuntimeError {
  XYL_DECLARE_THROWABLE(XYLIndexOutOfBoundsError)

public:
  XYLIndexOutOfBoundsError(long code, const char *message) : XYLRuntimeError(code, message) {}
  XYLIndexOutOfBoundsError(int code, const char *message) : XYLRuntimeError(static_cast<long>(code), message) {}
  XYLIndexOutOfBoundsError(const char *codeText, const char *message) : XYLRuntimeError(codeText, message) {}
};

#endif // XYLCORE_EXCEPTIONHIERARCHY_ERRORS_XYLINDEXOUTOFBOUNDSERROR_H
