#include <errno.h>
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <optional>
#include <utility>

#include "Platform/Faults.h"
#include "Platform/Files.h"
#include "Platform/Linux/FileName.h"

namespace Oxa::Core::Platform {

namespace {

constexpr mode_t uFILE_MODE = 0666;

static_assert(sizeof(off_t) == sizeof(std::int64_t), "places in files have 64 bits");

// One call of the system, made again as long as signals cut in.
template <class Call>
int Again(const Call& call, std::size_t& done) noexcept {
  const HoldCancellation hold;
  ssize_t result = -1;
  do {
    result = call();
  } while (result < 0 && errno == EINTR);
  done = result < 0 ? 0 : static_cast<std::size_t>(result);
  return result < 0 ? errno : 0;
}

int WhenceOf(EOrigin origin) noexcept {
  if (origin == EOrigin::eBEGIN) return SEEK_SET;
  return origin == EOrigin::eCURRENT ? SEEK_CUR : SEEK_END;
}

bool IsDirectory(int file) noexcept {
  struct stat facts;
  return fstat(file, &facts) == 0 && S_ISDIR(facts.st_mode);
}

}  // namespace

FileHandle FileHandle::Open(const char* name, int flags, int& code) noexcept {
  FileHandle handle;
  const FileName converted(name);
  code = converted.Code();
  if (code != 0) return handle;
  std::size_t file = 0;
  code = Again([&] { return open(converted.Get(), flags | O_CLOEXEC | O_NOCTTY, uFILE_MODE); }, file);
  if (code == 0) handle.m_iFile = static_cast<int>(file);
  return handle;
}

FileHandle FileHandle::OpenForAppend(const char* name, int& code) noexcept {
  return Open(name, O_WRONLY | O_CREAT | O_APPEND, code);
}

FileHandle FileHandle::OpenForWriting(const char* name, int& code) noexcept {
  return Open(name, O_WRONLY | O_CREAT, code);
}

FileHandle FileHandle::CreateForWriting(const char* name, int& code) noexcept {
  return Open(name, O_WRONLY | O_CREAT | O_EXCL, code);
}

FileHandle FileHandle::OpenForReading(const char* name, int& code) noexcept {
  FileHandle handle = Open(name, O_RDONLY, code);
  if (handle.IsOpen() && IsDirectory(handle.m_iFile)) {
    handle.Close();
    code = EISDIR;
  }
  return handle;
}

FileHandle::FileHandle(FileHandle&& other) noexcept
    : m_iFile(std::exchange(other.m_iFile, -1)), m_iClaimant(std::exchange(other.m_iClaimant, 0)) {}

FileHandle& FileHandle::operator=(FileHandle&& other) noexcept {
  FileHandle taken(std::move(other));  // which may be this one
  std::swap(m_iFile, taken.m_iFile);
  std::swap(m_iClaimant, taken.m_iClaimant);
  return *this;
}

FileHandle::~FileHandle() { Close(); }

int FileHandle::Close() noexcept {
  if (!IsOpen()) return 0;
  const HoldCancellation hold;
  GiveUpClaim();
  // Closed whatever comes back: once more would close what another thread has opened meanwhile.
  const bool bClosed = close(std::exchange(m_iFile, -1)) == 0 || errno == EINTR;
  return bClosed ? 0 : errno;
}

int FileHandle::Write(const void* data, std::size_t size, std::size_t& written) noexcept {
  std::optional<FileLimitGuard> guard;
  if (FileLimitGuard::IsNeeded()) guard.emplace();
  long result = -1;
  do {
    // The call itself: write() is a place of cancellation, and to be none costs as much as a tenth of the call.
    result = syscall(SYS_write, m_iFile, data, size);
  } while (result < 0 && errno == EINTR);
  written = result < 0 ? 0 : static_cast<std::size_t>(result);
  return result < 0 ? errno : 0;
}

int FileHandle::Read(void* data, std::size_t size, std::size_t& read) noexcept {
  return Again([&] { return ::read(m_iFile, data, size); }, read);
}

int FileHandle::Seek(std::uint64_t position) noexcept {
  return lseek(m_iFile, static_cast<off_t>(position), SEEK_SET) < 0 ? errno : 0;
}

int FileHandle::SeekToEnd(std::uint64_t& position) noexcept {
  const off_t end = lseek(m_iFile, 0, SEEK_END);
  if (end < 0) return errno;
  position = static_cast<std::uint64_t>(end);
  return 0;
}

int FileHandle::Move(std::int64_t offset, EOrigin origin, std::uint64_t& position) noexcept {
  const off_t place = lseek(m_iFile, offset, WhenceOf(origin));
  if (place < 0) return errno;
  position = static_cast<std::uint64_t>(place);
  return 0;
}

int FileHandle::Position(std::uint64_t& position) const noexcept {
  const off_t place = lseek(m_iFile, 0, SEEK_CUR);
  if (place < 0) return errno;
  position = static_cast<std::uint64_t>(place);
  return 0;
}

int FileHandle::Size(std::uint64_t& size) const noexcept {
  struct stat facts;
  if (fstat(m_iFile, &facts) != 0) return errno;
  size = static_cast<std::uint64_t>(facts.st_size);
  return 0;
}

int FileHandle::Reserve(std::uint64_t size) noexcept {
  rlimit limit = {};
  if (getrlimit(RLIMIT_FSIZE, &limit) == 0 && size > limit.rlim_cur) return EFBIG;
  std::size_t ignored = 0;
  const int code =
      Again([&] { return fallocate(m_iFile, FALLOC_FL_KEEP_SIZE, 0, static_cast<off_t>(size)); }, ignored);
  // Who can't be asked for room, or may not be asked, doesn't say that there is none.
  return code == EOPNOTSUPP || code == ENOSYS || code == EPERM ? 0 : code;
}

int FileHandle::Truncate(std::uint64_t size) noexcept {
  std::optional<FileLimitGuard> guard;
  if (FileLimitGuard::IsNeeded()) guard.emplace();
  std::size_t ignored = 0;
  return Again([&] { return ftruncate(m_iFile, static_cast<off_t>(size)); }, ignored);
}

}  // namespace Oxa::Core::Platform
