// What the library warns of while a process dies: where its records had to go instead, and what is missing.
//
// They are raised like any other warning, on the dying thread, so that listeners and logs still hear them.
// Failures and thread safety: as for all warnings (Warning.h).
#ifndef INFRASTRUCTURE_OXACORE_FATALERRORWARNINGS_H
#define INFRASTRUCTURE_OXACORE_FATALERRORWARNINGS_H

#include <Infrastructure/OxaCore/Export.h>
#include <Infrastructure/OxaCore/Warning.h>

#include <string>

namespace Oxa::Core {

/// "Attempted to set an invalid fatal error base path of:\n%1%".
class OXACORE_API InvalidFatalErrorPath : public Warning {
 public:
  explicit InvalidFatalErrorPath(const std::string& path);
  ~InvalidFatalErrorPath() override;
};

/// "Failed to create fatal error directory named:\n%1%".
class OXACORE_API CreateFatalErrorPathFailed : public Warning {
 public:
  explicit CreateFatalErrorPathFailed(const std::string& path);
  ~CreateFatalErrorPathFailed() override;
};

/// "Storing fatal error information in fallback path of\n%1%".
class OXACORE_API FallbackFatalErrorPath : public Warning {
 public:
  explicit FallbackFatalErrorPath(const std::string& path);
  ~FallbackFatalErrorPath() override;
};

/// "Failed to open file to generate the XML error report named:\n%1%".
class OXACORE_API OpenXMLErrorReportFailed : public Warning {
 public:
  explicit OpenXMLErrorReportFailed(const std::string& fileName);
  ~OpenXMLErrorReportFailed() override;
};

/// "Potential infinite error recursion was halted in OxaUnhandledExceptionFilter after it was reentered %1% times".
class OXACORE_API HaltingUncaughtErrorRecursion : public Warning {
 public:
  explicit HaltingUncaughtErrorRecursion(int entries);
  ~HaltingUncaughtErrorRecursion() override;
};

}  // namespace Oxa::Core

namespace MSWindows {

/// "Storing minidump in fallback path of\n%1%".
class OXACORE_API FallbackMinidumpPath : public Oxa::Core::Warning {
 public:
  explicit FallbackMinidumpPath(const std::string& path);
  ~FallbackMinidumpPath() override;
};

}  // namespace MSWindows

#endif
