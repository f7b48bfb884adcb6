// A program that runs beside the test, until it ends or is killed.
#ifndef OXACORE_TESTS_SUPPORT_BACKGROUNDCHILD_H
#define OXACORE_TESTS_SUPPORT_BACKGROUNDCHILD_H

#include <unistd.h>

#include <chrono>
#include <csignal>
#include <string>
#include <vector>

#include "Support/ChildProcess.h"

namespace TestSupport {

/// Starts `command` (program first). Whatever still runs at the end of this object is killed.
class BackgroundChild {
 public:
  explicit BackgroundChild(const std::vector<std::string>& command) {
    std::vector<char*> arguments;
    arguments.reserve(command.size() + 1);
    for (const std::string& argument : command) arguments.push_back(const_cast<char*>(argument.c_str()));
    arguments.push_back(nullptr);
    m_child = ::fork();
    if (m_child == 0) {
      ::execv(arguments[0], arguments.data());
      ::_exit(127);
    }
  }
  BackgroundChild(const BackgroundChild&) = delete;
  BackgroundChild& operator=(const BackgroundChild&) = delete;
  ~BackgroundChild() { Kill(); }

  /// 0 once it was waited for.
  pid_t Id() const { return m_child; }

  /// Ends it without giving it a word, and waits until it is gone.
  void Kill() {
    if (m_child > 0) ::kill(m_child, SIGKILL);
    Await();
  }

  /// Waits until it has ended by itself, 60 seconds at most. Exit status, or minus the signal; the same as in
  /// ChildResult.
  int Await() {
    if (m_child > 0) m_iStatus = AwaitChild(m_child, std::chrono::seconds(60));
    m_child = 0;
    return m_iStatus;
  }

 private:
  pid_t m_child;
  int m_iStatus = -1;
};

}  // namespace TestSupport

#endif
