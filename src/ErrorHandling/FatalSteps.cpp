#include "ErrorHandling/FatalSteps.h"

#include <csignal>

#include "ErrorHandling/AlertManagerHooks.h"
#include "ErrorHandling/FatalErrorEnd.h"

#include "Platform/Faults.h"

namespace Oxa::Core {

namespace {

void EndUncaught() {
  const Platform::HoldCancellation hold;
  BeginDying(SIGABRT);
  AlertHooks::EndByTerminateHandler();
}

}  // namespace

void ConnectFatalSteps(Hooks& hooks) noexcept { hooks.endUncaught = &EndUncaught; }

}  // namespace Oxa::Core
