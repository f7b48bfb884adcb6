#include "ErrorHandling/MicrosoftDebugHelpLife.h"

#include <Infrastructure/OxaCore/Lock.h>

#include <atomic>
#include <vector>

#include "ErrorHandling/AlertTraffic.h"
#include "ErrorHandling/Hooks.h"
#include "Platform/Faults.h"
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
  std::string m_sPath;
  DebugHelpTrouble m_trouble;
};

void DebugHelpLife::Connect(Hooks& hooks) { hooks.walkStack = &WalkStack; }

void DebugHelpLife::Begin() { s_eState.store(eUNTRIED); }

bool DebugHelpLife::HasFailed() noexcept { return s_eState.load(std::memory_order_relaxed) == eFAILED; }

// Nobody waits for anybody here. A thread that loads a library may hold the lock of the system's loader, and raise.
DebugHelpLife::Attempt DebugHelpLife::Try() {
  const Making making;
  Attempt attempt;
  HINSTANCE const module = LoadDebugHelpDll(attempt.m_sPath);
  attempt.m_trouble.m_bLoadFailed = module == nullptr;
  if (module == nullptr) return attempt;
  attempt.m_spMade.reset(new DebugHelp(module));
  attempt.m_trouble = attempt.m_spMade->Begin();
  if (!attempt.m_spMade->m_bInitialized) attempt.m_spMade.reset();
  return attempt;
}

// False if another thread was faster; its object is the one then.
bool DebugHelpLife::Settle(Attempt& attempt) {
  const Lock lock(DebugHelp::s_mutex);
  const bool first = s_eState.load() == eUNTRIED;
  if (first) {
    DebugHelp::s_spInstance = attempt.m_spMade;
    s_eState.store(attempt.m_spMade ? eTHERE : eFAILED);
  }
  return first;
}

boost::shared_ptr<DebugHelp> DebugHelpLife::GetInstance() {
  if (Platform::HasThreadFlag(Platform::EThreadFlag::eREADS_STACK)) return boost::shared_ptr<DebugHelp>();
  if (s_eState.load() == eUNTRIED) {
    Attempt attempt = Try();
    if (Settle(attempt)) attempt.m_trouble.Tell();
  }
  if (s_eState.load() != eTHERE) return boost::shared_ptr<DebugHelp>();
  const Lock lock(DebugHelp::s_mutex);
  return DebugHelp::s_spInstance;
}

void DebugHelpLife::End() {
  s_eState.store(eGONE);
  if (!Platform::IsBeingUnmapped()) return;
  boost::shared_ptr<DebugHelp> last;
  const Lock lock(DebugHelp::s_mutex);
  last.swap(DebugHelp::s_spInstance);
}

}  // namespace MSWindows
