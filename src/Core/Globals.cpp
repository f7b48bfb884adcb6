#include <Infrastructure/OxaCore/Globals.h>

#include <algorithm>

#include "Platform/Symbols.h"

namespace Oxa::Core {

namespace {

constexpr std::size_t uBUCKETS = 8;

}  // namespace

GlobalEntryBase::GlobalEntryBase(const std::string& key) : m_sKey(key) {}

GlobalEntryBase::~GlobalEntryBase() = default;

std::string GlobalEntryBase::MakeKey(const std::string& name, const std::type_info& type) {
  return name + Platform::DecoratedName(type);
}

const std::string& GlobalEntryBase::GetKey() const { return m_sKey; }

ManagedGlobals::ManagedGlobals() : m_entryMap(uBUCKETS) {}

ManagedGlobals::~ManagedGlobals() { DestroyAll(); }

void ManagedGlobals::Insert(const Entry& entry) {
  const Oxa::Core::Lock lock(m_mutex);
  GlobalEntryBase*& slot = m_entryMap[entry->GetKey()];
  m_entries.push_back(entry);
  slot = entry.get();
}

GlobalEntryBase* ManagedGlobals::Find(const std::string& key) const {
  const auto found = m_entryMap.find(key);
  return found == m_entryMap.end() ? nullptr : found->second;
}

ManagedGlobals::Entry ManagedGlobals::Take(const std::string& key) {
  const Oxa::Core::Lock lock(m_mutex);
  const auto found =
      std::find_if(m_entries.begin(), m_entries.end(),
                   [entry = Find(key)](const Entry& candidate) { return candidate.get() == entry; });
  if (found == m_entries.end()) return {};
  Entry entry = *found;
  m_entries.erase(found);
  m_entryMap.erase(key);
  return entry;
}

ManagedGlobals::Entry ManagedGlobals::TakeNewest() {
  const Oxa::Core::Lock lock(m_mutex);
  if (m_entries.empty()) return {};
  Entry entry = m_entries.back();
  m_entries.pop_back();
  m_entryMap.erase(entry->GetKey());
  return entry;
}

void ManagedGlobals::DestroyAll() {
  while (TakeNewest()) {
    // The taken entry has died here, with the lock released: its destructor may look up older globals.
  }
}

}  // namespace Oxa::Core
