// SPDX-License-Identifier: Apache-2.0
// Counted start and stop of the whole library: the thread layer, the thread
// classes and the custodian, in that order, and back.
#include <XYLCore/Core/xylcore.h>
#include <XYLCore/QorThread/qorthread.h>
#include <XYLCore/Threads/XYLThread.h>
#include <XYLCore/Threads/XYLThreadCriticalSection.h>
#include <XYLCore/Threads/XYLThreadGuard.h>
#include <XYLCore/XYLCustodian/XYLCustodian.h>

namespace {

// The name under which the library brings up the thread layer.
const char kThreadLayerName[] = "XYLThreads";
// The library's name and API version, passed by the short entry points.
const char kVersion[] = "XYL 1.0";

// Initialise calls not yet matched by a terminate; only read and written
// under the lifecycle lock.
int g_initializeCount = 0;

// Made on first use, when the library (and so the thread layer) is loaded.
XYLThreadLockableResource &lifecycleLock() {
  static XYLThreadCriticalSection lock(0);
  return lock;
}

} // namespace

// The private start and stop operations are reached only from these two
// functions (they are their friends). Nothing thrown may leave a C entry
// point: a throw counts as the failure of the step that threw.
extern "C" {

int xylCoreInitialize(const char *) {
  try {
    XYLThreadGuard guard(lifecycleLock());
    // A failed first call counts too: it must be matched by a terminate, and
    // a later initialise does not retry.
    if (++g_initializeCount != 1)
      return 0;
    int result = 0;
    xylThreadProcessInitialize(kThreadLayerName);
    int threadClasses;
    try {
      threadClasses = XYLThread::Initialize();
    } catch (...) {
      threadClasses = -1;
    }
    // The custodian is started even when the thread classes failed.
    if (threadClasses < 0)
      result = -3;
    int custodian;
    try {
      custodian = XYLCustodian::initialize();
    } catch (...) {
      custodian = 0;
    }
    if (custodian == 0) {
      xylThreadProcessTerminate(kThreadLayerName);
      XYLThread::Terminate();
      result = -3;
    }
    return result;
  } catch (...) {
    // Only taking the lifecycle lock can fail here.
    return -3;
  }
}

int xylCoreTerminate(const char *) {
  try {
    XYLThreadGuard guard(lifecycleLock());
    if (g_initializeCount <= 0)
      return -2;
    if (--g_initializeCount > 0)
      return 0;
    try {
      XYLCustodian::terminate();
    } catch (...) {
      // The custodian is gone either way; the thread layer still stops.
    }
    xylThreadProcessTerminate(kThreadLayerName);
    return XYLThread::Terminate() < 0 ? -3 : 0;
  } catch (...) {
    return -3;
  }
}

int xylInitialize(void) { return xylCoreInitialize(kVersion); }

int xylTerminate(void) { return xylCoreTerminate(kVersion); }

} // extern "C"
