/* SPDX-License-Identifier: Apache-2.0 */
// qorthread_internal.h - private to the thread layer: the records behind the
// opaque handles of qorthread.h and the short list of functions that every
// operating-system backend defines (posix/qorthread_posix.inc on Linux).
//
// The records hold the backend's objects as opaque, suitably aligned storage,
// so that this header needs no operating-system header; each backend checks
// with static_assert that its objects fit.
#ifndef XYLCORE_SRC_QORTHREAD_QORTHREAD_INTERNAL_H
#define XYLCORE_SRC_QORTHREAD_QORTHREAD_INTERNAL_H

#include <XYLCore/QorThread/qorthread.h>

#include <atomic>
#include <cstdint>

// ---- backend objects (opaque storage) --------------------------------------

// A mutex of one of the kinds below.
struct QorOsMutex {
  alignas(8) unsigned char opaque[16];
};

enum QorOsMutexKind {
  QorOsMutexPlain = 0,          // not recursive; internal short sections
  QorOsMutexRecursive = 1,      // recursive for its owner (critical-section kind)
  QorOsMutexRobustRecursive = 2 // recursive, and acquired when its owner died holding it
};

// A condition variable: a signal releases one thread that was already
// waiting when it was given, a broadcast every such thread.
struct QorOsCondition {
  alignas(8) unsigned char opaque[24];
};

// A counting semaphore with a maximum count.
struct QorOsSemaphore {
  alignas(8) unsigned char opaque[16];
};

// A manual- or auto-reset event.
struct QorOsEvent {
  alignas(8) unsigned char opaque[32];
};

// The operating-system side of a thread (handle, start gate, park word).
struct QorOsThread {
  alignas(8) unsigned char opaque[32];
};

// A thread-local key.
struct QorOsKey {
  alignas(8) unsigned char opaque[8];
};

// ---- records ---------------------------------------------------------------

struct QorMutexRec_;

// The (routine, argument) pair a thread runs; a block owned by its record.
struct QorThreadStartPair {
  QorThreadRoutine routine;
  void *arg;
};

struct QorThreadStateTrapRec_ {
  QorThreadStateTrapRec_ *next; // next trap of the same state, in creation order
  QorThreadRec_ *thread;
  QorThreadState state;
  QorThreadStateTrapRoutine routine;
  void *arg;
  void *traceObj;
  int syntax;
  int dead; // destroyed while its list was being walked; freed after the walk
};

struct QorThreadRec_ {
  unsigned long id; // operating-system thread id
  QorOsThread handle;
  std::atomic<int> state;  // QorThreadState
  std::atomic<int> demise; // QorThreadDemise
  QorThreadStartPair *start;
  void *traceObj;
  int traceObjInheritable;
  int *cancelFlag;
  int cancelFlagInheritable;
  int detached;
  int syntax;
  std::atomic<int> exitStatus;
  QorThreadStateTrapRec_ *traps[QorThreadStateLast];
  QorMutexRec_ *heldAutoUnlock; // head of the auto-unlock mutexes this thread holds

  // Bookkeeping beyond the fields above.
  QorOsMutex recordLock;          // recursive: state changes, traps, suspend count
  QorOsMutex joinLock;            // serialises joiners of this thread
  std::atomic<int> suspendCount;  // read by the backend's park loop
  std::atomic<int> ended;         // the thread has run its end
  std::atomic<int> cancelRequest; // set by qorThreadRequestCancel
  int started;                    // false while a suspended start is held at the gate
  int adopted;                    // made for a thread this layer did not start
  int osJoined;                   // the operating system's join was done
  int trapWalkDepth;              // > 0 while traps are being called
};

struct QorMutexRec_ {
  QorOsMutex os;
  int valid;
  int syntax;
  int autoUnlock;
  int criticalSection;
  int registered; // linked into its owner's held list
  void *traceObj;
  // Auto-unlock bookkeeping, guarded by the layer's global lock.
  QorThreadRec_ *owner;
  const char *file;
  int line;
  int depth; // the owner's recursion depth
  QorMutexRec_ *prev;
  QorMutexRec_ *next;
};

struct QorSemaphoreRec_ {
  QorOsSemaphore os;
  void *traceObj;
  int valid;
  int syntax;
};

// Waiters queue in arrival order inside the backend's condition; a signal
// can only release a thread that was already waiting, so a thread that
// signals and then waits never takes its own signal.
struct QorConditionRec_ {
  QorOsCondition os;
  void *traceObj;
  int valid;
  int syntax;
};

struct QorEventRec_ {
  QorOsEvent os;
  void *traceObj;
  int valid;
  int syntax;
};

// Readers and writers take and give back an uncontended lock with one
// compare-and-swap on `state`; everything else goes through `guard`.
// `state` holds kRWLockWriter while a writer holds the lock, the number of
// readers in units of kRWLockReader, and kRWLockSlow while any thread waits
// (so that no reader enters by the fast path while a writer waits: writers
// are preferred; and so that the unlock that must wake somebody takes the
// guarded path). The waiting counts and the slow flag change only under
// `guard`.
constexpr unsigned int kRWLockWriter = 1u;
constexpr unsigned int kRWLockSlow = 2u;
constexpr unsigned int kRWLockReader = 4u;

