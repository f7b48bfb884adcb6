// Floating-point operations that trap, kept from doing so for a while.
#ifndef OXACORE_PLATFORM_FLOATTRAPS_H
#define OXACORE_PLATFORM_FLOATTRAPS_H

#include <cfenv>

namespace Oxa::Core::Platform {

/// While it stands, no floating-point operation of this thread traps, and exceptions that are pending are forgotten;
/// then the thread's environment is what it was before, with its traps and all that was pending. For work on a
/// thread whose owner may have switched traps on. Allocates nothing.
class HoldFloatTraps {
 public:
  HoldFloatTraps() noexcept;
  HoldFloatTraps(const HoldFloatTraps&) = delete;
  HoldFloatTraps& operator=(const HoldFloatTraps&) = delete;
  ~HoldFloatTraps();

 private:
  std::fenv_t m_before;
};

}  // namespace Oxa::Core::Platform

#endif
