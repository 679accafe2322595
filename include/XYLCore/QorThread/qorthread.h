/* SPDX-License-Identifier: Apache-2.0
 * qorthread.h - the portable thread layer: plain C functions over threads,
 * mutexes, semaphores, condition variables, events, read/write locks,
 * thread-local keys and a counted message queue.
 *
 * Contract
 *   Every function returns an int status code (QORTHREAD_...) unless stated:
 *   0 is success, negative is failure, QORTHREAD_INUSE (1) is the busy
 *   answer of the try operations. Nothing is thrown; the thread classes turn
 *   codes into exceptions. Handles are opaque pointers to heap records;
 *   create functions return them through an out-pointer that is set to null
 *   on any failure, and a failed create leaves nothing behind. Checks run in
 *   this order: null handle or out-pointer (QORTHREAD_BADPARM), attribute
 *   list (QORTHREAD_BADATTRIB), allocation (QORTHREAD_NOMEM). Destroying a
 *   null handle does nothing and answers QORTHREAD_BADPARM.
 *
 *   Every create function takes, after its fixed arguments, a list of int
 *   attribute tags ended by the tag 0 (the kind's ...AttrEnd). Some tags are
 *   followed by one value (see each enumeration). The whole list is always
 *   read to its end; a tag not listed for the kind makes the create fail
 *   with QORTHREAD_BADATTRIB after the scan. ...AttrNoop is accepted and
 *   ignored everywhere; ...AttrDisableSyntax turns the object's trace
 *   statements off. Pointer-sized values (trace objects, the cancel flag)
 *   must be passed as pointers, e.g. (void *)&flag; the stack size is an int.
 *
 *   Time-outs are unsigned 32-bit milliseconds; QORTHREAD_INFINITE (all bits
 *   set) waits without limit. Timed waits measure on a monotonic clock.
 *
 * Initialisation
 *   xylThreadProcessInitialize must have succeeded before any other call;
 *   the library's static initialiser and xylCoreInitialize do so. Calls are
 *   counted; xylThreadProcessTerminate undoes the last one.
 *
 * Ownership
 *   A joinable thread's record outlives the thread: qorThreadJoin may be
 *   called any number of times, and qorThreadRelease frees the record (it
 *   joins first). A detached thread frees its record when it ends; its handle
 *   must not be used after that. State traps are freed with the thread's
 *   end; destroy a trap only while its thread has not ended. The record of a
 *   thread not started by this layer (made by qorThreadSelf or by locking an
 *   auto-unlock mutex) lives until that thread ends.
 *
 * Thread safety
 *   All functions may be called from any thread. Condition variables expect
 *   the caller to hold the external mutex around wait, signal and broadcast.
 *   State traps run on the thread that changes the state, under that
 *   thread record's lock: a trap must not wait for another thread that
 *   creates or destroys traps of the same thread.
 *
 * Hazards
 *   qorThreadSuspend stops the target wherever it is. A thread suspended
 *   while it holds a lock (an allocator or stdio lock, or any mutex) blocks
 *   every other thread that needs that lock until it is continued. The
 *   suspend and continue operations use two real-time signals (see
 *   QORTHREAD_SUSPEND_SIGNAL_OFFSET); the process must leave them alone.
 */
#ifndef XYLCORE_QORTHREAD_QORTHREAD_H
#define XYLCORE_QORTHREAD_QORTHREAD_H

#include <XYLCore/XYLExport.h>

XYL_EXTERN_C_BEGIN

/* ---- status codes ---------------------------------------------------- */

/* A try-lock or try-wait found the object taken. */
#define QORTHREAD_INUSE 1
/* Success. */
#define QORTHREAD_OK 0
/* Any operating-system failure; an infinite wait that reported a time-out. */
#define QORTHREAD_ERROR (-1)
/* A record could not be allocated. */
#define QORTHREAD_NOMEM (-2)
/* No thread-local key left. */
#define QORTHREAD_LIMIT (-3)
/* Deadlock detected (a thread joining itself). */
#define QORTHREAD_DEADLOCK (-4)
/* A timed wait expired. */
#define QORTHREAD_TIMEOUT (-5)
/* The operation is not possible on this kind of object (try-lock or timed
 * lock of a critical-section mutex). */
