#include <Infrastructure/OxaCore/Error.h>

#include <Infrastructure/OxaCore/Warning.h>

#include <string_view>

#include "Core/LibraryState.h"
#include "ErrorHandling/AlertTraffic.h"
#include "ErrorHandling/Hooks.h"
#include "ErrorHandling/LiveRaises.h"
#include "Platform/Faults.h"
#include "Platform/Symbols.h"

namespace Oxa::Core {

namespace {

const char* const sRAISED_DURING_SHUTDOWN = "Error Raised During OxaCore Shutdown";
const char* const sRECURSION_HALTED =
    "Detected potential infinite error recursion, halting recursion and throwing original error";
const char* const sGENERIC_HALT =
    "Detected potential infinite error recursion, halted recursion and threw this generic error";
const char* const sLOG_NAME_OF_SLICING = "Oxa.Core.Error";
constexpr std::string_view sDERIVED = "=>";
constexpr int iMAX_FRAMES = 100;

[[noreturn]] void HaltRecursion(Error& error) {
  TheHooks().writeAlert(error, sRECURSION_HALTED);
  Error first(AlertInfo::eERROR);
  if (LiveRaises::ForgetThisThread(first)) throw Error(first);
  throw LogicError(sGENERIC_HALT);
}

// False if the library began to unload meanwhile.
bool TellRaised(Error& error) {
  const AlertInFlight flight;
  if (!flight.MayProceed()) return false;
  if (flight.NeverEnds()) {
    TheHooks().writeAlert(error, sLISTENERS_NEVER_END);
  } else {
    TheHooks().errorRaised(error);
  }
  return true;
}

bool SettledInPlace(Error& error) {
  const AlertInFlight flight;
  return flight.MayProceed() && TheHooks().settleInPlace(error);
}

// Called from destructors. A listener that raises and handles errors of its own would be told of those in turn,
// for ever.
void TellHandled(Error& error) noexcept {
  const Platform::HoldCancellation hold;
  const AlertInFlight flight;
  if (!flight.MayProceed()) return;
  if (flight.NeverEnds()) {
    TheHooks().writeAlert(error, sLISTENERS_NEVER_END);
  } else {
    TheHooks().errorHandled(error);
  }
}

// Takes the count back if an exception keeps the raise from coming about.
class CountedRaise {
 public:
  explicit CountedRaise(Error& error) : m_error(error), m_iDepth(LiveRaises::Add(error)) {}
  CountedRaise(const CountedRaise&) = delete;
  CountedRaise& operator=(const CountedRaise&) = delete;
  ~CountedRaise() {
    if (!m_bKept) LiveRaises::Remove(m_error);
  }

  int Depth() const { return m_iDepth; }
  void Keep() { m_bKept = true; }

 private:
  Error& m_error;
  int m_iDepth;
  bool m_bKept = false;
};

}  // namespace

Error::Error(ESeverity severity) {
  SetSeverity(severity);
  try {
    SetData(sINHERITANCE, Platform::DecoratedName(typeid(Error)));
  } catch (...) {
    // An error without its inheritance is still an error.
  }
}

Error::Error(const AlertData& data, const std::vector<CodeContext>& callStack,
             const std::vector<CodeContext>& unwindStack)
    : AlertInfo(data, callStack, unwindStack) {}

Error::Error(const Error& other) : AlertInfo(other), std::exception(other), m_bFatal(other.m_bFatal) {
  TakeRaisedMark(other);
}

Error& Error::operator=(const Error& other) {
  Copy(other, true);
  return *this;
}

Error::~Error() { EndRaise(); }

std::string Error::XMLElementName() { return "Error"; }

boost::shared_ptr<Error> Error::Clone() { return boost::shared_ptr<Error>(new Error(*this)); }

boost::shared_ptr<Error> Error::CloneUnraised() {
  // Kept aside meanwhile: a clone that can't be finished must not end the raise.
  struct MarkAside {
    explicit MarkAside(Error& owner) : m_owner(owner), m_keeper(eERROR) { m_keeper.TakeRaisedMark(owner); }
    MarkAside(const MarkAside&) = delete;
    MarkAside& operator=(const MarkAside&) = delete;
    ~MarkAside() { m_owner.TakeRaisedMark(m_keeper); }
    Error& m_owner;
    Error m_keeper;
  };
  const MarkAside aside(*this);
  return Clone();
}

const char* Error::what() const noexcept { return GetData(sMESSAGE).c_str(); }

void Error::Copy(const Error& other, bool transferRaised) {
  if (this == &other && transferRaised) return;
  EndRaise();
  AlertInfo::operator=(other);
  m_bFatal = other.m_bFatal;
  if (transferRaised) TakeRaisedMark(other);
}

void Error::TakeRaisedMark(const Error& other) noexcept {
  if (other.m_bRaised) LiveRaises::MoveMark(other, *this);
}

void Error::EndRaise() noexcept {
  if (!m_bRaised) return;
  // The mark goes first: a listener that copies the error must not have it told once more.
  LiveRaises::Remove(*this);
  if (!m_bFatal) TellHandled(*this);
}

bool Error::GetRaisedStatus() const { return m_bRaised; }

void Error::RaiseError(const CodeContext& context, const std::string& logName, bool inPlace) {
  PushContext(context);
  if (Announce(logName, inPlace)) Throw();
}

bool Error::Announce(const std::string& logName, bool inPlace) {
  StoreText(sLOG_NAME, logName);
  if (IsExitingAfterFatalError() || IsLibraryUnloading()) {
    TheHooks().writeAlert(*this, sRAISED_DURING_SHUTDOWN);
    return false;
  }
  if (m_bRaised) return true;
  CountedRaise counted(*this);
  if (counted.Depth() >= g_iMAX_ERROR_RECURSION_DEPTH) HaltRecursion(*this);
  AddCallStack(CreateCallStack());
  m_bRaised = true;
  counted.Keep();
  if (!TellRaised(*this)) {
    TheHooks().writeAlert(*this, sRAISED_DURING_SHUTDOWN);
    return false;
  }
  return !inPlace || !SettledInPlace(*this);
}

void Error::Rethrow() {
  OnRethrow();
  throw;
}

void Error::Throw() {
  if (typeid(*this) != typeid(Error)) {
    OXA_RAISE_WARNING(sLOG_NAME_OF_SLICING, ErrorSlicedOnThrow(Platform::UndecoratedName(typeid(*this))));
  }
  throw Error(*this);
}

void Error::OnRethrow() {}

boost::shared_ptr<std::vector<CodeContext>> Error::CreateCallStack() {
  return TheHooks().walkStack(iMAX_FRAMES);
}

void Error::AppendInheritance(const std::type_info& type) noexcept {
  try {
    const std::string& bases = GetData(sINHERITANCE);
    const std::string name = Platform::DecoratedName(type);
    std::string chain;
    chain.reserve(bases.size() + sDERIVED.size() + name.size());
    SetData(sINHERITANCE, chain.append(bases).append(sDERIVED).append(name));
  } catch (...) {
    // Handlers of this class will not be found; the error itself goes on.
  }
}

void Error::SetCategoryAndMessage(const std::string& category, const std::string& message) noexcept {
  StoreText(sCATEGORY, category);
  if (!message.empty()) StoreText(sMESSAGE, message);
}

}  // namespace Oxa::Core
