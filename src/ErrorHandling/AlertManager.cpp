#include <Infrastructure/OxaCore/AlertManager.h>

#include <Infrastructure/OxaCore/System.h>

#include <typeinfo>

#include "Core/LibraryGlobals.h"
#include "Core/LibraryState.h"
#include "ErrorHandling/RawChannel.h"
#include "Notifications/FailureGuard.h"
#include "Platform/Faults.h"
#include "Platform/Symbols.h"
#include "Platform/Threads.h"

namespace Oxa::Core {

namespace {

const char* const sCURRENT_ERRORS = "CurrentErrors";
const char* const sLOG_NAME_OF_BROADCAST = "OxaCore.AlertManager.AlertBroadcast";
const char* const sERROR_TEMPLATE = "Error occurred during an alert notification:\n%1%";
const char* const sUNKNOWN_FAILURE = "Unknown error in alert listener during alert notification";
const char* const sERROR_WHILE_TELLING = "Error in alert listener during alert notification";
const char* const sUNKNOWN_WHILE_TELLING = "Unkown error in alert listener during alert notification";

// Known here besides in the globals, since those can't be searched without memory.
std::atomic<AlertManager*> s_manager{nullptr};

void RaiseBroadcastFailure(const char* message, Error* error) {
  const FailureGuard guard;
  ErrorDuringAlertNotification warning(message);
  if (!guard.IsInner()) {
    OXA_RAISE_WARNING(sLOG_NAME_OF_BROADCAST, warning);
  } else if (error != nullptr) {
    WriteAlertDocument(*error, sERROR_WHILE_TELLING);
  } else {
    WriteAlertDocument(warning, sERROR_WHILE_TELLING);
  }
}

// The bottom of the recursion: a listener's failure never reaches the code that raised.
void TellBroadcastFailure(const char* message, Error* error) {
  try {
    RaiseBroadcastFailure(message, error);
  } catch (Error& failure) {
    WriteAlertDocument(failure, sERROR_WHILE_TELLING);
  } catch (...) {
    Platform::LetCancellationPass();
    WriteRawLine(sUNKNOWN_WHILE_TELLING);
  }
}

template <class Map, class Set>
int CopyRaised(const Map& records, Set& raised) {
  raised.clear();
  for (const auto& [className, record] : records) {
    if (record.GetRaisedCount() > 0) raised.insert(record);
  }
  return static_cast<int>(raised.size());
}

}  // namespace

AlertManager::AlertManager()
    : m_support(NotificationSupport::eLAST_ADDED_FIRST),
      m_previousTerminateHandler(nullptr),
      m_eDumpPolicy(eDUMP_REFERENCED_MEMORY) {
  m_previousTerminateHandler = std::set_terminate(&OnTerminate);
  if (ManagedGlobals* const globals = LibraryGlobals()) globals->Add<CurrentErrors>(sCURRENT_ERRORS);
  // First in a list that is served last-added-first: the records are kept after everybody else has heard.
  m_support.AddListener(*this);
  std::string path;
  if (const System* const system = System::Instance()) system->GetProcessPath(path);
  UseFatalErrorBasePath(path);
  AlertManager* none = nullptr;
  s_manager.compare_exchange_strong(none, this);
}

AlertManager::~AlertManager() {
  // Unless a host has put its own in front meanwhile.
  if (std::get_terminate() == &OnTerminate && !GoesByFatalError())
    std::set_terminate(m_previousTerminateHandler);
  AlertManager* self = this;
  s_manager.compare_exchange_strong(self, nullptr);
}

AlertManager* AlertManager::Instance() noexcept { return s_manager.load(std::memory_order_acquire); }

void AlertManager::AddAlertListener(AlertListener& listener) { m_support.AddListener(listener); }

void AlertManager::RemoveAlertListener(AlertListener& listener) { m_support.RemoveListener(listener); }

void AlertManager::Broadcast(Notification& notification) {
  try {
    m_support.Broadcast(notification);
  } catch (Error& error) {
    TellBroadcastFailure(error.what(), &error);
  } catch (...) {
    Platform::LetCancellationPass();
    TellBroadcastFailure(sUNKNOWN_FAILURE, nullptr);
  }
}

void AlertManager::ErrorRaised(Error& error) {
  if (!IsLibraryUnloading()) {
    CurrentErrors* const errors = FindLibraryGlobal<CurrentErrors>(sCURRENT_ERRORS);
    if (errors != nullptr) errors->Store(Platform::CurrentThreadId(), error);
  }
  const Lock lock(m_errorsMutex);
  ErrorRecord& record = m_errorRecords[Platform::DecoratedName(typeid(error))];
  if (record.GetRaisedCount() == 0) record.Describe(error);
  record.m_raised.Add();
}

void AlertManager::ErrorHandled(Error&) {}

void AlertManager::WarningRaised(Warning& warning) {
  const Lock lock(m_warningsMutex);
  WarningRecord& record = m_warningRecords[Platform::DecoratedName(typeid(warning))];
  if (record.GetRaisedCount() == 0) record.Describe(warning);
  record.m_raised.Add();
}

bool AlertManager::ShouldDoWarningBroadcast(const std::string& className) {
  const Lock lock(m_warningsMutex);
  const auto record = m_warningRecords.find(className);
  return record == m_warningRecords.end() || record->second.ShouldWarningBeRaised();
}

void AlertManager::SetMaxWarnings(const std::string& className, unsigned long max, bool createIfAbsent) {
  const Lock lock(m_warningsMutex);
  if (!createIfAbsent && m_warningRecords.count(className) == 0) return;
  m_warningRecords[className].SetMaxWarnings(max);
}

void AlertManager::ResetWarningCount(const std::string& className) {
  const Lock lock(m_warningsMutex);
  const auto record = m_warningRecords.find(className);
  if (record != m_warningRecords.end()) record->second.ResetWarningCount();
}

int AlertManager::GetRaisedErrorRecords(std::set<ErrorRecord, SSortErrors>& records) {
  const Lock lock(m_errorsMutex);
  return CopyRaised(m_errorRecords, records);
}

int AlertManager::GetRaisedWarningRecords(std::set<WarningRecord, SSortWarnings>& records) {
  const Lock lock(m_warningsMutex);
  return CopyRaised(m_warningRecords, records);
}

ErrorDuringAlertNotification::ErrorDuringAlertNotification(const std::string& message)
    : Warning(AlertMessage(sERROR_TEMPLATE, message)) {}

ErrorDuringAlertNotification::~ErrorDuringAlertNotification() = default;

}  // namespace Oxa::Core
