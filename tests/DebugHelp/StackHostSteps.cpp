#include "StackHostSteps.h"

#include <Infrastructure/OxaCore/AlertListener.h>
#include <Infrastructure/OxaCore/AlertManager.h>
#include <Infrastructure/OxaCore/Log.h>
#include <Infrastructure/OxaCore/LogManager.h>
#include <Infrastructure/OxaCore/MicrosoftDebugHelp.h>

#include <sys/wait.h>
#include <unistd.h>

#include <iostream>
#include <new>

#include "Support/Allocations.h"

namespace StackHost {

namespace {

using namespace Oxa::Core;
using MSWindows::DebugHelp;
using TestSupport::FailAllocation;

// Whoever names a member in an explicit instantiation isn't asked whether it is private.
template <class Name, typename Name::Member pMember>
struct Opened {
  friend typename Name::Member MemberOf(Name /*name*/) { return pMember; }
};

struct ModuleInfo {
  using Member = const void* DebugHelp::*;
  friend Member MemberOf(ModuleInfo name);
};
struct SymbolNames {
  using Member = const void* DebugHelp::*;
  friend Member MemberOf(SymbolNames name);
};
struct FilterModules {
  using Member = bool DebugHelp::*;
  friend Member MemberOf(FilterModules name);
};
struct RequireModules {
  using Member = bool DebugHelp::*;
  friend Member MemberOf(RequireModules name);
};

template struct Opened<ModuleInfo, &DebugHelp::m_pSymGetModuleInfo64>;
template struct Opened<SymbolNames, &DebugHelp::m_pSymGetSymFromAddr64>;
template struct Opened<FilterModules, &DebugHelp::m_bFilterModules>;
template struct Opened<RequireModules, &DebugHelp::m_bRequireModuleInfo>;

constexpr unsigned long ulMOST_ALLOCATIONS = 200;

/// Counts the warnings of one kind.
class Failures : public AlertListener {
 public:
  Failures() { AlertManager::Instance()->AddAlertListener(*this); }
  ~Failures() override { AlertManager::Instance()->RemoveAlertListener(*this); }
  Failures(const Failures&) = delete;
  Failures& operator=(const Failures&) = delete;

  void WarningRaised(Warning& warning) override {
    if (dynamic_cast<DebugHelp::SymInitFailed*>(&warning) != nullptr) ++m_iCount;
  }

  int m_iCount = 0;
};

bool IsThere() {
  try {
    return DebugHelp::Instance() != nullptr;
  } catch (std::bad_alloc&) {
    return false;
  }
}

void UseShortOfMemory(unsigned long failing) {
  const Failures failures;
  bool happened = false;
  {
    const FailAllocation fail(failing);
    IsThere();
    happened = fail.Happened();
  }
  if (failures.m_iCount == 0) ::_exit(happened ? 0 : 1);
  const bool isThere = IsThere();
  std::cout << "told " << failures.m_iCount << ", unavailable " << DebugHelp::IsUnavailable() << ", there "
            << isThere << std::endl;
  ::_exit(0);
}

class Handler : public IOxaLogHandler {
 public:
  void OnLoggersChanged() override {}
  void HandleLogEntry(const OxaLogEntry& entry) override {
    if (entry.m_sLoggerPath == "Microsoft.DebugHelp" && entry.m_eSeverity != eLOG_WARNING)
      std::cout << "log " << entry.m_eSeverity << ": " << entry.m_sMessage << std::endl;
  }
};

constexpr unsigned uDENORMAL_MASK = 0x100;

}  // namespace

void Change(const std::string& field) {
  DebugHelp& help = *DebugHelp::Instance();
  if (field == "no-modules") help.*MemberOf(ModuleInfo()) = nullptr;
  if (field == "no-symbols") help.*MemberOf(SymbolNames()) = nullptr;
  if (field == "any-module") help.*MemberOf(RequireModules()) = false;
  if (field == "all-modules") help.*MemberOf(FilterModules()) = false;
}

void FirstUseShortOfMemory() {
  for (unsigned long failing = 1; failing < ulMOST_ALLOCATIONS; ++failing) {
    std::cout.flush();
    const pid_t child = ::fork();
    if (child == 0) UseShortOfMemory(failing);
    int status = 0;
    ::waitpid(child, &status, 0);
    if (!WIFEXITED(status)) std::cout << "a child died" << std::endl;
    if (WEXITSTATUS(status) == 1) return;
  }
}

void BeginAnewShortOfMemory() {
  const boost::shared_ptr<DebugHelp> help = DebugHelp::Instance();
  const Failures failures;
  int refused = 0;
  bool happened = true;
  for (unsigned long failing = 1; happened; ++failing) {
    const FailAllocation fail(failing);
    try {
      if (!help->Initialize()) ++refused;
    } catch (std::bad_alloc&) {
    }
    happened = fail.Happened();
  }
  std::cout << "refused " << refused << ", told " << failures.m_iCount << std::endl;
}

void ShowLog() {
  static Handler* const s_pHandler = new Handler;
  LogManager* const manager = LogManager::Instance();
  manager->SetBufferingMode(false);
  manager->RegisterHandler(s_pHandler);
}

void SetDenormalTrap() { __builtin_ia32_ldmxcsr(__builtin_ia32_stmxcsr() & ~uDENORMAL_MASK); }
bool HasDenormalTrap() { return (__builtin_ia32_stmxcsr() & uDENORMAL_MASK) == 0; }

}  // namespace StackHost
