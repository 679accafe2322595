/* SPDX-License-Identifier: Apache-2.0
 * I18NRuntimeError.h - faults in the internationalisation classes (code: an I18NErrorCodes value).
 *
 * Derives from XYLRuntimeError; built with a numeric or a text code and a message
 * (copied; null stays null). Severity Fatal. Thrown with XYL_THROW.
 */
#ifndef XYLCORE_EXCEPTIONHIERARCHY_ERRORS_I18NRUNTIMEERROR_H
#define XYLCORE_EXCEPTIONHIERARCHY_ERRORS_I18NRUNTIMEERROR_H

#include <XYLCore/ExceptionHierarchy/Errors/XYLRuntimeError.h>

class XYL_API I18NRuntimeError : public XYLRuntimeError {
  XYL_DECLARE_THROWABLE(I18NRuntimeError)

public:
  I18NRuntimeError(long code, const char *message) : XYLRuntimeError(code, message) {}
  I18NRuntimeError(int code, const char *message) : XYLRuntimeError(static_cast<long>(code), message) {}
  I18NRuntimeError(const char *codeText, const char *message) : XYLRuntimeError(codeText, message) {}
};

#endif // XYLCORE_EXCEPTIONHIERARCHY_ERRORS_I18NRUNTIMEERROR_H
