// The variables that the scopes of functions have; each scope is looked through once.
#ifndef OXACORE_PLATFORM_LINUX_VARIABLESCOPES_H
#define OXACORE_PLATFORM_LINUX_VARIABLESCOPES_H

#include <unordered_map>
#include <vector>

#include "Platform/Linux/DwFunctions.h"
#include "Platform/Linux/TypeReader.h"
#include "Platform/Linux/VariableExpression.h"

namespace Oxa::Core::Platform {

/// A variable of a scope, wherever its value is.
struct ScopeVariable {
  const char* m_pName = nullptr;
  const TypeFacts* m_pType = nullptr;
  bool m_bParameter = false;
  bool m_bLocated = false;  ///< `m_location` tells where it is
  LocationAttribute m_location;
  std::vector<unsigned char> m_constant;  ///< its value, if it always has the same
};

/// Knows scopes by their entries' addresses, so it goes no later than the debug data that they were read from. One
/// thread at a time.
class VariableScopes {
 public:
  using Scope = std::vector<ScopeVariable>;  ///< in the order of the source; no more than 256

  /// The functions have to stand as long as the scopes; of those for entries and attributes all are there.
  explicit VariableScopes(const Dw& dw) noexcept : m_dw(dw), m_types(dw) {}

  /// The scope of an entry: a function, one that was put into another, or a block. Variables of blocks within aren't
  /// part of it; of a function that was put into another, those are that only its origin has, without a place. It
  /// stands as long as this object. May throw std::bad_alloc.
  const Scope& Of(Dwarf_Die scope);

 private:
  void AddChildren(Dwarf_Die& parent, const std::vector<const void*>& told, bool placed, Scope& scope);
  void Add(Dwarf_Die& die, bool placed, Scope& scope);
  std::vector<const void*> OriginsOfChildren(Dwarf_Die& parent) const;
  bool Origin(Dwarf_Die& die, Dwarf_Die& origin) const;
  void ReadConstant(Dwarf_Die& die, ScopeVariable& variable) const;

  const Dw& m_dw;
  TypeReader m_types;
  std::unordered_map<const void*, Scope> m_scopes;
};

}  // namespace Oxa::Core::Platform

#endif
