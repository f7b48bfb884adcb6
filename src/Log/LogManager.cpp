#include <Infrastructure/OxaCore/LogManager.h>

#include <Infrastructure/OxaCore/AlertManager.h>

#include "Core/LibraryState.h"
#include "ErrorHandling/AlertTraffic.h"
#include "Log/DefaultLogService.h"
#include "Log/LogBatch.h"
#include "Log/LogTraffic.h"
#include "Platform/Faults.h"
#include "Platform/Machine.h"

namespace Oxa::Core {

namespace {

const char* const sQUEUE = "";  // the queue then names itself
constexpr std::uint32_t uFIRST_REPORT_LEVEL = 1000;
constexpr std::uint32_t uREPORT_STEP = 100;
constexpr std::uint32_t uHARD_LIMIT = 3000;

constexpr long long llTIME_TO_COME_UP_MS = 10;

// Known here besides in the globals: every message looks for it.
std::atomic<LogManager*> s_manager{nullptr};

}  // namespace

LogManager::LogManager()
    : m_pDefaultService(new DefaultLogService),
      m_pLogService(m_pDefaultService.get()),
      m_queue(sQUEUE, nullptr, uFIRST_REPORT_LEVEL, uREPORT_STEP, uHARD_LIMIT),
      m_bHasHandlers(true),
      m_bBuffering(true),
      m_pTaken(new LogBatch),
      m_uTaken(0),
      m_bTogether(false),
      m_ulThread(0),
      m_ulProcess(Platform::ProcessId()),
      m_bShutDown(false) {
  // Without a thread the entries go directly: nobody would take them out of the queue.
  if (!StartThread()) m_bBuffering.store(false, std::memory_order_relaxed);
  if (AlertManager* const alerts = AlertManager::Instance()) alerts->AddAlertListener(*this);
  LogManager* none = nullptr;
  s_manager.compare_exchange_strong(none, this);
  OxaSleep(llTIME_TO_COME_UP_MS, Elapse::MilliSeconds, false);
}

// Alerts first: one that arrived during the rest would find an object that is half gone.
LogManager::~LogManager() {
  if (AlertManager* const alerts = AlertManager::Instance()) alerts->RemoveAlertListener(*this);
  LogManager* self = this;
  s_manager.compare_exchange_strong(self, nullptr);
  AwaitAlertsInFlight();
  AwaitLogCalls();
  Shutdown();
  KillStuckThread();
}

LogManager* LogManager::Instance() noexcept { return s_manager.load(); }

void LogManager::Shutdown() {
  if (EndThread()) ForgetLoggers();
}

// False if that is done already. Services are told behind the mutex: one of their threads may want it, while it
// keeps a third one waiting for the lock of the services.
bool LogManager::EndThread() {
  const Lock lock(m_threadMutex);
  if (m_bShutDown) return false;
  m_bShutDown = true;
  StopThread();
  return true;
}

}  // namespace Oxa::Core
