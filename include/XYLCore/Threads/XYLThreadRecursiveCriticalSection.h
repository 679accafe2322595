/* SPDX-License-Identifier: Apache-2.0
 * XYLThreadRecursiveCriticalSection.h - an XYLThreadCriticalSection made
 * recursive = 1.
 *
 * Contract, throws, thread safety: those of XYLThreadCriticalSection (the
 * texts name XYLThreadCriticalSection).
 */
#ifndef XYLCORE_THREADS_XYLTHREADRECURSIVECRITICALSECTION_H
#define XYLCORE_THREADS_XYLTHREADRECURSIVECRITICALSECTION_H

#include <XYLCore/Threads/XYLThreadCriticalSection.h>

class XYL_API XYLThreadRecursiveCriticalSection : public XYLThreadCriticalSection {
public:
  XYLThreadRecursiveCriticalSection();
  ~XYLThreadRecursiveCriticalSection() override;
};

#endif // XYLCORE_THREADS_XYLTHREADRECURSIVECRITICALSECTION_H
