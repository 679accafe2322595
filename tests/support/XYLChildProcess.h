/* SPDX-License-Identifier: Apache-2.0 */
// Test-only helpers for tests that need a second process or a changed
// environment: run a body in a forked child (optionally without root's
// privileges) and collect its report, and set an environment variable for
// one scope.
#ifndef XYLCORE_TESTS_SUPPORT_XYLCHILDPROCESS_H
#define XYLCORE_TESTS_SUPPORT_XYLCHILDPROCESS_H

#include <cerrno>
#include <cstdlib>
#include <functional>
#include <grp.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

namespace xyltest {

// The user and group a root child drops to.
const uid_t kUnprivilegedId = 65534;

// Runs `body` in a forked child and returns its report: what the body
// returned (empty meaning success), or a description of how the child
// failed. With `unprivileged`, a child running as root first becomes user
// and group 65534 (nobody), so that permission checks apply to it.
inline std::string runInChild(const std::function<std::string()> &body, bool unprivileged = false) {
  int fds[2];
  if (::pipe(fds) != 0)
    return "pipe failed";
  const pid_t pid = ::fork();
  if (pid < 0)
    return "fork failed";
  if (pid == 0) {
    ::close(fds[0]);
    std::string report;
    if (unprivileged && ::geteuid() == 0 &&
        (::setgroups(0, nullptr) != 0 || ::setgid(kUnprivilegedId) != 0 || ::setuid(kUnprivilegedId) != 0))
      report = "could not drop privileges";
    if (report.empty()) {
      try {
        report = body();
      } catch (...) {
        report = "the child's body threw";
      }
    }
    const char *data = report.data();
    std::size_t left = report.size();
    while (left > 0) {
      const ssize_t n = ::write(fds[1], data, left);
      if (n <= 0)
        break;
      data += n;
      left -= static_cast<std::size_t>(n);
    }
    ::_exit(0);
  }
  ::close(fds[1]);
  std::string report;
  char buffer[256];
  for (;;) {
    const ssize_t n = ::read(fds[0], buffer, sizeof buffer);
    if (n > 0)
      report.append(buffer, static_cast<std::size_t>(n));
    else if (n == 0 || errno != EINTR)
      break;
  }
  ::close(fds[0]);
  int status = 0;
  while (::waitpid(pid, &status, 0) < 0 && errno == EINTR) {
  }
  if (!WIFEXITED(status) || WEXITSTATUS(status) != 0)
    report += " [child ended abnormally, status " + std::to_string(status) + "]";
  return report;
}

// Sets (or, with null, unsets) an environment variable for one scope.
class ScopedEnvironment {
public:
  ScopedEnvironment(const char *name, const char *value) : m_name(name) {
    const char *previous = std::getenv(name);
    m_hadValue = previous != nullptr;
    if (m_hadValue)
      m_previous = previous;
    if (value != nullptr)
      ::setenv(name, value, 1);
    else
      ::unsetenv(name);
  }
  ~ScopedEnvironment() {
    if (m_hadValue)
      ::setenv(m_name.c_str(), m_previous.c_str(), 1);
    else
      ::unsetenv(m_name.c_str());
  }

private:
  ScopedEnvironment(const ScopedEnvironment &) = delete;
  ScopedEnvironment &operator=(const ScopedEnvironment &) = delete;

  std::string m_name;
  std::string m_previous;
  bool m_hadValue;
};

} // namespace xyltest

#endif
