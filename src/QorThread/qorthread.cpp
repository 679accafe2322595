// SPDX-License-Identifier: Apache-2.0
// qorthread.cpp - the thread layer's operating-system-independent part only:
// attribute scanning, status names, state changes and traps, trace
// composition, and the record logic of every object kind. The operating
// system's primitives come from the backend included at the end.
#include "QorThread/qorthread_internal.h"
#include "QorThread/xylsehandler_internal.h"

#include <XYLCore/Utility/XYLUtMemory.h>

#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <cxxabi.h>
#include <new>

namespace {

// ---- records ----------------------------------------------------------------

// Records are zero-filled heap blocks (so that a test can fail any of them)
// with their members constructed in place.
template <class T> T *newRecord() {
  void *block = XYLUtMemory::calloc(1, sizeof(T));
  return block != nullptr ? new (block) T() : nullptr;
}

template <class T> void deleteRecord(T *record) {
  if (record != nullptr) {
    record->~T();
    XYLUtMemory::free(record);
  }
}

constexpr unsigned int kSemaphoreMaximum = 0x7FFFFFFFu;
// The condition variable's and the message queue's semaphores stop short of
// the 32-bit maximum on purpose.
constexpr unsigned int kInternalSemaphoreMaximum = 0x7FFFFFFu;

// ---- status names -------------------------------------------------------------

const char *const kStatusNames[] = {
    "QORTHREAD_BADATTRIB", "QORTHREAD_BADPARM",  "QORTHREAD_NOMSGSET", "QORTHREAD_NOT_SUPPORTED",
    "QORTHREAD_TIMEOUT",   "QORTHREAD_DEADLOCK", "QORTHREAD_LIMIT",    "QORTHREAD_NOMEM",
    "QORTHREAD_ERROR",     "QORTHREAD_OK",       "QORTHREAD_INUSE"};

const char *const kStateNames[] = {"QorThreadStateInitial", "QorThreadStateRunning", "QorThreadStateSuspended",
                                   "QorThreadStateCanceling", "QorThreadStateException"};

// ---- locks held by the layer itself ------------------------------------------

// The global lock guards the making of thread records and the auto-unlock
// registry. While a thread holds it (or a record lock) it cannot be parked
// by a suspend, so that continue never waits for a parked thread.
class GlobalGuard {
public:
  GlobalGuard() {
    qor_os::criticalEnter();
    qor_os::globalLock();
  }
  ~GlobalGuard() {
    qor_os::globalUnlock();
    qor_os::criticalLeave();
  }
  GlobalGuard(const GlobalGuard &) = delete;
  GlobalGuard &operator=(const GlobalGuard &) = delete;
};

class RecordGuard {
public:
  explicit RecordGuard(QorThreadRec_ *thread) : m_thread(thread) {
    qor_os::criticalEnter();
    qor_os::mutexLock(&m_thread->recordLock);
  }
  ~RecordGuard() {
    qor_os::mutexUnlock(&m_thread->recordLock);
    qor_os::criticalLeave();
  }
  RecordGuard(const RecordGuard &) = delete;
  RecordGuard &operator=(const RecordGuard &) = delete;

private:
  QorThreadRec_ *m_thread;
};

// ---- trace ----------------------------------------------------------------------

std::atomic<QorThreadTraceSink> g_traceSink{nullptr};
std::atomic<void *> g_traceContext{nullptr};

// One branch when no sink is installed.
inline bool tracing(int syntax) { return syntax != 0 && g_traceSink.load(std::memory_order_acquire) != nullptr; }

// Pointers print with %x as their low 32 bits.
inline unsigned int low32(const void *pointer) {
  return static_cast<unsigned int>(reinterpret_cast<std::uintptr_t>(pointer));
}

const char *kindTag(int rc) { return rc == QORTHREAD_OK ? "[S]" : "[E]"; }

__attribute__((format(printf, 1, 2))) void traceLine(const char *format, ...) {
  QorThreadTraceSink sink = g_traceSink.load(std::memory_order_acquire);
  if (sink == nullptr)
    return;
  char line[1024];
  QorThreadRec_ *self = qor_os::currentSlotReady() ? qor_os::currentGet() : nullptr;
  int used = std::snprintf(line, sizeof line, "%8x(%8x,%8x) ", low32(self), qor_os::currentHandle32(),
                           static_cast<unsigned int>(qor_os::currentId()));
  if (used < 0)
    used = 0;
  va_list ap;
  va_start(ap, format);
  std::vsnprintf(line + used, sizeof line - static_cast<size_t>(used), format, ap);
  va_end(ap);
  sink(line, g_traceContext.load(std::memory_order_acquire));
}

// ---- attribute lists ----------------------------------------------------------------

enum AttrValueKind { kNoValue, kPointerValue, kIntValue };

struct AttrTag {
  const char *name; // full tag name for echoing a list
  const char *word; // trace word, null for none
  AttrValueKind value;
};

struct AttrKind {
  const char *function; // the create function, for the echo line
  const AttrTag *tags;
  int count;
};

const AttrTag kThreadTags[] = {
    {" QorThreadAttrEnd", nullptr, kNoValue},
    {" QorThreadAttrNoop", nullptr, kNoValue},
    {" QorThreadAttrDisableSyntax", " NO SYNTAX", kNoValue},
    {" QorThreadAttrTraceObj", " TRACEOBJ", kPointerValue},
    {" QorThreadAttrTraceObjInheritable", " INHERITABLE", kNoValue},
    {" QorThreadAttrCancelFlag", " CANCEL FLAG", kPointerValue},
    {" QorThreadAttrCancelFlagInheritable", " INHERITABLE", kNoValue},
    {" QorThreadAttrSuspended", " SUSPENDED", kNoValue},
    {" QorThreadAttrDetached", " DETACHED", kNoValue},
    {" QorThreadAttrStackSize", " STACK SIZE", kIntValue},
};
const AttrTag kTrapTags[] = {
    {" QorThreadStateTrapAttrEnd", nullptr, kNoValue},
    {" QorThreadStateTrapAttrNoop", nullptr, kNoValue},
    {" QorThreadStateTrapAttrDisableSyntax", " NO SYNTAX", kNoValue},
    {" QorThreadStateTrapAttrTraceObj", " TRACEOBJ", kPointerValue},
};
const AttrTag kMutexTags[] = {
    {" QorMutexAttrEnd", nullptr, kNoValue},
    {" QorMutexAttrNoop", nullptr, kNoValue},
    {" QorMutexAttrDisableSyntax", " NO SYNTAX", kNoValue},
    {" QorMutexAttrTraceObj", " TRACEOBJ", kPointerValue},
    {" QorMutexAttrRecursive", " RECURSIVE", kNoValue},
    {" QorMutexAttrAutoUnlock", " AUTOUNLOCK", kNoValue},
    {" QorMutexAttrCriticalSection", " CRITICAL SECTION", kNoValue},
};
const AttrTag kSemaphoreTags[] = {
    {" QorSemaphoreAttrEnd", nullptr, kNoValue},
    {" QorSemaphoreAttrNoop", nullptr, kNoValue},
    {" QorSemaphoreAttrDisableSyntax", " NO SYNTAX", kNoValue},
    {" QorSemaphoreAttrTraceObj", " TRACEOBJ", kPointerValue},
};
const AttrTag kConditionTags[] = {
    {" QorConditionAttrEnd", nullptr, kNoValue},
    {" QorConditionAttrNoop", nullptr, kNoValue},
    {" QorConditionAttrDisableSyntax", " NO SYNTAX", kNoValue},
    {" QorConditionAttrTraceObj", " TRACEOBJ", kPointerValue},
};
const AttrTag kEventTags[] = {
    {" QorEventAttrEnd", nullptr, kNoValue},
    {" QorEventAttrNoop", nullptr, kNoValue},
    {" QorEventAttrDisableSyntax", " NO SYNTAX", kNoValue},
    {" QorEventAttrTraceObj", " TRACEOBJ", kPointerValue},
};
const AttrTag kRWLockTags[] = {
    {" QorRWLockAttrEnd", nullptr, kNoValue},
    {" QorRWLockAttrNoop", nullptr, kNoValue},
    {" QorRWLockAttrDisableSyntax", " NO SYNTAX", kNoValue},
    {" QorRWLockAttrTraceObj", " TRACEOBJ", kPointerValue},
};

#define QOR_ATTR_KIND(function, tags)                                                                                  \
  AttrKind { function, tags, static_cast<int>(sizeof(tags) / sizeof(tags[0])) }
const AttrKind kThreadAttrs = QOR_ATTR_KIND("qorThreadCreate", kThreadTags);
const AttrKind kTrapAttrs = QOR_ATTR_KIND("qorThreadStateTrapCreate", kTrapTags);
const AttrKind kMutexAttrs = QOR_ATTR_KIND("qorThreadMutexCreate", kMutexTags);
const AttrKind kSemaphoreAttrs = QOR_ATTR_KIND("qorThreadSemaphoreCreate", kSemaphoreTags);
const AttrKind kConditionAttrs = QOR_ATTR_KIND("qorThreadConditionCreate", kConditionTags);
const AttrKind kEventAttrs = QOR_ATTR_KIND("qorThreadEventCreate", kEventTags);
const AttrKind kRWLockAttrs = QOR_ATTR_KIND("qorThreadRWLockCreate", kRWLockTags);
const AttrKind kMsgQueueAttrs = QOR_ATTR_KIND("qorThreadMsgQueueCreate", kSemaphoreTags);
#undef QOR_ATTR_KIND

// Tag values common to every kind.
constexpr int kTagDisableSyntax = 2;
constexpr int kTagTraceObj = 3;

struct ScannedAttrs {
  int bad = 0;
  int syntax = 1;
  unsigned int given = 0; // bit per tag present
  void *pointerValue[16] = {};
  int intValue[16] = {};
  char words[512] = {};
  char echo[512] = {};

