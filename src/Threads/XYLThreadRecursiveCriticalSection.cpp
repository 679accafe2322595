#include <XYLCore/Threads/XYLThreadRecursiveCriticalSection.h>

XYLThreadRecursiveCriticalSection::XYLThreadRecursiveCriticalSection() : XYLThreadCriticalSection(1) {}

XYLThreadRecursiveCriticalSection::~XYLThreadRecursiveCriticalSection() = default;
