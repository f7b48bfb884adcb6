#include "Platform/Linux/NamedLockFile.h"

#include <errno.h>
#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

#include <new>

#if defined(__SANITIZE_THREAD__)
#include <sanitizer/tsan_interface.h>
#endif

namespace Oxa::Core::Platform {

namespace {

constexpr char sMARK[8] = "OXALOCK";
constexpr char sBOOT_ID_FILE[] = "/proc/sys/kernel/random/boot_id";
constexpr char sTEMPORARY[] = ".oxacore.XXXXXX";
constexpr mode_t uFOR_EVERYBODY = 0666;
constexpr int iATTEMPTS = 1000;
constexpr long iPAUSE_NS = 1000000;
constexpr std::size_t uPATH_SIZE = 1024;

// What may be found in a lock's place: a lock (0), nothing (ENOENT), or this, which is to be replaced.
constexpr int iDAMAGED = EUCLEAN;
// Somebody else has just changed what lies there: look again.
constexpr int iLOOK_AGAIN = EAGAIN;

class Descriptor {
 public:
  explicit Descriptor(int descriptor) noexcept
      : m_iDescriptor(descriptor), m_iCode(descriptor < 0 ? errno : 0) {}
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  ~Descriptor() {
    if (m_iDescriptor >= 0) close(m_iDescriptor);
  }

  int Get() const noexcept { return m_iDescriptor; }
  int Code() const noexcept { return m_iCode; }  ///< why it couldn't be opened; 0: it could