  bool has(int tag) const { return (given & (1u << tag)) != 0; }
  void *traceObj() const { return pointerValue[kTagTraceObj]; }
};

void appendText(char *buffer, size_t size, const char *text) {
  std::strncat(buffer, text, size - std::strlen(buffer) - 1);
}

// Reads the list to its end. An unknown tag marks the list bad and the scan
// goes on with the next int. Words and the echo are built only when a trace
// sink is installed.
void scanAttributes(const AttrKind &kind, va_list ap, ScannedAttrs &out) {
  bool words = g_traceSink.load(std::memory_order_relaxed) != nullptr;
  for (;;) {
    int tag = va_arg(ap, int);
    if (tag < 0 || tag >= kind.count) {
      out.bad = 1;
      if (words) {
        char unknown[24];
        std::snprintf(unknown, sizeof unknown, " %d", tag);
        appendText(out.echo, sizeof out.echo, unknown);
      }
      continue;
    }
    const AttrTag &entry = kind.tags[tag];
    if (words)
      appendText(out.echo, sizeof out.echo, entry.name);
    if (tag == 0)
      break;
    out.given |= 1u << tag;
    unsigned int shown = 0;
    if (entry.value == kPointerValue) {
      out.pointerValue[tag] = va_arg(ap, void *);
      shown = low32(out.pointerValue[tag]);
    } else if (entry.value == kIntValue) {
      out.intValue[tag] = va_arg(ap, int);
      shown = static_cast<unsigned int>(out.intValue[tag]);
    }
    if (tag == kTagDisableSyntax)
      out.syntax = 0;
    if (words && entry.word != nullptr) {
      appendText(out.words, sizeof out.words, entry.word);
      if (entry.value != kNoValue) {
        char value[24];
        std::snprintf(value, sizeof value, " %0x", shown);
        appendText(out.words, sizeof out.words, value);
      }
    }
  }
}

void traceBadList(const AttrKind &kind, const ScannedAttrs &attrs) {
  if (attrs.bad && tracing(attrs.syntax))
    traceLine("[A]%s(%s )", kind.function, attrs.echo);
}

// The common start of a create call: clears *outP, then checks in this
// order: QORTHREAD_BADPARM without an out-pointer, QORTHREAD_BADATTRIB for a
// bad list, `refusal` when that is not QORTHREAD_OK (a value out of range),
// QORTHREAD_NOMEM when no record can be made. `record` is set only with
// QORTHREAD_OK.
template <class Rec> int beginCreate(Rec **outP, const ScannedAttrs &attrs, Rec *&record, int refusal = QORTHREAD_OK) {
  record = nullptr;
  if (outP != nullptr)
    *outP = nullptr;
  if (outP == nullptr)
    return QORTHREAD_BADPARM;
  if (attrs.bad)
    return QORTHREAD_BADATTRIB;
  if (refusal != QORTHREAD_OK)
    return refusal;
  record = newRecord<Rec>();
  return record != nullptr ? QORTHREAD_OK : QORTHREAD_NOMEM;
}

// ---- state changes and traps -------------------------------------------------

void sweepDeadTraps(QorThreadRec_ *thread) {
  for (int state = 0; state < QorThreadStateLast; ++state) {
    QorThreadStateTrapRec_ **link = &thread->traps[state];
    while (*link != nullptr) {
      QorThreadStateTrapRec_ *trap = *link;
      if (trap->dead) {
        *link = trap->next;
        deleteRecord(trap);
      } else {
        link = &trap->next;
      }
    }
  }
}

// Every change of a thread's state goes through here. A change to the
// current state does nothing.
void changeState(QorThreadRec_ *thread, QorThreadState newState) {
  RecordGuard guard(thread);
  int old = thread->state.load(std::memory_order_relaxed);
  if (old == newState)
    return;
  if (old == QorThreadStateRunning && newState == QorThreadStateInitial)
    thread->demise.store(QorThreadDemisePeaceful, std::memory_order_relaxed);
  else if (old == QorThreadStateInitial && newState == QorThreadStateRunning)
    thread->demise.store(QorThreadDemiseNotDead, std::memory_order_relaxed);
  else if (newState == QorThreadStateCanceling)
    thread->demise.store(QorThreadDemiseCanceled, std::memory_order_relaxed);
  else if (newState == QorThreadStateException)
    thread->demise.store(QorThreadDemiseException, std::memory_order_relaxed);
  thread->state.store(newState, std::memory_order_release);

  ++thread->trapWalkDepth;
  for (QorThreadStateTrapRec_ *trap = thread->traps[newState]; trap != nullptr; trap = trap->next)
    if (!trap->dead)
      trap->routine(trap->arg, thread, newState);
  if (--thread->trapWalkDepth == 0)
    sweepDeadTraps(thread);
}

void freeTraps(QorThreadRec_ *thread) {
  RecordGuard guard(thread);
  for (int state = 0; state < QorThreadStateLast; ++state) {
    while (QorThreadStateTrapRec_ *trap = thread->traps[state]) {
      thread->traps[state] = trap->next;
      deleteRecord(trap);
    }
  }
}

// ---- thread records --------------------------------------------------------------

QorThreadRec_ *makeThreadRecord() {
  QorThreadRec_ *thread = newRecord<QorThreadRec_>();
  if (thread == nullptr)
    return nullptr;
  if (qor_os::mutexInit(&thread->recordLock, QorOsMutexRecursive) != QORTHREAD_OK) {
    deleteRecord(thread);
    return nullptr;
  }
  if (qor_os::mutexInit(&thread->joinLock, QorOsMutexPlain) != QORTHREAD_OK) {
    qor_os::mutexDestroy(&thread->recordLock);
    deleteRecord(thread);
    return nullptr;
  }
  thread->syntax = 1;
  return thread;
}

void destroyThreadRecord(QorThreadRec_ *thread) {
  XYLUtMemory::free(thread->start);
  qor_os::mutexDestroy(&thread->joinLock);
  qor_os::mutexDestroy(&thread->recordLock);
  deleteRecord(thread);
}

// ---- auto-unlock registry (under the global lock) -------------------------------

void unlinkHeld(QorMutexRec_ *m) {
  QorThreadRec_ *owner = m->owner;
  if (m->prev != nullptr)
    m->prev->next = m->next;
  else if (owner != nullptr && owner->heldAutoUnlock == m)
    owner->heldAutoUnlock = m->next;
  if (m->next != nullptr)
    m->next->prev = m->prev;
  m->prev = m->next = nullptr;
  m->owner = nullptr;
  m->registered = 0;
  m->depth = 0;
}

// Called with the OS mutex just taken by `self`.
void registerHold(QorMutexRec_ *m, QorThreadRec_ *self, const char *file, int line) {
  GlobalGuard guard;
  if (m->registered && m->owner == self) {
    ++m->depth;
    return;
  }
  if (m->registered) // a stale entry of an owner that ended without its end
    unlinkHeld(m);
  m->owner = self;
  m->file = file;
  m->line = line;
  m->depth = 1;
  m->prev = nullptr;
  m->next = self->heldAutoUnlock;
  if (m->next != nullptr)
    m->next->prev = m;
  self->heldAutoUnlock = m;
  m->registered = 1;
}

// Releases every auto-unlock mutex the ending thread still holds, on that
// thread, as often as it took each.
void releaseHeldMutexes(QorThreadRec_ *thread) {
  GlobalGuard guard;
  while (QorMutexRec_ *m = thread->heldAutoUnlock) {
    int depth = m->depth;
    unlinkHeld(m);
    for (int i = 0; i < depth; ++i)
      qor_os::mutexUnlock(&m->os);
  }
}

// The calling thread's record; a thread this layer did not start gets one.
int currentRecord(QorThreadRec_ **recordP) {
  *recordP = nullptr;
  if (!qor_os::currentSlotReady())
    return QORTHREAD_BADPARM;
  QorThreadRec_ *self = qor_os::currentGet();
  if (self == nullptr) {
    GlobalGuard guard;
    self = makeThreadRecord();
    if (self == nullptr)
      return QORTHREAD_NOMEM;
    self->adopted = 1;
    self->started = 1;
    self->state.store(QorThreadStateRunning, std::memory_order_relaxed);
    self->demise.store(QorThreadDemiseNotDead, std::memory_order_relaxed);
    qor_os::threadAdoptCurrent(self);
    if (qor_os::currentSet(self) != QORTHREAD_OK) {
      qor_os::threadForgetCurrent();
      destroyThreadRecord(self);
      return QORTHREAD_ERROR;
    }
  }
  *recordP = self;
  return QORTHREAD_OK;
}

// The cancellation test for the calling thread's own record.
QorThreadState testCancelSelf(QorThreadRec_ *self) {
  {
    RecordGuard guard(self);
    int state = self->state.load(std::memory_order_relaxed);
    bool flagged = self->cancelFlag != nullptr && __atomic_load_n(self->cancelFlag, __ATOMIC_ACQUIRE) != 0;
    if (state != QorThreadStateCanceling && (self->cancelRequest.load(std::memory_order_acquire) != 0 || flagged))
      changeState(self, QorThreadStateCanceling);
  }
  qor_os::yield();
  return static_cast<QorThreadState>(self->state.load(std::memory_order_acquire));
}

// The thread's end, on the thread itself.
void threadEnd(QorThreadRec_ *self, bool backToInitial) {
  qor_os::currentSet(nullptr);
  if (backToInitial)
    changeState(self, QorThreadStateInitial);
  releaseHeldMutexes(self);
  freeTraps(self);
  XYLUtMemory::free(self->start);
  self->start = nullptr;
  qor_os::threadForgetCurrent();
  if (self->detached) {
    destroyThreadRecord(self);
    return;
  }
  self->ended.store(1, std::memory_order_release);
  qor_os::threadWakeParkWaiters(self);
}

std::atomic<QorThreadExceptionGuard> g_exceptionGuard{nullptr};

// Runs the routine inside the exception guard; true when it ended by an
// exception.
bool runGuarded(QorThreadRoutine routine, void *arg, void **resultP) {
  QorThreadExceptionGuard guard = g_exceptionGuard.load(std::memory_order_acquire);
  if (guard != nullptr)
    return guard(routine, arg, resultP) != 0;
  *resultP = routine(arg);
  return false;
}

} // namespace

