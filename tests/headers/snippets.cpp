// SPDX-License-Identifier: Apache-2.0
// The code lines shown in the banners of the public C++ headers, built and
// run. Each line marked "from <header>" must appear in that header as it
// stands here (the build checks), so the banners cannot drift from code
// that compiles and does what they say.
#include <XYLCore/ExceptionHierarchy/XYLErrors.h>
#include <XYLCore/Messages/XYLMessage.h>

#include <cstdio>
#include <cstdlib>
#include <typeinfo>

namespace {

int failures = 0;

void check(bool ok, const char *what) {
  if (!ok) {
    std::fprintf(stderr, "snippet failed: %s\n", what);
    ++failures;
  }
}

// clang-format off
void raiseRuntime() {
  XYL_THROW(XYLRuntimeError(5, "bad"));                       // from <XYLCore/ExceptionHierarchy/XYLThrowable.h>
}

void raiseWithMessages() {
  XYL_THROW(XYLException(17) << XYLMessage("mycatalog", 17)); // from <XYLCore/ExceptionHierarchy/XYLException.h>
}

void rethrow(void (*raise)()) {
  try { raise(); }
  catch (XYLThrowable& e) { XYL_RETHROW(e); }                 // from <XYLCore/ExceptionHierarchy/XYLThrowable.h>
}

void asserting(bool cond) {
  XYL_ASSERT(cond);                                           // from <XYLCore/ExceptionHierarchy/XYLThrowable.h>
  XYL_ASSERT_NAMED(cond, "[Class::op] text");                 // from <XYLCore/ExceptionHierarchy/XYLThrowable.h>
}
// clang-format on

void boundary() {
  try {
    throw std::bad_alloc();
  }
  XYL_CATCH_AT_BOUNDARY
}

template <class Expected> void expectRaise(void (*raise)(), size_t traceLines, const char *what) {
  try {
    raise();
    check(false, what);
  } catch (Expected &e) {
    check(typeid(e) == typeid(Expected) && e.getBackTrace().size() == traceLines, what);
  } catch (...) {
    check(false, what);
  }
}

} // namespace

int main() {
  expectRaise<XYLRuntimeError>(raiseRuntime, 1, "XYL_THROW of a temporary");
  expectRaise<XYLException>(raiseWithMessages, 1, "XYL_THROW of a message chain");
  expectRaise<XYLException>([] { rethrow(raiseWithMessages); }, 2, "XYL_RETHROW");
  expectRaise<XYLAssertError>([] { asserting(false); }, 1, "XYL_ASSERT");
  expectRaise<XYLOutOfMemoryError>(boundary, 1, "XYL_CATCH_AT_BOUNDARY");
  asserting(true);
  try {
    raiseWithMessages();
  } catch (XYLException &e) {
    check(e.getMessageCount() == 1 && e.getErrorCode() == 17, "the chained message is kept");
  }
  return failures == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
