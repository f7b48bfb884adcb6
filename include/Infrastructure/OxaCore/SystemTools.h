// Small services on the operating system, for code that talks to it directly.
//
// Thread safety: every function may be called from any thread at any time. Locks: none. Failures: nothing raises.
//
//   std::cerr << MSWindows::GetWindowsErrorMessage(2) << '\n';  // "No such file or directory"
#ifndef INFRASTRUCTURE_OXACORE_SYSTEMTOOLS_H
#define INFRASTRUCTURE_OXACORE_SYSTEMTOOLS_H

#include <Infrastructure/OxaCore/Export.h>

#include <string>

namespace MSWindows {

/// The operating system's text for one of its error codes (on this platform a value of errno), as the system
/// gives it. A code that the system doesn't know gives "Failed to retrieve error message for code N.", with
/// the code in decimal. Raises nothing.
OXACORE_API std::string GetWindowsErrorMessage(unsigned long code);

}  // namespace MSWindows

#endif
