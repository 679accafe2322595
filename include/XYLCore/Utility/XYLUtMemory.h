/* SPDX-License-Identifier: Apache-2.0
 * XYLUtMemory.h - the C-heap seam of the library.
 *
 * Every C-heap allocation the library makes on its own behalf (byte buffers,
 * throwable texts, codec scratch blocks) goes through these functions, so
 * that a test can make the Nth allocation fail and check that the failure is
 * reported as documented. With no countdown set they are malloc, realloc and
 * free plus one relaxed atomic load.
 *
 * Thread safety: all functions may be called from any thread; the countdown
 * is process-wide (a test that sets it runs the code under test on one
 * thread).
 */
#ifndef XYLCORE_UTILITY_XYLUTMEMORY_H
#define XYLCORE_UTILITY_XYLUTMEMORY_H

#include <XYLCore/XYLExport.h>
#include <cstddef>

class XYL_API XYLUtMemory {
public:
  static void *malloc(std::size_t size);
  static void *calloc(std::size_t count, std::size_t size);
  static void *realloc(void *block, std::size_t size);
  static void free(void *block);
  // A copy of `text` on the C heap, or null when text is null or memory ran out.
  static char *strdup(const char *text);

  // Fault injection: the `countdown`-th allocation from now fails (1 = the
  // next one); with `sticky` non-zero every later one fails too. 0 turns
  // injection off. Returns the number of allocations that were failed since
  // the last call.
  static long setFailureCountdown(long countdown, int sticky);
};

#endif // XYLCORE_UTILITY_XYLUTMEMORY_H
