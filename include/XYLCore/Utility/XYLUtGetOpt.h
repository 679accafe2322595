/* SPDX-License-Identifier: Apache-2.0
 * XYLUtGetOpt.h - a scanner for single-letter command-line options.
 *
 * Options are letters after a "-"; several may share one argument ("-ab").
 * In the option string a letter followed by ':' takes an argument, either
 * the rest of its own argument ("-bvalue") or the next argument ("-b value").
 * The scan ends at the first argument that is not an option (not consumed),
 * at a lone "-" (not consumed) or at "--" (consumed).
 *
 * Index rule: the index of the next argument advances once per option letter
 * processed, also inside a cluster, so after "-ab" it has advanced by two.
 * Callers that mix clusters with further arguments must allow for it.
 *
 * Errors: an unknown letter, or a letter missing its argument, returns 0 and
 * stores a message (see getErrorMsg); when printing is on (the default) the
 * message is also written to standard error. A missing argument is reported
 * with the first letter of the option string, not the option's own letter.
 *
 * Ownership: the option argument points into argv. Nothing is allocated and
 * nothing throws. Thread safety: an object belongs to one thread at a time.
 */
#ifndef XYLCORE_UTILITY_XYLUTGETOPT_H
#define XYLCORE_UTILITY_XYLUTGETOPT_H

#include <XYLCore/XYLExport.h>

class XYL_API XYLUtGetOpt {
public:
  XYLUtGetOpt();

  // The next option letter, 0 for an error, or -1 when the options end.
  // argv needs argc entries; entries at and beyond argc are never read.
  int getOpt(int argc, char **argv, const char *options);
  // The text of the last error ("" before any).
  const char *getErrorMsg() const { return m_errorMsg; }

  // The argument of the last option that took one (null before any).
  char *getOptArg() const { return m_pOptArg; }
  // The index of the next argument to scan (1 at first).
  int getOptInd() const { return m_iOptInd; }
  void setOptInd(int index) { m_iOptInd = index; }
  // Non-zero (the default) writes error messages to standard error too.
  int getOptErr() const { return m_iOptErr; }
  void setOptErr(int print) { m_iOptErr = print; }

private:
  // Kind 0: not a valid option; kind 1: option requires an argument.
  void error(const char *program, int kind, char c);

  char *m_pOptArg;
  int m_iOptInd;
  int m_iOptErr;
  char *m_pScan;
  char m_errorMsg[1024];
};

#endif // XYLCORE_UTILITY_XYLUTGETOPT_H
