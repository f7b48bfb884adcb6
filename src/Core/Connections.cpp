#include "Core/Life.h"
#include "ErrorHandling/Hooks.h"

namespace Oxa::Core {

void ConnectHooks() {}

}  // namespace Oxa::Core
