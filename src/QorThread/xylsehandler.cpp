// SPDX-License-Identifier: Apache-2.0
// xylsehandler.cpp - the fault handler's operating-system-independent part
// only: reading XYL_HWE_ABORT, the exception table, the settings and the
// debugging banner. Catching faults, reports and dumps come from the backend
// included at the end.
#include "QorThread/xylsehandler_internal.h"

#include <XYLCore/ExceptionHierarchy/XYLErrors.h>
#include <XYLCore/QorThread/XYLWin32SEHHandler.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

namespace {

// ---- the exception table ---------------------------------------------------------

struct ExceptionName {
  unsigned int code;
  const char *name;
};

// The operating system's exception codes of the same names with the prefix
// EXCEPTION_.
const ExceptionName kExceptionNames[] = {
    {0xC0000005u, "ACCESS_VIOLATION"},
    {0xC000008Cu, "ARRAY_BOUNDS_EXCEEDED"},
    {0x80000003u, "BREAKPOINT"},
    {0x80000002u, "DATATYPE_MISALIGNMENT"},
    {0xC000008Du, "FLT_DENORMAL_OPERAND"},
    {0xC000008Eu, "FLT_DIVIDE_BY_ZERO"},
    {0xC000008Fu, "FLT_INEXACT_RESULT"},
    {0xC0000090u, "FLT_INVALID_OPERATION"},
    {0xC0000091u, "FLT_OVERFLOW"},
    {0xC0000092u, "FLT_STACK_CHECK"},
    {0xC0000093u, "FLT_UNDERFLOW"},
    {0x80000001u, "GUARD_PAGE"},
    {0xC000001Du, "ILLEGAL_INSTRUCTION"},
    {0xC0000094u, "INT_DIVIDE_BY_ZERO"},
    {0xC0000095u, "INT_OVERFLOW"},
    {0xC0000026u, "INVALID_DISPOSITION"},
    {0xC0000008u, "INVALID_HANDLE"},
    {0xC0000006u, "IN_PAGE_ERROR"},
    {0xC0000025u, "NONCONTINUABLE_EXCEPTION"},
    {0xC0000096u, "PRIV_INSTRUCTION"},
    {0x80000004u, "SINGLE_STEP"},
    {0xC00000FDu, "STACK_OVERFLOW"},
};

constexpr unsigned int kAccessViolation = 0xC0000005u;
constexpr unsigned int kArrayBoundsExceeded = 0xC000008Cu;
constexpr unsigned int kBreakpoint = 0x80000003u;
constexpr unsigned int kDatatypeMisalignment = 0x80000002u;
constexpr unsigned int kFltDenormalOperand = 0xC000008Du;
constexpr unsigned int kFltDivideByZero = 0xC000008Eu;
constexpr unsigned int kFltInexactResult = 0xC000008Fu;
constexpr unsigned int kFltInvalidOperation = 0xC0000090u;
constexpr unsigned int kFltOverflow = 0xC0000091u;
constexpr unsigned int kFltStackCheck = 0xC0000092u;
constexpr unsigned int kFltUnderflow = 0xC0000093u;
constexpr unsigned int kIllegalInstruction = 0xC000001Du;
constexpr unsigned int kIntDivideByZero = 0xC0000094u;
constexpr unsigned int kIntOverflow = 0xC0000095u;
constexpr unsigned int kInPageError = 0xC0000006u;
constexpr unsigned int kPrivInstruction = 0xC0000096u;
constexpr unsigned int kSingleStep = 0x80000004u;
constexpr unsigned int kStackOverflow = 0xC00000FDu;

// ---- texts -----------------------------------------------------------------------------

const char kMissingColon[] = "Wrong format: The string %s is missing ':' within it!\n";
const char kBadFirstPart[] = "\nWrong format: The first string part \"%s\" is an invalid unsigned integer number!\n\n";
const char kBadSecondPart[] =
    "\nWrong format: The second string part \"%s\" is an invalid unsigned integer number!\n\n";

const char kBannerFrame[] = "\n========================================================\n";
const char kTranslatorName[] = "      XYLWin32SEHHandler::qorThreadWin32SEHTranslator\n";

// ---- settings ------------------------------------------------------------------------------

// Written by the process initialisation or configure, read by the signal
// handler: each one atomic on its own, the handler kind stored last.
std::atomic<int> g_handler{XYLWin32SEHHandler::HandlerNone};
std::atomic<int> g_mode{0};
std::atomic<int> g_dumpType{XYLWin32SEHHandler::kDefaultDumpType};
std::atomic<bool> g_processInitialized{false};

void emit(XYLWin32SEHHandler::MessageSink sink, void *context, const char *format, const std::string &part) {
  if (sink == nullptr)
    return;
  std::string text(std::strlen(format) + part.size(), '\0');
  int n = std::snprintf(&text[0], text.size() + 1, format, part.c_str());
  text.resize(n > 0 ? static_cast<std::size_t>(n) : 0);
  sink(context, text.c_str());
}

void writeToStderr(void *, const char *text) { std::fputs(text, stderr); }

} // namespace

