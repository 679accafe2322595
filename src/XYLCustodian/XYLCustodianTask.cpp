// XYLCustodianTask: the abstract periodic task.
#include <XYLCore/XYLCustodian/XYLCustodianTask.h>

XYLCustodianTask::XYLCustodianTask() {}

XYLCustodianTask::~XYLCustodianTask() {}
