// SPDX-License-Identifier: Apache-2.0
#include <XYLCore/Threads/XYLThreadRunnable.h>

XYLThreadRunnable::~XYLThreadRunnable() = default;
