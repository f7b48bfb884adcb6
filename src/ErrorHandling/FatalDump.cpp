#include "ErrorHandling/FatalDump.h"

#include <Infrastructure/OxaCore/AlertManager.h>
#include <Infrastructure/OxaCore/FatalErrorWarnings.h>
#include <Infrastructure/OxaCore/MicrosoftDebugHelp.h>

#include <atomic>
#include <cerrno>

#include "ErrorHandling/AlertManagerHooks.h"
#include "ErrorHandling/FatalErrorReport.h"
#include "ErrorHandling/MicrosoftDebugHelpDump.h"
#include "ErrorHandling/SystemErrorMessage.h"

#include "Platform/Clock.h"
#include "Platform/Faults.h"

namespace Oxa::Core {

namespace {

const char* const sLOG_NAME = "Oxa.Core.OxaUnhandledExceptionFilter";
const char* const sLOG_NAME_OF_DUMPS = "Microsoft.DebugHelp";
const char* const sDUMP = "CrashMiniDump";
const char* const sEXTENSION = ".dmp";
const char* const sFIRST_DUMP = "CrashMiniDump.dmp";

constexpr unsigned uSLICE_MS = 5;
constexpr unsigned uMOST_SLICES = 1000;

std::atomic<int> s_iEntries{0};

EDumpPolicy PolicyOfDumps() noexcept {
  AlertManager* const manager = AlertManager::Instance();
  return manager != nullptr ? manager->GetDumpPolicy() : eDUMP_REFERENCED_MEMORY;
}

void DescribeCause(FatalErrorCause& cause, const _EXCEPTION_POINTERS& pointers) noexcept {
  const Platform::FaultFacts facts = Platform::FactsOf(pointers);
  if (facts.m_uCode == 0) {
    cause.Add("Nothing caught what was raised at ").AddHex(facts.m_uPlace);
    return;
  }
  cause.Add("Fault ").AddHex(facts.m_uCode).Add(" at ").AddHex(facts.m_uPlace);
  if (facts.m_uCode != Platform::eACCESS_VIOLATION) return;
  cause.Add(facts.m_bWrite ? ", write to " : ", read from ").AddHex(facts.m_uTouched);
}

void WriteCause(const char* folder, const _EXCEPTION_POINTERS& pointers) noexcept {
  FatalErrorCause cause;
  DescribeCause(cause, pointers);
  WriteFirstWords(folder, AlertHooks::FatalErrorInfo(), cause);
}

template <class Raise>
void Guarded(const Raise& raise) {
  try {
    raise();
  } catch (...) {
    Platform::LetCancellationPass();
  }
}

}  // namespace

void FatalDump::Write(const _EXCEPTION_POINTERS& pointers) noexcept {
  m_iEntries = s_iEntries.fetch_add(1) + 1;
  if (AlertManager::GetMaxFatalErrorReports() < m_iEntries) {
    m_eOutcome = eHALTED;
    return;
  }
  FindFolder();
  WriteCause(m_path.Get(), pointers);
  if (MSWindows::DebugHelp::IsUnavailable()) {
    m_eOutcome = eUNAVAILABLE;
    return;
  }
  ComposeName();
  WriteDump(pointers);
}

void FatalDump::FindFolder() noexcept {
  MakeFatalErrorFolder(m_folder);
  switch (m_folder.m_eOutcome) {
    case FatalErrorFolder::eMADE:
      m_path = m_folder.m_wanted;
      break;
    case FatalErrorFolder::eFALLBACK:
      m_path = m_folder.m_fallback;
      break;
    case FatalErrorFolder::eNONE:
      WorkingFolder(m_path);
      break;
  }
}

void FatalDump::ComposeName() noexcept {
  m_dump = m_path;
  m_dump.Add(sDUMP);
  if (m_iEntries > 1) m_dump.AddNumber(static_cast<unsigned>(m_iEntries));
  m_dump.Add(sEXTENSION);
}

// Threads that die together take turns.
void FatalDump::WriteDump(const _EXCEPTION_POINTERS& pointers) noexcept {
  for (unsigned slices = 0; slices < uMOST_SLICES; ++slices) {
    m_iCode = WriteDumpByPolicy(m_dump.Get(), &pointers, PolicyOfDumps());
    if (m_iCode != EBUSY) return;
    Platform::SleepMilliseconds(uSLICE_MS);
  }
}

void FatalDump::Tell() const noexcept {
  switch (m_eOutcome) {
    case eHALTED:
      Guarded([this] { OXA_RAISE_WARNING(sLOG_NAME, HaltingUncaughtErrorRecursion(m_iEntries)); });
      break;
    case eUNAVAILABLE:  // the steps of the report tell of the folder
      Guarded([] { OXA_RAISE_WARNING(sLOG_NAME, MSWindows::DebugHelp::Unavailable(sFIRST_DUMP)); });
      break;
    case eTRIED:
      TellOfDump();
      break;
  }
}

void FatalDump::TellOfDump() const {
  Guarded([this] {
    std::string path;
    if (TellFatalErrorFolder(m_folder, path)) return;
    OXA_RAISE_WARNING(sLOG_NAME, MSWindows::FallbackMinidumpPath(m_path.Get()));
  });
  if (m_iCode == 0) return;
  Guarded([this] {
    const std::string reason = SystemErrorMessage(static_cast<unsigned long>(m_iCode));
    OXA_RAISE_WARNING(sLOG_NAME_OF_DUMPS,
                      MSWindows::DebugHelp::CreateMiniDumpFileFailed(m_dump.Get(), reason));
  });
}

}  // namespace Oxa::Core
