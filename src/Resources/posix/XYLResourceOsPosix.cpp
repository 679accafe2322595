// SPDX-License-Identifier: Apache-2.0
// Linux implementation of the catalog lookup's OS services.
#include "Resources/XYLResourceOs.h"

#include <sys/stat.h>

namespace xyl_resource_os {

bool isRegularFile(const char *path) {
  struct stat st;
  return ::stat(path, &st) == 0 && S_ISREG(st.st_mode);
}

} // namespace xyl_resource_os
