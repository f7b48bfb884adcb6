#include <Infrastructure/OxaCore/Assert.h>
#include <Infrastructure/OxaCore/ProcessMutex.h>

#include <algorithm>
#include <new>

#include "ErrorHandling/SystemErrorMessage.h"
#include "Platform/NamedLock.h"
#include "Threads/WholeMilliseconds.h"

namespace Oxa::Core {

namespace {

constexpr char sLOG_NAME[] = "Oxa.Core.ProcessMutex";
constexpr char sFOR_ALL_SESSIONS[] = "Global\\";

Platform::NamedLock* Open(const std::string& name) {
  int code;
  return Platform::NamedLock::Open((sFOR_ALL_SESSIONS + name).c_str(), code);
}

Platform::Deadline DeadlineOf(const Elapse& timeout) {
  return timeout == IMutex::sINFINITE ? Platform::Deadline::Never() : WholeMilliseconds(timeout);
}

bool SucceedsAtOnce(Platform::NamedLock* lock) {
  return lock != nullptr && lock->TryLock().m_eEnd == Platform::EWaitEnd::eSIGNALLED;
}

// The lock is held by now, and the caller has to learn that, even if there is no memory for the warning.
void WarnOfAbandonment(const std::string& name, const CodeSite& site) {
  try {
    site.Raise(sLOG_NAME, WaitAbandoned(name));
  } catch (const std::bad_alloc&) {
  }
}

}  // namespace

ProcessMutex::ProcessMutex(const std::string& name) : m_name(name), m_hMutex(nullptr) {
  std::replace(m_name.begin(), m_name.end(), '\\', '/');
  m_hMutex = Open(m_name);
  OXA_ASSERT(m_hMutex != 0);
}

ProcessMutex::~ProcessMutex() { m_hMutex = nullptr; }

void ProcessMutex::Lock(const Elapse& timeout) {
  OXA_ASSERT(m_hMutex != 0);
  const Platform::WaitResult result =
      m_hMutex != nullptr ? m_hMutex->LockBy(DeadlineOf(timeout)) : Platform::NothingToWaitFor();
  switch (result.m_eEnd) {
    case Platform::EWaitEnd::eSIGNALLED:
      return;
    case Platform::EWaitEnd::eABANDONED:
      return WarnOfAbandonment(m_name, OXA_CODE_SITE);
    case Platform::EWaitEnd::eTIMEOUT:
      return OXA_RAISE_ERROR(sLOG_NAME, LockTimeout(timeout.ToString()));
    default:
      return OXA_RAISE_ERROR(
          sLOG_NAME, WaitFailed(m_name, SystemErrorMessage(static_cast<unsigned long>(result.m_iCode))));
  }
}

// Deliberately without a pause, and with an eye for plain success only: a round that gets an abandoned lock counts as
// a failure, although the lock is held from then on.
bool ProcessMutex::TryLock(const Elapse& timeout) {
  OXA_ASSERT(m_hMutex != 0);
  if (SucceedsAtOnce(m_hMutex)) return true;
  const Platform::Deadline deadline = ExactDeadline(timeout);
  while (!deadline.HasPassed())
    if (SucceedsAtOnce(m_hMutex)) return true;
  return false;
}

void ProcessMutex::Unlock() {
  if (OXA_ASSERT(m_hMutex != 0)) m_hMutex->Unlock();
}

}  // namespace Oxa::Core
