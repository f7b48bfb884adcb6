// Faults that go to the last chance, which ends the process: for tests of deaths.
#ifndef OXACORE_TESTS_SUPPORT_FAULTDEATH_H
#define OXACORE_TESTS_SUPPORT_FAULTDEATH_H

#include <unistd.h>

#include "Platform/Faults.h"

namespace TestSupport {

/// Ends with status 9 where `site` comes to the last chance by a touch of memory, with 10 by another fault, else with 1.
template <class Site>
[[noreturn]] void DieBy(const Site& site) {
  using namespace Oxa::Core::Platform;
  SetLastChance([](_EXCEPTION_POINTERS* pointers) -> long {
    ::_exit(FactsOf(*pointers).m_uCode == eACCESS_VIOLATION ? 9 : 10);
  });
  site();
  ::_exit(1);
}

}  // namespace TestSupport

#endif
