#include <Infrastructure/OxaCore/MicrosoftDebugHelp.h>

namespace MSWindows {

using Oxa::Core::AlertMessage;
using Oxa::Core::Warning;

namespace {

const char* const sLOAD_FAILED = "Failed to load dbghelp.dll, call stack and minidumps unavailable";
const char* const sFUNCTION_NOT_FOUND = "Failed to find %1% in the loaded dbghelp.dll";
const char* const sSYM_INIT_FAILED = "Failed to initialize symbols with SymInitialize, symbols unavailable";
const char* const sCREATE_FILE_FAILED =
    "Failed to create minidump file named:\n\n%1%\n\nwith the following error:\n\n%2%";
const char* const sUNAVAILABLE = "No dbghelp.dll available to generate %1%";

}  // namespace

DebugHelp::LoadFailed::LoadFailed() : Warning(sLOAD_FAILED) {}
DebugHelp::LoadFailed::~LoadFailed() = default;

DebugHelp::FunctionNotFound::FunctionNotFound(const std::string& function)
    : Warning(AlertMessage(sFUNCTION_NOT_FOUND, function)) {}
DebugHelp::FunctionNotFound::~FunctionNotFound() = default;

DebugHelp::SymInitFailed::SymInitFailed() : Warning(sSYM_INIT_FAILED) {}
DebugHelp::SymInitFailed::~SymInitFailed() = default;

DebugHelp::CreateMiniDumpFileFailed::CreateMiniDumpFileFailed(const std::string& path,
                                                              const std::string& reason)
    : Warning(AlertMessage(sCREATE_FILE_FAILED, path, reason)) {}
DebugHelp::CreateMiniDumpFileFailed::~CreateMiniDumpFileFailed() = default;

DebugHelp::Unavailable::Unavailable(const std::string& what) : Warning(AlertMessage(sUNAVAILABLE, what)) {}
DebugHelp::Unavailable::~Unavailable() = default;

}  // namespace MSWindows
