#include <Infrastructure/OxaCore/MicrosoftSEHAdapter.h>

#include <Infrastructure/OxaCore/MicrosoftDebugHelp.h>

#include "ErrorHandling/AlertTraffic.h"

#include "Platform/Faults.h"

// The destructors stand here so that type information of each class has one home.
#define OXA_DEFINE_FAULT(Class, messageTemplate)                             \
  Class::Class(const _EXCEPTION_POINTERS& pointers) : ErrorClass(pointers) { \
    ConstructMessage(messageTemplate, pointers);                             \
  }                                                                          \
  Class::~Class() = default

namespace MSWindows {

namespace {

using namespace Oxa::Core;

const char* const sACCESS_VIOLATION = "Illegal %1% virtual address %2$#x from %3$#x";
const char* const sWRITE_TO = "write to";
const char* const sREAD_FROM = "read from";
constexpr int iMAX_FRAMES = 100;

}  // namespace

SEHError::SEHError(const _EXCEPTION_POINTERS& pointers) : ErrorClass(std::string()), m_pointers(pointers) {
  SetSeverity(eCRITICAL);
}

SEHError::~SEHError() = default;

_EXCEPTION_POINTERS& SEHError::GetExceptionPointers() { return m_pointers; }

void SEHError::OnRethrow() {
  const boost::shared_ptr<Error> clone = Clone();
  SEHError& fault = static_cast<SEHError&>(*clone);
  fault.m_pointers = {};  // the stack that they lead to has been cleared away
  fault.Throw();
}

boost::shared_ptr<std::vector<CodeContext>> SEHError::CreateCallStack() {
  const AlertInFlight flight;
  if (!flight.MayProceed() || m_pointers.ContextRecord == nullptr) return {};
  try {
    const boost::shared_ptr<DebugHelp> help = DebugHelp::Instance();
    return help != nullptr ? help->CreateCallStack(*m_pointers.ContextRecord, iMAX_FRAMES) : nullptr;
  } catch (...) {
    Platform::LetCancellationPass();
    return {};  // the fault matters more than its call stack
  }
}

void SEHError::ConstructMessage(const std::string& messageTemplate, const _EXCEPTION_POINTERS& pointers) {
  const auto place = static_cast<std::uint32_t>(Platform::FactsOf(pointers).m_uPlace);
  StoreText(sMESSAGE, AlertMessage(messageTemplate.c_str(), place));
}

AccessViolation::AccessViolation(const _EXCEPTION_POINTERS& pointers) : ErrorClass(pointers) {
  const Platform::FaultFacts facts = Platform::FactsOf(pointers);
  StoreText(sMESSAGE, AlertMessage(sACCESS_VIOLATION, facts.m_bWrite ? sWRITE_TO : sREAD_FROM,
                                   facts.m_uTouched, facts.m_uPlace));
}

AccessViolation::~AccessViolation() = default;

OXA_DEFINE_FAULT(ArrayBoundsExceeded, "Attempted to access out of bounds array element from %1$#x");
OXA_DEFINE_FAULT(DatatypeMisalignment, "Attempted to access misaligned data from %1$#x");
OXA_DEFINE_FAULT(
    FloatDenormalOperand,
    "One of the operands in a floating-point operation from %1$#x is too small to represent as a "
    "standard floating-point value");
OXA_DEFINE_FAULT(FloatDivideByZero, "Floating point divide by zero attempted at %1$#x");
OXA_DEFINE_FAULT(FloatInvalidOperation, "Invalid floating point operation attempted at %1$#x");
OXA_DEFINE_FAULT(FloatOverflow, "Exceeded maximum exponent for float operation at %1$#x");
OXA_DEFINE_FAULT(FloatStackCheck, "Stack overflowed or underflowed due to operation at %1$#x");
OXA_DEFINE_FAULT(FloatUnderflow, "Result below minimum exponent for float operation at %1$#x");
OXA_DEFINE_FAULT(IllegalInstruction, "Attempted to execute an illegal instruction from %1$#x");
OXA_DEFINE_FAULT(InPageError, "Attempted to access unreachable page from %1$#x");
OXA_DEFINE_FAULT(IntDivideByZero, "Integer divide by zero attempted at %1$#x");
OXA_DEFINE_FAULT(IntOverflow, "Integer overflow due to operation at %1$#x");
OXA_DEFINE_FAULT(PrivateInstruction,
                 "Attempted to execute instruction not allowed in current machine mode from %1$#x");
OXA_DEFINE_FAULT(StackOverflow, "Stack overflow detected at %1$#x");

}  // namespace MSWindows
