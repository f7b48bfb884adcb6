#include "Log/LoggerTreeNode.h"

#include <Infrastructure/OxaCore/Assert.h>

#include <vector>

#include "Platform/Faults.h"

namespace Oxa::Core {

namespace {

constexpr unsigned int uALL_SEVERITIES = 65535;

std::string ChildPath(const std::string& parent, const std::string& name) {
  return parent.empty() ? name : parent + "." + name;
}

// Whether the service took it.
bool RegisteredWith(IOxaLogService& service, IOxaLogger* logger) {
  try {
    service.RegisterLogger(logger);
    return true;
  } catch (...) {
    Platform::LetCancellationPass();
    return false;
  }
}

}  // namespace

LoggerTreeNode::LoggerTreeNode(const std::string& path, LoggerTreeNode* parent)
    : Logger(path), m_pParent(parent) {}

LoggerTreeNode::~LoggerTreeNode() = default;

LoggerTreeNode* LoggerTreeNode::FindChild(const std::string& name) {
  const Children::iterator child = m_children.find(name);
  return child == m_children.end() ? nullptr : &child->second;
}

LoggerTreeNode& LoggerTreeNode::GetChild(const std::string& name) {
  return m_children.try_emplace(name, ChildPath(GetPath(), name), this).first->second;
}

void LoggerTreeNode::AppendChildNames(std::list<std::string>& names) const {
  for (const Children::value_type& child : m_children) names.push_back(child.first);
}

void LoggerTreeNode::AddLogger(IOxaLogger* p_pLogger) {
  if (!OXA_ASSERT(0 != p_pLogger)) return;
  m_loggers.insert(p_pLogger);
  p_pLogger->SetSeverityFilters(AncestorFilters(GetSeverityFilters()));
}

void LoggerTreeNode::RemoveLogger(IOxaLogger* logger) { m_loggers.erase(logger); }

bool LoggerTreeNode::ChangeSeverityFilters(unsigned int filters) {
  const unsigned int old = GetSeverityFilters();
  if (old == filters) return false;
  const unsigned int mask = AncestorFilters(uALL_SEVERITIES);
  SetSeverityFilters(filters);
  PropagateFilters(old & mask, filters & mask);
  return true;
}

/// What the ancestors leave of `filters`.
unsigned int LoggerTreeNode::AncestorFilters(unsigned int filters) const {
  for (const LoggerTreeNode* node = m_pParent; node != nullptr; node = node->m_pParent) {
    filters &= node->GetSeverityFilters();
  }
  return filters;
}

/// Overwrites the words from here down with what is in effect there. A bit that goes doesn't come back when the
/// ancestor gets it again: the words don't remember it.
void LoggerTreeNode::PropagateFilters(unsigned int oldEffective, unsigned int newEffective) {
  if (oldEffective == newEffective) return;
  SetSeverityFilters(newEffective);
  for (Children::value_type& child : m_children) {
    const unsigned int word = child.second.GetSeverityFilters();
    child.second.PropagateFilters(word & oldEffective, word & newEffective);
  }
}

void LoggerTreeNode::TransferLoggers(IOxaLogService& service) {
  TransferOwn(service);
  // A copy of the list: a service may ask for new paths while it is being told of the old ones.
  std::vector<LoggerTreeNode*> children;
  for (Children::value_type& child : m_children) children.push_back(&child.second);
  for (LoggerTreeNode* child : children) child->TransferLoggers(service);
}

void LoggerTreeNode::TransferOwn(IOxaLogService& service) {
  if (!service.Exists(GetPath())) service.SetSeverityFilters(GetPath(), GetSeverityFilters());
  const std::vector<IOxaLogger*> loggers(m_loggers.begin(), m_loggers.end());
  for (IOxaLogger* pLogger : loggers) {
    if (m_loggers.count(pLogger) == 0) continue;
    OXA_ASSERT(pLogger->GetPath() == GetPath());
    if (!RegisteredWith(service, pLogger)) m_loggers.erase(pLogger);
  }
}

}  // namespace Oxa::Core
