// Where a named lock lies: a file of one page in memory that all processes share.
#ifndef OXACORE_PLATFORM_LINUX_NAMEDLOCKFILE_H
#define OXACORE_PLATFORM_LINUX_NAMEDLOCKFILE_H

#include <pthread.h>

#include <atomic>
#include <cstddef>
#include <cstdint>

namespace Oxa::Core::Platform {

/// The content of the file. Programs of different versions of the library meet here: whoever changes the layout
/// changes uLAYOUT with it.
struct NamedLockRecord {
  static constexpr std::uint32_t uLAYOUT = 1;
  static constexpr std::size_t uFILE_SIZE = 4096;

  char m_sMark[8];             ///< that this is such a file
  std::uint32_t m_uLayout;     ///< uLAYOUT
  std::uint32_t m_uMutexSize;  ///< 32-bit and 64-bit programs can't share one
  char m_sBoot[40];            ///< the system's start that this lock belongs to, or empty
  std::atomic<std::uint64_t> m_ullGeneration;
  alignas(64) pthread_mutex_t m_mutex;
  alignas(64) char m_sName[uFILE_SIZE - 128];  ///< the whole name, and at least one 0
};

static_assert(sizeof(NamedLockRecord) == NamedLockRecord::uFILE_SIZE);

/// Room for a lock's file name and its closing 0.
constexpr std::size_t uLOCK_FILE_NAME_SIZE = 256;

/// Writes the name of the file for the lock `name`. Different names give different files, and a file name is
/// never too long: very long names end in a digest.
void LockFileName(const char* name, char (&fileName)[uLOCK_FILE_NAME_SIZE]) noexcept;

/// Maps the file of the lock `name` in `folder`, which is made if it isn't there. It is seen by others only once
/// it is complete. What lies there damaged or from before the system's last start is replaced, as far as the
/// folder permits. 0 and `record`, or the system's code: EEXIST if something else lies there, EPROTO if the lock
/// is of an incompatible program, ENAMETOOLONG.
int MapLockFile(const char* folder, const char* name, NamedLockRecord*& record) noexcept;

/// The same in the first of `count` folders that is there and can be written to.
int MapLockFile(const char* const* folders, std::size_t count, const char* name,
                NamedLockRecord*& record) noexcept;

/// For a record that was never locked through this mapping.
void UnmapLockFile(NamedLockRecord* record) noexcept;

}  // namespace Oxa::Core::Platform

#endif
