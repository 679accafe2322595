/* SPDX-License-Identifier: Apache-2.0
 * xyltimer.h - one process-wide timer for callers that want no object (C).
 *
 * The five functions drive a single static XYLUtTimer (see XYLUtTimer.h for
 * what start, stop and the readings mean). Results are milliseconds,
 * truncated to 32 bits, so intervals longer than about 49.7 days wrap.
 *
 * Thread safety: none. The process-wide timer is meant for one thread at a
 * time; concurrent use gives meaningless readings (never a crash).
 * xylTimerGetTimes returns a pointer into the timer that the next call
 * overwrites. Nothing here throws.
 */
#ifndef XYLCORE_UTILITY_XYLTIMER_H
#define XYLCORE_UTILITY_XYLTIMER_H

#include <XYLCore/XYLExport.h>

XYL_EXTERN_C_BEGIN

/* Begins a new measurement: clears the end point and records the start. */
XYL_API void xylTimerStart(void);
/* Records the end point; every call moves it. */
XYL_API void xylTimerStop(void);
/* Wall-clock milliseconds from start to the end point (stop first if stopFirst is non-zero). */
XYL_API unsigned long xylTimerGetElapsed(int stopFirst);
/* User plus system processor milliseconds of the process over the same interval. */
XYL_API unsigned long xylTimerGetCPU(int stopFirst);
/* One line such as "0.015s 0.031u 0.046t 1.204e", as XYLUtTimer::getTimes writes it. */
XYL_API const char *xylTimerGetTimes(int stopFirst);

XYL_EXTERN_C_END

#endif /* XYLCORE_UTILITY_XYLTIMER_H */