void qorThreadSetExceptionGuard(QorThreadExceptionGuard guard) {
  g_exceptionGuard.store(guard, std::memory_order_release);
}

void qorThreadEntryRoutine(QorThreadRec_ *self) {
  QorThreadRoutine routine = self->start->routine;
  void *arg = self->start->arg;
  if (qor_os::currentSet(self) != QORTHREAD_OK) {
    changeState(self, QorThreadStateException);
    threadEnd(self, false);
    return;
  }
  // The run check: Initial runs (and becomes Running), Running runs as it
  // is, any other state (cancelled before the start) does not run.
  QorThreadState state = testCancelSelf(self);
  if (state == QorThreadStateSuspended) { // released from a suspended start
    self->demise.store(QorThreadDemiseNotDead, std::memory_order_relaxed);
    state = QorThreadStateInitial;
  }
  bool run = state == QorThreadStateInitial || state == QorThreadStateRunning;
  if (state == QorThreadStateInitial)
    changeState(self, QorThreadStateRunning);
  if (run) {
    void *result = nullptr;
    bool threw = false;
    try {
      threw = runGuarded(routine, arg, &result);
    } catch (abi::__forced_unwind &) {
      // The thread is being unwound by the system (thread exit); end it
      // properly and let the unwinding go on.
      threadEnd(self, true);
      throw;
    } catch (...) {
      threw = true;
    }
    if (threw) {
      self->exitStatus.store(QORTHREAD_EXIT_EXCEPTION, std::memory_order_relaxed);
      changeState(self, QorThreadStateException);
    } else {
      self->exitStatus.store(static_cast<int>(reinterpret_cast<std::intptr_t>(result)), std::memory_order_relaxed);
    }
  }
  threadEnd(self, true);
}

void qorThreadAdoptedEnd(QorThreadRec_ *self) {
  changeState(self, QorThreadStateInitial);
  releaseHeldMutexes(self);
  freeTraps(self);
  qor_os::threadForgetCurrent();
  destroyThreadRecord(self);
}

// ---- process ----------------------------------------------------------------------

namespace {
int g_initCount = 0; // under the global lock
}

int xylThreadProcessInitialize(const char *name) {
  (void)name;
  qor_os::globalLock();
  int rc = QORTHREAD_OK;
  if (g_initCount == 0)
    rc = qor_os::processInitialize();
  if (rc == QORTHREAD_OK)
    ++g_initCount;
  qor_os::globalUnlock();
  // The fault handler reads XYL_HWE_ABORT once per process.
  if (rc == QORTHREAD_OK)
    xylSEHandlerProcessInitialize();
  return rc;
}

int xylThreadProcessTerminate(const char *name) {
  (void)name;
  qor_os::globalLock();
  int rc = QORTHREAD_OK;
  if (g_initCount == 0)
    rc = QORTHREAD_ERROR;
  else if (--g_initCount == 0)
    qor_os::processTerminate();
  qor_os::globalUnlock();
  return rc;
}

const char *qorThreadErrorName(int code) {
  if (code < QORTHREAD_BADATTRIB || code > QORTHREAD_INUSE)
    return "<invalid QorThread Error Code!>";
  return kStatusNames[code - QORTHREAD_BADATTRIB];
}

void qorThreadSetTraceSink(QorThreadTraceSink sink, void *ctx) {
  g_traceContext.store(ctx, std::memory_order_release);
  g_traceSink.store(sink, std::memory_order_release);
}

// ---- threads ------------------------------------------------------------------------

