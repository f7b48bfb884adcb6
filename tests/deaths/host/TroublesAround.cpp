// What the system withholds: folders, space, /proc, system calls, handles. Each takes effect before the library is
// used, and nothing here touches more than this process.
#include <fcntl.h>
#include <grp.h>
#include <linux/audit.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sched.h>
#include <signal.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <iterator>
#include <string>
#include <system_error>

#include "Options.h"
#include "Troubles.h"

namespace Deaths {

namespace {

constexpr int iCANNOT = 77;  // the machine doesn't let us have this trouble
const char* const sREADY = "DEATHS_READY";

[[noreturn]] void GiveUp(const char* why) {
  std::perror(why);
  ::_exit(iCANNOT);
}

// Begins anew, for troubles that a program is to be born into. Gives whether this is the new one.
bool IsReborn() { return std::getenv(sREADY) != nullptr; }
[[noreturn]] void BeReborn() {
  ::setenv(sREADY, "1", 1);
  ::execv(Arguments()[0], Arguments());
  GiveUp("execv");
}

// A file system of its own for this process, where nothing that is mounted concerns anybody else.
bool OwnMounts() {
  if (::unshare(CLONE_NEWNS) != 0 && ::unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0) return false;
  return ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0;
}

// Refuses the system calls of `numbers` with `error`.
template <std::size_t count>
void Forbid(const unsigned (&numbers)[count], unsigned error) {
  sock_filter program[count + 3];
  const auto jump = [](unsigned value, std::size_t to) {
    return sock_filter BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, value, static_cast<unsigned char>(to), 0);
  };
  program[0] = BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr));
  for (std::size_t index = 0; index < count; ++index)
    program[index + 1] = jump(numbers[index], count - index);
  program[count + 1] = BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW);
  program[count + 2] = BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | error);
  const sock_fprog filter = {count + 3, program};
  if (::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0 ||
      ::prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &filter) != 0)
    GiveUp("seccomp");
}

void ForbidToTrace() { Forbid({SYS_ptrace}, EPERM); }
void ForbidToLook() { Forbid({SYS_ptrace, SYS_process_vm_readv}, EPERM); }
void ForbidThreads() { Forbid({SYS_clone, SYS_clone3, SYS_fork, SYS_vfork}, EAGAIN); }

void HideProc() {
  if (IsReborn()) return;
  if (!OwnMounts() || ::mount("none", "/proc", "tmpfs", MS_RDONLY, nullptr) != 0) GiveUp("/proc");
  BeReborn();
}

// Not even root may write where this one mustn't.
void LosePrivileges() {
  if (IsReborn() || ::getuid() != 0) return;
  constexpr unsigned uNOBODY = 65534;
  if (::setgroups(0, nullptr) != 0 || ::setgid(uNOBODY) != 0 || ::setuid(uNOBODY) != 0) GiveUp("nobody");
  BeReborn();
}

[[noreturn]] void EndAs(pid_t child) {
  int status = 0;
  ::waitpid(child, &status, 0);
  if (WIFSIGNALED(status)) ::raise(WTERMSIG(status));
  ::_exit(WEXITSTATUS(status));
}

// What is written there is gone with this process: another one dies, and this one brings its files to light.
void LeaveRoom(const char* size) {
  namespace fs = std::filesystem;
  if (IsReborn()) return;
  const int outside = ::open(Option("base"), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (!OwnMounts() || ::mount("none", Option("base"), "tmpfs", 0, size) != 0) GiveUp("a full disk");
  const pid_t child = ::fork();
  if (child == 0) {
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    BeReborn();
  }
  siginfo_t ended;
  ::waitid(P_PID, static_cast<id_t>(child), &ended, WEXITED | WNOWAIT);
  std::error_code code;
  fs::copy(Option("base"), "/proc/self/fd/" + std::to_string(outside), fs::copy_options::recursive, code);
  if (code) GiveUp("no files of a full disk");
  EndAs(child);
}

void FillTheDisk() { LeaveRoom("size=16k"); }
void LeaveOnePage() { LeaveRoom("size=4k"); }  // enough for first words

void LimitFiles() {
  constexpr rlim_t uSMALL = 8192;
  const rlimit limits = {uSMALL, uSMALL};
  ::signal(SIGXFSZ, SIG_IGN);
  if (::setrlimit(RLIMIT_FSIZE, &limits) != 0) GiveUp("RLIMIT_FSIZE");
}

void UseUpHandles() {
  constexpr rlim_t uFEW = 64;
  const rlimit limits = {uFEW, uFEW};
  ::setrlimit(RLIMIT_NOFILE, &limits);
  while (::open("/dev/null", O_RDONLY) >= 0) continue;
}

// The program's file on disk is another one than the one that runs.
void ReplaceTheProgram() {
  const std::string program = Arguments()[0];
  const std::string other = program + ".new";
  std::FILE* const file = std::fopen(other.c_str(), "wb");
  const std::string text(100000, 'x');
  std::fwrite(text.data(), 1, text.size(), file);
  std::fclose(file);
  if (::rename(other.c_str(), program.c_str()) != 0) GiveUp("rename");
}

void RemoveTheProgram() { ::unlink(Arguments()[0]); }

void BlockSignals() {
  sigset_t all;
  ::sigfillset(&all);
  ::sigprocmask(SIG_SETMASK, &all, nullptr);
}

// What reads symbols is damaged beyond loading.
void SpoilTheSymbolReader() {
  if (IsReborn()) return;
  const std::string program = Arguments()[0];
  const std::string folder = program.substr(0, program.rfind('/'));
  std::fclose(std::fopen((folder + "/libdw.so.1").c_str(), "wb"));
  ::setenv("LD_LIBRARY_PATH", folder.c_str(), 1);
  BeReborn();
}

constexpr NamedTrouble sTROUBLES[] = {
    {"no-trace", &ForbidToTrace},          {"no-look", &ForbidToLook},
    {"no-threads", &ForbidThreads},        {"no-proc", &HideProc},
    {"no-privileges", &LosePrivileges},    {"full-disk", &FillTheDisk},
    {"one-page", &LeaveOnePage},           {"small-files", &LimitFiles},
    {"no-handles", &UseUpHandles},         {"replaced", &ReplaceTheProgram},
    {"removed", &RemoveTheProgram},        {"blocked", &BlockSignals},
    {"no-symbols", &SpoilTheSymbolReader},
};

}  // namespace

Troubles TroublesAround() { return {sTROUBLES, std::size(sTROUBLES)}; }

}  // namespace Deaths
