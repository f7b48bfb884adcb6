#include "Utilities/DictionaryLife.h"

#include <Infrastructure/OxaCore/Dictionary.h>

#include <atomic>
#include <memory>

namespace Oxa::Core {

namespace {

// Without a destructor, unlike the pointer of other singletons: static objects of hosts may be older than the
// library, and ask for atoms when they die.
std::atomic<Dictionary*> s_pDictionary{nullptr};

}  // namespace

template <>
Dictionary* Singleton<Dictionary>::Instance() {
  if (Dictionary* const dictionary = s_pDictionary.load(std::memory_order_acquire)) return dictionary;
  const Oxa::Core::Lock lock(g_dictionaryMutex.Get());
  if (s_pDictionary.load(std::memory_order_relaxed) == nullptr) {
    s_pDictionary.store(new Dictionary, std::memory_order_release);
    m_bInstantiated.store(true, std::memory_order_relaxed);
  }
  return s_pDictionary.load(std::memory_order_relaxed);
}

template <>
void Singleton<Dictionary>::Destroy() {
  const Oxa::Core::Lock lock(g_dictionaryMutex.Get());
  ReleaseDictionary();
}

void ReleaseDictionary() { const std::unique_ptr<Dictionary> dying(s_pDictionary.exchange(nullptr)); }

}  // namespace Oxa::Core
