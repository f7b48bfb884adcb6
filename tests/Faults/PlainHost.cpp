// A host, and one whose compiler doesn't expect instructions to throw: by another than g++, or without the flag.
// Compiled on its own, with PLAIN_HOST_PREFIX for the prefix of its names.
#include <Infrastructure/OxaCore/MicrosoftSEHAdapter.h>
#include <Infrastructure/OxaCore/Notifications.h>

#include <sys/mman.h>

#include <cstring>
#include <functional>
#include <new>

#include "Support/FaultSite.h"

#define PLAIN_HOST_JOIN(prefix, name) prefix##name
#define PLAIN_HOST_NAME(prefix, name) PLAIN_HOST_JOIN(prefix, name)
#define PLAIN_HOST(name) PLAIN_HOST_NAME(PLAIN_HOST_PREFIX, name)

namespace {

using namespace Oxa::Core;

struct Guard {
  explicit Guard(int& count) : m_count(count) { ++m_count; }
  Guard(const Guard&) = delete;
  Guard& operator=(const Guard&) = delete;
  ~Guard() { --m_count; }
  int& m_count;
};

int s_iAlive = 0;

OXA_FAULT_SITE void Write(volatile int* place) { *place = 1; }

void Log(int& value) noexcept { ++value; }

// Has something to clean up, and no entry for the instruction that faults.
OXA_FAULT_SITE void WriteInItself(volatile int* place) {
  const Guard guard(s_iAlive);
  *place = 1;
  Log(s_iAlive);
  --s_iAlive;
}

OXA_FAULT_SITE void CopyFrom(void* to, const void* from, std::size_t size) {
  const Guard guard(s_iAlive);
  std::memcpy(to, from, size);
}

class Page {
 public:
  Page() : m_pMemory(mmap(nullptr, uSIZE, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0)) {}
  Page(const Page&) = delete;
  Page& operator=(const Page&) = delete;
  ~Page() { munmap(m_pMemory, uSIZE); }

  void* Memory() const { return m_pMemory; }
  void Open() const { mprotect(m_pMemory, uSIZE, PROT_READ | PROT_WRITE); }
  void Close() const { mprotect(m_pMemory, uSIZE, PROT_NONE); }

 private:
  static constexpr std::size_t uSIZE = 4096;

  void* const m_pMemory;
};

class Hearer : public NotificationListener {
 public:
  int m_iHeard = 0;
  std::function<void()> m_onEvent;
};

class Event final : public NotificationTo<Hearer> {
  void Tell(Hearer& hearer) override {
    ++hearer.m_iHeard;
    if (hearer.m_onEvent) hearer.m_onEvent();
  }
};

void (*volatile const s_write)(volatile int*) = &Write;
void (*volatile const s_writeInItself)(volatile int*) = &WriteInItself;
void (*volatile const s_copy)(void*, const void*, std::size_t) = &CopyFrom;

}  // namespace

// A catch clause around a call.
extern "C" bool PLAIN_HOST(CatchesAroundACall)() {
  try {
    const Guard guard(s_iAlive);
    s_write(nullptr);
  } catch (MSWindows::AccessViolation&) {
    return s_iAlive == 0;
  }
  return false;
}

// A function between that isn't prepared: it is left as it stands.
extern "C" bool PLAIN_HOST(CatchesBehindAFunctionThatIsNotPrepared)() {
  s_iAlive = 0;
  try {
    s_writeInItself(nullptr);
  } catch (MSWindows::AccessViolation&) {
    s_iAlive = 0;
    return true;
  }
  return false;
}

// A call that the compiler takes for one that throws nothing.
extern "C" bool PLAIN_HOST(CatchesWhatACopyDid)(void* to, const void* from, std::size_t size) {
  try {
    s_copy(to, from, size);
  } catch (MSWindows::AccessViolation&) {
    s_iAlive = 0;
    return true;
  }
  return false;
}

// The memory of one of them is gone while the others hear; it comes back if they hear too often.
extern "C" bool PLAIN_HOST(BroadcastsPastAListenerThatIsGone)() {
  const Page page;
  Hearer first;
  Hearer* const gone = new (page.Memory()) Hearer;
  Hearer last;
  first.m_onEvent = [&first, &page] {
    if (first.m_iHeard > 3) return page.Open();
    page.Close();
  };
  NotificationSupport support(NotificationSupport::eFIRST_ADDED_FIRST);
  for (Hearer* const hearer : {&first, gone, &last}) support.AddListener(*hearer);
  Event event;
  support.Broadcast(event);
  page.Open();
  const bool passed = first.m_iHeard == 1 && gone->m_iHeard == 0 && last.m_iHeard == 1;
  gone->~Hearer();
  return passed;
}
