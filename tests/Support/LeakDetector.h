// For threads that are killed.
#ifndef OXACORE_TESTS_SUPPORT_LEAKDETECTOR_H
#define OXACORE_TESTS_SUPPORT_LEAKDETECTOR_H

#if defined(__SANITIZE_ADDRESS__)
#include <sanitizer/lsan_interface.h>
#endif

namespace TestSupport {

/// What the calling thread allocates from here on goes with it when it is killed, which a leak detector needn't tell.
inline void DieWithAllThatItHas() {
#if defined(__SANITIZE_ADDRESS__)
  __lsan_disable();
#endif
}

}  // namespace TestSupport

#endif
