// Text of the local time stands in every alert and every log entry, so that it must be cheap, and it must
// work on every thread, also on one that is about to be ended. So nobody waits for anybody: tables of zones are
// read once, published, and never changed or freed. What finds no published table reads one for itself, at
// every time stamp: slow, but right. So it goes to a program with more zones than there are places, to threads
// that come while another one is filling a place, and while the system can't open the file.
#include "Platform/Linux/CurrentZone.h"
#include "Platform/Faults.h"

#include <errno.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <time.h>

#include <atomic>

#include "Platform/Linux/ZoneTable.h"

namespace Oxa::Core::Platform {

namespace {

constexpr int iPLACES = 16;
constexpr size_t uMAX_NAME = 128;
constexpr long long iCHECK_INTERVAL_MS = 1000;
constexpr long long iLONGEST_TURN_MS = 10000;

// What a zone was read for: a value of TZ, or a state of the machine's own zone file.
struct ZoneKey {
  bool m_bNamed;
  char m_name[uMAX_NAME];
  long long m_fileState[5];
};

struct Place {
  enum EState : int { eFREE, eBEING_FILLED, eREADY };
  std::atomic<int> m_eState;
  ZoneKey m_key;
  ZoneTable m_zone;
};

// What this thread used last, so that the next time stamp needs no search.
struct LastUse {
  const Place* m_pPlace;
  ZoneSegment m_segment;
};

Place s_places[iPLACES];
std::atomic<Place*> s_pCurrent;
std::atomic<long long> s_iNextCheck;
std::atomic<long long> s_iTurnUntil;  // somebody fills a place; 0 is nobody
// Initial-exec here and in the clock: the first touch on a thread takes no memory, and none costs a call.
[[gnu::tls_model("initial-exec")]] thread_local LastUse s_lastUse;

// Time stamps are taken between a failure and the look at errno.
class KeptErrno {
 public:
  KeptErrno() : m_iErrno(errno) {}
  KeptErrno(const KeptErrno&) = delete;
  KeptErrno& operator=(const KeptErrno&) = delete;
  ~KeptErrno() { errno = m_iErrno; }

 private:
  int m_iErrno;
};

long long CoarseMilliseconds() {
  timespec now;
  clock_gettime(CLOCK_MONOTONIC_COARSE, &now);
  return now.tv_sec * 1000LL + now.tv_nsec / 1000000;
}

// False for a name that is too long to be kept, and where the system can't tell the file's state now.
bool MakeKey(const char* tz, ZoneKey& key) {
  memset(&key, 0, sizeof key);
  if (tz != nullptr) {
    const size_t length = strlen(tz);
    if (length >= uMAX_NAME) return false;
    key.m_bNamed = true;
    memcpy(key.m_name, tz, length);
    return true;
  }
  struct stat status;
  if (stat(g_pMACHINE_ZONE_FILE, &status) != 0) return !FailedForTheMoment(errno);
  key.m_fileState[0] = static_cast<long long>(status.st_dev);
  key.m_fileState[1] = static_cast<long long>(status.st_ino);
  key.m_fileState[2] = status.st_mtim.tv_sec;
  key.m_fileState[3] = status.st_mtim.tv_nsec;
  key.m_fileState[4] = status.st_size;
  return true;
}

bool SameKey(const ZoneKey& a, const ZoneKey& b) {
  return a.m_bNamed == b.m_bNamed && strcmp(a.m_name, b.m_name) == 0 &&
         memcmp(a.m_fileState, b.m_fileState, sizeof a.m_fileState) == 0;
}

bool StillInForce(const ZoneKey& key, const char* tz) {
  if (tz != nullptr) return key.m_bNamed && strcmp(tz, key.m_name) == 0;
  return !key.m_bNamed && CoarseMilliseconds() < s_iNextCheck.load(std::memory_order_relaxed);
}

// Places are filled from the first on. Those behind a free one aren't looked at: each would be a page of memory that
// nobody has needed yet.
Place* FindPlace(const ZoneKey& key) {
  for (Place& place : s_places) {
    const int state = place.m_eState.load(std::memory_order_acquire);
    if (state == Place::eFREE) return nullptr;
    if (state == Place::eREADY && SameKey(place.m_key, key)) return &place;
  }
  return nullptr;
}

// The right to fill places, so that threads that meet a new zone together don't fill all places with it. It
// is taken or not, never waited for. Whoever ends or is forked away in his turn loses it after a while; if he
// comes back all the same, no more than a place is lost.
class Turn {
 public:
  Turn() : m_iUntil(CoarseMilliseconds() + iLONGEST_TURN_MS) {
    long long other = s_iTurnUntil.load(std::memory_order_relaxed);
    const bool free = other == 0 || other <= m_iUntil - iLONGEST_TURN_MS;
    m_bTaken = free && s_iTurnUntil.compare_exchange_strong(other, m_iUntil, std::memory_order_acquire);
  }
  Turn(const Turn&) = delete;
  Turn& operator=(const Turn&) = delete;
  ~Turn() {
    long long own = m_iUntil;
    if (m_bTaken) s_iTurnUntil.compare_exchange_strong(own, 0, std::memory_order_release);
  }

