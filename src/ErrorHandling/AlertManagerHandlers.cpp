// In-place handling: an error is offered to the handlers of its class and of the classes above it.
#include <Infrastructure/OxaCore/AlertManager.h>
#include <Infrastructure/OxaCore/StringTools.h>

#include <algorithm>
#include <vector>

namespace Oxa::Core {

namespace {

const char* const sLINK = "=>";

}  // namespace

void AlertManager::AddErrorHandler(const std::string& className, boost::shared_ptr<ErrorHandler> handler) {
  if (!handler) return;
  const Lock lock(m_errorsMutex);
  Handlers& handlers = m_errorRecords[className].m_handlers;
  if (std::find(handlers.begin(), handlers.end(), handler) == handlers.end()) handlers.push_back(handler);
}

void AlertManager::RemoveErrorHandler(const std::string& className, boost::shared_ptr<ErrorHandler> handler) {
  const Lock lock(m_errorsMutex);
  m_errorRecords[className].m_handlers.remove(handler);
}

bool AlertManager::UseErrorHandler(Error& error) {
  std::vector<std::string> classes;
  StringTools::Split(error.GetData(Error::sINHERITANCE), sLINK, classes);
  const Lock lock(m_errorsMutex);
  Handlers declined;
  bool handled = false;
  for (auto name = classes.rbegin(); !handled && name != classes.rend(); ++name) {
    const auto record = m_errorRecords.find(*name);
    if (record != m_errorRecords.end()) handled = AskHandlers(record->second.m_handlers, error, declined);
  }
  if (handled) {
    for (const auto& handler : declined) handler->HandledByLatter(error);
  }
  return handled;
}

// The list is a copy: a handler may add and remove handlers.
bool AlertManager::AskHandlers(Handlers handlers, Error& error, Handlers& declined) {
  bool handled = false;
  for (const auto& handler : handlers) {
    if (!handler) continue;
    if (handled) {
      handler->HandledByPrior(error);
    } else {
      const Lock lock(handler->m_mutex);
      handled = handler->Handle(error);
      if (!handled) declined.push_back(handler);
    }
  }
  return handled;
}

}  // namespace Oxa::Core
