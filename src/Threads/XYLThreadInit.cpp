// SPDX-License-Identifier: Apache-2.0
#include <XYLCore/Threads/XYLThreadInit.h>

#include "XYLThreadStatus_internal.h"

#include <cstdio>

XYLThreadInit::XYLThreadInit() : m_iSuccess(1), m_lErrorCode(0) {
  int status = xylThreadProcessInitialize("XYLThreads");
  if (status != QORTHREAD_OK) {
    m_iSuccess = 0;
    m_lErrorCode = status;
    char text[128];
    std::snprintf(text, sizeof text,
                  "Unable to initialize XYLThread. xylThreadProcessInitialize returned error code (%d)", status);
    XYL_THROW(XYLThreadResourceError(XYLThreadErrorGeneric, text));
  }
}

XYLThreadInit::~XYLThreadInit() = default;

namespace {
// Readies the thread layer as the library is loaded, before any client code
// can make a thread object.
XYLThreadInit g_threadLayerInit;
} // namespace
