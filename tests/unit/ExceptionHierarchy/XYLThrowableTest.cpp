// SPDX-License-Identifier: Apache-2.0
#include <XYLCore/ExceptionHierarchy/XYLErrors.h>
#include <XYLCore/Messages/XYLMessage.h>

#include "XYLFaultInjection.h"

#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <typeinfo>
#include <vector>

namespace {

// The only way to reach the root's default constructor is through a subclass.
class BareThrowable : public XYLThrowable {
public:
  XYLThrowable *clone() const override { return new BareThrowable(*this); }
  [[noreturn]] void hurl(const XYLFileLocation &location, const char *text, const char *macro) override {
    addBackTrace(location, text, macro);
    throw BareThrowable(*this);
  }
  const char *getThrowableName() const override { return nullptr; }
};

std::vector<std::string> traceOf(const XYLThrowable &t) {
  std::vector<std::string> lines;
  XYLList<char *> &trace = const_cast<XYLList<char *> &>(t.getBackTrace());
  for (XYLList<char *>::iterator it = trace.begin(); it != trace.end(); ++it)
    lines.push_back(*it);
  return lines;
}

std::string traceLine(int line, const char *name, const char *macro) {
  return std::string(__FILE__) + "(" + std::to_string(line) + "):" + name + ": " + macro + ": ";
}

TEST(XYLThrowableTest, ErrorCodeStringFollowsHowTheCodeWasGiven) {
  XYLError five(5, "m");
  XYLError zero(0, "m");
  XYLError negative(-2147483647L - 1, nullptr);
  XYLError text("E-TEXT", "m");
  BareThrowable bare;
  EXPECT_STREQ("5", five.getErrorCodeString());
  EXPECT_STREQ("0", zero.getErrorCodeString());
  EXPECT_STREQ("-2147483648", negative.getErrorCodeString());
  EXPECT_STREQ("E-TEXT", text.getErrorCodeString());
  EXPECT_EQ(nullptr, bare.getErrorCodeString());
  // The formatted number is kept, so a second call answers the same text.
  EXPECT_EQ(five.getErrorCodeString(), five.getErrorCodeString());
}

TEST(XYLThrowableTest, SeveritiesOfTheTwoBranches) {
  EXPECT_EQ(XYLSeverityFatal, XYLRuntimeError(1, "m").getSeverity());
  EXPECT_EQ(XYLSeverityFatal, XYLOutOfMemoryError(0, nullptr).getSeverity());
  EXPECT_EQ(XYLSeverityError, XYLException(7).getSeverity());
  EXPECT_EQ(XYLSeverityError, XYLPluginException("P").getSeverity());
  EXPECT_EQ(XYLSeverityWarning, XYLException(XYLSeverityWarning, 7).getSeverity());
  const char *names[] = {"Fatal", "Error", "Warning", "Information"};
  for (int i = 0; i < 4; ++i)
    EXPECT_STREQ(names[i], XYLThrowable::getSeverityName(static_cast<XYLSeverity>(i)));
}

TEST(XYLThrowableTest, MessageIsCopiedAndNullStaysNull) {
  char buffer[] = "original";
  XYLRuntimeError e(1, buffer);
  buffer[0] = 'X';
  EXPECT_STREQ("original", e.getMessage());
  EXPECT_EQ(nullptr, XYLRuntimeError(1, nullptr).getMessage());
  // An exception renders its (empty) message set instead: never null.
  EXPECT_STREQ("", XYLException(3).getMessage());
  EXPECT_STREQ("", static_cast<const XYLPluginException &>(XYLPluginException(3)).getMessage());
  std::runtime_error std("from std");
  XYLStdExceptionError wrapped(std);
  EXPECT_STREQ("from std", wrapped.getMessage());
  EXPECT_EQ(0, wrapped.getErrorCode());
}

// Each class names itself, clones to its own type and is thrown by it.
template <class T> void checkClass(T prototype, const char *name) {
  EXPECT_STREQ(name, prototype.getThrowableName());
  std::unique_ptr<XYLThrowable> copy(prototype.clone());
  ASSERT_NE(nullptr, copy);
  EXPECT_EQ(typeid(T), typeid(*copy));
  EXPECT_STREQ(name, copy->getThrowableName());
  try {
    XYLThrowable &base = prototype;
    XYL_THROW(base);
  } catch (T &caught) {
    ASSERT_EQ(1u, caught.getBackTrace().size());
    EXPECT_NE(std::string::npos, traceOf(caught)[0].find(std::string("):") + name + ": XYL_THROW: "));
    return;
  } catch (...) {
  }
  ADD_FAILURE() << name << " was not thrown by its most-derived type";
}

TEST(XYLThrowableTest, EveryClassNamesClonesAndThrowsItself) {
  checkClass(XYLError(1, "m"), "XYLError");
  checkClass(XYLRuntimeError(1, "m"), "XYLRuntimeError");
  checkClass(XYLAssertError(1, "m"), "XYLAssertError");
  checkClass(XYLIllegalArgumentError(1, "m"), "XYLIllegalArgumentError");
  checkClass(XYLIllegalStateError(1, "m"), "XYLIllegalStateError");
  checkClass(XYLIndexOutOfBoundsError(1, "m"), "XYLIndexOutOfBoundsError");
  checkClass(I18NRuntimeError(-3, "m"), "I18NRuntimeError");
  checkClass(XYLUnexpectedError(1, "m"), "XYLUnexpectedError");
  checkClass(XYLUnknownError(1, "m"), "XYLUnknownError");
  checkClass(XYLSystemError(1, "m"), "XYLSystemError");
  checkClass(XYLUnsupportedOperationError(1, "m"), "XYLUnsupportedOperationError");
  checkClass(XYLOutOfMemoryError(0, nullptr), "XYLOutOfMemoryError");
  checkClass(XYLWin32SEHError(1, "m"), "XYLWin32SEHError");
  checkClass(XYLThreadResourceError(XYLThreadErrorOutOfMutexes, "m"), "XYLThreadResourceError");
  checkClass(I18NUnexpectedError(1, "m"), "I18NUnexpectedError");
  checkClass(XYLStdExceptionError(), "XYLStdExceptionError");
  checkClass(XYLException(1), "XYLException");
  checkClass(XYLPluginException(2), "XYLPluginException");
}

XYLRuntimeError makeError(int code, int &calls) {
  ++calls;
  return XYLRuntimeError(code, "made");
}

// Whatever form the expression takes, the raise throws its most-derived type
// with the given code, the messages it was given and exactly one trace line
// naming the raising line; the expression is evaluated once.
TEST(XYLThrowableTest, ThrowTakesEveryFormOfExpression) {
  struct Case {
    const char *form;
    std::function<void(int &line)> raise;
    const std::type_info &type;
    long code;
    unsigned messages;
  };
  int calls = 0;
  bool flag = true;
  const Case cases[] = {
      {"temporary", [](int &l) { l = __LINE__, XYL_THROW(XYLRuntimeError(1, "t")); }, typeid(XYLRuntimeError), 1, 0},
      {"named",
       [](int &l) {
         XYLIllegalStateError named(2, "n");
         l = __LINE__, XYL_THROW(named);
       },
       typeid(XYLIllegalStateError), 2, 0},
      {"const named",
       [](int &l) {
         const XYLIndexOutOfBoundsError named(3, "c");
         l = __LINE__, XYL_THROW(named);
       },
       typeid(XYLIndexOutOfBoundsError), 3, 0},
      {"chain on a temporary",
       [](int &l) { l = __LINE__, XYL_THROW(XYLException(17) << XYLMessage("mycatalog", 17) << XYLMessage("c", 2)); },
       typeid(XYLException), 17, 2},
      {"member chain", [](int &l) { l = __LINE__, XYL_THROW(XYLPluginException(1).addLocalizationMessage("p")); },
       typeid(XYLPluginException), 1, 1},
      {"conditional",
       [&](int &l) { l = __LINE__, XYL_THROW(flag ? XYLRuntimeError(4, "a") : XYLRuntimeError(5, "b")); },
       typeid(XYLRuntimeError), 4, 0},
      {"conditional of names",
       [&](int &l) {
         XYLIllegalStateError a(2, "a"), b(7, "b");
         l = __LINE__, XYL_THROW(flag ? a : b);
       },
       typeid(XYLIllegalStateError), 2, 0},
      {"function result", [&](int &l) { l = __LINE__, XYL_THROW(makeError(6, calls)); }, typeid(XYLRuntimeError), 6, 0},
      {"moved",
       [](int &l) {
         XYLIllegalStateError named(2, "n");
         l = __LINE__, XYL_THROW(std::move(named));
       },
       typeid(XYLIllegalStateError), 2, 0},
  };
  for (const Case &c : cases) {
    int line = 0;
    try {
      c.raise(line);
      ADD_FAILURE() << c.form << ": nothing thrown";
    } catch (XYLThrowable &e) {
      EXPECT_EQ(c.type, typeid(e)) << c.form;
      EXPECT_EQ(c.code, e.getErrorCode()) << c.form;
      ASSERT_EQ(1u, e.getBackTrace().size()) << c.form;
      EXPECT_EQ(0u, traceOf(e)[0].find(traceLine(line, e.getThrowableName(), "XYL_THROW"))) << c.form;
      if (XYLException *x = dynamic_cast<XYLException *>(&e)) {
        EXPECT_EQ(c.messages, x->getMessageCount()) << c.form;
      }
    }
  }
  EXPECT_EQ(1, calls);
}

TEST(XYLThrowableTest, ThrowAndTwoRethrowsLeaveThreeLinesInOrder) {
  int throwLine = 0, firstRethrow = 0, secondRethrow = 0;
  try {
    try {
      try {
        throwLine = __LINE__ + 1;
        XYL_THROW(XYLIllegalStateError(3, "state"));
      } catch (XYLThrowable &e) {
        firstRethrow = __LINE__ + 1;
        XYL_RETHROW(e);
      }
    } catch (XYLIllegalStateError &e) {
      secondRethrow = __LINE__ + 1;
      XYL_RETHROW(e);
    }
  } catch (XYLRuntimeError &e) {
    EXPECT_EQ(typeid(XYLIllegalStateError), typeid(e));
    std::vector<std::string> expected = {traceLine(throwLine, "XYLIllegalStateError", "XYL_THROW"),
                                         traceLine(firstRethrow, "XYLIllegalStateError", "XYL_RETHROW"),
                                         traceLine(secondRethrow, "XYLIllegalStateError", "XYL_RETHROW")};
    EXPECT_EQ(expected, traceOf(e));
  }
}

TEST(XYLThrowableTest, BackTraceLineParts) {
  struct Case {
    const char *file;
    int line;
    const char *text;
    const char *macro;
    const char *expected;
  };
  const Case cases[] = {
      {"PlugIns/XYLPluginException", 75, nullptr, "XYL_THROW", "PlugIns/XYLPluginException(75):XYLError: XYL_THROW: "},
      {nullptr, 1, nullptr, "XYL_THROW", "<NULL FILE>(1):XYLError: XYL_THROW: "},
      {"f", -3, "extra", "M", "f(-3):XYLError: M: extra"},
      {"f", 9, "only text", "", "f(9):XYLError: only text"},
      {"f", 9, "", nullptr, "f(9):XYLError: "},
  };
  for (const Case &c : cases) {
    XYLError e(0, nullptr);
    e.addBackTrace(XYLFileLocation(c.file, c.line), c.text, c.macro);
    ASSERT_EQ(1u, e.getBackTrace().size());
    EXPECT_EQ(c.expected, traceOf(e)[0]);
  }
  BareThrowable nameless;
  nameless.addBackTrace(XYLFileLocation("f", 1), nullptr, nullptr);
  EXPECT_EQ("f(1):<NULL THROWABLE NAME>: ", traceOf(nameless)[0]);
}

TEST(XYLThrowableTest, XmlRendering) {
  XYLError plain(0, nullptr);
  EXPECT_STREQ("<Exception Name=\"XYLError\" Error=\"0\" Severity=\"Fatal\"></Exception>", plain.toString());

  XYLRuntimeError quoted(12, "a \"quoted\" <tag> & more");
  quoted.addBackTrace(XYLFileLocation("Types/XYLByteBuffer", 4), nullptr, "XYL_THROW");
  quoted.addBackTrace(XYLFileLocation("Core/XYLCore", 5), "why", "XYL_RETHROW");
  const char *expected = "<Exception Name=\"XYLRuntimeError\" Error=\"12\" Severity=\"Fatal\">"
                         "<Messages><MessageText>a \"quoted\" <tag> & more</MessageText></Messages>"
                         "<TraceInfo><Trace Text=\"Types/XYLByteBuffer(4):XYLRuntimeError: XYL_THROW: \"/>"
                         "<Trace Text=\"Core/XYLCore(5):XYLRuntimeError: XYL_RETHROW: why\"/></TraceInfo>"
                         "</Exception>";
  EXPECT_STREQ(expected, quoted.toString());
  // A second rendering is complete again and sees lines added since.
  quoted.addBackTrace(XYLFileLocation("x", 1), nullptr, nullptr);
  std::string again = quoted.toString();
  EXPECT_NE(std::string::npos, again.find("<Trace Text=\"x(1):XYLRuntimeError: \"/></TraceInfo></Exception>"));

  XYLException exception(XYLSeverityInformation, "CODE");
  EXPECT_STREQ("<Exception Name=\"XYLException\" Error=\"CODE\" Severity=\"Information\"></Exception>",
               exception.toString());
}

TEST(XYLThrowableTest, CopyAssignAndTransferKeepEveryLine) {
  XYLRuntimeError source(4, "msg");
  source.addBackTrace(XYLFileLocation("a", 1), nullptr, "XYL_THROW");
  source.addBackTrace(XYLFileLocation("b", 2), nullptr, "XYL_RETHROW");
  XYLRuntimeError copy(source);
  EXPECT_EQ(traceOf(source), traceOf(copy));
  EXPECT_STREQ("msg", copy.getMessage());

  XYLRuntimeError assigned(9, "other");
  assigned.addBackTrace(XYLFileLocation("z", 9), nullptr, nullptr);
  assigned = source;
  EXPECT_EQ(traceOf(source), traceOf(assigned));
  EXPECT_EQ(4, assigned.getErrorCode());
  assigned = assigned;
  EXPECT_EQ(2u, assigned.getBackTrace().size());

  XYLError target(1, nullptr);
  target.addBackTrace(XYLFileLocation("t", 0), nullptr, nullptr);
  target.transferBackTrace(copy);
  EXPECT_EQ(0u, copy.getBackTrace().size());
  ASSERT_EQ(3u, target.getBackTrace().size());
  EXPECT_EQ("a(1):XYLRuntimeError: XYL_THROW: ", traceOf(target)[1]);
}

void assertPointer(const char *p) {
  // clang-format off
  XYL_ASSERT_NAMED(( NULL != p ), "[XYLThrowableTest::assertPointer] The pointer is NULL.");
  // clang-format on
}

void assertPlain(int n) { XYL_ASSERT(n > 0); }

TEST(XYLThrowableTest, AssertionMessageIsTheStatementText) {
  assertPointer("fine");
  assertPlain(1);
  try {
    assertPointer(nullptr);
    FAIL() << "no assertion raised";
  } catch (XYLAssertError &e) {
    EXPECT_STREQ("XYL_ASSERT_NAMED(( NULL != p ), \"[XYLThrowableTest::assertPointer] The pointer is NULL.\");",
                 e.getMessage());
    EXPECT_EQ(0, e.getErrorCode());
    ASSERT_EQ(1u, e.getBackTrace().size());
    EXPECT_NE(std::string::npos, traceOf(e)[0].find("):XYLAssertError: XYL_THROW: "));
  }
  try {
    assertPlain(0);
    FAIL() << "no assertion raised";
  } catch (XYLAssertError &e) {
    EXPECT_STREQ("XYL_ASSERT(n > 0);", e.getMessage());
  }
}

TEST(XYLThrowableTest, BoundaryConversion) {
  auto convert = [](auto thrower) -> std::unique_ptr<XYLThrowable> {
    try {
      try {
        thrower();
      }
      XYL_CATCH_AT_BOUNDARY
    } catch (XYLThrowable &e) {
      return std::unique_ptr<XYLThrowable>(e.clone());
    }
    return nullptr;
  };
  auto oom = convert([] { throw std::bad_alloc(); });
  ASSERT_NE(nullptr, oom);
  EXPECT_EQ(typeid(XYLOutOfMemoryError), typeid(*oom));
  EXPECT_EQ(nullptr, oom->getMessage());

  auto std = convert([] { throw std::out_of_range("index 9"); });
  ASSERT_NE(nullptr, std);
  EXPECT_EQ(typeid(XYLStdExceptionError), typeid(*std));
  EXPECT_STREQ("index 9", std->getMessage());

  auto passed = convert([] { XYL_THROW(XYLIllegalArgumentError(2, "arg")); });
  ASSERT_NE(nullptr, passed);
  EXPECT_EQ(typeid(XYLIllegalArgumentError), typeid(*passed));
  EXPECT_EQ(2u, passed->getBackTrace().size());
}

// A raise must still throw the right object whichever allocation fails: the
// piece that could not be allocated is simply missing.
TEST(XYLThrowableTest, RaisingSurvivesEveryAllocationFailure) {
  for (long failAt = 1; failAt < 40; ++failAt) {
    bool completeRun = false;
    try {
      xyltest::AllocationFailure failure(failAt);
      XYLRuntimeError e(77, "message text");
      e.addBackTrace(XYLFileLocation("pre", 1), "note", "M");
      XYL_THROW(e);
    } catch (XYLRuntimeError &caught) {
      EXPECT_EQ(77, caught.getErrorCode());
      EXPECT_LE(caught.getBackTrace().size(), 2u);
      completeRun = caught.getBackTrace().size() == 2 && caught.getMessage() != nullptr;
      const char *xml = caught.toString();
      if (xml != nullptr) {
        EXPECT_NE(nullptr, std::strstr(xml, "</Exception>"));
      }
    }
    if (completeRun && failAt > 12)
      break;
  }
}

TEST(XYLThrowableTest, RenderingFailureGivesNullNotAThrow) {
  XYLError e(1, "m");
  xyltest::AllocationFailure failure(1, true);
  EXPECT_EQ(nullptr, e.toString());
}

} // namespace
