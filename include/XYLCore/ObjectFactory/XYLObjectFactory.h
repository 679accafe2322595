/* SPDX-License-Identifier: Apache-2.0
 * XYLObjectFactory.h - objects made by class identifier through registered
 * creator functions, with a pool of released objects per class.
 *
 * A host registers each class under an identifier with a creator function,
 * then asks the factory for objects of that class. A released object goes
 * back to its class's free list and is handed out again before the creator
 * is called: first released, first reused. The factory remembers every
 * object a creator made and deletes each once, when its class is
 * unregistered or the factory is destroyed.
 *
 * Identifiers are matched by address, not by text: the identifier is a
 * `const char*` compared as a pointer, so registration, creation and the
 * items' getClassId() must use the same object (usually one static string
 * per class); two equal strings at different addresses are two classes.
 *
 * Lifecycle of a class: unregistered -> registered (no objects) -> with
 * objects (in use and free) -> unregistered again only when every object it
 * made has been released.
 *
 * Steady state: creating and releasing a pooled object takes two short
 * locks and allocates nothing once the free list has grown to the largest
 * number of objects ever free at once.
 *
 * Throws (XYLIllegalStateError, code 0):
 *   registerClass    "This classId is already registered"
 *   createObject     "This classId hasn't been registered."
 *   releaseObject    "This item type has never been registered."
 *   unregisterClass  "This classId hasn't been registered."
 *                    "Unable to unregister the class .., some objects still in use."
 * and XYLOutOfMemoryError when a list cannot grow; whatever a creator
 * throws passes through unchanged.
 *
 * Thread safety: any thread may use the factory. The class map has one lock
 * and each class a lock for its free list and one for its list of made
 * objects. Lock order: the map's lock is always released before a class's
 * list locks are taken; unregisterClass takes the free list's lock before
 * the made list's. Creators run with no lock held. Unregistering a class
 * while other threads still create or release its objects is a caller
 * error (its lists are freed under them).
 *
 * Ownership: the factory owns every object its creators made (released or
 * not); an object handed out must not be deleted by the caller, only
 * released. An item without a factory deletes itself on release().
 */
#ifndef XYLCORE_OBJECTFACTORY_XYLOBJECTFACTORY_H
#define XYLCORE_OBJECTFACTORY_XYLOBJECTFACTORY_H

#include <XYLCore/ThreadPools/XYLThreadMonitor.h>
#include <XYLCore/Threads/XYLThreadCriticalSection.h>
#include <XYLCore/XYLExport.h>

#include <map>

class XYLObjectFactory;

// An object a factory makes and pools.
class XYL_API XYLObjectFactoryItem {
public:
  // `factory` may be null: the item then deletes itself on release().
  explicit XYLObjectFactoryItem(XYLObjectFactory *factory);
  virtual ~XYLObjectFactoryItem();

  // With a factory: cleanObject(), then back to the factory's free list
  // (throws what releaseObject throws). Without one: delete this.
  virtual void release();
  // The identifier this item's class is registered under (the same pointer).
  virtual const char *getClassId() const = 0;
  // Resets the item before it goes back to the pool; does nothing here.
  virtual void cleanObject();

  XYLObjectFactory *getFactory() const { return m_pFactory; }

protected:
  XYLObjectFactory *m_pFactory; // the owning factory, or null

private:
  XYLObjectFactoryItem(const XYLObjectFactoryItem &) = delete;
  XYLObjectFactoryItem &operator=(const XYLObjectFactoryItem &) = delete;
};

// Makes a new item of one class for `factory`.
typedef XYLObjectFactoryItem *(*XYLObjectFactoryCreator)(XYLObjectFactory *factory);

// One registered class: its creator, its free list and the list of every
// item its creator made (defined with the factory's code).
struct LISTS_STRUCT;

class XYL_API XYLObjectFactory {
public:
  XYLObjectFactory();
  // Deletes every object the creators made, released or not.
  virtual ~XYLObjectFactory();

  // Registers `classId` (by address) with its creator.
  void registerClass(const char *classId, XYLObjectFactoryCreator creator);
  // The front item of the class's free list, or else a new one from the
  // creator (null when the creator returns null).
  XYLObjectFactoryItem *createObject(const char *classId);
  // Puts `item` at the end of its class's free list; null does nothing. The
  // caller resets the item first (XYLObjectFactoryItem::release does).
  void releaseObject(XYLObjectFactoryItem *item);
  // Deletes the class's objects and forgets the class, when every object
  // it made has been released; otherwise throws and changes nothing.
  void unregisterClass(const char *classId);

private:
  XYLObjectFactory(const XYLObjectFactory &) = delete;
  XYLObjectFactory &operator=(const XYLObjectFactory &) = delete;

  // Deletes every made object of every class and empties both lists.
  void clearLists();
  // The class's lists; throws XYLIllegalStateError `unknownText` when the
  // class is not registered.
  LISTS_STRUCT *findClass(const char *classId, const char *unknownText);

  // Class identifiers in pointer order.
  typedef std::map<const char *, LISTS_STRUCT *> ClassMap;
  XYLThreadMonitor<XYLThreadCriticalSection, ClassMap> m_classes;
};

#endif // XYLCORE_OBJECTFACTORY_XYLOBJECTFACTORY_H
