// One module of this process, and its debug data as far as it has been needed.
#ifndef OXACORE_PLATFORM_LINUX_SYMBOLIZEDMODULE_H
#define OXACORE_PLATFORM_LINUX_SYMBOLIZEDMODULE_H

#include <link.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "Platform/Linux/DwFunctions.h"
#include "Platform/Linux/SymbolizedUnits.h"

namespace Oxa::Core::Platform {

/// What the loader tells of a module. Read in the loader's own call, while the module can't go.
struct LoadedModule {
  std::uint64_t m_uBias = 0;        ///< what is added to the addresses in the file
  std::uint64_t m_uBegin = 0;       ///< in memory
  std::uint64_t m_uEnd = 0;         ///< behind its last byte
  std::uint64_t m_uCodeBegin = 0;   ///< of all that can be executed
  std::uint64_t m_uCodeEnd = 0;     ///< behind it
  std::size_t m_uImage = 0;         ///< bytes from the beginning on that are as they are in the file
  std::string m_sFile;              ///< as the loader knows it; of the program the whole path
  std::vector<unsigned char> m_id;  ///< the build id; empty: it has none

  bool IsSameAs(const LoadedModule& other) const;
};

LoadedModule Describe(const dl_phdr_info& info);

/// Frames, lines and functions of a module. Everything is read when it's first asked for. Not copyable: the reader of
/// debug data points into it.
class SymbolizedModule {
 public:
  SymbolizedModule(const Dw& dw, LoadedModule loaded, const std::vector<std::string>& folders);
  SymbolizedModule(const SymbolizedModule&) = delete;
  SymbolizedModule& operator=(const SymbolizedModule&) = delete;
  ~SymbolizedModule();

  const LoadedModule& GetLoaded() const { return m_loaded; }
  /// The file's name without folder, ".so" and version.
  const std::string& GetName() const { return m_sName; }
  bool Contains(std::uint64_t address) const {
    return address >= m_loaded.m_uBegin && address < m_loaded.m_uEnd;
  }

  bool HasCode(std::uint64_t address) const {
    return address >= m_loaded.m_uCodeBegin && address < m_loaded.m_uCodeEnd;
  }

  /// The rules by which the caller's registers are found, out of the module's own memory: they are right even if the
  /// file has gone. Null if there are none.
  Dwarf_CFI* GetFrames();
  /// The same from the debug data, for what has no others.
  Dwarf_CFI* GetFramesOfDebugData();

  /// False if there is no debug data.
  bool HasDebugData() { return OpenDebugData(); }
  /// Before anything is asked for: there is none then.
  void GiveUpDebugData() { m_bDebugDataTried = true; }
  Dwfl_Module* GetModule() const { return m_pModule; }
  /// What is added to addresses in the debug data.
  std::uint64_t GetDebugBias() const { return m_debugBias; }
  SymbolizedUnits& GetUnits() { return m_units; }

 private:
  friend class DebugFiles;

  bool OpenFile();
  bool IsFileOfThisModule();
  bool OpenDebugData();

  const Dw& m_dw;
  const LoadedModule m_loaded;
  const std::string m_sName;
  const std::vector<std::string>& m_folders;  // where debug files may be
  bool m_bFramesTried = false;
  Elf* m_pImage = nullptr;
  Dwarf_CFI* m_pFrames = nullptr;
  bool m_bDebugDataTried = false;
  Dwfl* m_pSession = nullptr;
  Dwfl_Module* m_pModule = nullptr;
  Dwarf* m_pDebugData = nullptr;
  Dwarf_Addr m_debugBias = 0;
  SymbolizedUnits m_units;
};

}  // namespace Oxa::Core::Platform

#endif
