// SPDX-License-Identifier: Apache-2.0
#include <XYLCore/Threads/XYLThreadSemaphore.h>

#include "XYLThreadStatus_internal.h"

#include <climits>

using xyl_threads::raiseOperationFailure;

XYLThreadSemaphore::XYLThreadSemaphore(unsigned long initialCount) : m_semaphore(nullptr) { initialize(initialCount); }

XYLThreadSemaphore::~XYLThreadSemaphore() { qorThreadSemaphoreDestroy(m_semaphore); }

void XYLThreadSemaphore::initialize(unsigned long initialCount) {
  // A count that does not fit the layer's 32 bits is passed as one the layer
  // refuses, never cut down to a small valid one.
  unsigned int count = initialCount > UINT_MAX ? UINT_MAX : static_cast<unsigned int>(initialCount);
  int status = qorThreadSemaphoreCreate(&m_semaphore, count, QorSemaphoreAttrEnd);
  if (status != QORTHREAD_OK)
    xyl_threads::raiseCreateFailure(XYL_HERE, status, XYLThreadErrorOutOfSemaphores,
                                    "XYLThreadSemaphore::XYLThreadSemaphore",
                                    "XYLThreadSemaphore::XYLThreadSemaphore: QorThread ran out of memory",
                                    "XYLThreadSemaphore::XYLThreadSemaphore: QorThread interface or unexpected error");
}

void XYLThreadSemaphore::wait() {
  if (qorThreadSemaphoreWait(m_semaphore) != QORTHREAD_OK)
    raiseOperationFailure(XYL_HERE, "XYLThreadSemaphore::wait: QorThread interface or unexpected error");
}

int XYLThreadSemaphore::tryWait() {
  int status = qorThreadSemaphoreTryWait(m_semaphore);
  if (status == QORTHREAD_OK)
    return 1;
  if (status == QORTHREAD_INUSE)
    return 0;
  raiseOperationFailure(XYL_HERE, "XYLThreadSemaphore::tryWait: QorThread interface or unexpected error");
}

int XYLThreadSemaphore::timedWait(unsigned long milliseconds) {
  int status = qorThreadSemaphoreTimedWait(m_semaphore, xyl_threads::toLayerMilliseconds(milliseconds));
  if (status == QORTHREAD_OK)
    return 1;
  if (status == QORTHREAD_TIMEOUT)
    return 0;
  raiseOperationFailure(XYL_HERE, "XYLThreadSemaphore::timedWait: QorThread interface or unexpected error");
}

void XYLThreadSemaphore::post(unsigned long count) {
  for (unsigned long i = 0; i < count; ++i)
    if (qorThreadSemaphorePost(m_semaphore) != QORTHREAD_OK)
      raiseOperationFailure(XYL_HERE, "XYLThreadSemaphore::post: QorThread interface or unexpected error");
}
