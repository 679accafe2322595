// SPDX-License-Identifier: Apache-2.0
#include <XYLCore/Threads/XYLReferenceCount.h>
#include <XYLCore/Threads/XYLThreadGuard.h>

XYLReferenceCount::XYLReferenceCount() : m_lock(0) {}

XYLReferenceCount::~XYLReferenceCount() = default;

int XYLReferenceCount::addReference() {
  XYLThreadGuard guard(m_lock);
  return XYLThreadUnsafeReferenceCount::addReference();
}

// The drop to 0 and cleanup() happen under one hold of the lock.
int XYLReferenceCount::removeReference() {
  XYLThreadGuard guard(m_lock);
  return XYLThreadUnsafeReferenceCount::removeReference();
}

int XYLReferenceCount::getReferenceCount() {
  XYLThreadGuard guard(m_lock);
  return XYLThreadUnsafeReferenceCount::getReferenceCount();
}
