// SPDX-License-Identifier: Apache-2.0
// XYLObjectFactory and XYLObjectFactoryItem: creation by class identifier
// with per-class pools of released objects.
#include <XYLCore/ObjectFactory/XYLObjectFactory.h>

#include <XYLCore/ExceptionHierarchy/XYLErrors.h>
#include <XYLCore/Threads/XYLThreadGuard.h>

#include <cstddef>
#include <memory>
#include <new>
#include <utility>
#include <vector>

namespace {

const char kAlreadyRegistered[] = "This classId is already registered";
const char kNotRegistered[] = "This classId hasn't been registered.";
const char kItemNotRegistered[] = "This item type has never been registered.";
const char kStillInUse[] = "Unable to unregister the class .., some objects still in use.";

// The free list: a first-in-first-out ring of items. It grows (doubling)
// only when it is full, so once it has held the largest number of items
// ever free at once, adding and taking allocate nothing.
class ItemQueue {
public:
  bool empty() const { return m_count == 0; }
  std::size_t size() const { return m_count; }

  // Appends at the end; throws std::bad_alloc when it cannot grow (the
  // queue is then unchanged).
  void pushBack(XYLObjectFactoryItem *item) {
    if (m_count == m_slots.size())
      grow();
    m_slots[(m_head + m_count) % m_slots.size()] = item;
    ++m_count;
  }

  // Takes the front item; the queue must not be empty.
  XYLObjectFactoryItem *popFront() {
    XYLObjectFactoryItem *item = m_slots[m_head];
    m_head = (m_head + 1) % m_slots.size();
    --m_count;
    return item;
  }

  void clear() {
    m_head = 0;
    m_count = 0;
  }

private:
  void grow() {
    std::vector<XYLObjectFactoryItem *> larger(m_slots.empty() ? 8 : m_slots.size() * 2);
    for (std::size_t i = 0; i < m_count; ++i)
      larger[i] = m_slots[(m_head + i) % m_slots.size()];
    m_slots.swap(larger);
    m_head = 0;
  }

  std::vector<XYLObjectFactoryItem *> m_slots;
  std::size_t m_head = 0;
  std::size_t m_count = 0;
};

} // namespace

struct LISTS_STRUCT {
  explicit LISTS_STRUCT(XYLObjectFactoryCreator creatorFunction) : creator(creatorFunction) {}

  XYLObjectFactoryCreator creator;
  // Items released and ready for reuse, oldest release first.
  XYLThreadMonitor<XYLThreadCriticalSection, ItemQueue> freeList;
  // Every item the creator made, released or not.
  XYLThreadMonitor<XYLThreadCriticalSection, std::vector<XYLObjectFactoryItem *>> inUseList;
};

// ---- XYLObjectFactoryItem ----------------------------------------------------

XYLObjectFactoryItem::XYLObjectFactoryItem(XYLObjectFactory *factory) : m_pFactory(factory) {}

XYLObjectFactoryItem::~XYLObjectFactoryItem() {}

void XYLObjectFactoryItem::release() {
  if (m_pFactory == nullptr) {
    delete this;
    return;
  }
  cleanObject();
  m_pFactory->releaseObject(this);
}

void XYLObjectFactoryItem::cleanObject() {}

// ---- XYLObjectFactory --------------------------------------------------------

XYLObjectFactory::XYLObjectFactory() {}

XYLObjectFactory::~XYLObjectFactory() {
  clearLists();
  ClassMap &classes = m_classes.get();
  for (ClassMap::value_type &entry : classes)
    delete entry.second;
  classes.clear();
}

LISTS_STRUCT *XYLObjectFactory::findClass(const char *classId, const char *unknownText) {
  XYLThreadGuard guard(m_classes);
  const ClassMap &classes = m_classes.get();
  const ClassMap::const_iterator found = classes.find(classId);
  if (found == classes.end())
    XYL_THROW(XYLIllegalStateError(0L, unknownText));
  return found->second;
}

void XYLObjectFactory::registerClass(const char *classId, XYLObjectFactoryCreator creator) {
  // Made before the lock is taken, so that a failure leaves no entry behind.
  std::unique_ptr<LISTS_STRUCT> lists;
  try {
    lists.reset(new LISTS_STRUCT(creator));
  } catch (std::bad_alloc &) {
    XYL_THROW(XYLOutOfMemoryError(0L, nullptr));
  }
  XYLThreadGuard guard(m_classes);
  ClassMap &classes = m_classes.get();
  if (classes.find(classId) != classes.end())
    XYL_THROW(XYLIllegalStateError(0L, kAlreadyRegistered));
  try {
    classes.emplace(classId, lists.get());
  } catch (std::bad_alloc &) {
    XYL_THROW(XYLOutOfMemoryError(0L, nullptr));
  }
  lists.release();
}

XYLObjectFactoryItem *XYLObjectFactory::createObject(const char *classId) {
  LISTS_STRUCT *lists = findClass(classId, kNotRegistered);
  {
    XYLThreadGuard guard(lists->freeList);
    ItemQueue &freeItems = lists->freeList.get();
    if (!freeItems.empty())
      return freeItems.popFront();
  }
  XYLObjectFactoryItem *item = lists->creator(this);
  if (item == nullptr)
    return nullptr;
  try {
    XYLThreadGuard guard(lists->inUseList);
    lists->inUseList.get().push_back(item);
  } catch (std::bad_alloc &) {
    delete item;
    XYL_THROW(XYLOutOfMemoryError(0L, nullptr));
  }
  return item;
}

void XYLObjectFactory::releaseObject(XYLObjectFactoryItem *item) {
  if (item == nullptr)
    return;
  LISTS_STRUCT *lists = findClass(item->getClassId(), kItemNotRegistered);
  try {
    XYLThreadGuard guard(lists->freeList);
    lists->freeList.get().pushBack(item);
  } catch (std::bad_alloc &) {
    XYL_THROW(XYLOutOfMemoryError(0L, nullptr));
  }
}

void XYLObjectFactory::unregisterClass(const char *classId) {
  LISTS_STRUCT *lists = findClass(classId, kNotRegistered);
  std::vector<XYLObjectFactoryItem *> made;
  {
    XYLThreadGuard freeGuard(lists->freeList);
    XYLThreadGuard inUseGuard(lists->inUseList);
    ItemQueue &freeItems = lists->freeList.get();
    std::vector<XYLObjectFactoryItem *> &inUse = lists->inUseList.get();
    if (freeItems.size() != inUse.size())
      XYL_THROW(XYLIllegalStateError(0L, kStillInUse));
    made.swap(inUse);
    freeItems.clear();
    // Taking the map's lock under the list locks cannot deadlock: nobody
    // holds the map's lock while waiting for a list lock.
    XYLThreadGuard mapGuard(m_classes);
    m_classes.get().erase(classId);
  }
  // The items and the lists go only after every lock is released, so that
  // an item's destructor may use the factory.
  for (XYLObjectFactoryItem *item : made)
    delete item;
  delete lists;
}

void XYLObjectFactory::clearLists() {
  // Only the destructor calls this, when no other thread may use the factory
  // any more; the map is read without its lock so that no list lock is ever
  // taken under it.
  for (ClassMap::value_type &entry : m_classes.get()) {
    LISTS_STRUCT *lists = entry.second;
    XYLThreadGuard freeGuard(lists->freeList);
    XYLThreadGuard inUseGuard(lists->inUseList);
    std::vector<XYLObjectFactoryItem *> &inUse = lists->inUseList.get();
    for (XYLObjectFactoryItem *item : inUse)
      delete item;
    inUse.clear();
    lists->freeList.get().clear();
  }
}
