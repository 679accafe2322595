#include <XYLCore/ExceptionHierarchy/XYLException.h>

#include <new>

XYL_IMPLEMENT_THROWABLE(XYLException)
