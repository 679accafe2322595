/* SPDX-License-Identifier: Apache-2.0
 * XYLThreadRecursiveMutex.h - an XYLThreadMutex made recursive = 1.
 *
 * Contract, throws, thread safety: those of XYLThreadMutex (the texts name
 * XYLThreadMutex). The owner may lock again; each lock needs one unlock.
 */
#ifndef XYLCORE_THREADS_XYLTHREADRECURSIVEMUTEX_H
#define XYLCORE_THREADS_XYLTHREADRECURSIVEMUTEX_H

#include <XYLCore/Threads/XYLThreadMutex.h>

class XYL_API XYLThreadRecursiveMutex : public XYLThreadMutex {
public:
  XYLThreadRecursiveMutex();
  ~XYLThreadRecursiveMutex() override;
};

#endif // XYLCORE_THREADS_XYLTHREADRECURSIVEMUTEX_H
