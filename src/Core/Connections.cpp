#include "Core/Life.h"
#include "ErrorHandling/AlertManagerHooks.h"
#include "ErrorHandling/FatalSteps.h"
#include "ErrorHandling/Hooks.h"
#include "ErrorHandling/MicrosoftDebugHelpLife.h"
#include "ErrorHandling/MicrosoftSEHAdapterHooks.h"
#include "Log/LogHooks.h"
#include "System/Circumstances.h"

namespace Oxa::Core {

void ConnectHooks() {
  TheHooks().addCircumstances = &AddCircumstances;
  TheHooks().markCircumstances = &MarkCircumstances;
  AlertHooks::Connect(TheHooks());
  ConnectLog(TheHooks());
  ConnectFaults(TheHooks());
  ConnectFatalSteps(TheHooks());
  MSWindows::DebugHelpLife::Connect(TheHooks());
}

}  // namespace Oxa::Core
