#include <errno.h>
#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include "Platform/Faults.h"
#include "Platform/Kill.h"
#include "Platform/Linux/WithoutThrowing.h"
#include "Platform/Processes.h"
#include "Platform/Threads.h"

namespace Oxa::Core::Platform {

namespace {

constexpr char sNOWHERE[] = "/dev/null";
constexpr char sPROGRAM_FOLDERS[] = "PATH";
constexpr char cBETWEEN_FOLDERS = ':';
constexpr timespec PAUSE = {0, 2000000};

// What is open in the new process: nothing to read, nowhere to write, our error output.
class OpenFiles {
 public:
  OpenFiles() noexcept : m_iCode(posix_spawn_file_actions_init(&m_actions)) {
    m_bMade = m_iCode == 0;
    Add([this] { return posix_spawn_file_actions_addopen(&m_actions, STDIN_FILENO, sNOWHERE, O_RDONLY, 0); });
    Add([this] {
      return posix_spawn_file_actions_addopen(&m_actions, STDOUT_FILENO, sNOWHERE, O_WRONLY, 0);
    });
    Add([this] { return posix_spawn_file_actions_addclosefrom_np(&m_actions, STDERR_FILENO + 1); });
  }
  OpenFiles(const OpenFiles&) = delete;
  OpenFiles& operator=(const OpenFiles&) = delete;
  ~OpenFiles() {
    if (m_bMade) posix_spawn_file_actions_destroy(&m_actions);
  }

  int Code() const noexcept { return m_iCode; }
  const posix_spawn_file_actions_t* Get() const noexcept { return &m_actions; }

 private:
  template <class Action>
  void Add(const Action& action) noexcept {
    if (m_iCode == 0) m_iCode = action();
  }

  posix_spawn_file_actions_t m_actions;
  int m_iCode;
  bool m_bMade;
};

// How it hears signals: all of them, as the system does by itself.
class Signals {
 public:
  Signals() noexcept : m_iCode(posix_spawnattr_init(&m_attributes)) {
    m_bMade = m_iCode == 0;
    if (!m_bMade) return;
    sigset_t all, none;
    sigfillset(&all);
    sigemptyset(&none);
    posix_spawnattr_setsigdefault(&m_attributes, &all);
    posix_spawnattr_setsigmask(&m_attributes, &none);
    m_iCode = posix_spawnattr_setflags(&m_attributes, POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK);
  }
  Signals(const Signals&) = delete;
  Signals& operator=(const Signals&) = delete;
  ~Signals() {
    if (m_bMade) posix_spawnattr_destroy(&m_attributes);
  }

  int Code() const noexcept { return m_iCode; }
  const posix_spawnattr_t* Get() const noexcept { return &m_attributes; }

 private:
  posix_spawnattr_t m_attributes;
  int m_iCode;
  bool m_bMade;
};

int Spawn(const std::vector<std::string>& command, pid_t& id) {
  std::vector<char*> arguments;
  arguments.reserve(command.size() + 1);
  for (const std::string& argument : command) arguments.push_back(const_cast<char*>(argument.c_str()));
  arguments.push_back(nullptr);
  const OpenFiles files;
  const Signals signals;
  if (files.Code() != 0) return files.Code();
  if (signals.Code() != 0) return signals.Code();
  return posix_spawn(&id, arguments[0], files.Get(), signals.Get(), arguments.data(), environ);
}

}  // namespace

int ProgramFolders(std::vector<std::string>& folders) noexcept {
  return WithoutThrowing([&] {
    std::vector<std::string> found;
    const char* const value = getenv(sPROGRAM_FOLDERS);
    std::string rest = value != nullptr ? value : "";
    while (!rest.empty()) {
      const std::string folder = rest.substr(0, rest.find(cBETWEEN_FOLDERS));
      if (folder[0] == '/') found.push_back(folder);
      rest.erase(0, folder.size() + 1);
    }
    folders.swap(found);
    return 0;
  });
}

int StartedProcess::Start(const std::vector<std::string>& command) noexcept {
  if (command.empty() || command.front().empty()) return EINVAL;
  int ignored;
  if (Wait(0, ignored) == ETIMEDOUT) return EBUSY;
  const HoldKill alive;
  const HoldCancellation hold;
  return WithoutThrowing([&] {
    pid_t id;
    const int code = Spawn(command, id);
    if (code == 0) m_iId = id;
    return code;
  });
}

// Whether there is nothing more to wait for.
bool StartedProcess::Collect(bool wait, int& code, int& status) noexcept {
  int how = 0;
  const pid_t id = waitpid(m_iId, &how, wait ? 0 : WNOHANG);
  if (id == 0 || (id < 0 && errno == EINTR)) return false;
  code = id < 0 ? errno : 0;
  if (code == 0) status = WIFEXITED(how) ? WEXITSTATUS(how) : -WTERMSIG(how);
  m_iId = 0;
  return true;
}

int StartedProcess::Wait(long milliseconds, int& status) noexcept {
  const HoldCancellation hold;
  const Deadline deadline = Deadline::InMilliseconds(milliseconds);
  int code = ECHILD;
  while (m_iId != 0) {
    const bool last = deadline.HasPassed();
    if (Collect(false, code, status)) break;
    if (last) return ETIMEDOUT;
    nanosleep(&PAUSE, nullptr);
  }
  return code;
}

void StartedProcess::Kill() noexcept {
  const HoldCancellation hold;
  int code, status;
  // An id that nobody has waited for can't stand for another process.
  if (m_iId == 0 || Collect(false, code, status)) return;
  kill(m_iId, SIGKILL);
  while (!Collect(true, code, status)) {
  }
}

}  // namespace Oxa::Core::Platform
