// The handlers of the default log service, and the way of an entry to them.
#include "Log/DefaultLogService.h"

#include <algorithm>
#include <iterator>

#include "Core/LibraryState.h"
#include "Log/LogEntryText.h"

#include "Platform/Faults.h"

namespace Oxa::Core {

namespace {

const char* const sLOG_NAME = "Oxa.Core.DefaultLogService";
const char* const sPLAIN = "plain";
const char* const sTRANSFERRING = "Transfering log handler from default to installed log service.";

// Whether the call returned.
template <class Call>
bool Returns(const Call& call) {
  try {
    call();
    return true;
  } catch (...) {
    Platform::LetCancellationPass();
    return false;
  }
}

OxaLogEntry TransferEntry() {
  OxaLogEntry entry;
  entry.m_eSeverity = eLOG_INFORMATIONAL;
  entry.m_sMessage = sTRANSFERRING;
  entry.m_sLoggerPath = sLOG_NAME;
  entry.m_sForm = sPLAIN;
  return entry;
}

}  // namespace

void DefaultLogService::RegisterHandler(IOxaLogHandler* handler) {
  if (handler == nullptr) return;
  const WriterLock writing(m_handlerMutex);
  m_handlers.insert(handler);
}

void DefaultLogService::UnregisterHandler(IOxaLogHandler* handler) {
  if (handler == nullptr) return;
  Drop({handler});
  m_calls.AwaitOthers(handler);
}

bool DefaultLogService::IsRegistered(IOxaLogHandler* handler) {
  const ReaderLock reading(m_handlerMutex);
  return m_handlers.count(handler) != 0;
}

/// Takes handlers out without waiting for calls to them.
void DefaultLogService::Drop(const Handlers& handlers) {
  if (handlers.empty()) return;
  const WriterLock writing(m_handlerMutex);
  for (IOxaLogHandler* const handler : handlers) m_handlers.erase(handler);
}

int DefaultLogService::GetNumHandlers() {
  const ReaderLock reading(m_handlerMutex);
  return m_handlers.empty() ? 1 : static_cast<int>(m_handlers.size());
}

std::vector<IOxaLogHandler*> DefaultLogService::GetHandlers() {
  const ReaderLock reading(m_handlerMutex);
  return Handlers(m_handlers.begin(), m_handlers.end());
}

void DefaultLogService::WriteLogEntry(const OxaLogEntry& entry) {
  if (IsLibraryUnloading()) return;
  Handlers told;
  for (Handlers next = NewHandlers(told, entry); !next.empty(); next = NewHandlers(told, entry)) {
    if (CallHandlers(next, [&entry](IOxaLogHandler& handler) { handler.HandleLogEntry(entry); }) > 0) return;
    told.insert(told.end(), next.begin(), next.end());
  }
  const BriefLogEntryText text(entry);
  const std::size_t end = text.Get().size();
  WriteToFile(LogRun(text.Get(), &end, 1));
}

/// The handlers that haven't been told yet. Where there is none the entry is retained, under the same lock:
/// whoever registers later finds it there.
DefaultLogService::Handlers DefaultLogService::NewHandlers(const Handlers& told, const OxaLogEntry& entry) {
  Handlers handlers;
  const ReaderLock reading(m_handlerMutex);
  std::copy_if(
      m_handlers.begin(), m_handlers.end(), std::back_inserter(handlers),
      [&](IOxaLogHandler* handler) { return std::find(told.begin(), told.end(), handler) == told.end(); });
  if (handlers.empty()) {
    const Lock lock(m_retainedMutex);
    Retain(entry);
  }
  return handlers;
}

/// Whoever makes a logger comes here with the locks of loggers held. A handler that takes one out must not wait then
/// for a thread that asks for a logger in there.
void DefaultLogService::NotifyHandlers() {
  const HandlerStay waitsForNobody(m_calls, nullptr);
  CallHandlers(GetHandlers(), [](IOxaLogHandler& handler) { handler.OnLoggersChanged(); });
}

/// Makes the call for each of the handlers that is still there when its turn comes; one that isn't may be gone
/// altogether. Those that throw are dropped behind the walk. Gives how many calls returned.
template <class Call>
std::size_t DefaultLogService::CallHandlers(const Handlers& handlers, const Call& call) {
  Handlers failed;
  std::size_t returned = 0;
  for (IOxaLogHandler* const handler : handlers) {
    switch (CallHandler(handler, call)) {
      case ECallResult::eRETURNED:
        ++returned;
        break;
      case ECallResult::eTHREW:
        failed.push_back(handler);
        break;
      case ECallResult::eGONE:
        break;
    }
  }
  Drop(failed);
  return returned;
}

template <class Call>
DefaultLogService::ECallResult DefaultLogService::CallHandler(IOxaLogHandler* handler, const Call& call) {
  ReaderLock reading(m_handlerMutex);
  if (m_handlers.count(handler) == 0) return ECallResult::eGONE;
  const HandlerStay stay(m_calls, handler);
  reading.Release();
  return Returns([&] { call(*handler); }) ? ECallResult::eRETURNED : ECallResult::eTHREW;
}

void DefaultLogService::TransferTo(IOxaLogService& service) {
  {
    const WriterLock writing(m_treeMutex);
    m_root.TransferLoggers(service);
  }
  Handlers failed;
  TransferHandlers(service, failed);
  CloseLogFiles();
  Drop(failed);
}

/// Tells the handlers, and hands over those that return; one may take itself out while it is told.
void DefaultLogService::TransferHandlers(IOxaLogService& service, Handlers& failed) {
  const OxaLogEntry entry = TransferEntry();
  const auto tell = [&entry](IOxaLogHandler& handler) { handler.HandleLogEntry(entry); };
  for (IOxaLogHandler* const handler : GetHandlers()) {
    const ECallResult result = CallHandler(handler, tell);
    if (result == ECallResult::eRETURNED && IsRegistered(handler)) service.RegisterHandler(handler);
    if (result == ECallResult::eTHREW) failed.push_back(handler);
  }
}

}  // namespace Oxa::Core
