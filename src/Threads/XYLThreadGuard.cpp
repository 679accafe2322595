// SPDX-License-Identifier: Apache-2.0
#include <XYLCore/Threads/XYLThreadGuard.h>

XYLThreadGuard::XYLThreadGuard(XYLThreadLockableResource &resource) : m_resource(resource) { m_resource.lock(); }

XYLThreadGuard::~XYLThreadGuard() { m_resource.unlock(); }
