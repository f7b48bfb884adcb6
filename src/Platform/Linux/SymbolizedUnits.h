// The compile units of a module, and the functions in them, by address.
#ifndef OXACORE_PLATFORM_LINUX_SYMBOLIZEDUNITS_H
#define OXACORE_PLATFORM_LINUX_SYMBOLIZEDUNITS_H

#include <unordered_map>
#include <vector>

#include "Platform/Linux/DwFunctions.h"

namespace Oxa::Core::Platform {

/// Ranges of addresses, each with the place of the entry in the debug data that it belongs to.
class EntriesByAddress {
 public:
  void Add(Dwarf_Addr begin, Dwarf_Addr end, Dwarf_Off entry) { m_ranges.push_back({begin, end, entry}); }
  void Sort();
  /// False if no range has the address.
  bool Find(Dwarf_Addr address, Dwarf_Off& entry) const;

 private:
  struct Range {
    Dwarf_Addr m_begin;
    Dwarf_Addr m_end;
    Dwarf_Off m_entry;
  };
  std::vector<Range> m_ranges;
};

/// Tables of our own: not every compiler writes some into the debug data, and the library's look-up goes through all
/// functions of a unit each time. Addresses are those of the debug data.
class SymbolizedUnits {
 public:
  explicit SymbolizedUnits(const Dw& dw) : m_dw(dw) {}

  void Read(Dwarf* debugData);

  bool FindUnit(Dwarf_Addr address, Dwarf_Die& unit) const;

  /// The function of `unit` that has the address.
  bool FindFunction(const Dwarf_Die& unit, Dwarf_Addr address, Dwarf_Die& function);

 private:
  // First those that stand in the unit itself. What stands in its namespaces is looked for where that isn't enough.
  struct Functions {
    EntriesByAddress m_outer;
    EntriesByAddress m_inner;
    bool m_bInnerRead = false;
  };

  void AddRanges(EntriesByAddress& entries, Dwarf_Die& entry);
  void AddFunctions(EntriesByAddress& entries, Dwarf_Die parent, int depth);
  void AddInnerFunctions(EntriesByAddress& entries, Dwarf_Die unit);

  const Dw& m_dw;
  int m_iRangesLeft = 1000000;  // for all entries of the module; damaged data may go round in circles
  int m_iChildrenLeft = 0;      // for the unit that is being read
  Dwarf* m_pDebugData = nullptr;
  EntriesByAddress m_units;
  std::unordered_map<Dwarf_Off, Functions> m_functions;  // by unit
};

}  // namespace Oxa::Core::Platform

#endif
