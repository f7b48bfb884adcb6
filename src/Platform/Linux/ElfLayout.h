// Where things stand in a file of the ELF format.
#ifndef OXACORE_PLATFORM_LINUX_ELFLAYOUT_H
#define OXACORE_PLATFORM_LINUX_ELFLAYOUT_H

#include <cstdint>
#include <string>
#include <vector>

#include "Platform/Linux/ModuleFile.h"

namespace Oxa::Core::Platform {

/// A segment or a section.
struct ElfPiece {
  std::uint32_t m_uType = 0;
  std::uint64_t m_ullOffset = 0;   ///< in the file
  std::uint64_t m_ullAddress = 0;  ///< in memory
  std::uint64_t m_ullSize = 0;     ///< in the file
  std::uint64_t m_ullAlignment = 0;
};

/// What the header and its two tables say. The pieces themselves aren't looked at: they may lie outside of the file.
class ElfLayout {
 public:
  /// Throws std::bad_alloc.
  explicit ElfLayout(ModuleFile& file);

  /// Whether header and tables were read. Segments are also there if the table behind them, which nobody needs to run
  /// the file, wasn't.
  bool IsWhole() const { return m_bWhole; }

  bool Is64() const { return m_b64; }
  bool IsBigEndian() const { return m_bBigEndian; }
  const std::vector<ElfPiece>& Segments() const { return m_segments; }
  const std::vector<ElfPiece>& Sections() const { return m_sections; }

  /// Where in the file the byte is that stands at that address in memory. False if it comes from no file.
  bool OffsetOf(std::uint64_t address, std::uint64_t& offset) const;

 private:
  bool m_bWhole = false;
  bool m_b64 = false;
  bool m_bBigEndian = false;
  std::vector<ElfPiece> m_segments;
  std::vector<ElfPiece> m_sections;
};

}  // namespace Oxa::Core::Platform

#endif
