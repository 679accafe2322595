// SPDX-License-Identifier: Apache-2.0
// XYLThreadPool: the common base of the pools.
#include <XYLCore/ThreadPools/XYLThreadPool.h>

XYLThreadPool::XYLThreadPool() {}

XYLThreadPool::~XYLThreadPool() {}
