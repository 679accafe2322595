/* SPDX-License-Identifier: Apache-2.0
 * XYLThrowable.h - the root of the library's exception tree and the raising
 * macros.
 *
 * Every failure of the library is thrown as an object derived from
 * XYLThrowable. A throwable carries an error code (a number or a text), a
 * severity, an optional message and a back trace: one text line per place
 * that threw or rethrew it, "<file>(<line>):<Name>: <MACRO>: <text>".
 *
 * Raising:
 *   XYL_THROW(XYLRuntimeError(5, "bad"));   builds, adds a trace line, throws
 *   XYL_THROW(XYLException(17) << XYLMessage("mycatalog", 17));  any
 *     expression of a throwable type, temporaries reached by reference too
 *   catch (XYLThrowable& e) { XYL_RETHROW(e); }  adds a line, throws on
 *   XYL_ASSERT(cond);  XYL_ASSERT_NAMED(cond, "[Class::op] text");
 * A raise always throws a copy of the object by its most-derived type. The
 * file name recorded is XYL_SOURCE_FILE, which the library's build sets per
 * source file to its path below the source root without extension
 * ("Types/XYLByteBuffer"); other code records __FILE__.
 *
 * Ownership: a throwable owns its message, code text, trace lines and cached
 * rendering. File names in XYLFileLocation are literals and are not copied.
 * Failure: a throwable never throws while it is being built, copied or
 * raised; an allocation failure there loses the piece (a missing trace line,
 * a null message or rendering) instead.
 * Thread safety: a throwable belongs to the thread holding it; nothing locks.
 * Texts rendered as XML are deliberately not escaped.
 */
#ifndef XYLCORE_EXCEPTIONHIERARCHY_XYLTHROWABLE_H
#define XYLCORE_EXCEPTIONHIERARCHY_XYLTHROWABLE_H

#include <XYLCore/ThreadPools/XYLList.h>
#include <XYLCore/XYLExport.h>

#include <type_traits>

#ifndef XYL_SOURCE_FILE
#define XYL_SOURCE_FILE __FILE__
#endif

enum XYLSeverity { XYLSeverityFatal = 0, XYLSeverityError = 1, XYLSeverityWarning = 2, XYLSeverityInformation = 3 };

// The place of a raise: a file name literal (not owned) and a line.
class XYL_API XYLFileLocation {
public:
  XYLFileLocation(const char *file, int line) : m_file(file), m_line(line) {}
  const char *getFile() const { return m_file; }
  int getLine() const { return m_line; }

private:
  const char *m_file;
  int m_line;
};

class XYL_API XYLThrowable {
public:
  XYLThrowable();
  XYLThrowable(long code, const char *message);
  XYLThrowable(XYLSeverity severity, long code, const char *message);
  XYLThrowable(const char *codeText, const char *message);
  XYLThrowable(XYLSeverity severity, const char *codeText, const char *message);
  XYLThrowable(const XYLThrowable &other);
  XYLThrowable &operator=(const XYLThrowable &other);
  virtual ~XYLThrowable();

  // A heap copy of the most-derived object, or null if memory ran out.
  virtual XYLThrowable *clone() const = 0;
  // Adds a back-trace line, then throws a copy by the most-derived type.
  [[noreturn]] virtual void hurl(const XYLFileLocation &location, const char *text, const char *macroName) = 0;
  // The message text, or null when none was given.
  virtual const char *getMessage();
  // The class's own name ("XYLRuntimeError").
  virtual const char *getThrowableName() const = 0;
  // The XML rendering; owned by the object, rebuilt on every call; null if
  // memory ran out.
  virtual const char *toString();

  long getErrorCode() const { return m_lErrorCode; }
  XYLSeverity getSeverity() const { return m_severity; }
  const XYLList<char *> &getBackTrace() const { return m_backTrace; }
  // The code text if one was given; else the number in decimal ("0" for 0);
  // null for a default-constructed throwable.
  const char *getErrorCodeString();

  void addBackTrace(const XYLFileLocation &location, const char *text, const char *macroName) noexcept;
  // Moves every back-trace line of `other` to the end of this one's.
  void transferBackTrace(XYLThrowable &other);

  // "Fatal", "Error", "Warning", "Information"; other values are undefined.
  static const char *getSeverityName(XYLSeverity severity);

protected:
  const char *getPlainMessage() const { return m_pMessage; }

private:
  void copyFrom(const XYLThrowable &other);
  void release();

  char *m_pRendering;
  XYLList<char *> m_backTrace;
  int m_iCodeIsNumber;
  long m_lErrorCode;
  char *m_pErrorCode;
  XYLSeverity m_severity;
  char *m_pMessage;
};

// Holds one failure captured on one thread to raise it later elsewhere.
// Not locked: whoever hands it between threads orders the accesses.
class XYL_API XYLDeferredThrowable {
public:
  XYLDeferredThrowable();
  XYLDeferredThrowable(const XYLDeferredThrowable &other);
  XYLDeferredThrowable &operator=(const XYLDeferredThrowable &other);
  XYLDeferredThrowable &operator=(const XYLThrowable &throwable);
  virtual ~XYLDeferredThrowable();

  // Replaces what is held by a clone of `throwable`.
  void set(const XYLThrowable &throwable);
  // Returns when empty; otherwise raises the held object through its hurl.
  void check(const XYLFileLocation &location, const char *text, const char *macroName);
  const XYLThrowable *get() const { return m_pThrowable; }
  bool isEmpty() const { return m_pThrowable == nullptr; }

private:
  XYLThrowable *m_pThrowable;
};

