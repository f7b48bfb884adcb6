// What the library warns of while a process dies: where its records had to go instead, and what is missing.
//
// They are raised like any other warning, on the dying thread, so that listeners and logs still hear them.
// Failures and thread safety: as for all warnings (Warning.h).
//
//   void WarningRaised(Warning& warning) override {  // of an AlertListener
//     if (dynamic_cast<FallbackFatalErrorPath*>(&warning) != nullptr) Blink();
//   }
#ifndef INFRASTRUCTURE_OXACORE_FATALERRORWARNINGS_H
#define INFRASTRUCTURE_OXACORE_FATALERRORWARNINGS_H

#include <Infrastructure/OxaCore/Export.h>
#include <Infrastructure/OxaCore/Warning.h>

#include <string>

namespace Oxa::Core {

/// "Attempted to set an invalid fatal error base path of:\n%1%", with the path that was refused: from
/// AlertManager::SetFatalErrorBasePath, under "Oxa.Core.AlertManager.SetFatalErrorBasePath".
class OXACORE_API InvalidFatalErrorPath : public Warning {
 public:
  explicit InvalidFatalErrorPath(const std::string& path);
  ~InvalidFatalErrorPath() override;
};

/// "Failed to create fatal error directory named:\n%1%", with the folder below the base path. Comes once for the dump
/// and once for the report, under "Oxa.Core.CreateFatalErrorPath".
class OXACORE_API CreateFatalErrorPathFailed : public Warning {
 public:
  explicit CreateFatalErrorPathFailed(const std::string& path);
  ~CreateFatalErrorPathFailed() override;
};

/// "Storing fatal error information in fallback path of\n%1%": under "Oxa.Core.CreateFatalErrorPath" with the folder
/// beside the program, under "Oxa.Core.AlertManager.OnFatalError" with the working folder, if that is all there is.
class OXACORE_API FallbackFatalErrorPath : public Warning {
 public:
  explicit FallbackFatalErrorPath(const std::string& path);
  ~FallbackFatalErrorPath() override;
};

/// "Failed to open file to generate the XML error report named:\n%1%": there is no report then. Under
/// "Oxa.Core.AlertInfo.OnFatalError".
class OXACORE_API OpenXMLErrorReportFailed : public Warning {
 public:
  explicit OpenXMLErrorReportFailed(const std::string& fileName);
  ~OpenXMLErrorReportFailed() override;
};

/// "Potential infinite error recursion was halted in OxaUnhandledExceptionFilter after it was reentered %1% times",
/// with the number of deaths so far: this one is beyond AlertManager::GetMaxFatalErrorReports and leaves no record.
/// Under "Oxa.Core.OxaUnhandledExceptionFilter".
class OXACORE_API HaltingUncaughtErrorRecursion : public Warning {
 public:
  explicit HaltingUncaughtErrorRecursion(int entries);
  ~HaltingUncaughtErrorRecursion() override;
};

}  // namespace Oxa::Core

namespace MSWindows {

/// "Storing minidump in fallback path of\n%1%", with the working folder. Under "Oxa.Core.OxaUnhandledExceptionFilter".
class OXACORE_API FallbackMinidumpPath : public Oxa::Core::Warning {
 public:
  explicit FallbackMinidumpPath(const std::string& path);
  ~FallbackMinidumpPath() override;
};

}  // namespace MSWindows

#endif
