/* SPDX-License-Identifier: Apache-2.0
 * XYLPluginException.h - failures of plug-in loading.
 *
 * An XYLException (severity Error unless given) with the same constructors.
 * addLocalizationMessage appends the localisable description of the failure:
 * an XYLMessage of the library's catalog "xylpluginmsgs" whose number is the
 * exception's numeric code and whose one parameter {0} is the given text (a
 * string), at the exception's severity. The plug-in loader's codes and
 * their texts:
 *   1  a library could not be loaded; {0} is the system's text and the path
 *   2  a library could not be unloaded; {0} is the system's text
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

  // The catalog of the plug-in messages.
  static const char *getCatalogName() { return "xylpluginmsgs"; }

  // Appends the catalog message for this exception's code with `text` as
  // its parameter {0}; returns the exception. The text form is in the
  // platform default encoding (null: an empty parameter). Throws
  // XYLOutOfMemoryError when memory runs out.
  XYLPluginException &addLocalizationMessage(const I18NString &text);
  XYLPluginException &addLocalizationMessage(const char *text);
};

#endif // XYLCORE_PLUGINS_XYLPLUGINEXCEPTION_H
