/* SPDX-License-Identifier: Apache-2.0
 * The thread layer's header compiled as C, and a short C program over it:
 * a thread, a mutex, a semaphore, an event and a variadic attribute list.
 * Exits 0 when every answer is as documented.
 */
#include <XYLCore/QorThread/qorthread.h>

#include "c_check.h"

#include <stdio.h>
#include <string.h>

struct Shared {
  QorMutex_ mutex;
  QorSemaphore_ done;
  int counter;
};

static void *worker(void *arg) {
  struct Shared *shared = (struct Shared *)arg;
  int i;
  for (i = 0; i < 1000; ++i) {
    qorThreadMutexLock(shared->mutex, __FILE__, __LINE__);
    ++shared->counter;
    qorThreadMutexUnlock(shared->mutex);
  }
  qorThreadSemaphorePost(shared->done);
  return (void *)(long)21;
}

int main(void) {
  struct Shared shared;
  QorThread_ threads[2] = {NULL, NULL};
  QorEvent_ event = NULL;
  QorMutex_ bad = (QorMutex_)&shared;
  int status = 0, i;

  CHECK(xylThreadProcessInitialize("XYLThreads") == QORTHREAD_OK);
  CHECK(strcmp(qorThreadErrorName(QORTHREAD_TIMEOUT), "QORTHREAD_TIMEOUT") == 0);
  CHECK(strcmp(qorThreadErrorName(2), "<invalid QorThread Error Code!>") == 0);

  memset(&shared, 0, sizeof shared);
  CHECK(qorThreadMutexCreate(&shared.mutex, QorMutexAttrCriticalSection, QorMutexAttrEnd) == QORTHREAD_OK);
  CHECK(qorThreadSemaphoreCreate(&shared.done, 0u, QorSemaphoreAttrEnd) == QORTHREAD_OK);
  CHECK(qorThreadMutexTryLock(shared.mutex, __FILE__, __LINE__) == QORTHREAD_NOT_SUPPORTED);
  CHECK(qorThreadMutexCreate(&bad, QorMutexAttrNoop, 42, QorMutexAttrEnd) == QORTHREAD_BADATTRIB);
  CHECK(bad == NULL);

  for (i = 0; i < 2; ++i)
    CHECK(qorThreadCreate(worker, &shared, &threads[i], QorThreadAttrStackSize, 4096000, QorThreadAttrEnd) ==
          QORTHREAD_OK);
  for (i = 0; i < 2; ++i)
    CHECK(qorThreadSemaphoreWait(shared.done) == QORTHREAD_OK);
  for (i = 0; i < 2; ++i) {
    CHECK(qorThreadJoin(threads[i], &status) == QORTHREAD_OK);
    CHECK(status == 21);
    CHECK(qorThreadRelease(threads[i]) == QORTHREAD_OK);
  }
  CHECK(shared.counter == 2000);

  CHECK(qorThreadEventCreate(&event, 0, 0, QorEventAttrEnd) == QORTHREAD_OK);
  CHECK(qorThreadEventTimedWait(event, 1) == QORTHREAD_TIMEOUT);
  CHECK(qorThreadEventDestroy(event) == QORTHREAD_OK);
  CHECK(qorThreadSemaphoreDestroy(shared.done) == QORTHREAD_OK);
  CHECK(qorThreadMutexDestroy(shared.mutex) == QORTHREAD_OK);
  CHECK(qorThreadMutexDestroy(NULL) == QORTHREAD_BADPARM);
  CHECK(xylThreadProcessTerminate("XYLThreads") == QORTHREAD_OK);

  if (failures == 0)
    printf("qorthread_c: all checks passed\n");
  return failures == 0 ? 0 : 1;
}
