// SPDX-License-Identifier: Apache-2.0
// The library's plain C entry points. Only OS-independent code lives here;
// the batch-mode backend is included from posix/ at the end.
#include <XYLCore/Core/xylcore.h>

#include <cstdio>
#include <new>

namespace {

// Kept in the library's data for the `what` tool; never printed.
[[gnu::used]] const char kWhatIdentification[] = "@(#)\t1.0 Oct 17 2007 11:16:42";

const int kApiMajor = 1;
const int kApiMinor = 0;

XYLNewHandler g_clientNewHandler = nullptr;

// Called by operator new when an allocation fails: tell the client once, then
// fail the allocation instead of letting the runtime retry it.
void newHandlerTrampoline() {
  XYLNewHandler hook = g_clientNewHandler;
  if (hook != nullptr)
    hook();
  throw std::bad_alloc();
}

bool setProcessToLowestPriority();

} // namespace

extern "C" {

int xylCoreGetApiVersion(int *major, int *minor) {
  if (major != nullptr)
    *major = kApiMajor;
  if (minor != nullptr)
    *minor = kApiMinor;
  return 0;
}

int xylGetApiVersion(int *major, int *minor) { return xylCoreGetApiVersion(major, minor); }

int xylCoreIsCompatibleWith(int major, int minor) { return major == kApiMajor && minor <= kApiMinor ? 0 : -1; }

int xylIsCompatibleWith(int major, int minor) {
  if (major != kApiMajor || minor > kApiMinor)
    return -1;
  return xylCoreIsCompatibleWith(kApiMajor, kApiMinor);
}

XYLNewHandler xylSetNewHandler(XYLNewHandler handler) {
  XYLNewHandler previous = g_clientNewHandler;
  g_clientNewHandler = handler;
  std::set_new_handler(handler != nullptr ? newHandlerTrampoline : nullptr);
  return previous;
}

int xylSetBatchMode(void) { return setProcessToLowestPriority() ? 1 : 0; }

const char *xylErrorGetText(int, ...) {
  std::fputs("xylErrorGetText not yet implemented\n", stdout);
  return nullptr;
}

unsigned int xylh2nl(unsigned int value) { return __builtin_bswap32(value); }
unsigned int xyln2hl(unsigned int value) { return __builtin_bswap32(value); }
unsigned short xylh2ns(unsigned short value) { return __builtin_bswap16(value); }
unsigned short xyln2hs(unsigned short value) { return __builtin_bswap16(value); }

} // extern "C"

#include "posix/xylcore_posix.inc"