#define QORTHREAD_NOT_SUPPORTED (-6)
/* No message set. */
#define QORTHREAD_NOMSGSET (-7)
/* A required out-pointer or handle is null. */
#define QORTHREAD_BADPARM (-8)
/* An unknown tag in an attribute list. */
#define QORTHREAD_BADATTRIB (-9)

/* Wait without limit. */
#define QORTHREAD_INFINITE 0xFFFFFFFFu

/* The exit code of a thread that has not ended yet. */
#define QORTHREAD_STILL_ACTIVE 259

/* The exit status of a thread whose routine ended by an exception; its
 * demise is then QorThreadDemiseException. */
#define QORTHREAD_EXIT_EXCEPTION (-1)

/* Suspend uses the real-time signal SIGRTMIN + this offset, continue the one
 * after it. */
#define QORTHREAD_SUSPEND_SIGNAL_OFFSET 6

/* ---- thread states and demise kinds ---------------------------------- */

typedef enum QorThreadState {
  QorThreadStateInitial = 0,
  QorThreadStateRunning = 1,
  QorThreadStateSuspended = 2,
  QorThreadStateCanceling = 3,
  QorThreadStateException = 4,
  QorThreadStateLast = 5 /* count of states; not a state */
} QorThreadState;

typedef enum QorThreadDemise {
  QorThreadDemisePeaceful = 0,
  QorThreadDemiseCanceled = 1,
  QorThreadDemiseException = 2,
  QorThreadDemiseNotDead = 3
} QorThreadDemise;

/* ---- attribute tags -------------------------------------------------- */

typedef enum QorThreadAttr {
  QorThreadAttrEnd = 0,
  QorThreadAttrNoop = 1,
  QorThreadAttrDisableSyntax = 2,
  QorThreadAttrTraceObj = 3, /* + void* trace object */
  QorThreadAttrTraceObjInheritable = 4,
  QorThreadAttrCancelFlag = 5, /* + int* cancel flag (non-zero asks to stop) */
  QorThreadAttrCancelFlagInheritable = 6,
  QorThreadAttrSuspended = 7,
  QorThreadAttrDetached = 8,
  QorThreadAttrStackSize = 9 /* + int stack size in bytes, 0 = default */
} QorThreadAttr;

typedef enum QorThreadStateTrapAttr {
  QorThreadStateTrapAttrEnd = 0,
  QorThreadStateTrapAttrNoop = 1,
  QorThreadStateTrapAttrDisableSyntax = 2,
  QorThreadStateTrapAttrTraceObj = 3 /* + void* */
} QorThreadStateTrapAttr;

typedef enum QorMutexAttr {
  QorMutexAttrEnd = 0,
  QorMutexAttrNoop = 1,
  QorMutexAttrDisableSyntax = 2,
  QorMutexAttrTraceObj = 3,  /* + void* */
  QorMutexAttrRecursive = 4, /* accepted; both kinds are recursive anyway */
  QorMutexAttrAutoUnlock = 5,
  QorMutexAttrCriticalSection = 6
} QorMutexAttr;

typedef enum QorSemaphoreAttr {
  QorSemaphoreAttrEnd = 0,
  QorSemaphoreAttrNoop = 1,
  QorSemaphoreAttrDisableSyntax = 2,
  QorSemaphoreAttrTraceObj = 3 /* + void* */
} QorSemaphoreAttr;

typedef enum QorConditionAttr {
  QorConditionAttrEnd = 0,
  QorConditionAttrNoop = 1,
  QorConditionAttrDisableSyntax = 2,
  QorConditionAttrTraceObj = 3 /* + void* */
} QorConditionAttr;

typedef enum QorEventAttr {
  QorEventAttrEnd = 0,
  QorEventAttrNoop = 1,
  QorEventAttrDisableSyntax = 2,
  QorEventAttrTraceObj = 3 /* + void* */
} QorEventAttr;

typedef enum QorRWLockAttr {
  QorRWLockAttrEnd = 0,
  QorRWLockAttrNoop = 1,
  QorRWLockAttrDisableSyntax = 2,
  QorRWLockAttrTraceObj = 3 /* + void* */
} QorRWLockAttr;

/* The message queue takes the semaphore's tags (QorSemaphoreAttr...). */

/* ---- handles and callbacks ------------------------------------------- */

