// The tree of loggers, and the operations of the default log service that work on it.
//
// Each step of an operation locks the tree for itself. Nodes never leave it, and so nobody has to hold the lock while
// a path is refused or the handlers hear of a new one: whoever listens may ask for loggers, and so may others who
// hold the locks of loggers already and wait for the tree.
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

// There is no node for such a path, in case the raise returns.
LoggerTreeNode* Refuse(const std::string& path) {
  OXA_RAISE_ERROR(sLOG_NAME, InvalidLogPath(path));
  return nullptr;
}

}  // namespace

void DefaultLogService::RegisterLogger(IOxaLogger* logger) {
  if (logger == nullptr) return;
  try {
    LoggerTreeNode* const node = GetLoggerNode(logger->GetPath());
    if (node == nullptr) return;
    const WriterLock writing(m_treeMutex);
    node->AddLogger(logger);
  }
  OXA_FORWARD_ERRORS_AS(sLOG_NAME)
}

void DefaultLogService::UnregisterLogger(IOxaLogger* logger) {
  if (logger == nullptr) return;
  try {
    LoggerTreeNode* const node = GetLoggerNode(logger->GetPath());
    if (node == nullptr) return;
    const WriterLock writing(m_treeMutex);
    node->RemoveLogger(logger);
  }
  OXA_FORWARD_ERRORS_AS(sLOG_NAME)
}

void DefaultLogService::EnumLoggers(const std::string& p_sRootPath, std::list<std::string>& names) {
  try {
    names.clear();
    const LoggerTreeNode* const node = FindLoggerNode(p_sRootPath);
    if (node == nullptr) return;
    const ReaderLock reading(m_treeMutex);
    node->AppendChildNames(names);
  }
  OXA_FORWARD_ERRORS_WITH_INFO_AS(sLOG_NAME, OXA_VARIABLE(p_sRootPath))
}

void DefaultLogService::SetSeverityFilters(const std::string& p_sPath, unsigned int filters) {
  try {
    LoggerTreeNode* const node = GetLoggerNode(p_sPath);
    if (node != nullptr && ChangeSeverityFilters(*node, filters)) NotifyHandlers();
  }
  OXA_FORWARD_ERRORS_WITH_INFO_AS(sLOG_NAME, OXA_VARIABLE(p_sPath))
}

bool DefaultLogService::ChangeSeverityFilters(LoggerTreeNode& node, unsigned int filters) {
  const WriterLock writing(m_treeMutex);
  return node.ChangeSeverityFilters(filters);
}

unsigned int DefaultLogService::GetSeverityFilters(const std::string& p_sPath) {
  try {
    if (const LoggerTreeNode* const node = GetLoggerNode(p_sPath)) return node->GetSeverityFilters();
  }
  OXA_FORWARD_ERRORS_WITH_INFO_AS(sLOG_NAME, OXA_VARIABLE(p_sPath))
  return uDEFAULT_LOG_FILTERS;
}

bool DefaultLogService::Exists(const std::string& path) { return FindLoggerNode(path) != nullptr; }

/// The node of `path`, or null.
LoggerTreeNode* DefaultLogService::FindLoggerNode(const std::string& path) {
  LoggerTreeNode* node = &m_root;
  ReaderLock reading(m_treeMutex);
  for (const std::string& component : Components(path)) {
    if (component.empty()) {
      reading.Release();
      return Refuse(path);
    }
    node = node->FindChild(component);
    if (node == nullptr) return nullptr;
  }
  return node;
}

/// The node of `path`, made where it is missing; the handlers hear of that. What was made ahead of a component
/// that is refused stays, and nobody hears of it.
LoggerTreeNode* DefaultLogService::GetLoggerNode(const std::string& path) {
  LoggerTreeNode* node = &m_root;
  bool made = false;
  WriterLock writing(m_treeMutex);
  for (const std::string& component : Components(path)) {
    if (component.empty()) {
      writing.Release();
      return Refuse(path);
    }
    LoggerTreeNode* const child = node->FindChild(component);
    made = made || child == nullptr;
    node = child != nullptr ? child : &node->GetChild(component);
  }
  writing.Release();
  if (made) NotifyHandlers();
  return node;
}

}  // namespace Oxa::Core
