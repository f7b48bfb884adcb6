// Which memory goes into a dump, and its way into the file.
#ifndef OXACORE_PLATFORM_LINUX_DUMPRANGES_H
#define OXACORE_PLATFORM_LINUX_DUMPRANGES_H

#include <cstddef>
#include <cstdint>

#include "Platform/Linux/DumpFile.h"
#include "Platform/Linux/DumpMaps.h"
#include "Platform/Linux/DumpModules.h"
#include "Platform/Linux/DumpThreads.h"

namespace Oxa::Core::Platform {

/// Static storage, as all of a dump's. Used in the order of the operations. Allocates nothing.
class DumpRanges {
 public:
  void Start(DumpFile& file, const DumpMaps& maps, DumpThreads& threads, std::int64_t deadline) noexcept;

  /// Settles what of each thread's stack is written: from its pointer to the end, but not without limit.
  void ChooseStacks() noexcept;

  /// Settles what else is small: the code around the places of threads, and with `indirect` what stacks and registers
  /// point at. With `scan` the modules that any of it points at are marked.
  void ChooseSmallRanges(DumpModules& modules, bool scan, bool indirect) noexcept;

  /// Takes the word of a register or of memory for a pointer that it may be.
  void Follow(std::uint64_t word) noexcept;

  /// Writes all into a list of the short or, for whole regions by `contents`, of the long form. `pagemap` (-1 for
  /// none) tells which pages were ever touched.
  void Write(unsigned int contents, int pagemap) noexcept;

 private:
  static constexpr std::size_t uSMALL = 16384;

  struct Range {
    std::uint64_t m_uStart;
    std::uint64_t m_uEnd;
  };

  void ChooseStack(DumpThread& thread) noexcept;
  void SortStacks() noexcept;
  const Range* StackBehind(std::uint64_t address) const noexcept;
  void AddSmall(std::uint64_t start, std::uint64_t end) noexcept;
  void AddAround(std::uint64_t address, std::uint64_t before, std::uint64_t behind) noexcept;
  void MergeSmall() noexcept;
  template <class Action>
  void ForWords(std::uint64_t start, std::uint64_t end, const Action& action) noexcept;
  void ScanForModules(DumpModules& modules) noexcept;

  bool IsWanted(const DumpMapping& mapping, unsigned int contents) const noexcept;
  void ListRegions(unsigned int contents, int pagemap) noexcept;
  void ListTouched(const DumpMapping& mapping, int pagemap) noexcept;
  void ListWithoutStacks(std::uint64_t start, std::uint64_t end) noexcept;
  void List(std::uint64_t start, std::uint64_t size) noexcept;
  void WriteListed() noexcept;
  bool WriteListed(std::uint64_t index, const DumpThread* thread) noexcept;
  DumpThread* NextWithStack(DumpThread* thread) noexcept;
  void PublishList(std::uint64_t count) noexcept;

  DumpFile* m_pFile;
  const DumpMaps* m_pMaps;
  DumpThreads* m_pThreads;
  std::int64_t m_iBegin;
  std::int64_t m_iDeadline;
  bool m_bLong;
  std::uint32_t m_uList;    // where the list stands in the file
  std::uint64_t m_uListed;  // entries in it
  std::size_t m_uStacks;
  std::size_t m_uSmall;
  Range m_stacks[4096];
  Range m_small[uSMALL];
};

}  // namespace Oxa::Core::Platform

#endif
