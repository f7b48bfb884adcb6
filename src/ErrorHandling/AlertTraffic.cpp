#include "ErrorHandling/AlertTraffic.h"

#include <atomic>
#include <thread>

#include "Core/LibraryState.h"
#include "Platform/Kill.h"
#include "Platform/Storage.h"
#include "Platform/Threads.h"

namespace Oxa::Core {

namespace {

constexpr long long llPATIENCE_NS = 1000000000;

std::atomic<int> s_iThreadsTelling{0};

}  // namespace

// The count goes up before the flag is read, and the flag is set before the count is read: one of the two
// threads sees the other.
AlertInFlight::AlertInFlight() noexcept : m_iDepth(Enter()) {}

AlertInFlight::~AlertInFlight() {
  const Platform::HoldKill whole;
  if (Platform::ChangeThreadDepth(-1) == 0) s_iThreadsTelling.fetch_sub(1);
}

int AlertInFlight::Enter() noexcept {
  const Platform::HoldKill whole;
  const int depth = Platform::ChangeThreadDepth(1);
  if (depth == 1) s_iThreadsTelling.fetch_add(1);
  return depth;
}

void AlertInFlight::DropThisThread() noexcept {
  if (Platform::ChangeThreadDepth(0) > 0) s_iThreadsTelling.fetch_sub(1);
}

bool AlertInFlight::MayProceed() const noexcept { return !IsLibraryUnloading(); }

void AwaitAlertsInFlight() noexcept {
  // A listener may be what called exit.
  const int own = Platform::ChangeThreadDepth(0) > 0 ? 1 : 0;
  const Platform::Deadline deadline = Platform::Deadline::In(llPATIENCE_NS);
  while (s_iThreadsTelling.load() > own && !deadline.HasPassed()) std::this_thread::yield();
}

}  // namespace Oxa::Core
