#include "Core/Life.h"
#include "ErrorHandling/AlertManagerHooks.h"
#include "ErrorHandling/Hooks.h"

namespace Oxa::Core {

void ConnectHooks() { AlertHooks::Connect(TheHooks()); }

}  // namespace Oxa::Core
