#include "Platform/Machine.h"

#include <errno.h>
#include <limits.h>
#include <pthread.h>
#include <string.h>
#include <sys/stat.h>
#include <sys/utsname.h>
#include <unistd.h>

#include <atomic>
#include <new>

#include "Platform/Linux/Distribution.h"

namespace Oxa::Core::Platform {

namespace {

constexpr char sEXECUTABLE_LINK[] = "/proc/self/exe";
constexpr char sDELETED_MARK[] = " (deleted)";
constexpr const char* sDISTRIBUTION_FILES[] = {"/etc/os-release", "/usr/lib/os-release"};

constexpr size_t uTHREAD_NAME_SIZE = 16;  // with the closing 0

// 0: not asked yet. Asking is a system call, and every context of an alert wants to know.
std::atomic<unsigned long> s_uProcessId{0};

void ForgetProcessId() { s_uProcessId.store(0, std::memory_order_relaxed); }

[[gnu::constructor]] void WatchForks() { pthread_atfork(nullptr, nullptr, &ForgetProcessId); }

// Runs what gives an error code; running out of memory is one too.
template <class Operation>
int WithoutThrowing(const Operation& operation) noexcept {
  try {
    return operation();
  } catch (const std::bad_alloc&) {
    return ENOMEM;
  } catch (const std::exception&) {
    return EINVAL;
  }
}

int ReadLink(const char* link, std::string& target) {
  std::string buffer(256, '\0');
  while (true) {
    const ssize_t length = readlink(link, &buffer[0], buffer.size());
    if (length < 0) return errno;
    if (static_cast<size_t>(length) < buffer.size()) {
      buffer.resize(static_cast<size_t>(length));
      target.swap(buffer);
      return 0;
    }
    buffer.resize(buffer.size() * 2);
  }
}

bool EndsWith(const std::string& text, const char* end) {
  const size_t length = strlen(end);
  return text.size() >= length && text.compare(text.size() - length, length, end) == 0;
}

// The kernel adds a mark to the name of a program whose file was replaced while it runs. A file that really
// bears such a name is left alone.
void DropDeletedMark(std::string& path) {
  struct stat status;
  if (EndsWith(path, sDELETED_MARK) && stat(path.c_str(), &status) != 0)
    path.resize(path.size() - strlen(sDELETED_MARK));
}

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
    const int code = ReadLink(sEXECUTABLE_LINK, path);
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

bool SystemErrorText(int code, std::string& text) noexcept {
  const char* description = strerrordesc_np(code);
  if (description == nullptr) return false;
  return WithoutThrowing([&] {
           text = description;
           return 0;
         }) == 0;
}

}  // namespace Oxa::Core::Platform
