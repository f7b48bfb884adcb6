// The last line of defence: what becomes of an error that nobody catches.
#include <Infrastructure/OxaCore/AlertManager.h>

#include <Infrastructure/OxaCore/FatalErrorWarnings.h>
#include <Infrastructure/OxaCore/PathName.h>

#include "Core/LibraryGlobals.h"
#include "Core/LibraryState.h"
#include "ErrorHandling/AlertManagerHooks.h"
#include "ErrorHandling/AlertTraffic.h"
#include "ErrorHandling/FatalErrorEnd.h"
#include "ErrorHandling/FatalErrorPath.h"
#include "ErrorHandling/FatalErrorReport.h"
#include "ErrorHandling/Hooks.h"
#include "ErrorHandling/RawChannel.h"

#include "Platform/Threads.h"

namespace Oxa::Core {

namespace {

const char* const sCURRENT_ERRORS = "CurrentErrors";
const char* const sFATAL_UNHANDLED = "Fatal unhandled error";
const char* const sLOG_NAME_OF_BASE_PATH = "Oxa.Core.AlertManager.SetFatalErrorBasePath";
const char* const sLOG_NAME_OF_FATAL_ERROR = "Oxa.Core.AlertManager.OnFatalError";
const char* const sSEPARATORS = "/\\";
constexpr char cSEPARATOR = '/';
constexpr int iSTATUS = -1;

std::atomic<int> s_iUncaughtErrors{0};
std::atomic<bool> s_bEndBySignal{false};

// The last error of this thread, or of any thread. A copy: other threads may go on raising.
bool FindCurrentError(Error& found) {
  if (IsLibraryUnloading()) return false;
  const CurrentErrors* const errors = FindLibraryGlobal<CurrentErrors>(sCURRENT_ERRORS);
  return errors != nullptr && errors->Find(Platform::CurrentThreadId(), found);
}

// What hangs in here is the watch's affair; what throws keeps nobody from the report.
void StopBuffering() {
  try {
    TheHooks().stopBuffering();
  } catch (...) {
  }
}

// The folder for the report, the working folder at worst.
std::string FolderOfReport() {
  std::string folder;
  if (CreateFatalErrorPath(folder)) return folder;
  FatalErrorName working;
  WorkingFolder(working);
  folder = working.Get();
  OXA_RAISE_WARNING(sLOG_NAME_OF_FATAL_ERROR, FallbackFatalErrorPath(folder));
  return folder;
}

}  // namespace

std::atomic<int> AlertManager::sm_iMaxFatalErrorReports{1};

void AlertManager::OnTerminate() { TheHooks().endUncaught(); }

void AlertHooks::EndByTerminateHandler() {
  if (s_iUncaughtErrors.fetch_add(1) < AlertManager::GetMaxFatalErrorReports())
    AlertManager::ReportUncaughtError();
  FinishDying(iSTATUS);
}

const AlertData* AlertHooks::FatalErrorInfo() noexcept {
  const AlertManager* const manager = AlertManager::Instance();
  return manager != nullptr ? &manager->m_fatalErrorInfo : nullptr;
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
  StopBuffering();
  try {
    path = FolderOfReport();
    WriteFatalErrorReport(path, m_fatalErrorInfo, error);
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

bool AlertManager::SetFatalErrorBasePath(const std::string& path) {
  if (!PathName(path).IsValid()) {
    OXA_RAISE_WARNING(sLOG_NAME_OF_BASE_PATH, InvalidFatalErrorPath(path));
    return false;
  }
  UseFatalErrorBasePath(path);
  return true;
}

void AlertManager::UseFatalErrorBasePath(const std::string& path) {
  std::string whole = path;
  if (path.find_last_of(sSEPARATORS) + 1 != path.size()) whole += cSEPARATOR;
  const Lock lock(m_basePathMutex);
  m_sFatalErrorBasePath.swap(whole);
  SetFatalErrorBase(m_sFatalErrorBasePath);
}

std::string AlertManager::GetFatalErrorBasePath() {
  const Lock lock(m_basePathMutex);
  return m_sFatalErrorBasePath;
}

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

bool AlertManager::GetEndBySignal() { return s_bEndBySignal.load(std::memory_order_relaxed); }

void AlertManager::SetEndBySignal(bool bySignal) {
  s_bEndBySignal.store(bySignal, std::memory_order_relaxed);
}

}  // namespace Oxa::Core
