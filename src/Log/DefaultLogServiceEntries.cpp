// What the default log service does with an entry that no handler takes.
#include "Log/DefaultLogService.h"

#include <iostream>

#include "Log/DefaultLogDocument.h"

#include "Platform/Faults.h"
#include "Platform/Files.h"

namespace Oxa::Core {

namespace {

constexpr std::size_t uMAX_RETAINED = 1000;
constexpr std::size_t uUSUAL_MESSAGE = 512;  // bytes

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

void DefaultLogService::Retain(const OxaLogEntry& entry) {
  const Lock lock(m_retainedMutex);
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

void DefaultLogService::WriteToFile(std::string_view text) {
  if (TryWriteToFile(text)) return;
  const Platform::FileLimitGuard guard;  // standard error can be a file, too
  std::cerr << text << std::flush;
}

bool DefaultLogService::TryWriteToFile(std::string_view text) {
  try {
    return OpenLogFilesIfClosed() && m_entriesFile.Write(text);
  } catch (...) {
    Platform::LetCancellationPass();
    return false;
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