int qorThreadCreate(QorThreadRoutine routine, void *arg, QorThread_ *threadP, ...) {
  ScannedAttrs attrs;
  va_list ap;
  va_start(ap, threadP);
  scanAttributes(kThreadAttrs, ap, attrs);
  va_end(ap);
  if (threadP != nullptr)
    *threadP = nullptr;

  bool detached = attrs.has(QorThreadAttrDetached);
  bool suspended = attrs.has(QorThreadAttrSuspended);
  int rc = QORTHREAD_OK;
  QorThreadRec_ *caller = nullptr;
  if (routine == nullptr || (threadP == nullptr && !detached))
    rc = QORTHREAD_BADPARM;
  else if (!qor_os::currentSlotReady())
    rc = QORTHREAD_BADPARM;
  else if (attrs.bad)
    rc = QORTHREAD_BADATTRIB;
  else
    caller = qor_os::currentGet();

  void *traceObj = attrs.traceObj();
  int traceObjInheritable = attrs.has(QorThreadAttrTraceObjInheritable);
  int *cancelFlag = static_cast<int *>(attrs.pointerValue[QorThreadAttrCancelFlag]);
  int cancelFlagInheritable = attrs.has(QorThreadAttrCancelFlagInheritable);
  if (caller != nullptr) {
    if (!attrs.has(QorThreadAttrTraceObj) && caller->traceObjInheritable) {
      traceObj = caller->traceObj;
      traceObjInheritable = 1;
    }
    if (!attrs.has(QorThreadAttrCancelFlag) && caller->cancelFlagInheritable) {
      cancelFlag = caller->cancelFlag;
      cancelFlagInheritable = 1;
    }
  }

  QorThreadRec_ *thread = nullptr;
  unsigned long id = 0;
  if (rc == QORTHREAD_OK) {
    thread = makeThreadRecord();
    if (thread == nullptr)
      rc = QORTHREAD_NOMEM;
  }
  if (rc == QORTHREAD_OK) {
    thread->detached = detached ? 1 : 0;
    thread->syntax = attrs.syntax;
    thread->traceObj = traceObj;
    thread->traceObjInheritable = traceObjInheritable;
    thread->cancelFlag = cancelFlag;
    thread->cancelFlagInheritable = cancelFlagInheritable;
    thread->start = static_cast<QorThreadStartPair *>(XYLUtMemory::calloc(1, sizeof(QorThreadStartPair)));
    if (thread->start == nullptr) {
      destroyThreadRecord(thread);
      thread = nullptr;
      rc = QORTHREAD_NOMEM;
    }
  }
  if (rc == QORTHREAD_OK) {
    thread->start->routine = routine;
    thread->start->arg = arg;
    changeState(thread, suspended ? QorThreadStateSuspended : QorThreadStateInitial);
    thread->exitStatus.store(0, std::memory_order_relaxed);
    thread->started = suspended ? 0 : 1;
    thread->suspendCount.store(suspended ? 1 : 0, std::memory_order_relaxed);
    int stackSize = attrs.intValue[QorThreadAttrStackSize];
    // The caller's handle is stored before the thread can run, so that the
    // routine finds it (a join of itself must see its own handle).
    if (threadP != nullptr)
      *threadP = thread;
    // After a successful start a detached record may already be gone.
    rc = qor_os::threadStart(thread, stackSize > 0 ? static_cast<unsigned int>(stackSize) : 0u, suspended ? 1 : 0, &id);
    if (rc != QORTHREAD_OK) {
      rc = QORTHREAD_ERROR;
      changeState(thread, QorThreadStateException);
      destroyThreadRecord(thread);
      thread = nullptr;
      if (threadP != nullptr)
        *threadP = nullptr;
    }
  }

  traceBadList(kThreadAttrs, attrs);
  if (tracing(attrs.syntax)) {
    traceLine("%sqorThreadCreate( routine:%x, arg:%x, threadP:%x=%x(%d)%s )", kindTag(rc),
              low32(reinterpret_cast<void *>(routine)), low32(arg), low32(threadP), low32(thread), static_cast<int>(id),
              attrs.words);
    if (rc == QORTHREAD_OK)
      traceLine("CREATE THREAD %d%s;", static_cast<int>(id), attrs.words);
  }
  return rc;
}

int qorThreadJoin(QorThread_ thread, int *statusP) {
  if (thread == nullptr)
    return QORTHREAD_BADPARM;
  bool trace = tracing(thread->syntax);
  if (trace)
    traceLine("[I]%s( waitThread:%x, statusP:%x )", "<joinThread>", low32(thread), low32(statusP));
  int rc = QORTHREAD_OK;
  if (thread->adopted || thread->detached) {
    rc = QORTHREAD_ERROR;
  } else if (qor_os::threadIsCurrent(thread)) {
    rc = QORTHREAD_DEADLOCK; // checked before the join lock, which a joiner may hold
  } else {
    qor_os::mutexLock(&thread->joinLock);
    if (!thread->osJoined) {
      rc = qor_os::threadJoin(thread);
      if (rc == QORTHREAD_OK)
        thread->osJoined = 1;
    }
    qor_os::mutexUnlock(&thread->joinLock);
  }
  if (rc == QORTHREAD_OK && statusP != nullptr)
    *statusP = thread->exitStatus.load(std::memory_order_acquire);
  if (trace)
    traceLine("%s%s( waitThread:%x, *statusP:%d ) = %s", kindTag(rc), "<joinThread>", low32(thread),
              statusP != nullptr ? *statusP : 0, qorThreadErrorName(rc));
  return rc;
}

int qorThreadSuspend(QorThread_ thread) {
  if (thread == nullptr)
    return QORTHREAD_BADPARM;
  bool trace = tracing(thread->syntax);
  int id = static_cast<int>(thread->id);
  if (trace)
    traceLine("[I]%s( thread:%d )", "<suspendThread>", id);
  int rc = QORTHREAD_OK;
  bool park = false;
  {
    RecordGuard guard(thread);
    if (thread->ended.load(std::memory_order_acquire)) {
      rc = QORTHREAD_ERROR;
    } else {
      int previous = thread->suspendCount.fetch_add(1, std::memory_order_acq_rel);
      park = previous == 0 && thread->started;
      if (previous == 0 && thread->state.load(std::memory_order_relaxed) == QorThreadStateRunning)
        changeState(thread, QorThreadStateSuspended);
    }
  }
  if (park)
    rc = qor_os::threadPark(thread);
  if (trace)
    traceLine("%s%s( thread:%d ) = %s", kindTag(rc), "<suspendThread>", id, qorThreadErrorName(rc));
  return rc;
}

int qorThreadContinue(QorThread_ thread) {
  if (thread == nullptr)
    return QORTHREAD_BADPARM;
  bool trace = tracing(thread->syntax);
  int id = static_cast<int>(thread->id);
  if (trace)
    traceLine("[I]%s( thread:%d )", "<continueThread>", id);
  bool openGate = false, unpark = false;
  {
    RecordGuard guard(thread);
    if (thread->suspendCount.load(std::memory_order_relaxed) > 0 &&
        thread->suspendCount.fetch_sub(1, std::memory_order_acq_rel) == 1) {
      if (!thread->started) {
        // A suspended start: the thread's entry takes it from Suspended to
        // Running. It never passes through Initial, whose traps mean that
        // the routine has returned.
        thread->started = 1;
        openGate = true;
      } else {
        unpark = true;
        if (thread->state.load(std::memory_order_relaxed) == QorThreadStateSuspended)
          changeState(thread, QorThreadStateRunning);
      }
    }
  }
  if (openGate)
    qor_os::threadOpenGate(thread);
  if (unpark)
    qor_os::threadUnpark(thread);
  if (trace)
    traceLine("%s%s( thread:%d ) = %s", "[S]", "<continueThread>", id, qorThreadErrorName(QORTHREAD_OK));
  return QORTHREAD_OK;
}

int qorThreadRelease(QorThread_ thread) {
  if (thread == nullptr)
    return QORTHREAD_BADPARM;
  if (thread->adopted || thread->detached)
    return QORTHREAD_ERROR;
  while (thread->suspendCount.load(std::memory_order_acquire) > 0)
    qorThreadContinue(thread);
  // The operating system's thread is always reaped, also for a thread that
  // has already ended.
  int rc = qorThreadJoin(thread, nullptr);
  if (rc != QORTHREAD_OK)
    return rc;
  destroyThreadRecord(thread);
  return QORTHREAD_OK;
}

int qorThreadGetPriority(QorThread_ thread, int *priorityP) {
  if (thread == nullptr || priorityP == nullptr)
    return QORTHREAD_BADPARM;
  return qor_os::threadGetPriority(thread, priorityP);
}

int qorThreadSetPriority(QorThread_ thread, int priority) {
  if (thread == nullptr)
    return QORTHREAD_BADPARM;
  return qor_os::threadSetPriority(thread, priority) == QORTHREAD_OK ? QORTHREAD_OK : QORTHREAD_ERROR;
}

int qorThreadSelf(QorThread_ *threadP) {
  if (threadP == nullptr)
    return QORTHREAD_BADPARM;
  return currentRecord(threadP);
}

int qorThreadGetState(QorThread_ thread, QorThreadState *stateP) {
  if (thread == nullptr || stateP == nullptr)
    return QORTHREAD_BADPARM;
  *stateP = static_cast<QorThreadState>(thread->state.load(std::memory_order_acquire));
  return QORTHREAD_OK;
}

int qorThreadGetDemise(QorThread_ thread, QorThreadDemise *demiseP) {
  if (thread == nullptr || demiseP == nullptr)
    return QORTHREAD_BADPARM;
  *demiseP = static_cast<QorThreadDemise>(thread->demise.load(std::memory_order_acquire));
  return QORTHREAD_OK;
}

int qorThreadGetExitCode(QorThread_ thread, int *exitCodeP) {
  if (thread == nullptr || exitCodeP == nullptr)
    return QORTHREAD_BADPARM;
  if (thread->adopted || !thread->ended.load(std::memory_order_acquire))
    *exitCodeP = QORTHREAD_STILL_ACTIVE;
  else
    *exitCodeP = thread->exitStatus.load(std::memory_order_acquire);
  return QORTHREAD_OK;
}

int qorThreadGetId(QorThread_ thread, unsigned long *idP) {
  if (thread == nullptr || idP == nullptr)
    return QORTHREAD_BADPARM;
  *idP = thread->id;
  return QORTHREAD_OK;
}

unsigned long qorThreadCurrentId(void) { return qor_os::currentId(); }

void qorThreadYield(void) { qor_os::yield(); }

