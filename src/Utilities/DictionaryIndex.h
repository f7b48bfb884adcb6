// The atoms of a dictionary by the hashes of their texts, for look-ups that take no lock.
#ifndef OXACORE_UTILITIES_DICTIONARYINDEX_H
#define OXACORE_UTILITIES_DICTIONARYINDEX_H

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string_view>
#include <vector>

namespace Oxa::Core {

/// Words are short: eight bytes at a time, and the last ones with an overlap, so that no loop is left for a rest.
class WordHash {
 public:
  explicit WordHash(std::string_view word) : m_uHash(word.size() * uFACTOR) {
    const char* at = word.data();
    const char* const end = at + word.size();
    for (; end - at > 8; at += 8) Mix(Load<std::uint64_t>(at));
    Mix(word.size() < 8 ? LoadFewer(at, word.size()) : Load<std::uint64_t>(end - 8));
  }

  /// Every bit of it depends on every byte of the word, the last one too.
  std::uint64_t Get() const {
    const std::uint64_t folded = (m_uHash ^ m_uHash >> 32) * uFACTOR;
    return folded ^ folded >> 32;
  }

 private:
  static constexpr std::uint64_t uFACTOR = 0x9E3779B97F4A7C15;

  template <class Number>
  static std::uint64_t Load(const char* from) {
    Number number;
    std::memcpy(&number, from, sizeof number);
    return number;
  }

  static std::uint64_t LoadFewer(const char* at, std::size_t count) {
    if (count >= 4) return Load<std::uint32_t>(at) << 32 | Load<std::uint32_t>(at + count - 4);
    if (count >= 2) return Load<std::uint16_t>(at) << 16 | Load<std::uint16_t>(at + count - 2);
    return count == 0 ? 0 : Load<std::uint8_t>(at);
  }

  void Mix(std::uint64_t bytes) { m_uHash = ((m_uHash << 32 | m_uHash >> 32) ^ bytes) * uFACTOR; }

  std::uint64_t m_uHash;
};

/// Atoms are entered by one thread at a time and never leave; any thread may search meanwhile.
class DictionaryIndex {
 public:
  DictionaryIndex();

  /// The atom of the word with that hash; null if it isn't there, or was entered just now.
  const char* Find(const char* word, std::uint64_t hash) const noexcept {
    const Places& places = *m_pPlaces.load(std::memory_order_acquire);
    const std::size_t last = places.size() - 1;
    for (std::size_t at = hash & last;; at = (at + 1) & last) {
      const char* const atom = places[at].m_pAtom.load(std::memory_order_acquire);
      if (atom == nullptr) return nullptr;
      if (places[at].m_uHash == hash && std::strcmp(atom, word) == 0) return atom;
    }
  }

  /// Makes sure that there is room to enter one more. Throws std::bad_alloc, with nothing changed.
  void MakeRoom();

  /// Enters an atom that isn't there, after MakeRoom.
  void Enter(const char* atom, std::uint64_t hash) noexcept;

 private:
  /// Free as long as m_pAtom is null. Written once, m_pAtom last, so that whoever sees that sees both.
  struct Place {
    std::atomic<const char*> m_pAtom{nullptr};
    std::uint64_t m_uHash = 0;
  };
  using Places = std::vector<Place>;  ///< a power of two of them, at least every other one free

  static void Enter(Places& places, const char* atom, std::uint64_t hash) noexcept;
  void Publish(std::unique_ptr<Places> places);

  std::atomic<const Places*> m_pPlaces{nullptr};  ///< the last of m_tables
  std::vector<std::unique_ptr<Places>> m_tables;  ///< the former ones too: somebody may be searching them
  std::size_t m_uAtoms = 0;
};

}  // namespace Oxa::Core

#endif
