/* SPDX-License-Identifier: Apache-2.0 */
// Private: the operating-system services of the catalog lookup. One
// implementation per OS (posix/XYLResourceOsPosix.cpp).
#ifndef XYLCORE_SRC_RESOURCES_XYLRESOURCEOS_H
#define XYLCORE_SRC_RESOURCES_XYLRESOURCEOS_H

namespace xyl_resource_os {

// The path separator.
const char kSeparator = '/';

// Whether `path` names an existing regular file (readable or not).
bool isRegularFile(const char *path);

} // namespace xyl_resource_os

#endif