void qorThreadSleep(unsigned int milliseconds) { qor_os::sleepMs(milliseconds); }

int qorThreadTestCancel(QorThread_ thread, QorThreadState *stateP) {
  QorThreadRec_ *self = nullptr;
  if (qor_os::currentSlotReady())
    self = qor_os::currentGet();
  QorThreadState state;
  if (thread == nullptr || thread == self) {
    int rc = currentRecord(&self);
    if (rc != QORTHREAD_OK)
      return rc;
    state = testCancelSelf(self);
  } else {
    if (!thread->adopted && thread->ended.load(std::memory_order_acquire) &&
        thread->state.load(std::memory_order_acquire) == QorThreadStateRunning)
      changeState(thread, QorThreadStateInitial);
    state = static_cast<QorThreadState>(thread->state.load(std::memory_order_acquire));
  }
  if (stateP != nullptr)
    *stateP = state;
  return QORTHREAD_OK;
}

int qorThreadRequestCancel(QorThread_ thread) {
  if (thread == nullptr)
    return QORTHREAD_BADPARM;
  thread->cancelRequest.store(1, std::memory_order_release);
  return QORTHREAD_OK;
}

// ---- state traps ------------------------------------------------------------------

int qorThreadStateTrapCreate(QorThread_ thread, QorThreadState state, QorThreadStateTrapRoutine routine, void *arg,
                             QorThreadStateTrap_ *trapP, ...) {
  ScannedAttrs attrs;
  va_list ap;
  va_start(ap, trapP);
  scanAttributes(kTrapAttrs, ap, attrs);
  va_end(ap);
  if (trapP != nullptr)
    *trapP = nullptr;
  int rc = QORTHREAD_OK;
  QorThreadStateTrapRec_ *trap = nullptr;
  if (trapP == nullptr || thread == nullptr || routine == nullptr || state < QorThreadStateInitial ||
      state >= QorThreadStateLast)
    rc = QORTHREAD_BADPARM;
  else if (attrs.bad)
    rc = QORTHREAD_BADATTRIB;
  else if ((trap = newRecord<QorThreadStateTrapRec_>()) == nullptr)
    rc = QORTHREAD_NOMEM;
  if (rc == QORTHREAD_OK) {
    trap->thread = thread;
    trap->state = state;
    trap->routine = routine;
    trap->arg = arg;
    trap->traceObj = attrs.traceObj();
    trap->syntax = attrs.syntax;
    RecordGuard guard(thread);
    QorThreadStateTrapRec_ **link = &thread->traps[state];
    while (*link != nullptr)
      link = &(*link)->next;
    *link = trap;
    *trapP = trap;
  }
  traceBadList(kTrapAttrs, attrs);
  if (tracing(attrs.syntax)) {
    const char *stateName = state >= QorThreadStateInitial && state < QorThreadStateLast ? kStateNames[state] : "";
    traceLine("%s%s( stateTrapP:%x=%x, state:%s%s )", kindTag(rc), "qorThreadStateTrapCreate", low32(trapP),
              low32(trap), stateName, attrs.words);
    if (rc == QORTHREAD_OK)
      traceLine("CREATE THREAD STATE TRAP %x FOR STATE %s%s;", low32(trap), stateName, attrs.words);
  }
  return rc;
}

int qorThreadStateTrapDestroy(QorThreadStateTrap_ trap) {
  if (trap == nullptr)
    return QORTHREAD_BADPARM;
  QorThreadRec_ *thread = trap->thread;
  RecordGuard guard(thread);
  if (thread->trapWalkDepth > 0) {
    trap->dead = 1; // freed when the walk that is calling traps ends
    return QORTHREAD_OK;
  }
  QorThreadStateTrapRec_ **link = &thread->traps[trap->state];
  while (*link != nullptr && *link != trap)
    link = &(*link)->next;
  if (*link == nullptr)
    return QORTHREAD_BADPARM;
  *link = trap->next;
  deleteRecord(trap);
  return QORTHREAD_OK;
}

// ---- mutexes ----------------------------------------------------------------------

int qorThreadMutexCreate(QorMutex_ *mP, ...) {
  ScannedAttrs attrs;
  va_list ap;
  va_start(ap, mP);
  scanAttributes(kMutexAttrs, ap, attrs);
  va_end(ap);
  QorMutexRec_ *m = nullptr;
  int rc = beginCreate(mP, attrs, m);
  if (rc == QORTHREAD_OK) {
    m->criticalSection = attrs.has(QorMutexAttrCriticalSection) ? 1 : 0;
    m->autoUnlock = attrs.has(QorMutexAttrAutoUnlock) ? 1 : 0;
    m->syntax = attrs.syntax;
    m->traceObj = attrs.traceObj();
    // QorMutexAttrRecursive changes nothing: both kinds are recursive.
    rc = qor_os::mutexInit(&m->os, m->criticalSection ? QorOsMutexRecursive : QorOsMutexRobustRecursive);
    if (rc != QORTHREAD_OK) {
      deleteRecord(m);
      m = nullptr;
    } else {
      m->valid = 1;
      *mP = m;
    }
  }
  traceBadList(kMutexAttrs, attrs);
  if (tracing(attrs.syntax)) {
    traceLine("%s%s( m:%x=%x%s )", kindTag(rc), "qorThreadMutexCreate", low32(mP), low32(m), attrs.words);
    if (rc == QORTHREAD_OK)
      traceLine("CREATE MUTEX %x%s;", low32(m), attrs.words);
  }
  return rc;
}

int qorThreadMutexDestroy(QorMutex_ m) {
  if (m == nullptr)
    return QORTHREAD_BADPARM;
  if (m->autoUnlock) {
    QorThreadRec_ *self = qor_os::currentSlotReady() ? qor_os::currentGet() : nullptr;
    GlobalGuard guard;
    if (m->registered && m->owner != self)
      return QORTHREAD_ERROR;
    if (m->registered) { // the caller's own hold, every level
      int depth = m->depth;
      unlinkHeld(m);
      for (int i = 0; i < depth; ++i)
        qor_os::mutexUnlock(&m->os);
    }
  }
  // A mutex still held by another thread is left alone: freeing it would
  // corrupt that thread's list of robust mutexes.
  if (qor_os::mutexReleaseForDestroy(&m->os) != QORTHREAD_OK)
    return QORTHREAD_ERROR;
  m->valid = 0;
  qor_os::mutexDestroy(&m->os);
  deleteRecord(m);
  return QORTHREAD_OK;
}

namespace {

// An auto-unlock mutex's lock: taken, then linked to its owner.
__attribute__((noinline)) int lockAndRegister(QorMutex_ m, const char *file, int line) {
  if (m == nullptr)
    return QORTHREAD_BADPARM;
  QorThreadRec_ *self = nullptr;
  if (currentRecord(&self) != QORTHREAD_OK)
    return QORTHREAD_ERROR;
  int rc = qor_os::mutexLock(&m->os);
  if (rc == QORTHREAD_OK)
    registerHold(m, self, file, line);
  return rc;
}

// An auto-unlock mutex's unlock: unlinked from its owner at the last level.
__attribute__((noinline)) int unregisterAndUnlock(QorMutex_ m) {
  if (m == nullptr)
    return QORTHREAD_BADPARM;
  QorThreadRec_ *self = qor_os::currentSlotReady() ? qor_os::currentGet() : nullptr;
  {
    GlobalGuard guard;
    if (self == nullptr || !m->registered || m->owner != self)
      return QORTHREAD_ERROR;
    if (--m->depth == 0)
      unlinkHeld(m);
  }
  return qor_os::mutexUnlock(&m->os);
}

} // namespace

int qorThreadMutexLock(QorMutex_ m, const char *file, int line) {
  if (__builtin_expect(m != nullptr && !m->autoUnlock, 1))
    return qor_os::mutexLock(&m->os);
  return lockAndRegister(m, file, line);
}

int qorThreadMutexTryLock(QorMutex_ m, const char *file, int line) {
  if (m == nullptr)
    return QORTHREAD_BADPARM;
  if (m->criticalSection)
    return QORTHREAD_NOT_SUPPORTED;
  QorThreadRec_ *self = nullptr;
  if (m->autoUnlock && currentRecord(&self) != QORTHREAD_OK)
    return QORTHREAD_ERROR;
  int rc = qor_os::mutexTryLock(&m->os);
  if (rc == QORTHREAD_OK && m->autoUnlock)
    registerHold(m, self, file, line);
  return rc;
}

