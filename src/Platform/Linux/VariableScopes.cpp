#include "Platform/Linux/VariableScopes.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace Oxa::Core::Platform {

namespace {

constexpr int iMOST_CHILDREN = 10000;
constexpr std::size_t uMOST_VARIABLES = 256;  // of a scope

template <class Action>
void ForEachChild(const Dw& dw, Dwarf_Die& parent, const Action& action) {
  Dwarf_Die child{};
  if (dw.dwarf_child(&parent, &child) != 0) return;
  int left = iMOST_CHILDREN;
  do action(child);
  while (--left > 0 && dw.dwarf_siblingof(&child, &child) == 0);
}

bool IsVariable(int tag) noexcept { return tag == DW_TAG_variable || tag == DW_TAG_formal_parameter; }

bool Contains(const std::vector<const void*>& entries, const void* entry) {
  return std::find(entries.begin(), entries.end(), entry) != entries.end();
}

}  // namespace

const VariableScopes::Scope& VariableScopes::Of(Dwarf_Die scope) {
  const auto [found, isNew] = m_scopes.try_emplace(scope.addr);
  Scope& variables = found->second;
  if (!isNew) return variables;
  AddChildren(scope, {}, true, variables);
  // What this instance of the function has lost is still a variable of it.
  Dwarf_Die origin{};
  if (Origin(scope, origin)) AddChildren(origin, OriginsOfChildren(scope), false, variables);
  return variables;
}

bool VariableScopes::Origin(Dwarf_Die& die, Dwarf_Die& origin) const {
  Dwarf_Attribute attribute{};
  return m_dw.dwarf_attr(&die, DW_AT_abstract_origin, &attribute) &&
         m_dw.dwarf_formref_die(&attribute, &origin);
}

std::vector<const void*> VariableScopes::OriginsOfChildren(Dwarf_Die& parent) const {
  std::vector<const void*> origins;
  ForEachChild(m_dw, parent, [&](Dwarf_Die& child) {
    Dwarf_Die origin{};
    if (IsVariable(m_dw.dwarf_tag(&child)) && Origin(child, origin)) origins.push_back(origin.addr);
  });
  return origins;
}

void VariableScopes::AddChildren(Dwarf_Die& parent, const std::vector<const void*>& told, bool placed,
                                 Scope& scope) {
  ForEachChild(m_dw, parent, [&](Dwarf_Die& child) {
    if (!IsVariable(m_dw.dwarf_tag(&child)) || Contains(told, child.addr)) return;
    if (scope.size() < uMOST_VARIABLES) Add(child, placed, scope);
  });
}

void VariableScopes::Add(Dwarf_Die& die, bool placed, Scope& scope) {
  ScopeVariable variable;
  variable.m_pName = m_dw.dwarf_diename(&die);
  bool declared = false;
  Dwarf_Attribute attribute{};
  if (m_dw.dwarf_attr(&die, DW_AT_declaration, &attribute)) m_dw.dwarf_formflag(&attribute, &declared);
  if (!variable.m_pName || declared) return;
  variable.m_bParameter = m_dw.dwarf_tag(&die) == DW_TAG_formal_parameter;
  variable.m_pType = m_types.TypeOf(die);
  // The origin of an instance can tell places only of what all instances share.
  if (m_dw.dwarf_attr_integrate(&die, DW_AT_location, &attribute)) {
    variable.m_bLocated = placed || !variable.m_bParameter;
    variable.m_location = MakeLocationAttribute(m_dw, attribute);
  } else {
    ReadConstant(die, variable);
  }
  scope.push_back(std::move(variable));
}

void VariableScopes::ReadConstant(Dwarf_Die& die, ScopeVariable& variable) const {
  Dwarf_Attribute attribute{};
  Dwarf_Block block{};
  Dwarf_Word number = 0;
  if (!variable.m_pType || !m_dw.dwarf_attr_integrate(&die, DW_AT_const_value, &attribute)) return;
  if (m_dw.dwarf_formudata(&attribute, &number) == 0) {
    const auto* const bytes = reinterpret_cast<const unsigned char*>(&number);
    variable.m_constant.assign(bytes,
                               bytes + std::min<std::uint64_t>(variable.m_pType->m_uSize, sizeof number));
  } else if (m_dw.dwarf_formblock(&attribute, &block) == 0) {
    variable.m_constant.assign(block.data, block.data + block.length);
  } else if (const char* const text = m_dw.dwarf_formstring(&attribute)) {
    variable.m_constant.assign(text, text + std::strlen(text) + 1);
  }
}

}  // namespace Oxa::Core::Platform
