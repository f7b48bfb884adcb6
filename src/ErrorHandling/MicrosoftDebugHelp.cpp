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

struct DebugHelp::FunctionField {
  Function DebugHelp::*m_pField;
  const char* m_pName;
};

const DebugHelp::FunctionField DebugHelp::s_functions[] = {
    {&DebugHelp::m_pSymCleanup, "SymCleanup"},
    {&DebugHelp::m_pSymFunctionTableAccess64, "SymFunctionTableAccess64"},
    {&DebugHelp::m_pSymGetLineFromAddr64, "SymGetLineFromAddr64"},
    {&DebugHelp::m_pSymGetModuleBase64, "SymGetModuleBase64"},
    {&DebugHelp::m_pSymGetModuleInfo64, "SymGetModuleInfo64"},
    {&DebugHelp::m_pSymGetOptions, "SymGetOptions"},
    {&DebugHelp::m_pSymGetSymFromAddr64, "SymGetSymFromAddr64"},
    {&DebugHelp::m_pSymInitialize, "SymInitialize"},
    {&DebugHelp::m_pSymSetOptions, "SymSetOptions"},
    {&DebugHelp::m_pStackWalk64, "StackWalk64"},
    {&DebugHelp::m_pUnDecorateSymbolName, "UnDecorateSymbolName"},
    {&DebugHelp::m_pSymGetSearchPath, "SymGetSearchPath"},
    {&DebugHelp::m_pSymSetContext, "SymSetContext"},
    {&DebugHelp::m_pSymEnumSymbols, "SymEnumSymbols"},
    {&DebugHelp::m_pSymGetTypeInfo, "SymGetTypeInfo"},
    {&DebugHelp::m_pMiniDumpWriteDump, "MiniDumpWriteDump"},
};

void DebugHelp::ResolveFunctions() {
  for (const FunctionField& function : s_functions)
    this->*function.m_pField = Platform::FindSymbolFunction(m_hModule, function.m_pName);
}

void DebugHelp::TellIfMissing(Function DebugHelp::*field, DebugHelpTrouble& trouble) const {
  if (this->*field != nullptr) return;
  for (const FunctionField& function : s_functions)
    if (function.m_pField == field) trouble.m_missing.push_back(function.m_pName);
}

void DebugHelp::FillIgnored() {
  for (const char* const name : sIGNORED_SOURCES) m_ignoredSources.insert(name);
  for (const char* const name : sIGNORED_MODULES) m_ignoredModules.insert(name);
}

bool DebugHelp::OpenSymbols() {
  const std::string path = ComposeSymbolPath();
  Platform::CloseSymbolReader(m_pProcess);
  m_pProcess = Platform::OpenSymbolReader(m_hModule, path.c_str(), &FunctionOf);
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
  TellIfMissing(&DebugHelp::m_pSymSetOptions, trouble);
  TellIfMissing(&DebugHelp::m_pSymInitialize, trouble);
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