int qorThreadMutexTimedLock(QorMutex_ m, unsigned int milliseconds, const char *file, int line) {
  if (m == nullptr)
    return QORTHREAD_BADPARM;
  if (m->criticalSection)
    return QORTHREAD_NOT_SUPPORTED;
  QorThreadRec_ *self = nullptr;
  if (m->autoUnlock && currentRecord(&self) != QORTHREAD_OK)
    return QORTHREAD_ERROR;
  int rc = qor_os::mutexTimedLock(&m->os, milliseconds);
  if (rc == QORTHREAD_OK && m->autoUnlock)
    registerHold(m, self, file, line);
  return rc;
}

int qorThreadMutexUnlock(QorMutex_ m) {
  if (__builtin_expect(m != nullptr && !m->autoUnlock, 1))
    return qor_os::mutexUnlock(&m->os);
  return unregisterAndUnlock(m);
}

int qorThreadMutexGetLockSite(QorMutex_ m, QorThread_ *ownerP, const char **fileP, int *lineP) {
  if (m == nullptr)
    return QORTHREAD_BADPARM;
  GlobalGuard guard;
  bool held = m->registered != 0;
  if (ownerP != nullptr)
    *ownerP = held ? m->owner : nullptr;
  if (fileP != nullptr)
    *fileP = held ? m->file : nullptr;
  if (lineP != nullptr)
    *lineP = held ? m->line : 0;
  return QORTHREAD_OK;
}

// ---- semaphores -------------------------------------------------------------------

int qorThreadSemaphoreCreate(QorSemaphore_ *sP, unsigned int initialCount, ...) {
  ScannedAttrs attrs;
  va_list ap;
  va_start(ap, initialCount);
  scanAttributes(kSemaphoreAttrs, ap, attrs);
  va_end(ap);
  QorSemaphoreRec_ *s = nullptr;
  int rc = beginCreate(sP, attrs, s, initialCount > kSemaphoreMaximum ? QORTHREAD_ERROR : QORTHREAD_OK);
  if (rc == QORTHREAD_OK) {
    qor_os::semInit(&s->os, initialCount, kSemaphoreMaximum);
    s->traceObj = attrs.traceObj();
    s->syntax = attrs.syntax;
    s->valid = 1;
    *sP = s;
  }
  traceBadList(kSemaphoreAttrs, attrs);
  if (tracing(attrs.syntax)) {
    traceLine("%s%s( s:%x=%x, count:%d%s )", kindTag(rc), "qorThreadSemaphoreCreate", low32(sP), low32(s),
              static_cast<int>(initialCount), attrs.words);
    if (rc == QORTHREAD_OK)
      traceLine("CREATE SEMAPHORE %x WITH COUNT %d%s;", low32(s), static_cast<int>(initialCount), attrs.words);
  }
  return rc;
}

int qorThreadSemaphoreDestroy(QorSemaphore_ s) {
  if (s == nullptr)
    return QORTHREAD_BADPARM;
  deleteRecord(s);
  return QORTHREAD_OK;
}

int qorThreadSemaphoreWait(QorSemaphore_ s) {
  if (s == nullptr)
    return QORTHREAD_BADPARM;
  int rc = qor_os::semWait(&s->os, QORTHREAD_INFINITE);
  return rc == QORTHREAD_TIMEOUT ? QORTHREAD_ERROR : rc;
}

int qorThreadSemaphoreTryWait(QorSemaphore_ s) {
  if (s == nullptr)
    return QORTHREAD_BADPARM;
  int rc = qor_os::semWait(&s->os, 0);
  return rc == QORTHREAD_TIMEOUT ? QORTHREAD_INUSE : rc;
}

int qorThreadSemaphoreTimedWait(QorSemaphore_ s, unsigned int milliseconds) {
  if (s == nullptr)
    return QORTHREAD_BADPARM;
  return qor_os::semWait(&s->os, milliseconds);
}

int qorThreadSemaphorePost(QorSemaphore_ s) {
  if (s == nullptr)
    return QORTHREAD_BADPARM;
  return qor_os::semPost(&s->os, 1);
}

// ---- condition variables ----------------------------------------------------------

namespace {

// Waits on `cv` releasing `m` (held by the caller, either mutex kind). An
// infinite wait cannot expire; a time-out reported for it would be an error.
int conditionWait(QorOsCondition *cv, QorOsMutex *m, unsigned int ms) {
  int rc = qor_os::condWait(cv, m, ms);
  return rc == QORTHREAD_TIMEOUT && ms == QORTHREAD_INFINITE ? QORTHREAD_ERROR : rc;
}

} // namespace

int qorThreadConditionCreate(QorCondition_ *cvP, ...) {
  ScannedAttrs attrs;
  va_list ap;
  va_start(ap, cvP);
  scanAttributes(kConditionAttrs, ap, attrs);
  va_end(ap);
  QorConditionRec_ *cv = nullptr;
  int rc = beginCreate(cvP, attrs, cv);
  if (rc == QORTHREAD_OK) {
    qor_os::condInit(&cv->os);
    cv->traceObj = attrs.traceObj();
    cv->syntax = attrs.syntax;
    cv->valid = 1;
    *cvP = cv;
  }
  traceBadList(kConditionAttrs, attrs);
  if (tracing(attrs.syntax)) {
    traceLine("%s%s( cv:%x=%x%s )", kindTag(rc), "qorThreadConditionCreate", low32(cvP), low32(cv), attrs.words);
    if (rc == QORTHREAD_OK)
      traceLine("CREATE CONDITION VARIABLE %x%s;", low32(cv), attrs.words);
  }
  return rc;
}

int qorThreadConditionDestroy(QorCondition_ cv) {
  if (cv == nullptr)
    return QORTHREAD_BADPARM;
  cv->valid = 0;
  deleteRecord(cv);
  return QORTHREAD_OK;
}

int qorThreadConditionWait(QorCondition_ cv, QorMutex_ m) {
  if (cv == nullptr || m == nullptr)
    return QORTHREAD_BADPARM;
  return conditionWait(&cv->os, &m->os, QORTHREAD_INFINITE);
}

int qorThreadConditionTimedWait(QorCondition_ cv, QorMutex_ m, unsigned int milliseconds) {
  if (cv == nullptr || m == nullptr)
    return QORTHREAD_BADPARM;
  return conditionWait(&cv->os, &m->os, milliseconds);
}

int qorThreadConditionWaitCS(QorCondition_ cv, QorMutex_ cs) {
  if (cv == nullptr || cs == nullptr)
    return QORTHREAD_BADPARM;
  return conditionWait(&cv->os, &cs->os, QORTHREAD_INFINITE);
}

int qorThreadConditionTimedWaitCS(QorCondition_ cv, QorMutex_ cs, unsigned int milliseconds) {
  if (cv == nullptr || cs == nullptr)
    return QORTHREAD_BADPARM;
  return conditionWait(&cv->os, &cs->os, milliseconds);
}

int qorThreadConditionSignal(QorCondition_ cv) {
  if (cv == nullptr)
    return QORTHREAD_BADPARM;
  qor_os::condSignal(&cv->os);
  return QORTHREAD_OK;
}

int qorThreadConditionBroadcast(QorCondition_ cv) {
  if (cv == nullptr)
    return QORTHREAD_BADPARM;
  qor_os::condBroadcast(&cv->os);
  return QORTHREAD_OK;
}

// ---- events ----------------------------------------------------------------------

int qorThreadEventCreate(QorEvent_ *eventP, int manualReset, int setSignaled, ...) {
  ScannedAttrs attrs;
  va_list ap;
  va_start(ap, setSignaled);
  scanAttributes(kEventAttrs, ap, attrs);
  va_end(ap);
  QorEventRec_ *event = nullptr;
  int rc = beginCreate(eventP, attrs, event);
  if (rc == QORTHREAD_OK) {
    qor_os::eventInit(&event->os, manualReset, setSignaled);
    event->traceObj = attrs.traceObj();
    event->syntax = attrs.syntax;
    event->valid = 1;
    *eventP = event;
  }
  traceBadList(kEventAttrs, attrs);
  if (tracing(attrs.syntax)) {
    traceLine("%s%s( event:%x=%x, manualReset:%s, setSignaled:%s%s )", kindTag(rc), "qorThreadEventCreate",
              low32(eventP), low32(event), manualReset ? "TRUE" : "FALSE", setSignaled ? "TRUE" : "FALSE", attrs.words);
    if (rc == QORTHREAD_OK)
      traceLine("CREATE %sEVENT %x%s%s;", setSignaled ? "SIGNALED" : "", low32(event),
                manualReset ? " WITH MANUAL RESET" : "", attrs.words);
  }
  return rc;
}

