/* SPDX-License-Identifier: Apache-2.0 */
// Set-up shared by the internationalisation benchmarks: including this
// header initialises the layer for the whole run, as in a server (prototypes
// and pools exist). One extra thread is started first: glibc skips atomics
// in single-threaded processes, which would flatter the locks.
#ifndef XYLCORE_BENCH_I18N_I18NBENCHSUPPORT_H
#define XYLCORE_BENCH_I18N_I18NBENCHSUPPORT_H

#include <XYLCore/i18n/cpp/i18n_init.h>

#include <thread>

namespace i18nbench {

struct Setup {
  Setup() {
    std::thread([] {}).join();
    I18NInitialize();
  }
};

inline const Setup gSetup;

} // namespace i18nbench

#endif
