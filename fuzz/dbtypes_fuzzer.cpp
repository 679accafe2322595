// SPDX-License-Identifier: Apache-2.0
// Type names arrive from outside (XML schemas, SQL column descriptions): the
// input is looked up as a name in every family, and its first bytes as a code.
// Every answer must be consistent with the tables; an inconsistency aborts.
// The same bytes go through XYLVariant's string copy and text rendering.
#include <XYLCore/Types/XYLDBTypes.h>
#include <XYLCore/Types/XYLVariant.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

namespace {

void check(bool condition) {
  if (!condition)
    std::abort();
}

// A name that resolves must be the name of its code, except the earlier name
// of datatype 15.
void checkNames(const XYLDBTypes &t, const char *name) {
  XYLDBDatatype xyl = t.getXYLDBDatatypeCode(name);
  if (xyl != xylDTypeUnknown && std::strcmp(name, "xylDTypeDateTime") != 0)
    check(std::strcmp(name, t.getName(xyl)) == 0);
  SqlColType sql = t.getSqlColTypeCode(name);
  if (sql != sqlUnknownType)
    check(std::strcmp(name, t.getName(sql)) == 0);
  XSType xs = t.getXSTypeCode(name);
  if (xs != xsAnyType)
    check(std::strcmp(name, t.getName(xs)) == 0);
}

// Any code: a known one translates to known codes, an unknown one to 0.
void checkCode(const XYLDBTypes &t, int code) {
  const bool xylKnown = t.getName(static_cast<XYLDBDatatype>(code)) != nullptr;
  check(xylKnown == (code >= 0 && code <= 60));
  check(t.getName(t.XYLDBDatatype2SqlColType(static_cast<XYLDBDatatype>(code))) != nullptr);
  check(t.getName(t.XYLDBDatatype2XSType(static_cast<XYLDBDatatype>(code))) != nullptr);
  const bool sqlKnown = t.getName(static_cast<SqlColType>(code)) != nullptr;
  check(sqlKnown == (code >= 0 && code <= 31));
  check(t.getName(t.SqlColType2XSType(static_cast<SqlColType>(code))) != nullptr);
  check(t.getName(t.SqlColType2XYLDBDatatype(static_cast<SqlColType>(code))) != nullptr);
  const bool xsKnown = t.getName(static_cast<XSType>(code)) != nullptr;
  check(xsKnown == (code >= 0 && code <= 44));
  check(t.getName(t.XSType2SqlColType(static_cast<XSType>(code))) != nullptr);
  check(t.getName(t.XSType2XYLDBDatatype(static_cast<XSType>(code))) != nullptr);
}

void checkVariant(const char *text, std::size_t size, unsigned long capacity) {
  XYLVariant v;
  const unsigned long length = static_cast<unsigned long>(size);
  int stored = v.setValue(text, length);
  const std::size_t expectedLength = length != 0 ? length : std::strlen(text);
  check(stored == (expectedLength != 0 ? 1 : 0));
  check(v.valueSize() == (stored ? expectedLength : 0));
  XYLVariant copy(v);
  check(copy == v);
  char buffer[64];
  if (capacity > sizeof buffer)
    capacity = sizeof buffer;
  int whole = v.getValue(buffer, capacity);
  if (capacity > 0) {
    const std::size_t written = strnlen(buffer, capacity);
    check(written < capacity);
    if (whole)
      check(std::strcmp(buffer, std::string(text, strnlen(text, expectedLength)).c_str()) == 0);
  }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  const XYLDBTypes &t = *XYLDBTypes::get();
  // The whole input as a NUL-terminated name (a zero byte inside ends it).
  std::string name(size > 0 ? reinterpret_cast<const char *>(data) : "", size);
  checkNames(t, name.c_str());
  int code = 0;
  if (size > 0)
    std::memcpy(&code, data, size < sizeof code ? size : sizeof code);
  checkCode(t, code);
  checkCode(t, static_cast<int>(size > 0 ? data[0] : 0) - 8);
  checkVariant(name.c_str(), size, size > 0 ? data[size - 1] : 0);
  checkVariant(name.c_str(), 0, static_cast<unsigned long>(size));
  return 0;
}
