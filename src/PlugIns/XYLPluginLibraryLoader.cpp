// SPDX-License-Identifier: Apache-2.0
// XYLPluginLibraryLoader: plug-in libraries loaded by path. Only
// OS-independent code lives here; the services of
// posix/XYLPluginLibraryLoader_posix.inc are included at the end.
#include <XYLCore/PlugIns/XYLPluginLibraryLoader.h>

#include "ExceptionHierarchy/XYLStdMemory_internal.h"
#include "XYLPluginOS_internal.h"

#include <XYLCore/ExceptionHierarchy/XYLErrors.h>
#include <XYLCore/FileManagement/XYLFmDir.h>

#include <new>

namespace {

// Carries a plain message into an XYLPluginException, whose constructors
// take none: the throwable part of the exception is assigned from it.
class MessageCarrier : public XYLThrowable {
public:
  MessageCarrier(XYLSeverity severity, long code, const char *message) : XYLThrowable(severity, code, message) {}
  XYLThrowable *clone() const override { return new (std::nothrow) MessageCarrier(*this); }
  [[noreturn]] void hurl(const XYLFileLocation &location, const char *text, const char *macroName) override {
    addBackTrace(location, text, macroName);
    throw MessageCarrier(*this);
  }
  const char *getThrowableName() const override { return "XYLPluginException"; }
};

// Raises XYLPluginException (severity Error) with `code`, the plain message
// `message` and the operation's name as the trace text. A system text also
// becomes the parameter of the catalog message for `code`; with none (the
// system was not asked) the exception carries neither.
[[noreturn]] void raisePluginError(long code, const std::string &message, const char *operation, int line) {
  XYLPluginException error(XYLSeverityError, code);
  if (!message.empty()) {
    const MessageCarrier carrier(XYLSeverityError, code, message.c_str());
    static_cast<XYLThrowable &>(error) = carrier;
    error.addLocalizationMessage(message.c_str());
  }
  error.hurl(XYLFileLocation(XYL_SOURCE_FILE, line), operation, "XYL_THROW");
}

} // namespace

void *XYLPluginLibraryLoader::load(const std::string &path) {
  return xyl_std_memory::guarded([&] {
    std::string resolved(path);
    XYLFmDir::resolveEffectivePath(resolved);
    std::string error;
    void *handle = xyl_plugin_os::openLibrary(resolved.c_str(), error);
    if (handle == nullptr) {
      std::string message;
      if (!error.empty())
        message = error + " (" + resolved + ")";
      raisePluginError(1, message, "XYLPluginLibraryLoader::load", __LINE__);
    }
    return handle;
  });
}

void XYLPluginLibraryLoader::unload(void *handle) {
  std::string error;
  if (handle == nullptr)
    raisePluginError(2, error, "XYLPluginLibraryLoader::unload", __LINE__);
  if (!xyl_plugin_os::closeLibrary(handle, error))
    raisePluginError(2, error, "XYLPluginLibraryLoader::unload", __LINE__);
}

void XYLPluginLibraryLoader::initialize(void * /*handle*/, XYLPluginRoutine routine) {
  if (routine != nullptr)
    routine();
}

void XYLPluginLibraryLoader::terminate(void * /*handle*/, XYLPluginRoutine routine) {
  if (routine != nullptr)
    routine();
}

void *XYLPluginLibraryLoader::findSymbol(void *handle, const char *name) {
  if (handle == nullptr || name == nullptr)
    return nullptr;
  return xyl_plugin_os::findSymbol(handle, name);
}

#include "posix/XYLPluginLibraryLoader_posix.inc"
