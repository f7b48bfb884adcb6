#include "Platform/Machine.h"

#include <errno.h>
#include <limits.h>
#include <stdio.h>
#include <string.h>
#include <sys/stat.h>
#include <sys/utsname.h>
#include <unistd.h>

#include <memory>
#include <new>

namespace Oxa::Core::Platform {

namespace {

constexpr char sEXECUTABLE_LINK[] = "/proc/self/exe";
constexpr char sDELETED_MARK[] = " (deleted)";
constexpr const char* sDISTRIBUTION_FILES[] = {"/etc/os-release", "/usr/lib/os-release"};
constexpr char sDISTRIBUTION_KEY[] = "PRETTY_NAME=";

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

// The value of a shell assignment, without its quotes and escapes.
std::string Unquote(const char* value) {
  std::string text;
  char quote = 0;
  for (const char* at = value; *at != 0 && *at != '\n'; ++at) {
    if (quote == 0 && (*at == '"' || *at == '\'')) {
      quote = *at;
    } else if (*at == quote) {
      quote = 0;
    } else {
      if (*at == '\\' && quote != '\'' && at[1] != 0 && at[1] != '\n') ++at;
      text += *at;
    }
  }
  return text;
}

std::string ReadDistribution(FILE* file) {
  const size_t keyLength = strlen(sDISTRIBUTION_KEY);
  char line[1024];
  while (fgets(line, sizeof line, file) != nullptr)
    if (strncmp(line, sDISTRIBUTION_KEY, keyLength) == 0) return Unquote(line + keyLength);
  return std::string();
}

std::string Distribution() {
  for (const char* path : sDISTRIBUTION_FILES) {
    const std::unique_ptr<FILE, int (*)(FILE*)> file(fopen(path, "re"), &fclose);
    if (file) return ReadDistribution(file.get());
  }
  return std::string();
}

}  // namespace

unsigned long ProcessId() noexcept { return static_cast<unsigned long>(getpid()); }

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
