#include "Units/CopyOnHeap.h"

#include <Infrastructure/OxaCore/CommonErrors.h>

namespace Oxa::Core {

void RaiseNoMemory(const char* logName, const char* className) {
  OXA_RAISE_ERROR(logName, AllocationFailed(className));
}

}  // namespace Oxa::Core
