// The modules of a process that is being dumped: the program, its libraries, the kernel's code, told by what lies in
// memory. A file that was replaced meanwhile has no say.
#ifndef OXACORE_PLATFORM_LINUX_DUMPMODULES_H
#define OXACORE_PLATFORM_LINUX_DUMPMODULES_H

#include <cstddef>
#include <cstdint>

#include "Platform/Linux/DumpMaps.h"

namespace Oxa::Core::Platform {

struct DumpModule {
  static constexpr std::size_t uBUILD_ID = 64;

  std::uint64_t m_uBase;
  std::uint64_t m_uEnd;
  const char* m_sName;
  unsigned int m_uFlags;  ///< what is to be written of it, in the numbers of the format
  bool m_bLeftOut;
  std::uint8_t m_uBuildIdSize;
  unsigned char m_buildId[uBUILD_ID];
};

/// In static storage; cut where there are more than it holds. Allocates nothing.
class DumpModules {
 public:
  /// Takes them from the mappings, and where there are none from the dynamic linker's list. The program is the first.
  void Read(const DumpMaps& maps) noexcept;

  /// Marks the module that holds `address` as referenced by memory, if one does.
  void Reference(std::uint64_t address) noexcept;

  DumpModule* begin() noexcept { return m_modules; }
  DumpModule* end() noexcept { return m_modules + m_uCount; }

 private:
  static constexpr std::size_t uMODULES = 2048;

  void ReadMappings(const DumpMaps& maps) noexcept;
  void ReadLoaderList() noexcept;
  void Add(std::uint64_t base, const char* name) noexcept;
  void PutProgramFirst() noexcept;

  std::size_t m_uCount;
  std::uint64_t m_uLowest;
  DumpModule m_modules[uMODULES];
  DumpModule* m_sorted[uMODULES];
};

/// The heads of the dynamic linker's list: where it begins, and where the linker itself is. 0 where unknown.
struct DumpLoader {
  std::uint64_t m_uFirst;
  std::uint64_t m_uLoader;
};
DumpLoader FindDumpLoader() noexcept;

/// One entry of that list. False if it can't be read.
struct DumpLoaderEntry {
  std::uint64_t m_uBias;
  std::uint64_t m_uName;
  std::uint64_t m_uDynamic;
  std::uint64_t m_uNext;
};
bool ReadLoaderEntry(std::uint64_t address, DumpLoaderEntry& entry) noexcept;

/// Reads a text that may not be there into `to`, cut to its size.
void ReadDumpText(std::uint64_t address, char* to, std::size_t size) noexcept;

}  // namespace Oxa::Core::Platform

#endif
