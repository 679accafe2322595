// SPDX-License-Identifier: Apache-2.0
#include "XYLFaultInjection.h"

// Allocation-failure tests ask for impossible sizes on purpose; under
// AddressSanitizer such a request must fail like malloc does instead of
// ending the run.
extern "C" const char *__asan_default_options() { return "allocator_may_return_null=1"; }
