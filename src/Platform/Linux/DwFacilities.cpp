// What stands here for the functions that call stacks are made by. docs/callstacks.md shows the same table.
#include "Platform/CallStacks.h"

#include <cstring>

#include "Platform/Libraries.h"

namespace Oxa::Core::Platform {

namespace {

constexpr int iMAX_PARTS = 10;

/// A function, and what it rests on in the library for symbols; nothing, where the port does it alone.
struct Facility {
  const char* m_pName;
  const char* m_pParts[iMAX_PARTS];
};

constexpr Facility aFACILITIES[] = {
    {"SymCleanup", {"dwfl_end"}},
    {"SymFunctionTableAccess64", {"elf_memory", "dwarf_getcfi_elf", "dwarf_cfi_addrframe"}},
    {"SymGetLineFromAddr64",
     {"dwfl_module_getdwarf", "dwarf_get_units", "dwarf_ranges", "dwarf_dieoffset", "dwarf_offdie",
      "dwarf_getsrclines", "dwarf_getsrc_die", "dwarf_lineno", "dwarf_linesrc"}},
    {"SymGetModuleBase64", {"dwfl_module_info"}},
    {"SymGetModuleInfo64", {"dwfl_module_build_id"}},
    {"SymGetOptions", {}},
    {"SymGetSymFromAddr64",
     {"dwarf_child", "dwarf_siblingof", "dwarf_tag", "dwarf_haspc", "dwarf_attr_integrate",
      "dwarf_formstring"}},
    {"SymInitialize", {"dwfl_begin", "dwfl_report_begin", "dwfl_report_elf", "dwfl_report_end"}},
    {"SymSetOptions", {"elf_version"}},
    {"StackWalk64", {"dwarf_frame_info", "dwarf_frame_cfa", "dwarf_frame_register"}},
    {"UnDecorateSymbolName", {}},
    {"SymGetSearchPath", {}},
    {"SymSetContext", {"dwarf_child", "dwarf_siblingof", "dwarf_tag", "dwarf_haspc"}},
    {"SymEnumSymbols", {"dwarf_getlocation_addr", "dwarf_diename", "dwarf_attr"}},
    {"SymGetTypeInfo", {"dwarf_formref_die", "dwarf_formudata"}},
    {"MiniDumpWriteDump", {}},
};

bool HasAll(HINSTANCE library, const Facility& facility) {
  for (const char* const part : facility.m_pParts)
    if (part != nullptr && FindFunction(library, part) == nullptr) return false;
  return true;
}

}  // namespace

const char* SymbolLibraryName() noexcept { return "libdw.so.1"; }

const void* FindSymbolFunction(HINSTANCE library, const char* function) noexcept {
  for (const Facility& facility : aFACILITIES)
    if (std::strcmp(facility.m_pName, function) == 0) return HasAll(library, facility) ? &facility : nullptr;
  return nullptr;
}

}  // namespace Oxa::Core::Platform
