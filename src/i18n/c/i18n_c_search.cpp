// SPDX-License-Identifier: Apache-2.0
// C interface, string family: search, offsets, order, iterators; the code
// unit buffers and the code point tests.
#include "i18n_c_frame.h"

#include <XYLCore/i18n/cpp/i18n_string.h>

using namespace i18n_c;

namespace {

// Backward searches: a negative start searches from the end.
template <typename Needle>
I18NStringOffset rfindFrom(const I18NString &text, const Needle &needle, I18NStringOffset start) {
  return start < 0 ? text.rfind(needle) : text.rfind(needle, start);
}
template <typename Needle>
I18NStringOffset lastOfFrom(const I18NString &text, const Needle &needle, I18NStringOffset start) {
  return start < 0 ? text.findLastOf(needle) : text.findLastOf(needle, start);
}
template <typename Needle>
I18NStringOffset lastNotOfFrom(const I18NString &text, const Needle &needle, I18NStringOffset start) {
  return start < 0 ? text.findLastNotOf(needle) : text.findLastNotOf(needle, start);
}

} // namespace

// ---- Search -----------------------------------------------------------------

I18NStringOffset i18nStringFindString(I18NStringHandle string, I18NStringHandle needle, I18NStringOffset start,
                                      I18NErrorCodes *error) {
  return guard(error, -1, [&]() { return obj(string).find(obj(needle), start); });
}

I18NStringOffset i18nStringFindCodePoint(I18NStringHandle string, unsigned int codePoint, I18NStringOffset start,
                                         I18NErrorCodes *error) {
  return guard(error, -1, [&]() { return obj(string).find(codePoint, start); });
}

I18NStringOffset i18nStringFindCodePoints(I18NStringHandle string, const unsigned int *codePoints,
                                          I18NStringOffset start, I18NErrorCodes *error) {
  return guard(error, -1, [&]() { return obj(string).find(need(codePoints), start); });
}

I18NStringOffset i18nStringRfindString(I18NStringHandle string, I18NStringHandle needle, I18NStringOffset start,
                                       I18NErrorCodes *error) {
  return guard(error, -1, [&]() { return rfindFrom(obj(string), obj(needle), start); });
}

I18NStringOffset i18nStringRfindCodePoint(I18NStringHandle string, unsigned int codePoint, I18NStringOffset start,
                                          I18NErrorCodes *error) {
  return guard(error, -1, [&]() { return rfindFrom(obj(string), codePoint, start); });
}

I18NStringOffset i18nStringRfindCodePoints(I18NStringHandle string, const unsigned int *codePoints,
                                           I18NStringOffset start, I18NErrorCodes *error) {
  return guard(error, -1, [&]() { return rfindFrom(obj(string), need(codePoints), start); });
}

I18NStringOffset i18nStringFindFirstOfString(I18NStringHandle string, I18NStringHandle set, I18NStringOffset start,
                                             I18NErrorCodes *error) {
  return guard(error, -1, [&]() { return obj(string).findFirstOf(obj(set), start); });
}

I18NStringOffset i18nStringFindFirstOfCodePoint(I18NStringHandle string, unsigned int codePoint, I18NStringOffset start,
                                                I18NErrorCodes *error) {
  return guard(error, -1, [&]() { return obj(string).findFirstOf(codePoint, start); });
}

I18NStringOffset i18nStringFindFirstOfCodePoints(I18NStringHandle string, const unsigned int *codePoints,
                                                 I18NStringOffset start, I18NErrorCodes *error) {
  return guard(error, -1, [&]() { return obj(string).findFirstOf(need(codePoints), start); });
}

I18NStringOffset i18nStringFindFirstNotOfString(I18NStringHandle string, I18NStringHandle set, I18NStringOffset start,
                                                I18NErrorCodes *error) {
  return guard(error, -1, [&]() { return obj(string).findFirstNotOf(obj(set), start); });
}

I18NStringOffset i18nStringFindFirstNotOfCodePoint(I18NStringHandle string, unsigned int codePoint,
                                                   I18NStringOffset start, I18NErrorCodes *error) {
  return guard(error, -1, [&]() { return obj(string).findFirstNotOf(codePoint, start); });
}

I18NStringOffset i18nStringFindFirstNotOfCodePoints(I18NStringHandle string, const unsigned int *codePoints,
                                                    I18NStringOffset start, I18NErrorCodes *error) {
  return guard(error, -1, [&]() { return obj(string).findFirstNotOf(need(codePoints), start); });
}

I18NStringOffset i18nStringFindLastOfString(I18NStringHandle string, I18NStringHandle set, I18NStringOffset start,
                                            I18NErrorCodes *error) {
  return guard(error, -1, [&]() { return lastOfFrom(obj(string), obj(set), start); });
}

I18NStringOffset i18nStringFindLastOfCodePoint(I18NStringHandle string, unsigned int codePoint, I18NStringOffset start,
                                               I18NErrorCodes *error) {
  return guard(error, -1, [&]() { return lastOfFrom(obj(string), codePoint, start); });
}

I18NStringOffset i18nStringFindLastOfCodePoints(I18NStringHandle string, const unsigned int *codePoints,
                                                I18NStringOffset start, I18NErrorCodes *error) {
  return guard(error, -1, [&]() { return lastOfFrom(obj(string), need(codePoints), start); });
}

I18NStringOffset i18nStringFindLastNotOfString(I18NStringHandle string, I18NStringHandle set, I18NStringOffset start,
                                               I18NErrorCodes *error) {
  return guard(error, -1, [&]() { return lastNotOfFrom(obj(string), obj(set), start); });
}