struct QorRWLockRec_ {
  QorOsMutex guard;
  std::atomic<unsigned int> state;
  QorOsCondition readers;
  int waitingReaders;
  QorOsCondition writers;
  int waitingWriters;
  void *traceObj;
  int valid;
  int syntax;
};

struct QorKeyRec_ {
  QorOsKey os;
  QorKeyDestructor destructor;
  void *traceObj;
};

struct QorMsgNode {
  QorMsgNode *next;
  int value;
};

struct QorMsgQueueRec_ {
  QorOsMutex lock;
  QorMsgNode *head;
  QorMsgNode *tail;
  QorOsSemaphore sem; // initial 0, maximum 0x7FFFFFF
  std::atomic<int> error;
  void *owner;
  void *traceObj;
  int syntax;
};

// ---- the exception guard hook ---------------------------------------------

// Runs routine(arg) for a thread's entry routine, storing its result in
// *resultP; answers non-zero when the routine ended by an exception or a
// fault that the guard caught. The fault handler installs its own guard;
// without one the entry routine calls the routine directly. Any C++
// exception that escapes the guard is caught by the entry routine as well.
typedef int (*QorThreadExceptionGuard)(QorThreadRoutine routine, void *arg, void **resultP);
void qorThreadSetExceptionGuard(QorThreadExceptionGuard guard);

// ---- the backend's function list -------------------------------------------
//
// Status results use the QORTHREAD_ codes. Time-outs are milliseconds with
// QORTHREAD_INFINITE for no limit and 0 for a poll.
namespace qor_os {

int processInitialize(); // current-thread key, signal handlers
void processTerminate();

// The layer's global lock (recursive) and the current-thread slot.
void globalLock();
void globalUnlock();
bool currentSlotReady();
QorThreadRec_ *currentGet();
int currentSet(QorThreadRec_ *rec);

// Sections during which the calling thread must not be parked by a suspend
// (it holds a lock that continue needs); nested.
void criticalEnter();
void criticalLeave();

int mutexInit(QorOsMutex *m, QorOsMutexKind kind);
void mutexDestroy(QorOsMutex *m);
int mutexLock(QorOsMutex *m);                       // QORTHREAD_OK also when abandoned
int mutexTryLock(QorOsMutex *m);                    // QORTHREAD_OK or QORTHREAD_INUSE
int mutexTimedLock(QorOsMutex *m, unsigned int ms); // QORTHREAD_TIMEOUT
int mutexUnlock(QorOsMutex *m);
// Releases the caller's hold so that the mutex can be destroyed (every level
// for the robust kind, which must not be freed while on its owner's robust
// list); QORTHREAD_INUSE when another thread holds it.
int mutexReleaseForDestroy(QorOsMutex *m);

void semInit(QorOsSemaphore *s, unsigned int initial, unsigned int maximum);
int semWait(QorOsSemaphore *s, unsigned int ms); // QORTHREAD_TIMEOUT on expiry or an empty poll
int semPost(QorOsSemaphore *s, unsigned int n);  // QORTHREAD_ERROR past the maximum

// Condition variables wait with either mutex kind; `m` is held by the caller
// (one level is released for the wait and taken again after it).
void condInit(QorOsCondition *c);
int condWait(QorOsCondition *c, QorOsMutex *m, unsigned int ms); // QORTHREAD_TIMEOUT on expiry
void condSignal(QorOsCondition *c);
void condBroadcast(QorOsCondition *c);

// A set of an auto-reset event with waiters releases exactly one of them;
// without waiters it leaves the event signalled.
void eventInit(QorOsEvent *e, int manualReset, int signaled);
int eventWait(QorOsEvent *e, unsigned int ms);
void eventSet(QorOsEvent *e);
void eventReset(QorOsEvent *e);

// Starts the thread and gives its id; the new thread publishes the id, waits at the start
// gate when a suspended start was asked, then calls qorThreadEntryRoutine.
int threadStart(QorThreadRec_ *rec, unsigned int stackSize, int suspended, unsigned long *idP);
void threadAdoptCurrent(QorThreadRec_ *rec);
void threadForgetCurrent();
bool threadIsCurrent(const QorThreadRec_ *rec);
int threadJoin(QorThreadRec_ *rec);
void threadOpenGate(QorThreadRec_ *rec);
int threadPark(QorThreadRec_ *rec); // stops the thread until its suspend count is 0
void threadUnpark(QorThreadRec_ *rec);
void threadWakeParkWaiters(QorThreadRec_ *rec);
int threadGetPriority(const QorThreadRec_ *rec, int *priorityP);
int threadSetPriority(const QorThreadRec_ *rec, int priority);
unsigned long currentId();
void cpuRelax(); // a hint to the processor inside a short wait loop
unsigned long long monotonicMs();
unsigned int currentHandle32();
void yield();
void sleepMs(unsigned int ms);

int keyCreate(QorOsKey *k, QorKeyDestructor destructor); // QORTHREAD_LIMIT when none is left
void keyDelete(QorOsKey *k);
int keySet(QorOsKey *k, void *value);
void *keyGet(QorOsKey *k);

} // namespace qor_os

// Called by the backend on the new thread after the start gate.
void qorThreadEntryRoutine(QorThreadRec_ *rec);

// Called by the backend when a thread that this layer did not start ends
// with a record (its current-thread slot's destructor).
void qorThreadAdoptedEnd(QorThreadRec_ *rec);

#endif // XYLCORE_SRC_QORTHREAD_QORTHREAD_INTERNAL_H
