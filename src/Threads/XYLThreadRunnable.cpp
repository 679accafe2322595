#include <XYLCore/Threads/XYLThreadRunnable.h>

XYLThreadRunnable::~XYLThreadRunnable() = default;
