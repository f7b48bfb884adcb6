// How a unit copies itself to the heap, and what it raises when there is no memory.
#ifndef OXACORE_UNITS_COPYONHEAP_H
#define OXACORE_UNITS_COPYONHEAP_H

#include <Infrastructure/OxaCore/UnitDescriptor.h>

#include <boost/shared_ptr.hpp>
#include <new>
#include <utility>

namespace Oxa::Core {

/// Room for a unit within the counts of its shared pointer, as their deleter: so both are one allocation.
/// boost::make_shared has the same, but counts up and down once more while it hands the pointer out, which is half
/// of what a look-up takes.
template <class Unit>
class UnitInCounts {
 public:
  UnitInCounts() noexcept = default;
  UnitInCounts(const UnitInCounts&) noexcept {}  // only before the unit is there
  UnitInCounts& operator=(const UnitInCounts&) = delete;
  ~UnitInCounts() = default;

  Unit* Create(const Unit& original) { return m_pUnit = ::new (m_room) Unit(original); }

  void operator()(const void*) noexcept {
    if (m_pUnit != nullptr) m_pUnit->~Unit();
  }

 private:
  Unit* m_pUnit = nullptr;
  alignas(Unit) unsigned char m_room[sizeof(Unit)];
};

/// Raises AllocationFailed of `className` under `logName`.
void RaiseNoMemory(const char* logName, const char* className);

/// A copy of `original` in one allocation; null where the raise returns.
template <class Unit>
boost::shared_ptr<UnitDescriptor> CopyOnHeap(const Unit& original, const char* logName,
                                             const char* className) {
  try {
    boost::shared_ptr<UnitDescriptor> counts(static_cast<UnitDescriptor*>(nullptr), UnitInCounts<Unit>());
    Unit* const unit = boost::get_deleter<UnitInCounts<Unit>>(counts)->Create(original);
    return boost::shared_ptr<UnitDescriptor>(std::move(counts), unit);
  } catch (const std::bad_alloc&) {
  }
  RaiseNoMemory(logName, className);
  return {};
}

}  // namespace Oxa::Core

#endif
