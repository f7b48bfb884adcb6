#include "ErrorHandling/MicrosoftDebugHelpDump.h"

#include <Infrastructure/OxaCore/Lock.h>
#include <Infrastructure/OxaCore/MicrosoftDebugHelp.h>
#include <Infrastructure/OxaCore/PathName.h>

#include "ErrorHandling/SystemErrorMessage.h"
#include "Platform/Dump.h"
#include "Platform/Kill.h"

namespace Oxa::Core {

namespace {

const char* const sLOG_NAME = "Microsoft.DebugHelp";
const char* const sMINI_DUMP_WRITE_DUMP = "MiniDumpWriteDump";

/// Half of what a dying process has for everything.
constexpr int iMOST_MILLISECONDS = 5000;

// What the filter is asked about, and what it is told of a module, in the numbers of the file format.
enum ECallback : unsigned int {
  eMODULE_CALLBACK = 0,
  eTHREAD_CALLBACK = 1,
  eTHREAD_EX_CALLBACK = 2,
  eINCLUDE_THREAD_CALLBACK = 3,
  eINCLUDE_MODULE_CALLBACK = 4
};
constexpr unsigned int uWRITE_MODULE = 0x1;
constexpr unsigned int uREFERENCED_BY_MEMORY = 0x10;

}  // namespace

unsigned int DumpContentsOf(EDumpPolicy policy) noexcept {
  using namespace Platform;
  switch (policy) {
    case eDUMP_REFERENCED_MEMORY:
      return eDUMP_SCAN_MEMORY | eDUMP_WITH_INDIRECTLY_REFERENCED_MEMORY;
    case eDUMP_PRIVATE_MEMORY:
      return eDUMP_WITH_DATA_SEGS | eDUMP_WITH_HANDLE_DATA | eDUMP_WITH_UNLOADED_MODULES |
             eDUMP_WITH_PRIVATE_READ_WRITE_MEMORY | eDUMP_WITH_FULL_MEMORY_INFO | eDUMP_WITH_THREAD_INFO;
    case eDUMP_FULL_MEMORY:
      return eDUMP_WITH_FULL_MEMORY | eDUMP_WITH_HANDLE_DATA | eDUMP_WITH_UNLOADED_MODULES |
             eDUMP_WITH_FULL_MEMORY_INFO | eDUMP_WITH_THREAD_INFO;
    default:
      return 0;
  }
}

bool FilterDump(unsigned int callbackType, unsigned int& flags, void* policy) noexcept {
  const bool sparse = *static_cast<const EDumpPolicy*>(policy) == eDUMP_REFERENCED_MEMORY;
  switch (callbackType) {
    case eMODULE_CALLBACK:
      if (sparse && (flags & uREFERENCED_BY_MEMORY) == 0) flags &= ~uWRITE_MODULE;
      return true;
    case eTHREAD_CALLBACK:
    case eTHREAD_EX_CALLBACK:
    case eINCLUDE_THREAD_CALLBACK:
    case eINCLUDE_MODULE_CALLBACK:
      return true;
    default:
      return false;
  }
}

int WriteDumpByPolicy(const char* path, const _EXCEPTION_POINTERS* pointers, EDumpPolicy policy) noexcept {
  return Platform::WriteDump(path, pointers, DumpContentsOf(policy), &FilterDump, &policy,
                             iMOST_MILLISECONDS);
}

}  // namespace Oxa::Core

namespace MSWindows {

using Oxa::Core::EDumpPolicy;
using Oxa::Core::Lock;
using Oxa::Core::PathName;

// What there is to tell is told when the mutex is free again: listeners may do as they like.
void DebugHelp::CreateMiniDump(PathName& path, _EXCEPTION_POINTERS& pointers, EDumpPolicy policy) {
  if (m_pMiniDumpWriteDump == nullptr) {
    OXA_RAISE_WARNING(Oxa::Core::sLOG_NAME, FunctionNotFound(Oxa::Core::sMINI_DUMP_WRITE_DUMP));
    return;
  }
  int code = 0;
  {
    const Oxa::Core::Platform::HoldKill alive;  // a lock whose owner has been killed is never had again
    const Lock lock(s_mutex);
    code = Oxa::Core::WriteDumpByPolicy(path, &pointers, policy);
  }
  if (code == 0) return;
  const std::string reason = Oxa::Core::SystemErrorMessage(static_cast<unsigned long>(code));
  OXA_RAISE_WARNING(Oxa::Core::sLOG_NAME, CreateMiniDumpFileFailed(path, reason));
}

}  // namespace MSWindows
