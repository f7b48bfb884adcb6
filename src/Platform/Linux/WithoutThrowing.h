// What keeps exceptions inside the seam.
#ifndef OXACORE_PLATFORM_LINUX_WITHOUTTHROWING_H
#define OXACORE_PLATFORM_LINUX_WITHOUTTHROWING_H

#include <errno.h>

#include <exception>
#include <new>

namespace Oxa::Core::Platform {

/// Runs what gives an error code; running out of memory is one too.
template <class Operation>
int WithoutThrowing(const Operation& operation) noexcept {
  try {
    return operation();
  } catch (const std::bad_alloc&) {
    return ENOMEM;
  } catch (const std::exception&) {
    return EINVAL;
  }
}

}  // namespace Oxa::Core::Platform

#endif
