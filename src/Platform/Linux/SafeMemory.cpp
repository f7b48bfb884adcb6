#include "Platform/Linux/SafeMemory.h"

#include <fcntl.h>
#include <limits.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "Platform/Linux/RawCall.h"

namespace Oxa::Core::Platform {

namespace {

const char* PointerTo(std::uint64_t address) noexcept {
  return reinterpret_cast<const char*>(
      static_cast<std::uintptr_t>(address));  // NOLINT(performance-no-int-to-ptr)
}

std::size_t PartFrom(const char* from, std::size_t size) noexcept {
  const auto inPage = reinterpret_cast<std::uintptr_t>(from) % PIPE_BUF;
  return std::min<std::size_t>(size, PIPE_BUF - inPage);
}

// Through a pipe of its own: the kernel tells by an error what it can't read for a write. Raw calls, since a sanitizer
// would have its say on what is read, and a thread that is to be cancelled might end here. No part crosses the end of
// a page.
std::size_t ReadThroughPipe(const char* from, char* to, std::size_t size) noexcept {
  int ends[2] = {};
  if (RawCall(SYS_pipe2, RawArgument(ends), O_CLOEXEC | O_NONBLOCK) != 0) return 0;
  std::size_t done = 0;
  while (done < size) {
    const long part = static_cast<long>(PartFrom(from + done, size - done));
    const bool good = RawCall(SYS_write, ends[1], RawArgument(from + done), part) == part &&
                      RawCall(SYS_read, ends[0], RawArgument(to + done), part) == part;
    if (!good) break;
    done += static_cast<std::size_t>(part);
  }
  RawCall(SYS_close, ends[0]);
  RawCall(SYS_close, ends[1]);
  return done;
}

}  // namespace

std::size_t ReadMemory(std::uint64_t address, void* to, std::size_t size) noexcept {
  if (size == 0) return 0;
  const int before = errno;
  iovec local{to, size};
  iovec remote{const_cast<char*>(PointerTo(address)), size};
  const long got = ::syscall(SYS_process_vm_readv, ::getpid(), &local, 1UL, &remote, 1UL, 0UL);
  std::size_t read = got > 0 ? static_cast<std::size_t>(got) : 0;
  // Sandboxes forbid the reading of processes, even of one's own.
  if (got < 0 && (errno == EPERM || errno == ENOSYS))
    read = ReadThroughPipe(PointerTo(address), static_cast<char*>(to), size);
  errno = before;
  return read;
}

bool ReadSafely(std::uint64_t address, void* to, std::size_t size) noexcept {
  return ReadMemory(address, to, size) == size;
}

}  // namespace Oxa::Core::Platform
