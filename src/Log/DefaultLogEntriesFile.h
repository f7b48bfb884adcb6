// The entries of the default log: "DefaultLog.entries" beside the executable, to which every process that runs
// from there appends, and "DefaultLog.archive", the entries before those.
//
// Entries go to the system whole, by themselves or with others, under a lock between processes that is waited for 10
// seconds at most, and are safe from the end of their writer from then on. An entry that doesn't fit on the disk is
// lost as a whole: what was written of it is cut off again, so that the file stays readable. A process that is killed
// within a write can leave a piece of an entry; the next one that gets the lock cuts that off.
//
// After the entry that takes the file above 1400000 bytes it becomes the archive, in place of an older one, and
// a new file is begun. Other processes that have it open find out by a number that is kept beside the lock, and
// turn to the new one with their next entry.
//
// A file that somebody removes, renames or replaces by hand is noticed by nobody: those who have it open go on
// writing to it until it is full, is closed, or another process turns over. What was written to a removed file
// by then is gone. Stop the programs first, or copy the files instead of moving them.
#ifndef OXACORE_LOG_DEFAULTLOGENTRIESFILE_H
#define OXACORE_LOG_DEFAULTLOGENTRIESFILE_H

#include <Infrastructure/OxaCore/Lock.h>
#include <Infrastructure/OxaCore/PathName.h>

#include <atomic>
#include <boost/shared_ptr.hpp>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "Log/LogTexts.h"

#include "Platform/Files.h"

namespace Oxa::Core {

class LogFileLock;
class LogFileMutex;

/// The file as one process has it open, or doesn't. Any thread may call anything, at once with others.
class DefaultLogEntriesFile {
 public:
  DefaultLogEntriesFile();  ///< closed
  DefaultLogEntriesFile(const DefaultLogEntriesFile&) = delete;
  DefaultLogEntriesFile& operator=(const DefaultLogEntriesFile&) = delete;
  ~DefaultLogEntriesFile();

  /// Opens the file, which is made if it is missing, unless it is open. Gives whether it is open now.
  bool Open();

  /// Appends `text`, after opening the file if need be, and turns over if the file is full then. False if it
  /// can't be opened. What else goes wrong isn't told: without room on the disk the text is lost.
  bool Write(std::string_view text);

  /// The same for the entries from number `done` on, as if one were written after the other, but in fewer pieces.
  /// `done` becomes the number of the one for which the file can't be opened, or Count(). Also where something is
  /// thrown: an entry after which the file can't be turned over isn't counted.
  void Write(const LogRun& entries, std::size_t& done);

  void Close();

  /// At that moment: somebody else may close it in the next.
  bool IsOpen() const noexcept { return m_bOpen.load(std::memory_order_acquire); }

 private:
  bool OpenByName();
  boost::shared_ptr<LogFileMutex> MutexOfOpenFile();
  bool Prepare(const LogFileLock& processLock);
  bool HasNameMoved() const;
  std::size_t EndOfPiece(const LogRun& entries, std::size_t first);
  std::size_t Append(const LogRun& entries, std::size_t first, std::size_t end,
                     const LogFileLock& processLock);
  void CutBack(std::size_t torn, const LogFileLock& processLock);
  bool IsFull();
  void Rollover();
  PathName ArchiveName() const;
  bool MoveToArchive(LogFileMutex& fileMutex);
  void CopyToArchive();

  Mutex m_mutex;  // guards what follows; taken behind the lock between processes, if that is taken
  boost::shared_ptr<LogFileMutex> m_spFileMutex;  // null while closed
  PathName m_PathName;                            // of the file that is, or was, open
  Platform::FileHandle m_file;
  std::atomic<bool> m_bOpen{false};   // m_file, for a look without the mutex
  std::uint64_t m_ullGeneration = 0;  // of the lock, when the file was opened
};

}  // namespace Oxa::Core

#endif
