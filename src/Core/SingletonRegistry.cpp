#include <Infrastructure/OxaCore/Singleton.h>

#include <algorithm>

namespace Oxa::Core {

ISingletonRegistryEntry::~ISingletonRegistryEntry() = default;

void SingletonRegistry::Register(ISingletonRegistryEntry* entry) {
  const Oxa::Core::Lock lock(m_mutex);
  if (std::find(m_registry.begin(), m_registry.end(), entry) == m_registry.end()) m_registry.push_back(entry);
}

void SingletonRegistry::Unregister(const ISingletonRegistryEntry* entry) {
  const Oxa::Core::Lock lock(m_mutex);
  const auto found = std::find(m_registry.begin(), m_registry.end(), entry);
  if (found != m_registry.end()) m_registry.erase(found);
}

void SingletonRegistry::DestroyAllSingletons() {
  std::list<ISingletonRegistryEntry*> entries;
  {
    const Oxa::Core::Lock lock(m_mutex);
    entries.swap(m_registry);
  }
  for (ISingletonRegistryEntry* const entry : entries) entry->Destroy();
}

}  // namespace Oxa::Core
