// SPDX-License-Identifier: Apache-2.0
#include <XYLCore/Threads/XYLThreadKey.h>

#include "XYLThreadStatus_internal.h"

using xyl_threads::raiseOperationFailure;

XYLThreadKey::XYLThreadKey() : m_key(nullptr) {
  int status = qorThreadKeyCreate(&m_key, nullptr);
  if (status != QORTHREAD_OK)
    xyl_threads::raiseCreateFailure(XYL_HERE, status, XYLThreadErrorOutOfKeys, "XYLThreadKey::XYLThreadKey",
                                    "XYLThreadKey::XYLThreadKey: QorThread ran out of memory",
                                    "XYLThreadKey::XYLThreadKey: QorThread interface or unexpected error");
}

XYLThreadKey::~XYLThreadKey() { qorThreadKeyDestroy(m_key); }

void XYLThreadKey::setValue(void *value) {
  int status = qorThreadKeySetValue(m_key, value);
  if (status == QORTHREAD_OK)
    return;
  if (status == QORTHREAD_NOMEM)
    XYL_THROW(XYLOutOfMemoryError(0L, "XYLThreadKey::setValue: out of memory"));
  raiseOperationFailure(XYL_HERE, "XYLThreadKey::setValue: QorThread interface or unexpected error");
}

void *XYLThreadKey::getValue() {
  void *value = nullptr;
  if (qorThreadKeyGetValue(m_key, &value) != QORTHREAD_OK)
    raiseOperationFailure(XYL_HERE, "XYLThreadKey::getValue: QorThread interface or unexpected error");
  return value;
}
