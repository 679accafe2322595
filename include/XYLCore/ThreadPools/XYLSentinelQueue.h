/* SPDX-License-Identifier: Apache-2.0
 * XYLSentinelQueue.h - a blocking FIFO of pointers, optionally bounded.
 *
 * This header defines XYLSentinelQueue, the queue under the thread pools: a
 * list guarded by its own lock, a semaphore that counts the queued elements
 * and, when the queue is bounded, a semaphore that counts the free slots.
 *
 * Contract:
 *  - put(element, timeout) waits up to `timeout` milliseconds for a free slot
 *    (bounded queues only), appends the element at the tail and answers 1;
 *    0 when no slot became free in time (the element is not queued).
 *  - get(element, timeout) waits up to `timeout` milliseconds for an element,
 *    removes the head into `element` and answers 1; 0 when none came in time
 *    (or when a waiter was interrupted, see interrupt), `element` unchanged.
 *  - Timeouts: 0 does not wait; 4294967295 waits without limit.
 *  - Elements are handed over in the order they were put; null is an
 *    element like any other.
 *
 * Ownership: the queue stores the pointers only; it never deletes what they
 * point to. Elements still queued at destruction are forgotten.
 * Thread safety: any number of threads may put and get at once. Destroying
 * the queue while a thread waits in it is undefined.
 * Throws: the constructor throws XYLOutOfMemoryError (no message) when the
 * free-slot semaphore cannot be allocated, and what the lock and semaphore
 * constructors throw; put throws XYLOutOfMemoryError (no message) when the
 * list node cannot be allocated (the slot is given back); both pass on the
 * thread classes' XYLThreadResourceError.
 * Complexity: put and get are O(1) plus the semaphore operations; the list
 * lock is held for a few pointer moves. A get's node is kept for later puts
 * (up to a bound), so a queue in steady use allocates nothing. A consumer
 * with nothing to take sleeps at once (no spinning): a put wakes it with
 * one system call, and a busy machine is not asked to run idle consumers.
 */
#ifndef XYLCORE_THREADPOOLS_XYLSENTINELQUEUE_H
#define XYLCORE_THREADPOOLS_XYLSENTINELQUEUE_H

#include <XYLCore/ThreadPools/XYLList.h>
#include <XYLCore/ThreadPools/XYLThreadMonitor.h>
#include <XYLCore/Threads/XYLThreadCriticalSection.h>
#include <XYLCore/Threads/XYLThreadSemaphore.h>

class XYL_API XYLSentinelQueue {
public:
  // A queue of at most `capacity` elements; 0 makes it unbounded.
  explicit XYLSentinelQueue(unsigned long capacity = 0);
  virtual ~XYLSentinelQueue();

  virtual int put(void *element, unsigned long timeout);
  virtual int get(void *&element, unsigned long timeout);

  // Lets `count` get calls (waiting now or coming later) answer 0 without an
  // element, but only when the queue is empty at that moment: elements put
  // before or after are still handed out first. Used to wake idle consumers
  // at shutdown.
  void interrupt(unsigned long count);

  // The number of queued elements (a snapshot).
  unsigned long size();
  // The capacity given to the constructor (0 = unbounded).
  unsigned long getCapacity() const { return m_capacity; }

private:
  XYLSentinelQueue(const XYLSentinelQueue &) = delete;
  XYLSentinelQueue &operator=(const XYLSentinelQueue &) = delete;
  // Appends `element`, using a spare node when there is one; false when a
  // node would have to be made.
  bool appendWithSpare(void *element);

  XYLThreadMonitor<XYLThreadCriticalSection, XYLList<void *>> m_list;
  XYLList<void *> m_spare;    // nodes of taken elements, for later puts; under m_list's lock
  unsigned long m_spareCount; // nodes in m_spare
  XYLThreadSemaphore m_items;
  XYLThreadSemaphore *m_pFreeSlots;
  unsigned long m_capacity;
};

#endif // XYLCORE_THREADPOOLS_XYLSENTINELQUEUE_H
