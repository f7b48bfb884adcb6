// For what is lost on purpose.
#ifndef OXACORE_TESTS_SUPPORT_LEAKDETECTOR_H
#define OXACORE_TESTS_SUPPORT_LEAKDETECTOR_H

#if defined(__SANITIZE_ADDRESS__)
#include <sanitizer/lsan_interface.h>
#endif

namespace TestSupport {

/// What the calling thread allocates from here on may be lost, with a thread that is killed or by a call that is cut
/// short; a leak detector needn't tell.
inline void ForgiveLeaks() {
#if defined(__SANITIZE_ADDRESS__)
  __lsan_disable();
#endif
}

}  // namespace TestSupport

#endif
