// The second in which we are, told by the clock that the library reads.
#ifndef OXACORE_TESTS_SUPPORT_SECONDSNOW_H
#define OXACORE_TESTS_SUPPORT_SECONDSNOW_H

#include <chrono>
#include <ctime>

namespace TestSupport {

/// std::time() reads a coarser clock, which lags by some milliseconds: a moment that the library tells can lie in a
/// later second than a std::time() behind it.
inline std::time_t SecondsNow() {
  return std::chrono::system_clock::to_time_t(std::chrono::system_clock::now());
}

}  // namespace TestSupport

#endif
