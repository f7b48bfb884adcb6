#include "Platform/NamedLock.h"

#include <errno.h>
#include <pthread.h>
#include <stdio.h>
#include <string.h>
#include <sys/mman.h>
#include <time.h>
#include <unistd.h>

#include <iterator>
#include <new>

#include "Platform/Faults.h"
#include "Platform/Linux/NamedLockFile.h"

namespace Oxa::Core::Platform {

namespace {

// All processes have to agree on the folder: no variable of the environment has a say. The second one is for
// systems without the first.
constexpr const char* sFOLDERS[] = {"/dev/shm", "/tmp"};

constexpr long long llNANOSECONDS_PER_SECOND = 1000000000;

// What comes is never given back, not even when the library is unloaded: no checker of leaks is to look for it.
void* PagesForEver(size_t size) noexcept {
  void* const pages = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  return pages != MAP_FAILED ? pages : nullptr;
}

WaitResult ResultOf(pthread_mutex_t& mutex, int code) noexcept {
  switch (code) {
    case 0:
      return {EWaitEnd::eSIGNALLED, 0};
    case EOWNERDEAD:
      pthread_mutex_consistent(&mutex);
      return {EWaitEnd::eABANDONED, 0};
    case EBUSY:
    case ETIMEDOUT:
      return {EWaitEnd::eTIMEOUT, 0};
    default:
      return {EWaitEnd::eFAILED, code};
  }
}

#if defined(__SANITIZE_THREAD__)
// The sanitizer doesn't know the lock by a moment of the monotonic clock.
int LockByMoment(pthread_mutex_t& mutex, Deadline deadline) noexcept {
  constexpr timespec pause = {0, 100000};
  while (true) {
    const bool last = deadline.HasPassed();
    const int code = pthread_mutex_trylock(&mutex);
    if (code != EBUSY || last) return code;
    nanosleep(&pause, nullptr);
  }
}

// It takes an unlocking by another thread than the owner for a mistake, though that is a plain failure here. The own
// id can't come or go while this thread looks.
int UnlockAsOwner(pthread_mutex_t& mutex) noexcept {
  const int owner = __atomic_load_n(&mutex.__data.__owner, __ATOMIC_RELAXED);
  return static_cast<unsigned long>(owner) == CurrentThreadId() ? pthread_mutex_unlock(&mutex) : EPERM;
}
#else
int LockByMoment(pthread_mutex_t& mutex, Deadline deadline) noexcept {
  const long long moment = deadline.Moment();
  const timespec end = {static_cast<time_t>(moment / llNANOSECONDS_PER_SECOND),
                        static_cast<long>(moment % llNANOSECONDS_PER_SECOND)};
  return pthread_mutex_clocklock(&mutex, CLOCK_MONOTONIC, &end);
}

int UnlockAsOwner(pthread_mutex_t& mutex) noexcept { return pthread_mutex_unlock(&mutex); }
#endif

}  // namespace

// A list without a lock, so that a fork in the middle of an Open leaves nothing behind that a child waits for.
class OpenLocks {
 public:
  static NamedLock* Find(const char* name) noexcept {
    NamedLock* lock = s_pNewest.load(std::memory_order_acquire);
    while (lock != nullptr && strcmp(lock->m_pName, name) != 0) lock = lock->m_pOlder;
    return lock;
  }

  /// Gives `made`, or the one of that name that another thread has added meanwhile.
  static NamedLock* Add(NamedLock* made) noexcept {
    while (true) {
      NamedLock* newest = s_pNewest.load(std::memory_order_acquire);
      if (NamedLock* const other = Find(made->m_pName)) return other;
      made->m_pOlder = newest;
      if (s_pNewest.compare_exchange_strong(newest, made, std::memory_order_release)) return made;
    }
  }

 private:
  static std::atomic<NamedLock*> s_pNewest;
};

std::atomic<NamedLock*> OpenLocks::s_pNewest{nullptr};

NamedLock* NamedLock::Open(const char* name, int& code) noexcept {
  const HoldCancellation hold;
  code = 0;
  NamedLock* const known = OpenLocks::Find(name);
  return known != nullptr ? known : Make(name, code);
}

NamedLock* NamedLock::Make(const char* name, int& code) noexcept {
  NamedLockRecord* record = nullptr;
  code = MapLockFile(sFOLDERS, std::size(sFOLDERS), name, record);
  if (code != 0) return nullptr;
  const size_t nameSize = strlen(name) + 1;
  void* const room = PagesForEver(sizeof(NamedLock) + nameSize);
  if (room == nullptr) {
    UnmapLockFile(record);
    code = ENOMEM;
    return nullptr;
  }
  char* const ownName = static_cast<char*>(room) + sizeof(NamedLock);
  memcpy(ownName, name, nameSize);
  NamedLock* const made = ::new (room) NamedLock(record, ownName);
  NamedLock* const kept = OpenLocks::Add(made);
  if (kept != made) {
    UnmapLockFile(record);
    munmap(room, sizeof(NamedLock) + nameSize);
  }
  return kept;
}

WaitResult NamedLock::LockBy(Deadline deadline) noexcept {
  pthread_mutex_t& mutex = m_pRecord->m_mutex;
  if (deadline.IsNever()) return ResultOf(mutex, pthread_mutex_lock(&mutex));
  const WaitResult first = TryLock();
  if (first.m_eEnd != EWaitEnd::eTIMEOUT || deadline.HasPassed()) return first;
  return ResultOf(mutex, LockByMoment(mutex, deadline));
}

WaitResult NamedLock::TryLock() noexcept {
  pthread_mutex_t& mutex = m_pRecord->m_mutex;
  return ResultOf(mutex, pthread_mutex_trylock(&mutex));
}

int NamedLock::Unlock() noexcept { return UnlockAsOwner(m_pRecord->m_mutex); }

std::atomic<std::uint64_t>& NamedLock::Generation() noexcept { return m_pRecord->m_ullGeneration; }

void RemoveNamedLock(const char* name) noexcept {
  char file[uLOCK_FILE_NAME_SIZE];
  LockFileName(name, file);
  for (const char* const folder : sFOLDERS) {
    char path[uLOCK_FILE_NAME_SIZE + 32];
    snprintf(path, sizeof path, "%s/%s", folder, file);
    unlink(path);
  }
}

}  // namespace Oxa::Core::Platform
