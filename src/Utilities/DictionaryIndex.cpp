#include "Utilities/DictionaryIndex.h"

#include <utility>

namespace Oxa::Core {

namespace {

constexpr std::size_t uFEWEST_PLACES = 256;

}  // namespace

DictionaryIndex::DictionaryIndex() { Publish(std::make_unique<Places>(uFEWEST_PLACES)); }

void DictionaryIndex::MakeRoom() {
  const Places& full = *m_tables.back();
  if (m_uAtoms < full.size() / 2) return;
  auto places = std::make_unique<Places>(full.size() * 2);
  for (const Place& place : full) {
    const char* const atom = place.m_pAtom.load(std::memory_order_relaxed);
    if (atom != nullptr) Enter(*places, atom, place.m_uHash);
  }
  Publish(std::move(places));
}

void DictionaryIndex::Enter(const char* atom, std::uint64_t hash) noexcept {
  Enter(*m_tables.back(), atom, hash);
  ++m_uAtoms;
}

void DictionaryIndex::Enter(Places& places, const char* atom, std::uint64_t hash) noexcept {
  const std::size_t last = places.size() - 1;
  std::size_t at = hash & last;
  while (places[at].m_pAtom.load(std::memory_order_relaxed) != nullptr) at = (at + 1) & last;
  places[at].m_uHash = hash;
  places[at].m_pAtom.store(atom, std::memory_order_release);
}

void DictionaryIndex::Publish(std::unique_ptr<Places> places) {
  m_tables.push_back(std::move(places));
  m_pPlaces.store(m_tables.back().get(), std::memory_order_release);
}

}  // namespace Oxa::Core
