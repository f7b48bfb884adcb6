#include "Process.h"

#include "Orphans.h"
#include "Signals.h"

#include <cerrno>
#include <csignal>
#include <cstring>

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace OxaTest {

namespace {

const char* const sPROGRAM = "/proc/self/exe";
const char* const sNULL_DEVICE = "/dev/null";

std::vector<char*> Pointers(const std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  for (const std::string& text : texts) pointers.push_back(const_cast<char*>(text.c_str()));
  pointers.push_back(nullptr);
  return pointers;
}

// Between fork and exec: nothing but what signal handlers may do.
[[noreturn]] void Become(char* const* arguments, int output, int pipe, pid_t runner) {
  ::setpgid(0, 0);
  ::prctl(PR_SET_PDEATHSIG, SIGKILL);
  if (::getppid() != runner) ::_exit(127);  // gone in the meantime
  const int input = ::open(sNULL_DEVICE, O_RDONLY);
  ::dup2(input, STDIN_FILENO);
  if (input > STDERR_FILENO) ::close(input);
  ::dup2(output, STDOUT_FILENO);
  ::dup2(output, STDERR_FILENO);
  ::fcntl(pipe, F_SETFD, 0);
  GiveBackSignals();
  ::execv(sPROGRAM, arguments);
  ::_exit(127);
}

}  // namespace

Process::Process(std::vector<std::string> arguments, int output) {
  int ends[2];
  if (::pipe2(ends, O_CLOEXEC) != 0) {
    m_sComplaint = std::strerror(errno);
    return;
  }
  m_iPipe = ends[0];
  ::fcntl(m_iPipe, F_SETFL, O_NONBLOCK);
  arguments.insert(arguments.begin(), "oxatest");
  arguments.insert(arguments.begin() + 1, "--child-pipe=" + std::to_string(ends[1]));
  Start(arguments, output, ends[1]);
  ::close(ends[1]);
}

void Process::Start(const std::vector<std::string>& arguments, int output, int pipe) {
  const std::vector<char*> pointers = Pointers(arguments);
  const pid_t runner = ::getpid();
  const HeldSignals held;  // none is noted by the copy of this program
  m_id = ::fork();
  if (m_id == 0) Become(pointers.data(), output, pipe, runner);
  if (m_id < 0)
    m_sComplaint = std::strerror(errno);
  else
    ::setpgid(m_id, m_id);  // both do it, so that it is done for both
}

Process::~Process() {
  if (m_id > 0) {
    Kill();
    Collect();
  }
  if (m_iPipe >= 0) ::close(m_iPipe);
}

bool Process::Read(std::string& bytes) {
  char block[65536];
  for (int blocks = 0; blocks < 16 && m_iPipe >= 0; ++blocks) {
    const ssize_t count = ::read(m_iPipe, block, sizeof block);
    if (count > 0) {
      bytes.append(block, static_cast<std::size_t>(count));
    } else if (count < 0 && errno == EINTR) {
      continue;
    } else {
      if (count < 0 && errno == EAGAIN) return true;
      ::close(m_iPipe);
      m_iPipe = -1;
    }
  }
  return m_iPipe < 0;
}

// Orphans that ended are waited for on the way: they would take up numbers.
bool Process::HasEnded() const {
  for (;;) {
    siginfo_t info{};
    if (::waitid(P_ALL, 0, &info, WEXITED | WNOHANG | WNOWAIT) != 0 || info.si_pid == m_id) return true;
    if (info.si_pid == 0) return false;
    ::waitpid(info.si_pid, nullptr, WNOHANG);
  }
}

void Process::Ask() const { ::kill(-m_id, SIGTERM); }

void Process::Kill() const {
  ::kill(-m_id, SIGKILL);
  ::kill(m_id, SIGKILL);  // it may have left its group
}

// The number stays the group's as long as its first member hasn't been waited for.
int Process::Collect() {
  siginfo_t info{};
  while (::waitid(P_PID, static_cast<id_t>(m_id), &info, WEXITED | WNOWAIT) != 0 && errno == EINTR) continue;
  Kill();
  int status = 0;
  while (::waitpid(m_id, &status, 0) < 0 && errno == EINTR) continue;
  m_id = -1;
  EndOrphans();
  return status;
}

std::string TextOfStatus(int status) {
  if (WIFSIGNALED(status)) {
    const int signal = WTERMSIG(status);
    const char* const name = ::strsignal(signal);
    return "ended by signal " + std::to_string(signal) + " (" + (name == nullptr ? "?" : name) + ')';
  }
  return "ended with exit status " + std::to_string(WEXITSTATUS(status));
}

}  // namespace OxaTest
