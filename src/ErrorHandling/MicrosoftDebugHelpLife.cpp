#include "ErrorHandling/MicrosoftDebugHelpLife.h"

#include <Infrastructure/OxaCore/Lock.h>

#include <atomic>
#include <new>
#include <vector>

#include "ErrorHandling/AlertTraffic.h"
#include "ErrorHandling/Hooks.h"
#include "Platform/Dump.h"
#include "Platform/Faults.h"
#include "Platform/FloatTraps.h"
#include "Platform/Kill.h"
#include "Platform/Storage.h"

namespace MSWindows {

namespace Platform = Oxa::Core::Platform;
using Oxa::Core::AlertInFlight;
using Oxa::Core::CodeContext;
using Oxa::Core::Hooks;
using Oxa::Core::Lock;

namespace {

enum EState { eNOT_LOADED, eUNTRIED, eTHERE, eFAILED, eGONE };

std::atomic<int> s_eState{eNOT_LOADED};
std::atomic<bool> s_bBusy{false};

// What a thread raises while it makes the object has no call stack.
class Making {
 public:
  Making() noexcept { Platform::SetThreadFlag(Platform::EThreadFlag::eREADS_STACK, true); }
  Making(const Making&) = delete;
  Making& operator=(const Making&) = delete;
  ~Making() { Platform::SetThreadFlag(Platform::EThreadFlag::eREADS_STACK, false); }
};

using Frames = boost::shared_ptr<std::vector<CodeContext>>;

Frames WalkStack(int maxFrames) {
  const AlertInFlight flight;
  if (!flight.MayProceed()) return Frames();
  try {
    const boost::shared_ptr<DebugHelp> help = DebugHelp::Instance();
    return help ? help->CreateCallStack(maxFrames) : Frames();
  } catch (...) {
    Platform::LetCancellationPass();
    return Frames();  // the error matters more than its call stack
  }
}

}  // namespace

struct DebugHelpLife::Attempt {
  boost::shared_ptr<DebugHelp> m_spMade;
  DebugHelpTrouble m_trouble;
};

void DebugHelpLife::Connect(Hooks& hooks) { hooks.walkStack = &WalkStack; }

void DebugHelpLife::Begin() {
  s_eState.store(eUNTRIED);
  Platform::CallInForkedChild(&OnFork);
}

// A thread that exists in the parent only may hold the lock. What it was changing stays half done.
void DebugHelpLife::OnFork() {
  ::new (static_cast<void*>(&DebugHelp::s_mutex)) Oxa::Core::Mutex;
  if (s_bBusy.load()) s_eState.store(eGONE);
  Platform::ForgetDumpsOfParent();
}

DebugHelpLife::Busy::Busy() noexcept { s_bBusy.store(true); }
DebugHelpLife::Busy::~Busy() { s_bBusy.store(false); }

bool DebugHelpLife::HasFailed() noexcept { return s_eState.load(std::memory_order_relaxed) == eFAILED; }

// Nobody waits for anybody here. A thread that loads a library may hold the lock of the system's loader, and raise.
DebugHelpLife::Attempt DebugHelpLife::Try() {
  const Making making;
  const Platform::HoldFloatTraps untrapped;
  Attempt attempt;
  const auto module = LoadDebugHelpDll();
  attempt.m_trouble.m_bLoadFailed = module == nullptr;
  if (module == nullptr) return attempt;
  attempt.m_spMade.reset(new DebugHelp(module));
  attempt.m_trouble = attempt.m_spMade->Begin();
  return attempt;
}

// False if another thread was faster; its object is the one then.
bool DebugHelpLife::Settle(Attempt& attempt) {
  const Platform::HoldKill alive;
  const Lock lock(DebugHelp::s_mutex);
  const Busy busy;
  const bool first = s_eState.load() == eUNTRIED;
  if (first) {
    const bool usable = attempt.m_spMade && attempt.m_spMade->m_bInitialized;
    if (usable) DebugHelp::s_spInstance = attempt.m_spMade;
    s_eState.store(usable ? eTHERE : eFAILED);
  }
  return first;
}

// What listeners, and the log, raise meanwhile finds a settled state.
void DebugHelpLife::Tell(const Attempt& attempt) {
  if (attempt.m_spMade) TellLoaded(attempt.m_spMade->m_hModule);
  attempt.m_trouble.Tell();
}

boost::shared_ptr<DebugHelp> DebugHelpLife::GetInstance() {
  if (Platform::HasThreadFlag(Platform::EThreadFlag::eREADS_STACK)) return boost::shared_ptr<DebugHelp>();
  if (s_eState.load() == eUNTRIED) {
    Attempt attempt = Try();
    if (Settle(attempt)) Tell(attempt);
  }
  if (s_eState.load() != eTHERE) return boost::shared_ptr<DebugHelp>();
  const Platform::HoldKill alive;
  const Lock lock(DebugHelp::s_mutex);
  return s_eState.load() == eTHERE ? DebugHelp::s_spInstance : boost::shared_ptr<DebugHelp>();
}

void DebugHelpLife::End() {
  s_eState.store(eGONE);
  if (!Platform::IsBeingUnmapped()) return;
  boost::shared_ptr<DebugHelp> last;
  const Platform::HoldKill alive;
  const Lock lock(DebugHelp::s_mutex);
  last.swap(DebugHelp::s_spInstance);
}

}  // namespace MSWindows
