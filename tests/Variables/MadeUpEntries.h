// Debug data that is made up entry by entry, and the functions that read it: what no compiler here writes, or only damage
// does.
#ifndef OXACORE_TESTS_VARIABLES_MADEUPENTRIES_H
#define OXACORE_TESTS_VARIABLES_MADEUPENTRIES_H

#include <dwarf.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <map>
#include <memory>
#include <string>
#include <variant>
#include <vector>

#include "Platform/Linux/DwFunctions.h"

namespace OxaTest {

struct Entry;

using Bytes = std::vector<unsigned char>;
using Operations = std::vector<Dwarf_Op>;

/// What an attribute has: a number, a flag, a text, a block, an entry that it refers to, or an expression.
using Attribute = std::variant<std::uint64_t, bool, std::string, Bytes, const Entry*, Operations>;

inline Attribute Number(std::uint64_t number) { return number; }

inline Dwarf_Op Op(unsigned atom, std::uint64_t number = 0, std::uint64_t number2 = 0,
                   std::uint64_t offset = 0) {
  return {static_cast<std::uint8_t>(atom), number, number2, offset};
}

/// For operands that lead to something: an attribute of its own, or an entry.
template <class Target>
std::uint64_t To(const Target& target) {
  return reinterpret_cast<std::uintptr_t>(&target);
}

struct Entry {
  int m_iTag = 0;
  std::string m_sName;
  std::map<unsigned, Attribute> m_attributes;
  Entry* m_pParent = nullptr;
  std::vector<Entry*> m_children;

  Entry& With(unsigned name, Attribute value) {
    m_attributes[name] = std::move(value);
    return *this;
  }
  Entry& WithType(const Entry& type) { return With(DW_AT_type, &type); }

  Dwarf_Die Die() const {
    Dwarf_Die die{};
    die.addr = const_cast<Entry*>(this);
    return die;
  }
};

inline const Entry& EntryOf(const Dwarf_Die* die) { return *static_cast<const Entry*>(die->addr); }

/// The entries of one unit. They stand one behind the other, as in debug data.
class MadeUpUnit {
 public:
  MadeUpUnit() { m_entries.reserve(uMOST); }

  Entry& Unit() { return m_entries.empty() ? Make(DW_TAG_compile_unit, "") : m_entries.front(); }

  /// In the unit itself.
  Entry& Add(int tag, const std::string& name = "") { return AddTo(Unit(), tag, name); }

  Entry& AddTo(Entry& parent, int tag, const std::string& name = "") {
    Entry& entry = Make(tag, name);
    entry.m_pParent = &parent;
    parent.m_children.push_back(&entry);
    return entry;
  }

  Entry& AddBasic(const std::string& name, unsigned encoding, std::uint64_t size) {
    return Add(DW_TAG_base_type, name)
        .With(DW_AT_encoding, Number(encoding))
        .With(DW_AT_byte_size, Number(size));
  }

 private:
  static constexpr std::size_t uMOST = 64;

  Entry& Make(int tag, const std::string& name) {
    if (m_entries.size() == uMOST) std::abort();  // they would move
    Entry& entry = m_entries.emplace_back();
    entry.m_iTag = tag;
    entry.m_sName = name;
    return entry;
  }

