#include <dirent.h>
#include <errno.h>
#include <fcntl.h>
#include <unistd.h>

#include <exception>
#include <memory>
#include <string>
#include <vector>

#include "Platform/Faults.h"
#include "Platform/Files.h"
#include "Platform/Linux/FileName.h"
#include "Platform/SortedNames.h"

namespace Oxa::Core::Platform {

namespace {

constexpr std::size_t uBLOCK = 16 * 1024;
constexpr std::size_t uLEAST = 4 * 1024;  // many times what the longest entry takes

// A folder's entries as the system packs them, block by block. The blocks stay, so that names needn't be copied out of
// them; larger ones are no faster, and their memory goes back to the system each time.
class FolderBlocks {
 public:
  explicit FolderBlocks(const char* name) noexcept
      : m_iFolder(open(name, O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {}
  FolderBlocks(const FolderBlocks&) = delete;
  FolderBlocks& operator=(const FolderBlocks&) = delete;
  ~FolderBlocks() {
    if (IsOpen()) close(m_iFolder);
  }

  bool IsOpen() const noexcept { return m_iFolder >= 0; }

  /// Reads on, and gives how many bytes of entries begin at `entries`; 0 at the end, and negative, with errno
  /// set, after a failure.
  ssize_t Next(const char*& entries) {
    if (m_uLeft < uLEAST) {
      m_blocks.push_back(std::unique_ptr<char[]>(new char[uBLOCK]));
      m_uLeft = uBLOCK;
    }
    char* const start = m_blocks.back().get() + (uBLOCK - m_uLeft);
    const ssize_t size = getdents64(m_iFolder, start, m_uLeft);
    if (size > 0) m_uLeft -= static_cast<std::size_t>(size);
    entries = start;
    return size;
  }

 private:
  int m_iFolder;
  std::size_t m_uLeft = 0;  ///< bytes of the last block that nothing stands in
  std::vector<std::unique_ptr<char[]>> m_blocks;
};

void AddMatching(const char* entries, ssize_t size, const char* pattern, SortedNames& names) {
  for (const char* const end = entries + size; entries < end;) {
    const auto* const entry = reinterpret_cast<const dirent64*>(entries);
    if (MatchesPattern(entry->d_name, pattern)) names.Add(entry->d_name);
    entries += entry->d_reclen;
  }
}

int List(const char* name, const char* pattern, std::vector<std::string>& names) {
  FolderBlocks folder(name);
  if (!folder.IsOpen()) return errno;
  SortedNames found;
  const char* entries = nullptr;
  ssize_t size = 0;
  while ((size = folder.Next(entries)) > 0) AddMatching(entries, size, pattern, found);
  if (size < 0) return errno;
  found.AppendTo(names);
  return 0;
}

}  // namespace

int ListDirectory(const char* folder, const char* pattern, std::vector<std::string>& names) noexcept {
  const HoldCancellation hold;
  const FileName converted(folder);
  if (converted.Code() != 0) return converted.Code();
  try {
    return List(converted.Get(), pattern, names);
  } catch (const std::exception&) {
    return ENOMEM;
  }
}

}  // namespace Oxa::Core::Platform