  bool Taken() const { return m_bTaken; }

 private:
  long long m_iUntil;
  bool m_bTaken;
};

Place* ClaimPlace() {
  for (Place& place : s_places) {
    int expected = Place::eFREE;
    if (place.m_eState.compare_exchange_strong(expected, Place::eBEING_FILLED)) return &place;
  }
  return nullptr;
}

// Whether `zone` is what `key` stands for. A machine's file that was replaced between the look at it and the
// reading isn't.
bool ReadKeyedZone(const ZoneKey& key, const char* tz, ZoneTable& zone) {
  if (FailedForTheMoment(ReadZone(tz, zone))) return false;
  ZoneKey after;
  return MakeKey(tz, after) && SameKey(key, after);
}

Place* FillPlace(const ZoneKey& key, const char* tz) {
  const Turn turn;
  if (!turn.Taken()) return nullptr;
  if (Place* const place = FindPlace(key)) return place;  // whoever had the turn before wanted the same
  Place* const place = ClaimPlace();
  if (place == nullptr) return nullptr;
  place->m_key = key;
  const bool filled = ReadKeyedZone(key, tz, place->m_zone);
  place->m_eState.store(filled ? Place::eREADY : Place::eFREE, std::memory_order_release);
  return filled ? place : nullptr;
}

// The place of the zone in force, or null if it has none now.
__attribute__((noinline)) const Place* ChangePlace(const char* tz) {
  const HoldCancellation hold;  // opening a file may be where a cancelled thread ends
  const KeptErrno kept;
  const long long nextCheck = CoarseMilliseconds() + iCHECK_INTERVAL_MS;
  ZoneKey key;
  if (!MakeKey(tz, key)) return nullptr;
  Place* place = FindPlace(key);
  if (place == nullptr) place = FillPlace(key, tz);
  if (place == nullptr) return nullptr;
  s_iNextCheck.store(nextCheck, std::memory_order_relaxed);
  s_pCurrent.store(place, std::memory_order_release);
  return place;
}

__attribute__((noinline)) int OffsetWithoutPlace(const char* tz, long long seconds) {
  const HoldCancellation hold;  // opening a file may be where a cancelled thread ends
  const KeptErrno kept;
  ZoneTable zone;
  ReadZone(tz, zone);
  return SegmentAt(zone, seconds).m_iOffset;
}

}  // namespace

int CurrentOffset(long long seconds) noexcept {
  const char* const tz = getenv("TZ");
  const Place* place = s_pCurrent.load(std::memory_order_acquire);
  if (place == nullptr || !StillInForce(place->m_key, tz)) place = ChangePlace(tz);
  if (place == nullptr) return OffsetWithoutPlace(tz, seconds);
  LastUse& last = s_lastUse;
  if (last.m_pPlace != place || seconds < last.m_segment.m_iFrom || seconds >= last.m_segment.m_iUntil) {
    last = {place, SegmentAt(place->m_zone, seconds)};
  }
  return last.m_segment.m_iOffset;
}

}  // namespace Oxa::Core::Platform