I18NStringOffset i18nStringFindLastNotOfCodePoint(I18NStringHandle string, unsigned int codePoint,
                                                  I18NStringOffset start, I18NErrorCodes *error) {
  return guard(error, -1, [&]() { return lastNotOfFrom(obj(string), codePoint, start); });
}

I18NStringOffset i18nStringFindLastNotOfCodePoints(I18NStringHandle string, const unsigned int *codePoints,
                                                   I18NStringOffset start, I18NErrorCodes *error) {
  return guard(error, -1, [&]() { return lastNotOfFrom(obj(string), need(codePoints), start); });
}

// ---- Offsets, order and iterators ------------------------------------------------

namespace {
void position(I18NStringIteratorHandle *iterator, const I18NStringIterator &at) {
  if (*need(iterator) == nullptr)
    *iterator = handleOf(new I18NStringIterator(at));
  else
    obj(*iterator) = at;
}
} // namespace

void i18nStringBegin(I18NStringHandle string, I18NStringIteratorHandle *iterator, I18NErrorCodes *error) {
  guard(error, [&]() { position(iterator, obj(string).begin()); });
}

void i18nStringEnd(I18NStringHandle string, I18NStringIteratorHandle *iterator, I18NErrorCodes *error) {
  guard(error, [&]() { position(iterator, obj(string).end()); });
}

I18NStringOffset i18nStringIncrementOffset(I18NStringHandle string, I18NStringOffset offset, I18NErrorCodes *error) {
  return guard(error, -1, [&]() { return obj(string).incrementOffset(offset); });
}

I18NStringOffset i18nStringDecrementOffset(I18NStringHandle string, I18NStringOffset offset, I18NErrorCodes *error) {
  return guard(error, -1, [&]() { return obj(string).decrementOffset(offset); });
}

int i18nStringCompare(I18NStringHandle string, I18NStringHandle other, I18NErrorCodes *error) {
  return guard(error, 0, [&]() { return obj(string).compare(obj(other)); });
}

unsigned int i18nStringIteratorAt(I18NStringIteratorHandle iterator, I18NErrorCodes *error) {
  return guard(error, 0u, [&]() { return static_cast<unsigned int>(*obj(iterator)); });
}

int i18nStringIteratorEqual(I18NStringIteratorHandle iterator, I18NStringIteratorHandle other, I18NErrorCodes *error) {
  return guard(error, 0, [&]() { return obj(iterator) == obj(other) ? 1 : 0; });
}

I18NStringOffset i18nStringIteratorNext(I18NStringIteratorHandle iterator, I18NErrorCodes *error) {
  return guard(error, -1, [&]() { return (++obj(iterator)).getOffset(); });
}

I18NStringOffset i18nStringIteratorPrevious(I18NStringIteratorHandle iterator, I18NErrorCodes *error) {
  return guard(error, -1, [&]() { return (--obj(iterator)).getOffset(); });
}

void i18nStringIteratorFree(I18NStringIteratorHandle *iterator, I18NErrorCodes *error) {
  destroy<I18NStringIterator>(iterator, error);
}

// ---- Code units -------------------------------------------------------------

namespace {
template <typename Op>
int growBuffer(unsigned short **target, const unsigned short *source, I18N_STRINGBUFFER_ALLOCATOR_CALLBACK allocator,
               void *context, I18NErrorCodes *error, Op op) {
  return guardLength(error, [&]() {
    void *block = *need(target);
    I18NErrorCodes code = op(block, source, allocator, context);
    if (code != I18N_SUCCESS)
      raiseCode(code);
    *target = static_cast<unsigned short *>(block);
    return I18NExternalBufferNumBytes(block);
  });
}
} // namespace

int i18nCodeUnitsConcat(unsigned short **target, const unsigned short *source,
                        I18N_STRINGBUFFER_ALLOCATOR_CALLBACK allocator, void *context, I18NErrorCodes *error) {
  return growBuffer(target, source, allocator, context, error,
                    [](void *&block, const void *from, I18N_STRINGBUFFER_ALLOCATOR_CALLBACK a, void *c) {
                      return I18NExternalBufferConcat(block, from, a, c);
                    });
}

int i18nCodeUnitsCopy(unsigned short **target, const unsigned short *source,
                      I18N_STRINGBUFFER_ALLOCATOR_CALLBACK allocator, void *context, I18NErrorCodes *error) {
  return growBuffer(target, source, allocator, context, error,
                    [](void *&block, const void *from, I18N_STRINGBUFFER_ALLOCATOR_CALLBACK a, void *c) {
                      return I18NExternalBufferCopy(block, from, a, c);
                    });
}

int i18nCodeUnitsLength(const unsigned short *units, I18NErrorCodes *error) {
  return guard(error, 0, [&]() { return I18NExternalBufferNumCodePoints(units); });
}

int i18nCodeUnitsSize(const unsigned short *units, I18NErrorCodes *error) {
  return guard(error, 0, [&]() { return I18NExternalBufferNumBytes(units); });
}

// ---- Code points ----------------------------------------------------------------

#define I18N_C_CODE_POINT_TEST(Name)                                                                                   \
  int i18nCodePoint##Name(unsigned int codePoint, I18NErrorCodes *error) {                                             \
    return guard(error, 0, [&]() { return I18NCodePoint##Name(codePoint) ? 1 : 0; });                                  \
  }

I18N_C_CODE_POINT_TEST(IsDigit)
I18N_C_CODE_POINT_TEST(IsLetter)
I18N_C_CODE_POINT_TEST(IsSpace)
I18N_C_CODE_POINT_TEST(IsWhitespace)
I18N_C_CODE_POINT_TEST(IsPunctuation)
I18N_C_CODE_POINT_TEST(IsAlphanumeric)
