/* SPDX-License-Identifier: Apache-2.0 */
// Private: lets the unit tests reach state that the installed API keeps to
// itself (run the root lookup again, pretend the library lives elsewhere,
// measure a converter's terminator logic). Not installed.
#ifndef XYLCORE_SRC_I18N_CPP_I18N_TESTPEER_H
#define XYLCORE_SRC_I18N_CPP_I18N_TESTPEER_H

#include <XYLCore/XYLExport.h>

class I18NConverter;

class XYL_API I18NInternalResourcesTestPeer {
public:
  // Forgets the paths found by setDataDirectoryPath, so that it runs again.
  static void resetPaths();
  // Makes the root lookup use `fileName` as the library's own file name
  // (null: ask the system again). The text must outlive its use.
  static void setLibraryFileName(const char *fileName);
};

class XYL_API I18NConverterTestPeer {
public:
  static int getEffectiveBufferSize(const I18NConverter &converter, const char *buffer, int length);
};

#endif
