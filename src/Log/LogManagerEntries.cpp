// From a message or an alert to an entry, and from there to the log service.
#include <Infrastructure/OxaCore/LogManager.h>

#include <new>
#include <utility>

#include "ErrorHandling/AlertXml.h"
#include "Log/DefaultLogService.h"
#include "Log/FlagHold.h"
#include "Log/FormatText.h"
#include "Log/LogForms.h"
#include "Platform/Faults.h"

namespace Oxa::Core {

namespace {

const char* const sLOG_NAME = "Oxa.Core.LogManager";
const char* const sBAD_FORMAT =
    "A formatting error occurred while writing a log message from logger <%s>\n"
    "The formatting string is:\n\t%s";

const char* const sRAISED = "Error Raised";
const char* const sHANDLED = "Error Handled";
const char* const sUNCAUGHT = "Uncaught Fatal Error";

// Set while an entry is sent directly: a service that logs as it writes must not come back here.
std::atomic<bool> s_bSending{false};

// An entry that there is no memory for is dropped like one that there is no room for.
template <class Operation>
void IfMemoryAllows(const Operation& operation) {
  try {
    operation();
  } catch (const std::bad_alloc&) {
    return;
  }
}

}  // namespace

void LogManager::WriteLog(OxaLogSeverityEnum severity, FormatOnce& message, const std::string& path,
                          const char* form) {
  if (const char* const text = message.GetText()) {
    WriteText(severity, text, path, form);
  } else {
    WriteBadFormat(message.GetFormat(), path);
  }
}

void LogManager::WriteBadFormat(const char* format, const std::string& path) {
  WriteText(eLOG_ERROR, FormatText(sBAD_FORMAT, Logger(path).GetName().c_str(), ShownFormat(format)),
            sLOG_NAME, sPLAIN_LOG_FORM);
}

// Alerts come here with their text as it stands: a "%" in it means nothing.
void LogManager::WriteText(OxaLogSeverityEnum severity, std::string text, const std::string& path,
                           const char* form) {
  OxaLogEntry entry;
  entry.m_eSeverity = severity;
  entry.m_sMessage = std::move(text);
  entry.m_sLoggerPath = path;
  entry.m_sForm = form;
  Store(entry);
}

void LogManager::Store(OxaLogEntry& entry) {
  if (GetBufferingMode()) {
    m_queue.Push(std::move(entry));
  } else {
    SendDirectly(entry);
  }
}

void LogManager::SendDirectly(const OxaLogEntry& entry) {
  const FlagHold sending(s_bSending);
  if (sending) SendLogMessage(entry, true);
}

// Nothing that a service or a handler throws comes out of here, and no text tells of it.
void LogManager::SendLogMessage(const OxaLogEntry& entry, bool direct) {
  const IOxaLogService* service = nullptr;
  try {
    const ReaderLock reading(m_serviceMutex);
    service = m_pLogService;  // NOLINT(clang-analyzer-deadcode.DeadStores): read where the next line throws
    Deliver(entry);
    return;
  } catch (...) {
    Platform::LetCancellationPass();
  }
  DropService(service, direct);
}

void LogManager::Deliver(const OxaLogEntry& entry) {
  if (!m_bHasHandlers.load()) {
    m_pDefaultService->WriteLogEntry(entry);
    return;
  }
  if (!IsDefaultInForce() && m_pDefaultService->HasRetained()) {
    m_pDefaultService->FlushRetained(*m_pLogService);
  }
  m_pLogService->WriteLogEntry(entry);
}

// A caller that sends directly may hold the lock itself, and so may others who wait for it: it only tries.
void LogManager::DropService(const IOxaLogService* failed, bool direct) {
  if (!direct) {
    m_serviceMutex.WaitWriterLock();
  } else if (!m_serviceMutex.TryWaitWriterLock()) {
    return;
  }
  // Somebody may have changed it meanwhile.
  if (m_pLogService == failed && !IsDefaultInForce()) GoBackToDefault();
  m_serviceMutex.WriterUnlock();
}

void LogManager::LogError(Error& error, const char* text, bool asXML) {
  const bool isCritical = error.GetSeverity() == AlertInfo::eCRITICAL;
  IfMemoryAllows([&] {
    WriteText(isCritical ? eLOG_ALARM : eLOG_ERROR,
              asXML ? AlertXml::AsText(error, text) : std::string(text) + ": " + error.what(),
              error.GetData(AlertInfo::sLOG_NAME), asXML ? sXML_LOG_FORM : sPLAIN_LOG_FORM);
  });
}

void LogManager::ErrorRaised(Error& error) { LogError(error, sRAISED, true); }

void LogManager::ErrorHandled(Error& error) { LogError(error, sHANDLED, false); }

void LogManager::UncaughtFatalError(Error& error, const std::string&) { LogError(error, sUNCAUGHT, true); }

void LogManager::WarningRaised(Warning& warning) {
  IfMemoryAllows([&] {
    const boost::shared_ptr<Logger> logger = GetLogger(warning.GetData(AlertInfo::sLOG_NAME));
    if (!logger || !logger->IsEnabledFor(eLOG_WARNING)) return;
    WriteText(eLOG_WARNING, AlertXml::AsText(warning, ""), logger->GetPath(), sXML_LOG_FORM);
  });
}

}  // namespace Oxa::Core
