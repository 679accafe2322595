/* SPDX-License-Identifier: Apache-2.0
 * XYLPluginLibraryLoader.h - loading and unloading plug-in libraries.
 *
 * load() opens a shared library by path and returns its handle; unload()
 * closes it. initialize() and terminate() run a plug-in's start and stop
 * routines (resolved by the caller, for example with findSymbol()).
 *
 * Paths: a relative path is first resolved against the process's effective
 * working directory when one is set (XYLFmDir::resolveEffectivePath). The
 * result goes to the system loader as it stands: a name without '/' is
 * searched in the loader's directories (LD_LIBRARY_PATH, the cache, the
 * default directories), a name with one is used as a path; no file name
 * extension is added. An empty path is refused (the system would hand out
 * the program itself), with the system's text for "no such file". All of the library's symbols are bound at load time
 * (a missing symbol fails the load) and stay private to it. Loading a
 * library that is loaded already returns the same handle and counts one
 * more load; each load needs one unload.
 *
 * Throws XYLPluginException (severity 1 "Error"):
 *   load    code 1; plain message: the system loader's text, " (", the
 *           resolved path and ")"; back-trace text
 *           "XYLPluginLibraryLoader::load";
 *   unload  code 2; plain message: the system loader's text alone (none for
 *           a null handle, which the system is not asked about); back-trace
 *           text "XYLPluginLibraryLoader::unload".
 * The plain message is what getMessage() returns and what toString()
 * renders as its message text.
 *
 * Thread safety: every operation may be called from any thread; the system
 * loader serialises loads and unloads. Unloading a library while another
 * thread runs its code, or using its symbols afterwards, is undefined.
 */
#ifndef XYLCORE_PLUGINS_XYLPLUGINLIBRARYLOADER_H
#define XYLCORE_PLUGINS_XYLPLUGINLIBRARYLOADER_H

#include <XYLCore/XYLExport.h>

#include <string>

// A plug-in's start or stop routine.
typedef void (*XYLPluginRoutine)();

class XYL_API XYLPluginLibraryLoader {
public:
  // Loads the library at `path`; returns its handle. Throws code 1.
  static void *load(const std::string &path);
  // Unloads a library load() returned. Throws code 2.
  static void unload(void *handle);
  // Calls `routine` when it is not null; the handle is not used.
  static void initialize(void *handle, XYLPluginRoutine routine);
  static void terminate(void *handle, XYLPluginRoutine routine);
  // The address of the symbol `name` in the library, or null when it has
  // none (or either argument is null). Does not throw.
  static void *findSymbol(void *handle, const char *name);

private:
  XYLPluginLibraryLoader() = delete;
};

#endif // XYLCORE_PLUGINS_XYLPLUGINLIBRARYLOADER_H