typedef struct QorThreadRec_ *QorThread_;
typedef struct QorThreadStateTrapRec_ *QorThreadStateTrap_;
typedef struct QorMutexRec_ *QorMutex_;
typedef struct QorSemaphoreRec_ *QorSemaphore_;
typedef struct QorConditionRec_ *QorCondition_;
typedef struct QorEventRec_ *QorEvent_;
typedef struct QorRWLockRec_ *QorRWLock_;
typedef struct QorKeyRec_ *QorKey_;
typedef struct QorMsgQueueRec_ *QorMsgQueue_;

/* A thread's routine; its result, cut to 32 bits, is the exit status. */
typedef void *(*QorThreadRoutine)(void *arg);

/* Called with (trap argument, thread, new state) when the thread enters the
 * state the trap was registered for. */
typedef void (*QorThreadStateTrapRoutine)(void *arg, QorThread_ thread, QorThreadState state);

/* Called at a thread's end with its non-null value of a key. */
typedef void (*QorKeyDestructor)(void *value);

/* Receives each composed trace statement (see qorThreadSetTraceSink). */
typedef void (*QorThreadTraceSink)(const char *line, void *ctx);

/* ---- process ----------------------------------------------------------- */

/* Sets the layer up for the process: the current-thread key, the global
 * lock, the suspend and continue signal handlers. `name` names the caller
 * ("XYLThreads"); it may be null. Counted; safe to call repeatedly. */
XYL_API int xylThreadProcessInitialize(const char *name);

/* Undoes one xylThreadProcessInitialize; the last one frees the key. */
XYL_API int xylThreadProcessTerminate(const char *name);

/* The name of a status code ("QORTHREAD_OK", ...); any code outside -9..1
 * gives "<invalid QorThread Error Code!>". Never null. */
XYL_API const char *qorThreadErrorName(int code);

/* Installs the receiver of trace statements (null removes it). Statements
 * are composed only while a sink is installed; each line starts with the
 * calling thread's identity "%8x(%8x,%8x)" (record, handle, id) and a blank.
 * Pointers print as their low 32 bits. The sink may be called from any
 * thread, also while layer locks are held: it must not call this layer. */
XYL_API void qorThreadSetTraceSink(QorThreadTraceSink sink, void *ctx);

/* ---- threads ----------------------------------------------------------- */

/* Starts a thread running routine(arg). threadP may be null only with
 * QorThreadAttrDetached (else QORTHREAD_BADPARM). With QorThreadAttrSuspended
 * the thread waits before its routine until qorThreadContinue. The new
 * thread inherits the caller's trace object and cancel flag when they are
 * marked inheritable and the list gives none. */
XYL_API int qorThreadCreate(QorThreadRoutine routine, void *arg, QorThread_ *threadP, ...);

/* Waits without limit for the thread's end and stores its exit status in
 * *statusP (statusP may be null). Joining oneself is QORTHREAD_DEADLOCK;
 * a thread not started by this layer, or a detached one, QORTHREAD_ERROR. */
XYL_API int qorThreadJoin(QorThread_ thread, int *statusP);

/* Frees a joinable thread's record: a thread still running or suspended is
 * continued and joined first. A thread not started by this layer answers
 * QORTHREAD_ERROR and keeps its record. */
XYL_API int qorThreadRelease(QorThread_ thread);

/* Suspends the thread (counted: each suspend needs one continue). Returns
 * when the thread has stopped, or at once for a thread not yet started or
 * suspending itself. A thread that has ended answers QORTHREAD_ERROR. */
XYL_API int qorThreadSuspend(QorThread_ thread);

/* Takes back one suspension; the last one lets the thread go on (or start,
 * after a suspended start). Continuing a thread that is not suspended
 * succeeds and does nothing. */
XYL_API int qorThreadContinue(QorThread_ thread);

/* Thread priority in the levels -15 (idle), -2, -1, 0 (normal), 1, 2,
 * 15 (time critical); other values answer QORTHREAD_ERROR, as does a raise
 * above the process's allowance. Get reports the nearest level. */
XYL_API int qorThreadGetPriority(QorThread_ thread, int *priorityP);
XYL_API int qorThreadSetPriority(QorThread_ thread, int priority);

/* The calling thread's record; a thread not started by this layer gets one
 * on first use. QORTHREAD_BADPARM when the layer is not initialised. */
XYL_API int qorThreadSelf(QorThread_ *threadP);

/* Current state, demise, exit code (QORTHREAD_STILL_ACTIVE while the thread
 * runs) and operating-system thread id of a thread. */
