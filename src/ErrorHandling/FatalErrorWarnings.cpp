#include <Infrastructure/OxaCore/FatalErrorWarnings.h>

namespace Oxa::Core {

namespace {

const char* const sINVALID_PATH = "Attempted to set an invalid fatal error base path of:\n%1%";
const char* const sCREATE_FAILED = "Failed to create fatal error directory named:\n%1%";
const char* const sFALLBACK = "Storing fatal error information in fallback path of\n%1%";
const char* const sOPEN_FAILED = "Failed to open file to generate the XML error report named:\n%1%";
const char* const sHALTING =
    "Potential infinite error recursion was halted in OxaUnhandledExceptionFilter after it was reentered %1% "
    "times";
const char* const sFALLBACK_OF_DUMP = "Storing minidump in fallback path of\n%1%";

}  // namespace

InvalidFatalErrorPath::InvalidFatalErrorPath(const std::string& path)
    : Warning(AlertMessage(sINVALID_PATH, path)) {}
InvalidFatalErrorPath::~InvalidFatalErrorPath() = default;

CreateFatalErrorPathFailed::CreateFatalErrorPathFailed(const std::string& path)
    : Warning(AlertMessage(sCREATE_FAILED, path)) {}
CreateFatalErrorPathFailed::~CreateFatalErrorPathFailed() = default;

FallbackFatalErrorPath::FallbackFatalErrorPath(const std::string& path)
    : Warning(AlertMessage(sFALLBACK, path)) {}
FallbackFatalErrorPath::~FallbackFatalErrorPath() = default;

OpenXMLErrorReportFailed::OpenXMLErrorReportFailed(const std::string& fileName)
    : Warning(AlertMessage(sOPEN_FAILED, fileName)) {}
OpenXMLErrorReportFailed::~OpenXMLErrorReportFailed() = default;

HaltingUncaughtErrorRecursion::HaltingUncaughtErrorRecursion(int entries)
    : Warning(AlertMessage(sHALTING, entries)) {}
HaltingUncaughtErrorRecursion::~HaltingUncaughtErrorRecursion() = default;

}  // namespace Oxa::Core

namespace MSWindows {

FallbackMinidumpPath::FallbackMinidumpPath(const std::string& path)
    : Warning(Oxa::Core::AlertMessage(Oxa::Core::sFALLBACK_OF_DUMP, path)) {}
FallbackMinidumpPath::~FallbackMinidumpPath() = default;

}  // namespace MSWindows
