// SPDX-License-Identifier: Apache-2.0
#include <XYLCore/Threads/XYLThread.h>
#include <XYLCore/Threads/XYLThreadKey.h>

#include "XYLThreadStatus_internal.h"

#include <atomic>
#include <new>

namespace {

// Every XYLThread runs on a stack of this many bytes.
const int kThreadStackSize = 4096000;

// Maps each thread started through an XYLThread to its object. Made by
// Initialize and deleted by Terminate, both under the lifecycle lock; read by
// threads at any time, hence atomic.
std::atomic<XYLThreadKey *> g_threadKey{nullptr};

} // namespace

XYLThread::XYLThread(XYLThreadRunnable *runnable) : m_thread(nullptr), m_runnable(runnable), m_atExit(nullptr) {}

XYLThread::~XYLThread() {
  // Waits for the thread and frees its record; an ending by an exception is
  // not reported from here.
  if (m_thread != nullptr)
    qorThreadRelease(m_thread);
}

void XYLThread::run() {}

void XYLThread::start() {
  if (m_thread != nullptr)
    join();
  int status =
      qorThreadCreate(&XYLThread::main, this, &m_thread, QorThreadAttrStackSize, kThreadStackSize, QorThreadAttrEnd);
  if (status == QORTHREAD_OK)
    return;
  m_thread = nullptr;
  if (status == QORTHREAD_LIMIT)
    XYL_THROW(XYLThreadResourceError(XYLThreadErrorOutOfThreads, nullptr));
  if (status == QORTHREAD_NOMEM)
    XYL_THROW(XYLOutOfMemoryError(0L, "QorThread ran out of memory"));
  XYL_THROW(XYLThreadResourceError(XYLThreadErrorGeneric, "QorThread interface or unknown error"));
}

void XYLThread::join() {
  if (m_thread == nullptr)
    return;
  int exitStatus = 0;
  if (qorThreadJoin(m_thread, &exitStatus) < 0)
    XYL_THROW(XYLThreadResourceError(XYLThreadErrorGeneric,
                                     "QorThread either detected deadlock or an unexpected error occurred"));
  QorThreadDemise demise = QorThreadDemiseNotDead;
  qorThreadGetDemise(m_thread, &demise);
  // The record is kept on purpose: the object still names the failed thread.
  if (demise == QorThreadDemiseException)
    XYL_THROW(XYLThreadResourceError(XYLThreadErrorGeneric, "QorThread caught a hardware exception"));
  qorThreadRelease(m_thread);
  m_thread = nullptr;
}

bool XYLThread::isAlive() {
  if (m_thread == nullptr)
    return false;
  int exitCode = 0;
  if (qorThreadGetExitCode(m_thread, &exitCode) != QORTHREAD_OK)
    return false;
  return exitCode == QORTHREAD_STILL_ACTIVE;
}

void XYLThread::yield() { qorThreadYield(); }

void XYLThread::sleep(unsigned long milliseconds) { qorThreadSleep(xyl_threads::toLayerMilliseconds(milliseconds)); }

unsigned long XYLThread::currentThreadId() { return qorThreadCurrentId(); }

void *XYLThread::main(void *arg) {
  XYLThread *self = static_cast<XYLThread *>(arg);
  if (XYLThreadKey *key = g_threadKey.load(std::memory_order_acquire))
    key->setValue(self);
  if (self->m_runnable != nullptr)
    self->m_runnable->run();
  else
    self->run();
  if (self->m_atExit != nullptr)
    self->m_atExit();
  return nullptr;
}

int XYLThread::Initialize() {
  XYLThreadKey *key = new (std::nothrow) XYLThreadKey();
  if (key == nullptr)
    XYL_THROW(XYLOutOfMemoryError(0L, nullptr));
  delete g_threadKey.exchange(key, std::memory_order_acq_rel);
  return 0;
}

int XYLThread::Terminate() {
  delete g_threadKey.exchange(nullptr, std::memory_order_acq_rel);
  return 0;
}

int XYLThread::atExit(AtExitRoutine routine, int set) {
  XYLThreadKey *key = g_threadKey.load(std::memory_order_acquire);
  if (key == nullptr)
    return -1;
  XYLThread *self = static_cast<XYLThread *>(key->getValue());
  if (self == nullptr)
    return -1;
  if (set != 0) {
    if (routine == nullptr)
      return -1;
    self->m_atExit = routine;
  } else {
    self->m_atExit = nullptr;
  }
  return 0;
}
