#include "Platform/Faults.h"

#include <cxxabi.h>

namespace Oxa::Core::Platform {

void LetCancellationPass() {
  try {
    throw;
  } catch (abi::__forced_unwind&) {
    throw;
  } catch (...) {
    // An ordinary exception: the caller deals with it.
  }
}

}  // namespace Oxa::Core::Platform
