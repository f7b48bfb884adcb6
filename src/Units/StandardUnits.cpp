#include "Units/StandardUnits.h"

#include <Infrastructure/OxaCore/Lock.h>
#include <Infrastructure/OxaCore/UnitDictionary.h>

#include <boost/make_shared.hpp>

#include <atomic>

namespace Oxa::Core {

namespace {

// What the static pointer holds, for those who ask without the lock.
std::atomic<const UnitDictionary*> s_pStandardUnits{nullptr};

constexpr long long llLONGEST_MS = 0x7fffffff;

}  // namespace

const UnitDictionary& UnitDictionary::StandardUnits() {
  if (const UnitDictionary* const units = s_pStandardUnits.load(std::memory_order_acquire)) return *units;
  const Lock lock(sm_standardUnitsMutex, Elapse(llLONGEST_MS, Elapse::MilliSeconds));
  if (!sm_spStandardUnits) {
    sm_spStandardUnits = boost::make_shared<UnitDictionary>(true);
    s_pStandardUnits.store(sm_spStandardUnits.get(), std::memory_order_release);
  }
  return *sm_spStandardUnits;
}

void ReleaseStandardUnits() {
  s_pStandardUnits.store(nullptr, std::memory_order_relaxed);
  UnitDictionary::sm_spStandardUnits.reset();
}

}  // namespace Oxa::Core
