/* SPDX-License-Identifier: Apache-2.0 */
// XYLPluginOS_internal.h - the operating-system services of the plug-in
// loader, implemented once per OS (posix/XYLPluginLibraryLoader_posix.inc).
#ifndef XYLCORE_SRC_PLUGINS_XYLPLUGINOS_INTERNAL_H
#define XYLCORE_SRC_PLUGINS_XYLPLUGINOS_INTERNAL_H

#include <string>

namespace xyl_plugin_os {

// Loads a library with every symbol bound now; null with the loader's text
// in `error` (empty when it gives none).
void *openLibrary(const char *path, std::string &error);
// Unloads a library; false with the loader's text in `error`.
bool closeLibrary(void *handle, std::string &error);
// A symbol's address, or null.
void *findSymbol(void *handle, const char *name);

} // namespace xyl_plugin_os

#endif // XYLCORE_SRC_PLUGINS_XYLPLUGINOS_INTERNAL_H
