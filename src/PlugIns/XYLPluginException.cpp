#include <XYLCore/PlugIns/XYLPluginException.h>

#include <new>

XYL_IMPLEMENT_THROWABLE(XYLPluginException)