XYL_API int qorThreadGetState(QorThread_ thread, QorThreadState *stateP);
XYL_API int qorThreadGetDemise(QorThread_ thread, QorThreadDemise *demiseP);
XYL_API int qorThreadGetExitCode(QorThread_ thread, int *exitCodeP);
XYL_API int qorThreadGetId(QorThread_ thread, unsigned long *idP);

/* The calling thread's operating-system id. */
XYL_API unsigned long qorThreadCurrentId(void);

/* Gives up the processor; sleeps the given milliseconds. */
XYL_API void qorThreadYield(void);
XYL_API void qorThreadSleep(unsigned int milliseconds);

/* Cancellation test. For the calling thread (thread null or its own record):
 * when a cancel was requested or its cancel flag points to a non-zero int,
 * the state becomes QorThreadStateCanceling; then the processor is yielded.
 * For another thread: a thread that has ended but is still marked Running
 * goes to Initial. *stateP (may be null) receives the state. */
XYL_API int qorThreadTestCancel(QorThread_ thread, QorThreadState *stateP);

/* Sets the thread's cancel-request field; the thread sees it at its next
 * cancellation test (and a thread not yet started does not run its
 * routine). */
XYL_API int qorThreadRequestCancel(QorThread_ thread);

/* ---- state traps ----------------------------------------------------- */

/* Registers routine(arg, thread, state) for the thread's entries into
 * `state`. Traps of one state run in the order they were created. */
XYL_API int qorThreadStateTrapCreate(QorThread_ thread, QorThreadState state, QorThreadStateTrapRoutine routine,
                                     void *arg, QorThreadStateTrap_ *trapP, ...);
XYL_API int qorThreadStateTrapDestroy(QorThreadStateTrap_ trap);

/* ---- mutexes ----------------------------------------------------------- */

/* Two kinds, both recursive for their owner: the default kind is a
 * process-local mutex that counts as acquired when its owner ended while
 * holding it (abandoned); QorMutexAttrCriticalSection makes a lighter kind
 * without try-lock or timed lock. QorMutexAttrAutoUnlock mutexes are
 * registered with the thread that holds them and released when it ends. */
XYL_API int qorThreadMutexCreate(QorMutex_ *mP, ...);
XYL_API int qorThreadMutexDestroy(QorMutex_ m);

/* Lock, try-lock (QORTHREAD_INUSE when taken by another thread,
 * QORTHREAD_NOT_SUPPORTED for a critical section) and timed lock
 * (QORTHREAD_TIMEOUT). `file` and `line` describe the caller; an
 * auto-unlock mutex records them when its owner first takes it. */
XYL_API int qorThreadMutexLock(QorMutex_ m, const char *file, int line);
XYL_API int qorThreadMutexTryLock(QorMutex_ m, const char *file, int line);
XYL_API int qorThreadMutexTimedLock(QorMutex_ m, unsigned int milliseconds, const char *file, int line);

/* Releases one level of the owner's hold; QORTHREAD_ERROR for a thread that
 * does not hold it. */
XYL_API int qorThreadMutexUnlock(QorMutex_ m);

/* For an auto-unlock mutex: its current owner (null when free) and the
 * caller values recorded when the owner took it. Any pointer may be null. */
XYL_API int qorThreadMutexGetLockSite(QorMutex_ m, QorThread_ *ownerP, const char **fileP, int *lineP);

/* ---- semaphores -------------------------------------------------------- */

/* A counting semaphore, count at most 0x7FFFFFFF. */
XYL_API int qorThreadSemaphoreCreate(QorSemaphore_ *sP, unsigned int initialCount, ...);
XYL_API int qorThreadSemaphoreDestroy(QorSemaphore_ s);
XYL_API int qorThreadSemaphoreWait(QorSemaphore_ s);
/* QORTHREAD_INUSE when the count is 0. */
XYL_API int qorThreadSemaphoreTryWait(QorSemaphore_ s);
XYL_API int qorThreadSemaphoreTimedWait(QorSemaphore_ s, unsigned int milliseconds);
/* Adds 1 to the count; QORTHREAD_ERROR past the maximum. */
XYL_API int qorThreadSemaphorePost(QorSemaphore_ s);

/* ---- condition variables ---------------------------------------------- */

/* The caller holds the external mutex around every call. A signal with no
 * waiter is lost; a broadcast wakes every current waiter and returns when
 * the last of them has woken. Waiters may wake spuriously. */
