/* SPDX-License-Identifier: Apache-2.0 */
/* Compiled as C: the process-wide timer's header must be plain C, and a C
 * caller must be able to drive the timer as documented. */
#include <XYLCore/Utility/xyltimer.h>

#include <string.h>

int xylTimerCApiUse(void);

/* 0 when a start, an active and a passive reading behave; else the step that failed. */
int xylTimerCApiUse(void) {
  const char *line;
  size_t length;
  unsigned long elapsed;
  xylTimerStart();
  elapsed = xylTimerGetElapsed(1);
  if (elapsed > 60000ul)
    return 1;
  line = xylTimerGetTimes(0);
  length = strlen(line);
  if (length < 10 || strcmp(line + length - 10, "e(passive)") != 0)
    return 2;
  xylTimerStop();
  if (xylTimerGetCPU(0) > 60000ul)
    return 3;
  return 0;
}
