#include "Platform/Faults.h"

#include <cxxabi.h>
#include <pthread.h>

namespace Oxa::Core::Platform {

// The runtime binds the reference of a cancellation to null, which only the sanitizer minds.
__attribute__((no_sanitize("undefined"))) void LetCancellationPass() {
  try {
    throw;
  } catch (abi::__forced_unwind&) {
    throw;
  } catch (...) {
    // An ordinary exception: the caller deals with it.
  }
}

HoldCancellation::HoldCancellation() noexcept { pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &m_iBefore); }

HoldCancellation::~HoldCancellation() { pthread_setcancelstate(m_iBefore, nullptr); }

}  // namespace Oxa::Core::Platform
