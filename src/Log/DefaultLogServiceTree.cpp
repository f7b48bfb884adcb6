// The tree of loggers, and the operations of the default log service that work on it.
#include "Log/DefaultLogService.h"

#include <Infrastructure/OxaCore/StringTools.h>

namespace Oxa::Core {

namespace {

const char* const sLOG_NAME = "Oxa.Core.DefaultLogService";
const char* const sSEPARATOR = ".";

// The names on the way from the root; one dot in front is no matter.
std::vector<std::string> Components(const std::string& path) {
  std::vector<std::string> components;
  StringTools::Split(path, sSEPARATOR, components);
  if (components.front().empty()) components.erase(components.begin());
  return components;
}

bool CheckComponent(const std::string& component, const std::string& path) {
  if (!component.empty()) return true;
  OXA_RAISE_ERROR(sLOG_NAME, InvalidLogPath(path));
  return false;
}

}  // namespace

void DefaultLogService::RegisterLogger(IOxaLogger* logger) {
  if (logger == nullptr) return;
  try {
    const WriterLock writing(m_treeMutex);
    GetLoggerNode(logger->GetPath()).AddLogger(logger);
  }
  OXA_FORWARD_ERRORS_AS(sLOG_NAME)
}

void DefaultLogService::UnregisterLogger(IOxaLogger* logger) {
  if (logger == nullptr) return;
  try {
    const WriterLock writing(m_treeMutex);
    GetLoggerNode(logger->GetPath()).RemoveLogger(logger);
  }
  OXA_FORWARD_ERRORS_AS(sLOG_NAME)
}

void DefaultLogService::EnumLoggers(const std::string& p_sRootPath, std::list<std::string>& names) {
  try {
    names.clear();
    const ReaderLock reading(m_treeMutex);
    const LoggerTreeNode* const node = FindLoggerNode(p_sRootPath);
    if (node != nullptr) node->AppendChildNames(names);
  }
  OXA_FORWARD_ERRORS_WITH_INFO_AS(sLOG_NAME, OXA_VARIABLE(p_sRootPath))
}

void DefaultLogService::SetSeverityFilters(const std::string& p_sPath, unsigned int filters) {
  try {
    if (ChangeSeverityFilters(p_sPath, filters)) NotifyHandlers();
  }
  OXA_FORWARD_ERRORS_WITH_INFO_AS(sLOG_NAME, OXA_VARIABLE(p_sPath))
}

bool DefaultLogService::ChangeSeverityFilters(const std::string& path, unsigned int filters) {
  const WriterLock writing(m_treeMutex);
  return GetLoggerNode(path).ChangeSeverityFilters(filters);
}

unsigned int DefaultLogService::GetSeverityFilters(const std::string& p_sPath) {
  try {
    const WriterLock writing(m_treeMutex);
    return GetLoggerNode(p_sPath).GetSeverityFilters();
  }
  OXA_FORWARD_ERRORS_WITH_INFO_AS(sLOG_NAME, OXA_VARIABLE(p_sPath))
  return uDEFAULT_LOG_FILTERS;
}

bool DefaultLogService::Exists(const std::string& path) {
  const ReaderLock reading(m_treeMutex);
  return FindLoggerNode(path) != nullptr;
}

/// The node of `path`, or null. With the tree's lock held.
LoggerTreeNode* DefaultLogService::FindLoggerNode(const std::string& path) {
  LoggerTreeNode* node = &m_root;
  for (const std::string& component : Components(path)) {
    if (!CheckComponent(component, path)) return nullptr;
    node = node->FindChild(component);
    if (node == nullptr) return nullptr;
  }
  return node;
}

/// The node of `path`, made where it is missing; the handlers hear of that. What was made ahead of a component
/// that is refused stays. With the tree's lock held for writing.
LoggerTreeNode& DefaultLogService::GetLoggerNode(const std::string& path) {
  LoggerTreeNode* node = &m_root;
  bool made = false;
  for (const std::string& component : Components(path)) {
    if (!CheckComponent(component, path)) return *node;
    LoggerTreeNode* const child = node->FindChild(component);
    made = made || child == nullptr;
    node = child != nullptr ? child : &node->GetChild(component);
  }
  if (made) NotifyHandlers();
  return *node;
}

}  // namespace Oxa::Core
