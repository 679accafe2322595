// SPDX-License-Identifier: Apache-2.0
// XYLMiniLogger: one formatted write and one flush per entry.
#include <XYLCore/Logging/XYLMiniLogger.h>

#include <XYLCore/FileManagement/XYLFmDir.h>
#include <XYLCore/Utility/XYLUtSystemInfo.h>

#include <string>

namespace {

const char kDefaultName[] = "xyl";
const char kErrorFormat[] = "%s\t%s Error\n<-\n%s\n->\n\n";
const char kTraceFormat[] = "%s\t%s Trace\n<-\n%s\n->\n\n";
// Append, create when missing, readable; the descriptor is closed in child
// processes started with exec.
const char kOpenMode[] = "a+e";

} // namespace

XYLMiniLogger::XYLMiniLogger() : m_pFile(nullptr) { init(kDefaultName); }

XYLMiniLogger::XYLMiniLogger(const char *name) : m_pFile(nullptr) {
  init(name == nullptr || *name == '\0' ? kDefaultName : name);
}

XYLMiniLogger::~XYLMiniLogger() {
  if (m_pFile != nullptr)
    std::fclose(m_pFile);
}

void XYLMiniLogger::init(const char *name) {
  std::string path("../logs/");
  path.append(name);
  path.append(".log");
  XYLFmDir::resolveEffectivePath(path);
  m_pFile = std::fopen(path.c_str(), kOpenMode);
}

void XYLMiniLogger::log(const char *source, const char *text) { write(kErrorFormat, source, text); }

void XYLMiniLogger::logTrace(const char *source, const char *text) { write(kTraceFormat, source, text); }

void XYLMiniLogger::write(const char *format, const char *source, const char *text) {
  if (m_pFile == nullptr)
    return;
  const std::string stamp = XYLUtSystemInfo::getTimeStamp(1);
  // One formatted write keeps the entry together under the stream's lock.
  std::fprintf(m_pFile, format, stamp.c_str(), source != nullptr ? source : "", text != nullptr ? text : "");
  std::fflush(m_pFile);
}
