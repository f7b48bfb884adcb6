// Names of classes and enumerations with the namespaces and classes that they lie in.
#ifndef OXACORE_PLATFORM_LINUX_TYPENAMES_H
#define OXACORE_PLATFORM_LINUX_TYPENAMES_H

#include <string>
#include <unordered_map>
#include <vector>

#include "Platform/Linux/DwFunctions.h"

namespace Oxa::Core::Platform {

/// Debug data knows of an entry's children, not of its parent: the parents of a unit's types are looked up once.
class TypeNames {
 public:
  /// The qualified name of the type at `die`; empty for a type that has none. `alias` stands in for that name then.
  std::string Of(const Dw& dw, Dwarf_Die die, const char* alias);

 private:
  struct Place {
    const void* m_pEntry;  // its address in the debug data
    int m_iParent;         // -1: the unit
    const char* m_pName;
    bool m_bNamespace;
  };
  using Unit = std::vector<Place>;

  const Unit& UnitOf(const Dw& dw, Dwarf_Die& die);
  static void AddChildren(const Dw& dw, Dwarf_Die& parent, int place, int depth, Unit& unit);
  static const Place* Find(const Unit& unit, const void* entry);
  static std::string NameFrom(const Unit& unit, const Place* place);
  static std::string LocalName(const Dw& dw, Dwarf_Die& die);

  const Unit m_none{};  // of what lies in no unit
  std::unordered_map<const void*, Unit> m_units;
};

/// `name` as the language has it, if it's one of its library: without the versions of namespaces that the library has
/// inside of `std`, and in one style of blanks.
std::string StandardName(std::string name);

}  // namespace Oxa::Core::Platform

#endif
