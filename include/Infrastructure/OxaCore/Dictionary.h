// Atoms: one pointer for each text, the same for equal texts, so that texts compare by their pointers.
//
// A word ends at its first null byte, in a std::string too. Its other bytes can be anything, and the empty word is
// an atom as well. With its terminator it has room in a page of 131072 bytes: a longer one raises InvalidParameter
// ("word"), and where that raise returns its atom is null.
//
// Thread safety: all operations may be called from any thread. A look-up of a known word takes no lock and waits for
// nobody. Locks: the singleton's while the dictionary is made, the dictionary's own for a new word; no other is taken
// while that is held.
// Ownership: an atom belongs to the dictionary. It is valid until Oxa::Core::Shutdown, which destroys the dictionary
// and must not be called while another thread uses it. Whoever asks after that gets a new one, with other pointers;
// also static objects of hosts that die after the library's.
// Failures: that one error, those of locks, and std::bad_alloc, which leaves the dictionary as it was.
//
//   static const char* const s_pVoltage = GetOxaAtom("Voltage");
//   if (GetOxaAtom(name) == s_pVoltage) ...
#ifndef INFRASTRUCTURE_OXACORE_DICTIONARY_H
#define INFRASTRUCTURE_OXACORE_DICTIONARY_H

#include <Infrastructure/OxaCore/Export.h>
#include <Infrastructure/OxaCore/Lock.h>
#include <Infrastructure/OxaCore/ReadersWriterMutex.h>
#include <Infrastructure/OxaCore/Singleton.h>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace Oxa::Core {

class Dictionary;
class DictionaryIndex;

// The library and all its hosts share one: these are defined in the library only. Others' singletons die with the
// static objects; this one serves those that are older than the library as well.
template <>
OXACORE_API Dictionary* Singleton<Dictionary>::Instance();
/// Ends the dictionary of the process.
template <>
OXACORE_API void Singleton<Dictionary>::Destroy();
template <>
OXACORE_API std::atomic<bool> Singleton<Dictionary>::m_bInstantiated;

/// Turns texts into atoms, and paths of words into lists of atoms and back. Atoms are never removed.
class OXACORE_API Dictionary : public Singleton<Dictionary> {
 public:
  ~Dictionary() override;

  /// The atom of `word`, made if it is new. `word` must not be null.
  const char* Lookup(const char* word);
  const char* Lookup(const std::string& word) { return Lookup(word.c_str()); }

  /// The words of `path`, which reads sep, word, sep, word..., as atoms. An empty path, one that doesn't begin with
  /// `sep` or ends with it, and two `sep` in a row are failed assertions. What stands behind a `sep` up to the next one
  /// or the end is a word all the same, also an empty one; what stands ahead of the first `sep` is none. `atoms` is
  /// replaced, or untouched where an error is raised.
  void Convert(std::vector<const char*>& atoms, const char* path, char sep);
  void Convert(std::vector<const char*>& atoms, const std::string& path, char sep) {
    Convert(atoms, path.c_str(), sep);
  }

  /// The path of the atoms: `sep` ahead of each one's text. A null pointer counts as the empty word. `path` is
  /// replaced.
  void Convert(std::string& path, const std::vector<const char*>& atoms, char sep);

 private:
  friend class Singleton<Dictionary>;

  /// Storage for words. Only the last page takes new ones.
  struct Page {
    std::unique_ptr<char[]> m_first;
    char* m_next;          ///< where the next word goes
    std::int32_t m_iFree;  ///< bytes from there on
  };

  /// Atoms in the order of strcmp.
  struct Block {
    std::size_t BinarySearchAtoms(const char* word) const;
    const char* Find(const char* word) const;
    void Insert(const char* atom);

    std::vector<const char*> m_atoms;
  };

  Dictionary();

  std::size_t BlockOf(const char* word) const;
  const char* AddAtom(const char* word, std::uint64_t hash);
  void InsertAtom(const char* atom);
  const char* CreateAtom(const char* word);
  Page& GetPage(int size);

  ReadersWriterMutex m_rwMutex;  ///< guards m_pages, m_blocks, and what is entered into m_spIndex
  std::vector<Page> m_pages;
  /// All atoms, sorted, one for each word; a single sequence would be slow to insert into.
  std::vector<Block> m_blocks;
  std::unique_ptr<DictionaryIndex> m_spIndex;  ///< the shortcut to them, which needs no lock
};

/// The atom of `str`: Dictionary::Instance()->Lookup(str).
inline const char* GetOxaAtom(const char* str) { return Dictionary::Instance()->Lookup(str); }
inline const char* GetOxaAtom(const std::string& str) { return Dictionary::Instance()->Lookup(str); }

}  // namespace Oxa::Core

#endif