 private:
  int m_iDescriptor;
  int m_iCode;
};

using BootId = char[sizeof NamedLockRecord::m_sBoot];

void ReadBootId(BootId& boot) noexcept {
  memset(boot, 0, sizeof boot);
  const Descriptor file(open(sBOOT_ID_FILE, O_RDONLY | O_CLOEXEC));
  if (file.Code() == 0 && read(file.Get(), boot, sizeof boot - 1) < 0) boot[0] = '\0';
}

// A file that outlived a start of the system may seem to be held by a thread that there never was.
bool IsOfThisBoot(const BootId& theirs) noexcept {
  BootId ours;
  ReadBootId(ours);
  return theirs[0] == '\0' || ours[0] == '\0' || memcmp(ours, theirs, sizeof ours) == 0;
}

int Map(const Descriptor& file, NamedLockRecord*& record) noexcept {
  void* const memory =
      mmap(nullptr, NamedLockRecord::uFILE_SIZE, PROT_READ | PROT_WRITE, MAP_SHARED, file.Get(), 0);
  if (memory == MAP_FAILED) return errno;
  record = static_cast<NamedLockRecord*>(memory);
  return 0;
}

int Check(const NamedLockRecord& record, const char* name) noexcept {
  if (memcmp(record.m_sMark, sMARK, sizeof sMARK) != 0 || !IsOfThisBoot(record.m_sBoot)) return iDAMAGED;
  if (record.m_uLayout != NamedLockRecord::uLAYOUT || record.m_uMutexSize != sizeof record.m_mutex)
    return EPROTO;
  return strncmp(record.m_sName, name, sizeof record.m_sName) == 0 ? 0 : EEXIST;
}

// The sanitizer knows only those reentrant locks that were initialised in its own process.
void TellSanitizer([[maybe_unused]] NamedLockRecord& record) noexcept {
#if defined(__SANITIZE_THREAD__)
  __tsan_mutex_create(&record.m_mutex, __tsan_mutex_linker_init | __tsan_mutex_write_reentrant);
#endif
}

int MapChecked(const Descriptor& file, const char* name, NamedLockRecord*& record) noexcept {
  struct stat status;
  if (fstat(file.Get(), &status) != 0) return errno;
  if (!S_ISREG(status.st_mode)) return EEXIST;
  if (status.st_size != static_cast<off_t>(NamedLockRecord::uFILE_SIZE)) return iDAMAGED;
  NamedLockRecord* mapped = nullptr;
  int code = Map(file, mapped);
  if (code != 0) return code;
  code = Check(*mapped, name);
  if (code != 0) {
    UnmapLockFile(mapped);
    return code;
  }
  TellSanitizer(*mapped);
  record = mapped;
  return 0;
}

// Only who holds the advisory lock on the very file that lies there may take it away: nobody's new one is hit.
int RemoveDamaged(const Descriptor& file, const char* path) noexcept {
  struct stat opened, lying;
  if (flock(file.Get(), LOCK_EX | LOCK_NB) != 0) return errno == EWOULDBLOCK ? iLOOK_AGAIN : errno;
  if (fstat(file.Get(), &opened) != 0 || lstat(path, &lying) != 0) return iLOOK_AGAIN;
  if (opened.st_dev != lying.st_dev || opened.st_ino != lying.st_ino) return iLOOK_AGAIN;
  return unlink(path) == 0 ? iLOOK_AGAIN : errno;
}

int OpenExisting(const char* path, const char* name, NamedLockRecord*& record) noexcept {
  const Descriptor file(open(path, O_RDWR | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY));
  if (file.Code() != 0) return file.Code();
  const int code = MapChecked(file, name, record);
  return code == iDAMAGED ? RemoveDamaged(file, path) : code;
}

int InitializeMutex(pthread_mutex_t& mutex) noexcept {
  pthread_mutexattr_t attributes;
  pthread_mutexattr_init(&attributes);
  pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE);
  pthread_mutexattr_setrobust(&attributes, PTHREAD_MUTEX_ROBUST);
  int code = pthread_mutexattr_setpshared(&attributes, PTHREAD_PROCESS_SHARED);
  if (code == 0) code = pthread_mutex_init(&mutex, &attributes);
  pthread_mutexattr_destroy(&attributes);
  return code;
}

int Fill(NamedLockRecord* record, const char* name) noexcept {
  ::new (&record->m_ullGeneration) std::atomic<std::uint64_t>(0);
  memcpy(record->m_sMark, sMARK, sizeof sMARK);
  record->m_uLayout = NamedLockRecord::uLAYOUT;
  record->m_uMutexSize = sizeof record->m_mutex;
  ReadBootId(record->m_sBoot);
  memcpy(record->m_sName, name, strlen(name));
  return InitializeMutex(record->m_mutex);
}

// Space is claimed here and now: a page that can't be had later is a signal, not a code.
int WriteComplete(const Descriptor& file, const char* name) noexcept {
  if (fchmod(file.Get(), uFOR_EVERYBODY) != 0) return errno;
  int code = posix_fallocate(file.Get(), 0, static_cast<off_t>(NamedLockRecord::uFILE_SIZE));
  NamedLockRecord* record = nullptr;
  if (code == 0) code = Map(file, record);
  if (code != 0) return code;
  code = Fill(record, name);
  UnmapLockFile(record);
  return code;
}

int MakeNew(const char* folder, const char* path, const char* name) noexcept {
  char temporary[uPATH_SIZE];
  snprintf(temporary, sizeof temporary, "%s/%s", folder, sTEMPORARY);
  const Descriptor file(mkostemp(temporary, O_CLOEXEC));
  if (file.Code() != 0) return file.Code();
  int code = WriteComplete(file, name);
  if (code == 0 && link(temporary, path) != 0 && errno != EEXIST) code = errno;
  unlink(temporary);
  return code != 0 ? code : iLOOK_AGAIN;
}

int OpenOrMake(const char* folder, const char* path, const char* name, NamedLockRecord*& record) noexcept {
  const int code = OpenExisting(path, name, record);
  return code == ENOENT ? MakeNew(folder, path, name) : code;
}

bool IsNoSuchFolder(int code) noexcept { return code == ENOENT || code == ENOTDIR || code == EROFS; }

}  // namespace

int MapLockFile(const char* folder, const char* name, NamedLockRecord*& record) noexcept {
  char fileName[uLOCK_FILE_NAME_SIZE];
  char path[uPATH_SIZE];
  if (strlen(name) >= sizeof NamedLockRecord::m_sName) return ENAMETOOLONG;
  LockFileName(name, fileName);
  if (snprintf(path, sizeof path, "%s/%s", folder, fileName) >= static_cast<int>(sizeof path))
    return ENAMETOOLONG;
  int code = iLOOK_AGAIN;
  for (int attempt = 0; attempt < iATTEMPTS && code == iLOOK_AGAIN; ++attempt) {
    const timespec pause = {0, iPAUSE_NS};
    if (attempt > 2) nanosleep(&pause, nullptr);
    code = OpenOrMake(folder, path, name, record);
  }
  return code;
}

int MapLockFile(const char* const* folders, std::size_t count, const char* name,
                NamedLockRecord*& record) noexcept {
  int code = ENOENT;
  for (std::size_t folder = 0; folder < count && IsNoSuchFolder(code); ++folder)
    code = MapLockFile(folders[folder], name, record);
  return code;
}

void UnmapLockFile(NamedLockRecord* record) noexcept { munmap(record, NamedLockRecord::uFILE_SIZE); }

}  // namespace Oxa::Core::Platform
