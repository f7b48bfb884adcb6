// The lock between the processes that write to one log.
#ifndef OXACORE_LOG_LOGFILEMUTEX_H
#define OXACORE_LOG_LOGFILEMUTEX_H

#include <boost/shared_ptr.hpp>
#include <cstdint>
#include <string>

#include "Platform/NamedLock.h"

namespace Oxa::Core {

/// Goes by the full path of the entries file, so that all who write to the same file share one. Where the system
/// has no lock to give, everybody goes ahead without. Any thread may call.
class LogFileMutex {
 public:
  explicit LogFileMutex(const std::string& entriesFile);
  LogFileMutex(const LogFileMutex&) = delete;
  LogFileMutex& operator=(const LogFileMutex&) = delete;

  /// How often the name of the entries file has been given to a new file: who finds another number than at the
  /// time when it opened the file writes to a file that isn't the log any more.
  std::uint64_t GetGeneration() const noexcept;
  void CountGeneration() noexcept;

 private:
  friend class LogFileLock;
  Platform::NamedLock* m_pLock;  // lives as long as the process; null without a lock
};

/// Holds a LogFileMutex for the length of a scope, or does without after 10 seconds: a log that waits for a
/// stopped process for ever helps nobody.
class LogFileLock {
 public:
  explicit LogFileLock(boost::shared_ptr<LogFileMutex> mutex);
  LogFileLock(const LogFileLock&) = delete;
  LogFileLock& operator=(const LogFileLock&) = delete;
  ~LogFileLock();

  bool IsOwner() const { return m_bOwner; }

  /// Whether the last owner's thread ended within its work.
  bool WasAbandoned() const { return m_bAbandoned; }

 private:
  const boost::shared_ptr<LogFileMutex> m_spMutex;  // keeps it alive while the file is opened anew
  bool m_bOwner = false;
  bool m_bAbandoned = false;
};

}  // namespace Oxa::Core

#endif
