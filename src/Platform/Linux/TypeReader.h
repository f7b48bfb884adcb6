// Types by their entries in the debug data; each is read once.
#ifndef OXACORE_PLATFORM_LINUX_TYPEREADER_H
#define OXACORE_PLATFORM_LINUX_TYPEREADER_H

#include <memory>
#include <unordered_map>
#include <vector>

#include "Platform/Linux/DwFunctions.h"
#include "Platform/Linux/TypeNames.h"
#include "Platform/Variables.h"

namespace Oxa::Core::Platform {

/// Knows types by their entries' addresses, so it goes no later than the debug data that they were read from. One
/// thread at a time. Everything may throw std::bad_alloc; a type that was begun with then stays one that can't be told.
class TypeReader {
 public:
  /// The functions have to stand as long as the reader; of those for entries and attributes all are there.
  explicit TypeReader(const Dw& dw) noexcept : m_dw(dw) {}
  TypeReader(const TypeReader&) = delete;
  TypeReader& operator=(const TypeReader&) = delete;

  /// The type that the entry `holder` has, behind the names and qualifications that lead to it, and void where it has
  /// none; null if it can't be told: of a kind that no language here has, of no size, or where damaged data leads in
  /// circles. It stands as long as the reader. Members, parameters and enumerators are read by its `m_complete`.
  const TypeFacts* TypeOf(Dwarf_Die& holder);

 private:
  struct MemberPlace {
    const Dw* m_pDw;
    Dwarf_Attribute m_location;
  };

  struct Entry : TypeFacts {
    TypeReader* m_pReader = nullptr;
    Dwarf_Die m_die{};
    std::vector<std::unique_ptr<MemberPlace>> m_places;  // of members without a fixed offset
    std::vector<std::unique_ptr<Entry>> m_inner;         // the inner dimensions of an array
  };

  // A type behind the names and qualifications that lead to it.
  struct Peeled {
    Dwarf_Die m_die{};
    const char* m_pAlias = nullptr;  // the last name
    bool m_bResult = false;          // a name on the way was the one of the system's results
    bool m_bVoid = false;
  };

  bool Peel(Dwarf_Die& holder, Peeled& peeled);
  bool Follow(Dwarf_Die& die, unsigned attribute, Dwarf_Die& to) const;
  bool HasFlag(Dwarf_Die& die, unsigned attribute) const;
  bool NumberAt(Dwarf_Die& die, unsigned attribute, std::uint64_t& number) const;
  const TypeFacts* Read(const Peeled& peeled);
  bool Fill(Entry& entry, const Peeled& peeled);
  bool FillBasic(Entry& entry, bool result);
  bool FillPointing(Entry& entry, ETypeTag tag);
  bool FillArray(Entry& entry);
  bool FillEnum(Entry& entry, const char* alias);
  bool FillClass(Entry& entry, const char* alias);
  static void FillString(Entry& entry, unsigned character);
  std::int64_t CountOf(Dwarf_Die& dimension) const;
  std::vector<std::int64_t> CountsOf(Dwarf_Die& array) const;
  const TypeFacts* Void();

  static void Complete(TypeFacts& type);
  void AddMembers(Entry& entry);
  void AddMember(Entry& entry, Dwarf_Die& die, bool base);
  void PlaceMember(Entry& entry, Dwarf_Die& die, MemberFacts& member);
  void PlaceBits(Dwarf_Die& die, MemberFacts& member) const;
  void AddParameters(Entry& entry);
  void AddEnumerators(Entry& entry);
  template <class Action>
  void ForChildren(Dwarf_Die& parent, const Action& action) const;

  const Dw& m_dw;
  TypeNames m_names;
  std::unordered_map<const void*, std::unique_ptr<Entry>> m_types;  // null: can't be told
  std::unique_ptr<Entry> m_spVoid;
};

}  // namespace Oxa::Core::Platform

#endif
