// SPDX-License-Identifier: Apache-2.0
// XYLCustodianTask: the abstract periodic task.
#include <XYLCore/XYLCustodian/XYLCustodianTask.h>

XYLCustodianTask::XYLCustodianTask() {}

XYLCustodianTask::~XYLCustodianTask() {}
