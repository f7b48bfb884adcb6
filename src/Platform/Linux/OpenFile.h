// An open file or folder of the system, closed at the end of its life.
#ifndef OXACORE_PLATFORM_LINUX_OPENFILE_H
#define OXACORE_PLATFORM_LINUX_OPENFILE_H

#include <errno.h>
#include <unistd.h>

#include <cstddef>

#include "Platform/Files.h"

namespace Oxa::Core::Platform {

class OpenFile {
 public:
  explicit OpenFile(int file) noexcept : m_iFile(file) {}
  OpenFile(const OpenFile&) = delete;
  OpenFile& operator=(const OpenFile&) = delete;
  ~OpenFile() {
    if (IsOpen()) close(m_iFile);
  }

  bool IsOpen() const noexcept { return m_iFile >= 0; }
  int Get() const noexcept { return m_iFile; }

  /// Writes all of it at the place where the file is. Gives 0 or the system's error code, also at the limit for the
  /// size of files.
  int WriteAll(const void* data, std::size_t size) const noexcept {
    const FileLimitGuard guard;
    const char* const bytes = static_cast<const char*>(data);
    for (std::size_t done = 0; done < size;) {
      const ssize_t written = write(m_iFile, bytes + done, size - done);
      if (written < 0 && errno != EINTR) return errno;
      if (written > 0) done += static_cast<std::size_t>(written);
    }
    return 0;
  }

 private:
  const int m_iFile;
};

}  // namespace Oxa::Core::Platform

#endif
