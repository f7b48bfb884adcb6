// What the debug data tells of one instruction: the functions that it belongs to, and their lines.
#ifndef OXACORE_PLATFORM_LINUX_SYMBOLIZEDPLACE_H
#define OXACORE_PLATFORM_LINUX_SYMBOLIZEDPLACE_H

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "Platform/CallStacks.h"
#include "Platform/Linux/DwFunctions.h"
#include "Platform/Linux/SymbolizedModule.h"

namespace Oxa::Core::Platform {

/// A function at the place, as a frame shows it. Functions that were put into others have frames of their own.
struct PlacedFunction {
  bool m_bInlined = false;
  const char* m_pFile = nullptr;  ///< belongs to the debug data; null: no line is known
  int m_iLine = 0;
  std::string m_sName;    ///< empty: not known
  bool m_bEntry = false;  ///< whether `m_entry` is there
  Dwarf_Die m_entry{};
  std::vector<Dwarf_Die> m_scopes;  ///< entries that have the place, innermost first, the function's own last
  mutable std::shared_ptr<PlaceNote> m_spNote;  ///< of whom the frames are handed to
};

/// Innermost function first; never empty.
struct SymbolizedPlace {
  SymbolizedModule* m_pModule = nullptr;
  Dwarf_Addr m_address = 0;  ///< in terms of the debug data
  Dwarf_Die m_unit{};
  std::vector<PlacedFunction> m_functions;
  bool m_bVariables = false;  ///< whether any of the scopes may have some
};

/// Looks `address` up, which is one of memory. Signatures are shown by `form`. May throw std::bad_alloc.
SymbolizedPlace FindPlace(const Dw& dw, SymbolizedModule& module, std::uint64_t address,
                          std::string (*form)(const char* signature));

}  // namespace Oxa::Core::Platform

#endif
