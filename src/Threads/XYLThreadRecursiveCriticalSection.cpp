// SPDX-License-Identifier: Apache-2.0
#include <XYLCore/Threads/XYLThreadRecursiveCriticalSection.h>

XYLThreadRecursiveCriticalSection::XYLThreadRecursiveCriticalSection() : XYLThreadCriticalSection(1) {}

XYLThreadRecursiveCriticalSection::~XYLThreadRecursiveCriticalSection() = default;
