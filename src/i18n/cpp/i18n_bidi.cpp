// SPDX-License-Identifier: Apache-2.0
// I18NBidi: logical to visual order through ICU's paragraph resolution.
//
// The text is kept as a zero-terminated UTF-16 copy because ICU's paragraph
// object refers to the caller's text instead of copying it. The visual
// string is assembled from the visual runs by hand rather than with ICU's
// own reordering, which would mirror brackets or drop controls depending on
// its options: here every code unit of the text appears exactly once.
#include <XYLCore/ExceptionHierarchy/XYLErrors.h>
#include <XYLCore/Utility/XYLUtMemory.h>
#include <XYLCore/i18n/cpp/i18n_bidi.h>
#include <XYLCore/i18n/cpp/i18n_string.h>

#include <cstring>
#include <unicode/ubidi.h>
#include <unicode/unistr.h>

namespace {

[[noreturn]] void raiseGeneral() { XYL_THROW(I18NRuntimeError(I18N_GENERAL_FAILURE, nullptr)); }

[[noreturn]] void raiseOutOfMemory() { XYL_THROW(XYLOutOfMemoryError(0L, nullptr)); }

UBiDi *openParagraph() {
  UBiDi *bidi = ubidi_open();
  if (bidi == nullptr)
    raiseGeneral();
  return bidi;
}

} // namespace

I18NBidi::I18NBidi() : m_pBidi(openParagraph()), m_pText(nullptr), m_textLength(0) {}

I18NBidi::I18NBidi(const I18NString &text) : m_pBidi(openParagraph()), m_pText(nullptr), m_textLength(0) {
  try {
    setText(text);
  } catch (...) {
    ubidi_close(m_pBidi);
    XYLUtMemory::free(m_pText);
    throw;
  }
}

I18NBidi::~I18NBidi() {
  ubidi_close(m_pBidi);
  XYLUtMemory::free(m_pText);
}

void I18NBidi::setText(const I18NString &text) {
  // ICU refers to the old buffer until the next ubidi_setPara; drop that
  // reference first so that a failure below leaves no dangling text behind.
  XYLUtMemory::free(m_pText);
  m_pText = nullptr;
  m_textLength = 0;
  const int units = text.unitLength();
  const std::size_t bytes = (static_cast<std::size_t>(units) + 1) * sizeof(unsigned short);
  unsigned short *buffer = static_cast<unsigned short *>(XYLUtMemory::malloc(bytes));
  if (buffer == nullptr)
    raiseOutOfMemory();
  if (units > 0)
    std::memcpy(buffer, text.getUTF16Buffer(), static_cast<std::size_t>(units) * sizeof(unsigned short));
  buffer[units] = 0;
  m_pText = buffer;
  m_textLength = units;
  UErrorCode status = U_ZERO_ERROR;
  ubidi_setPara(m_pBidi, reinterpret_cast<const UChar *>(m_pText), -1, UBIDI_DEFAULT_LTR, nullptr, &status);
  if (U_FAILURE(status))
    raiseGeneral();
}

I18NString I18NBidi::getLogicalString() const {
  if (m_pText == nullptr || m_textLength == 0)
    return I18NString();
  return I18NString(m_pText, m_textLength * static_cast<int>(sizeof(unsigned short)));
}

I18NString I18NBidi::getVisualString() const {
  if (m_pText == nullptr || m_textLength == 0)
    return I18NString();
  UErrorCode status = U_ZERO_ERROR;
  const int32_t runs = ubidi_countRuns(m_pBidi, &status);
  if (U_FAILURE(status))
    raiseGeneral();
  icu::UnicodeString visual;
  char16_t *out = visual.getBuffer(m_textLength);
  if (out == nullptr)
    raiseOutOfMemory();
  const char16_t *in = reinterpret_cast<const char16_t *>(m_pText);
  int32_t written = 0;
  for (int32_t run = 0; run < runs; ++run) {
    int32_t start = 0;
    int32_t length = 0;
    const UBiDiDirection direction = ubidi_getVisualRun(m_pBidi, run, &start, &length);
    if (start < 0 || length < 0 || start + length > m_textLength || written + length > m_textLength) {
      visual.releaseBuffer(written);
      raiseGeneral();
    }
    if (direction == UBIDI_RTL) {
      for (int32_t i = start + length - 1; i >= start; --i)
        out[written++] = in[i];
    } else {
      std::memcpy(out + written, in + start, static_cast<std::size_t>(length) * sizeof(char16_t));
      written += length;
    }
  }
  visual.releaseBuffer(written);
  return I18NString(visual);
}
