// SPDX-License-Identifier: Apache-2.0
#include <XYLCore/Threads/XYLThreadRecursiveMutex.h>

XYLThreadRecursiveMutex::XYLThreadRecursiveMutex() : XYLThreadMutex(1) {}

XYLThreadRecursiveMutex::~XYLThreadRecursiveMutex() = default;
