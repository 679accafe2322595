// SPDX-License-Identifier: Apache-2.0
#include <XYLCore/Threads/XYLThreadExecuteRunnable.h>

XYLThreadExecuteRunnable::XYLThreadExecuteRunnable() = default;

XYLThreadExecuteRunnable::~XYLThreadExecuteRunnable() = default;

void XYLThreadExecuteRunnable::run() {}
