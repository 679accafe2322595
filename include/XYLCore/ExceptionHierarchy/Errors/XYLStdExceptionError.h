/* SPDX-License-Identifier: Apache-2.0
 * XYLStdExceptionError.h - a standard-library exception caught by the library.
 *
 * Made from a std::exception it is an XYLUnexpectedError with code 0 and the
 * exception's what() text as its message. Severity Fatal.
 */
#ifndef XYLCORE_EXCEPTIONHIERARCHY_ERRORS_XYLSTDEXCEPTIONERROR_H
#define XYLCORE_EXCEPTIONHIERARCHY_ERRORS_XYLSTDEXCEPTIONERROR_H

#include <XYLCore/ExceptionHierarchy/Errors/XYLUnexpectedError.h>
#include <exception>

class XYL_API XYLStdExceptionError : public XYLUnexpectedError {
  XYL_DECLARE_THROWABLE(XYLStdExceptionError)

public:
  XYLStdExceptionError() : XYLUnexpectedError(0L, nullptr) {}
  explicit XYLStdExceptionError(const std::exception &e) : XYLUnexpectedError(0L, e.what()) {}
};

#endif // XYLCORE_EXCEPTIONHIERARCHY_ERRORS_XYLSTDEXCEPTIONERROR_H
