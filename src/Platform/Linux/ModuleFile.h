// Pieces of a file that may be cut off, damaged, or changed while it is read.
#ifndef OXACORE_PLATFORM_LINUX_MODULEFILE_H
#define OXACORE_PLATFORM_LINUX_MODULEFILE_H

#include <cstdint>
#include <string>

#include "Platform/Linux/OpenFile.h"

namespace Oxa::Core::Platform {

/// Reads, and never maps: a file that gets shorter meanwhile does no harm then. What is read of one file is limited in
/// sum, so that one that was made to cost much doesn't.
class ModuleFile {
 public:
  explicit ModuleFile(const char* name) noexcept;

  /// 0, or why nothing can be read.
  int Code() const noexcept { return m_iCode; }

  /// In bytes, when it was opened.
  std::uint64_t Size() const noexcept { return m_ullSize; }

  /// Puts the `size` bytes at `offset` into `bytes`. False, with `bytes` untouched, if they aren't all there, or are
  /// more than may still be read. Throws std::bad_alloc.
  bool Read(std::uint64_t offset, std::uint64_t size, std::string& bytes);

  /// The same for a piece that may be shorter: as much as there is.
  bool ReadUpTo(std::uint64_t offset, std::uint64_t size, std::string& bytes);

 private:
  const OpenFile m_file;
  std::uint64_t m_ullSize = 0;  // in front of the code: finding it out gives both
  int m_iCode;
  std::uint64_t m_ullLeft;
};

}  // namespace Oxa::Core::Platform

#endif
