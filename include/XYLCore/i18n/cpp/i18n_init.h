/* SPDX-License-Identifier: Apache-2.0
 * i18n_init.h - start and stop of the internationalisation layer.
 *
 * I18NInitialize counts nested calls; the first finds the installation
 * root and points ICU at it (I18NInternalResources::setDataDirectoryPath),
 * creates the UTF-8, UTF-16 and platform-default prototype converters and
 * computes the default locale name. I18NTerminate undoes one call; the last
 * one releases the platform default encoding name, the prototypes, every
 * pooled converter, the shared object maps, the default locale name and the
 * locale cache. Converters borrowed from a pool and I18NLocale objects must
 * not be used after the last I18NTerminate.
 *
 * Both calls are serialised by the layer's start-up lock, which also guards
 * the converter pools. Valid C and C++.
 * Failure: I18NInitialize returns 0 (and has undone its work) when a
 * prototype or the default locale name cannot be made; it throws
 * XYLOutOfMemoryError when memory runs out (C++ callers only).
 */
#ifndef XYLCORE_I18N_CPP_I18N_INIT_H
#define XYLCORE_I18N_CPP_I18N_INIT_H

#include <XYLCore/XYLExport.h>

XYL_EXTERN_C_BEGIN

/* Non-zero on success, 0 on failure. */
XYL_API int I18NInitialize(void);
XYL_API void I18NTerminate(void);
/* The process's default locale name, lower case with a hyphen ("en-us"),
 * from ICU's default locale ("en_US_POSIX" gives "en-us"). Raises
 * XYLAssertError "XYL_ASSERT(I18NLocale::gI18NDefaultLocaleName);" before
 * I18NInitialize. */
XYL_API const char *I18NGetDefaultLocaleName(void);

XYL_EXTERN_C_END

#endif /* XYLCORE_I18N_CPP_I18N_INIT_H */
