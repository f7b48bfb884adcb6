#include "Core/Life.h"
#include "ErrorHandling/AlertManagerHooks.h"
#include "ErrorHandling/Hooks.h"
#include "System/Circumstances.h"

namespace Oxa::Core {

void ConnectHooks() {
  TheHooks().addCircumstances = &AddCircumstances;
  AlertHooks::Connect(TheHooks());
}

}  // namespace Oxa::Core
