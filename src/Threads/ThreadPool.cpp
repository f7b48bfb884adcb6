#include <Infrastructure/OxaCore/ThreadPool.h>

#include "Platform/Faults.h"

namespace Oxa::Core {

void SwallowFailureOfPool() { Platform::LetCancellationPass(); }

}  // namespace Oxa::Core
