// XYLThreadPool: the common base of the pools.
#include <XYLCore/ThreadPools/XYLThreadPool.h>

XYLThreadPool::XYLThreadPool() {}

XYLThreadPool::~XYLThreadPool() {}
