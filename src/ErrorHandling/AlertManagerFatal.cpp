// The last line of defence: what becomes of an error that nobody catches.
#include <Infrastructure/OxaCore/AlertManager.h>

#include "Core/LibraryGlobals.h"
#include "Core/LibraryState.h"
#include "ErrorHandling/AlertTraffic.h"
#include "ErrorHandling/Hooks.h"
#include "ErrorHandling/RawChannel.h"
#include "Platform/Threads.h"

namespace Oxa::Core {

namespace {

const char* const sCURRENT_ERRORS = "CurrentErrors";
const char* const sFATAL_UNHANDLED = "Fatal unhandled error";
constexpr int iSTATUS = -1;

std::atomic<int> s_iUncaughtErrors{0};

// The last error of this thread, or of any thread. A copy: other threads may go on raising.
bool FindCurrentError(Error& found) {
  if (IsLibraryUnloading()) return false;
  const CurrentErrors* const errors = FindLibraryGlobal<CurrentErrors>(sCURRENT_ERRORS);
  return errors != nullptr && errors->Find(Platform::CurrentThreadId(), found);
}

}  // namespace

std::atomic<int> AlertManager::sm_iMaxFatalErrorReports{1};

void AlertManager::OnTerminate() {
  if (s_iUncaughtErrors.fetch_add(1) < GetMaxFatalErrorReports()) ReportUncaughtError();
  ExitAfterFatalError(iSTATUS);
}

void AlertManager::ReportUncaughtError() noexcept {
  const AlertInFlight flight;
  UnknownError unknown{std::string()};
  Error current(AlertInfo::eERROR);
  Error* error = &unknown;
  try {
    if (FindCurrentError(current)) error = &current;
    AlertManager* const manager = Instance();
    if (manager != nullptr && flight.MayProceed()) manager->OnFatalError(*error);
  } catch (...) {
    // Nothing may keep the error from standard error, nor the process from its end.
  }
  WriteAlertDocument(*error, sFATAL_UNHANDLED);
}

void AlertManager::OnFatalError(Error& error) {
  error.m_bFatal = true;
  std::string path;
  try {
    TheHooks().stopBuffering();
    path = TheHooks().reportFatalError(error);
  } catch (...) {
    // Whoever listens is told all the same.
  }
  // Two threads may die at once; but a dying one waits for nobody.
  if (m_errorsMutex.TryLock()) {
    m_sFatalErrorPath = path;
    m_errorsMutex.Unlock();
  }
  UncaughtFatalErrorNotification notification(error, path);
  Broadcast(notification);
}

std::string AlertManager::GetFatalErrorBasePath() { return m_sFatalErrorBasePath; }

void AlertManager::AddFatalErrorInfo(const std::string& key, const std::string& value) {
  m_fatalErrorInfo[key] = value;
}

EDumpPolicy AlertManager::GetDumpPolicy() { return m_eDumpPolicy.load(std::memory_order_relaxed); }

void AlertManager::SetDumpPolicy(EDumpPolicy policy) {
  m_eDumpPolicy.store(policy, std::memory_order_relaxed);
}

int AlertManager::GetMaxFatalErrorReports() {
  return sm_iMaxFatalErrorReports.load(std::memory_order_relaxed);
}

void AlertManager::SetMaxFatalErrorReports(int max) {
  sm_iMaxFatalErrorReports.store(max, std::memory_order_relaxed);
}

}  // namespace Oxa::Core