int qorThreadEventDestroy(QorEvent_ event) {
  if (event == nullptr)
    return QORTHREAD_BADPARM;
  deleteRecord(event);
  return QORTHREAD_OK;
}

int qorThreadEventWait(QorEvent_ event) {
  if (event == nullptr)
    return QORTHREAD_BADPARM;
  int rc = qor_os::eventWait(&event->os, QORTHREAD_INFINITE);
  return rc == QORTHREAD_TIMEOUT ? QORTHREAD_ERROR : rc;
}

int qorThreadEventTimedWait(QorEvent_ event, unsigned int milliseconds) {
  if (event == nullptr)
    return QORTHREAD_BADPARM;
  return qor_os::eventWait(&event->os, milliseconds);
}

int qorThreadEventSet(QorEvent_ event) {
  if (event == nullptr)
    return QORTHREAD_BADPARM;
  qor_os::eventSet(&event->os);
  return QORTHREAD_OK;
}

int qorThreadEventReset(QorEvent_ event) {
  if (event == nullptr)
    return QORTHREAD_BADPARM;
  qor_os::eventReset(&event->os);
  return QORTHREAD_OK;
}

// ---- read/write locks ---------------------------------------------------------------

namespace {

// Milliseconds left of a time-out that started at `start`.
unsigned int remainingOf(unsigned int ms, unsigned long long start) {
  if (ms == QORTHREAD_INFINITE)
    return QORTHREAD_INFINITE;
  unsigned long long elapsed = qor_os::monotonicMs() - start;
  return elapsed >= ms ? 0u : static_cast<unsigned int>(ms - elapsed);
}

class RWGuardLock {
public:
  explicit RWGuardLock(QorRWLockRec_ *rw) : m_rw(rw) { qor_os::mutexLock(&m_rw->guard); }
  ~RWGuardLock() { qor_os::mutexUnlock(&m_rw->guard); } // a failing release is ignored
  RWGuardLock(const RWGuardLock &) = delete;
  RWGuardLock &operator=(const RWGuardLock &) = delete;

private:
  QorRWLockRec_ *m_rw;
};

unsigned int readersOf(unsigned int state) { return state / kRWLockReader; }

constexpr int kRWLockSpins = 100;

// Uncontended entries and exits: one compare-and-swap each. A reader enters
// while no writer holds or waits; a writer enters a free lock that nobody
// waits for; either leaves by the fast path while nobody waits. Anything
// else goes to the guarded path.
bool rwFastReadLock(QorRWLockRec_ *rw) {
  unsigned int state = rw->state.load(std::memory_order_relaxed);
  while ((state & (kRWLockWriter | kRWLockSlow)) == 0) {
    if (rw->state.compare_exchange_weak(state, state + kRWLockReader, std::memory_order_acquire,
                                        std::memory_order_relaxed))
      return true;
  }
  return false;
}

// A free lock is taken even while others wait for it: they were woken by
// the unlock that freed it and test again. Writers among themselves are not
// queued in order; a writer that just left may take the lock again at once,
// which keeps a short write section from turning into a sleep and a wake-up
// per pass.
bool rwFastWriteLock(QorRWLockRec_ *rw) {
  unsigned int state = rw->state.load(std::memory_order_relaxed);
  while ((state & kRWLockWriter) == 0 && readersOf(state) == 0) {
    if (rw->state.compare_exchange_weak(state, state | kRWLockWriter, std::memory_order_acquire,
                                        std::memory_order_relaxed))
      return true;
  }
  return false;
}

// A writer that finds the lock taken looks again for a moment before it
// queues: write sections are short, and sleeping costs two system calls.
bool rwSpinWriteLock(QorRWLockRec_ *rw) {
  for (int spin = 0; spin < kRWLockSpins; ++spin) {
    qor_os::cpuRelax();
    if (rwFastWriteLock(rw))
      return true;
  }
  return false;
}

bool rwFastUnlock(QorRWLockRec_ *rw) {
  unsigned int state = rw->state.load(std::memory_order_relaxed);
  for (;;) {
    if ((state & kRWLockSlow) != 0 || state == 0)
      return false; // somebody to wake, or not held at all
    unsigned int next = (state & kRWLockWriter) != 0 ? 0u : state - kRWLockReader;
    if (rw->state.compare_exchange_weak(state, next, std::memory_order_release, std::memory_order_relaxed))
      return true;
  }
}

// Under the guard: the slow flag is up exactly while somebody waits.
void rwUpdateSlowFlag(QorRWLockRec_ *rw) {
  if (rw->waitingWriters > 0 || rw->waitingReaders > 0)
    rw->state.fetch_or(kRWLockSlow, std::memory_order_acq_rel);
  else
    rw->state.fetch_and(~kRWLockSlow, std::memory_order_acq_rel);
}

// Under the guard: whom a change of the lock lets go. A waiting writer is
// woken once nobody holds the lock; waiting readers once no writer holds or
// waits.
void rwWakeWaiters(QorRWLockRec_ *rw) {
  unsigned int state = rw->state.load(std::memory_order_acquire);
  if (rw->waitingWriters > 0) {
    if ((state & kRWLockWriter) == 0 && readersOf(state) == 0)
      qor_os::condSignal(&rw->writers);
  } else if (rw->waitingReaders > 0 && (state & kRWLockWriter) == 0) {
    qor_os::condBroadcast(&rw->readers);
  }
}

// The write lock with an optional limit (QORTHREAD_INFINITE for none).
int rwWriteLock(QorRWLockRec_ *rw, unsigned int ms) {
  unsigned long long start = ms == QORTHREAD_INFINITE ? 0 : qor_os::monotonicMs();
  RWGuardLock guard(rw);
  ++rw->waitingWriters;
  rwUpdateSlowFlag(rw); // shuts the readers' fast path before the check
  // The check and the take are one compare-and-swap, so no reader can enter
  // in between.
  int rc = QORTHREAD_OK;
  while (rc == QORTHREAD_OK && !rwFastWriteLock(rw))
    rc = conditionWait(&rw->writers, &rw->guard, remainingOf(ms, start));
  --rw->waitingWriters;
  rwUpdateSlowFlag(rw);
  if (rc != QORTHREAD_OK)
    rwWakeWaiters(rw); // the readers this writer held back
  return rc;
}

// The guarded read lock with an optional limit; `keepCountOnError` leaves the
// waiting-reader count raised when the wait itself fails, as the untimed
// form always has.
int rwSlowReadLock(QorRWLockRec_ *rw, unsigned int ms, bool keepCountOnError) {
  unsigned long long start = ms == QORTHREAD_INFINITE ? 0 : qor_os::monotonicMs();
  RWGuardLock guard(rw);
  for (;;) {
    // Writers are preferred: a reader also waits while a writer waits. A
    // writer may take a free lock without the guard, so the reader enters
    // by a compare-and-swap that fails if one has.
    unsigned int state = rw->state.load(std::memory_order_acquire);
    if ((state & kRWLockWriter) == 0 && rw->waitingWriters == 0) {
      if (rw->state.compare_exchange_weak(state, state + kRWLockReader, std::memory_order_acquire,
                                          std::memory_order_relaxed))
        return QORTHREAD_OK;
      continue;
    }
    ++rw->waitingReaders;
    rwUpdateSlowFlag(rw);
    int rc = conditionWait(&rw->readers, &rw->guard, remainingOf(ms, start));
    if (rc == QORTHREAD_ERROR && keepCountOnError)
      return rc;
    --rw->waitingReaders;
    rwUpdateSlowFlag(rw);
    if (rc != QORTHREAD_OK)
      return rc;
  }
}

} // namespace

int qorThreadRWLockCreate(QorRWLock_ *rwP, ...) {
  ScannedAttrs attrs;
  va_list ap;
  va_start(ap, rwP);
  scanAttributes(kRWLockAttrs, ap, attrs);
  va_end(ap);
  QorRWLockRec_ *rw = nullptr;
  int rc = beginCreate(rwP, attrs, rw);
  if (rc == QORTHREAD_OK) {
    rc = qor_os::mutexInit(&rw->guard, QorOsMutexPlain);
    if (rc == QORTHREAD_OK) {
      qor_os::condInit(&rw->readers);
      qor_os::condInit(&rw->writers);
    }
    if (rc != QORTHREAD_OK) {
      rc = QORTHREAD_ERROR;
      deleteRecord(rw);
      rw = nullptr;
    } else {
      rw->traceObj = attrs.traceObj();
      rw->syntax = attrs.syntax;
      rw->valid = 1;
      *rwP = rw;
    }
  }
  traceBadList(kRWLockAttrs, attrs);
  if (tracing(attrs.syntax)) {
    traceLine("%s%s( rw:%x=%x%s )", kindTag(rc), "qorThreadRWLockCreate", low32(rwP), low32(rw), attrs.words);
    if (rc == QORTHREAD_OK)
      traceLine("CREATE RWLOCK %x%s;", low32(rw), attrs.words);
  }
  return rc;
}

