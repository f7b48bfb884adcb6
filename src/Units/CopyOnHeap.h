// How a unit copies itself to the heap, and what it raises when there is no memory.
#ifndef OXACORE_UNITS_COPYONHEAP_H
#define OXACORE_UNITS_COPYONHEAP_H

#include <Infrastructure/OxaCore/UnitDescriptor.h>

#include <boost/make_shared.hpp>
#include <new>

namespace Oxa::Core {

/// Raises AllocationFailed of `className` under `logName`.
void RaiseNoMemoryForCopy(const char* logName, const char* className);

/// A copy of `original` in one allocation; null where the raise returns.
template <class Unit>
boost::shared_ptr<UnitDescriptor> CopyOnHeap(const Unit& original, const char* logName,
                                             const char* className) {
  try {
    return boost::make_shared<Unit>(original);
  } catch (const std::bad_alloc&) {
  }
  RaiseNoMemoryForCopy(logName, className);
  return {};
}

}  // namespace Oxa::Core

#endif
