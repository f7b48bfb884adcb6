#include "Platform/Linux/VariableCallSite.h"

#include <cstring>

#include "Platform/Linux/VariableRegisters.h"

namespace Oxa::Core::Platform {

namespace {

constexpr int iMOST_CHILDREN = 10000;  // of one entry: a chain of siblings that is damaged may go in circles

// Registers that a function gives back as it found them: rbx, rbp, r12 to r15.
bool IsKept(unsigned number) noexcept { return number == 3 || number == 6 || (number >= 12 && number <= 15); }

bool HasFunctions(const Dw& dw) noexcept {
  return dw.dwarf_child && dw.dwarf_siblingof && dw.dwarf_tag && dw.dwarf_attr && dw.dwarf_formaddr &&
         dw.dwarf_formref_die && dw.dwarf_getlocation && dw.dwarf_formstring && dw.dwarf_attr_integrate;
}

bool HasEither(const Dw& dw, Dwarf_Die& die, unsigned standard, unsigned older, Dwarf_Attribute& attribute) {
  return dw.dwarf_attr(&die, standard, &attribute) || dw.dwarf_attr(&die, older, &attribute);
}

bool IsSite(const Dw& dw, Dwarf_Die& die, Dwarf_Addr returns) {
  const int tag = dw.dwarf_tag(&die);
  if (tag != DW_TAG_call_site && tag != DW_TAG_GNU_call_site) return false;
  Dwarf_Attribute attribute{};
  Dwarf_Addr address = 0;
  return HasEither(dw, die, DW_AT_call_return_pc, DW_AT_low_pc, attribute) &&
         dw.dwarf_formaddr(&attribute, &address) == 0 && address == returns;
}

bool FindSite(const Dw& dw, const FrameView& caller, Dwarf_Die& site) {
  for (int scope = 0; scope < caller.m_iScopes; ++scope) {
    Dwarf_Die parent = caller.m_pScopes[scope];
    if (dw.dwarf_child(&parent, &site) != 0) continue;
    int left = iMOST_CHILDREN;
    do
      if (IsSite(dw, site, caller.m_place + 1)) return true;
    while (--left > 0 && dw.dwarf_siblingof(&site, &site) == 0);
  }
  return false;
}

bool Follow(const Dw& dw, Dwarf_Die& die, unsigned name, Dwarf_Die& to) {
  Dwarf_Attribute attribute{};
  return dw.dwarf_attr(&die, name, &attribute) && dw.dwarf_formref_die(&attribute, &to);
}

// The entries that stand for one function: itself, what it is an instance of, and its declaration.
struct Aliases {
  Aliases(const Dw& dw, Dwarf_Die die) {
    for (const void*& alias : m_aliases) {
      alias = die.addr;
      Dwarf_Die next{};
      if (!Follow(dw, die, DW_AT_abstract_origin, next) && !Follow(dw, die, DW_AT_specification, next)) break;
      die = next;
    }
  }

  bool Share(const Aliases& other) const {
    for (const void* mine : m_aliases)
      for (const void* theirs : other.m_aliases)
        if (mine && mine == theirs) return true;
    return false;
  }

  const void* m_aliases[3] = {};
};

const char* LinkageName(const Dw& dw, Dwarf_Die& die) {
  Dwarf_Attribute attribute{};
  if (!dw.dwarf_attr_integrate(&die, DW_AT_linkage_name, &attribute)) return nullptr;
  return dw.dwarf_formstring(&attribute);
}

// Where the caller called something else, that has jumped here, and nothing is known of what it passed on.
bool CallsFrame(const Dw& dw, Dwarf_Die& site, const FrameView& frame) {
  Dwarf_Die called{};
  if (!Follow(dw, site, DW_AT_call_origin, called) && !Follow(dw, site, DW_AT_abstract_origin, called))
    return true;
  Dwarf_Die running = frame.m_subprogram.addr ? frame.m_subprogram : frame.m_function;
  if (Aliases(dw, called).Share(Aliases(dw, running))) return true;
  const char* const calledName = LinkageName(dw, called);
  const char* const runningName = LinkageName(dw, running);
  return calledName && runningName && std::strcmp(calledName, runningName) == 0;
}

bool IsPassedIn(const Dw& dw, Dwarf_Die& parameter, unsigned number) {
  const int tag = dw.dwarf_tag(&parameter);
  if (tag != DW_TAG_call_site_parameter && tag != DW_TAG_GNU_call_site_parameter) return false;
  Dwarf_Attribute attribute{};
  Dwarf_Op* operations = nullptr;
  std::size_t count = 0;
  if (!dw.dwarf_attr(&parameter, DW_AT_location, &attribute)) return false;
  if (dw.dwarf_getlocation(&attribute, &operations, &count) != 0) return false;
  return count == 1 && operations->atom == DW_OP_reg0 + number;
}

bool FindPassed(const Dw& dw, Dwarf_Die& site, unsigned number, Dwarf_Attribute& value) {
  Dwarf_Die parameter{};
  if (dw.dwarf_child(&site, &parameter) != 0) return false;
  int left = iMOST_CHILDREN;
  do
    if (IsPassedIn(dw, parameter, number))
      return HasEither(dw, parameter, DW_AT_call_value, DW_AT_GNU_call_site_value, value);
  while (--left > 0 && dw.dwarf_siblingof(&parameter, &parameter) == 0);
  return false;
}

bool ValuePassed(ExpressionScene& scene, Dwarf_Attribute& attribute, std::uint64_t& value) {
  ExpressionScene callers{scene.m_dw, *scene.m_frame.m_pCaller, scene.m_memory, scene.m_iSteps,
                          scene.m_iDepth};
  const bool good = NumberOf(callers, attribute, value);
  scene.m_iSteps = callers.m_iSteps;
  return good;
}

}  // namespace

bool ValueOnEntry(ExpressionScene& scene, unsigned number, std::uint64_t& value) {
  const Dw& dw = scene.m_dw;
  const FrameView* const caller = scene.m_frame.m_pCaller;
  if (!caller || !HasFunctions(dw)) return false;
  if (IsKept(number)) return ReadRegisterOf(*caller, number, value);
  Dwarf_Die site{};
  Dwarf_Attribute attribute{};
  return FindSite(dw, *caller, site) && CallsFrame(dw, site, scene.m_frame) &&
         FindPassed(dw, site, number, attribute) && ValuePassed(scene, attribute, value);
}

}  // namespace Oxa::Core::Platform
