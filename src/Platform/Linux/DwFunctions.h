// The functions of libdw that call stacks are read by. The library is opened when the first stack is walked, and no
// function of it is taken for granted: what is missing is null here, and costs what needs it.
//
// Only the headers of libdw are needed to build; sources that include this file are left out where they are missing.
#ifndef OXACORE_PLATFORM_LINUX_DWFUNCTIONS_H
#define OXACORE_PLATFORM_LINUX_DWFUNCTIONS_H

#include <dwarf.h>
#include <elfutils/libdw.h>
#include <elfutils/libdwelf.h>
#include <elfutils/libdwfl.h>
#include <gelf.h>

// clang-format off
#define OXACORE_DW_FUNCTIONS(OXACORE_DW_FUNCTION)      \
  /* Modules */                                        \
  OXACORE_DW_FUNCTION(dwfl_begin)                      \
  OXACORE_DW_FUNCTION(dwfl_end)                        \
  OXACORE_DW_FUNCTION(dwfl_report_begin)               \
  OXACORE_DW_FUNCTION(dwfl_report_begin_add)           \
  OXACORE_DW_FUNCTION(dwfl_report_elf)                 \
  OXACORE_DW_FUNCTION(dwfl_report_end)                 \
  OXACORE_DW_FUNCTION(dwfl_addrmodule)                 \
  OXACORE_DW_FUNCTION(dwfl_module_info)                \
  OXACORE_DW_FUNCTION(dwfl_module_build_id)            \
  OXACORE_DW_FUNCTION(dwfl_module_getdwarf)            \
  OXACORE_DW_FUNCTION(dwfl_module_addrinfo)            \
  OXACORE_DW_FUNCTION(dwfl_module_dwarf_cfi)           \
  OXACORE_DW_FUNCTION(dwarf_new_oom_handler)           \
  OXACORE_DW_FUNCTION(dwarf_getalt)                    \
  OXACORE_DW_FUNCTION(elf_memory)                      \
  OXACORE_DW_FUNCTION(elf_version)                     \
  OXACORE_DW_FUNCTION(elf_end)                         \
  OXACORE_DW_FUNCTION(dwelf_elf_gnu_build_id)          \
  OXACORE_DW_FUNCTION(elf_begin)                       \
  /* Frames */                                         \
  OXACORE_DW_FUNCTION(dwarf_getcfi_elf)                \
  OXACORE_DW_FUNCTION(dwarf_cfi_end)                   \
  OXACORE_DW_FUNCTION(dwarf_cfi_addrframe)             \
  OXACORE_DW_FUNCTION(dwarf_frame_info)                \
  OXACORE_DW_FUNCTION(dwarf_frame_cfa)                 \
  OXACORE_DW_FUNCTION(dwarf_frame_register)            \
  /* Units and lines */                                \
  OXACORE_DW_FUNCTION(dwarf_get_units)                 \
  OXACORE_DW_FUNCTION(dwarf_getsrclines)               \
  OXACORE_DW_FUNCTION(dwarf_getsrc_die)                \
  OXACORE_DW_FUNCTION(dwarf_onesrcline)                \
  OXACORE_DW_FUNCTION(dwarf_lineaddr)                  \
  OXACORE_DW_FUNCTION(dwarf_lineendsequence)           \
  OXACORE_DW_FUNCTION(dwarf_lineno)                    \
  OXACORE_DW_FUNCTION(dwarf_linesrc)                   \
  OXACORE_DW_FUNCTION(dwarf_getsrcfiles)               \
  OXACORE_DW_FUNCTION(dwarf_filesrc)                   \
  /* Entries */                                        \
  OXACORE_DW_FUNCTION(dwarf_offdie)                    \
  OXACORE_DW_FUNCTION(dwarf_dieoffset)                 \
  OXACORE_DW_FUNCTION(dwarf_diecu)                     \
  OXACORE_DW_FUNCTION(dwarf_child)                     \
  OXACORE_DW_FUNCTION(dwarf_siblingof)                 \
  OXACORE_DW_FUNCTION(dwarf_tag)                       \
  OXACORE_DW_FUNCTION(dwarf_diename)                   \
  OXACORE_DW_FUNCTION(dwarf_ranges)                    \
  OXACORE_DW_FUNCTION(dwarf_haspc)                     \
  OXACORE_DW_FUNCTION(dwarf_lowpc)                     \
  OXACORE_DW_FUNCTION(dwarf_entrypc)                   \
  OXACORE_DW_FUNCTION(dwarf_srclang)                   \
  OXACORE_DW_FUNCTION(dwarf_getscopes_die)             \
  /* Attributes */                                     \
  OXACORE_DW_FUNCTION(dwarf_hasattr)                   \
  OXACORE_DW_FUNCTION(dwarf_hasattr_integrate)         \
  OXACORE_DW_FUNCTION(dwarf_attr)                      \
  OXACORE_DW_FUNCTION(dwarf_attr_integrate)            \
  OXACORE_DW_FUNCTION(dwarf_whatform)                  \
  OXACORE_DW_FUNCTION(dwarf_formudata)                 \
  OXACORE_DW_FUNCTION(dwarf_formsdata)                 \
  OXACORE_DW_FUNCTION(dwarf_formflag)                  \
  OXACORE_DW_FUNCTION(dwarf_formaddr)                  \
  OXACORE_DW_FUNCTION(dwarf_formblock)                 \
  OXACORE_DW_FUNCTION(dwarf_formstring)                \
  OXACORE_DW_FUNCTION(dwarf_formref_die)               \
  OXACORE_DW_FUNCTION(dwarf_bytesize)                  \
  OXACORE_DW_FUNCTION(dwarf_bitsize)                   \
  OXACORE_DW_FUNCTION(dwarf_bitoffset)                 \
  OXACORE_DW_FUNCTION(dwarf_aggregate_size)            \
  OXACORE_DW_FUNCTION(dwarf_getlocation)               \
  OXACORE_DW_FUNCTION(dwarf_getlocations)              \
  OXACORE_DW_FUNCTION(dwarf_getlocation_addr)          \
  OXACORE_DW_FUNCTION(dwarf_getlocation_die)           \
  OXACORE_DW_FUNCTION(dwarf_getlocation_attr)          \
  OXACORE_DW_FUNCTION(dwarf_getlocation_implicit_value)
// clang-format on

namespace Oxa::Core::Platform {

/// A member for each function of the list, null where the opened library doesn't have it.
struct Dw {
#define OXACORE_DW_FUNCTION(name) decltype(&::name) name = nullptr;
  OXACORE_DW_FUNCTIONS(OXACORE_DW_FUNCTION)
#undef OXACORE_DW_FUNCTION
};

/// Looks all functions up in `library`, a handle of dlopen.
void FindFunctions(Dw& dw, void* library) noexcept;

}  // namespace Oxa::Core::Platform

#endif
