// What the default log service does with an entry that no handler takes.
#include "Log/DefaultLogService.h"

#include <iostream>
#include <new>
#include <string_view>
#include <utility>

#include "Core/LibraryState.h"
#include "Log/DefaultLogDocument.h"
#include "Log/LogBatch.h"

#include "Platform/Faults.h"
#include "Platform/Files.h"

namespace Oxa::Core {

namespace {

constexpr std::size_t uMAX_RETAINED = 1000;
constexpr std::size_t uUSUAL_MESSAGE = 512;  // bytes
constexpr std::size_t uLONG_PIECE = 32768;   // bytes: other processes wait for their turn

// The host may have the stream throw. What has been retained isn't to be sent once more for that.
void ShowOnStandardError(std::string_view text) {
  const Platform::FileLimitGuard guard;  // it can be a file, too
  try {
    std::cerr << text << std::flush;
  } catch (...) {
    Platform::LetCancellationPass();
  }
}

}  // namespace

/// Retained entries on their way to a service. What is left of them when this ends goes back, in front.
class DefaultLogService::RetainedInHand {
 public:
  explicit RetainedInHand(DefaultLogService& owner) : m_owner(owner) {
    const Lock lock(m_owner.m_retainedMutex);
    m_entries.swap(m_owner.m_retained);
    m_owner.CountRetained();
  }
  RetainedInHand(const RetainedInHand&) = delete;
  RetainedInHand& operator=(const RetainedInHand&) = delete;
  ~RetainedInHand() {
    if (m_entries.empty()) return;
    try {
      const Lock lock(m_owner.m_retainedMutex);
      m_owner.m_retained.splice(m_owner.m_retained.begin(), m_entries);
      m_owner.CountRetained();
    } catch (...) {
      // Entries that can't be put back are lost with the lock.
    }
  }

  void HandTo(IOxaLogService& service) {
    for (; !m_entries.empty(); m_entries.pop_front()) service.WriteLogEntry(m_entries.front());
  }

 private:
  DefaultLogService& m_owner;
  std::list<OxaLogEntry> m_entries;
};

bool DefaultLogService::HasRetained() const { return m_uRetained.load(std::memory_order_relaxed) > 0; }

void DefaultLogService::FlushRetained(IOxaLogService& service) { RetainedInHand(*this).HandTo(service); }

// Who is told of trouble with the file may come back here with the rest, and is not to find what is being written.
std::size_t DefaultLogService::WriteTogether(LogBatch& entries) {
  if (IsLibraryUnloading() || !GetHandlers().empty()) return 0;
  LogTexts texts(std::move(entries.Texts()));
  texts.Clear();
  std::size_t count = 0;
  for (const OxaLogEntry& entry : entries) {
    if (texts.Size() > uLONG_PIECE) break;
    texts.Add(entry);
    ++count;
  }
  if (!RetainWithoutHandlers(entries.begin(), count)) return 0;
  entries.Drop(count);
  WriteToFile(texts.Run());
  entries.Texts() = std::move(texts);
  return count;
}

/// False, and nothing is retained, if there are handlers. One that there is no memory for is in the file alone.
bool DefaultLogService::RetainWithoutHandlers(const OxaLogEntry* entries, std::size_t count) {
  const ReaderLock reading(m_handlerMutex);
  if (!m_handlers.empty()) return false;
  const Lock lock(m_retainedMutex);
  for (const OxaLogEntry* entry = entries; entry != entries + count; ++entry) {
    try {
      Retain(*entry);
    } catch (const std::bad_alloc&) {
      continue;
    }
  }
  return true;
}

/// With the lock of the retained entries held.
void DefaultLogService::Retain(const OxaLogEntry& entry) {
  const bool isFull = m_retained.size() == uMAX_RETAINED;
  if (isFull && m_retained.front().m_sMessage.capacity() <= uUSUAL_MESSAGE) {
    ReplaceOldest(entry);
  } else {
    m_retained.push_back(entry);
  }
  CountRetained();
}

/// A process that logs all its life drops an entry for each that it retains: the memory of the one does for the
/// other. Where there is no memory for the new one's texts, the oldest is gone all the same. With the lock of the
/// retained entries held.
void DefaultLogService::ReplaceOldest(const OxaLogEntry& entry) {
  std::list<OxaLogEntry> place;
  place.splice(place.end(), m_retained, m_retained.begin());
  place.front() = entry;
  m_retained.splice(m_retained.end(), place);
}

/// Drops the oldest entries beyond the limit. With the lock of the retained entries held.
void DefaultLogService::CountRetained() {
  while (m_retained.size() > uMAX_RETAINED) m_retained.pop_front();
  m_uRetained.store(m_retained.size(), std::memory_order_relaxed);
}

void DefaultLogService::WriteToFile(const LogRun& entries) {
  for (std::size_t done = 0; done < entries.Count();) {
    TryWriteToFile(entries, done);
    if (done == entries.Count()) return;
    ShowOnStandardError(entries.Between(done, done + 1));
    ++done;
  }
}

/// From number `done` on, which becomes that of the one that failed, or how many there are.
void DefaultLogService::TryWriteToFile(const LogRun& entries, std::size_t& done) {
  try {
    if (OpenLogFilesIfClosed()) m_entriesFile.Write(entries, done);
  } catch (...) {
    Platform::LetCancellationPass();
  }
}

bool DefaultLogService::OpenLogFilesIfClosed() {
  if (m_entriesFile.IsOpen()) return true;
  const Lock lock(m_fileMutex);
  return m_entriesFile.IsOpen() || OpenLogFiles();
}

/// Makes the document if there is none, and opens the entries file. With the file's lock held.
bool DefaultLogService::OpenLogFiles() {
  CreateDefaultLogDocument();
  m_entriesFile.Open();
  return m_entriesFile.IsOpen();
}

void DefaultLogService::CloseLogFiles() {
  const Lock lock(m_fileMutex);
  m_entriesFile.Close();
}

}  // namespace Oxa::Core
