#include "ErrorHandling/FatalSteps.h"

#include <Infrastructure/OxaCore/MicrosoftSEHAdapter.h>
#include <Infrastructure/OxaCore/RaiseSite.h>

#include <csignal>
#include <cstddef>
#include <exception>
#include <iterator>

#include "ErrorHandling/AlertManagerHooks.h"
#include "ErrorHandling/FatalDump.h"
#include "ErrorHandling/FatalErrorEnd.h"

#include "Platform/Faults.h"
#include "Platform/Files.h"
#include "Platform/FloatTraps.h"
#include "Platform/Storage.h"
#include "Platform/Uncaught.h"

namespace Oxa::Core {

namespace {

constexpr std::size_t uSTACK = 1024 * 1024;

// Nothing is to cut into the last steps: no cancellation, no signal for a write that the limit for files forbids, no
// trap that the host has set for operations with numbers.
struct Undisturbed {
  Platform::HoldCancellation m_hold;
  Platform::FileLimitGuard m_guard;
  Platform::HoldFloatTraps m_untrapped;
};

using UncaughtAction = void (*)(_EXCEPTION_POINTERS& pointers, void* argument);

// The dump, and what there is to say about it.
void TakeFilterSteps(_EXCEPTION_POINTERS& pointers, void*) {
  DieBySignal(Platform::SignalOf(pointers));
  FatalDump dump;
  dump.Write(pointers);
  dump.Tell();
}

void EndByFilter(void* pointers) {
  TakeFilterSteps(*static_cast<_EXCEPTION_POINTERS*>(pointers), nullptr);
  AlertHooks::EndByTerminateHandler();
}

void EndWithoutFilter(void*) {
  DieBySignal(SIGABRT);
  AlertHooks::EndByTerminateHandler();
}

// The thread may have hardly any stack left.
void EndByFilterOnNewStack(_EXCEPTION_POINTERS& pointers, void*) {
  Platform::CallOnNewStack(uSTACK, &EndByFilter, &pointers);
}

// The functions that raise are not where the failure is.
void WithPlaceOfRaise(UncaughtAction action) noexcept {
  using RaiseAny = void (CodeSite::*)(LogName, Error&, bool) const;
  using RaiseNew = void (CodeSite::*)(LogName, Error&&, bool) const;
  using ForwardError = void (CodeSite::*)(Error&, std::initializer_list<PlaceDetail>) const;
  using ForwardOther =
      void (CodeSite::*)(const std::exception&, std::initializer_list<PlaceDetail>, LogName) const;
  const void* const carriers[] = {Platform::CodeOf(&Error::RaiseError),
                                  Platform::CodeOf(&Error::Rethrow),
                                  Platform::CodeOf(static_cast<RaiseAny>(&CodeSite::Raise)),
                                  Platform::CodeOf(static_cast<RaiseNew>(&CodeSite::Raise)),
                                  Platform::CodeOf(static_cast<ForwardError>(&CodeSite::Forward)),
                                  Platform::CodeOf(static_cast<ForwardOther>(&CodeSite::Forward)),
                                  Platform::CodeOf(&CodeSite::ForwardUnknown)};
  Platform::WithUncaughtPlace(carriers, std::size(carriers), action, nullptr);
}

// The fault that the exception in hand was made of, as long as it can be looked at.
_EXCEPTION_POINTERS* FaultInHand() noexcept {
  try {
    throw;
  } catch (MSWindows::SEHError& error) {
    _EXCEPTION_POINTERS& pointers = error.GetExceptionPointers();
    return Platform::StillStands(pointers) ? &pointers : nullptr;
  } catch (...) {
    return nullptr;
  }
}

void EndUncaught() {
  const Undisturbed undisturbed;
  BeginDying();
  if (!std::current_exception()) {
    Platform::CallOnNewStack(uSTACK, &EndWithoutFilter, nullptr);
  } else if (_EXCEPTION_POINTERS* const pointers = FaultInHand()) {
    EndByFilterOnNewStack(*pointers, nullptr);
  } else {
    WithPlaceOfRaise(&EndByFilterOnNewStack);
  }
}

}  // namespace

void ConnectFatalSteps(Hooks& hooks) noexcept {
  hooks.endUncaught = &EndUncaught;
  Platform::CallInForkedChild(&ForgetDeathsOfParent);
}

}  // namespace Oxa::Core

long OxaUnhandledExceptionFilter(_EXCEPTION_POINTERS* pointers) {
  using namespace Oxa::Core;
  const Undisturbed undisturbed;
  BeginDying();
  const bool known =
      pointers != nullptr && pointers->ExceptionRecord != nullptr && pointers->ContextRecord != nullptr;
  if (known) {
    TakeFilterSteps(*pointers, nullptr);
  } else {
    WithPlaceOfRaise(&TakeFilterSteps);
  }
  AlertHooks::EndByTerminateHandler();
  return 0;
}
