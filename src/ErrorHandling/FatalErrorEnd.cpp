#include "ErrorHandling/FatalErrorEnd.h"

#include <Infrastructure/OxaCore/AlertManager.h>

#include <algorithm>
#include <atomic>
#include <cstddef>

#include "Core/LibraryState.h"

#include "Platform/Clock.h"
#include "Platform/Ending.h"
#include "Platform/Threads.h"

namespace Oxa::Core {

namespace {

constexpr int iTIME_TO_DIE_MS = 10000;
constexpr int iSTATUS = -1;
constexpr unsigned uSLICE_MS = 1;
constexpr std::size_t uPLACES = 32;

struct DyingThread {
  std::atomic<unsigned long> m_ulId{0};
  std::atomic<int> m_iEntries{0};  // how often it has begun to die
};

DyingThread s_dying[uPLACES];               // one thread more than there are places goes without
std::atomic<unsigned long> s_ulWhoEnds{0};  // the thread that ends the process
std::atomic<int> s_iSignal{0};              // of the first death
std::atomic<bool> s_bForOthers{false};      // the end is in the name of other threads

bool Replace(unsigned long id, unsigned long with) noexcept {
  for (DyingThread& thread : s_dying) {
    unsigned long expected = id;
    if (!thread.m_ulId.compare_exchange_strong(expected, with)) continue;
    thread.m_iEntries.store(1);
    return true;
  }
  return false;
}

DyingThread* FindDying(unsigned long id) noexcept {
  for (DyingThread& thread : s_dying) {
    if (thread.m_ulId.load() == id) return &thread;
  }
  return nullptr;
}

bool IsDying(unsigned long id) noexcept { return FindDying(id) != nullptr; }

bool AnyoneIsDying() noexcept {
  for (const DyingThread& thread : s_dying) {
    if (thread.m_ulId.load() != 0) return true;
  }
  return false;
}

void AwaitRecords() noexcept {
  while (AnyoneIsDying()) Platform::SleepMilliseconds(uSLICE_MS);
}

[[noreturn]] void StandStill() noexcept {
  for (;;) Platform::SleepMilliseconds(iTIME_TO_DIE_MS);
}

bool TakeTheEnd(unsigned long id) noexcept {
  unsigned long who = 0;
  return s_ulWhoEnds.compare_exchange_strong(who, id) || who == id;
}

[[noreturn]] void End(int status) {
  const int signal = s_iSignal.load();
  if (AlertManager::GetEndBySignal() && signal != 0) Platform::EndBySignal(signal);
  ExitAfterFatalError(status);
}

// Whatever this thread touches makes it die anew: it touches nothing more.
[[noreturn]] void EndAtOnce(unsigned long id) noexcept {
  Replace(id, 0);
  AwaitRecords();
  const int signal = s_iSignal.load();
  if (AlertManager::GetEndBySignal() && signal != 0) Platform::EndBySignal(signal);
  Platform::EndNow(iSTATUS);
}

// Each report may lead to the next one, and the last one to the warning of that.
bool HasDiedTooOften(DyingThread& thread) noexcept {
  return thread.m_iEntries.fetch_add(1) > std::max(AlertManager::GetMaxFatalErrorReports(), 1);
}

}  // namespace

void BeginDying() noexcept {
  const unsigned long id = Platform::CurrentThreadId();
  Platform::StartDeathWatch(iTIME_TO_DIE_MS, iSTATUS);
  DyingThread* const before = FindDying(id);
  if (before == nullptr) {
    Replace(0, id);
  } else if (HasDiedTooOften(*before)) {
    EndAtOnce(id);
  }
}

void ForgetDeathsOfParent() noexcept {
  for (DyingThread& thread : s_dying) thread.m_ulId.store(0);
  s_ulWhoEnds.store(0);
  s_iSignal.store(0);
  s_bForOthers.store(false);
  Platform::ForgetDeathWatchOfParent();
}

void DieBySignal(int signal) noexcept {
  int none = 0;
  s_iSignal.compare_exchange_strong(none, signal);
  if (AlertManager::GetEndBySignal()) Platform::EndBySignalInstead(s_iSignal.load());
}

void FinishDying(int status) {
  const unsigned long id = Platform::CurrentThreadId();
  Replace(id, 0);
  AwaitRecords();
  if (!TakeTheEnd(id)) StandStill();
  End(status);
}

void AwaitDyingThreads() noexcept {
  const unsigned long id = Platform::CurrentThreadId();
  if (IsDying(id) || s_ulWhoEnds.load() == id) return;
  if (!AnyoneIsDying() && s_ulWhoEnds.load() == 0) return;
  if (!TakeTheEnd(id)) StandStill();
  s_bForOthers.store(true);
  AwaitRecords();
}

void FinishForTheDying() {
  AwaitDyingThreads();
  if (s_bForOthers.load()) End(iSTATUS);
}

}  // namespace Oxa::Core
