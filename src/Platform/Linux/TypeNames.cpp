#include "Platform/Linux/TypeNames.h"

#include <algorithm>
#include <cstdlib>

namespace Oxa::Core::Platform {

namespace {

const char* const sNAMELESS_SPACE = "(anonymous namespace)";
constexpr int iDEEPEST = 64;
constexpr std::size_t uMOST_PLACES = 1000000;  // of a unit; what is damaged may have no end

bool IsClass(int tag) noexcept {
  return tag == DW_TAG_class_type || tag == DW_TAG_structure_type || tag == DW_TAG_union_type;
}

void ReplaceAll(std::string& text, const std::string& what, const std::string& by) {
  for (std::size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + by.size()))
    text.replace(at, what.size(), by);
}

Dwarf_Die Declared(const Dw& dw, Dwarf_Die die) {
  Dwarf_Attribute attribute{};
  Dwarf_Die declaration{};
  const bool elsewhere = dw.dwarf_formref_die && dw.dwarf_attr &&
                         dw.dwarf_attr(&die, DW_AT_specification, &attribute) &&
                         dw.dwarf_formref_die(&attribute, &declaration);
  return elsewhere ? declaration : die;
}

}  // namespace

std::string TypeNames::Of(const Dw& dw, Dwarf_Die die, const char* alias) {
  die = Declared(dw, die);
  const char* const own = dw.dwarf_diename(&die);
  const char* const name = own ? own : alias;
  if (!name) return std::string();
  const Unit& unit = UnitOf(dw, die);
  const Place* const place = Find(unit, die.addr);
  if (!place) return LocalName(dw, die) + name;
  return StandardName(
      NameFrom(unit, place->m_iParent < 0 ? nullptr : &unit[static_cast<std::size_t>(place->m_iParent)]) +
      name);
}

const TypeNames::Unit& TypeNames::UnitOf(const Dw& dw, Dwarf_Die& die) {
  Dwarf_Die unit{};
  if (!dw.dwarf_diecu || !dw.dwarf_diecu(&die, &unit, nullptr, nullptr)) return m_none;
  const auto [found, isNew] = m_units.try_emplace(unit.addr);
  if (isNew) AddChildren(dw, unit, -1, 0, found->second);
  return found->second;
}

// In the order of the debug data, so that the places are sorted by their addresses.
void TypeNames::AddChildren(const Dw& dw, Dwarf_Die& parent, int place, int depth, Unit& unit) {
  Dwarf_Die child{};
  if (depth == iDEEPEST || dw.dwarf_child(&parent, &child) != 0) return;
  std::size_t left = uMOST_PLACES;
  do {
    const int tag = dw.dwarf_tag(&child);
    const bool space = tag == DW_TAG_namespace;
    if (!space && !IsClass(tag) && tag != DW_TAG_enumeration_type) continue;
    unit.push_back({child.addr, place, dw.dwarf_diename(&child), space});
    if (tag != DW_TAG_enumeration_type)
      AddChildren(dw, child, static_cast<int>(unit.size()) - 1, depth + 1, unit);
  } while (--left > 0 && unit.size() < uMOST_PLACES && dw.dwarf_siblingof(&child, &child) == 0);
}

const TypeNames::Place* TypeNames::Find(const Unit& unit, const void* entry) {
  const auto before = [](const Place& place, const void* wanted) { return place.m_pEntry < wanted; };
  const auto found = std::lower_bound(unit.begin(), unit.end(), entry, before);
  return found != unit.end() && found->m_pEntry == entry ? &*found : nullptr;
}

// What stands before a name in `place`.
std::string TypeNames::NameFrom(const Unit& unit, const Place* place) {
  if (!place) return std::string();
  const char* const nameless = place->m_bNamespace ? sNAMELESS_SPACE : nullptr;
  const char* const name = place->m_pName ? place->m_pName : nameless;
  const Place* const parent =
      place->m_iParent < 0 ? nullptr : &unit[static_cast<std::size_t>(place->m_iParent)];
  std::string text = NameFrom(unit, parent);
  return name ? text + name + "::" : text;
}

// Types inside of functions, which are few, are searched from the top.
std::string TypeNames::LocalName(const Dw& dw, Dwarf_Die& die) {
  Dwarf_Die* scopes = nullptr;
  const int count = dw.dwarf_getscopes_die ? dw.dwarf_getscopes_die(&die, &scopes) : 0;
  std::string text;
  for (int scope = 1; scope < count; ++scope) {
    const int tag = dw.dwarf_tag(&scopes[scope]);
    const bool named = IsClass(tag) || tag == DW_TAG_namespace || tag == DW_TAG_subprogram;
    const char* const name = named ? dw.dwarf_diename(&scopes[scope]) : nullptr;
    if (name) text.insert(0, std::string(name) + "::");
  }
  if (count > 0) std::free(scopes);
  return text;
}

std::string StandardName(std::string name) {
  if (name.compare(0, 5, "std::") != 0) return name;
  ReplaceAll(name, "std::__cxx11::", "std::");
  ReplaceAll(name, ", ", ",");
  ReplaceAll(name, ">>", "> >");
  return name;
}

}  // namespace Oxa::Core::Platform
