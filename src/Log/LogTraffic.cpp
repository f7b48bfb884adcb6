#include "Log/LogTraffic.h"

#include <atomic>
#include <cstddef>
#include <thread>

#include "Platform/Storage.h"
#include "Platform/Threads.h"

namespace Oxa::Core {

namespace {

constexpr long long llPATIENCE_NS = 1000000000;

// How many threads. As long as a line of cache, so that writers on different cores don't slow one another down.
struct alignas(64) Calls {
  std::atomic<int> m_iCount{0};
};

constexpr std::size_t uPLACES = 16;
Calls s_calls[uPLACES];

std::atomic<int>& CallsOfThisThread() noexcept {
  return s_calls[Platform::CurrentThreadId() % uPLACES].m_iCount;
}

bool CallsLog() noexcept { return Platform::HasThreadFlag(Platform::EThreadFlag::eCALLS_LOG); }

// A handler may be what ends the manager.
bool NobodyElseCalls() noexcept {
  int threads = 0;
  for (const Calls& calls : s_calls) threads += calls.m_iCount.load();
  return threads <= (CallsLog() ? 1 : 0);
}

}  // namespace

// The count goes up before the manager is looked for, and the manager is hidden before the counts are read: one of
// the two threads sees the other.
LogManagerInUse::LogManagerInUse() noexcept : m_bOutermost(!CallsLog()), m_pManager(nullptr) {
  if (m_bOutermost) {
    Platform::SetThreadFlag(Platform::EThreadFlag::eCALLS_LOG, true);
    CallsOfThisThread().fetch_add(1);
  }
  m_pManager = LogManager::Instance();
}

LogManagerInUse::~LogManagerInUse() {
  if (!m_bOutermost) return;
  CallsOfThisThread().fetch_sub(1);
  Platform::SetThreadFlag(Platform::EThreadFlag::eCALLS_LOG, false);
}

void AwaitLogCalls() noexcept {
  const Platform::Deadline deadline = Platform::Deadline::In(llPATIENCE_NS);
  while (!NobodyElseCalls() && !deadline.HasPassed()) std::this_thread::yield();
}

}  // namespace Oxa::Core
