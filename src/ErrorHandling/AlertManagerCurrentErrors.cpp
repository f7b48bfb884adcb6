#include <Infrastructure/OxaCore/AlertManager.h>

namespace Oxa::Core {

CurrentErrors::CurrentErrors() = default;

CurrentErrors::~CurrentErrors() = default;

void CurrentErrors::Store(unsigned long threadId, const Error& error) {
  const Lock lock(m_mutex);
  auto entry = m_errors.find(threadId);
  if (entry == m_errors.end()) entry = m_errors.emplace(threadId, AlertInfo::eERROR).first;
  entry->second.Copy(error, false);
}

bool CurrentErrors::Find(unsigned long threadId, Error& found) const {
  const Lock lock(m_mutex);
  auto entry = m_errors.find(threadId);
  if (entry == m_errors.end()) entry = m_errors.begin();
  if (entry == m_errors.end()) return false;
  found.Copy(entry->second, false);
  return true;
}

}  // namespace Oxa::Core
