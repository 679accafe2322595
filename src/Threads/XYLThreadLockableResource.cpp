// SPDX-License-Identifier: Apache-2.0
#include <XYLCore/Threads/XYLThreadLockableResource.h>

XYLThreadLockableResource::~XYLThreadLockableResource() = default;