namespace xyl_detail {
// The cold path of the assertion macros: builds XYLAssertError(0, statement)
// and raises it as XYL_THROW does.
[[noreturn]] XYL_API void raiseAssertion(const char *file, int line, const char *statement);

// Raises a copy of a constant throwable: hurl adds a trace line, so it needs
// an object of its own. Memory running out raises XYLOutOfMemoryError.
[[noreturn]] XYL_API void hurlCopy(const XYLThrowable &throwable, const XYLFileLocation &location,
                                   const char *macroName);

// Raises an object that an expression only refers to: a named object, or a
// temporary reached through a call chain that returns a reference. It runs
// inside the full expression that built the object, so such a temporary is
// still alive while hurl copies it.
template <class T>
[[noreturn]] void hurlReferenced(T &&throwable, const XYLFileLocation &location, const char *macroName) {
  static_assert(std::is_base_of<XYLThrowable, std::remove_reference_t<T>>::value,
                "XYL_THROW takes an expression of a type derived from XYLThrowable");
  if constexpr (std::is_const<std::remove_reference_t<T>>::value)
    hurlCopy(throwable, location, macroName);
  else
    throwable.hurl(location, nullptr, macroName);
  __builtin_unreachable(); // both raise
}

// Builds the throwable that `make` returns, with its first trace line.
template <class Make> auto traced(Make &make, const XYLFileLocation &location, const char *macroName) {
  auto throwable = make(location, macroName);
  throwable.addBackTrace(location, nullptr, macroName);
  return throwable;
}

// XYL_THROW's body. `make` either raises the object itself (the expression
// refers to an object, see hurlReferenced) or returns a freshly built one,
// which is then constructed directly as the exception object: the result is
// the same object with the same trace line, but the raising frame holds no
// temporary whose destruction would stop the unwinder on its way out.
template <class Make> [[noreturn]] void raise(Make make, const XYLFileLocation &location, const char *macroName) {
  if constexpr (std::is_void<decltype(make(location, macroName))>::value) {
    make(location, macroName);
    __builtin_unreachable(); // make raised
  } else {
    throw traced(make, location, macroName);
  }
}
} // namespace xyl_detail

/* Declares the members every concrete throwable class defines; the partner
 * XYL_IMPLEMENT_THROWABLE in the class's source file defines them, so name,
 * clone and rethrow cannot drift apart. */
#define XYL_DECLARE_THROWABLE(Class)                                                                                   \
public:                                                                                                                \
  XYLThrowable *clone() const override;                                                                                \
  [[noreturn]] void hurl(const XYLFileLocation &location, const char *text, const char *macroName) override;           \
  const char *getThrowableName() const override;

#define XYL_IMPLEMENT_THROWABLE(Class)                                                                                 \
  XYLThrowable *Class::clone() const { return new (std::nothrow) Class(*this); }                                       \
  void Class::hurl(const XYLFileLocation &location, const char *text, const char *macroName) {                         \
    addBackTrace(location, text, macroName);                                                                           \
    throw Class(*this);                                                                                                \
  }                                                                                                                    \
  const char *Class::getThrowableName() const { return #Class; }

#define XYL_HERE ::XYLFileLocation(XYL_SOURCE_FILE, __LINE__)

/* Takes any expression of a throwable type: a temporary, a named object, a
 * call chain returning a reference (XYLException(17) << message), a
 * conditional or a function's result. The expression is evaluated once. */
#define XYL_THROW(throwable)                                                                                           \
  ::xyl_detail::raise(                                                                                                 \
      [&](const ::XYLFileLocation &xylAt, const char *xylMacro) -> decltype(auto) {                                    \
        if constexpr (std::is_reference<decltype((throwable))>::value)                                                 \
          ::xyl_detail::hurlReferenced((throwable), xylAt, xylMacro);                                                  \
        else                                                                                                           \
          return (throwable);                                                                                          \
      },                                                                                                               \
      XYL_HERE, "XYL_THROW")

#define XYL_RETHROW(caught) (caught).hurl(XYL_HERE, nullptr, "XYL_RETHROW")

#define XYL_ASSERT(condition)                                                                                          \
  do {                                                                                                                 \
    if (!(condition))                                                                                                  \
      ::xyl_detail::raiseAssertion(XYL_SOURCE_FILE, __LINE__, "XYL_ASSERT(" #condition ");");                          \
  } while (0)

#define XYL_ASSERT_NAMED(condition, text)                                                                              \
  do {                                                                                                                 \
    if (!(condition))                                                                                                  \
      ::xyl_detail::raiseAssertion(XYL_SOURCE_FILE, __LINE__, "XYL_ASSERT_NAMED(" #condition ", " #text ");");         \
  } while (0)

/* Converts whatever a library operation let escape into the tree: an
 * XYLThrowable goes on with a trace line, std::bad_alloc becomes
 * XYLOutOfMemoryError and any other std::exception XYLStdExceptionError.
 * Use as: try { ... } XYL_CATCH_AT_BOUNDARY */
#define XYL_CATCH_AT_BOUNDARY                                                                                          \
  catch (XYLThrowable & xylCaught) {                                                                                   \
    XYL_RETHROW(xylCaught);                                                                                            \
  }                                                                                                                    \
  catch (std::bad_alloc &) {                                                                                           \
    XYL_THROW(XYLOutOfMemoryError(0L, nullptr));                                                                       \
  }                                                                                                                    \
  catch (std::exception & xylStdCaught) {                                                                              \
    XYL_THROW(XYLStdExceptionError(xylStdCaught));                                                                     \
  }

#endif // XYLCORE_EXCEPTIONHIERARCHY_XYLTHROWABLE_H
