// An open file or folder of the system, closed at the end of its life.
#ifndef OXACORE_PLATFORM_LINUX_OPENFILE_H
#define OXACORE_PLATFORM_LINUX_OPENFILE_H

#include <unistd.h>

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

 private:
  const int m_iFile;
};

}  // namespace Oxa::Core::Platform

#endif
