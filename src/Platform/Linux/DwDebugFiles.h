// Where debug data is looked for that a module doesn't have in itself.
#ifndef OXACORE_PLATFORM_LINUX_DWDEBUGFILES_H
#define OXACORE_PLATFORM_LINUX_DWDEBUGFILES_H

#include <string>
#include <vector>

#include "Platform/Linux/DwFunctions.h"
#include "Platform/Linux/SymbolizedModule.h"

namespace Oxa::Core::Platform {

/// Files by build id, then by the name that the module gives, in the folders of the search path, beside the module and
/// in the system's folder. Nothing is fetched from elsewhere: the library's own search would load a client for that.
/// The separate files of the C library are left alone: stacks would differ from machine to machine by them, and reading
/// them takes longer than all the rest.
class DebugFiles {
 public:
  /// What the library calls; gives an open file, or -1.
  static int Find(Dwfl_Module* module, void** owner, const char* name, Dwarf_Addr base, const char* file,
                  const char* link, GElf_Word checksum, char** found);

  /// Whether the file of a module without build id begins as the module does.
  static bool HasHeaderOf(const LoadedModule& module);

  /// The folders of a search path, each once and without a closing separator.
  static std::vector<std::string> Split(const char* searchPath);

 private:
  static int FindById(const SymbolizedModule& module, std::string& found);
  static int FindByLink(const SymbolizedModule& module, const std::string& link, GElf_Word checksum,
                        std::string& found);
  static bool HasId(const SymbolizedModule& module, int file);
};

}  // namespace Oxa::Core::Platform

#endif
