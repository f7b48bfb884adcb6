#include "Platform/Linux/ModuleFile.h"

#include <errno.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>

namespace Oxa::Core::Platform {

namespace {

constexpr std::uint64_t ullMOST_READ = 16 * 1024 * 1024;

int SizeOf(const OpenFile& file, std::uint64_t& size) noexcept {
  struct stat status;
  if (!file.IsOpen() || fstat(file.Get(), &status) != 0) return errno;
  if (!S_ISREG(status.st_mode)) return S_ISDIR(status.st_mode) ? EISDIR : EINVAL;
  size = static_cast<std::uint64_t>(status.st_size);
  return 0;
}

}  // namespace

// Without O_NONBLOCK a named pipe would be waited for.
ModuleFile::ModuleFile(const char* name) noexcept
    : m_file(open(name, O_RDONLY | O_CLOEXEC | O_NONBLOCK)),
      m_iCode(SizeOf(m_file, m_ullSize)),
      m_ullLeft(ullMOST_READ) {}

bool ModuleFile::Read(std::uint64_t offset, std::uint64_t size, std::string& bytes) {
  if (m_iCode != 0 || offset > m_ullSize || size > m_ullSize - offset || size > m_ullLeft) return false;
  m_ullLeft -= size;
  std::string block(size, '\0');
  for (std::uint64_t done = 0; done < size;) {
    const ssize_t got = pread(m_file.Get(), &block[done], size - done, static_cast<off_t>(offset + done));
    if (got == 0 || (got < 0 && errno != EINTR)) return false;
    if (got > 0) done += static_cast<std::uint64_t>(got);
  }
  bytes.swap(block);
  return true;
}

bool ModuleFile::ReadUpTo(std::uint64_t offset, std::uint64_t size, std::string& bytes) {
  return offset <= m_ullSize && Read(offset, std::min(size, m_ullSize - offset), bytes);
}

}  // namespace Oxa::Core::Platform
