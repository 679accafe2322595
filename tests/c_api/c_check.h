/* SPDX-License-Identifier: Apache-2.0 */
/* c_check.h: the one assertion of the C test programs. A failed CHECK is
 * reported with its place and counted; main returns nonzero when any
 * failed. */
#ifndef XYL_TESTS_C_CHECK_H
#define XYL_TESTS_C_CHECK_H

#include <stdio.h>

static int failures = 0;

#define CHECK(cond)                                                                                                    \
  do {                                                                                                                 \
    if (!(cond)) {                                                                                                     \
      fprintf(stderr, "%s:%d: check failed: %s\n", __FILE__, __LINE__, #cond);                                         \
      ++failures;                                                                                                      \
    }                                                                                                                  \
  } while (0)

#endif
