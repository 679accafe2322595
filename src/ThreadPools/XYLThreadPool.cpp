// SPDX-License-Identifier: Apache-2.0
// XYLThreadPool: the common base of the pools; runs tasks so that no failing
// task can take its worker down with it.
#include <XYLCore/ThreadPools/XYLThreadPool.h>

#include <XYLCore/ExceptionHierarchy/XYLThrowable.h>
#include <XYLCore/Logging/XYLMiniLogger.h>
#include <XYLCore/Threads/XYLThreadGuard.h>

#include <cxxabi.h>
#include <exception>

XYLThreadPool::XYLThreadPool() : m_errorLock(0), m_errorHandler(nullptr), m_pErrorContext(nullptr) {}

XYLThreadPool::~XYLThreadPool() {}

void XYLThreadPool::setErrorHandler(XYLThreadPoolErrorHandler handler, void *context) {
  XYLThreadGuard guard(m_errorLock);
  m_errorHandler = handler;
  m_pErrorContext = context;
}

void XYLThreadPool::runTask(XYLThreadRunnable *task) {
  try {
    task->run();
  } catch (abi::__forced_unwind &) {
    throw; // the thread itself is ending
  } catch (XYLThrowable &error) {
    const char *xml = error.toString(); // null when no memory was left for it
    reportTaskFailure(task, xml != nullptr ? xml : error.getThrowableName());
  } catch (std::exception &error) {
    reportTaskFailure(task, error.what());
  } catch (...) {
    reportTaskFailure(task, "unknown exception");
  }
}

void XYLThreadPool::reportTaskFailure(XYLThreadRunnable *task, const char *report) {
  try {
    XYLMiniLogger log;
    log.log("XYLThreadPool::runTask", report);
  } catch (...) {
    // The log could not be written (no memory): the handler still hears.
  }
  XYLThreadPoolErrorHandler handler = nullptr;
  void *context = nullptr;
  try {
    XYLThreadGuard guard(m_errorLock);
    handler = m_errorHandler;
    context = m_pErrorContext;
  } catch (...) {
    return;
  }
  if (handler == nullptr)
    return;
  try {
    handler(this, task, report, context);
  } catch (...) {
  }
}
