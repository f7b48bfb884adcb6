// Runs a program as a child and keeps what it printed and how it ended.
#ifndef OXACORE_TESTS_SUPPORT_CHILDPROCESS_H
#define OXACORE_TESTS_SUPPORT_CHILDPROCESS_H

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <thread>
#include <vector>

namespace TestSupport {

struct ChildResult {
  int m_iStatus = -1;     ///< exit status, or minus the signal, or -1000 when the limit ran out
  std::string m_sOutput;  ///< standard output
  std::string m_sError;   ///< standard error
};

/// A file that is gone when this object is.
class TemporaryFile {
 public:
  TemporaryFile()
      : m_sName((std::filesystem::temp_directory_path() / "oxacoreXXXXXX").string()),
        m_iHandle(::mkstemp(m_sName.data())) {}
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;
  ~TemporaryFile() {
    ::close(m_iHandle);
    std::remove(m_sName.c_str());
  }

  int Handle() const { return m_iHandle; }
  const std::string& Name() const { return m_sName; }
  std::string Content() const {
    std::ifstream file(m_sName, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  }

 private:
  std::string m_sName;  // first: the other one's maker writes into it
  int m_iHandle;
};

inline int AwaitChild(pid_t child, std::chrono::seconds limit) {
  const auto deadline = std::chrono::steady_clock::now() + limit;
  int status = 0;
  while (::waitpid(child, &status, WNOHANG) == 0) {
    if (std::chrono::steady_clock::now() > deadline) {
      ::kill(child, SIGKILL);
      ::waitpid(child, &status, 0);
      return -1000;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(2));
  }
  return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

/// Runs `command` (program first) with `environment` entries such as "TZ=UTC" added; ended after `limit`.
inline ChildResult RunChild(const std::vector<std::string>& command,
                            const std::vector<std::string>& environment = {},
                            std::chrono::seconds limit = std::chrono::seconds(60)) {
  const TemporaryFile output;
  const TemporaryFile error;
  std::vector<char*> arguments;
  arguments.reserve(command.size() + 1);
  for (const std::string& argument : command) arguments.push_back(const_cast<char*>(argument.c_str()));
  arguments.push_back(nullptr);
  const pid_t child = ::fork();
  if (child == 0) {
    for (const std::string& entry : environment) ::putenv(const_cast<char*>(entry.c_str()));
    ::dup2(output.Handle(), STDOUT_FILENO);
    ::dup2(error.Handle(), STDERR_FILENO);
    ::execv(arguments[0], arguments.data());
    ::_exit(127);
  }
  ChildResult result;
  result.m_iStatus = AwaitChild(child, limit);
  result.m_sOutput = output.Content();
  result.m_sError = error.Content();
  return result;
}

}  // namespace TestSupport

#endif
