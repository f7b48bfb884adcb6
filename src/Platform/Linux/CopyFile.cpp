#include <errno.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "Platform/Faults.h"
#include "Platform/Files.h"
#include "Platform/Linux/FileName.h"

namespace Oxa::Core::Platform {

namespace {

constexpr std::size_t uBLOCK = 32 * 1024;  // on the stack, which may be a small one

bool AreSameFile(const char* from, const char* to) noexcept {
  struct stat source;
  struct stat target;
  return stat(from, &source) == 0 && stat(to, &target) == 0 && source.st_dev == target.st_dev &&
         source.st_ino == target.st_ino;
}

int WriteAll(FileHandle& to, const char* data, std::size_t size) noexcept {
  while (size > 0) {
    std::size_t written = 0;
    const int code = to.Write(data, size, written);
    if (code != 0) return code;
    data += written;
    size -= written;
  }
  return 0;
}

int CopyBytes(FileHandle& from, FileHandle& to) noexcept {
  char block[uBLOCK];
  while (true) {
    std::size_t size = 0;
    int code = from.Read(block, sizeof block, size);
    if (code == 0 && size > 0) code = WriteAll(to, block, size);
    if (code != 0 || size == 0) return code;
  }
}

int RefuseUnlessPlain(const char* name) noexcept {
  FileStatus status;
  const int code = Status(name, status);
  if (code != 0) return code;
  if (status.m_bDirectory) return EISDIR;
  return status.m_bRegular ? 0 : EINVAL;
}

// A name that isn't taken is as good as a plain file.
int RefuseAsTarget(const char* name) noexcept {
  const int code = RefuseUnlessPlain(name);
  return code == ENOENT ? 0 : code;
}

int CopyOver(FileHandle& source, const char* to) noexcept {
  int code = 0;
  FileHandle target = FileHandle::OpenForWriting(to, code);
  if (code != 0) return code;
  const FileLimitGuard guard;
  code = target.Truncate(0);
  if (code != 0) return code;
  code = CopyBytes(source, target);
  const int closed = target.Close();
  if (code == 0) code = closed;
  if (code != 0) RemoveFile(to);
  return code;
}

}  // namespace

int CopyFile(const char* from, const char* to) noexcept {
  int code = RefuseUnlessPlain(from);
  if (code == 0) code = RefuseAsTarget(to);
  if (code != 0) return code;
  if (AreSameFile(FileName(from).Get(), FileName(to).Get())) return EINVAL;
  FileHandle source = FileHandle::OpenForReading(from, code);
  return code != 0 ? code : CopyOver(source, to);
}

}  // namespace Oxa::Core::Platform
