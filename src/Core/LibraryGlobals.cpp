#include "Core/LibraryGlobals.h"

#include <atomic>

namespace Oxa::Core {

namespace {

std::atomic<ManagedGlobals*> s_pGlobals{nullptr};

}  // namespace

ManagedGlobals* LibraryGlobals() noexcept { return s_pGlobals.load(std::memory_order_acquire); }

void SetLibraryGlobals(ManagedGlobals* globals) noexcept {
  s_pGlobals.store(globals, std::memory_order_release);
}

}  // namespace Oxa::Core
