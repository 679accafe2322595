// SPDX-License-Identifier: Apache-2.0
// The five-line example of the README, kept compiling.
#include <XYLCore/ExceptionHierarchy/XYLErrors.h>
#include <XYLCore/Types/XYLByteBuffer.h>
#include <cstdio>

int main() {
  // clang-format off
  XYLByteBuffer text(0, 64);
  text << "answer=" << 42;
  try { XYL_THROW(XYLIllegalArgumentError(7, text.str())); }
  catch (XYLThrowable &e) { std::puts(e.toString()); } // <Exception Name="XYLIllegalArgumentError" ...
  // clang-format on
  return 0;
}
