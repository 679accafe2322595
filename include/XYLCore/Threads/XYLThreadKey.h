/* SPDX-License-Identifier: Apache-2.0
 * XYLThreadKey.h - a thread-local slot: one void* per thread.
 *
 * Contract: every thread starts with null; setValue and getValue touch only
 * the calling thread's value. Nothing is done with a value when its thread
 * ends (no destructor). The object owns one layer key; after it is
 * destroyed the values are gone. Keys are a limited resource of the
 * process. Not copyable.
 *
 * Throws:
 *  - constructor: XYLThreadResourceError -3 "XYLThreadKey::XYLThreadKey"
 *    when the process has no key left; XYLOutOfMemoryError
 *    "XYLThreadKey::XYLThreadKey: QorThread ran out of memory";
 *    XYLThreadResourceError -1 "XYLThreadKey::XYLThreadKey: QorThread
 *    interface or unexpected error" otherwise.
 *  - setValue: XYLOutOfMemoryError "XYLThreadKey::setValue: out of memory";
 *    XYLThreadResourceError -1 "XYLThreadKey::setValue: QorThread interface
 *    or unexpected error".
 *  - getValue: XYLThreadResourceError -1 "XYLThreadKey::getValue: QorThread
 *    interface or unexpected error".
 *
 * Thread safety: any thread may use the object.
 */
#ifndef XYLCORE_THREADS_XYLTHREADKEY_H
#define XYLCORE_THREADS_XYLTHREADKEY_H

#include <XYLCore/QorThread/qorthread.h>
#include <XYLCore/XYLExport.h>

class XYL_API XYLThreadKey {
public:
  XYLThreadKey();
  virtual ~XYLThreadKey();

  virtual void setValue(void *value);
  virtual void *getValue();

private:
  XYLThreadKey(const XYLThreadKey &) = delete;
  XYLThreadKey &operator=(const XYLThreadKey &) = delete;

  QorKey_ m_key;
};

#endif // XYLCORE_THREADS_XYLTHREADKEY_H