int qorThreadRWLockDestroy(QorRWLock_ rw) {
  if (rw == nullptr)
    return QORTHREAD_BADPARM;
  rw->valid = 0;
  qor_os::mutexDestroy(&rw->guard);
  deleteRecord(rw);
  return QORTHREAD_OK;
}

int qorThreadRWLockWriteLock(QorRWLock_ rw) {
  if (rw == nullptr)
    return QORTHREAD_BADPARM;
  if (rwFastWriteLock(rw) || rwSpinWriteLock(rw))
    return QORTHREAD_OK;
  return rwWriteLock(rw, QORTHREAD_INFINITE);
}

int qorThreadRWLockTryWriteLock(QorRWLock_ rw) {
  if (rw == nullptr)
    return QORTHREAD_BADPARM;
  return rwFastWriteLock(rw) ? QORTHREAD_OK : QORTHREAD_INUSE;
}

int qorThreadRWLockTimedWriteLock(QorRWLock_ rw, unsigned int milliseconds) {
  if (rw == nullptr)
    return QORTHREAD_BADPARM;
  if (rwFastWriteLock(rw) || (milliseconds != 0 && rwSpinWriteLock(rw)))
    return QORTHREAD_OK;
  return rwWriteLock(rw, milliseconds);
}

int qorThreadRWLockReadLock(QorRWLock_ rw) {
  if (rw == nullptr)
    return QORTHREAD_BADPARM;
  if (rwFastReadLock(rw))
    return QORTHREAD_OK;
  return rwSlowReadLock(rw, QORTHREAD_INFINITE, true);
}

int qorThreadRWLockTryReadLock(QorRWLock_ rw) {
  if (rw == nullptr)
    return QORTHREAD_BADPARM;
  // A failed fast path means a writer holds or waits: busy either way.
  return rwFastReadLock(rw) ? QORTHREAD_OK : QORTHREAD_INUSE;
}

int qorThreadRWLockTimedReadLock(QorRWLock_ rw, unsigned int milliseconds) {
  if (rw == nullptr)
    return QORTHREAD_BADPARM;
  if (rwFastReadLock(rw))
    return QORTHREAD_OK;
  return rwSlowReadLock(rw, milliseconds, false);
}

int qorThreadRWLockUnlock(QorRWLock_ rw) {
  if (rw == nullptr)
    return QORTHREAD_BADPARM;
  if (rwFastUnlock(rw))
    return QORTHREAD_OK;
  RWGuardLock guard(rw);
  unsigned int state = rw->state.load(std::memory_order_relaxed);
  if ((state & kRWLockWriter) != 0)
    rw->state.fetch_and(~kRWLockWriter, std::memory_order_release);
  else if (readersOf(state) != 0)
    rw->state.fetch_sub(kRWLockReader, std::memory_order_release);
  rwWakeWaiters(rw);
  return QORTHREAD_OK;
}

// ---- thread-local keys ---------------------------------------------------------------

int qorThreadKeyCreate(QorKey_ *keyP, QorKeyDestructor destructor) {
  if (keyP == nullptr)
    return QORTHREAD_BADPARM;
  *keyP = nullptr;
  QorKeyRec_ *key = newRecord<QorKeyRec_>();
  if (key == nullptr)
    return QORTHREAD_NOMEM;
  QorThreadRec_ *self = qor_os::currentSlotReady() ? qor_os::currentGet() : nullptr;
  key->traceObj = self != nullptr ? self->traceObj : nullptr;
  key->destructor = destructor;
  int rc = qor_os::keyCreate(&key->os, destructor);
  if (rc != QORTHREAD_OK) {
    deleteRecord(key);
    return rc;
  }
  *keyP = key;
  return QORTHREAD_OK;
}

int qorThreadKeyDestroy(QorKey_ key) {
  if (key == nullptr)
    return QORTHREAD_BADPARM;
  qor_os::keyDelete(&key->os);
  deleteRecord(key);
  return QORTHREAD_OK;
}

int qorThreadKeySetValue(QorKey_ key, void *value) {
  if (key == nullptr)
    return QORTHREAD_BADPARM;
  return qor_os::keySet(&key->os, value);
}

int qorThreadKeyGetValue(QorKey_ key, void **valueP) {
  if (key == nullptr || valueP == nullptr)
    return QORTHREAD_BADPARM;
  *valueP = qor_os::keyGet(&key->os);
  return QORTHREAD_OK;
}

// ---- message queue ---------------------------------------------------------------------

int qorThreadMsgQueueCreate(QorMsgQueue_ *queueP, void *owner, ...) {
  ScannedAttrs attrs;
  va_list ap;
  va_start(ap, owner);
  scanAttributes(kMsgQueueAttrs, ap, attrs);
  va_end(ap);
  if (queueP == nullptr)
    return QORTHREAD_BADPARM;
  *queueP = nullptr;
  traceBadList(kMsgQueueAttrs, attrs);
  if (attrs.bad)
    return QORTHREAD_BADATTRIB;
  QorMsgQueueRec_ *queue = newRecord<QorMsgQueueRec_>();
  if (queue == nullptr)
    return QORTHREAD_NOMEM;
  if (qor_os::mutexInit(&queue->lock, QorOsMutexPlain) != QORTHREAD_OK) {
    deleteRecord(queue);
    return QORTHREAD_ERROR;
  }
  qor_os::semInit(&queue->sem, 0, kInternalSemaphoreMaximum);
  queue->owner = owner;
  queue->traceObj = attrs.traceObj();
  queue->syntax = attrs.syntax;
  *queueP = queue;
  return QORTHREAD_OK;
}

int qorThreadMsgQueueDestroy(QorMsgQueue_ queue) {
  if (queue == nullptr)
    return QORTHREAD_BADPARM;
  while (QorMsgNode *node = queue->head) {
    queue->head = node->next;
    XYLUtMemory::free(node);
  }
  qor_os::mutexDestroy(&queue->lock);
  deleteRecord(queue);
  return QORTHREAD_OK;
}

int qorThreadMsgQueuePut(QorMsgQueue_ queue, int value) {
  if (queue == nullptr)
    return QORTHREAD_BADPARM;
  QorMsgNode *node = static_cast<QorMsgNode *>(XYLUtMemory::malloc(sizeof(QorMsgNode)));
  if (node == nullptr) {
    queue->error.store(QORTHREAD_NOMEM, std::memory_order_release);
    return QORTHREAD_NOMEM;
  }
  node->next = nullptr;
  node->value = value;
  qor_os::criticalEnter();
  qor_os::mutexLock(&queue->lock);
  if (queue->tail != nullptr)
    queue->tail->next = node;
  else
    queue->head = node;
  queue->tail = node;
  qor_os::mutexUnlock(&queue->lock);
  qor_os::criticalLeave();
  int rc = qor_os::semPost(&queue->sem, 1);
  if (rc != QORTHREAD_OK)
    queue->error.store(rc, std::memory_order_release);
  return rc;
}

int qorThreadMsgQueueGet(QorMsgQueue_ queue, unsigned int milliseconds, int *statusP) {
  int rc = QORTHREAD_BADPARM;
  int value = 0;
  if (queue != nullptr) {
    rc = qor_os::semWait(&queue->sem, milliseconds);
    if (rc == QORTHREAD_TIMEOUT && milliseconds == QORTHREAD_INFINITE)
      rc = QORTHREAD_ERROR;
  }
  if (rc == QORTHREAD_OK) {
    qor_os::criticalEnter();
    qor_os::mutexLock(&queue->lock);
    QorMsgNode *node = queue->head;
    queue->head = node->next;
    if (queue->head == nullptr)
      queue->tail = nullptr;
    qor_os::mutexUnlock(&queue->lock);
    qor_os::criticalLeave();
    value = node->value;
    XYLUtMemory::free(node);
  }
  if (statusP != nullptr)
    *statusP = rc;
  return value;
}

int qorThreadMsgQueueGetError(QorMsgQueue_ queue) {
  if (queue == nullptr)
    return QORTHREAD_BADPARM;
  return queue->error.load(std::memory_order_acquire);
}

void *qorThreadMsgQueueGetOwner(QorMsgQueue_ queue) { return queue != nullptr ? queue->owner : nullptr; }

// The operating system's side.
#include "QorThread/posix/qorthread_posix.inc"
