#include <Infrastructure/OxaCore/MicrosoftDebugHelp.h>

#include <Infrastructure/OxaCore/Lock.h>

#include "ErrorHandling/FunctionName.h"
#include "ErrorHandling/MicrosoftDebugHelpLife.h"
#include "Platform/CallStacks.h"
#include "Platform/Kill.h"
#include "Platform/Libraries.h"

namespace MSWindows {

namespace Platform = Oxa::Core::Platform;
using Oxa::Core::Lock;

namespace {

const char* const sLOG_NAME = "Microsoft.DebugHelp";
const char* const sSYM_SET_OPTIONS = "SymSetOptions";
const char* const sSYM_INITIALIZE = "SymInitialize";

const char* const sIGNORED_SOURCES[] = {
    "afxmem.cpp", "dbgheap.c", "new.cpp", "microsoftdebughelp.h", "microsoftdebughelp.cpp",
    "microsoftsehadapter.h", "microsoftsehadapter.cpp", "error.cpp", "error.h", "alertinfo.h",
    "alertinfo.cpp", "alertmanager.h", "alertmanager.cpp", "callstack.h", "callstack.cpp", "shared_ptr.hpp",
    "appmodul.cpp", "crtexe.c",
    // What stands between a failure and its call stack besides: raise sites, hooks, and the walk itself.
    "raisesite.h", "raisesite.cpp", "microsoftdebughelplife.cpp", "microsoftdebughelpstack.cpp",
    "microsoftsehadaptererrors.cpp", "faultroad.cpp", "stackwalk.cpp"};

const char* const sIGNORED_MODULES[] = {"mfc71",  "mfc71d",  "mfc71u", "mfc71ud", "mfc40",  "mfc40u",
                                        "mfc40d", "mfc40ud", "mfc42",  "mfc42u",  "mfc42d", "mfc42ud"};

std::string FunctionOf(const char* signature) { return Oxa::Core::FunctionName(signature); }

}  // namespace

boost::shared_ptr<DebugHelp> DebugHelp::Instance() { return DebugHelpLife::GetInstance(); }

bool DebugHelp::IsUnavailable() noexcept { return DebugHelpLife::HasFailed(); }

DebugHelp::DebugHelp(HINSTANCE module)
    : m_hModule(module),
      m_pProcess(nullptr),
      m_bInitialized(false),
      m_bFilterModules(true),
      m_bRequireModuleInfo(true) {
  ResolveFunctions();
  FillIgnored();
}

DebugHelp::~DebugHelp() {
  Platform::CloseSymbolReader(m_pProcess);
  if (m_hModule != nullptr) Platform::CloseLibrary(m_hModule);
}

void DebugHelp::ResolveFunctions() {
  const auto find = [this](const char* name) { return Platform::FindSymbolFunction(m_hModule, name); };
  m_pSymCleanup = find("SymCleanup");
  m_pSymFunctionTableAccess64 = find("SymFunctionTableAccess64");
  m_pSymGetLineFromAddr64 = find("SymGetLineFromAddr64");
  m_pSymGetModuleBase64 = find("SymGetModuleBase64");
  m_pSymGetModuleInfo64 = find("SymGetModuleInfo64");
  m_pSymGetOptions = find("SymGetOptions");
  m_pSymGetSymFromAddr64 = find("SymGetSymFromAddr64");
  m_pSymInitialize = find(sSYM_INITIALIZE);
  m_pSymSetOptions = find(sSYM_SET_OPTIONS);
  m_pStackWalk64 = find("StackWalk64");
  m_pUnDecorateSymbolName = find("UnDecorateSymbolName");
  m_pSymGetSearchPath = find("SymGetSearchPath");
  m_pSymSetContext = find("SymSetContext");
  m_pSymEnumSymbols = find("SymEnumSymbols");
  m_pSymGetTypeInfo = find("SymGetTypeInfo");
  m_pMiniDumpWriteDump = find("MiniDumpWriteDump");
}

void DebugHelp::FillIgnored() {
  for (const char* const name : sIGNORED_SOURCES) m_ignoredSources.insert(name);
  for (const char* const name : sIGNORED_MODULES) m_ignoredModules.insert(name);
}

bool DebugHelp::OpenSymbols() {
  Platform::CloseSymbolReader(m_pProcess);
  m_pProcess = Platform::OpenSymbolReader(m_hModule, ComposeSymbolPath().c_str(), &FunctionOf);
  m_bInitialized = m_pProcess != nullptr;
  return m_bInitialized;
}

bool DebugHelp::Initialize() {
  DebugHelpTrouble trouble;
  bool initialized = false;
  {
    const Platform::HoldKill alive;
    const Lock lock(s_mutex);
    const DebugHelpLife::Busy busy;
    trouble = Begin();
    initialized = m_bInitialized;
  }
  trouble.Tell();
  return initialized;
}

DebugHelpTrouble DebugHelp::Begin() {
  DebugHelpTrouble trouble;
  if (m_pSymSetOptions == nullptr) trouble.m_missing.push_back(sSYM_SET_OPTIONS);
  if (m_pSymInitialize == nullptr) trouble.m_missing.push_back(sSYM_INITIALIZE);
  if (trouble.m_missing.empty()) trouble.m_bInitFailed = !OpenSymbols();
  return trouble;
}

void DebugHelpTrouble::Tell() const {
  if (m_bLoadFailed) OXA_RAISE_WARNING(sLOG_NAME, DebugHelp::LoadFailed());
  for (const char* const function : m_missing)
    OXA_RAISE_WARNING(sLOG_NAME, DebugHelp::FunctionNotFound(function));
  if (m_bInitFailed) OXA_RAISE_WARNING(sLOG_NAME, DebugHelp::SymInitFailed());
}

}  // namespace MSWindows
