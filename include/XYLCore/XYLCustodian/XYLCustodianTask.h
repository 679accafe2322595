/* SPDX-License-Identifier: Apache-2.0
 * XYLCustodianTask.h - a unit of periodic housekeeping run by the custodian.
 *
 * Derive from XYLCustodianTask, implement doTask and register the object with
 * XYLCustodian::registerTask. The custodian thread then calls doTask once per
 * period until it answers non-zero (finished: the task is dropped) or the
 * task is deregistered.
 *
 * Ownership: the custodian never deletes a task; the task must stay alive
 * until it has finished or XYLCustodian::deRegisterTask has returned.
 * Thread safety: doTask runs on the custodian thread, one task at a time.
 * Failure: anything doTask throws ends the whole process (see XYLCustodian).
 */
#ifndef XYLCORE_XYLCUSTODIAN_XYLCUSTODIANTASK_H
#define XYLCORE_XYLCUSTODIAN_XYLCUSTODIANTASK_H

#include <XYLCore/XYLExport.h>

class XYL_API XYLCustodianTask {
public:
  XYLCustodianTask();
  virtual ~XYLCustodianTask();

  // The periodic work. `terminating` is non-zero on the last call, made while
  // the custodian shuts down. Answer non-zero when the task is finished and
  // must be dropped, zero to be called again next period.
  virtual int doTask(int terminating) = 0;

private:
  XYLCustodianTask(const XYLCustodianTask &) = delete;
  XYLCustodianTask &operator=(const XYLCustodianTask &) = delete;
};

#endif // XYLCORE_XYLCUSTODIAN_XYLCUSTODIANTASK_H
