/*
 * XYLPluginException.h - failures of plug-in loading.
 *
 * An XYLException (severity Error unless given) with the same constructors.
 */
#ifndef XYLCORE_PLUGINS_XYLPLUGINEXCEPTION_H
#define XYLCORE_PLUGINS_XYLPLUGINEXCEPTION_H

#include <XYLCore/ExceptionHierarchy/XYLException.h>

class XYL_API XYLPluginException : public XYLException {
  XYL_DECLARE_THROWABLE(XYLPluginException)

public:
  explicit XYLPluginException(long code) : XYLException(code) {}
  explicit XYLPluginException(int code) : XYLException(code) {}
  XYLPluginException(XYLSeverity severity, long code) : XYLException(severity, code) {}
  XYLPluginException(XYLSeverity severity, int code) : XYLException(severity, code) {}
  explicit XYLPluginException(const char *codeText) : XYLException(codeText) {}
  XYLPluginException(XYLSeverity severity, const char *codeText) : XYLException(severity, codeText) {}
};

#endif // XYLCORE_PLUGINS_XYLPLUGINEXCEPTION_H
