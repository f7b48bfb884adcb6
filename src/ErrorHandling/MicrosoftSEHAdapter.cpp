#include <Infrastructure/OxaCore/MicrosoftSEHAdapter.h>

#include "Core/LibraryState.h"
#include "ErrorHandling/Hooks.h"
#include "ErrorHandling/MicrosoftSEHAdapterHooks.h"
#include "Platform/Faults.h"

namespace MSWindows {

namespace {

using namespace Oxa::Core;

const char* const sLOG_NAME = "OS.Windows";

// No box on the screen: not for hardware that is missing, for faults, for alignment, nor for files.
constexpr unsigned int uERROR_MODE = 0x8007;

template <class To, class From>
To Reinterpret(From from) {
  return reinterpret_cast<To>(from);
}

template <class Fault>
void Raise(const CodeSite& site, const _EXCEPTION_POINTERS& pointers) {
  site.Raise(sLOG_NAME, Fault(pointers), false);
}

// What the operation left behind would make the raise's own arithmetic fault again.
template <class Fault>
void RaiseCleared(const CodeSite& site, const _EXCEPTION_POINTERS& pointers) {
  Platform::ClearFloatingPointState();
  Raise<Fault>(site, pointers);
}

using RaiseFault = void (*)(const CodeSite& site, const _EXCEPTION_POINTERS& pointers);

struct FaultClass {
  unsigned int m_uCode;
  RaiseFault m_pRaise;
};

constexpr FaultClass aCLASSES[] = {
    {Platform::eACCESS_VIOLATION, &Raise<AccessViolation>},
    {Platform::eARRAY_BOUNDS_EXCEEDED, &Raise<ArrayBoundsExceeded>},
    {Platform::eDATATYPE_MISALIGNMENT, &Raise<DatatypeMisalignment>},
    {Platform::eFLT_DENORMAL_OPERAND, &Raise<FloatDenormalOperand>},
    {Platform::eFLT_DIVIDE_BY_ZERO, &RaiseCleared<FloatDivideByZero>},
    {Platform::eFLT_INVALID_OPERATION, &RaiseCleared<FloatInvalidOperation>},
    {Platform::eFLT_OVERFLOW, &RaiseCleared<FloatOverflow>},
    {Platform::eFLT_STACK_CHECK, &RaiseCleared<FloatStackCheck>},
    {Platform::eFLT_UNDERFLOW, &RaiseCleared<FloatUnderflow>},
    {Platform::eILLEGAL_INSTRUCTION, &Raise<IllegalInstruction>},
    {Platform::eIN_PAGE_ERROR, &Raise<InPageError>},
    {Platform::eINT_DIVIDE_BY_ZERO, &Raise<IntDivideByZero>},
    {Platform::eINT_OVERFLOW, &Raise<IntOverflow>},
    {Platform::ePRIV_INSTRUCTION, &Raise<PrivateInstruction>},
    {Platform::eSTACK_OVERFLOW, &Raise<StackOverflow>},
};

}  // namespace

SEHAdapter::SEHAdapter() { Initialize(); }

SEHAdapter::~SEHAdapter() {
  if (!Oxa::Core::GoesByFatalError()) Shutdown();
}

SEHAdapter& SEHAdapter::Instance() { return sm_Instance; }

void SEHAdapter::Initialize() {
  if (m_iUseCount == 0) {
    m_uPreviousErrorMode = Platform::SetErrorMode(uERROR_MODE);
    m_pPreviousTranslator = InstallSEHErrorTranslator();
    m_pPreviousFilter = Reinterpret<void*>(Platform::SetLastChance(&OxaUnhandledExceptionFilter));
  }
  ++m_iUseCount;
}

void SEHAdapter::Shutdown() {
  if (m_iUseCount-- != 1) return;
  Platform::SetLastChance(Reinterpret<Platform::LastChance>(m_pPreviousFilter));
  Platform::SetFaultTranslator(Reinterpret<Platform::FaultTranslator>(m_pPreviousTranslator));
  Platform::SetErrorMode(m_uPreviousErrorMode);
}

void* InstallSEHErrorTranslator() {
  return Reinterpret<void*>(Platform::SetFaultTranslator(&SEH_To_OXA_Translator));
}

void SEH_To_OXA_Translator(unsigned int code, _EXCEPTION_POINTERS* pointers) {
  for (const FaultClass& fault : aCLASSES) {
    if (fault.m_uCode == code) return fault.m_pRaise(OXA_CODE_SITE, *pointers);
  }
  if (code == Platform::eNONCONTINUABLE_EXCEPTION) {
    OxaUnhandledExceptionFilter(pointers);  // a raise makes no sense where nothing can go on
  } else {
    OXA_RAISE_ERROR(sLOG_NAME, UnknownError(std::string()));
  }
}

}  // namespace MSWindows

namespace Oxa::Core {

void ConnectFaults(Hooks& hooks) {
  hooks.translateFaults = [] { MSWindows::InstallSEHErrorTranslator(); };
  hooks.useFaultAdapter = [] { MSWindows::SEHAdapter::Instance().Initialize(); };
  hooks.releaseFaultAdapter = [] { MSWindows::SEHAdapter::Instance().Shutdown(); };
}

}  // namespace Oxa::Core
