/* SPDX-License-Identifier: Apache-2.0
 * XYLThreadInit.h - the process initialiser of the thread layer.
 *
 * Contract: the constructor runs the layer's process initialisation
 * (xylThreadProcessInitialize) and records its outcome. The library holds
 * one static XYLThreadInit, so the layer is ready as soon as the library is
 * loaded; further objects only add to the layer's initialisation count
 * (nothing undoes them).
 * Throws: the constructor, when the layer answers a non-zero code, throws
 * XYLThreadResourceError -1 "Unable to initialize XYLThread.
 * xylThreadProcessInitialize returned error code (<code>)". For the
 * library's static object that happens while the library is loaded and ends
 * the process.
 * Thread safety: the getters are plain reads of values fixed by the
 * constructor.
 */
#ifndef XYLCORE_THREADS_XYLTHREADINIT_H
#define XYLCORE_THREADS_XYLTHREADINIT_H

#include <XYLCore/XYLExport.h>

class XYL_API XYLThreadInit {
public:
  XYLThreadInit();
  virtual ~XYLThreadInit();

  // 1 when the layer was initialised, 0 when it failed.
  virtual int getSuccess() const { return m_iSuccess; }
  // The layer's status code (0 on success).
  virtual long getErrorCode() const { return m_lErrorCode; }

private:
  XYLThreadInit(const XYLThreadInit &) = delete;
  XYLThreadInit &operator=(const XYLThreadInit &) = delete;

  int m_iSuccess;
  long m_lErrorCode;
};

#endif // XYLCORE_THREADS_XYLTHREADINIT_H
