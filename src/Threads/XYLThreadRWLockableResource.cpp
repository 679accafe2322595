// SPDX-License-Identifier: Apache-2.0
#include <XYLCore/Threads/XYLThreadRWLockableResource.h>

XYLThreadRWLockableResource::~XYLThreadRWLockableResource() = default;
