// SPDX-License-Identifier: Apache-2.0
// XYLSentinelQueue: a guarded list counted by semaphores.
#include <XYLCore/ThreadPools/XYLSentinelQueue.h>

#include <XYLCore/ExceptionHierarchy/XYLErrors.h>
#include <XYLCore/Threads/XYLThread.h>
#include <XYLCore/Threads/XYLThreadGuard.h>

#include <new>

namespace {
// How often a consumer looks for an element, giving up the processor in
// between, before it sleeps on the semaphore.
const int kPollsBeforeSleeping = 16;
} // namespace

bool XYLSentinelQueue::takeItem(unsigned long timeout) {
  // A consumer that sleeps makes every producer's post a system call until
  // it has woken; while elements keep coming, looking again costs less.
  if (timeout != 0)
    for (int i = 0; i < kPollsBeforeSleeping; ++i) {
      if (m_items.tryWait() != 0)
        return true;
      XYLThread::yield();
    }
  return m_items.timedWait(timeout) != 0;
}

XYLSentinelQueue::XYLSentinelQueue(unsigned long capacity)
    : m_list(), m_items(0), m_pFreeSlots(nullptr), m_capacity(capacity) {
  if (capacity != 0) {
    m_pFreeSlots = new (std::nothrow) XYLThreadSemaphore(capacity);
    if (m_pFreeSlots == nullptr)
      XYL_THROW(XYLOutOfMemoryError(0L, nullptr));
  }
}

XYLSentinelQueue::~XYLSentinelQueue() { delete m_pFreeSlots; }

int XYLSentinelQueue::put(void *element, unsigned long timeout) {
  if (m_pFreeSlots != nullptr && m_pFreeSlots->timedWait(timeout) == 0)
    return 0;
  // The node is made before the lock is taken, so that the lock is held for
  // a few pointer moves only.
  XYLList<void *> node;
  try {
    node.push_back(element);
  } catch (std::bad_alloc &) {
    if (m_pFreeSlots != nullptr)
      m_pFreeSlots->post(1);
    XYL_THROW(XYLOutOfMemoryError(0L, nullptr));
  }
  {
    XYLThreadGuard guard(m_list);
    m_list.get().splice_front_back(node);
  }
  // Counted after the lock is released, so that the woken consumer does not
  // find the lock still taken.
  m_items.post(1);
  return 1;
}

int XYLSentinelQueue::get(void *&element, unsigned long timeout) {
  if (!takeItem(timeout))
    return 0;
  // The node leaves the lock in `node` and is freed after it.
  XYLList<void *> node;
  {
    XYLThreadGuard guard(m_list);
    // An interruption posted while the list is empty: nothing to hand out.
    if (m_list.get().empty())
      return 0;
    node.splice_front_back(m_list.get());
  }
  element = node.front();
  if (m_pFreeSlots != nullptr)
    m_pFreeSlots->post(1);
  return 1;
}

void XYLSentinelQueue::interrupt(unsigned long count) { m_items.post(count); }

unsigned long XYLSentinelQueue::size() {
  XYLThreadGuard guard(m_list);
  return static_cast<unsigned long>(m_list.get().size());
}
