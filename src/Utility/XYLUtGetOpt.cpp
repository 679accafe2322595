// SPDX-License-Identifier: Apache-2.0
#include <XYLCore/Utility/XYLUtGetOpt.h>

#include <cstdio>
#include <cstring>

XYLUtGetOpt::XYLUtGetOpt() : m_pOptArg(nullptr), m_iOptInd(1), m_iOptErr(1), m_pScan(nullptr), m_errorMsg{} {}

int XYLUtGetOpt::getOpt(int argc, char **argv, const char *options) {
  bool inCluster = false;
  if (m_pScan != nullptr) {
    ++m_pScan;
    inCluster = *m_pScan != 0;
  }
  if (!inCluster) {
    // The index also advances per letter of a cluster, so it may have passed
    // argc; nothing at or beyond argc is read.
    if (m_iOptInd >= argc) {
      m_pScan = nullptr;
      return -1;
    }
    char *argument = argv[m_iOptInd];
    if (argument == nullptr || argument[0] != '-' || argument[1] == 0) {
      m_pScan = nullptr;
      return -1;
    }
    m_pScan = argument + 1;
    if (argument[1] == '-') {
      ++m_iOptInd;
      m_pScan = nullptr;
      return -1;
    }
  }

  ++m_iOptInd;
  char letter = *m_pScan;
  const char *found = std::strchr(options, letter);
  if (found == nullptr) {
    error(argc > 0 ? argv[0] : nullptr, 0, letter);
    return 0;
  }
  if (found[1] == ':') {
    if (m_pScan[1] != 0) {
      m_pOptArg = m_pScan + 1;
    } else if (m_iOptInd >= argc) {
      error(argc > 0 ? argv[0] : nullptr, 1, options[0]);
      m_pScan = nullptr;
      return 0;
    } else {
      m_pOptArg = argv[m_iOptInd++];
    }
    m_pScan = nullptr;
  }
  return static_cast<unsigned char>(letter);
}

void XYLUtGetOpt::error(const char *program, int kind, char c) {
  const char *format = kind == 0 ? "\n%s : '%c' not a valid option\n" : "\n%s : '%c' option requires an argument\n";
  std::snprintf(m_errorMsg, sizeof m_errorMsg, format, program != nullptr ? program : "(null)", c);
  if (m_iOptErr != 0)
    std::fputs(m_errorMsg, stderr);
}
