#include "Platform/Files.h"

#include <errno.h>
#include <fcntl.h>
#include <stdio.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>

#include "Platform/Linux/FileName.h"

namespace Oxa::Core::Platform {

namespace {

constexpr mode_t uFOLDER_MODE = 0777;

// Calls `operation` with the name; it gives a negative number and sets errno when it fails.
template <class Operation>
int WithName(const char* name, const Operation& operation) noexcept {
  const FileName converted(name);
  if (converted.Code() != 0) return converted.Code();
  return operation(converted.Get()) < 0 ? errno : 0;
}

bool IsTaken(const char* name) noexcept {
  struct stat facts;
  return lstat(name, &facts) == 0;
}

// Not every volume and not every kernel can do both in one step.
int RenameToFree(const char* from, const char* to) noexcept {
  const int result = renameat2(AT_FDCWD, from, AT_FDCWD, to, RENAME_NOREPLACE);
  if (result == 0 || (errno != EINVAL && errno != ENOSYS)) return result;
  if (!IsTaken(to)) return rename(from, to);
  errno = EEXIST;
  return -1;
}

// Calls `operation` with both names.
template <class Operation>
int WithNames(const char* from, const char* to, const Operation& operation) noexcept {
  const FileName target(to);
  if (target.Code() != 0) return target.Code();
  return WithName(from, [&](const char* converted) { return operation(converted, target.Get()); });
}

}  // namespace

std::string NameForSystem(std::string name) {
  std::replace(name.begin(), name.end(), '\\', '/');
  return name;
}

int Status(const char* name, FileStatus& status) noexcept {
  struct stat facts;
  const int code = WithName(name, [&](const char* converted) { return stat(converted, &facts); });
  if (code != 0) return code;
  status.m_bRegular = S_ISREG(facts.st_mode);
  status.m_bDirectory = S_ISDIR(facts.st_mode);
  status.m_ullSize = static_cast<std::uint64_t>(facts.st_size);
  return 0;
}

int MakeDirectory(const char* name) noexcept {
  return WithName(name, [](const char* converted) { return mkdir(converted, uFOLDER_MODE); });
}

int RemoveDirectory(const char* name) noexcept { return WithName(name, rmdir); }

int RemoveFile(const char* name) noexcept { return WithName(name, unlink); }

int RenameFile(const char* from, const char* to) noexcept { return WithNames(from, to, rename); }

int RenameFileUnlessTaken(const char* from, const char* to) noexcept {
  return WithNames(from, to, RenameToFree);
}

}  // namespace Oxa::Core::Platform
