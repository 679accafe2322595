#include <XYLCore/Threads/XYLThreadLockableResource.h>

XYLThreadLockableResource::~XYLThreadLockableResource() = default;
