/* SPDX-License-Identifier: Apache-2.0
 * i18n_bidi.h - I18NBidi, the visual order of a bidirectional text.
 *
 * setText takes a string in logical (memory) order and lets ICU resolve its
 * embedding levels with the paragraph direction taken from the first strong
 * character (left-to-right when there is none). getVisualString then lays
 * the text out run by run in visual order: left-to-right runs as they
 * stand, right-to-left runs reversed code unit by code unit. Characters are
 * only moved: paired characters such as brackets are not mirrored and
 * directional controls are kept, so the visual string has exactly the units
 * of the logical one. (A surrogate pair inside a right-to-left run comes out
 * with its two units swapped.)
 *
 * Ownership: the object owns its ICU paragraph handle and a zero-terminated
 * UTF-16 copy of the current text. Not copyable.
 * Thread safety: one object must not be used by two threads at once.
 * Throws: I18NRuntimeError -7 (no message) when ICU cannot open the handle
 * or resolve the text; XYLOutOfMemoryError when the copy of the text cannot
 * be allocated. Raise sites record "i18n/cpp/i18n_bidi".
 */
#ifndef XYLCORE_I18N_CPP_I18N_BIDI_H
#define XYLCORE_I18N_CPP_I18N_BIDI_H

#include <XYLCore/XYLExport.h>

struct UBiDi;

class I18NString;

class XYL_API I18NBidi {
public:
  // No text yet: both strings are empty.
  I18NBidi();
  // Opens and sets the text.
  explicit I18NBidi(const I18NString &text);
  I18NBidi(const I18NBidi &) = delete;
  I18NBidi &operator=(const I18NBidi &) = delete;
  virtual ~I18NBidi();

  // Replaces the text and resolves it.
  void setText(const I18NString &text);
  // The current text in logical order (empty when none was set).
  I18NString getLogicalString() const;
  // The current text in visual order (empty when none was set).
  I18NString getVisualString() const;

private:
  UBiDi *m_pBidi;
  unsigned short *m_pText; // zero-terminated UTF-16, null until setText
  int m_textLength;        // units in m_pText
};

#endif // XYLCORE_I18N_CPP_I18N_BIDI_H
