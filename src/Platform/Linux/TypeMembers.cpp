// What a type consists of: members, enumerators, parameters. Looked up when it's asked for, since most types are only
// pointed to.
#include <cstring>
#include <utility>

#include "Platform/Linux/TypeChildren.h"
#include "Platform/Linux/TypeReader.h"
#include "Platform/Linux/VariableExpression.h"

namespace Oxa::Core::Platform {

namespace {

constexpr std::size_t uMOST_MEMBERS = 10000;
constexpr std::uint64_t uWIDEST_UNIT = 16;  // bytes

const char* NameOf(const Dw& dw, Dwarf_Die& die) {
  const char* const name = dw.dwarf_diename(&die);
  return name ? name : "";
}

// "_vptr.Class" or "_vptr$Class", by compiler.
bool IsTable(const char* name) noexcept {
  return std::strncmp(name, "_vptr", 5) == 0 && (name[5] == '.' || name[5] == '$');
}

}  // namespace

void TypeReader::Complete(TypeFacts& type) {
  Entry& entry = static_cast<Entry&>(type);
  entry.m_complete = nullptr;
  switch (entry.m_eTag) {
    case eTYPE_CLASS:
      return entry.m_pReader->AddMembers(entry);
    case eTYPE_ENUM:
      return entry.m_pReader->AddEnumerators(entry);
    default:
      return entry.m_pReader->AddParameters(entry);
  }
}

void TypeReader::AddMembers(Entry& entry) {
  ForChildren(entry.m_die, [&](Dwarf_Die& child) {
    if (m_dw.dwarf_tag(&child) == DW_TAG_inheritance) AddMember(entry, child, true);
  });
  ForChildren(entry.m_die, [&](Dwarf_Die& child) {
    if (m_dw.dwarf_tag(&child) == DW_TAG_member) AddMember(entry, child, false);
  });
}

void TypeReader::AddMember(Entry& entry, Dwarf_Die& die, bool base) {
  const bool ofTheClass = HasFlag(die, DW_AT_external) || HasFlag(die, DW_AT_declaration);
  if ((ofTheClass && !base) || entry.m_members.size() == uMOST_MEMBERS) return;
  MemberFacts member;
  member.m_bBase = base;
  if (!base) member.m_sName = NameOf(m_dw, die);
  member.m_bTable = IsTable(member.m_sName.c_str());
  member.m_pType = TypeOf(die);
  PlaceMember(entry, die, member);
  PlaceBits(die, member);
  entry.m_members.push_back(std::move(member));
}

void TypeReader::PlaceMember(Entry& entry, Dwarf_Die& die, MemberFacts& member) {
  if (NumberAt(die, DW_AT_data_member_location, member.m_uOffset)) return;
  Dwarf_Attribute location{};
  if (!m_dw.dwarf_attr(&die, DW_AT_data_member_location, &location)) return;
  entry.m_places.push_back(std::make_unique<MemberPlace>(MemberPlace{&m_dw, location}));
  member.m_pHow = entry.m_places.back().get();
  member.m_locate = [](const void* how, MemoryReader& memory, std::uint64_t object, std::uint64_t& address) {
    MemberPlace place = *static_cast<const MemberPlace*>(how);
    const FrameView nowhere;
    ExpressionScene scene{*place.m_pDw, nowhere, memory};
    return AddressInObject(scene, place.m_location, object, address);
  };
}

// In the older form the bits are counted from the highest one of a unit of storage.
void TypeReader::PlaceBits(Dwarf_Die& die, MemberFacts& member) const {
  std::uint64_t size = 0;
  std::uint64_t before = 0;
  if (!NumberAt(die, DW_AT_bit_size, size) || size > 64) return;
  member.m_uBitSize = static_cast<unsigned>(size);
  if (NumberAt(die, DW_AT_data_bit_offset, before)) {
    member.m_uOffset += before / 8;
    member.m_uBitOffset = before % 8;
    return;
  }
  std::uint64_t unit = member.m_pType ? member.m_pType->m_uSize : 0;
  NumberAt(die, DW_AT_byte_size, unit);
  if (unit > uWIDEST_UNIT || !NumberAt(die, DW_AT_bit_offset, before)) return;
  if (before > unit * 8 || size > unit * 8 - before) return;
  const std::uint64_t behind = unit * 8 - before - size;
  member.m_uOffset += behind / 8;
  member.m_uBitOffset = behind % 8;
}

void TypeReader::AddParameters(Entry& entry) {
  ForChildren(entry.m_die, [&](Dwarf_Die& child) {
    if (m_dw.dwarf_tag(&child) != DW_TAG_formal_parameter || entry.m_members.size() == uMOST_MEMBERS) return;
    MemberFacts parameter;
    parameter.m_pType = TypeOf(child);
    entry.m_members.push_back(std::move(parameter));
  });
}

void TypeReader::AddEnumerators(Entry& entry) {
  ForChildren(entry.m_die, [&](Dwarf_Die& child) {
    if (m_dw.dwarf_tag(&child) != DW_TAG_enumerator) return;
    std::uint64_t number = 0;
    if (!NumberAt(child, DW_AT_const_value, number)) return;
    entry.m_enumerators.push_back({NameOf(m_dw, child), static_cast<std::int64_t>(number)});
  });
}

}  // namespace Oxa::Core::Platform
