// For what is different in a program under a sanitizer with an allocator and locks of its own.
#ifndef OXACORE_TESTS_SUPPORT_SANITIZED_H
#define OXACORE_TESTS_SUPPORT_SANITIZED_H

namespace TestSupport {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool bSANITIZED = true;
#else
constexpr bool bSANITIZED = false;
#endif

}  // namespace TestSupport

#endif
