// SPDX-License-Identifier: Apache-2.0
#include <XYLCore/Threads/XYLThreadUnsafeReferenceCount.h>

XYLThreadUnsafeReferenceCount::XYLThreadUnsafeReferenceCount() : m_iCount(0) {}

XYLThreadUnsafeReferenceCount::~XYLThreadUnsafeReferenceCount() = default;

int XYLThreadUnsafeReferenceCount::addReference() { return ++m_iCount; }

int XYLThreadUnsafeReferenceCount::removeReference() {
  int count = --m_iCount;
  if (count == 0)
    cleanup(); // may delete this: nothing below touches a member
  return count;
}

int XYLThreadUnsafeReferenceCount::getReferenceCount() { return m_iCount; }

void XYLThreadUnsafeReferenceCount::cleanup() {}
