#include <XYLCore/Threads/XYLThreadRWLockableResource.h>

XYLThreadRWLockableResource::~XYLThreadRWLockableResource() = default;
