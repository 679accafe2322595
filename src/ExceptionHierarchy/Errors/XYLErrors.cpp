// SPDX-License-Identifier: Apache-2.0
// The members that every error class shares, stamped out by one macro so
// that each class's name, clone and rethrow stay in step.
#include <XYLCore/ExceptionHierarchy/XYLErrors.h>

#include <new>

XYL_IMPLEMENT_THROWABLE(XYLError)
XYL_IMPLEMENT_THROWABLE(XYLRuntimeError)
XYL_IMPLEMENT_THROWABLE(XYLAssertError)
XYL_IMPLEMENT_THROWABLE(XYLIllegalArgumentError)
XYL_IMPLEMENT_THROWABLE(XYLIllegalStateError)
XYL_IMPLEMENT_THROWABLE(XYLIndexOutOfBoundsError)
XYL_IMPLEMENT_THROWABLE(I18NRuntimeError)
XYL_IMPLEMENT_THROWABLE(XYLUnexpectedError)
XYL_IMPLEMENT_THROWABLE(XYLUnknownError)
XYL_IMPLEMENT_THROWABLE(XYLSystemError)
XYL_IMPLEMENT_THROWABLE(XYLUnsupportedOperationError)
XYL_IMPLEMENT_THROWABLE(XYLOutOfMemoryError)
XYL_IMPLEMENT_THROWABLE(XYLWin32SEHError)
XYL_IMPLEMENT_THROWABLE(XYLThreadResourceError)
XYL_IMPLEMENT_THROWABLE(I18NUnexpectedError)
XYL_IMPLEMENT_THROWABLE(XYLStdExceptionError)
