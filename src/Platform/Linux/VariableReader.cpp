#include <cstring>
#include <memory>
#include <vector>

#include "Platform/Linux/VariableExpression.h"
#include "Platform/Linux/VariableScopes.h"
#include "Platform/Linux/Variables.h"

namespace Oxa::Core::Platform {

namespace {

// Made when it's needed, and given back by ForgetVariables.
VariableScopes* s_pScopes = nullptr;
const Dw* s_pFunctions = nullptr;

bool HasFunctions(const Dw& dw) noexcept {
  return dw.dwarf_child && dw.dwarf_siblingof && dw.dwarf_tag && dw.dwarf_diename && dw.dwarf_attr &&
         dw.dwarf_attr_integrate && dw.dwarf_formudata && dw.dwarf_formflag && dw.dwarf_formblock &&
         dw.dwarf_formstring && dw.dwarf_formref_die;
}

VariableScopes& ScopesFor(const Dw& dw) {
  if (s_pFunctions != &dw) ForgetVariables();
  if (!s_pScopes) s_pScopes = new VariableScopes(dw);
  s_pFunctions = &dw;
  return *s_pScopes;
}

class FrameReader {
 public:
  FrameReader(const Dw& dw, const FrameView& frame, const VariableSink& sink)
      : m_rSink(sink), m_scene{dw, frame, m_memory} {
    m_given.reserve(16);
  }

  void Read(const VariableScopes::Scope& scope) {
    for (const ScopeVariable& variable : scope)
      if (IsNew(variable.m_pName)) Give(variable);
  }

 private:
  bool IsNew(const char* name) {
    for (const char* const given : m_given)
      if (std::strcmp(given, name) == 0) return false;
    m_given.push_back(name);
    return true;
  }

  void Give(const ScopeVariable& variable) {
    VariableFacts facts;
    facts.m_pName = variable.m_pName;
    facts.m_pType = variable.m_pType;
    facts.m_bParameter = variable.m_bParameter;
    facts.m_pMemory = &m_memory;
    Location location;
    if (variable.m_bLocated && variable.m_pType) location = Find(variable);
    FillValue(facts.m_value, location);
    if (!variable.m_constant.empty()) FillConstant(facts.m_value, variable);
    m_rSink.m_take(m_rSink.m_pReceiver, facts);
  }

  Location Find(const ScopeVariable& variable) {
    m_scene.m_iSteps = 0;
    return Locate(m_scene, variable.m_location, variable.m_pType->m_uSize);
  }

  static void FillValue(ValueFacts& value, const Location& location) {
    value.m_ePlace = location.m_ePlace;
    value.m_uAddress = location.m_uAddress;
    value.m_pBytes = location.m_bytes.data();
    value.m_pKnown = location.m_known.data();
    value.m_uBytes = location.m_bytes.size();
  }

  void FillConstant(ValueFacts& value, const ScopeVariable& variable) {
    m_known.assign(variable.m_constant.size(), 1);
    value.m_ePlace = eVALUE_IN_BYTES;
    value.m_pBytes = variable.m_constant.data();
    value.m_pKnown = m_known.data();
    value.m_uBytes = variable.m_constant.size();
  }

  const VariableSink& m_rSink;
  MemoryReader m_memory;
  ExpressionScene m_scene;
  std::vector<const char*> m_given;
  std::vector<unsigned char> m_known;
};

}  // namespace

void ReadVariables(const Dw& dw, const FrameView& frame, const VariableSink& sink) {
  if (!sink.m_take || !HasFunctions(dw)) return;
  VariableScopes& scopes = ScopesFor(dw);
  FrameReader reader(dw, frame, sink);
  for (int scope = 0; scope < frame.m_iScopes; ++scope) reader.Read(scopes.Of(frame.m_pScopes[scope]));
}

void ForgetVariables() noexcept {
  delete s_pScopes;
  AbandonVariables();
}

void AbandonVariables() noexcept {
  s_pScopes = nullptr;
  s_pFunctions = nullptr;
}

}  // namespace Oxa::Core::Platform
