#include "Log/LogTraffic.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <thread>

#include "Platform/Threads.h"

namespace Oxa::Core {

namespace {

constexpr long long llPATIENCE_NS = 1000000000;

// As long as a line of cache, so that writers on different cores don't slow one another down.
struct alignas(64) Calls {
  std::atomic<int> m_iCount{0};
};

constexpr std::size_t uPLACES = 16;
Calls s_calls[uPLACES];

std::atomic<int>& CallsOfThisThread() noexcept {
  return s_calls[Platform::CurrentThreadId() % uPLACES].m_iCount;
}

bool NobodyCalls() noexcept {
  return std::all_of(std::begin(s_calls), std::end(s_calls),
                     [](const Calls& calls) { return calls.m_iCount.load() == 0; });
}

}  // namespace

// The count goes up before the manager is looked for, and the manager is hidden before the counts are read: one of
// the two threads sees the other.
LogManagerInUse::LogManagerInUse() noexcept : m_iCalls(CallsOfThisThread()), m_pManager(nullptr) {
  m_iCalls.fetch_add(1);
  m_pManager = LogManager::Instance();
}

LogManagerInUse::~LogManagerInUse() { m_iCalls.fetch_sub(1); }

void AwaitLogCalls() noexcept {
  const Platform::Deadline deadline = Platform::Deadline::In(llPATIENCE_NS);
  while (!NobodyCalls() && !deadline.HasPassed()) std::this_thread::yield();
}

}  // namespace Oxa::Core
