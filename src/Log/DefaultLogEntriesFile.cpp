#include "Log/DefaultLogEntriesFile.h"

#include <Infrastructure/OxaCore/Assert.h>

#include <utility>

#include "Log/DefaultLogDocument.h"
#include "Log/LogFileMutex.h"
#include "Log/UnfinishedEntry.h"

namespace Oxa::Core {

namespace {

const char* const sENTRIES = "DefaultLog.entries";
const char* const sARCHIVE = "DefaultLog.archive";
constexpr std::uint32_t uFULL_LENGTH = 1400000;

// Lengths are numbers of 32 bits here, as ever.
bool IsAboveLimit(std::uint64_t length) { return static_cast<std::uint32_t>(length) > uFULL_LENGTH; }

}  // namespace

DefaultLogEntriesFile::DefaultLogEntriesFile() = default;

DefaultLogEntriesFile::~DefaultLogEntriesFile() = default;

// --- Open and closed

bool DefaultLogEntriesFile::Open() {
  const Lock lock(m_mutex);
  if (m_file.IsOpen()) return true;
  m_PathName = DefaultLogFile(sENTRIES);
  m_spFileMutex.reset(new LogFileMutex(m_PathName));
  return OpenByName();
}

// The number is read first: if the file gets another name in between, the next Write opens it once more.
bool DefaultLogEntriesFile::OpenByName() {
  m_ullGeneration = m_spFileMutex->GetGeneration();
  int code = 0;
  m_file = Platform::FileHandle::OpenForAppend(m_PathName, code);
  m_bOpen.store(m_file.IsOpen(), std::memory_order_release);
  if (!m_file.IsOpen()) m_spFileMutex.reset();
  return m_file.IsOpen();
}

void DefaultLogEntriesFile::Close() {
  const Lock lock(m_mutex);
  m_bOpen.store(false, std::memory_order_release);
  m_file.Close();
  m_spFileMutex.reset();
}

boost::shared_ptr<LogFileMutex> DefaultLogEntriesFile::MutexOfOpenFile() {
  const Lock lock(m_mutex);
  if (!m_file.IsOpen()) Open();
  return m_spFileMutex;
}

// --- Writing

bool DefaultLogEntriesFile::Write(std::string_view text) {
  const std::size_t end = text.size();
  std::size_t done = 0;
  Write(LogRun(text, &end, 1), done);
  return done == 1;
}

// Behind a failure, and where others may write at the same time, it goes on entry by entry: what becomes of each is
// its own affair.
void DefaultLogEntriesFile::Write(const LogRun& entries, std::size_t& done) {
  boost::shared_ptr<LogFileMutex> spFileMutex = MutexOfOpenFile();
  if (!spFileMutex) return;
  const LogFileLock processLock(std::move(spFileMutex));
  const Lock lock(m_mutex);
  bool together = processLock.IsOwner();
  while (done < entries.Count() && Prepare(processLock)) {
    const std::size_t end = together ? EndOfPiece(entries, done) : done + 1;
    const std::size_t reached = Append(entries, done, end, processLock);
    together = together && reached == end;
    if (reached > done) done = reached - 1;
    if (IsFull()) Rollover();
    done = reached;
  }
}

// Another thread may have closed the file while this one waited, another process may have given its name to a
// new one, and the last owner of the lock may have died at either.
bool DefaultLogEntriesFile::Prepare(const LogFileLock& processLock) {
  if (!m_file.IsOpen() && !Open()) return false;
  if (processLock.WasAbandoned()) m_spFileMutex->CountGeneration();
  if (HasNameMoved() && !OpenByName()) return false;
  if (processLock.WasAbandoned()) CutUnfinishedEntry(m_PathName);
  return true;
}

bool DefaultLogEntriesFile::HasNameMoved() const { return m_spFileMutex->GetGeneration() != m_ullGeneration; }

// Behind the entry that will fill the file, or behind the last one.
std::size_t DefaultLogEntriesFile::EndOfPiece(const LogRun& entries, std::size_t first) {
  if (first + 1 == entries.Count()) return first + 1;
  std::uint64_t length = 0;
  if (m_file.SeekToEnd(length) != 0) return first + 1;
  std::size_t end = first + 1;
  while (end < entries.Count() && !IsAboveLimit(length + entries.Between(first, end).size())) ++end;
  return end;
}

// Gives up to which entry that is done. One by itself is, also where it is lost.
std::size_t DefaultLogEntriesFile::Append(const LogRun& entries, std::size_t first, std::size_t end,
                                          const LogFileLock& processLock) {
  const std::string_view text = entries.Between(first, end);
  const bool only = end == first + 1;
  std::size_t written = 0;
  m_file.Write(text.data(), text.size(), written);
  if (written == text.size()) return end;
  while (entries.Between(first, end).size() > written) --end;
  const std::size_t torn = written - entries.Between(first, end).size();
  if (torn != 0) CutBack(torn, processLock);
  return only ? first + 1 : end;
}

// Without the lock, somebody else may have written behind it already.
void DefaultLogEntriesFile::CutBack(std::size_t torn, const LogFileLock& processLock) {
  if (!processLock.IsOwner()) return CutUnfinishedEntry(m_PathName);
  std::uint64_t length = 0;
  if (m_file.SeekToEnd(length) == 0 && length >= torn) m_file.Truncate(length - torn);
}

// --- Turning over

bool DefaultLogEntriesFile::IsFull() {
  std::uint64_t length = 0;
  return m_file.SeekToEnd(length) == 0 && IsAboveLimit(length);
}

// If somebody who didn't get the lock has turned over in the meantime, or the file was removed by hand, what the
// name stands for now is not full, and the archive stays what it is.
void DefaultLogEntriesFile::Rollover() {
  const boost::shared_ptr<LogFileMutex> spFileMutex = m_spFileMutex;
  const bool gone = HasNameMoved() || !m_PathName.Exists();
  Close();
  if (!gone && !MoveToArchive(*spFileMutex)) return CopyToArchive();
  Open();
}

PathName DefaultLogEntriesFile::ArchiveName() const {
  PathName archive = m_PathName;
  archive.SetLeafAndExt(sARCHIVE);
  return archive;
}

bool DefaultLogEntriesFile::MoveToArchive(LogFileMutex& fileMutex) {
  PathName archive = ArchiveName();
  if (archive.Exists()) archive.Delete();
  PathName entries = m_PathName;  // Rename changes the name that it is called on
  if (!entries.Rename(sARCHIVE)) return false;
  fileMutex.CountGeneration();
  OXA_ASSERT(!m_PathName.Exists());
  return true;
}

// The file stays the same one, so that nobody has to open it anew. A log that was moved to another folder in the
// meantime is opened there, and isn't cut.
void DefaultLogEntriesFile::CopyToArchive() {
  const std::string entries = m_PathName;
  const bool copied = Platform::CopyFile(entries.c_str(), ArchiveName()) == 0;
  if (Open() && copied && m_PathName == entries) m_file.Truncate(0);
}

}  // namespace Oxa::Core
