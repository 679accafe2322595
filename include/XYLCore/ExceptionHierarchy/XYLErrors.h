/* SPDX-License-Identifier: Apache-2.0
 * XYLErrors.h - every class of the library's exception tree in one include.
 */
#ifndef XYLCORE_EXCEPTIONHIERARCHY_XYLERRORS_H
#define XYLCORE_EXCEPTIONHIERARCHY_XYLERRORS_H

#include <XYLCore/ExceptionHierarchy/Errors/I18NRuntimeError.h>
#include <XYLCore/ExceptionHierarchy/Errors/I18NUnexpectedError.h>
#include <XYLCore/ExceptionHierarchy/Errors/XYLAssertError.h>
#include <XYLCore/ExceptionHierarchy/Errors/XYLError.h>
#include <XYLCore/ExceptionHierarchy/Errors/XYLIllegalArgumentError.h>
#include <XYLCore/ExceptionHierarchy/Errors/XYLIllegalStateError.h>
#include <XYLCore/ExceptionHierarchy/Errors/XYLIndexOutOfBoundsError.h>
#include <XYLCore/ExceptionHierarchy/Errors/XYLOutOfMemoryError.h>
#include <XYLCore/ExceptionHierarchy/Errors/XYLRuntimeError.h>
#include <XYLCore/ExceptionHierarchy/Errors/XYLStdExceptionError.h>
#include <XYLCore/ExceptionHierarchy/Errors/XYLSystemError.h>
#include <XYLCore/ExceptionHierarchy/Errors/XYLThreadResourceError.h>
#include <XYLCore/ExceptionHierarchy/Errors/XYLUnexpectedError.h>
#include <XYLCore/ExceptionHierarchy/Errors/XYLUnknownError.h>
#include <XYLCore/ExceptionHierarchy/Errors/XYLUnsupportedOperationError.h>
#include <XYLCore/ExceptionHierarchy/Errors/XYLWin32SEHError.h>
#include <XYLCore/ExceptionHierarchy/XYLException.h>
#include <XYLCore/ExceptionHierarchy/XYLThrowable.h>
#include <XYLCore/PlugIns/XYLPluginException.h>
#include <new>

#endif // XYLCORE_EXCEPTIONHIERARCHY_XYLERRORS_H
