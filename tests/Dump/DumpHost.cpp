// Dies, or has itself dumped, in one of many ways: DumpHost WAY FILE CONTENTS. Prints what it knows of itself.
#include <errno.h>
#include <fcntl.h>
#include <linux/audit.h>
#include <pthread.h>
#include <sched.h>
#include <signal.h>
#include <stddef.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <map>
#include <string>
#include <thread>

#include "Platform/Dump.h"
#include "Platform/Linux/FaultContext.h"
#include "Support/FaultSite.h"
#include "Support/SystemCallFilter.h"

namespace Platform = Oxa::Core::Platform;

std::atomic<long> g_allocations{0};  // since the program started; only where they can be counted

namespace {

constexpr int iTIME = 60000;
constexpr int iCANNOT = 77;

const char* s_file = nullptr;
unsigned s_contents = 0;

int DumpNow(const _EXCEPTION_POINTERS* pointers = nullptr) {
  return Platform::WriteDump(s_file, pointers, s_contents, nullptr, nullptr, iTIME);
}

// --- Deaths. What a debugger is to find is in these functions and their variables.

struct Reading {
  int m_iChannel;
  double m_value;
  const char* m_sName;
};

void OnFault(int /*signal*/, siginfo_t* info, void* full) {
  CONTEXT context;
  Platform::FillContext(context, *static_cast<ucontext_t*>(full));
  _EXCEPTION_RECORD record = {};
  record.m_signal = *info;
  record.m_uPlace = context.m_registers[CONTEXT::iPLACE];
  record.m_uTouched = reinterpret_cast<std::uint64_t>(info->si_addr);
  const _EXCEPTION_POINTERS pointers = {&record, &context};
  const int code = DumpNow(&pointers);
  _exit(code == 0 ? 3 : 4);
}

void TakeFaults() {
  static char stack[65536];
  stack_t alternate = {};
  alternate.ss_sp = stack;
  alternate.ss_size = sizeof stack;
  sigaltstack(&alternate, nullptr);
  struct sigaction action = {};
  action.sa_sigaction = &OnFault;
  action.sa_flags = SA_SIGINFO | SA_ONSTACK | SA_NODEFER;
  for (const int signal : {SIGSEGV, SIGBUS, SIGFPE, SIGILL}) sigaction(signal, &action, nullptr);
}

OXA_FAULT_SITE int MeasureAndDie(int* where, int count) {
  Reading reading = {7, 3.25, "pressure"};
  int doubled = 2 * count;
  *where = doubled + reading.m_iChannel;
  return reading.m_iChannel + doubled;
}

__attribute__((noinline)) int RunSeries(int depth) {
  if (depth == 0) return MeasureAndDie(nullptr, 21);
  return RunSeries(depth - 1) + 1;
}

__attribute__((noinline)) int OverflowTheStack(int depth) {
  volatile char room[512];
  room[0] = static_cast<char>(depth);
  return OverflowTheStack(depth + 1) + room[0];
}

// As an exception that nothing catches is told of: the place is that of the raise.
__attribute__((noinline)) int RaiseUncaught(int number) {
  CONTEXT context;
  Platform::CaptureContext(context);
  _EXCEPTION_RECORD record = {};
  record.m_signal.si_signo = SIGABRT;
  record.m_uPlace = context.m_registers[CONTEXT::iPLACE];
  const _EXCEPTION_POINTERS pointers = {&record, &context};
  _exit(DumpNow(&pointers) == 0 ? 3 : 4);
  return number;
}

int OnMain() {
  TakeFaults();
  return RunSeries(3);
}

int OnThread() {
  TakeFaults();
  std::thread([] {
    static char stack[65536];
    stack_t alternate = {};
    alternate.ss_sp = stack;
    alternate.ss_size = sizeof stack;
    sigaltstack(&alternate, nullptr);
    RunSeries(2);
  }).join();
  return 5;
}

int ByOverflow() {
  TakeFaults();
  return OverflowTheStack(0);
}

OXA_FAULT_SITE int ThroughNull() {
  TakeFaults();
  int (*volatile function)() = nullptr;
  return function() + 1;
}

int ByException() { return RaiseUncaught(1); }

// --- Trouble

std::string StartThread() {
  static std::atomic<int> id{0};
  std::thread([] {
    id = static_cast<int>(syscall(SYS_gettid));
    for (;;) std::this_thread::sleep_for(std::chrono::seconds(100));
  }).detach();
  while (id == 0) std::this_thread::sleep_for(std::chrono::milliseconds(1));
  // Let it come to its sleep.
  std::this_thread::sleep_for(std::chrono::milliseconds(50));
  return std::to_string(id);
}

void BecomeNobody() {
  constexpr unsigned uNOBODY = 65534;
  if (getuid() == 0 && (setgid(uNOBODY) != 0 || setuid(uNOBODY) != 0)) _exit(iCANNOT);
}

int WithoutTracing() {
  BecomeNobody();
  const std::string thread = StartThread();
  prctl(PR_SET_DUMPABLE, 0);
  const int code = DumpNow();
  std::printf("%s\n", thread.c_str());
  return code;
}

int Sandboxed(int number, unsigned action) {
  const std::string thread = StartThread();
  if (!TestSupport::AnswerSystemCall(number, action)) _exit(iCANNOT);
  constexpr int iBEFORE = 12345;
  constexpr int iCHANGED = 7;
  errno = iBEFORE;
  const int dumped = DumpNow();
  const int code = errno == iBEFORE ? dumped : iCHANGED;
  std::printf("%s\n", thread.c_str());
  return code;
}

// The first thread is held by the system, which doesn't let it stop before its child has gone.
int WithAThreadThatDoesNotStop() {
  static std::atomic<int> id{0};
  static std::atomic<int> child{0};
  std::thread([] {
    id = static_cast<int>(syscall(SYS_gettid));
    const auto wait = [](void*) -> int {
      child = static_cast<int>(syscall(SYS_getpid));
      for (;;) syscall(SYS_pause);
    };
    static char stack[16384];
    clone(wait, stack + sizeof stack, CLONE_VM | CLONE_VFORK | SIGCHLD, nullptr);
  }).detach();
  while (child == 0) std::this_thread::sleep_for(std::chrono::milliseconds(1));
  const int code = Platform::WriteDump(s_file, nullptr, s_contents, nullptr, nullptr, 2000);
  kill(child, SIGKILL);
  std::printf("%d\n", id.load());
  return code;
}

int WithoutProc() {
  const std::string thread = StartThread();
  if (unshare(CLONE_NEWNS) != 0 || mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
      mount("none", "/proc", "tmpfs", 0, nullptr) != 0)
    return iCANNOT;
  const int code = DumpNow();
  std::printf("%s\n", thread.c_str());
  return code;
}

int OnFullDisk() {
  // A small file system of its own, where that is allowed; the file is copied out of it by what is left in it.
  const std::string folder = std::string(s_file) + ".folder";
  if (mkdir(folder.c_str(), 0700) != 0 || unshare(CLONE_NEWNS) != 0 ||
      mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
      mount("none", folder.c_str(), "tmpfs", 0, "size=64k") != 0)
    return iCANNOT;
  const std::string inside = folder + "/full.dmp";
  const int code = Platform::WriteDump(inside.c_str(), nullptr, s_contents, nullptr, nullptr, iTIME);
  static char bytes[1 << 20];
  const int from = open(inside.c_str(), O_RDONLY);
  const long size = read(from, bytes, sizeof bytes);
  const int to = open(s_file, O_WRONLY | O_CREAT | O_TRUNC, 0600);
  if (size < 0 || write(to, bytes, static_cast<std::size_t>(size)) != size) return 6;
  return code;
}

int AtFileLimit() {
  const rlimit limit = {100000, 100000};
  setrlimit(RLIMIT_FSIZE, &limit);
  return DumpNow();
}

int WithoutDescriptors() {
  const rlimit limit = {8, 8};
  setrlimit(RLIMIT_NOFILE, &limit);
  while (dup(0) >= 0) {
  }
  return DumpNow();
}

// Threads come and go all the time.
int AmongTheDying() {
  static std::atomic<bool> end{false};
  std::thread starter([] {
    while (!end) {
      std::thread([] {}).detach();
      std::thread([] { std::this_thread::sleep_for(std::chrono::microseconds(200)); }).detach();
    }
  });
  int code = 0;
  for (int i = 0; i < 10; ++i) code |= DumpNow();
  end = true;
  starter.join();
  return code;
}

int CountingAllocations() {
  StartThread();
  const long before = g_allocations;
  const int code = DumpNow();
  std::printf("%ld\n", g_allocations - before);
  return code;
}

// The program's file is another one by now.
int Replaced() {
  char path[4096] = {};
  if (readlink("/proc/self/exe", path, sizeof path - 1) < 0) return 6;
  if (unlink(path) != 0) return 6;
  const int to = open(path, O_WRONLY | O_CREAT | O_TRUNC, 0700);
  if (write(to, "another", 7) != 7) return 6;
  return DumpNow();
}

const std::map<std::string, std::function<int()>> s_ways = {
    {"main", &OnMain},
    {"thread", &OnThread},
    {"overflow", &ByOverflow},
    {"null", &ThroughNull},
    {"exception", &ByException},
    {"no-tracing", &WithoutTracing},
    {"ptrace-fails", [] { return Sandboxed(SYS_ptrace, SECCOMP_RET_ERRNO | EPERM); }},
    {"ptrace-kills", [] { return Sandboxed(SYS_ptrace, SECCOMP_RET_KILL_PROCESS); }},
    {"clone-fails", [] { return Sandboxed(SYS_clone, SECCOMP_RET_ERRNO | EPERM); }},
    {"reading-fails", [] { return Sandboxed(SYS_process_vm_readv, SECCOMP_RET_ERRNO | ENOSYS); }},
    {"thread-does-not-stop", &WithAThreadThatDoesNotStop},
    {"no-proc", &WithoutProc},
    {"full-disk", &OnFullDisk},
    {"file-limit", &AtFileLimit},
    {"no-descriptors", &WithoutDescriptors},
    {"dying-threads", &AmongTheDying},
    {"allocations", &CountingAllocations},
    {"replaced", &Replaced},
};

}  // namespace

int main(int argc, char** argv) {
  if (argc != 4 || s_ways.count(argv[1]) == 0) return 2;
  const rlimit none = {0, 0};
  setrlimit(RLIMIT_CORE, &none);
  s_file = argv[2];
  s_contents = static_cast<unsigned>(std::strtoul(argv[3], nullptr, 0));
  const int code = s_ways.at(argv[1])();
  std::fflush(stdout);
  _exit(code);
}

// Every allocation passes here; the sanitizers have their own.
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
extern "C" {
void* __libc_malloc(size_t size);
void* __libc_calloc(size_t nmemb, size_t size);
void* __libc_realloc(void* ptr, size_t size);
void* malloc(size_t size) {
  ++g_allocations;
  return __libc_malloc(size);
}
void* calloc(size_t nmemb, size_t size) {
  ++g_allocations;
  return __libc_calloc(nmemb, size);
}
void* realloc(void* ptr, size_t size) {
  ++g_allocations;
  return __libc_realloc(ptr, size);
}
}
#endif
