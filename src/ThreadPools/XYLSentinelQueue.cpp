// SPDX-License-Identifier: Apache-2.0
// XYLSentinelQueue: a guarded list counted by semaphores.
#include <XYLCore/ThreadPools/XYLSentinelQueue.h>

#include <XYLCore/ExceptionHierarchy/XYLErrors.h>
#include <XYLCore/Threads/XYLThreadGuard.h>

#include <new>

namespace {
// The spare nodes a queue keeps at most (32 bytes each plus the heap's
// overhead): enough for the bursts of a busy server's pool, so that the
// queue stops allocating once it has seen its deepest backlog, while a
// one-off flood of more does not stay held for ever.
const unsigned long kMaxSpareNodes = 65536;
} // namespace

XYLSentinelQueue::XYLSentinelQueue(unsigned long capacity)
    : m_list(), m_spare(), m_spareCount(0), m_items(0), m_pFreeSlots(nullptr), m_capacity(capacity) {
  if (capacity != 0) {
    m_pFreeSlots = new (std::nothrow) XYLThreadSemaphore(capacity);
    if (m_pFreeSlots == nullptr)
      XYL_THROW(XYLOutOfMemoryError(0L, nullptr));
  }
}

XYLSentinelQueue::~XYLSentinelQueue() { delete m_pFreeSlots; }

bool XYLSentinelQueue::appendWithSpare(void *element) {
  XYLThreadGuard guard(m_list);
  if (m_spareCount == 0)
    return false;
  XYLList<void *> &list = m_list.get();
  list.splice_front_back(m_spare);
  --m_spareCount;
  list.back() = element;
  return true;
}

int XYLSentinelQueue::put(void *element, unsigned long timeout) {
  if (m_pFreeSlots != nullptr && m_pFreeSlots->timedWait(timeout) == 0)
    return 0;
  if (!appendWithSpare(element)) {
    // A new node is made before the lock is taken, so that the lock is held
    // for a few pointer moves only.
    XYLList<void *> node;
    try {
      node.push_back(element);
    } catch (std::bad_alloc &) {
      if (m_pFreeSlots != nullptr)
        m_pFreeSlots->post(1);
      XYL_THROW(XYLOutOfMemoryError(0L, nullptr));
    }
    XYLThreadGuard guard(m_list);
    m_list.get().splice_front_back(node);
  }
  // Counted after the lock is released, so that the woken consumer does not
  // find the lock still taken.
  m_items.post(1);
  return 1;
}

int XYLSentinelQueue::get(void *&element, unsigned long timeout) {
  if (m_items.timedWait(timeout) == 0)
    return 0;
  // A node beyond the spare bound leaves the lock in `surplus` and is freed
  // after it.
  XYLList<void *> surplus;
  {
    XYLThreadGuard guard(m_list);
    XYLList<void *> &list = m_list.get();
    // An interruption posted while the list is empty: nothing to hand out.
    if (list.empty())
      return 0;
    element = list.front();
    if (m_spareCount < kMaxSpareNodes) {
      m_spare.splice_front_back(list);
      ++m_spareCount;
    } else {
      surplus.splice_front_back(list);
    }
  }
  if (m_pFreeSlots != nullptr)
    m_pFreeSlots->post(1);
  return 1;
}

void XYLSentinelQueue::interrupt(unsigned long count) { m_items.post(count); }

unsigned long XYLSentinelQueue::size() {
  XYLThreadGuard guard(m_list);
  return static_cast<unsigned long>(m_list.get().size());
}
