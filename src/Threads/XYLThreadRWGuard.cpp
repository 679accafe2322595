// SPDX-License-Identifier: Apache-2.0
#include <XYLCore/Threads/XYLThreadRWGuard.h>

XYLThreadRWGuard::XYLThreadRWGuard(XYLThreadRWLockableResource &resource, int read) : m_resource(resource) {
  if (read != 0)
    m_resource.readLock();
  else
    m_resource.lock();
}

XYLThreadRWGuard::~XYLThreadRWGuard() { m_resource.unlock(); }
