/* SPDX-License-Identifier: Apache-2.0
 * xylcore.h - the library's plain C entry points: counted start and stop,
 * API version and compatibility, the out-of-memory hook, batch mode, and
 * byte order.
 *
 * All functions are exported under these plain names with C linkage.
 * Thread safety: the version, compatibility and byte-order functions are pure;
 * xylSetNewHandler stores its pointer without a lock (last writer wins);
 * xylSetBatchMode may be called from any thread.
 */
#ifndef XYLCORE_CORE_XYLCORE_H
#define XYLCORE_CORE_XYLCORE_H

#include <XYLCore/XYLExport.h>

XYL_EXTERN_C_BEGIN

/* The client's out-of-memory hook: no arguments, no result. */
typedef void (*XYLNewHandler)(void);

/* Counted start of the library. The first call (count 0 -> 1) brings up, in
 * this order, the thread layer for "XYLThreads", the thread classes (the key
 * mapping threads to XYLThread objects) and the custodian; later calls only
 * count. The version string is accepted and ignored. Returns 0, or -3 when
 * the thread classes or the custodian failed to start: start-up still goes
 * on, and the failed call still counts (it must be matched by a terminate;
 * initialising again does not retry). Nothing is thrown. Serialised with
 * xylCoreTerminate by one process-wide lock; callable from any thread. */
XYL_API int xylCoreInitialize(const char *version);

/* Counted stop. Returns -2, doing nothing, when the count is already 0; 0
 * while the count stays above 0; when it reaches 0 the custodian is stopped,
 * then the thread layer and the thread classes, and the result is 0, or -3
 * when the thread classes failed to stop. The library can be initialised
 * again afterwards. Must not be called from a thread the custodian runs. */
XYL_API int xylCoreTerminate(const char *version);

/* xylCoreInitialize("XYL 1.0") and xylCoreTerminate("XYL 1.0"). */
XYL_API int xylInitialize(void);
XYL_API int xylTerminate(void);

/* Stores 1 and 0 (major, minor) and returns 0. */
XYL_API int xylCoreGetApiVersion(int *major, int *minor);
XYL_API int xylGetApiVersion(int *major, int *minor);

/* 0 when a client built for (major, minor) can use this library: major 1 and
 * minor 0 or less; -1 otherwise (a later minor revision is refused too). */
XYL_API int xylCoreIsCompatibleWith(int major, int minor);
XYL_API int xylIsCompatibleWith(int major, int minor);

/* Installs `handler` as the hook called once per failed C++ allocation
 * (operator new); the allocation then fails as it would without a hook
 * (std::bad_alloc, or null from the nothrow forms). Null removes the hook.
 * Returns the previously installed hook. */
XYL_API XYLNewHandler xylSetNewHandler(XYLNewHandler handler);

/* Lowers every thread of the process, and so every thread it starts later,
 * to the lowest scheduling priority an unprivileged process can take. There
 * is no way back. Returns nonzero on success, 0 on failure. */
XYL_API int xylSetBatchMode(void);

/* Not implemented: prints "xylErrorGetText not yet implemented\n" to
 * standard output and returns null, whatever the arguments. */
XYL_API const char *xylErrorGetText(int code, ...);

/* Host to network byte order and back: the host is little-endian, so these
 * always reverse the bytes, and each function is its own inverse. */
XYL_API unsigned int xylh2nl(unsigned int value);
XYL_API unsigned int xyln2hl(unsigned int value);
XYL_API unsigned short xylh2ns(unsigned short value);
XYL_API unsigned short xyln2hs(unsigned short value);

XYL_EXTERN_C_END

#endif /* XYLCORE_CORE_XYLCORE_H */
