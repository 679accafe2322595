/* SPDX-License-Identifier: Apache-2.0 */
// Faulting code shared by the fault handler's tests.
#ifndef XYLCORE_TESTS_UNIT_QORTHREAD_XYLSEHANDLERTESTCODE_H
#define XYLCORE_TESTS_UNIT_QORTHREAD_XYLSEHANDLERTESTCODE_H

namespace xylsehtest {

// Built without -fnon-call-exceptions (XYLSEHandlerPlainCode.cpp): reads
// through pointer with a destructor in scope; the destructor counts into
// g_plainDestructorsRun.
int readWithCleanup(volatile int *pointer);
extern int g_plainDestructorsRun;

} // namespace xylsehtest

#endif
