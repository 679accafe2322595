/*
 * XYLException.h - recoverable conditions.
 *
 * The second branch of the tree beside XYLError: severity Error unless given,
 * a numeric or text code, and (with the messages layer) a set of catalog
 * messages. Until a message set is attached, getMessage() answers the plain
 * message, which is null for every constructor here.
 * Thread safety and ownership as for XYLThrowable.
 */
#ifndef XYLCORE_EXCEPTIONHIERARCHY_XYLEXCEPTION_H
#define XYLCORE_EXCEPTIONHIERARCHY_XYLEXCEPTION_H

#include <XYLCore/ExceptionHierarchy/XYLThrowable.h>

class XYL_API XYLException : public XYLThrowable {
  XYL_DECLARE_THROWABLE(XYLException)

public:
  explicit XYLException(long code) : XYLThrowable(XYLSeverityError, code, nullptr) {}
  explicit XYLException(int code) : XYLThrowable(XYLSeverityError, static_cast<long>(code), nullptr) {}
  XYLException(XYLSeverity severity, long code) : XYLThrowable(severity, code, nullptr) {}
  XYLException(XYLSeverity severity, int code) : XYLThrowable(severity, static_cast<long>(code), nullptr) {}
  explicit XYLException(const char *codeText) : XYLThrowable(XYLSeverityError, codeText, nullptr) {}
  XYLException(XYLSeverity severity, const char *codeText) : XYLThrowable(severity, codeText, nullptr) {}
};

#endif // XYLCORE_EXCEPTIONHIERARCHY_XYLEXCEPTION_H
