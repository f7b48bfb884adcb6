#include "Log/LogFileMutex.h"

#include <algorithm>
#include <utility>

#include "Platform/Files.h"

namespace Oxa::Core {

namespace {

using Platform::EWaitEnd;

constexpr long long llWAIT_MILLISECONDS = 10000;
constexpr std::size_t uLONGEST_PATH = 4096;

std::string LockName(const std::string& file) {
  char path[uLONGEST_PATH];
  std::string name = Platform::FullPath(file.c_str(), path, sizeof path) == 0 ? path : file;
  std::replace(name.begin(), name.end(), '\\', '/');
  return name;
}

Platform::NamedLock* OpenLock(const std::string& file) {
  int code = 0;
  return Platform::NamedLock::Open(LockName(file).c_str(), code);
}

// The first attempt needs no clock.
EWaitEnd Take(Platform::NamedLock& lock) {
  const EWaitEnd end = lock.TryLock().m_eEnd;
  if (end != EWaitEnd::eTIMEOUT) return end;
  return lock.LockBy(Platform::Deadline::InMilliseconds(llWAIT_MILLISECONDS)).m_eEnd;
}

}  // namespace

LogFileMutex::LogFileMutex(const std::string& entriesFile) : m_pLock(OpenLock(entriesFile)) {}

std::uint64_t LogFileMutex::GetGeneration() const noexcept {
  return m_pLock == nullptr ? 0 : m_pLock->Generation().load();
}

void LogFileMutex::CountGeneration() noexcept {
  if (m_pLock != nullptr) m_pLock->Generation().fetch_add(1);
}

LogFileLock::LogFileLock(boost::shared_ptr<LogFileMutex> mutex) : m_spMutex(std::move(mutex)) {
  if (m_spMutex->m_pLock == nullptr) return;
  const EWaitEnd end = Take(*m_spMutex->m_pLock);
  m_bAbandoned = end == EWaitEnd::eABANDONED;
  m_bOwner = m_bAbandoned || end == EWaitEnd::eSIGNALLED;
}

LogFileLock::~LogFileLock() {
  if (m_bOwner) m_spMutex->m_pLock->Unlock();
}

}  // namespace Oxa::Core
