/* SPDX-License-Identifier: Apache-2.0
 * XYLThreadResourceError.h - failures of the thread primitives.
 *
 * Carries an XYLThreadErrorCode: the object kind that ran out (when the
 * thread layer reports an exhausted resource) or XYLThreadErrorGeneric for
 * every other failure. Severity Fatal.
 */
#ifndef XYLCORE_EXCEPTIONHIERARCHY_ERRORS_XYLTHREADRESOURCEERROR_H
#define XYLCORE_EXCEPTIONHIERARCHY_ERRORS_XYLTHREADRESOURCEERROR_H

#include <XYLCore/ExceptionHierarchy/Errors/XYLSystemError.h>

enum XYLThreadErrorCode {
  XYLThreadErrorGeneric = -1,
  XYLThreadErrorOutOfThreads = -3,
  XYLThreadErrorOutOfKeys = -3,
  XYLThreadErrorOutOfCriticalSections = -4,
  XYLThreadErrorOutOfRWLocks = -4,
  XYLThreadErrorOutOfSemaphores = -5,
  XYLThreadErrorOutOfConditionVariables = -6,
  XYLThreadErrorOutOfMutexes = -7,
  XYLThreadErrorOutOfEvents = -7
};

class XYL_API XYLThreadResourceError : public XYLSystemError {
  XYL_DECLARE_THROWABLE(XYLThreadResourceError)

public:
  XYLThreadResourceError() : XYLSystemError(0L, nullptr) {}
  XYLThreadResourceError(XYLThreadErrorCode code, const char *message)
      : XYLSystemError(static_cast<long>(code), message) {}
};

#endif // XYLCORE_EXCEPTIONHIERARCHY_ERRORS_XYLTHREADRESOURCEERROR_H
