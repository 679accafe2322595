/* SPDX-License-Identifier: Apache-2.0
 * XYLUtStrTok.h - a re-entrant tokenizer over a constant text.
 *
 * A token is a maximal run of characters that are not delimiters; runs of
 * delimiters never produce empty tokens, and a text of delimiters only has
 * none. The text is never modified.
 *
 * nextToken is the re-entrant step: the caller keeps the position and the
 * length between calls, starting with a null position. The returned token is
 * not terminated (it ends after `length` characters). After the last token
 * the position is null again, so one more call starts over from the front.
 *
 * The object form copies each token into a buffer of its own and terminates
 * it there. A null delimiter set means tab, line feed, vertical tab, form
 * feed, carriage return and space.
 *
 * Ownership: the text and the delimiter sets are not copied; they must
 * outlive the scan. The token buffer belongs to the object; the pointer
 * next() returns is valid until the next call.
 * Thread safety: the static functions are re-entrant; an object belongs to
 * one thread at a time.
 * Failure: the constructor throws XYLOutOfMemoryError when the token buffer
 * cannot be allocated; nothing else throws.
 */
#ifndef XYLCORE_UTILITY_XYLUTSTRTOK_H
#define XYLCORE_UTILITY_XYLUTSTRTOK_H

#include <XYLCore/XYLExport.h>

class XYL_API XYLUtStrTok {
public:
  // Scans `text` (may be null: no tokens) with the default delimiter set
  // `delimiters` (null: white space).
  XYLUtStrTok(const char *text, const char *delimiters = nullptr);
  virtual ~XYLUtStrTok();

  // One step: returns the start of the next token and sets `length`, or
  // returns null at the end (position null, length 0), also for a null text.
  static const char *nextToken(const char *text, const char *&position, long &length, const char *delimiters);
  // The number of tokens nextToken yields for the text (0 for a null text).
  static long countTokens(const char *text, const char *delimiters);

  // The next token, terminated, in the object's buffer; null at the end.
  // `delimiters` null means the set given to the constructor.
  char *next(const char *delimiters = nullptr);

protected:
  // Restarts on a new text and default delimiter set; the buffer grows to
  // strlen(text) + 1 if it is smaller. A null text calls clear().
  void set(const char *text, const char *delimiters);
  // Restarts the scan of the current text.
  void reset();
  // Forgets the text and releases the token buffer.
  void clear();

private:
  XYLUtStrTok(const XYLUtStrTok &) = delete;
  XYLUtStrTok &operator=(const XYLUtStrTok &) = delete;

  const char *m_pText;
  const char *m_pPosition;
  long m_lLength;
  char *m_pToken;
  long m_lTokenCapacity;
  const char *m_pDelimiters;
};

#endif // XYLCORE_UTILITY_XYLUTSTRTOK_H