XYL_API int qorThreadConditionCreate(QorCondition_ *cvP, ...);
XYL_API int qorThreadConditionDestroy(QorCondition_ cv);
XYL_API int qorThreadConditionWait(QorCondition_ cv, QorMutex_ m);
/* QORTHREAD_TIMEOUT on expiry, with m held again. */
XYL_API int qorThreadConditionTimedWait(QorCondition_ cv, QorMutex_ m, unsigned int milliseconds);
/* The same with a critical-section mutex. */
XYL_API int qorThreadConditionWaitCS(QorCondition_ cv, QorMutex_ cs);
XYL_API int qorThreadConditionTimedWaitCS(QorCondition_ cv, QorMutex_ cs, unsigned int milliseconds);
XYL_API int qorThreadConditionSignal(QorCondition_ cv);
XYL_API int qorThreadConditionBroadcast(QorCondition_ cv);

/* ---- events ------------------------------------------------------------ */

/* A manual-reset event stays set until reset and releases every waiter; an
 * auto-reset event releases one waiter and resets itself. */
XYL_API int qorThreadEventCreate(QorEvent_ *eventP, int manualReset, int setSignaled, ...);
XYL_API int qorThreadEventDestroy(QorEvent_ event);
XYL_API int qorThreadEventWait(QorEvent_ event);
XYL_API int qorThreadEventTimedWait(QorEvent_ event, unsigned int milliseconds);
XYL_API int qorThreadEventSet(QorEvent_ event);
XYL_API int qorThreadEventReset(QorEvent_ event);

/* ---- read/write locks ------------------------------------------------- */

/* Many readers or one writer; writers are preferred: a reader also waits
 * while any writer waits. Not recursive: a holder that locks again waits
 * for itself. Unlock releases the caller's read or write hold. */
XYL_API int qorThreadRWLockCreate(QorRWLock_ *rwP, ...);
XYL_API int qorThreadRWLockDestroy(QorRWLock_ rw);
XYL_API int qorThreadRWLockWriteLock(QorRWLock_ rw);
XYL_API int qorThreadRWLockTryWriteLock(QorRWLock_ rw);
XYL_API int qorThreadRWLockTimedWriteLock(QorRWLock_ rw, unsigned int milliseconds);
XYL_API int qorThreadRWLockReadLock(QorRWLock_ rw);
XYL_API int qorThreadRWLockTryReadLock(QorRWLock_ rw);
XYL_API int qorThreadRWLockTimedReadLock(QorRWLock_ rw, unsigned int milliseconds);
XYL_API int qorThreadRWLockUnlock(QorRWLock_ rw);

/* ---- thread-local keys ------------------------------------------------ */

/* QORTHREAD_LIMIT when no key is left. The destructor (may be null) runs at
 * the end of every thread whose value is non-null. */
XYL_API int qorThreadKeyCreate(QorKey_ *keyP, QorKeyDestructor destructor);
XYL_API int qorThreadKeyDestroy(QorKey_ key);
/* QORTHREAD_NOMEM when the value slot cannot be allocated. */
XYL_API int qorThreadKeySetValue(QorKey_ key, void *value);
XYL_API int qorThreadKeyGetValue(QorKey_ key, void **valueP);

/* ---- message queue ---------------------------------------------------- */

/* A first-in first-out queue of int values counted by a semaphore. Takes
 * QorSemaphoreAttr... tags. */
XYL_API int qorThreadMsgQueueCreate(QorMsgQueue_ *queueP, void *owner, ...);
XYL_API int qorThreadMsgQueueDestroy(QorMsgQueue_ queue);
/* Appends a value. A failure is also kept in the queue's sticky error. */
XYL_API int qorThreadMsgQueuePut(QorMsgQueue_ queue, int value);
/* Waits up to `milliseconds` for a value and returns it (0 on failure);
 * the status (QORTHREAD_TIMEOUT on expiry) goes to *statusP when given. */
XYL_API int qorThreadMsgQueueGet(QorMsgQueue_ queue, unsigned int milliseconds, int *statusP);
/* The sticky error (QORTHREAD_OK until a put failed) and the owner value. */
XYL_API int qorThreadMsgQueueGetError(QorMsgQueue_ queue);
XYL_API void *qorThreadMsgQueueGetOwner(QorMsgQueue_ queue);

XYL_EXTERN_C_END

#endif /* XYLCORE_QORTHREAD_QORTHREAD_H */
