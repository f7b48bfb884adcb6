#include "Platform/Linux/SymbolizedName.h"

namespace Oxa::Core::Platform {

namespace {

const char* const sNAMELESS_NAMESPACE = "(anonymous namespace)";
constexpr int iMAX_ORIGINS = 8;  // that refer to each other
constexpr int iMAX_DEPTH = 64;
constexpr int iMAX_CHILDREN = 1000000;  // damaged data may go round in circles

bool Follow(const Dw& dw, Dwarf_Die& entry, unsigned kind) {
  Dwarf_Attribute attribute;
  Dwarf_Die target;
  if (dw.dwarf_attr(&entry, kind, &attribute) == nullptr ||
      dw.dwarf_formref_die(&attribute, &target) == nullptr)
    return false;
  entry = target;
  return true;
}

// Where the function was declared: what was put into another one, or defined elsewhere, refers to it.
Dwarf_Die DeclarationOf(const Dw& dw, Dwarf_Die entry) {
  for (int count = 0; count < iMAX_ORIGINS; ++count)
    if (!Follow(dw, entry, DW_AT_abstract_origin) && !Follow(dw, entry, DW_AT_specification)) break;
  return entry;
}

bool NamesItsContents(int tag) {
  return tag == DW_TAG_namespace || tag == DW_TAG_class_type || tag == DW_TAG_structure_type ||
         tag == DW_TAG_union_type || tag == DW_TAG_subprogram;
}

// The last child that begins no later than `place`: the one that has it inside.
bool FindChildWith(const Dw& dw, Dwarf_Die& parent, Dwarf_Off place, Dwarf_Die& found) {
  Dwarf_Die child;
  if (dw.dwarf_child(&parent, &child) != 0) return false;
  bool any = false;
  int left = iMAX_CHILDREN;
  do {
    if (dw.dwarf_dieoffset(&child) > place) break;
    found = child;
    any = true;
  } while (--left > 0 && dw.dwarf_siblingof(&child, &child) == 0);
  return any;
}

void AddName(const Dw& dw, Dwarf_Die& entry, std::string& name) {
  const int tag = dw.dwarf_tag(&entry);
  if (!NamesItsContents(tag)) return;
  const char* text = dw.dwarf_diename(&entry);
  if (text == nullptr && tag == DW_TAG_namespace) text = sNAMELESS_NAMESPACE;
  if (text != nullptr) name.append(name.empty() ? "" : "::").append(text);
}

bool HasAll(const Dw& dw) {
  return dw.dwarf_attr != nullptr && dw.dwarf_formref_die != nullptr && dw.dwarf_diename != nullptr &&
         dw.dwarf_diecu != nullptr && dw.dwarf_child != nullptr && dw.dwarf_siblingof != nullptr;
}

}  // namespace

std::string QualifiedName(const Dw& dw, const Dwarf_Die& entry) {
  std::string name;
  if (!HasAll(dw)) return name;
  Dwarf_Die declaration = DeclarationOf(dw, entry);
  Dwarf_Die outer;
  if (dw.dwarf_diecu(&declaration, &outer, nullptr, nullptr) == nullptr) return name;
  const Dwarf_Off place = dw.dwarf_dieoffset(&declaration);
  for (int depth = 0; depth < iMAX_DEPTH; ++depth) {
    Dwarf_Die inner;
    if (!FindChildWith(dw, outer, place, inner)) break;
    AddName(dw, inner, name);
    if (dw.dwarf_dieoffset(&inner) == place) return name;
    outer = inner;
  }
  const char* const plain = dw.dwarf_diename(&declaration);
  return plain != nullptr ? plain : "";
}

}  // namespace Oxa::Core::Platform
