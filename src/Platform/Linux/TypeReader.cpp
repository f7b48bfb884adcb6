#include "Platform/Linux/TypeReader.h"

#include <cstring>
#include <utility>

#include "Platform/Linux/TypeBasics.h"
#include "Platform/Linux/TypeChildren.h"

namespace Oxa::Core::Platform {

namespace {

constexpr int iMOST_NAMES = 64;  // that lead to a type: damaged ones lead to themselves
constexpr std::uint64_t uPOINTER = sizeof(void*);
const char* const sRESULT = "HRESULT";

bool IsQualification(int tag) noexcept {
  switch (tag) {
    case DW_TAG_const_type:
    case DW_TAG_volatile_type:
    case DW_TAG_restrict_type:
    case DW_TAG_atomic_type:
    case DW_TAG_packed_type:
    case DW_TAG_immutable_type:
    case DW_TAG_typedef:
      return true;
    default:
      return false;
  }
}

struct Character {
  const char* m_pName;
  unsigned m_uSize;
};

constexpr Character s_characters[] = {
    {"char", 1}, {"wchar_t", sizeof(wchar_t)}, {"char8_t", 1}, {"char16_t", 2}, {"char32_t", 4}};

// With traits or allocators of other kinds a string may be built otherwise.
bool IsStringOf(const std::string& name, const std::string& character) {
  return name == "std::basic_string<" + character + ",std::char_traits<" + character + ">,std::allocator<" +
                     character + "> >";
}

const Character* CharacterOf(const std::string& name) {
  if (name.compare(0, 17, "std::basic_string") != 0) return nullptr;
  for (const Character& character : s_characters)
    if (IsStringOf(name, character.m_pName)) return &character;
  return nullptr;
}

}  // namespace

bool TypeReader::Follow(Dwarf_Die& die, unsigned attribute, Dwarf_Die& to) const {
  Dwarf_Attribute reference{};
  return m_dw.dwarf_attr_integrate(&die, attribute, &reference) && m_dw.dwarf_formref_die(&reference, &to);
}

bool TypeReader::HasFlag(Dwarf_Die& die, unsigned attribute) const {
  Dwarf_Attribute flag{};
  bool set = false;
  return m_dw.dwarf_attr(&die, attribute, &flag) && m_dw.dwarf_formflag(&flag, &set) == 0 && set;
}

bool TypeReader::NumberAt(Dwarf_Die& die, unsigned attribute, std::uint64_t& number) const {
  Dwarf_Attribute held{};
  Dwarf_Word word = 0;
  if (!m_dw.dwarf_attr_integrate(&die, attribute, &held) || m_dw.dwarf_formudata(&held, &word) != 0)
    return false;
  number = word;
  return true;
}

// False for an entry whose chain of names has no end.
bool TypeReader::Peel(Dwarf_Die& holder, Peeled& peeled) {
  Dwarf_Die at = holder;
  for (int names = 0; names < iMOST_NAMES; ++names) {
    peeled.m_bVoid = !Follow(at, DW_AT_type, peeled.m_die);
    if (peeled.m_bVoid) return true;
    at = peeled.m_die;
    const int tag = m_dw.dwarf_tag(&at);
    if (!IsQualification(tag)) return true;
    if (tag != DW_TAG_typedef) continue;
    peeled.m_pAlias = m_dw.dwarf_diename(&at);
    peeled.m_bResult |= peeled.m_pAlias && std::strcmp(peeled.m_pAlias, sRESULT) == 0;
  }
  return false;
}

const TypeFacts* TypeReader::TypeOf(Dwarf_Die& holder) {
  Peeled peeled;
  if (!Peel(holder, peeled)) return nullptr;
  return peeled.m_bVoid ? Void() : Read(peeled);
}

const TypeFacts* TypeReader::Void() {
  if (!m_spVoid) {
    m_spVoid = std::make_unique<Entry>();
    m_spVoid->m_eBasic = eBASIC_VOID;
  }
  return m_spVoid.get();
}

const TypeFacts* TypeReader::Read(const Peeled& peeled) {
  // A result has a type of its own, beside the one that it stands for.
  const char* const key = static_cast<const char*>(peeled.m_die.addr) + (peeled.m_bResult ? 1 : 0);
  const auto [found, isNew] = m_types.try_emplace(key);
  std::unique_ptr<Entry>& kept = found->second;
  if (!isNew) return kept.get();
  auto entry = std::make_unique<Entry>();
  entry->m_pReader = this;
  entry->m_die = peeled.m_die;
  if (Fill(*entry, peeled)) kept = std::move(entry);
  return kept.get();
}

bool TypeReader::Fill(Entry& entry, const Peeled& peeled) {
  Dwarf_Die* const die = &entry.m_die;
  if (m_dw.dwarf_dieoffset) entry.m_uIndex = m_dw.dwarf_dieoffset(die);
  std::uint64_t size = 0;
  if (NumberAt(*die, DW_AT_byte_size, size)) entry.m_uSize = size;
  switch (m_dw.dwarf_tag(die)) {
    case DW_TAG_base_type:
    case DW_TAG_unspecified_type:
      return FillBasic(entry, peeled.m_bResult);
    case DW_TAG_pointer_type:
      return FillPointing(entry, eTYPE_POINTER);
    case DW_TAG_reference_type:
      return FillPointing(entry, eTYPE_REFERENCE);
    case DW_TAG_rvalue_reference_type:
      return FillPointing(entry, eTYPE_RVALUE_REFERENCE);
    case DW_TAG_ptr_to_member_type:
      return FillPointing(entry, eTYPE_MEMBER_POINTER);
    case DW_TAG_array_type:
      return FillArray(entry);
    case DW_TAG_enumeration_type:
      return FillEnum(entry, peeled.m_pAlias);
    case DW_TAG_class_type:
    case DW_TAG_structure_type:
    case DW_TAG_union_type:
      return FillClass(entry, peeled.m_pAlias);
    case DW_TAG_subroutine_type:
      entry.m_eTag = eTYPE_FUNCTION;
      entry.m_pOf = TypeOf(*die);
      entry.m_complete = &Complete;
      return true;
    default:
      return false;
  }
}

bool TypeReader::FillBasic(Entry& entry, bool result) {
  entry.m_eTag = eTYPE_BASIC;
  if (m_dw.dwarf_tag(&entry.m_die) == DW_TAG_unspecified_type) {
    entry.m_uSize = uPOINTER;  // the type of the null pointer
    return true;
  }
  std::uint64_t encoding = 0;
  if (!NumberAt(entry.m_die, DW_AT_encoding, encoding)) return false;
  const char* const name = m_dw.dwarf_diename(&entry.m_die);
  entry.m_eBasic = BasicTypeOf(static_cast<unsigned>(encoding), name ? name : "", entry.m_uSize);
  entry.m_bSigned = encoding == DW_ATE_signed || encoding == DW_ATE_signed_char;
  if (result && entry.m_uSize >= 4) entry.m_eBasic = eBASIC_HRESULT;
  return entry.m_uSize > 0;
}

bool TypeReader::FillPointing(Entry& entry, ETypeTag tag) {
  entry.m_eTag = tag;
  if (entry.m_uSize == 0) entry.m_uSize = uPOINTER;
  entry.m_pOf = TypeOf(entry.m_die);
  if (tag != eTYPE_MEMBER_POINTER) return entry.m_pOf != nullptr;
  Dwarf_Die owner{};
  if (!entry.m_pOf || !Follow(entry.m_die, DW_AT_containing_type, owner)) return false;
  if (entry.m_pOf->m_eTag == eTYPE_FUNCTION) entry.m_uSize = 2 * uPOINTER;
  entry.m_sName = m_names.Of(m_dw, owner, nullptr);
  return true;
}

std::int64_t TypeReader::CountOf(Dwarf_Die& dimension) const {
  std::uint64_t number = 0;
  if (NumberAt(dimension, DW_AT_count, number)) return static_cast<std::int64_t>(number);
  if (!NumberAt(dimension, DW_AT_upper_bound, number)) return -1;
  // Zero elements have the upper bound -1, in whatever size.
  return number == 0xffffffffU ? 0 : static_cast<std::int64_t>(number + 1);
}

std::vector<std::int64_t> TypeReader::CountsOf(Dwarf_Die& array) const {
  std::vector<std::int64_t> counts;
  ForChildren(array, [&](Dwarf_Die& child) {
    if (m_dw.dwarf_tag(&child) == DW_TAG_subrange_type && counts.size() < 32)
      counts.push_back(CountOf(child));
  });
  return counts;
}

bool TypeReader::FillArray(Entry& entry) {
  const TypeFacts* element = TypeOf(entry.m_die);
  std::vector<std::int64_t> counts = CountsOf(entry.m_die);
  if (!element || counts.empty()) return false;
  for (; counts.size() > 1; counts.pop_back()) {
    auto inner = std::make_unique<Entry>();
    inner->m_eTag = eTYPE_ARRAY;
    inner->m_pOf = element;
    inner->m_iCount = counts.back();
    inner->m_uSize = element->m_uSize * static_cast<std::uint64_t>(counts.back() < 0 ? 0 : counts.back());
    element = inner.get();
    entry.m_inner.push_back(std::move(inner));
  }
  entry.m_eTag = eTYPE_ARRAY;
  entry.m_pOf = element;
  entry.m_iCount = counts.front();
  entry.m_uSize = element->m_uSize * static_cast<std::uint64_t>(counts.front() < 0 ? 0 : counts.front());
  return true;
}

bool TypeReader::FillEnum(Entry& entry, const char* alias) {
  entry.m_eTag = eTYPE_ENUM;
  entry.m_sName = m_names.Of(m_dw, entry.m_die, alias);
  const TypeFacts* const underlying = TypeOf(entry.m_die);
  std::uint64_t encoding = 0;
  if (underlying && underlying->m_uSize > 0) entry.m_bSigned = underlying->m_bSigned;
  if (NumberAt(entry.m_die, DW_AT_encoding, encoding)) entry.m_bSigned = encoding == DW_ATE_signed;
  entry.m_complete = &Complete;
  return entry.m_uSize > 0;
}

bool TypeReader::FillClass(Entry& entry, const char* alias) {
  Dwarf_Die whole{};
  if (Follow(entry.m_die, DW_AT_signature, whole)) entry.m_die = whole;
  std::uint64_t size = 0;
  if (NumberAt(entry.m_die, DW_AT_byte_size, size)) entry.m_uSize = size;
  entry.m_eTag = eTYPE_CLASS;
  entry.m_sName = m_names.Of(m_dw, entry.m_die, alias);
  entry.m_bComplete = !HasFlag(entry.m_die, DW_AT_declaration);
  if (const Character* const character = CharacterOf(entry.m_sName)) FillString(entry, character->m_uSize);
  entry.m_complete = &Complete;
  return true;
}

// The form is known also where a unit has no more than the name. The older one is a single pointer.
void TypeReader::FillString(Entry& entry, unsigned character) {
  if (!entry.m_bComplete) entry.m_uSize = 4 * uPOINTER;
  entry.m_eString = entry.m_uSize == uPOINTER ? eSTRING_COUNTED : eSTRING_WITH_LENGTH;
  entry.m_uCharacter = character;
}

}  // namespace Oxa::Core::Platform
