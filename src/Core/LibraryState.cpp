#include "Core/LibraryState.h"

#include <atomic>
#include <cstdlib>

#include "Platform/Storage.h"

namespace Oxa::Core {

namespace {

// Constant-initialised and trivially destructible: readable before the first and after the last object.
std::atomic<bool> s_bUnloading{false};
std::atomic<bool> s_bExiting{false};

}  // namespace

bool IsLibraryUnloading() noexcept { return s_bUnloading.load(); }

void SetLibraryUnloading() noexcept { s_bUnloading.store(true); }

bool IsExitingAfterFatalError() noexcept { return s_bExiting.load(std::memory_order_relaxed); }

bool GoesByFatalError() noexcept { return IsExitingAfterFatalError() && !Platform::IsBeingUnmapped(); }

void ExitAfterFatalError(int status) {
  s_bExiting.store(true, std::memory_order_relaxed);
  std::exit(status);
}

}  // namespace Oxa::Core
