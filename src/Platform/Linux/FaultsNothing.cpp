// Where faults can't be told apart: what is asked for is remembered, and nothing is done about it.
#if !defined(__x86_64__) || defined(OXACORE_TEST_NO_FAULTS)

#include "Platform/Faults.h"

#include <atomic>

namespace Oxa::Core::Platform {

namespace {

std::atomic<LastChance> s_lastChance{nullptr};
[[gnu::tls_model("initial-exec")]] __thread FaultTranslator t_pTranslator;

}  // namespace

FaultTranslator SetFaultTranslator(FaultTranslator translator) noexcept {
  const FaultTranslator before = t_pTranslator;
  t_pTranslator = translator;
  return before;
}

FaultTranslator CurrentFaultTranslator() noexcept { return t_pTranslator; }

LastChance SetLastChance(LastChance filter) noexcept { return s_lastChance.exchange(filter); }

void RemoveFaultHandling() noexcept {
  s_lastChance.store(nullptr);
  t_pTranslator = nullptr;
}

void ClearFloatingPointState() noexcept {}

bool CallGuarded(void (*action)(void*), void* argument) noexcept {
  action(argument);
  return true;
}

void CallOnNewStack(std::size_t, void (*action)(void*), void* argument) noexcept { action(argument); }

void CallWithRoom(std::size_t, void (*action)(void*), void* argument) noexcept { action(argument); }

std::uintptr_t EndOfStack() noexcept { return 0; }

}  // namespace Oxa::Core::Platform

#endif
