#include "Platform/Machine.h"

#include <errno.h>
#include <fcntl.h>
#include <langinfo.h>
#include <limits.h>
#include <pthread.h>
#include <string.h>
#include <sys/utsname.h>
#include <unistd.h>

#include <atomic>
#include <cfenv>

#include "Platform/Linux/Distribution.h"
#include "Platform/Linux/ProcFile.h"
#include "Platform/Linux/WithoutThrowing.h"

namespace Oxa::Core::Platform {

namespace {

constexpr char sEXECUTABLE_LINK[] = "/self/exe";
constexpr const char* sDISTRIBUTION_FILES[] = {"/etc/os-release", "/usr/lib/os-release"};

constexpr size_t uTHREAD_NAME_SIZE = 16;  // with the closing 0

// 0: not asked yet. Asking is a system call, and every context of an alert wants to know.
std::atomic<unsigned long> s_uProcessId{0};

void ForgetProcessId() { s_uProcessId.store(0, std::memory_order_relaxed); }

[[gnu::constructor]] void WatchForks() { pthread_atfork(nullptr, nullptr, &ForgetProcessId); }

std::string Distribution() {
  std::string name;
  for (const char* file : sDISTRIBUTION_FILES)
    if (ReadDistribution(file, name)) break;
  return name;
}

}  // namespace

unsigned long ProcessId() noexcept {
  unsigned long id = s_uProcessId.load(std::memory_order_relaxed);
  if (id != 0) return id;
  id = static_cast<unsigned long>(getpid());
  s_uProcessId.store(id, std::memory_order_relaxed);
  return id;
}

void TellThreadName(const char* name) noexcept {
  char shortened[uTHREAD_NAME_SIZE] = {};
  strncpy(shortened, name, sizeof shortened - 1);
  pthread_setname_np(pthread_self(), shortened);
}

int ExecutablePath(std::string& path) noexcept {
  return WithoutThrowing([&] {
    const int code = ReadLink(AT_FDCWD, (std::string(ProcFolder()) + sEXECUTABLE_LINK).c_str(), path);
    if (code == 0) DropDeletedMark(path);
    return code;
  });
}

int HostName(std::string& name) noexcept {
  return WithoutThrowing([&] {
    char buffer[HOST_NAME_MAX + 1];
    if (gethostname(buffer, sizeof buffer) != 0) return errno;
    buffer[HOST_NAME_MAX] = 0;
    name = buffer;
    return 0;
  });
}

int OperatingSystemName(std::string& name) noexcept {
  return WithoutThrowing([&] {
    utsname facts;
    if (uname(&facts) != 0) return errno;
    const std::string distribution = Distribution();
    std::string text = std::string(facts.sysname) + " " + facts.release;
    if (!distribution.empty()) text += " (" + distribution + ")";
    name.swap(text);
    return 0;
  });
}

unsigned long NumberOfProcessors() noexcept {
  const long online = sysconf(_SC_NPROCESSORS_ONLN);
  return online > 0 ? static_cast<unsigned long>(online) : 1;
}

bool NumbersArePlain() noexcept {
  const char* const point = nl_langinfo(RADIXCHAR);
  return point[0] == '.' && point[1] == 0 && std::fegetround() == FE_TONEAREST;
}

bool SystemErrorText(int code, std::string& text) noexcept {
  const char* description = strerrordesc_np(code);
  if (description == nullptr) return false;
  return WithoutThrowing([&] {
           text = description;
           return 0;
         }) == 0;
}

}  // namespace Oxa::Core::Platform
