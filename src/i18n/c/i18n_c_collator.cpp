// SPDX-License-Identifier: Apache-2.0
// C interface: collators and bidirectional text.
#include "i18n_c_frame.h"

#include <XYLCore/i18n/cpp/i18n_bidi.h>
#include <XYLCore/i18n/cpp/i18n_collator.h>
#include <XYLCore/i18n/cpp/i18n_locale.h>
#include <XYLCore/i18n/cpp/i18n_string.h>

using namespace i18n_c;

// ---- Collator ---------------------------------------------------------------------

void i18nCollatorCreate(I18NCollatorHandle *collator, I18NLocaleHandle locale, I18NErrorCodes *error) {
  create(collator, error, [&]() { return locale == nullptr ? new I18NCollator() : new I18NCollator(obj(locale)); });
}

void i18nCollatorFree(I18NCollatorHandle *collator, I18NErrorCodes *error) { destroy<I18NCollator>(collator, error); }

int i18nCollatorCollateStrings(I18NCollatorHandle collator, I18NStringHandle string, I18NStringHandle other,
                               I18NErrorCodes *error) {
  return guard(error, 0, [&]() {
    const I18NCollator &c = obj(collator);
    const I18NString &a = obj(string);
    const I18NString &b = obj(other);
    return c.collate(a, b);
  });
}

int i18nCollatorCollateBuffers(I18NCollatorHandle collator, const unsigned short *units, const unsigned short *other,
                               I18NErrorCodes *error) {
  return guard(error, 0, [&]() {
    static const unsigned short kEmpty[1] = {0};
    return obj(collator).collate(units != nullptr ? units : kEmpty, other != nullptr ? other : kEmpty);
  });
}

int i18nCollatorGetLevel(I18NCollatorHandle collator, I18NErrorCodes *error) {
  return guard(error, -1, [&]() { return static_cast<int>(obj(collator).getLevel()); });
}

void i18nCollatorSetLevel(I18NCollatorHandle collator, int level, I18NErrorCodes *error) {
  guard(error, [&]() { obj(collator).setLevel(static_cast<I18NCollationLevels>(level)); });
}

// ---- Bidi ---------------------------------------------------------------------------

void i18nBidiCreate(I18NBidiHandle *bidi, I18NErrorCodes *error) {
  create(bidi, error, []() { return new I18NBidi(); });
}

void i18nBidiCreateFromString(I18NBidiHandle *bidi, I18NStringHandle text, I18NErrorCodes *error) {
  create(bidi, error, [&]() { return new I18NBidi(obj(text)); });
}

void i18nBidiSetText(I18NBidiHandle bidi, I18NStringHandle text, I18NErrorCodes *error) {
  guard(error, [&]() { obj(bidi).setText(obj(text)); });
}

void i18nBidiGetLogicalString(I18NBidiHandle bidi, I18NStringHandle target, I18NErrorCodes *error) {
  guard(error, [&]() {
    const I18NBidi &b = obj(bidi);
    I18NString &out = obj(target);
    out = b.getLogicalString();
  });
}

void i18nBidiGetVisualString(I18NBidiHandle bidi, I18NStringHandle target, I18NErrorCodes *error) {
  guard(error, [&]() {
    const I18NBidi &b = obj(bidi);
    I18NString &out = obj(target);
    out = b.getVisualString();
  });
}

void i18nBidiFree(I18NBidiHandle *bidi, I18NErrorCodes *error) { destroy<I18NBidi>(bidi, error); }
