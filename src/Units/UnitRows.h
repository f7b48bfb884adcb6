// How the standard units are made and added: a row of the registering functions is one call of these.
#ifndef OXACORE_UNITS_UNITROWS_H
#define OXACORE_UNITS_UNITROWS_H

#include <Infrastructure/OxaCore/UnitDictionary.h>

#include <boost/make_shared.hpp>
#include <boost/shared_ptr.hpp>
#include <initializer_list>
#include <new>
#include <string>
#include <vector>

#include "Units/CopyOnHeap.h"
#include "Units/UnitDictionaryErrors.h"

namespace Oxa::Core {

/// A unit on the heap, made from these arguments. Raises AllocationFailed; null where that returns.
template <class Unit = UnitDescriptor, class... Arguments>
boost::shared_ptr<UnitDescriptor> NewUnit(const Arguments&... arguments) {
  try {
    return boost::make_shared<Unit>(arguments...);
  } catch (const std::bad_alloc&) {
  }
  RaiseNoMemory(sUNIT_DICTIONARY_LOG, "UnitDescriptor");
  return {};
}

using AlternateNames = std::initializer_list<const char*>;

/// Adds a unit of which `factor` of the unit of `expression` make one; see UnitOf for the expression and for what
/// is raised where a unit of it is missing. Then nothing is added.
void AddDerived(UnitDictionary& dictionary, const char* name, const char* abbreviation, double factor,
                const char* expression, const char* pluralSuffix, AlternateNames alternateNames = {});

/// Adds the unit of `expression` itself under another name.
void AddRenamed(UnitDictionary& dictionary, const char* name, const char* abbreviation,
                const char* expression, const char* pluralSuffix, AlternateNames alternateNames = {});

}  // namespace Oxa::Core

#endif
