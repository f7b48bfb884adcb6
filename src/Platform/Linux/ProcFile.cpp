#include "Platform/Linux/ProcFile.h"

#include <errno.h>
#include <fcntl.h>
#include <stddef.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>

#include "Platform/Linux/OpenFile.h"

namespace Oxa::Core::Platform {

namespace {

constexpr char sPROC[] = "/proc";
constexpr char sDELETED_MARK[] = " (deleted)";
constexpr size_t uLINK_ROOM = 256;
constexpr size_t uFILE_ROOM = 16 * 1024;

std::atomic<const char*> s_sProcFolder{sPROC};

bool EndsWith(const std::string& text, const char* end) {
  const size_t length = strlen(end);
  return text.size() >= length && text.compare(text.size() - length, length, end) == 0;
}

}  // namespace

const char* ProcFolder() noexcept { return s_sProcFolder.load(std::memory_order_relaxed); }

void SetProcFolder(const char* folder) noexcept {
  s_sProcFolder.store(folder != nullptr ? folder : sPROC, std::memory_order_relaxed);
}

int ReadUnsizedFile(int folder, const char* name, std::string& content) {
  const OpenFile file(openat(folder, name, O_RDONLY | O_CLOEXEC));
  if (!file.IsOpen()) return errno;
  std::string text;
  while (true) {
    const size_t size = text.size();
    text.resize(size + uFILE_ROOM);
    const ssize_t got = read(file.Get(), &text[size], uFILE_ROOM);
    if (got < 0 && errno != EINTR) return errno;
    text.resize(size + (got > 0 ? static_cast<size_t>(got) : 0));
    if (got == 0) break;
  }
  content.swap(text);
  return 0;
}

int ReadLink(int folder, const char* name, std::string& target) {
  std::string buffer(uLINK_ROOM, '\0');
  while (true) {
    const ssize_t length = readlinkat(folder, name, &buffer[0], buffer.size());
    if (length < 0) return errno;
    if (static_cast<size_t>(length) < buffer.size()) {
      buffer.resize(static_cast<size_t>(length));
      target.swap(buffer);
      return 0;
    }
    buffer.resize(buffer.size() * 2);
  }
}

void DropDeletedMark(std::string& path) {
  struct stat status;
  if (EndsWith(path, sDELETED_MARK) && stat(path.c_str(), &status) != 0)
    path.resize(path.size() - strlen(sDELETED_MARK));
}

}  // namespace Oxa::Core::Platform
