/* SPDX-License-Identifier: Apache-2.0 */
// Test-only: makes the Nth global operator new of the process fail, for the
// code paths of the Types area that allocate with new rather than through
// XYLUtMemory. The replacement operators live in XYLOperatorNewFailure.cpp and
// are linked only into this area's test executable.
#ifndef XYLCORE_TESTS_UNIT_TYPES_XYLOPERATORNEWFAILURE_H
#define XYLCORE_TESTS_UNIT_TYPES_XYLOPERATORNEWFAILURE_H

namespace xyltest {

// While alive, the `countdown`-th operator new from now (any form: scalar or
// array, throwing or nothrow) fails once: the throwing forms throw
// std::bad_alloc, the nothrow forms return null. Set it only while the code
// under test runs on one thread.
class OperatorNewFailure {
public:
  explicit OperatorNewFailure(long countdown);
  ~OperatorNewFailure();
  // True once the injected failure has happened.
  bool fired() const;

private:
  OperatorNewFailure(const OperatorNewFailure &) = delete;
  OperatorNewFailure &operator=(const OperatorNewFailure &) = delete;
};

} // namespace xyltest

#endif