  std::vector<Entry> m_entries;
};

namespace Detail {

inline const Attribute* Own(const Entry& entry, unsigned name) {
  const auto found = entry.m_attributes.find(name);
  return found != entry.m_attributes.end() ? &found->second : nullptr;
}

// Its own, or that of what it is an instance or the definition of.
inline const Attribute* Integrated(const Entry& entry, unsigned name) {
  if (const Attribute* const own = Own(entry, name)) return own;
  for (const unsigned link : {DW_AT_abstract_origin, DW_AT_specification})
    if (const Attribute* const origin = Own(entry, link))
      return Integrated(*std::get<const Entry*>(*origin), name);
  return nullptr;
}

inline Dwarf_Attribute* Give(const Attribute* value, unsigned name, Dwarf_Attribute* result) {
  if (value == nullptr) return nullptr;
  result->code = name;
  result->form = std::holds_alternative<Operations>(*value) ? DW_FORM_exprloc : DW_FORM_data8;
  result->valp = reinterpret_cast<unsigned char*>(const_cast<Attribute*>(value));
  return result;
}

// Null for one of another kind.
template <class Value>
const Value* ValueOf(const Dwarf_Attribute* attribute) {
  return std::get_if<Value>(reinterpret_cast<const Attribute*>(attribute->valp));
}

inline int GiveBlock(const Bytes* bytes, Dwarf_Block* block) {
  if (bytes == nullptr) return -1;
  *block = {bytes->size(), const_cast<unsigned char*>(bytes->data())};
  return 0;
}

inline int GiveNumber(const Dwarf_Attribute* attribute, std::uint64_t* result) {
  const auto* const number = ValueOf<std::uint64_t>(attribute);
  if (number != nullptr) *result = *number;
  return number != nullptr ? 0 : -1;
}

inline int GiveOperations(const Dwarf_Attribute* attribute, Dwarf_Op** operations, std::size_t* count) {
  const auto* const value = ValueOf<Operations>(attribute);
  if (value == nullptr) return -1;
  *operations = const_cast<Dwarf_Op*>(value->data());
  *count = value->size();
  return 0;
}

// What is behind it in its parent; null for the last one.
inline const Entry* Sibling(const Entry& entry) {
  const std::vector<Entry*>& all = entry.m_pParent->m_children;
  for (std::size_t at = 0; at + 1 < all.size(); ++at)
    if (all[at] == &entry) return all[at + 1];
  return nullptr;
}

inline int GiveDie(const Entry* entry, Dwarf_Die* result) {
  if (entry == nullptr) return 1;
  *result = entry->Die();
  return 0;
}

inline int GiveScopes(const Entry* entry, Dwarf_Die** scopes) {
  *scopes = static_cast<Dwarf_Die*>(std::calloc(64, sizeof(Dwarf_Die)));
  int count = 0;
  for (; entry != nullptr; entry = entry->m_pParent) (*scopes)[count++] = entry->Die();
  return count;
}

// Of its addresses there is one range.
inline std::ptrdiff_t GiveRange(const Entry& entry, std::ptrdiff_t offset, Dwarf_Addr& begin,
                                Dwarf_Addr& end) {
  const Attribute* const low = Own(entry, DW_AT_low_pc);
  const Attribute* const high = Own(entry, DW_AT_high_pc);
  if (offset != 0 || low == nullptr || high == nullptr) return 0;
  begin = std::get<std::uint64_t>(*low);
  end = std::get<std::uint64_t>(*high);
  return 1;
}

inline void FindEntryFunctions(Oxa::Core::Platform::Dw& dw) {
  dw.dwarf_child = [](Dwarf_Die* die, Dwarf_Die* result) {
    const Entry& entry = EntryOf(die);
    return GiveDie(entry.m_children.empty() ? nullptr : entry.m_children.front(), result);
  };
  dw.dwarf_siblingof = [](Dwarf_Die* die, Dwarf_Die* result) {
    return GiveDie(Sibling(EntryOf(die)), result);
  };
  dw.dwarf_tag = [](Dwarf_Die* die) { return EntryOf(die).m_iTag; };
  dw.dwarf_diename = [](Dwarf_Die* die) -> const char* {
    return EntryOf(die).m_sName.empty() ? nullptr : EntryOf(die).m_sName.c_str();
  };
  dw.dwarf_diecu = [](Dwarf_Die* die, Dwarf_Die* result, std::uint8_t*, std::uint8_t*) {
    const Entry* unit = &EntryOf(die);
    while (unit->m_pParent != nullptr) unit = unit->m_pParent;
    *result = unit->Die();
    return result;
  };
  dw.dwarf_getscopes_die = [](Dwarf_Die* die, Dwarf_Die** scopes) {
    return GiveScopes(&EntryOf(die), scopes);
  };
  dw.dwarf_dieoffset = [](Dwarf_Die* die) { return static_cast<Dwarf_Off>(To(EntryOf(die))); };
  dw.dwarf_offdie = [](Dwarf*, Dwarf_Off offset, Dwarf_Die* result) -> Dwarf_Die* {
    return GiveDie(reinterpret_cast<const Entry*>(offset), result) == 0 ? result : nullptr;
  };
  dw.dwarf_ranges = [](Dwarf_Die* die, std::ptrdiff_t offset, Dwarf_Addr*, Dwarf_Addr* begin,
                       Dwarf_Addr* end) { return GiveRange(EntryOf(die), offset, *begin, *end); };
  dw.dwarf_bytesize = [](Dwarf_Die* die) {
    const Attribute* const size = Own(EntryOf(die), DW_AT_byte_size);
    return size != nullptr ? static_cast<int>(std::get<std::uint64_t>(*size)) : -1;
  };
}

inline void FindAttributeFunctions(Oxa::Core::Platform::Dw& dw) {
  dw.dwarf_attr = [](Dwarf_Die* die, unsigned name, Dwarf_Attribute* result) {
    return Give(Own(EntryOf(die), name), name, result);
  };
  dw.dwarf_attr_integrate = [](Dwarf_Die* die, unsigned name, Dwarf_Attribute* result) {
    return Give(Integrated(EntryOf(die), name), name, result);
  };
  dw.dwarf_whatform = [](Dwarf_Attribute* attribute) { return attribute->form; };
  dw.dwarf_formudata = [](Dwarf_Attribute* attribute, Dwarf_Word* result) {
    return GiveNumber(attribute, result);
  };
  dw.dwarf_formaddr = [](Dwarf_Attribute* attribute, Dwarf_Addr* result) {
    return GiveNumber(attribute, result);
  };
  dw.dwarf_formflag = [](Dwarf_Attribute* attribute, bool* result) {
    const bool* const flag = ValueOf<bool>(attribute);
    if (flag != nullptr) *result = *flag;
    return flag != nullptr ? 0 : -1;
  };
  dw.dwarf_formstring = [](Dwarf_Attribute* attribute) {
    const auto* const text = ValueOf<std::string>(attribute);
    return text != nullptr ? text->c_str() : nullptr;
  };
  dw.dwarf_formblock = [](Dwarf_Attribute* attribute, Dwarf_Block* block) {
    return GiveBlock(ValueOf<Bytes>(attribute), block);
  };
  dw.dwarf_formref_die = [](Dwarf_Attribute* attribute, Dwarf_Die* result) -> Dwarf_Die* {
    const auto* const entry = ValueOf<const Entry*>(attribute);
    return entry != nullptr && GiveDie(*entry, result) == 0 ? result : nullptr;
  };
}

// The operands of operations are addresses: see To.
inline void FindLocationFunctions(Oxa::Core::Platform::Dw& dw) {
  dw.dwarf_getlocation = [](Dwarf_Attribute* attribute, Dwarf_Op** operations, std::size_t* count) {
    return GiveOperations(attribute, operations, count);
  };
  dw.dwarf_getlocation_addr = [](Dwarf_Attribute* attribute, Dwarf_Addr, Dwarf_Op** operations,
                                 std::size_t* count, std::size_t) {
    return GiveOperations(attribute, operations, count) == 0 ? 1 : 0;
  };
  dw.dwarf_getlocation_attr = [](Dwarf_Attribute*, const Dwarf_Op* operation, Dwarf_Attribute* result) {
    return Give(reinterpret_cast<const Attribute*>(operation->number), 0, result) != nullptr ? 0 : -1;
  };
  dw.dwarf_getlocation_implicit_value = [](Dwarf_Attribute*, const Dwarf_Op* operation, Dwarf_Block* block) {
    return GiveBlock(std::get_if<Bytes>(reinterpret_cast<const Attribute*>(operation->number)), block);
  };
  dw.dwarf_getlocation_die = [](Dwarf_Attribute*, const Dwarf_Op* operation, Dwarf_Die* result) {
    const bool only = operation->number2 == 0;  // of conversions it's the only operand
    return GiveDie(reinterpret_cast<const Entry*>(only ? operation->number : operation->number2), result);
  };
}

}  // namespace Detail

/// The functions that read what was made up.
inline Oxa::Core::Platform::Dw MadeUpFunctions() {
  Oxa::Core::Platform::Dw dw;
  Detail::FindEntryFunctions(dw);
  Detail::FindAttributeFunctions(dw);
  Detail::FindLocationFunctions(dw);
  return dw;
}

}  // namespace OxaTest

#endif