// The backend's part, defined in posix/xylsehandler_posix.inc.
namespace xyl_seh_os {
// Installs (or, when not enabled, removes) the signal handlers, the
// terminate handler and the thread guard for these settings.
void apply(const XYLWin32SEHHandler::Settings &settings);
// Signal-safe. "Exception code: ...\nException address: ...\nException: ...\n".
void describe(unsigned int code, const XYLWin32SEHExceptionPointers *pExp, xyl_seh::SafeText &out);
// Signal-safe. Writes to standard error.
void writeError(const char *text);
[[noreturn]] void translate(unsigned int code, XYLWin32SEHExceptionPointers *pExp);
[[noreturn]] void dumpAndExit(unsigned int code, XYLWin32SEHExceptionPointers *pExp);
} // namespace xyl_seh_os

XYLWin32SEHHandler::Settings XYLWin32SEHHandler::parseAbortValue(const char *value, MessageSink sink, void *context) {
  Settings settings;
  settings.enabled = 0;
  settings.handler = HandlerNone;
  settings.mode = 0;
  settings.dumpType = kDefaultDumpType;
  if (value == nullptr)
    return settings;
  if (value[0] == 'Y' || value[0] == 'y') {
    settings.enabled = 1;
    settings.handler = HandlerDebugging;
    return settings;
  }
  if (value[0] == '\0')
    return settings;

  std::string whole(value);
  std::string modePart = whole;
  std::string valuePart = whole;
  std::string::size_type colon = whole.find(':');
  if (colon == std::string::npos) {
    // Reported, then read regardless: the whole text is both parts.
    emit(sink, context, kMissingColon, whole);
  } else {
    modePart = whole.substr(0, colon);
    valuePart = whole.substr(colon + 1);
  }
  // Both checks are made on the truncated values: "256" is mode 0 and
  // reported as invalid.
  unsigned char mode = static_cast<unsigned char>(std::atoi(modePart.c_str()));
  if (mode == 0 && modePart != "0")
    emit(sink, context, kBadFirstPart, modePart);
  unsigned short dumpType = static_cast<unsigned short>(std::atoi(valuePart.c_str()));
  if (dumpType == 0 && valuePart != "0")
    emit(sink, context, kBadSecondPart, valuePart);

  settings.mode = mode;
  if (mode == 1 || mode == 2) {
    settings.enabled = 1;
    settings.handler = mode == 1 ? HandlerTranslating : HandlerDumpAndExit;
    settings.dumpType = dumpType;
  }
  return settings;
}

int XYLWin32SEHHandler::configure(const char *value) {
  Settings settings = parseAbortValue(value, writeToStderr, nullptr);
  xyl_seh_os::apply(settings);
  g_mode.store(settings.mode, std::memory_order_relaxed);
  g_dumpType.store(settings.dumpType, std::memory_order_relaxed);
  g_handler.store(settings.handler, std::memory_order_release);
  return settings.enabled;
}

XYLWin32SEHHandler::Settings XYLWin32SEHHandler::getSettings() {
  Settings settings;
  settings.handler = static_cast<Handler>(g_handler.load(std::memory_order_acquire));
  settings.enabled = settings.handler != HandlerNone ? 1 : 0;
  settings.mode = static_cast<unsigned char>(g_mode.load(std::memory_order_relaxed));
  settings.dumpType = static_cast<unsigned short>(g_dumpType.load(std::memory_order_relaxed));
  return settings;
}

const char *XYLWin32SEHHandler::exceptionName(unsigned int code) {
  for (const ExceptionName &entry : kExceptionNames)
    if (entry.code == code)
      return entry.name;
  return nullptr;
}

// Signal-safe.
void XYLWin32SEHHandler::qorThreadWin32SEHTranslator(unsigned int code, XYLWin32SEHExceptionPointers *pExp) {
  XYL_ASSERT(pExp);
  char buffer[2048];
  xyl_seh::SafeText banner(buffer, sizeof buffer);
  banner.text(kBannerFrame)
      .text("XYL Win32 Hardware Exception Handler Enabled\n")
      .text("\nXYL caught the following win32 exception using\n")
      .text(kTranslatorName);
  xyl_seh_os::describe(code, pExp, banner);
  banner.text("\nHint: Place breakpoint in the static method\n")
      .text(kTranslatorName)
      .text("      to catch this in Microsoft Developer Studio\n")
      .text("\n    set XYL_HWE_ABORT=Y\n")
      .text(kBannerFrame);
  xyl_seh_os::writeError(banner.c_str());
}

void XYLWin32SEHHandler::qorThreadWin32SEHTranslateSEtoCE(unsigned int code, XYLWin32SEHExceptionPointers *pExp) {
  XYL_ASSERT(pExp);
  xyl_seh_os::translate(code, pExp);
}

void XYLWin32SEHHandler::qorThreadWin32SEHDumpAndExit(unsigned int code, XYLWin32SEHExceptionPointers *pExp) {
  XYL_ASSERT(pExp);
  xyl_seh_os::dumpAndExit(code, pExp);
}

void xylSEHandlerProcessInitialize() {
  if (g_processInitialized.exchange(true))
    return;
  const char *value = std::getenv("XYL_HWE_ABORT");
  if (value != nullptr)
    XYLWin32SEHHandler::configure(value);
}

#include "QorThread/posix/xylsehandler_posix.inc"
