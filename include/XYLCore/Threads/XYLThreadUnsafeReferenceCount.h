/* SPDX-License-Identifier: Apache-2.0
 * XYLThreadUnsafeReferenceCount.h - a reference count without a lock, for
 * objects that stay on one thread.
 *
 * Contract: the count starts at 0. addReference() increments and returns the
 * new count; removeReference() decrements, calls cleanup() when the count
 * has just reached 0, and returns the new count (removing past 0 goes
 * negative and calls nothing). cleanup() does nothing here; a subclass
 * overrides it to release what the count guards, and may delete the object
 * itself (removeReference touches no member after calling it).
 * Throws: nothing of its own; what cleanup() throws passes through (the
 * count is already decremented).
 * Thread safety: none: one thread at a time (use XYLReferenceCount across
 * threads).
 */
#ifndef XYLCORE_THREADS_XYLTHREADUNSAFEREFERENCECOUNT_H
#define XYLCORE_THREADS_XYLTHREADUNSAFEREFERENCECOUNT_H

#include <XYLCore/XYLExport.h>

class XYL_API XYLThreadUnsafeReferenceCount {
public:
  XYLThreadUnsafeReferenceCount();
  virtual ~XYLThreadUnsafeReferenceCount();

  virtual int addReference();
  virtual int removeReference();
  virtual int getReferenceCount();
  // Called once each time the count drops to 0.
  virtual void cleanup();

protected:
  int m_iCount;

private:
  XYLThreadUnsafeReferenceCount(const XYLThreadUnsafeReferenceCount &) = delete;
  XYLThreadUnsafeReferenceCount &operator=(const XYLThreadUnsafeReferenceCount &) = delete;
};

#endif // XYLCORE_THREADS_XYLTHREADUNSAFEREFERENCECOUNT_H
