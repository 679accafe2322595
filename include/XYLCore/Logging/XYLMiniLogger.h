/* SPDX-License-Identifier: Apache-2.0
 * XYLMiniLogger.h - a last-resort append-only text log.
 *
 * This header defines XYLMiniLogger, a log that needs nothing but the file
 * system: one file per logger name, "../logs/<name>.log", resolved against
 * the effective working directory (XYLFmDir::resolveEffectivePath), opened
 * for appending and created when missing. The "../logs/" directory itself is
 * not created.
 *
 * Entries. Each entry is written with one formatted write and flushed at
 * once, so that it survives a crash that follows it:
 *
 *   <time stamp>\t<source> Error        (or Trace)
 *   <-
 *   <text, which may span lines>
 *   ->
 *   <empty line>
 *
 * The time stamp is XYLUtSystemInfo::getTimeStamp(1). A null source or text
 * is written as an empty text.
 *
 * Ownership: the logger owns its stream and closes it on destruction; the
 * texts passed in are only read during the call.
 * Thread safety: one logger may be used by many threads at once without a
 * lock of its own: the runtime's stream lock keeps each entry together.
 * Several loggers of the same name append to the same file; each entry is
 * written at the end of the file (append mode).
 * Failure: a log that cannot be opened is silently inert; write errors are
 * ignored. Nothing is thrown except std::bad_alloc while building the path
 * or the time stamp.
 */
#ifndef XYLCORE_LOGGING_XYLMINILOGGER_H
#define XYLCORE_LOGGING_XYLMINILOGGER_H

#include <XYLCore/XYLExport.h>

#include <cstdio>

class XYL_API XYLMiniLogger {
public:
  // Opens the log named "xyl".
  XYLMiniLogger();
  // Opens the log `name`; a null or empty name is replaced by "xyl".
  explicit XYLMiniLogger(const char *name);
  // Closes the file if it is open.
  virtual ~XYLMiniLogger();

  // Writes an error entry ("<stamp>\t<source> Error\n<-\n<text>\n->\n\n").
  virtual void log(const char *source, const char *text);
  // Writes a trace entry ("<stamp>\t<source> Trace\n<-\n<text>\n->\n\n").
  virtual void logTrace(const char *source, const char *text);

  // Whether the log file could be opened.
  bool isOpen() const { return m_pFile != nullptr; }

private:
  XYLMiniLogger(const XYLMiniLogger &) = delete;
  XYLMiniLogger &operator=(const XYLMiniLogger &) = delete;

  void init(const char *name);
  void write(const char *format, const char *source, const char *text);

  std::FILE *m_pFile;
};

#endif // XYLCORE_LOGGING_XYLMINILOGGER_H
