#include "ErrorHandling/MicrosoftDebugSymbol.h"

#include "ErrorHandling/MicrosoftDebugSymbolNames.h"
#include "ErrorHandling/MicrosoftDebugSymbolTexts.h"

namespace MSWindows {

using namespace Oxa::Core::Platform;

namespace {

constexpr unsigned uPARAMETER = 0x40;
constexpr int iDEEPEST = 24;  // objects in base classes in elements: no source nests that deep

}  // namespace

DebugSymbol::DebugSymbol(const DebugHelp* pContext, const VariableFacts& facts)
    : m_pContext(pContext),
      m_sName(facts.m_pName),
      m_uFlags(facts.m_bParameter ? uPARAMETER : 0),
      m_value(facts.m_value),
      m_pType(facts.m_pType),
      m_pMemory(facts.m_pMemory) {}

DebugSymbol::DebugSymbol(const DebugSymbol& parent, const std::string& name, const Type* pType,
                         const Value& value, int depth)
    : m_pContext(parent.m_pContext),
      m_sName(name),
      m_value(value),
      m_pType(pType),
      m_pMemory(parent.m_pMemory),
      m_iDepth(depth) {}

DebugSymbol::~DebugSymbol() = default;

bool DebugSymbol::Read() {
  Progress progress;
  return ReadPart(progress);
}

bool DebugSymbol::ReadPart(Progress& progress) {
  if (!m_pType) return false;
  m_pTypeName = &TypeName(*m_pType);
  if (m_pTypeName->empty() || IsLeftOut(m_sName, *m_pType)) return false;
  m_uSize = m_pType->m_uSize;
  m_uTypeIndex = m_pType->m_uIndex;
  m_iTag = m_pType->m_eTag;
  ReadValue(*m_pType, progress);
  return true;
}

void DebugSymbol::ReadValue(const Type& type, Progress& progress) {
  if (m_value.m_ePlace == eVALUE_NOWHERE) {
    m_sValue = sNO_ADDRESS;
    return;
  }
  if (++progress.m_iNesting > iDEEPEST) {
    m_sValue = sDEEPER;
  } else {
    switch (type.m_eTag) {
      case eTYPE_POINTER:
        ReadPointer(type);
        break;
      case eTYPE_REFERENCE:
      case eTYPE_RVALUE_REFERENCE:
        ReadReference(type, progress);
        break;
      case eTYPE_MEMBER_POINTER:
        ReadMemberPointer();
        break;
      case eTYPE_ARRAY:
        ReadArray(type, progress);
        break;
      case eTYPE_ENUM:
        ReadEnum(type);
        break;
      case eTYPE_CLASS:
        ReadObject(type, progress);
        break;
      default:
        ReadBasic(type);
        break;
    }
  }
  --progress.m_iNesting;
}

void TakeVariable(void* frameVariables, const VariableFacts& variable) {
  FrameVariables& frame = *static_cast<FrameVariables*>(frameVariables);
  DebugSymbol symbol(frame.m_pContext, variable);
  if (!symbol.Read() || !frame.m_variables.emplace(symbol.GetName(), symbol.GetValue()).second) return;
  if (!frame.m_sTypes.empty()) frame.m_sTypes += "; ";
  frame.m_sTypes.append(symbol.GetName()).append(": ").append(TypeName(*variable.m_pType));
}

}  // namespace MSWindows
