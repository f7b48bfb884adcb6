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

// Through a pipe of its own: the kernel tells by an error what it can't read for a write. Raw calls, since a sanitizer
// would have its say on what is read, and a thread that is to be cancelled might end here.
bool ReadThroughPipe(const char* from, char* to, std::size_t size) noexcept {
  int ends[2];
  if (RawCall(SYS_pipe2, RawArgument(ends), O_CLOEXEC | O_NONBLOCK) != 0) return false;
  bool good = true;
  for (std::size_t done = 0; good && done < size;) {
    const long part = static_cast<long>(std::min<std::size_t>(size - done, PIPE_BUF));
    good = RawCall(SYS_write, ends[1], RawArgument(from + done), part) == part &&
           RawCall(SYS_read, ends[0], RawArgument(to + done), part) == part;
    done += static_cast<std::size_t>(part);
  }
  RawCall(SYS_close, ends[0]);
  RawCall(SYS_close, ends[1]);
  return good;
}

}  // namespace

bool ReadSafely(std::uint64_t address, void* to, std::size_t size) noexcept {
  if (size == 0) return true;
  const int before = errno;
  iovec local{to, size};
  iovec remote{const_cast<char*>(PointerTo(address)), size};
  const long got = ::syscall(SYS_process_vm_readv, ::getpid(), &local, 1UL, &remote, 1UL, 0UL);
  bool good = got == static_cast<long>(size);
  // Sandboxes forbid the reading of processes, even of one's own.
  if (got < 0 && (errno == EPERM || errno == ENOSYS))
    good = ReadThroughPipe(PointerTo(address), static_cast<char*>(to), size);
  errno = before;
  return good;
}

}  // namespace Oxa::Core::Platform
