// SPDX-License-Identifier: Apache-2.0
#include <XYLCore/Types/XYLVariant.h>

#include "XYLOperatorNewFailure.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <functional>
#include <limits>
#include <string>

namespace {

typedef std::function<void(XYLVariant &)> Setter;

Setter none() {
  return [](XYLVariant &) {};
}
Setter asLong(long value) {
  return [value](XYLVariant &v) { v.setValue(value); };
}
Setter asULong(unsigned long value) {
  return [value](XYLVariant &v) { v.setValue(value); };
}
Setter asDouble(double value) {
  return [value](XYLVariant &v) { v.setValue(value); };
}
Setter asPointer(void *value) {
  return [value](XYLVariant &v) { v.setValue(value); };
}
Setter asString(const char *text, unsigned long length = 0) {
  return [text, length](XYLVariant &v) { v.setValue(text, length); };
}
Setter asType(int type) {
  return [type](XYLVariant &v) { v.setVarType(static_cast<XYLVariant::XYLVariantType>(type)); };
}

void *address(unsigned long long bits) { return reinterpret_cast<void *>(static_cast<std::uintptr_t>(bits)); }

TEST(XYLVariantTest, ValueSizesTable) {
  const unsigned long expected[6] = {0, 4, 4, 8, 0, 4};
  for (int type = 0; type < 6; ++type)
    EXPECT_EQ(expected[type], XYLVariant::valueSizes[type]) << "type " << type;
}

TEST(XYLVariantTest, DefaultIsEmpty) {
  XYLVariant v;
  EXPECT_EQ(XYLVariant::varTypeUnknown, v.getVarType());
  EXPECT_EQ(0u, v.valueSize());
}

struct StoreCase {
  const char *label;
  Setter set;
  int type;
  unsigned long size;
};

// Type and value size after each kind of setValue; integers and pointers
// report 32-bit sizes, strings their length.
TEST(XYLVariantTest, SetValueGivesTypeAndSize) {
  const StoreCase cases[] = {
      {"long", asLong(-7), 1, 4},
      {"long beyond 32 bits", asLong(0x123456789L), 1, 4},
      {"ulong", asULong(7), 2, 4},
      {"double", asDouble(2.5), 3, 8},
      {"pointer", asPointer(address(0x7f0012345678ULL)), 5, 4},
      {"null pointer", asPointer(nullptr), 5, 4},
      {"string", asString("hello"), 4, 5},
      {"string with length", asString("abcdef", 3), 4, 3},
      {"length beyond the text", asString("abc", 10), 4, 10},
      {"zero inside the length", asString("ab\0cd", 5), 4, 5},
      {"null text", asString(nullptr), 4, 0},
      {"null text with length", asString(nullptr, 8), 4, 0},
      {"empty text", asString(""), 4, 0},
      {"empty text with length", asString("", 4), 4, 4},
  };
  for (const StoreCase &c : cases) {
    SCOPED_TRACE(c.label);
    XYLVariant v;
    v.setValue("something to release first");
    c.set(v);
    EXPECT_EQ(c.type, v.getVarType());
    EXPECT_EQ(c.size, v.valueSize());
  }
}

struct StringCase {
  const char *label;
  const char *text;
  unsigned long length;
  int result;
  const char *stored; // null: the value must be null
};

TEST(XYLVariantTest, SetStringResultsAndStoredText) {
  const StringCase cases[] = {
      {"whole text", "hello", 0, 1, "hello"},
      {"prefix", "hello", 2, 1, "he"},
      {"exact length", "hello", 5, 1, "hello"},
      {"copy stops at a zero byte", "ab\0cd", 5, 1, "ab"},
      {"length beyond the text", "abc", 10, 1, "abc"},
      {"null text", nullptr, 0, 1, nullptr},
      {"empty text is not stored", "", 0, 0, nullptr},
      // A given length is copied as strncpy would: an empty text gives an
      // empty, zero-filled string.
      {"empty text with length", "", 3, 1, ""},
  };
  for (const StringCase &c : cases) {
    SCOPED_TRACE(c.label);
    XYLVariant v;
    EXPECT_EQ(c.result, v.setValue(c.text, c.length));
    EXPECT_EQ(XYLVariant::varTypeString, v.getVarType());
    char *value = reinterpret_cast<char *>(&v); // anything but null
    EXPECT_EQ(1, v.getValue(value));
    if (c.stored == nullptr) {
      EXPECT_EQ(nullptr, value);
    } else {
      ASSERT_NE(nullptr, value);
      EXPECT_STREQ(c.stored, value);
      EXPECT_NE(c.text, value) << "the variant keeps its own copy";
    }
  }
}

struct TextCase {
  const char *label;
  Setter set;
  unsigned long capacity;
  const char *expected;
  int result;
};

// The text form of every kind, whole and truncated. The buffer is checked
// byte by byte: the text, then zero padding up to the capacity (strncpy),
// and nothing written beyond the capacity.
TEST(XYLVariantTest, TextFormsAndTruncation) {
  static_assert(sizeof(void *) == 8, "the pointer rows assume 64-bit addresses");
  const TextCase cases[] = {
      {"unknown", none(), 16, "<unknown>", 1},
      {"unknown just fits", none(), 10, "<unknown>", 1},
      {"unknown truncated", none(), 9, "<unknown", 0},
      {"invalid type", asType(6), 16, "<invalid>", 1},
      {"negative type", asType(-3), 16, "<invalid>", 1},
      {"long", asLong(12345), 16, "12345", 1},
      {"long just fits", asLong(12345), 6, "12345", 1},
      {"long one short", asLong(12345), 5, "1234", 0},
      {"long into four bytes", asLong(12345), 4, "123", 0},
      {"long into one byte", asLong(12345), 1, "", 0},
      {"negative long", asLong(-42), 16, "-42", 1},
      {"smallest 32-bit long", asLong(-2147483647L - 1), 16, "-2147483648", 1},
      {"long keeps 32 bits", asLong(0x100000005L), 16, "5", 1},
      {"long 0xFFFFFFFF is -1", asLong(0xFFFFFFFFL), 16, "-1", 1},
      {"ulong", asULong(4294967295UL), 16, "4294967295", 1},
      {"ulong keeps 32 bits", asULong(4294967296UL), 16, "0", 1},
      {"ulong low word", asULong(0x1234567890UL), 16, "878082192", 1},
      {"double", asDouble(1.5), 16, "1.500000e+00", 1},
      {"negative double", asDouble(-2.5e-10), 16, "-2.500000e-10", 1},
      {"large double", asDouble(1e308), 16, "1.000000e+308", 1},
      {"zero double", asDouble(0.0), 16, "0.000000e+00", 1},
      {"infinite double", asDouble(std::numeric_limits<double>::infinity()), 16, "inf", 1},
      {"double truncated", asDouble(1.5), 5, "1.50", 0},
      {"pointer", asPointer(address(0xdeadbeefULL)), 16, "deadbeef", 1},
      {"null pointer", asPointer(nullptr), 16, "0", 1},
      {"pointer above 4 GB", asPointer(address(0x7f00deadbeefULL)), 16, "7f00deadbeef", 1},
      {"pointer truncated", asPointer(address(0xabcdefULL)), 4, "abc", 0},
      {"string", asString("hello"), 16, "hello", 1},
      {"string just fits", asString("hello"), 6, "hello", 1},
      {"string one short", asString("hello"), 5, "hell", 0},
      {"string prefix", asString("abcdef", 3), 4, "abc", 1},
      {"null string", asString(nullptr), 16, "", 1},
      {"null string into one byte", asString(nullptr), 1, "", 1},
      {"empty string", asString(""), 16, "", 1},
  };
  for (const TextCase &c : cases) {
    SCOPED_TRACE(c.label);
    XYLVariant v;
    c.set(v);
    char buffer[32];
    std::memset(buffer, 'X', sizeof buffer);
    EXPECT_EQ(c.result, v.getValue(buffer, c.capacity));
    EXPECT_STREQ(c.expected, buffer);
    const std::size_t length = std::strlen(c.expected);
    // The padding check applies where strncpy ran (not for empty sources).
    const bool padded = length > 0 || c.result == 0;
    for (std::size_t i = length; padded && i < c.capacity; ++i)
      EXPECT_EQ('\0', buffer[i]) << "padding at " << i;
    for (std::size_t i = c.capacity; i < sizeof buffer; ++i)
      EXPECT_EQ('X', buffer[i]) << "written beyond the capacity at " << i;
  }
}

TEST(XYLVariantTest, TextIntoNoBufferWritesNothing) {
  XYLVariant v;
  v.setValue(12345L);
  char buffer[4] = {'X', 'X', 'X', 'X'};
  EXPECT_EQ(0, v.getValue(buffer, 0));
  EXPECT_EQ('X', buffer[0]);
  EXPECT_EQ(0, v.getValue(static_cast<char *>(nullptr), 16));
  XYLVariant s;
  s.setValue(static_cast<const char *>(nullptr));
  EXPECT_EQ(0, s.getValue(buffer, 0));
  EXPECT_EQ('X', buffer[0]);
}

// Each typed getValue succeeds only for its own kind and leaves the argument
// alone otherwise; getValue(char*&) clears it instead.
TEST(XYLVariantTest, TypedGettersMatchOnlyTheirKind) {
  int target = 0;
  const Setter setters[6] = {none(), asLong(-9), asULong(9), asDouble(0.25), asString("text"), asPointer(&target)};
  for (int type = 0; type < 6; ++type) {
    SCOPED_TRACE(type);
    XYLVariant v;
    setters[type](v);
    ASSERT_EQ(type, v.getVarType());

    long l = 77;
    EXPECT_EQ(type == 1, v.getValue(l) == 1);
    EXPECT_EQ(type == 1 ? -9L : 77L, l);
    unsigned long ul = 77;
    EXPECT_EQ(type == 2, v.getValue(ul) == 1);
    EXPECT_EQ(type == 2 ? 9UL : 77UL, ul);
    double d = 77.0;
    EXPECT_EQ(type == 3, v.getValue(d) == 1);
    EXPECT_EQ(type == 3 ? 0.25 : 77.0, d);
    void *p = &l;
    EXPECT_EQ(type == 5, v.getValue(p) == 1);
    EXPECT_EQ(type == 5 ? static_cast<void *>(&target) : static_cast<void *>(&l), p);
    char *s = reinterpret_cast<char *>(&l);
    EXPECT_EQ(type == 4, v.getValue(s) == 1);
    if (type == 4) {
      ASSERT_NE(nullptr, s);
      EXPECT_STREQ("text", s);
    } else {
      EXPECT_EQ(nullptr, s);
    }
  }
}

struct IntegerCase {
  long in;
  long out;
};

TEST(XYLVariantTest, IntegersRoundTripThrough32Bits) {
  const IntegerCase longs[] = {
      {0, 0},
      {5, 5},
      {-5, -5},
      {2147483647L, 2147483647L},
      {-2147483647L - 1, -2147483647L - 1},
      {0x80000000L, -2147483647L - 1},
      {0x1FFFFFFFFL, -1},
      {-4294967297L, -1},
      {0x100000000L, 0},
  };
  for (const IntegerCase &c : longs) {
    XYLVariant v;
    v.setValue(c.in);
    long out = 1234;
    EXPECT_EQ(1, v.getValue(out));
    EXPECT_EQ(c.out, out) << "in " << c.in;
  }
  const unsigned long ulongs[][2] = {
      {0, 0}, {4294967295UL, 4294967295UL}, {0x1FFFFFFFFUL, 4294967295UL}, {0x100000007UL, 7}};
  for (const auto &c : ulongs) {
    XYLVariant v;
    v.setValue(c[0]);
    unsigned long out = 1234;
    EXPECT_EQ(1, v.getValue(out));
    EXPECT_EQ(c[1], out) << "in " << c[0];
  }
}

struct EqualityCase {
  const char *label;
  Setter left;
  Setter right;
  bool equal;
};

TEST(XYLVariantTest, EqualityByTypeSizeAndValue) {
  int a = 0, b = 0;
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const EqualityCase cases[] = {
      {"both unknown", none(), none(), true},
      {"same long", asLong(5), asLong(5), true},
      {"different long", asLong(5), asLong(6), false},
      {"longs equal in 32 bits", asLong(5), asLong(0x100000005L), true},
      {"long against ulong", asLong(5), asULong(5), false},
      {"same ulong", asULong(0xFFFFFFFFUL), asULong(0xFFFFFFFFUL), true},
      {"unknown against long 0", none(), asLong(0), false},
      {"same double", asDouble(0.5), asDouble(0.5), true},
      {"zero and negative zero", asDouble(0.0), asDouble(-0.0), true},
      {"NaN never equals", asDouble(nan), asDouble(nan), false},
      {"different double", asDouble(0.5), asDouble(0.25), false},
      {"same pointer", asPointer(&a), asPointer(&a), true},
      {"different pointer", asPointer(&a), asPointer(&b), false},
      {"pointers differing above 32 bits", asPointer(address(0x100000010ULL)), asPointer(address(0x200000010ULL)),
       false},
      {"same text, two buffers", asString("abc"), asString("abc"), true},
      {"different text", asString("abc"), asString("abd"), false},
      {"different length", asString("abc"), asString("abcd"), false},
      {"null against text", asString(nullptr), asString("abc"), false},
      {"null against null", asString(nullptr), asString(nullptr), true},
      {"null against empty", asString(nullptr), asString(""), true},
      {"equal up to the terminator", asString("ab\0cd", 5), asString("ab\0xy", 5), true},
      {"same length, text differs after terminator", asString("ab", 5), asString("ab\0zz", 5), true},
      {"string against unknown", asString("abc"), none(), false},
      {"two invalid types", asType(9), asType(9), false},
  };
  for (const EqualityCase &c : cases) {
    SCOPED_TRACE(c.label);
    XYLVariant left, right;
    c.left(left);
    c.right(right);
    EXPECT_EQ(c.equal, left == right);
    EXPECT_EQ(c.equal, right == left);
    EXPECT_EQ(!c.equal, left != right);
    // An object always equals itself, NaN and invalid types included.
    EXPECT_TRUE(left == left);
    EXPECT_FALSE(left != left);
  }
}

TEST(XYLVariantTest, CopiesOwnTheirStrings) {
  XYLVariant original;
  original.setValue("shared text");
  XYLVariant copied(original);
  XYLVariant assigned;
  assigned.setValue("to be released");
  assigned = original;
  char *o = nullptr, *c = nullptr, *a = nullptr;
  original.getValue(o);
  copied.getValue(c);
  assigned.getValue(a);
  EXPECT_NE(o, c);
  EXPECT_NE(o, a);
  EXPECT_TRUE(copied == original);
  EXPECT_TRUE(assigned == original);
  EXPECT_EQ(11u, assigned.valueSize());

  original.setValue("changed");
  EXPECT_STREQ("shared text", c);
  EXPECT_STREQ("shared text", a);
  EXPECT_FALSE(copied == original);
}

TEST(XYLVariantTest, CopyKeepsEveryKind) {
  int target = 0;
  const Setter setters[] = {none(),
                            asLong(-3),
                            asULong(3),
                            asDouble(-1.25),
                            asPointer(&target),
                            asString("x"),
                            asString("ab\0cd", 5),
                            asString(nullptr),
                            asString("")};
  for (const Setter &set : setters) {
    XYLVariant original;
    set(original);
    XYLVariant copied(original);
    EXPECT_EQ(original.getVarType(), copied.getVarType());
    EXPECT_EQ(original.valueSize(), copied.valueSize());
    EXPECT_TRUE(copied == original);
  }
}

TEST(XYLVariantTest, SelfAssignmentKeepsTheString) {
  XYLVariant v;
  v.setValue("kept");
  char *before = nullptr;
  v.getValue(before);
  XYLVariant &alias = v;
  v = alias;
  char *after = nullptr;
  EXPECT_EQ(1, v.getValue(after));
  EXPECT_EQ(before, after);
  EXPECT_STREQ("kept", after);
}

TEST(XYLVariantTest, SettingAnotherKindReleasesTheString) {
  // The sanitizer build reports the string as leaked if it is not released.
  XYLVariant v;
  v.setValue("first");
  v.setValue(1.0);
  char *s = reinterpret_cast<char *>(&v);
  EXPECT_EQ(0, v.getValue(s));
  EXPECT_EQ(nullptr, s);
  v.setValue("second");
  v.setValue("third");
  EXPECT_EQ(1, v.getValue(s));
  EXPECT_STREQ("third", s);
}

// A string copy that cannot be allocated leaves a variant of type 0; the
// source of an assignment is untouched.
TEST(XYLVariantTest, AllocationFailureLeavesTypeUnknown) {
  {
    XYLVariant v;
    v.setValue("previous");
    xyltest::OperatorNewFailure failure(1);
    EXPECT_EQ(0, v.setValue("abc"));
    EXPECT_TRUE(failure.fired());
    EXPECT_EQ(XYLVariant::varTypeUnknown, v.getVarType());
    EXPECT_EQ(0u, v.valueSize());
  }
  XYLVariant source;
  source.setValue("source text");
  {
    XYLVariant target;
    target.setValue("target text");
    xyltest::OperatorNewFailure failure(1);
    target = source;
    EXPECT_TRUE(failure.fired());
    EXPECT_EQ(XYLVariant::varTypeUnknown, target.getVarType());
    EXPECT_EQ(0u, target.valueSize());
    char buffer[16];
    EXPECT_EQ(1, target.getValue(buffer, sizeof buffer));
    EXPECT_STREQ("<unknown>", buffer);
  }
  {
    xyltest::OperatorNewFailure failure(1);
    XYLVariant copied(source);
    EXPECT_TRUE(failure.fired());
    EXPECT_EQ(XYLVariant::varTypeUnknown, copied.getVarType());
  }
  char *s = nullptr;
  EXPECT_EQ(1, source.getValue(s));
  EXPECT_STREQ("source text", s);
  EXPECT_EQ(11u, source.valueSize());
  // Nothing is left armed: the next copy succeeds.
  XYLVariant again(source);
  EXPECT_TRUE(again == source);
}

} // namespace
