// Brings the library into a process that knows nothing of it.
#include <Infrastructure/OxaCore/MicrosoftSEHAdapter.h>

#include "FaultSites.h"

extern "C" __attribute__((visibility("default"))) bool CatchOne() {
  try {
    FaultWrite(nullptr);
  } catch (MSWindows::AccessViolation&) {
    return true;
  }
  return false;
}
