// Handlers, and the service in force.
#include <Infrastructure/OxaCore/CommonErrors.h>
#include <Infrastructure/OxaCore/LogManager.h>

#include "Log/DefaultLogService.h"
#include "Platform/Faults.h"

namespace Oxa::Core {

namespace {

const char* const sLOG_NAME = "Oxa.Core.LogManager";
const char* const sHANDLER = "pHandler";

// Services and handlers are foreign code: what they throw ends here. False if they did.
template <class Operation>
bool Swallowing(const Operation& operation) {
  try {
    operation();
    return true;
  } catch (...) {
    Platform::LetCancellationPass();
    return false;
  }
}

}  // namespace

bool LogManager::IsDefaultInForce() const { return m_pLogService == m_pDefaultService.get(); }

void LogManager::RegisterHandler(IOxaLogHandler* handler) {
  if (handler == nullptr) {
    OXA_RAISE_ERROR(sLOG_NAME, NullPointer(sHANDLER));
    return;
  }
  const ReaderLock reading(m_serviceMutex);
  if (Swallowing([&] { m_pLogService->RegisterHandler(handler); })) m_bHasHandlers.store(true);
  // The default service always knows all handlers, ready for a fall-back.
  if (!IsDefaultInForce()) Swallowing([&] { m_pDefaultService->RegisterHandler(handler); });
  OnLogHandlerChange();
}

void LogManager::UnregisterHandler(IOxaLogHandler* handler) {
  const ReaderLock reading(m_serviceMutex);
  if (!IsDefaultInForce()) m_pDefaultService->UnregisterHandler(handler);
  m_pLogService->UnregisterHandler(handler);
  m_bHasHandlers.store(m_pLogService->GetNumHandlers() > 0);
}

void LogManager::OnLogHandlerChange() {
  const ReaderLock reading(m_serviceMutex);
  m_bHasHandlers.store(true);
  if (m_pDefaultService->HasRetained()) {
    Swallowing([&] { m_pDefaultService->FlushRetained(*m_pLogService); });
  }
}

void LogManager::InstallLogService(IOxaLogService& service) {
  const WriterLock writing(m_serviceMutex);
  if (!IsDefaultInForce()) return;
  Swallowing([&] {
    m_pDefaultService->TransferTo(service);
    m_bHasHandlers.store(service.GetNumHandlers() > 0);
    m_pLogService = &service;
  });
}

void LogManager::UninstallLogService(IOxaLogService& service) {
  const WriterLock writing(m_serviceMutex);
  if (m_pLogService != &service || IsDefaultInForce()) return;
  TakeLeaveOf(service);
  GoBackToDefault();
}

// Of copies: the service may ask for loggers, or give some up, while it is being told.
void LogManager::TakeLeaveOf(IOxaLogService& service) {
  Swallowing([&] {
    for (const boost::shared_ptr<Logger>& logger : GetLoggers()) service.UnregisterLogger(logger.get());
  });
  Swallowing([&] {
    for (IOxaLogHandler* const handler : m_pDefaultService->GetHandlers()) service.UnregisterHandler(handler);
  });
}

void LogManager::GoBackToDefault() {
  m_bHasHandlers.store(true);
  m_pLogService = m_pDefaultService.get();
}

}  // namespace Oxa::Core
