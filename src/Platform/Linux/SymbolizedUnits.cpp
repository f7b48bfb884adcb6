#include "Platform/Linux/SymbolizedUnits.h"

#include <algorithm>

namespace Oxa::Core::Platform {

namespace {

constexpr int iMAX_DEPTH = 32;          // of namespaces in each other
constexpr int iMAX_CHILDREN = 1000000;  // of one unit: damaged data may go round in circles

bool IsNamespace(int tag) { return tag == DW_TAG_namespace || tag == DW_TAG_module; }

}  // namespace

void EntriesByAddress::Sort() {
  std::sort(m_ranges.begin(), m_ranges.end(),
            [](const Range& a, const Range& b) { return a.m_begin < b.m_begin; });
}

bool EntriesByAddress::Find(Dwarf_Addr address, Dwarf_Off& entry) const {
  const auto behind =
      std::upper_bound(m_ranges.begin(), m_ranges.end(), address,
                       [](Dwarf_Addr value, const Range& range) { return value < range.m_begin; });
  if (behind == m_ranges.begin() || address >= (behind - 1)->m_end) return false;
  entry = (behind - 1)->m_entry;
  return true;
}

void SymbolizedUnits::AddRanges(EntriesByAddress& entries, Dwarf_Die& entry) {
  Dwarf_Addr base = 0;
  Dwarf_Addr begin = 0;
  Dwarf_Addr end = 0;
  ptrdiff_t offset = 0;
  const Dwarf_Off place = m_dw.dwarf_dieoffset(&entry);
  for (; m_iRangesLeft > 0; --m_iRangesLeft) {
    offset = m_dw.dwarf_ranges(&entry, offset, &base, &begin, &end);
    if (offset <= 0) return;
    // What the linker threw away lies at the beginning of the address space.
    if (begin != 0 && begin < end) entries.Add(begin, end, place);
  }
}

void SymbolizedUnits::Read(Dwarf* debugData) {
  m_pDebugData = debugData;
  Dwarf_CU* unit = nullptr;
  Dwarf_Half version = 0;
  uint8_t type = 0;
  Dwarf_Die entry;
  while (m_dw.dwarf_get_units(debugData, unit, &unit, &version, &type, &entry, nullptr) == 0) {
    if (m_dw.dwarf_tag(&entry) == DW_TAG_compile_unit) AddRanges(m_units, entry);
  }
  m_units.Sort();
}

bool SymbolizedUnits::FindUnit(Dwarf_Addr address, Dwarf_Die& unit) const {
  Dwarf_Off place = 0;
  return m_units.Find(address, place) && m_dw.dwarf_offdie(m_pDebugData, place, &unit) != nullptr;
}

void SymbolizedUnits::AddFunctions(EntriesByAddress& entries, Dwarf_Die parent, int depth) {
  Dwarf_Die child;
  if (depth == 0 || m_dw.dwarf_child(&parent, &child) != 0) return;
  do {
    const int tag = m_dw.dwarf_tag(&child);
    if (tag == DW_TAG_subprogram) AddRanges(entries, child);
    if (IsNamespace(tag) && depth > 1) AddFunctions(entries, child, depth - 1);
  } while (--m_iChildrenLeft > 0 && m_dw.dwarf_siblingof(&child, &child) == 0);
}

void SymbolizedUnits::AddInnerFunctions(EntriesByAddress& entries, Dwarf_Die unit) {
  Dwarf_Die child;
  if (m_dw.dwarf_child(&unit, &child) != 0) return;
  do {
    if (IsNamespace(m_dw.dwarf_tag(&child))) AddFunctions(entries, child, iMAX_DEPTH);
  } while (--m_iChildrenLeft > 0 && m_dw.dwarf_siblingof(&child, &child) == 0);
}

bool SymbolizedUnits::FindFunction(const Dwarf_Die& unit, Dwarf_Addr address, Dwarf_Die& function) {
  Dwarf_Die entry = unit;
  const auto [found, isNew] = m_functions.try_emplace(m_dw.dwarf_dieoffset(&entry));
  Functions& functions = found->second;
  if (isNew) {
    m_iChildrenLeft = iMAX_CHILDREN;
    AddFunctions(functions.m_outer, unit, 1);
    functions.m_outer.Sort();
  }
  Dwarf_Off place = 0;
  if (!functions.m_outer.Find(address, place)) {
    if (!functions.m_bInnerRead) {
      functions.m_bInnerRead = true;
      m_iChildrenLeft = iMAX_CHILDREN;
      AddInnerFunctions(functions.m_inner, unit);
      functions.m_inner.Sort();
    }
    if (!functions.m_inner.Find(address, place)) return false;
  }
  return m_dw.dwarf_offdie(m_pDebugData, place, &function) != nullptr;
}

}  // namespace Oxa::Core::Platform
