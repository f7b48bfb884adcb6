#include "Platform/Journal.h"

#include <errno.h>
#include <fcntl.h>
#include <string.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/uio.h>
#include <sys/un.h>
#include <unistd.h>

#include <atomic>

#include "Platform/Clock.h"
#include "Platform/Faults.h"
#include "Platform/Kill.h"
#include "Platform/Linux/JournalSocket.h"
#include "Platform/Linux/OpenFile.h"

namespace Oxa::Core::Platform {

namespace {

constexpr long long llLONGEST_WAIT = 1000000;  // in ticks of 100 ns

std::atomic<const char*> s_pPath{nullptr};

sockaddr_un Address() noexcept {
  sockaddr_un address = {};
  address.sun_family = AF_UNIX;
  const char* const path = s_pPath.load(std::memory_order_relaxed);
  strncpy(address.sun_path, path != nullptr ? path : "/run/systemd/journal/socket",
          sizeof address.sun_path - 1);
  return address;
}

// Lets a message wait no longer than until `end`, a moment of the monotonic clock: each signal that cuts in would make
// the whole time begin anew. Gives the flag of those that mustn't wait any more.
int LimitWaiting(int socket, long long end) noexcept {
  const long long left = end - MonotonicTicks();
  if (left <= 0) return MSG_DONTWAIT;
  const timeval wait = {0, static_cast<suseconds_t>((left + 9) / 10)};  // 0 would be for ever
  return setsockopt(socket, SOL_SOCKET, SO_SNDTIMEO, &wait, sizeof wait) == 0 ? 0 : MSG_DONTWAIT;
}

// One message to the journal. It has no connection that could break, so that there is no signal of it either.
int Send(int socket, const iovec& data, void* control, std::size_t controlSize, long long end) noexcept {
  sockaddr_un address = Address();
  msghdr message = {};
  message.msg_name = &address;
  message.msg_namelen = sizeof address;
  message.msg_iov = const_cast<iovec*>(&data);
  message.msg_iovlen = data.iov_len == 0 ? 0 : 1;
  message.msg_control = control;
  message.msg_controllen = controlSize;
  ssize_t sent = -1;
  do {
    sent = sendmsg(socket, &message, MSG_NOSIGNAL | LimitWaiting(socket, end));
  } while (sent < 0 && errno == EINTR);
  return sent < 0 ? errno : 0;
}

// What is too large for a message goes in a file in memory that is handed over, and that nobody can change any more.
int SendFile(int socket, const iovec& data, long long end) noexcept {
  const OpenFile file(memfd_create("oxacore-journal", MFD_CLOEXEC | MFD_ALLOW_SEALING));
  if (!file.IsOpen()) return errno;
  const int code = file.WriteAll(data.iov_base, data.iov_len);
  if (code != 0) return code;
  if (fcntl(file.Get(), F_ADD_SEALS, F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_WRITE | F_SEAL_SEAL) != 0)
    return errno;
  alignas(cmsghdr) char control[CMSG_SPACE(sizeof(int))] = {};
  auto* const header = reinterpret_cast<cmsghdr*>(control);
  header->cmsg_level = SOL_SOCKET;
  header->cmsg_type = SCM_RIGHTS;
  header->cmsg_len = CMSG_LEN(sizeof(int));
  const int handed = file.Get();
  memcpy(CMSG_DATA(header), &handed, sizeof handed);
  return Send(socket, {nullptr, 0}, control, sizeof control, end);
}

}  // namespace

void SetJournalSocket(const char* path) noexcept { s_pPath = path; }

int SendToJournal(const void* record, std::size_t size, bool mayWait) noexcept {
  const HoldKill alive;
  const HoldCancellation hold;
  const OpenFile sending(socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0));
  if (!sending.IsOpen()) return errno;
  const long long end = MonotonicTicks() + (mayWait ? llLONGEST_WAIT : 0);
  const iovec data = {const_cast<void*>(record), size};
  const int code = Send(sending.Get(), data, nullptr, 0, end);
  return code == EMSGSIZE || code == ENOBUFS ? SendFile(sending.Get(), data, end) : code;
}

}  // namespace Oxa::Core::Platform
