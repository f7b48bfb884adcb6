// Loggers by path, and what the manager asks the log service in force about paths.
//
// The lock of the services comes before the one of the loggers, everywhere: services and handlers are called with
// theirs held, and may ask for loggers.
#include <Infrastructure/OxaCore/LogManager.h>

#include "Core/LibraryState.h"
#include "Log/DefaultLogService.h"
#include "Log/FlagHold.h"
#include "Platform/Faults.h"

namespace Oxa::Core {

namespace {

// Set while a logger is being registered: one that the service asks for meanwhile is not.
std::atomic<bool> s_bRegistering{false};

// Calls `operation`. A path that the service refuses is the caller's business, other failures are nobody's.
template <class Operation>
void LetOnlyBadPathsThrough(const Operation& operation) {
  try {
    operation();
  } catch (InvalidLogPath&) {
    throw;
  } catch (...) {
    Platform::LetCancellationPass();
  }
}

}  // namespace

boost::shared_ptr<Logger> LogManager::GetLogger(const std::string& path) {
  if (IsLibraryUnloading()) return {};
  boost::shared_ptr<Logger> logger = FindLogger(path);
  return logger ? logger : AddLogger(path);
}

boost::shared_ptr<Logger> LogManager::FindLogger(const std::string& path) {
  const ReaderLock reading(m_loggerMutex);
  const auto found = m_loggers.find(path);
  return found == m_loggers.end() ? boost::shared_ptr<Logger>() : found->second;
}

std::vector<boost::shared_ptr<Logger>> LogManager::GetLoggers() {
  const ReaderLock reading(m_loggerMutex);
  std::vector<boost::shared_ptr<Logger>> loggers;
  for (const auto& [path, logger] : m_loggers) loggers.push_back(logger);
  return loggers;
}

boost::shared_ptr<Logger> LogManager::AddLogger(const std::string& path) {
  const ReaderLock serviceReading(m_serviceMutex);
  const WriterLock writing(m_loggerMutex);
  // Somebody may have been faster.
  const auto [place, isNew] = m_loggers.try_emplace(path);
  boost::shared_ptr<Logger> known = place->second;
  if (!isNew) return known;
  try {
    boost::shared_ptr<Logger> logger(new Logger(path));
    place->second = logger;
    RegisterWithService(*logger);
    return logger;
  } catch (...) {
    m_loggers.erase(path);
    throw;
  }
}

void LogManager::RegisterWithService(Logger& logger) {
  const FlagHold registering(s_bRegistering);
  if (!registering) return;
  LetOnlyBadPathsThrough([&] { m_pLogService->RegisterLogger(&logger); });
}

void LogManager::UnregisterLogger(const std::string& path) {
  if (!FindLogger(path)) return;
  const ReaderLock serviceReading(m_serviceMutex);
  const WriterLock writing(m_loggerMutex);
  const boost::shared_ptr<Logger> logger = FindLogger(path);
  if (!logger) return;
  LetOnlyBadPathsThrough([&] { m_pLogService->UnregisterLogger(logger.get()); });
  m_loggers.erase(path);
  if (!IsDefaultInForce()) m_pDefaultService->UnregisterLogger(logger.get());
}

void LogManager::SetSeverityFilters(const std::string& path, unsigned int filters) {
  const ReaderLock reading(m_serviceMutex);
  LetOnlyBadPathsThrough([&] { m_pLogService->SetSeverityFilters(path, filters); });
}

unsigned int LogManager::GetSeverityFilters(const std::string& path) {
  const ReaderLock reading(m_serviceMutex);
  unsigned int filters = uDEFAULT_LOG_FILTERS;
  LetOnlyBadPathsThrough([&] { filters = m_pLogService->GetSeverityFilters(path); });
  return filters;
}

void LogManager::EnumLoggers(const std::string& rootPath, std::list<std::string>& names) {
  names.clear();
  const ReaderLock reading(m_serviceMutex);
  m_pLogService->EnumLoggers(rootPath, names);
}

bool LogManager::Exists(const std::string& path) {
  const ReaderLock reading(m_serviceMutex);
  return m_pLogService->Exists(path);
}

void LogManager::ForgetFirstLogger() {
  const auto [path, logger] = *m_loggers.begin();
  m_pLogService->UnregisterLogger(logger.get());
  m_loggers.erase(path);
}

// At the very end of the process nobody is told: services of hosts may be gone.
void LogManager::ForgetLoggers() {
  if (IsExitingAfterFatalError() || IsLibraryUnloading()) {
    const WriterLock writing(m_loggerMutex);
    m_loggers.clear();
    return;
  }
  try {
    const ReaderLock serviceReading(m_serviceMutex);
    const WriterLock writing(m_loggerMutex);
    while (!m_loggers.empty()) ForgetFirstLogger();
  } catch (...) {
    Platform::LetCancellationPass();
  }
}

}  // namespace Oxa::Core
