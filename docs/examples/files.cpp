// SPDX-License-Identifier: Apache-2.0
// A file in a fresh temporary directory: write, lock, read back, clean up.
#include <XYLCore/FileLock/XYLFileLockRW.h>
#include <XYLCore/FileManagement/XYLFmDir.h>
#include <XYLCore/FileManagement/XYLFmFile.h>
#include <cstdio>
#include <string>

int main() {
  std::string dir;
  if (!XYLFmDir::createTempDir(nullptr, "xyldoc", dir)) // under TMP, TMPDIR or /tmp
    return 1;
  std::string path = dir;
  XYLFmDir::joinPath(path, "notes.txt");
  XYLFmFile file;
  if (!file.open(path.c_str(), XYLFmFile::createAlways, 0)) {
    std::printf("open failed: errno %lu\n", file.getLastErrorNumber());
    return 1;
  }
  {
    XYLFileLockRW lock(file);
    lock.lock(); // exclusive, whole file
    file.write("hello\n", 6);
    lock.unlock();
  }
  char buffer[16] = {};
  file.seek(0, XYLFmFile::seekBegin);
  long n = file.read(buffer, sizeof buffer - 1);
  file.close();
  std::printf("read %ld bytes: %s", n, buffer);
  return XYLFmDir::removeDir(dir.c_str()) ? 0 : 1; // removes the tree
}
