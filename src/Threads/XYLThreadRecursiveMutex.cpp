#include <XYLCore/Threads/XYLThreadRecursiveMutex.h>

XYLThreadRecursiveMutex::XYLThreadRecursiveMutex() : XYLThreadMutex(1) {}

XYLThreadRecursiveMutex::~XYLThreadRecursiveMutex() = default;
