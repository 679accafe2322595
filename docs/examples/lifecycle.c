/* SPDX-License-Identifier: Apache-2.0 */
/* Start and stop the library from C; query its version and byte order. */
#include <XYLCore/Core/xylcore.h>
#include <stdio.h>

int main(void) {
  int major = 0, minor = 0;
  if (xylCoreInitialize("XYL 1.0") != 0) /* counted: pair every call */
    return 1;
  xylCoreGetApiVersion(&major, &minor);
  printf("XYLCore API %d.%d, compatible with 1.0: %s\n", major, minor,
         xylCoreIsCompatibleWith(1, 0) == 0 ? "yes" : "no");
  printf("0x01020304 in network order: 0x%08x\n", xylh2nl(0x01020304u));
  return xylCoreTerminate("XYL 1.0") == 0 ? 0 : 1;
}
