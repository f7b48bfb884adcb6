// What a process has mapped where, as a dump wants to know it.
#ifndef OXACORE_PLATFORM_LINUX_DUMPMAPS_H
#define OXACORE_PLATFORM_LINUX_DUMPMAPS_H

#include <cstddef>
#include <cstdint>

namespace Oxa::Core::Platform {

/// A range of addresses that is mapped as a whole. Plain data.
struct DumpMapping {
  enum EFlags : std::uint32_t {
    eREADABLE = 0x1,
    eWRITABLE = 0x2,
    eEXECUTABLE = 0x4,
    eSHARED = 0x8,
    eFILE = 0x10,    ///< of a file that lies in the file system
    eDEVICE = 0x20,  ///< not to be read: the registers of a device, or the kernel's own pages
    eVDSO = 0x40     ///< the kernel's code in the process
  };

  std::uint64_t m_uStart;   ///< the address of its first byte
  std::uint64_t m_uEnd;     ///< the one behind its last
  std::uint64_t m_uOffset;  ///< bytes, of its first byte in the file
  std::uint32_t m_uName;    ///< see DumpMaps::Name
  std::uint32_t m_uFlags;   ///< EFlags, joined

  /// Whether all of `flags` are set.
  bool Has(std::uint32_t flags) const noexcept { return (m_uFlags & flags) == flags; }
  bool MayBeRead() const noexcept { return (m_uFlags & (eREADABLE | eDEVICE)) == eREADABLE; }
  std::uint64_t Size() const noexcept { return m_uEnd - m_uStart; }
};

/// The table of mappings, by address; for static storage, where it begins empty. Cut where there are more than it
/// holds, which is 16384 of them; those whose names don't fit into 256 KiB stay, without a name. Allocates nothing,
/// takes no lock, works in a signal handler. One thread at a time, and one table: the text is read by way of a buffer
/// that all share.
class DumpMaps {
 public:
  /// Empties the table and fills it by the system's text in an open file, to its end or up to an error: what was
  /// understood until then stays. Lines without a range are passed over. `handle` stays the caller's.
  void Read(int handle) noexcept;
  /// Empties the table.
  void Clear() noexcept;

  const DumpMapping* begin() const noexcept { return m_mappings; }
  const DumpMapping* end() const noexcept { return m_mappings + m_uCount; }
  std::size_t Count() const noexcept { return m_uCount; }

  /// The mapping that holds `address`; null if none does.
  const DumpMapping* Find(std::uint64_t address) const noexcept;

  /// The first mapping that ends behind `address`; null if there is none.
  const DumpMapping* FindNext(std::uint64_t address) const noexcept;

  /// The name as the system gives it, without what it says of files that are gone; "" for none.
  const char* Name(const DumpMapping& mapping) const noexcept { return m_names + mapping.m_uName; }

 private:
  static constexpr std::size_t uMAPPINGS = 16384;
  static constexpr std::size_t uNAMES = 262144;

  void AddLine(char* line, std::size_t length) noexcept;
  std::uint32_t AddName(const char* name) noexcept;

  std::size_t m_uCount;
  std::size_t m_uNames;
  std::uint32_t m_uLastName;
  DumpMapping m_mappings[uMAPPINGS];
  char m_names[uNAMES];
};

}  // namespace Oxa::Core::Platform

#endif
