/* SPDX-License-Identifier: Apache-2.0 */
// Test-only access to XYLThread's private static operations (the key that
// maps threads to their objects, and the at-exit routine).
#ifndef XYLCORE_TESTS_SUPPORT_XYLTHREADTESTACCESS_H
#define XYLCORE_TESTS_SUPPORT_XYLTHREADTESTACCESS_H

#include <XYLCore/Threads/XYLThread.h>

// Befriended by XYLThread.
class XYLThreadTestAccess {
public:
  static int initialize() { return XYLThread::Initialize(); }
  static int terminate() { return XYLThread::Terminate(); }
  static int atExit(XYLThread::AtExitRoutine routine, int set) { return XYLThread::atExit(routine, set); }
};

#endif
